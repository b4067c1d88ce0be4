#pragma once

#include <QString>
#include <optional>

namespace stellwyn::core {
class SettingsStore;
}

namespace stellwyn::collector {

// What an operator would have set on the main screen before walking away, kept in the
// Collector section of stellwyn.ini. An absent key leaves the screen's own state after its
// activation: the link's mode, the poll time of the settings, nothing ticked.
struct CollectorSettings {
    enum class Mode { asActivated, single, network };
    Mode mode = Mode::asActivated;
    // Single mode only: send a reading request every poll time.
    bool poll = false;
    // The poll time in seconds, as typed into the screen's box; empty: netpolltime.
    QString pollTime;
    // "Auto Save": every reading is stored, not only the printed ones.
    bool autoSave = false;
    // The hidden log timers that store each scale's reading on their own period.
    bool logTimers = false;
    // The scale of single mode, as its index in the screen's list.
    int scale = 0;

    // Reads the section; a value that means nothing gives a message and the default.
    static CollectorSettings read(const core::SettingsStore& settings, QString* problems);
};

} // namespace stellwyn::collector
