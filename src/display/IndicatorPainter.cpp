#include "IndicatorPainter.h"

#include "Form1Layout.h"
#include "Keypad.h"
#include "acquisition/Frames.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace stellwyn::display {

namespace {

// The body and its parts, in design twips of the picture pane.
constexpr QRectF body(240, 150, 8955, 4290);
constexpr QRectF displayWindow(1020, 600, 4095, 2085);
constexpr QRectF keypadPlate(5400, 735, 3315, 3690);
constexpr double keyRadius = 90;

QColor bodyTop() {
    return {0x4a, 0x52, 0x5e};
}
QColor bodyBottom() {
    return {0x2c, 0x31, 0x39};
}

void paintBody(QPainter& p) {
    QLinearGradient shade(body.topLeft(), body.bottomLeft());
    shade.setColorAt(0, bodyTop());
    shade.setColorAt(1, bodyBottom());
    p.setPen(QPen(QColor(0x1c, 0x20, 0x26), 30));
    p.setBrush(shade);
    p.drawRoundedRect(body, 240, 240);
    // A lighter rim along the top edge, as the light falls on a moulded case.
    p.setPen(QPen(QColor(255, 255, 255, 40), 24));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(body.adjusted(60, 60, -60, -60), 190, 190);
    // Four screws hold the front panel.
    p.setPen(QPen(QColor(0x22, 0x26, 0x2c), 15));
    p.setBrush(QColor(0x8a, 0x90, 0x98));
    for (const QPointF& c : {QPointF(body.left() + 210, body.top() + 210),
                             QPointF(body.right() - 210, body.top() + 210),
                             QPointF(body.left() + 210, body.bottom() - 210),
                             QPointF(body.right() - 210, body.bottom() - 210)}) {
        p.drawEllipse(c, 55, 55);
        p.drawLine(c + QPointF(-35, 0), c + QPointF(35, 0));
    }
}

void paintDisplayWindow(QPainter& p) {
    // The bezel, then the dark glass the digits light up behind.
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x15, 0x18, 0x1c));
    p.drawRoundedRect(displayWindow.adjusted(-90, -90, 90, 90), 140, 140);
    QLinearGradient glass(displayWindow.topLeft(), displayWindow.bottomLeft());
    glass.setColorAt(0, QColor(0x1d, 0x08, 0x08));
    glass.setColorAt(1, QColor(0x0c, 0x02, 0x02));
    p.setBrush(glass);
    p.drawRoundedRect(displayWindow, 70, 70);
    p.setPen(QPen(QColor(255, 255, 255, 25), 20));
    p.setBrush(Qt::NoBrush);
    p.drawLine(displayWindow.topLeft() + QPointF(120, 60),
               displayWindow.topRight() + QPointF(-120, 60));
}

void paintKey(QPainter& p, const QRectF& face, int keycode, bool pressed) {
    const bool enter = keycode == 11;
    QLinearGradient shade(face.topLeft(), face.bottomLeft());
    QColor top = enter ? QColor(0x4c, 0xa8, 0x5c) : QColor(0xf2, 0xf2, 0xef);
    QColor bottom = enter ? QColor(0x2e, 0x7d, 0x3e) : QColor(0xc4, 0xc6, 0xc4);
    if (pressed) {
        std::swap(top, bottom);
    }
    shade.setColorAt(0, top);
    shade.setColorAt(1, bottom);
    // A shadow under the key, gone when it is pressed in.
    if (!pressed) {
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0, 0, 0, 90));
        p.drawRoundedRect(face.translated(0, 45), keyRadius, keyRadius);
    }
    p.setPen(QPen(QColor(0x20, 0x24, 0x28), 15));
    p.setBrush(shade);
    const QRectF shown = pressed ? face.translated(0, 30) : face;
    p.drawRoundedRect(shown, keyRadius, keyRadius);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setBold(true);
    font.setPixelSize(300);
    p.setFont(font);
    p.setPen(enter ? QColor(Qt::white) : QColor(0x22, 0x26, 0x2c));
    const char key = *acquisition::frames::keypadKey(keycode);
    p.drawText(shown, Qt::AlignCenter, QString(QChar::fromLatin1(key)));
}

void paintKeypad(QPainter& p, int pressedKeycode) {
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x23, 0x27, 0x2e));
    p.drawRoundedRect(keypadPlate, 150, 150);
    for (std::size_t r = 0; r < Keypad::rows.size(); ++r) {
        for (std::size_t c = 0; c < Keypad::columns.size(); ++c) {
            const Keypad::Band& column = Keypad::columns[c];
            const Keypad::Band& row = Keypad::rows[r];
            const QRectF face(column.from, row.from, column.to - column.from, row.to - row.from);
            const int keycode = Keypad::keycodeAt(static_cast<int>(c), static_cast<int>(r));
            paintKey(p, face, keycode, keycode == pressedKeycode);
        }
    }
}

} // namespace

void paintIndicator(QPainter& painter, int pressedKeycode) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    paintBody(painter);
    paintDisplayWindow(painter);
    paintKeypad(painter, pressedKeycode);
    painter.restore();
}

} // namespace stellwyn::display
