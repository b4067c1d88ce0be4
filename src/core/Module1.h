#pragma once

#include "CheckedArray.h"

#include <QString>
#include <cstdint>

namespace stellwyn::core {

// 16-bit truth values as the rest of the program stores them.
inline constexpr std::int16_t vbTrue = -1;
inline constexpr std::int16_t vbFalse = 0;

inline constexpr int scaleTableSize = 11;  // entries 0..10
inline constexpr int tokenTableSize = 101; // entries 0..100
inline constexpr int slaveCount = 10;      // slave windows 0..9
// The open flags reach one past the windows: opening for the last scale entry sets a flag
// that has no window.
inline constexpr int slaveFlagCount = 11;

// The serial line's settings text: the speed and framing cannot be configured.
inline QString serialLineSettings() {
    return QStringLiteral("9600,N,8,1");
}

// The one owner of the shared state. Built once by the composition root and handed by
// reference to every part that reads or writes it; there is no global instance.
class Module1 {
public:
    // A copy of the syscfg record, filled by loadsettings.
    QString commtype;
    QString commsettings;
    std::int16_t commport = 0;
    double netpolltime = 0.0;
    double netdeltime = 0.0;
    std::int16_t rfnet = 0;
    QString rfnetid;
    std::int16_t smallfonts = 0;
    std::int16_t tagblz = 0;
    std::int16_t datacolenbstart = 0;
    std::int16_t usbreset = 0;

    // Paths and connections.
    QString datapath;
    QString dataconn;
    QString cfgconn;
    // Where the readings are kept and read: dataconn, or a text that also names the server a
    // station sends them to (core/store/ReadingServer.h). Empty: dataconn.
    QString readingsconn;

    // Link handles and flags.
    std::int32_t usbhandle = 0;
    std::int16_t usbinitfail = 0;
    double usberrcount = 0.0;
    std::int32_t fteventhandle = 0;
    std::int32_t fthandle = 0;
    QByteArray ftlistbuf;

    // The scale table: entry i of each array belongs to the same scale.
    CheckedArray<std::int32_t, scaleTableSize> netid;
    CheckedArray<std::int32_t, scaleTableSize> usbdevindex;
    CheckedArray<QString, scaleTableSize> scaleserial;
    CheckedArray<QString, scaleTableSize> scaledesc;
    CheckedArray<std::int32_t, scaleTableSize> scaleid;
    CheckedArray<QString, scaleTableSize> scaleweight;
    CheckedArray<QString, scaleTableSize> scalelast;
    CheckedArray<std::int16_t, scaleTableSize> scalelogging;
    CheckedArray<std::int16_t, scaleTableSize> scaleactive;
    CheckedArray<double, scaleTableSize> scalepolltime;
    CheckedArray<std::int16_t, scaleTableSize> scalemark;
    CheckedArray<std::int32_t, scaleTableSize> slavepollcount;
    CheckedArray<std::int32_t, scaleTableSize> slavepollmax;

    // Selection and mode.
    std::int16_t scalecount = 0;
    std::int16_t curscale = 0;
    std::int32_t curnetid = 0;
    std::int16_t singlescale = 0;
    std::int16_t opmode = 0;
    std::int16_t networkmode = 0;
    std::int16_t keypending = 0;
    std::int16_t keycode = 0;
    std::int16_t keybusy = 0;
    std::int16_t timerguard = 0;
    std::int16_t timer1index = 0;

    // Form guards and the rest.
    std::int16_t formactive = 0;
    std::int16_t formclosing = 0;
    CheckedArray<std::int16_t, slaveFlagCount> slaveopen;
    CheckedArray<QString, tokenTableSize> tokens;
    std::int16_t tokencount = 0;
    QString sddrivepath;
    std::int16_t sddrivechosen = 0;
    QString sdtimezone;
    std::int16_t excelrow = 0;

    // Splits a line on blanks into tokens; the line is trimmed in place.
    void parse_spaces(QString& line);
    // Splits a line on tabs into tokens; the line is trimmed in place.
    void parse_tabs(QString& line);
    // Empties the scale table.
    void clearscales();

private:
    void splitLine(QString& line, QChar separator);
};

// Trims blanks (and only blanks) from both ends, as the record texts are trimmed everywhere.
QString trimBlanks(const QString& text);

} // namespace stellwyn::core
