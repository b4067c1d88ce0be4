#include "links/UsbLink.h"

#include "core/Dialogs.h"
#include "core/FatalError.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "core/store/Connection.h"
#include "links/ByteText.h"
#include "links/FtdiApi.h"
#include "links/NetworkScaleRows.h"
#include "links/ScaleEntry.h"

#include <limits>

namespace stellwyn::links {

namespace {

constexpr int kWriteBufferSize = 256;
constexpr DWORD kBaudRate = 9600;
constexpr DWORD kReadTimeoutMs = 1000;
constexpr DWORD kWriteTimeoutMs = 0;

// Serial numbers are matched against records by text, so only plain characters may stay in
// them: codes 32 up to "z".
QString plainSerial(const QString& text) {
    QString kept;
    for (const QChar c : core::trimBlanks(text)) {
        if (c.unicode() >= 32 && c.unicode() < 123) {
            kept.append(c);
        }
    }
    return core::trimBlanks(kept);
}

QString openFailed() {
    return QStringLiteral("Open Failed");
}

} // namespace

UsbLink::UsbLink(core::Module1& m, FtdiApi& ftdi, core::Dialogs& dialogs)
    : m_(m), ftdi_(ftdi), dialogs_(dialogs) {}

void UsbLink::usb_open() {
    if (m_.usbhandle != 0) {
        return;
    }
    DWORD count = 0;
    ftdi_.FT_ListDevices(count, FT_LIST_NUMBER_ONLY);
    if (count == 0) {
        dialogs_.message(QStringLiteral("No device can be found on the USB."));
        m_.usbinitfail = 1;
        return;
    }
    m_.usbinitfail = 0;
    m_.fteventhandle = ftdi_.CreateEventA(false, false, QString());
    FtHandle handle = 0;
    if (ftdi_.FT_Open(0, handle) != FT_OK) {
        m_.usbinitfail = 1;
        dialogs_.message(openFailed());
        return;
    }
    m_.usbinitfail = 0;
    m_.usbhandle = handle;
    // Armed before the line is set up; nothing in the working path waits on it.
    ftdi_.FT_SetEventNotification(handle, FT_EVENT_RXCHAR, m_.fteventhandle);
    setLine(handle, kBaudRate);
    try {
        // usbreset is never loaded from the settings, so the retry count given is always 0.
        if (ftdi_.FT_SetResetPipeRetryCount(handle, static_cast<DWORD>(m_.usbreset)) != FT_OK) {
            // clang-format off
            dialogs_.message(QStringLiteral("FT_SetResetPipeRetryCount Failed. The value for USB reset indicated in the Setup Screen may be invalid. The system will work but will not be optimized for USB errors."));
            // clang-format on
        }
    } catch (const FtdiCallMissing&) {
        dialogs_.message(
            QStringLiteral("The USB drivers are out of date. Please install the latest drivers."));
    }
    m_.curnetid = handle;
    core::yieldToEvents();
}

void UsbLink::setLine(FtHandle handle, DWORD baud) {
    if (ftdi_.FT_SetBaudRate(handle, baud) != FT_OK) {
        dialogs_.message(QStringLiteral("SetBaudRate Failed"));
    }
    if (ftdi_.FT_SetDataCharacteristics(handle, FT_BITS_8, FT_STOP_BITS_1, FT_PARITY_NONE) !=
        FT_OK) {
        dialogs_.message(QStringLiteral("SetDataCharacteristics Failed"));
    }
    const QString flowFailed = flowControlFailed();
    if (ftdi_.FT_SetFlowControl(handle, FT_FLOW_NONE, 0, 0) != FT_OK) {
        dialogs_.message(flowFailed);
    }
    // The timeouts have always reported their failure in the words of the flow control.
    if (ftdi_.FT_SetTimeouts(handle, kReadTimeoutMs, kWriteTimeoutMs) != FT_OK) {
        dialogs_.message(flowFailed);
    }
}

QString UsbLink::flowControlFailed() {
    return QStringLiteral("SetFlowControl Failed");
}

bool UsbLink::openUsbScale(int i, DWORD baud) {
    if (ftdi_.FT_Open(i, m_.fthandle) != FT_OK) {
        dialogs_.message(openFailed());
        return false;
    }
    m_.netid[i] = m_.fthandle;
    setLine(m_.fthandle, baud);
    return true;
}

void UsbLink::closeScaleDevice(FtHandle handle) {
    ftdi_.FT_Close(handle);
}

void UsbLink::usb_close() {
    if (m_.commtype == u"USB485") {
        ftdi_.FT_Close(m_.usbhandle);
    } else if (m_.scalecount > 0) {
        // On links other than "USB" the table holds network ids, not handles; the library
        // refuses them and nothing comes of it.
        for (int i = 0; i <= m_.scalecount - 1; ++i) {
            ftdi_.FT_Close(m_.netid[i]);
        }
    }
    m_.usbhandle = 0;
}

void UsbLink::usb_write(const QByteArray& text) {
    const QByteArray buffer = text.left(kWriteBufferSize);
    const FtHandle handle = m_.commtype == u"USB485" ? m_.usbhandle : m_.curnetid;
    DWORD written = 0;
    ftdi_.FT_Write(handle, buffer, static_cast<DWORD>(buffer.size()), written);
}

void UsbLink::usb_start() {
    m_.clearscales();
    DWORD count = 0;
    ftdi_.FT_ListDevices(count, FT_LIST_NUMBER_ONLY);
    if (count == 0) {
        dialogs_.message(QStringLiteral("There are no Corvane Scales detected on the USB."));
        return;
    }
    if (count > static_cast<DWORD>(std::numeric_limits<std::int16_t>::max())) {
        throw core::FatalError(QStringLiteral("Overflow (%1 USB devices)").arg(count));
    }
    m_.scalecount = static_cast<std::int16_t>(count);
    const QString notResponding =
        QStringLiteral("USB not responding. A system reboot is recommended.");
    for (int i = 0; i <= static_cast<int>(count) - 1; ++i) {
        m_.usbdevindex[i] = i;
        m_.scalemark[i] = kLinkScaleMark;
        QString text;
        if (!listDevice(i, FT_OPEN_BY_SERIAL_NUMBER, text)) {
            dialogs_.message(notResponding);
            return;
        }
        m_.scaleserial[i] = plainSerial(text);
        if (!listDevice(i, FT_OPEN_BY_DESCRIPTION, text)) {
            dialogs_.message(notResponding);
            return;
        }
        m_.scaledesc[i] = core::trimBlanks(text);
    }
    core::yieldToEvents();
}

void UsbLink::usb485_start() {
    usb_open();
    if (m_.usbinitfail == 1) {
        dialogs_.message(QStringLiteral("i_init_fail"));
        return;
    }
    fillNetworkTable(m_, dialogs_);
}

bool UsbLink::listDevice(int index, unsigned flags, QString& text) {
    m_.ftlistbuf = QByteArray(kFtListBufferSize, '\0');
    if (ftdi_.FT_ListDevices(static_cast<DWORD>(index), m_.ftlistbuf, FT_LIST_BY_INDEX | flags) !=
        FT_OK) {
        return false;
    }
    text = textOf(untilNul(m_.ftlistbuf));
    return true;
}

} // namespace stellwyn::links
