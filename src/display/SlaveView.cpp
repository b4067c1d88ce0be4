#include "SlaveView.h"

#include "DisplayFace.h"
#include "Form1.h"
#include "SlaveWindows.h"
#include "Twips.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <cmath>

namespace stellwyn::display {

namespace {
// What the window's frame takes of its outer size, in twips: the borders and the title bar.
constexpr int frameWidth = 120;
constexpr int frameHeight = 420;
} // namespace

SlaveView::SlaveView(Form1& form, int k, QWidget* parent)
    : QWidget(parent, Qt::Window), form_(form), k_(k), screen_(new DisplayLabel(this)) {
    setObjectName(QStringLiteral("slave%1").arg(k));
    screen_->setObjectName(QStringLiteral("Screen"));
    // A click anywhere on the digits reaches the window, which hands it to the form.
    screen_->setAttribute(Qt::WA_TransparentForMouseEvents);
    sync();
}

void SlaveView::sync() {
    const SlaveForm& s = form_.slaves().slave(k_);
    syncing_ = true;
    const double scale = pixelsPerTwip(this);
    setWindowTitle(s.Caption);
    resize(toPixels(s.Width - frameWidth, scale), toPixels(s.Height - frameHeight, scale));
    const QString faceKey = s.face.family + QString::number(s.face.pointSize);
    if (faceKey != shownFace_) {
        shownFace_ = faceKey;
        screen_->setGeometry(toPixels(s.face.place, scale));
        screen_->setFace(s.face, scale);
    }
    screen_->setReading(s.screen);
    if (s.placeVersion != placeVersion_) {
        placeVersion_ = s.placeVersion;
        if (s.placed) {
            move(toPixels(s.Left, scale), toPixels(s.Top, scale));
        }
        if (s.visible && isVisible()) {
            // Opened again: it comes to the front.
            raise();
        } else if (s.visible) {
            show();
        }
    }
    if (!s.visible && isVisible()) {
        hide();
    }
    syncing_ = false;
}

void SlaveView::closeEvent(QCloseEvent* event) {
    // The form decides: its unload clears the open flag, and the window follows its state.
    event->ignore();
    form_.runEvent([this] { form_.slaves().unload(k_); });
}

void SlaveView::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    if (syncing_ || !isVisible()) {
        return;
    }
    const double scale = pixelsPerTwip(this);
    form_.slaves().moved(k_, static_cast<int>(std::lround(pos().x() / scale)),
                         static_cast<int>(std::lround(pos().y() / scale)));
}

void SlaveView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton &&
        screen_->geometry().contains(event->position().toPoint())) {
        form_.runEvent([this] { form_.slaves().Screen_Click(k_); });
    }
}

SlaveWindowsView::SlaveWindowsView(Form1& form, QWidget* owner)
    : QObject(owner), form_(form), owner_(owner) {
    connect(&form.slaves(), &SlaveWindows::changed, this, &SlaveWindowsView::follow);
}

void SlaveWindowsView::follow(int k) {
    SlaveView*& window = windows_.at(static_cast<std::size_t>(k));
    if (window == nullptr) {
        if (!form_.slaves().slave(k).loaded) {
            return;
        }
        window = new SlaveView(form_, k, owner_);
    }
    window->sync();
}

} // namespace stellwyn::display
