#include "Form1Host.h"

#include "Form1.h"
#include "Form1View.h"
#include "core/FatalError.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QTimer>

namespace stellwyn::display {

namespace {
constexpr int destroyRetryMs = 20;
}

Form1Host::Form1Host(QMdiArea& area, std::function<std::unique_ptr<Form1>()> makeForm,
                     QObject* parent)
    : QObject(parent), area_(area), makeForm_(std::move(makeForm)) {
    connect(&area_, &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow* window) {
        if (window != nullptr && window == window_ && form_) {
            core::runHandler([this] { form_->Form_Activate(); });
        }
    });
}

Form1Host::~Form1Host() {
    delete window_.data();
}

void Form1Host::show() {
    if (form_ && form_->isUnloaded()) {
        // That form is only waiting for its last handler to return; a fresh one follows it.
        showWhenGone_ = true;
        return;
    }
    if (!form_) {
        form_ = makeForm_();
        form_->Form_Load();
        view_ = new Form1View(*form_);
        window_ = area_.addSubWindow(view_);
        window_->setObjectName(QStringLiteral("form1Window"));
        window_->setAttribute(Qt::WA_DeleteOnClose, false);
        connect(form_.get(), &Form1::hidden, window_, &QWidget::hide);
        connect(form_.get(), &Form1::unloaded, this, [this] {
            if (window_) {
                window_->hide();
            }
            destroyWhenIdle();
        });
        connect(view_, &Form1View::captionChanged, window_, &QWidget::setWindowTitle);
        connect(view_, &Form1View::formSizeChanged, this, &Form1Host::fitToForm);
        window_->setWindowTitle(form_->controls().caption);
        const QRect place = view_->formGeometry();
        window_->move(place.topLeft());
        fitToForm();
    }
    window_->show();
    area_.setActiveSubWindow(window_);
    // Showing the window activates it; the form's guard keeps a second activation from doing
    // anything, so this one is sure to run even where the window system activates nothing.
    QTimer::singleShot(0, this, [this] {
        if (form_ && !form_->isUnloaded()) {
            core::runHandler([this] { form_->Form_Activate(); });
        }
    });
}

void Form1Host::fitToForm() {
    if (!window_ || !view_) {
        return;
    }
    const QRect place = view_->formGeometry();
    // The form's size is its outer size, frame and caption included. Later changes are of the
    // height alone: the width stays what the operator may have made it.
    window_->resize(sized_ ? window_->width() : place.width(), place.height());
    sized_ = true;
}

void Form1Host::destroyWhenIdle() {
    // A handler of the form may still be running under the yield that unloaded it.
    if (form_ && form_->busy()) {
        QTimer::singleShot(destroyRetryMs, this, &Form1Host::destroyWhenIdle);
        return;
    }
    delete window_.data();
    view_ = nullptr;
    sized_ = false;
    form_.reset();
    emit closed();
    if (showWhenGone_) {
        showWhenGone_ = false;
        show();
    }
}

} // namespace stellwyn::display
