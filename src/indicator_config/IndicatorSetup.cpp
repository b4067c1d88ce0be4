#include "IndicatorSetup.h"

#include "ConfigTexts.h"
#include "acquisition/AcquisitionContext.h"
#include "acquisition/Frames.h"
#include "acquisition/ModeTimers.h"
#include "acquisition/ReplyText.h"
#include "core/Clock.h"
#include "core/Conversions.h"
#include "core/Delays.h"
#include "core/Dialogs.h"
#include "core/FatalError.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "core/store/Connection.h"
#include "core/store/IndicatorConfigTables.h"
#include "links/FtdiApi.h"
#include "links/SerialPort.h"

#include <algorithm>
#include <limits>

namespace stellwyn::indicator_config {

using core::yieldToEvents;
namespace frames = acquisition::frames;

namespace {
constexpr double replySeconds = 5.0;
// The no-yield wait for serial bytes looks again this often: the line brings about one byte a
// millisecond, so nothing waits long, and the processor is not kept busy.
constexpr double serialLookSeconds = 0.005;
// The yielding wait hands the loop at most this long at a time, so a device that cannot wake
// the loop is looked at often enough.
constexpr double usbLookSeconds = 0.01;
constexpr links::DWORD usbReadTimeout = 15000;
constexpr links::DWORD readBufferSize = 256;
constexpr int lowestAddress = 128;
constexpr int highestAddress = 256;
constexpr char closingCode = 'S';
constexpr char clearCode = 'R';
const QByteArray cr("\r");

// The byte settings of frames 3 to 8 always go out as the character of code 0.
const QString byteSetting = QStringLiteral("0");

// Cuts the CR a reply text may still end in.
QString cutClosingCr(const QString& text) {
    const qsizetype first = text.indexOf(u'\r');
    if (first >= 0 && first == text.size() - 1) {
        return text.left(first);
    }
    return text;
}
} // namespace

IndicatorSetup::IndicatorSetup(acquisition::AcquisitionContext& context,
                               acquisition::ModeTimers& timers, core::Dialogs& dialogs)
    : c_(context), timers_(timers), dialogs_(dialogs) {
    for (int i = 0; i < outputItemCount; ++i) {
        outputItems_ << QString();
    }
}

std::optional<QString> IndicatorSetup::setGroupValue(int index, const QString& text) {
    const QString trimmed = text.trimmed();
    double value = 0;
    if (!trimmed.isEmpty() && (!core::parseNumber(trimmed, value) || value < 0 ||
                               QString::asprintf("%05.1f", value).size() != 5)) {
        return texts::badGroupValue();
    }
    groupValues_.at(static_cast<std::size_t>(index)) = trimmed;
    return std::nullopt;
}

void IndicatorSetup::editGroupValue(int index, const QString& text) {
    if (const std::optional<QString> refused = setGroupValue(index, text)) {
        dialogs_.message(*refused);
    }
}

QString IndicatorSetup::groupFrameValue(const QString& text) {
    double value = 0;
    if (text.trimmed().isEmpty()) {
        value = 0;
    } else if (!core::parseNumber(text.trimmed(), value)) {
        // A text that is no number goes out as it stands, as a format of a text does.
        return text;
    }
    return QString::asprintf("%05.1f", value);
}

QString IndicatorSetup::combo1Text() const {
    const core::ComboBox& combo = c_.f.Combo1;
    const int i = combo.listIndex();
    return i >= 0 && i < combo.items().size() ? combo.items().at(i) : QString();
}

std::int32_t IndicatorSetup::selectedNetId() const {
    // An empty list has index -1: the table's bounds check makes that the fatal error.
    return c_.m.netid[c_.f.Combo1.listIndex()];
}

void IndicatorSetup::busy(bool on) {
    dialogs_.setBusy(on);
}

void IndicatorSetup::delays(int count) {
    for (int i = 0; i < count; ++i) {
        core::shortdelay(c_.clock);
    }
}

void IndicatorSetup::threeDelays() {
    for (int i = 0; i < 3; ++i) {
        core::shortdelay(c_.clock);
        yieldToEvents();
    }
}

void IndicatorSetup::stopForRead() {
    busy(true);
    yieldToEvents();
    timers_.net_stat_get();
    c_.f.opt_single.setValue(true);
    c_.f.chk_pollenb.setValue(0);
    yieldToEvents();
    timers_.halttimers();
}

void IndicatorSetup::hideBusyLabel() {
    pane_.busyLabel.visible = false;
}

// ---- Writes ----------------------------------------------------------------------------------

void IndicatorSetup::put(const QByteArray& bytes) {
    if (c_.m.commtype == u"USB485") {
        links::DWORD written = 0;
        c_.links.ftdi->FT_Write(c_.m.usbhandle, bytes, static_cast<links::DWORD>(bytes.size()),
                                written);
    } else {
        c_.links.MSComm1->Output(bytes);
    }
}

void IndicatorSetup::closeWrite(std::int32_t id) {
    put(c_.m.commtype == u"USB485" ? frames::addressedRequest(id, closingCode)
                                   : frames::starRequest(closingCode));
}

void IndicatorSetup::sendGroupRs232() {
    QList<QByteArray> v;
    for (const QString& value : groupValues_) {
        v << groupFrameValue(value).toLatin1();
    }
    put(frames::starUpload('1'));
    put(v[0]);
    put(v[1]);
    put(cr);
    core::shortdelay(c_.clock);
    // The fourth value rides in this frame on the serial line.
    put(frames::starUpload('0'));
    put(v[2]);
    put(cr);
    put(v[3]);
    put(cr);
    core::shortdelay(c_.clock);
    put(frames::starUpload('9'));
    put(v[4]);
    put(v[5]);
    put(cr);
    core::shortdelay(c_.clock);
    put(frames::starUpload('2'));
    put(cr);
    core::shortdelay(c_.clock);
    const char setting = static_cast<char>(byteSetting.toInt());
    for (char code = '3'; code <= '8'; ++code) {
        put(frames::starUpload(code) + setting);
        core::shortdelay(c_.clock);
    }
    delays(3);
    closeWrite(0);
}

void IndicatorSetup::sendGroupUsb485(std::int32_t id) {
    QList<QByteArray> v;
    for (const QString& value : groupValues_) {
        v << groupFrameValue(value).toLatin1();
    }
    put(frames::addressedUpload(id, '1'));
    put(v[0]);
    put(v[1]);
    put(cr);
    core::shortdelay(c_.clock);
    put(frames::addressedUpload(id, '0'));
    put(v[2]);
    put(cr);
    core::shortdelay(c_.clock);
    // The adapter's indicators take the fourth value in a frame of its own.
    put(frames::addressedUpload(id, 'I'));
    put(v[3]);
    put(cr);
    core::shortdelay(c_.clock);
    put(frames::addressedUpload(id, '9'));
    put(v[4]);
    put(v[5]);
    put(cr);
    core::shortdelay(c_.clock);
    put(frames::addressedUpload(id, '2'));
    put(cr);
    core::shortdelay(c_.clock);
    const char setting = static_cast<char>(byteSetting.toInt());
    for (char code = '3'; code <= '8'; ++code) {
        // Each byte setting goes out four times over the network.
        const QByteArray frame = frames::addressedUpload(id, code) + setting;
        for (int i = 0; i < 4; ++i) {
            put(frame);
        }
        core::shortdelay(c_.clock);
    }
    delays(3);
    closeWrite(id);
}

std::int16_t IndicatorSetup::save_screen_to_scale(std::int32_t& id) {
    std::int16_t result = 1;
    busy(true);
    yieldToEvents();
    pane_.setButtonsEnabled(false);
    yieldToEvents();
    const QString commtype = c_.m.commtype;
    if (commtype == u"USB485") {
        pane_.setButtonsEnabled(false);
        yieldToEvents();
        sendGroupUsb485(id);
    } else if (commtype == u"RS232") {
        sendGroupRs232();
    }
    delays(4);
    pane_.setButtonsEnabled(true);
    busy(false);
    result = 0;
    return result;
}

std::int16_t IndicatorSetup::upload_oc(std::int32_t& id) {
    const QString commtype = c_.m.commtype;
    const bool usb = commtype == u"USB485";
    if (usb || commtype == u"RS232") {
        // One work text serves every slot of every frame and nothing refills it between
        // frames: on the serial line it still holds the CR of the frame before, over the
        // network the frame's own header.
        QByteArray work;
        for (char code = 'A'; code <= 'H'; ++code) {
            const int slotWrites = code == 'H' ? 2 : 6;
            if (usb) {
                work = frames::addressedUpload(id, code);
                put(work);
                for (int i = 0; i < slotWrites; ++i) {
                    put(work);
                }
            } else {
                put(frames::starUpload(code));
                if (code >= 'G') {
                    for (int i = 0; i < slotWrites; ++i) {
                        put(work);
                    }
                }
                work = cr;
            }
            put(cr);
            core::shortdelay(c_.clock);
        }
        delays(3);
        closeWrite(id);
        yieldToEvents();
    }
    delays(4);
    return 0;
}

// ---- Reads -----------------------------------------------------------------------------------

IndicatorSetup::Exchange IndicatorSetup::exchange(char code, std::int32_t id,
                                                  bool goOnAfterTimeouts, QString& text) {
    text.clear();
    if (c_.m.commtype == u"USB485") {
        return usb485Exchange(code, id, goOnAfterTimeouts, text);
    }
    if (c_.m.commtype == u"RS232") {
        return rs232Exchange(code, text);
    }
    return Exchange::Reply;
}

IndicatorSetup::Exchange IndicatorSetup::usb485Exchange(char code, std::int32_t id,
                                                        bool goOnAfterTimeouts, QString& text) {
    core::Module1& m = c_.m;
    links::FtdiApi& ftdi = *c_.links.ftdi;
    if (ftdi.FT_SetTimeouts(m.usbhandle, usbReadTimeout, 0) != links::FT_OK) {
        dialogs_.message(texts::setFlowControlFailed());
        if (!goOnAfterTimeouts) {
            return Exchange::Failed;
        }
    }
    yieldToEvents();
    const QByteArray request = frames::addressedRequest(id, code);
    links::DWORD written = 0;
    ftdi.FT_Write(m.usbhandle, request, static_cast<links::DWORD>(request.size()), written);
    QString reply;
    const core::Deadline deadline(c_.clock, replySeconds);
    for (;;) {
        c_.clock.waitForEvents(std::clamp(deadline.remaining(), 0.001, usbLookSeconds));
        if (deadline.passed()) {
            dialogs_.message(texts::scaleNotResponding());
            return Exchange::Failed;
        }
        links::DWORD waiting = 0;
        ftdi.FT_GetQueueStatus(m.usbhandle, waiting);
        if (waiting > 0) {
            QByteArray chunk;
            links::DWORD got = 0;
            ftdi.FT_Read(m.usbhandle, chunk, std::min(waiting, readBufferSize), got);
            chunk.truncate(got);
            bool cut = false;
            acquisition::appendReply(reply, chunk, cut);
        }
        if (reply.contains(u'\r')) {
            break;
        }
    }
    yieldToEvents();
    yieldToEvents();
    if (reply.isEmpty()) {
        return Exchange::Dropped;
    }
    yieldToEvents();
    const int address = reply.at(0).unicode();
    if (address < lowestAddress || address > highestAddress) {
        return Exchange::Dropped;
    }
    text = cutClosingCr(reply.mid(1));
    return Exchange::Reply;
}

IndicatorSetup::Exchange IndicatorSetup::rs232Exchange(char code, QString& text) {
    core::Module1& m = c_.m;
    links::SerialPort& port = *c_.links.MSComm1;
    yieldToEvents();
    port.Output(frames::starRequest(code));
    yieldToEvents();
    m.scalelast[0].clear();
    // Nothing runs while the serial reply is awaited.
    const core::Deadline deadline(c_.clock, replySeconds, core::MidnightGuard::None);
    for (;;) {
        if (deadline.passed()) {
            dialogs_.beep();
            dialogs_.message(texts::noResponse());
            return Exchange::NoResponse232;
        }
        if (port.InBufferCount() > 0) {
            bool cut = false;
            acquisition::appendReply(m.scalelast[0], port.Input(), cut);
            if (m.scalelast[0].contains(u'\r')) {
                break;
            }
        } else {
            c_.clock.sleep(std::clamp(deadline.remaining(), 0.001, serialLookSeconds));
        }
    }
    const QString trimmed = core::trimBlanks(m.scalelast[0]);
    text = cutClosingCr(trimmed.left(std::max<qsizetype>(0, trimmed.size() - 2)));
    return Exchange::Reply;
}

std::int16_t IndicatorSetup::load_screen_from_scale(std::int32_t& id) {
    std::int16_t result = 1;
    stopForRead();
    pane_.setButtonsEnabled(false);
    threeDelays();
    QString text;
    const Exchange outcome = exchange('G', id, false, text);
    if (outcome == Exchange::NoResponse232) {
        // The serial line's failure leaves everything as it stands: pointer, pane and halted
        // timers alike, unlike the network's, which cleans up below.
        return result;
    }
    if (outcome == Exchange::Reply) {
        c_.m.parse_tabs(text);
        for (int i = 0; i < groupValueCount; ++i) {
            groupValues_.at(static_cast<std::size_t>(i)) = c_.m.tokens[firstGroupValueWord + i];
        }
    }
    pane_.setButtonsEnabled(true);
    busy(false);
    pane_.frame.caption =
        c_.m.commtype == u"RS232"
            ? texts::groupSetupTitle() + combo1Text()
            : texts::groupSetupTitle() + texts::scaleNumber() + QString::number(id);
    yieldToEvents();
    result = 0;
    timers_.net_stat_put();
    return result;
}

void IndicatorSetup::move_scale_to_ocscreen(std::int32_t& id) {
    stopForRead();
    pane_.setButtonsEnabled(false);
    threeDelays();
    QString text;
    const Exchange outcome = exchange('J', id, false, text);
    if (outcome == Exchange::NoResponse232) {
        yieldToEvents();
        return;
    }
    if (outcome == Exchange::Dropped) {
        // Unlike the group read, an empty or misaddressed reply ends here without clean-up.
        return;
    }
    if (outcome == Exchange::Reply) {
        yieldToEvents();
        c_.m.parse_tabs(text);
        for (int i = 0; i < outputItemCount; ++i) {
            outputItems_[i] = c_.m.tokens[i];
        }
    }
    pane_.setButtonsEnabled(true);
    pane_.busyLabel.visible = false;
    busy(false);
    pane_.frame.caption = texts::outputConfigurationTitle() + combo1Text();
    yieldToEvents();
    timers_.net_stat_put();
    yieldToEvents();
}

std::int16_t IndicatorSetup::read_totals() {
    stopForRead();
    pane_.setButtonsEnabled(false);
    pane_.busyLabel.visible = true;
    threeDelays();
    QString text;
    const Exchange outcome = exchange('T', c_.m.curnetid, true, text);
    if (outcome == Exchange::NoResponse232) {
        yieldToEvents();
        return 1;
    }
    if (outcome == Exchange::Dropped) {
        return 1;
    }
    if (outcome == Exchange::Reply) {
        yieldToEvents();
        c_.m.parse_tabs(text);
        totalsWords_.clear();
        for (int i = 0; i < c_.m.tokencount; ++i) {
            totalsWords_ << c_.m.tokens[i];
        }
    }
    pane_.setButtonsEnabled(true);
    pane_.busyLabel.visible = false;
    pane_.frame.caption = texts::groupTotalsTitle() + combo1Text();
    busy(false);
    yieldToEvents();
    timers_.net_stat_put();
    yieldToEvents();
    return 0;
}

void IndicatorSetup::clearTotals(std::int32_t id) {
    core::Module1& m = c_.m;
    if (m.commtype == u"USB485") {
        pane_.setButtonsEnabled(false);
        pane_.busyLabel.visible = true;
        yieldToEvents();
        if (c_.links.ftdi->FT_SetTimeouts(m.usbhandle, usbReadTimeout, 0) != links::FT_OK) {
            dialogs_.message(texts::setFlowControlFailed());
        }
        yieldToEvents();
        put(frames::addressedRequest(id, clearCode));
        yieldToEvents();
    } else if (m.commtype == u"RS232") {
        yieldToEvents();
        put(frames::starRequest(clearCode));
        yieldToEvents();
        yieldToEvents();
    }
    delays(6);
    pane_.busyLabel.visible = false;
    yieldToEvents();
}

// ---- Database --------------------------------------------------------------------------------

std::int16_t IndicatorSetup::groupKey(const QString& name) const {
    QString key;
    if (c_.m.commtype == u"RS232") {
        key = QStringLiteral("0");
    } else {
        const qsizetype hash = name.indexOf(u'#');
        key = hash >= 0 ? name.mid(hash + 1) : core::trimBlanks(name);
    }
    return core::toInt16(key.trimmed(), QStringLiteral("the scale number of a group setup"));
}

std::int16_t IndicatorSetup::save_screen_to_db(const QString& name) {
    std::int16_t result = 1;
    const std::int16_t key = groupKey(name);
    core::Connection connection = core::Connection::open(c_.m.dataconn);
    core::Transaction transaction(connection);
    core::saveGroupDescription(connection, key, combo1Text());
    QStringList values;
    for (const QString& value : groupValues_) {
        values << value;
    }
    core::saveGroupValues(connection, key, values);
    transaction.commit();
    result = 0;
    return result;
}

std::int16_t IndicatorSetup::load_screen_from_db(const QString& name) {
    const std::int16_t key = groupKey(name);
    core::Connection connection = core::Connection::open(c_.m.dataconn);
    if (core::groupsEmpty(connection)) {
        return 1;
    }
    if (!core::groupExists(connection, key)) {
        return 2;
    }
    const QStringList values = core::groupValues(connection, key);
    for (int i = 0; i < groupValueCount; ++i) {
        const QString& v = values.value(i);
        groupValues_.at(static_cast<std::size_t>(i)) = v.isEmpty() ? v : groupFrameValue(v);
    }
    QString shown = name;
    if (c_.m.commtype == u"RS232") {
        shown = combo1Text();
    } else if (!name.contains(u'#')) {
        shown = texts::scaleNumber() + name;
    }
    pane_.frame.caption = texts::databaseGroupSetupTitle() + shown;
    return 0;
}

void IndicatorSetup::move_ocdb_to_ocscreen() {
    core::Connection connection = core::Connection::open(c_.m.cfgconn);
    // An empty table is the fatal error, as positioning on no record always was.
    core::requireFirstRow(connection, core::OneRecordTable::ocxfer);
    outputItems_ = core::firstRowValues(connection, core::OneRecordTable::ocxfer);
}

void IndicatorSetup::move_ocscreen_to_ocdb() {
    core::Connection connection = core::Connection::open(c_.m.cfgconn);
    core::Transaction transaction(connection);
    core::ensureFirstRow(connection, core::OneRecordTable::ocxfer);
    core::setFirstRowValues(connection, core::OneRecordTable::ocxfer, outputItems_);
    transaction.commit();
}

} // namespace stellwyn::indicator_config
