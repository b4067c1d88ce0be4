#include "CommandInterface.h"

#include "ConfigOperations.h"
#include "acquisition/AcquisitionContext.h"
#include "acquisition/Frames.h"
#include "core/Delays.h"
#include "core/Dialogs.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "links/FtdiApi.h"
#include "links/SerialPort.h"
#include "links/UsbLink.h"

namespace stellwyn::indicator_config {

using core::yieldToEvents;

namespace {

constexpr int clearDelays = 6;
constexpr links::DWORD clearReadTimeoutMs = 15000;

bool readWholeNumber(const QString& text, std::int32_t& out) {
    const QString trimmed = text.trimmed();
    int digitsFrom = 0;
    if (trimmed.startsWith(u'+') || trimmed.startsWith(u'-')) {
        digitsFrom = 1;
    }
    if (trimmed.size() == digitsFrom) {
        return false;
    }
    for (qsizetype i = digitsFrom; i < trimmed.size(); ++i) {
        // Only ASCII digits: QString::toInt would also take other scripts' digits.
        if (trimmed[i] < u'0' || trimmed[i] > u'9') {
            return false;
        }
    }
    bool ok = false;
    const int value = trimmed.toInt(&ok, 10);
    if (!ok) {
        return false;
    }
    out = value;
    return true;
}

} // namespace

bool parseExecuteString(const QString& cmdStr, ExecuteString& out) {
    const qsizetype comma = cmdStr.indexOf(u',');
    if (comma < 0) {
        return false;
    }
    out.word = cmdStr.left(comma);
    out.arg = cmdStr.mid(comma + 1);
    out.id = 0;
    readWholeNumber(out.arg, out.id);
    return true;
}

CommandInterface::CommandInterface(acquisition::AcquisitionContext& context,
                                   ConfigOperations& operations, core::Dialogs& dialogs)
    : c_(context), operations_(operations), dialogs_(dialogs) {}

void CommandInterface::Form_LinkExecute(const QString& CmdStr, std::int16_t& Cancel) {
    Cancel = 0;
    ExecuteString command;
    if (!parseExecuteString(CmdStr, command)) {
        return;
    }
    const QString word = command.word.toUpper();
    std::int32_t id = command.id;
    if (word == u"ULG") {
        operations_.load_screen_from_db(command.arg);
        yieldToEvents();
        operations_.save_screen_to_scale(id);
    } else if (word == u"DLG") {
        operations_.load_screen_from_scale(id);
        yieldToEvents();
        operations_.save_screen_to_db(command.arg);
    } else if (word == u"CLT") {
        clearTotals(id);
    } else if (word == u"ULR") {
        operations_.move_ocdb_to_ocscreen();
        yieldToEvents();
        std::int32_t selected = selectedNetId();
        operations_.upload_oc(selected);
        yieldToEvents();
    } else if (word == u"DLR") {
        std::int32_t selected = selectedNetId();
        operations_.move_scale_to_ocscreen(selected);
        yieldToEvents();
        operations_.move_ocscreen_to_ocdb();
        yieldToEvents();
    }
}

std::int32_t CommandInterface::selectedNetId() const {
    return c_.m.netid[c_.f.Combo1.listIndex()];
}

void CommandInterface::clearTotals(std::int32_t id) {
    core::Module1& m = c_.m;
    if (m.commtype == u"USB485") {
        yieldToEvents();
        if (c_.links.ftdi->FT_SetTimeouts(m.usbhandle, clearReadTimeoutMs, 0) != links::FT_OK) {
            dialogs_.message(links::UsbLink::flowControlFailed());
        }
        yieldToEvents();
        // Chr(id): an address out of a byte's range is cut to its low eight bits, as every
        // other frame of the program does.
        const QByteArray frame = acquisition::frames::addressedRequest(id, 'R');
        links::DWORD written = 0;
        c_.links.ftdi->FT_Write(m.usbhandle, frame, static_cast<links::DWORD>(frame.size()),
                                written);
        yieldToEvents();
    } else if (m.commtype == u"RS232") {
        yieldToEvents();
        c_.links.MSComm1->Output(acquisition::frames::starRequest('R'));
        yieldToEvents();
        yieldToEvents();
    }
    // The scale is left to clear in peace: nothing else may talk to it meanwhile.
    for (int i = 0; i < clearDelays; ++i) {
        core::shortdelay(c_.clock);
    }
    operations_.hideBusyLabel();
    yieldToEvents();
}

} // namespace stellwyn::indicator_config
