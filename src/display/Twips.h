#pragma once

#include "Form1Layout.h"

#include <QRect>

class QWidget;

namespace stellwyn::display {

// Screen sizes come in twips: 1440 to the inch, so 15 to the pixel at 96 dpi, and as many
// more or fewer pixels as the screen's dpi says.
double pixelsPerTwip(const QWidget* widget);

// Design twips to pixels at a scale in pixels per twip.
QRect toPixels(const Place& place, double scale);
int toPixels(int twips, double scale);

} // namespace stellwyn::display
