#pragma once

#include "Bus.h"

#include <QList>
#include <QString>
#include <functional>
#include <vector>

namespace stellwyn::sim {

// A scenario: how the line is set up and what its indicators do over time. One directive a
// line; blank lines and lines opening with "//" are passed over. Times are seconds from the
// start of the run. ID is a NetID or "*" for every indicator; on RS-232 any ID names the one.
//
//   mode rs232|addressed          ids 130,131,132         pace on|off
//   turnaround SECONDS            rf CHANNEL
//   weight ID VALUE [settle S] [at T]
//   decimals ID N                 group ID CHAR           style ID plus|hash|d
//   tag ID WORD...
//   print IDS [at T] [every S] [push]
//   stream IDS every S [at T]
//   fault ID silence|late S|split BYTES GAP|garbage HEX|low-address N|bang-no-hash|missing-cr
//         [count N]
class Scenario {
public:
    Bus::Mode mode = Bus::Mode::Addressed;
    QList<int> ids{130};
    bool pace = false;
    double turnaround = 0.0;
    int rfChannel = -1; // -1: no RF module in front of the bus
    bool hasRf() const { return rfChannel >= 0; }

    // Adds the directives of a whole text; false and a message naming the line on the first
    // that does not read.
    bool parse(const QString& text, QString* error);
    bool parseLine(const QString& line, QString* error);

    // Builds the indicators on a bus made for `mode`, sets its turnaround and pacing, and sets
    // their story going from origin. The host's side of the pacing is the transport's.
    void populate(Bus& bus, double origin) const;

private:
    using Step = std::function<void(Bus& bus, double origin)>;
    std::vector<Step> steps_;
};

} // namespace stellwyn::sim
