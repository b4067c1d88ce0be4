#pragma once

#include <QObject>
#include <QWidget>
#include <array>

namespace stellwyn::display {

class DisplayLabel;
class Form1;

// One slave window: the weight of one scale in large digits, in a window of its own that the
// operator can put anywhere, a second monitor included.
class SlaveView : public QWidget {
    Q_OBJECT
public:
    SlaveView(Form1& form, int k, QWidget* parent);

    // Brings the window in line with its form's state.
    void sync();

    DisplayLabel* screenLabel() const { return screen_; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    Form1& form_;
    int k_;
    DisplayLabel* screen_;
    int placeVersion_ = -1;
    QString shownFace_;
    bool syncing_ = false;
};

// The ten slave windows of the main screen, each made the first time its form shows.
class SlaveWindowsView : public QObject {
    Q_OBJECT
public:
    SlaveWindowsView(Form1& form, QWidget* owner);

    // Null until window k has been shown once.
    SlaveView* window(int k) const { return windows_.at(static_cast<std::size_t>(k)); }

private:
    void follow(int k);

    Form1& form_;
    QWidget* owner_;
    std::array<SlaveView*, 10> windows_{};
};

} // namespace stellwyn::display
