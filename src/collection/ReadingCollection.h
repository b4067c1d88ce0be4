#pragma once

#include <QString>
#include <functional>
#include <optional>

namespace stellwyn::core {
class Clock;
class Form1Controls;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::collection {

// The sites of the data collection pane that keep readings: "Save Current", "Save All" and the
// hidden Check1 with its ten log timers. Every row goes through store_reading, the one path the
// scanners (and the Ethernet parser's Data_collect) use too.
class ReadingCollection {
public:
    static constexpr int logTickMs = 950;

    ReadingCollection(core::Module1& m, core::Form1Controls& f, core::Clock& clock);

    // The spreadsheet output of the row just stored, for this scale slot.
    std::function<void(int slot)> excelOutput;

    void attach();

    void Check1_Click();
    void Timer5_Timer(int index);
    void btn_LogData_Click();
    void btn_dataLogAll_Click();

private:
    qint64 store(const QString& scaleid, const std::optional<QString>& reading);
    void startLogTimers();
    void stopLogTimers();

    core::Module1& m_;
    core::Form1Controls& f_;
    core::Clock& clock_;
};

} // namespace stellwyn::collection
