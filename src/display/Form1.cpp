#include "Form1.h"

#include "acquisition/QtTimerDriver.h"
#include "collection/SpreadsheetApp.h"
#include "core/FatalError.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "links/Ethernet.h"
#include "links/EventThread.h"
#include "links/SerialPort.h"

#include <thread>

namespace stellwyn::display {

using core::yieldToEvents;

namespace {
collection::SpreadsheetApp& spreadsheetOf(const Form1Services& services) {
    static collection::NoSpreadsheetApp none;
    return services.spreadsheet != nullptr ? *services.spreadsheet : none;
}
} // namespace

Form1::Form1(Form1Services services, Form1Calls calls, QObject* parent)
    : QObject(parent), s_(std::move(services)), calls_(std::move(calls)),
      MSComm1_(s_.makeMSComm1()), context_{s_.m,
                                           f_,
                                           s_.clock,
                                           {MSComm1_.get(), s_.ftdi, s_.usb},
                                           {}},
      serialLink_(s_.m, *MSComm1_, s_.dialogs, s_.home), scanners_(context_),
      timers_(context_, scanners_), scanTable_(context_), keypad_(context_, s_.dialogs),
      data1_(f_.data1), collection_(s_.m, f_, s_.clock), grid_(f_, s_.dialogs),
      excel_(s_.m, f_, s_.clock, s_.dialogs, spreadsheetOf(s_)), slaves_(s_.m, f_),
      setup_(context_, timers_, s_.dialogs) {
    context_.hooks.data1FindId = [this](std::int32_t scaleid) {
        data1_.MoveFirst();
        data1_.FindId(scaleid);
    };
    serialLink_.showStatus = [this](const QString& text) {
        if (calls_.showStatus) {
            calls_.showStatus(text);
        }
    };
    timers_.attach();
    scanTable_.attach();
    context_.hooks.excelOutput = [this](int slot) { excel_.excel_write_reading(slot); };
    collection_.excelOutput = context_.hooks.excelOutput;
    collection_.attach();
    grid_.showPane = [this] { scanTable_.opt_datacol_Click(); };
    grid_.attach();
    f_.data2.Refreshed = [this] {
        if (!data2Bound_) {
            data2Rows_.bind(f_.data2.ConnectionString, grid_.order(), grid_.allStations());
            data2Bound_ = true;
        } else {
            data2Rows_.refresh(grid_.order(), grid_.allStations());
        }
    };
    context_.hooks.winsockSendData = [this](const QByteArray& bytes) {
        return ethernet_ && ethernet_->Winsock1().SendData(bytes);
    };
    f_.Command1.Click = [this] { Command1_Click(); };
    f_.Command11.Click = [this] { slaves_.Command11_Click(); };
    f_.btn_saveslave.Click = [this] { slaves_.btn_saveslave_Click(); };
    f_.btn_slavesload.Click = [this] { slaves_.btn_slavesload_Click(); };
    f_.btn_closeallslaves.Click = [this] { slaves_.btn_closeallslaves_Click(); };
    context_.hooks.showOnSlave = [this](int k, const QString& text) {
        slaves_.showWeight(k, text);
    };
    f_.opt_setup.Click = [this] { scanTable_.opt_setup_Click(); };
    setup_.attach();
    f_.TConn.Click = [this] { TConn_Click(); };
    f_.TDis.Click = [this] { TDis_Click(); };
    driveTimers();
}

Form1::~Form1() = default;

void Form1::driveTimers() {
    std::vector<core::Timer*> all;
    all.reserve(core::timer1Count + 3 + core::timer5Count);
    for (int i = 0; i < core::timer1Count; ++i) {
        all.push_back(&f_.Timer1[i]);
    }
    all.push_back(&f_.Timer2);
    all.push_back(&f_.Timer3);
    all.push_back(&f_.Timer4);
    for (int i = 0; i < core::timer5Count; ++i) {
        all.push_back(&f_.Timer5[i]);
    }
    if (!s_.driveTimer) {
        timerDriver_ = std::make_unique<acquisition::QtTimerDriver>();
    }
    for (core::Timer* timer : all) {
        driveTimer(*timer);
    }
}

void Form1::driveTimer(core::Timer& timer) {
    // A tick may yield, and the operator may close the form in that yield: the form stays
    // until the tick is over.
    timer.Tick = [this, tick = timer.Tick] {
        if (tick) {
            Busy busy(*this);
            tick();
        }
    };
    if (s_.driveTimer) {
        s_.driveTimer(timer);
    } else {
        timerDriver_->drive(timer);
    }
}

void Form1::runEvent(const std::function<void()>& handler) {
    if (unloaded_) {
        return;
    }
    Busy busy(*this);
    core::runHandler(handler);
}

void Form1::Form_Load() {
    s_.m.formclosing = core::vbFalse;
}

void Form1::formactivate() {
    yieldToEvents();
}

void Form1::Command1_Click() {
    Busy busy(*this);
    yieldToEvents();
    for (int i = 0; i < core::timer1Count; ++i) {
        f_.Timer1[i].setInterval(0);
        f_.Timer1[i].setEnabled(false);
    }
    yieldToEvents();
    for (core::Timer* timer : {&f_.Timer2, &f_.Timer3, &f_.Timer4}) {
        timer->setInterval(0);
        timer->setEnabled(false);
    }
    yieldToEvents();
    s_.m.formactive = core::vbFalse;
    yieldToEvents();
    unload();
}

void Form1::Winsock1_DataArrival() {
    if (!ethernet_ || unloaded_) {
        return;
    }
    Busy busy(*this);
    const QByteArray text = ethernet_->Winsock1().GetData();
    if (text.startsWith('?')) {
        ethernet_->handshake = true;
        return;
    }
    if (!ethernet_->handshake) {
        return;
    }
    const int i = ethernet_->parseweight(text);
    // The scan table follows the scale that answered, with the reading just taken.
    if (!gone() && i >= 0 && s_.m.opmode == 2) {
        f_.NetList.setText(i + 1, 0, s_.m.scaledesc[i]);
        f_.NetList.setText(i + 1, 1, s_.m.scaleweight[i]);
    }
}

void Form1::TConn_Click() {
    core::Module1& m = s_.m;
    m.fteventhandle = s_.ftdi != nullptr ? s_.ftdi->CreateEventA(false, false, QString()) : 0;
    if (m.fteventhandle == 0) {
        TDis_Click();
        return;
    }
    links::EventThreadJob job;
    job.ftdi = s_.ftdi;
    job.fthandle = m.fthandle;
    job.usbhandle = m.usbhandle;
    job.fteventhandle = m.fteventhandle;
    // The platform has no wait on a driver event that this thread could make; the loop that
    // would call these is never entered.
    job.WaitForSingleObject = [](links::FtEvent, links::DWORD) { return links::DWORD(0xFFFFFFFF); };
    job.USB485_inputscan = [this] { scanners_.USB485_inputscan(); };
    job.modemstatus = [ftdi = s_.ftdi, handle = m.fthandle] {
        // The four indicators it would light are not on this screen.
        links::DWORD status = 0;
        ftdi->FT_GetModemStatus(handle, status);
    };
    std::thread(links::eventthread, job).detach();
}

void Form1::TDis_Click() {
    // The run flag cleared here is this handler's own, not the thread's: it stops nothing.
    [[maybe_unused]] bool run = false;
}

void Form1::Form_Unload() {
    core::Module1& m = s_.m;
    for (int i = 0; i < core::timer1Count; ++i) {
        f_.Timer1[i].setEnabled(false);
    }
    f_.Timer2.setEnabled(false);
    f_.Timer3.setEnabled(false);
    f_.Timer4.setEnabled(false);
    m.clearscales();
    m.formactive = core::vbFalse;
    for (int k = 0; k < core::slaveCount; ++k) {
        if (m.slaveopen[k] == 1) {
            m.slaveopen[k] = 0;
            slaves_.unload(k);
        }
    }
    timers_.halttimers();
    if (ethernet_) {
        ethernet_->close();
    }
    m.formclosing = core::vbTrue;
}

void Form1::unload() {
    if (unloaded_) {
        return;
    }
    unloaded_ = true;
    visible_ = false;
    Form_Unload();
    emit unloaded();
}

void Form1::hide() {
    visible_ = false;
    emit hidden();
}

} // namespace stellwyn::display
