#pragma once

#include "Form1Layout.h"

#include <QFont>
#include <QLabel>

namespace stellwyn::display {

// The seven-segment face that stands in for the display face where that one is not installed,
// and the fourteen-segment face of the same family for readings with letters in them, which
// seven segments cannot draw so that they read as letters.
QString lookAlikeFamily();
QString letterLookAlikeFamily();

// The font of a reading at a scale in pixels per twip: the face asked for when the system has
// it, else the look-alike, squeezed so that six characters fit the label as they did in the
// condensed original.
QFont displayFont(const ScreenFace& face, double scale, const QString& reading = {});

// A label that shows a reading in a display face. On a segment face the unlit segments glow
// faintly behind the lit ones, as on the glass of a real display.
class DisplayLabel final : public QLabel {
public:
    explicit DisplayLabel(QWidget* parent = nullptr);

    void setFace(const ScreenFace& face, double scale);
    void setReading(const QString& reading);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void applyFont();

    ScreenFace face_;
    double scale_ = 1.0 / 15.0;
    bool letters_ = false;
    QString ghost_;
};

} // namespace stellwyn::display
