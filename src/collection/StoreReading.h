#pragma once

#include <QString>
#include <optional>

namespace stellwyn::core {
class Clock;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::collection {

// The common step of every site that keeps a reading: one datacol row with the scale text,
// the reading, and the computer's date and time at this moment. A failure is not trapped here:
// it goes up to whoever called. Returns the new row's ID (its outbox ID on a station that sends
// its readings to a server: a server away is no failure).
qint64 store_reading(core::Module1& m, const core::Clock& clock, const QString& scaleid,
                     const std::optional<QString>& reading);

// A station whose readings go to a server keeps each one in its outbox first and sends it on at
// once, or, while the server is away, on a timer. This sends what waits now, trying a server that
// was found away too; returns how many readings still wait.
qint64 sendWaitingReadings(core::Module1& m);

// The spreadsheet row that follows a stored row: its ID plus one, in the 16-bit counter the
// spreadsheet output reads. An ID past that counter's range is the overflow fatal error.
void setExcelRowAfter(core::Module1& m, qint64 storedId);

} // namespace stellwyn::collection
