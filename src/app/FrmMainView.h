#pragma once

#include <QMainWindow>
#include <QRect>

class QMdiArea;
class QLabel;

namespace stellwyn::app {

class FrmMain;

// The multi-document frame. The main screen, the slaves and Setup open inside its area.
class FrmMainView : public QMainWindow {
    Q_OBJECT
public:
    explicit FrmMainView(FrmMain& logic, QWidget* parent = nullptr);

    QMdiArea* mdiArea() const { return area_; }
    // Applies the logic's place, in twips, to the window.
    void applyPlace();
    // The frame's place in pixels for one kept in twips, moved and shrunk as far as needed to
    // lie inside `screen`. Any stored numbers, however large, give a usable place.
    static QRect visiblePlace(int left, int top, int width, int height, int dpiX, int dpiY,
                              const QRect& screen);
    // The status bar's first panel; the links tell what becomes of their connection there.
    void showStatus(const QString& text);
    // The panel of the link and of today's readings, beside the clock.
    void showLinkStatus(const QString& text);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void buildToolBar();
    void buildStatusBar();
    void refreshClock();
    int toPixels(int twips, bool horizontal) const;
    int toTwips(int pixels, bool horizontal) const;

    FrmMain& logic_;
    QMdiArea* area_;
    QLabel* statusPanel_ = nullptr;
    QLabel* linkPanel_ = nullptr;
    QLabel* datePanel_ = nullptr;
    QLabel* timePanel_ = nullptr;
};

} // namespace stellwyn::app
