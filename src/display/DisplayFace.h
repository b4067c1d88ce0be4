#pragma once

#include "Form1Layout.h"

#include <QFont>

namespace stellwyn::display {

// The seven-segment face that stands in for the display face where that one is not installed.
QString lookAlikeFamily();

// The font of the live weight at a scale in pixels per twip: the face asked for when the
// system has it, else the look-alike, squeezed so that six digits fit the label as they did in
// the condensed original.
QFont displayFont(const ScreenFace& face, double scale);

} // namespace stellwyn::display
