#include "Form1View.h"

#include "ControlsPanelView.h"
#include "Form1.h"
#include "IndicatorPictureView.h"
#include "LowerPanesView.h"
#include "SetupWindowView.h"
#include "SlaveView.h"
#include "Twips.h"

#include <QCloseEvent>
#include <QTimer>
#include <algorithm>

namespace stellwyn::display {

namespace {
// The design's client area: the picture and the panel side by side, and below them, when one
// is shown, the lower pane.
constexpr int designWidth = Form1Layout::vsElastic2.left + Form1Layout::vsElastic2.width;
constexpr int designHeight = Form1Layout::vsElastic1.height;
constexpr int refreshMs = 50;
} // namespace

Form1View::Form1View(Form1& form, QWidget* parent)
    : QWidget(parent), form_(form), picture_(new IndicatorPictureView(form, this)),
      panel_(new ControlsPanelView(form, this)), netwindow_(new NetWindowView(form, this)),
      datawindow_(new DataWindowView(form, this)), setupwindow_(new SetupWindowView(form, this)),
      slaves_(new SlaveWindowsView(form, this)), refresh_(new QTimer(this)) {
    setObjectName(QStringLiteral("form1"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    netwindow_->raise();
    datawindow_->raise();
    setupwindow_->raise();
    connect(refresh_, &QTimer::timeout, this, &Form1View::sync);
    refresh_->start(refreshMs);
    scale_ = pixelsPerTwip(this);
    sync();
}

QRect Form1View::formGeometry() const {
    const core::Form1Controls& f = form_.controls();
    const double base = pixelsPerTwip(this);
    return {toPixels(f.left, base), toPixels(f.top, base), toPixels(f.width, base),
            toPixels(f.height, base)};
}

void Form1View::resizeEvent(QResizeEvent*) {
    placePanes();
}

void Form1View::placePanes() {
    const Form1Layout& layout = form_.layout();
    const core::Form1Controls& f = form_.controls();
    const bool lower = f.netwindowVisible || f.datawindowVisible || f.setupwindowVisible;
    const int tallest = lower ? std::max(layout.netwindow.top + layout.netwindow.height,
                                         layout.datawindow.top + layout.datawindow.height)
                              : designHeight;
    scale_ = std::min(width() / static_cast<double>(designWidth),
                      height() / static_cast<double>(tallest));
    if (scale_ <= 0) {
        scale_ = pixelsPerTwip(this);
    }
    picture_->setGeometry(toPixels(Form1Layout::vsElastic1, scale_));
    picture_->setScale(scale_);
    panel_->setGeometry(toPixels(Form1Layout::vsElastic2, scale_));
    panel_->setScale(scale_);
    netwindow_->setGeometry(toPixels(layout.netwindow, scale_));
    netwindow_->setScale(scale_);
    datawindow_->setGeometry(toPixels(layout.datawindow, scale_));
    datawindow_->setScale(scale_);
    setupwindow_->setGeometry(toPixels(layout.datawindow, scale_));
    setupwindow_->setScale(scale_);
}

void Form1View::sync() {
    if (form_.isUnloaded()) {
        return;
    }
    const core::Form1Controls& f = form_.controls();
    const bool lower = f.netwindowVisible || f.datawindowVisible || f.setupwindowVisible;
    if (lower != lowerPane_) {
        lowerPane_ = lower;
        placePanes();
    }
    netwindow_->setVisible(f.netwindowVisible);
    datawindow_->setVisible(f.datawindowVisible);
    setupwindow_->setVisible(f.setupwindowVisible);
    picture_->sync();
    panel_->sync();
    netwindow_->sync();
    datawindow_->sync();
    if (f.setupwindowVisible) {
        setupwindow_->sync();
    }
    if (f.caption != caption_) {
        caption_ = f.caption;
        setWindowTitle(caption_);
        emit captionChanged(caption_);
    }
    if (f.height != formHeight_) {
        formHeight_ = f.height;
        emit formSizeChanged();
    }
}

void Form1View::closeEvent(QCloseEvent* event) {
    // Closing the window is an unload of the form like any other.
    form_.runEvent([this] { form_.unload(); });
    event->accept();
}

} // namespace stellwyn::display
