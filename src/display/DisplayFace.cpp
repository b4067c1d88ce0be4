#include "DisplayFace.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace stellwyn::display {

namespace {
constexpr double twipsPerPoint = 20.0;
// The widest reading a scale sends: six characters.
constexpr int readingWidth = 6;

bool hasLetters(const QString& text) {
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.isLetter(); });
}

// Every segment of one place lit: an 8 on seven segments, a tilde on fourteen.
QString allLit(const QString& family) {
    return QString(readingWidth, family == letterLookAlikeFamily() ? u'~' : u'8');
}
} // namespace

QString lookAlikeFamily() {
    return QStringLiteral("DSEG7 Classic");
}

QString letterLookAlikeFamily() {
    return QStringLiteral("DSEG14 Classic");
}

QFont displayFont(const ScreenFace& face, double scale, const QString& reading) {
    const bool installed = QFontDatabase::hasFamily(face.family);
    const bool segmented = !installed && face.pointSize >= 72;
    QString family = face.family;
    if (segmented) {
        family = hasLetters(reading) ? letterLookAlikeFamily() : lookAlikeFamily();
    }
    QFont font(family);
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(face.pointSize * twipsPerPoint *
                                                               (segmented ? 0.62 : 1.0) * scale))));
    font.setBold(face.bold);
    if (segmented) {
        const double wanted = face.place.width * scale * 0.94;
        const double natural = QFontMetricsF(font).horizontalAdvance(allLit(family));
        if (natural > wanted && natural > 0) {
            font.setStretch(std::clamp(static_cast<int>(100.0 * wanted / natural), 50, 100));
        }
    }
    return font;
}

DisplayLabel::DisplayLabel(QWidget* parent) : QLabel(parent) {
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
}

void DisplayLabel::setFace(const ScreenFace& face, double scale) {
    face_ = face;
    scale_ = scale;
    applyFont();
}

void DisplayLabel::setReading(const QString& reading) {
    if (reading == text()) {
        return;
    }
    setText(reading);
    if (hasLetters(reading) != letters_) {
        applyFont();
    }
}

void DisplayLabel::applyFont() {
    letters_ = hasLetters(text());
    const QFont font = displayFont(face_, scale_, text());
    setFont(font);
    const bool segmented =
        font.family() == lookAlikeFamily() || font.family() == letterLookAlikeFamily();
    ghost_ = segmented ? allLit(font.family()) : QString();
    update();
}

void DisplayLabel::paintEvent(QPaintEvent* event) {
    if (!ghost_.isEmpty()) {
        QPainter p(this);
        p.setFont(font());
        QColor unlit = palette().color(QPalette::WindowText);
        unlit.setAlpha(28);
        p.setPen(unlit);
        p.drawText(contentsRect(), static_cast<int>(alignment()), ghost_);
    }
    QLabel::paintEvent(event);
}

} // namespace stellwyn::display
