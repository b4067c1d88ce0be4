#pragma once

#include <QWidget>

class QTimer;

namespace stellwyn::display {

class ControlsPanelView;
class DataWindowView;
class Form1;
class IndicatorPictureView;
class NetWindowView;
class SlaveWindowsView;
class SetupWindowView;

// The main screen's window content: the picture with its keypad, the controls panel, and the
// lower panes, placed where the design puts them and scaled together with the window. It
// draws the form's state and refreshes it a few times a second, since the timers change it
// behind the view's back.
class Form1View : public QWidget {
    Q_OBJECT
public:
    explicit Form1View(Form1& form, QWidget* parent = nullptr);

    // Brings every widget in line with the form's state.
    void sync();

    // The form's place and size, in pixels on this screen.
    QRect formGeometry() const;
    // Pixels per design twip at the window's present size.
    double scale() const { return scale_; }

    IndicatorPictureView* picture() const { return picture_; }
    SlaveWindowsView* slaveWindows() const { return slaves_; }

signals:
    void captionChanged(const QString& caption);
    // The form's height changed in twips: a lower pane was shown or hidden.
    void formSizeChanged();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void placePanes();

    Form1& form_;
    IndicatorPictureView* picture_;
    ControlsPanelView* panel_;
    NetWindowView* netwindow_;
    DataWindowView* datawindow_;
    SetupWindowView* setupwindow_;
    SlaveWindowsView* slaves_;
    QTimer* refresh_;
    double scale_ = 1.0 / 15.0;
    QString caption_;
    int formHeight_ = 0;
    bool lowerPane_ = false;
};

} // namespace stellwyn::display
