#pragma once

#include "DisplayFace.h"

#include <QWidget>
#include <optional>
#include <vector>

class QLabel;
class QLineEdit;

namespace stellwyn::display {

class Form1;

// The picture of the indicator: its body, the display window with the live weight, and the
// twelve keys of its keypad, drawn in the design's twips so that the keys always stand inside
// their bands whatever the pane's size. Pointer moves and clicks go to the keypad in design
// twips.
class IndicatorPictureView : public QWidget {
    Q_OBJECT
public:
    IndicatorPictureView(Form1& form, QWidget* parent = nullptr);
    ~IndicatorPictureView() override;

    // Pixels per design twip.
    void setScale(double scale);
    double scale() const { return scale_; }
    // Brings the labels over the picture in line with the form's state.
    void sync();

    DisplayLabel* screenLabel() const { return screen_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    class KeyButton;

    QPoint toDesign(const QPointF& pixels) const;
    void showPressed(std::optional<int> keycode);
    // Presses the key at a point of the design, as a pointer moved there and clicked would.
    void pressKey(const QPoint& at);
    void placeChildren();

    Form1& form_;
    double scale_ = 1.0 / 15.0;
    DisplayLabel* screen_;
    QLineEdit* groupnum_;
    QLabel* datamsg_;
    std::optional<int> pressedKey_;
    std::vector<KeyButton*> keys_;
    QString shownFace_;
};

} // namespace stellwyn::display
