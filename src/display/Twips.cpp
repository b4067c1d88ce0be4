#include "Twips.h"

#include <QWidget>
#include <cmath>

namespace stellwyn::display {

namespace {
constexpr double twipsPerInch = 1440.0;
}

double pixelsPerTwip(const QWidget* widget) {
    return widget->logicalDpiX() / twipsPerInch;
}

int toPixels(int twips, double scale) {
    return static_cast<int>(std::lround(twips * scale));
}

QRect toPixels(const Place& place, double scale) {
    const int left = toPixels(place.left, scale);
    const int top = toPixels(place.top, scale);
    // Edges are rounded, not sizes, so that neighbouring places stay flush.
    return {left, top, toPixels(place.left + place.width, scale) - left,
            toPixels(place.top + place.height, scale) - top};
}

} // namespace stellwyn::display
