#pragma once

#include "FakeSerialPort.h"
#include "TempHome.h"
#include "acquisition/AcquisitionContext.h"
#include "acquisition/Scanners.h"
#include "core/Clock.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "sim/Fault.h"

#include <QDateTime>
#include <QStringList>
#include <functional>
#include <memory>

namespace stellwyn::acquisitiontest {

// A fault of the simulated indicator: for every reply unless a count is given; Split sends the
// first `splitAt` bytes, then the rest `seconds` later.
inline sim::Fault fault(sim::Fault::Kind kind, int remaining = 0, double seconds = 0.0,
                        int splitAt = 1) {
    sim::Fault f;
    f.kind = kind;
    f.remaining = remaining;
    f.seconds = seconds;
    f.splitAt = splitAt;
    return f;
}

inline QDateTime noon() {
    return QDateTime(QDate(2026, 1, 5), QTime(12, 0));
}

// The main screen's state on the virtual clock, with a fresh data folder for the rows the
// scanners keep.
struct ScannerFixture {
    explicit ScannerFixture(const QDateTime& start = noon());

    // The next table entry: this NetID (or device handle) and description, also listed in Combo1.
    void addScale(int netId, const QString& description);
    // The datacol rows in the order stored, each "scaleid|reading", "<null>" for no reading.
    QStringList storedRows() const;
    // Everything a reply that is not taken must leave as it was.
    QStringList snapshot() const;
    // The screen closes at the first yield at which `when` holds. Only formclosing is set: the
    // tables stay as they were, so nothing but the scanner's own look at it can stop it.
    void closeAtYield(std::function<bool()> when);

    testsupport::TempHome home;
    core::VirtualClock clock;
    core::Module1 m;
    core::Form1Controls f;
    // MSComm1, open: the real control over a device the test feeds.
    std::unique_ptr<linkstest::FakeSerialDevice> ownedSerial =
        std::make_unique<linkstest::FakeSerialDevice>();
    linkstest::FakeSerialDevice& serial = *ownedSerial;
    links::SerialControl port{std::move(ownedSerial)};
    acquisition::AcquisitionContext context;
    acquisition::Scanners scanners;
    QStringList slaveTexts; // "k:text" for every slave window shown
    QList<int> excelCalls;  // the list index of every spreadsheet output
    QObject yieldWatch;     // where closeAtYield queues its looks
};

} // namespace stellwyn::acquisitiontest
