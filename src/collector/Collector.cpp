#include "Collector.h"

#include "CollectorLog.h"
#include "CollectorSettings.h"
#include "ServiceNotifier.h"
#include "core/LoadSettings.h"
#include "display/Form1.h"
#include "display/Form1Commands.h"
#include "display/StatusLine.h"
#include "links/FtdiApi.h"
#include "links/FtdiFactory.h"
#include "links/SerialPort.h"
#include "links/SerialPortFactory.h"
#include "links/UsbLink.h"

namespace stellwyn::collector {

namespace {
constexpr int destroyRetryMs = 20;
constexpr int captionWatchMs = 250;
constexpr int statusEveryMs = 60 * 1000;
} // namespace

Collector::Collector(const core::AppHome& home, ServiceNotifier& notifier, QObject* parent)
    : QObject(parent), home_(home), notifier_(notifier), main_(m_, dialogs_, home) {
    main_.loadsettings = [this] { core::loadsettings(m_); };
    // The mode shows in the screen's caption; a transfer from another program changes it too.
    captionWatch_.setInterval(captionWatchMs);
    connect(&captionWatch_, &QTimer::timeout, this, &Collector::watchCaption);
    statusTimer_.setInterval(statusEveryMs);
    connect(&statusTimer_, &QTimer::timeout, this, [this] {
        const QString line = statusLine();
        logLine(QStringLiteral("status"), line);
        notifier_.status(line);
    });
}

Collector::~Collector() {
    form_.reset();
    if (usb_) {
        usb_->usb_close();
    }
}

void Collector::start() {
    if (!main_.run()) {
        finish(1);
        return;
    }
    started_ = true;
    if (stopping_) {
        finish(0);
        return;
    }
    activate();
}

void Collector::activate() {
    if (!ftdi_) {
        settings_ =
            std::make_unique<core::SettingsStore>(home_.file(QStringLiteral("stellwyn.ini")));
        ftdi_ = links::makeFtdiApi(
            *settings_, [](const QString& text) { logLine(QStringLiteral("status"), text); },
            clock_);
        usb_ = std::make_unique<links::UsbLink>(m_, *ftdi_, dialogs_);
    }
    display::Form1Services services{m_,
                                    dialogs_,
                                    clock_,
                                    home_,
                                    [this] { return links::makeSerialPort(*settings_); },
                                    ftdi_.get(),
                                    usb_.get(),
                                    {},
                                    nullptr};
    display::Form1Calls calls;
    calls.showStatus = [](const QString& text) { logLine(QStringLiteral("status"), text); };
    form_ = std::make_unique<display::Form1>(std::move(services), std::move(calls));
    // Queued: the form is not destroyed inside its own signal.
    connect(form_.get(), &display::Form1::unloaded, this, &Collector::destroyWhenIdle,
            Qt::QueuedConnection);
    display::serveCommands(*form_, home_, dialogs_, dialogs_);
    caption_.clear();

    form_->Form_Load();
    form_->Form_Activate();
    if (form_->isUnloaded()) {
        // Unless a stop or a reload closed it meanwhile, the link would not come up and the
        // screen took itself away. A service manager may try again later; a person reads why
        // above.
        if (next_ == Next::nothing) {
            logLine(QStringLiteral("link"),
                    QStringLiteral("%1 did not start; nothing to collect").arg(m_.commtype));
            next_ = Next::quit;
            stopping_ = true;
            finishStatus_ = 1;
        }
        return;
    }
    if (stopping_) {
        return;
    }
    applySettings();
    if (form_->isUnloaded()) {
        return;
    }
    logLine(QStringLiteral("link"), display::linkState(m_, form_.get(), *settings_).text());
    watchCaption();
    captionWatch_.start();
    statusTimer_.start();
    // Also the end of a reload.
    notifier_.ready();
    notifier_.status(statusLine());
}

void Collector::applySettings() {
    QString problems;
    const CollectorSettings s = CollectorSettings::read(*settings_, &problems);
    if (!problems.isEmpty()) {
        dialogs_.message(problems);
    }
    core::Form1Controls& f = form_->controls();
    form_->runEvent([&] {
        if (m_.scalecount > 0 && s.scale < m_.scalecount && f.Combo1.listIndex() != s.scale) {
            f.Combo1.setListIndex(s.scale);
        }
        f.chk_SaveOnPrint.setValue(s.autoSave ? 1 : 0);
        f.Check1.setValue(s.logTimers ? 1 : 0);
        if (m_.scalecount == 0 || form_->isUnloaded()) {
            return;
        }
        bool network = s.mode == CollectorSettings::Mode::network;
        if (s.mode == CollectorSettings::Mode::asActivated) {
            // RS-485 and single USB scales come up in no mode at all; an operator would pick
            // the network scan there.
            const bool networkLink = m_.commtype == u"RS485" || m_.commtype == u"USB";
            network = f.opt_network.value() || (!f.opt_single.value() && networkLink);
        }
        const bool asWanted = s.pollTime.isEmpty() && !s.poll &&
                              (network ? f.opt_network.value() : f.opt_single.value());
        if (asWanted) {
            return;
        }
        // As an operator would: the poll time can be typed in single mode only.
        f.opt_single.setValue(true);
        if (form_->isUnloaded()) {
            return;
        }
        if (!s.pollTime.isEmpty()) {
            f.txt_polltime.text = s.pollTime;
        }
        if (network) {
            f.opt_network.setValue(true);
        } else if (s.poll) {
            f.chk_pollenb.setValue(1);
        }
    });
}

void Collector::reload() {
    if (!started_ || stopping_) {
        return;
    }
    logLine(QStringLiteral("collector"), QStringLiteral("reloading the settings"));
    notifier_.reloading();
    closeForm(Next::activate);
}

void Collector::stop() {
    if (stopping_) {
        return;
    }
    stopping_ = true;
    notifier_.stopping();
    logLine(QStringLiteral("collector"), QStringLiteral("stopping"));
    if (!started_) {
        // The start-up ends on its own and finds the flag.
        return;
    }
    closeForm(Next::quit);
}

void Collector::closeForm(Next next) {
    next_ = next;
    captionWatch_.stop();
    statusTimer_.stop();
    if (!form_) {
        destroyWhenIdle();
        return;
    }
    if (form_->isUnloaded()) {
        return; // already on its way out; destroyWhenIdle follows
    }
    // The exit button: timers stopped, then the unload, whose signal destroys the form.
    form_->runEvent([this] { form_->Command1_Click(); });
}

void Collector::destroyWhenIdle() {
    // A handler of the form may still be running under the yield that unloaded it.
    if (form_ && form_->busy()) {
        QTimer::singleShot(destroyRetryMs, this, &Collector::destroyWhenIdle);
        return;
    }
    form_.reset();
    const Next next = std::exchange(next_, Next::nothing);
    if (next == Next::activate && !stopping_) {
        // The settings may name another adapter or backend now: the link is made afresh.
        if (usb_) {
            usb_->usb_close();
        }
        usb_.reset();
        ftdi_.reset();
        QTimer::singleShot(0, this, &Collector::activate);
    } else if (next == Next::quit || stopping_) {
        finish(finishStatus_);
    }
}

void Collector::watchCaption() {
    if (!form_ || form_->isUnloaded()) {
        return;
    }
    const QString& caption = form_->controls().caption;
    if (caption != caption_) {
        caption_ = caption;
        logLine(QStringLiteral("mode"), caption);
    }
}

QString Collector::statusLine() {
    if (!settings_) {
        return display::statusLine(display::LinkState{}, m_.readingsconn, clock_);
    }
    return display::statusLine(display::linkState(m_, form_.get(), *settings_), m_.readingsconn,
                               clock_);
}

void Collector::finish(int status) {
    if (usb_) {
        // The adapter stays open between uses of the screen, and closes with the program.
        usb_->usb_close();
    }
    emit finished(status);
}

} // namespace stellwyn::collector
