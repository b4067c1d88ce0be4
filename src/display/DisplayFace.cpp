#include "DisplayFace.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <algorithm>
#include <cmath>

namespace stellwyn::display {

namespace {
constexpr double twipsPerPoint = 20.0;
// The widest reading a scale sends: six characters.
const QString widestReading = QStringLiteral("888888");
} // namespace

QString lookAlikeFamily() {
    return QStringLiteral("DSEG7 Classic");
}

QFont displayFont(const ScreenFace& face, double scale) {
    const bool installed = QFontDatabase::hasFamily(face.family);
    const bool segmented = !installed && face.pointSize >= 72;
    QFont font(installed || !segmented ? face.family : lookAlikeFamily());
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(face.pointSize * twipsPerPoint *
                                                               (segmented ? 0.62 : 1.0) * scale))));
    font.setBold(face.bold);
    if (segmented) {
        const double wanted = face.place.width * scale * 0.94;
        const double natural = QFontMetricsF(font).horizontalAdvance(widestReading);
        if (natural > wanted && natural > 0) {
            font.setStretch(std::clamp(static_cast<int>(100.0 * wanted / natural), 50, 100));
        }
    }
    return font;
}

} // namespace stellwyn::display
