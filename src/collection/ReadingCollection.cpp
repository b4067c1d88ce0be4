#include "ReadingCollection.h"

#include "StoreReading.h"
#include "core/FatalError.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "core/store/Connection.h"
#include "core/store/ScaleCfgTable.h"

#include <cmath>

namespace stellwyn::collection {

namespace {
constexpr std::int16_t loggingOn = -1; // 65535 as the 16-bit flag holds it
constexpr int logTimerNetIdLimit = 127;

std::optional<QString> unlessEmpty(const QString& text) {
    return text.isEmpty() ? std::nullopt : std::optional<QString>(text);
}
} // namespace

ReadingCollection::ReadingCollection(core::Module1& m, core::Form1Controls& f, core::Clock& clock)
    : m_(m), f_(f), clock_(clock) {}

void ReadingCollection::attach() {
    f_.Check1.Click = [this] { Check1_Click(); };
    for (int i = 0; i < core::timer5Count; ++i) {
        f_.Timer5[i].Tick = [this, i] { Timer5_Timer(i); };
    }
    f_.btn_LogData.Click = [this] { btn_LogData_Click(); };
    f_.btn_dataLogAll.Click = [this] { btn_dataLogAll_Click(); };
}

qint64 ReadingCollection::store(const QString& scaleid, const std::optional<QString>& reading) {
    return store_reading(m_, clock_, scaleid, reading);
}

void ReadingCollection::Check1_Click() {
    if (f_.Check1.value() != 0) {
        m_.scalelogging[m_.curscale] = loggingOn;
        startLogTimers();
    } else {
        m_.scalelogging[m_.curscale] = 0;
        f_.Datamsg.visible = false;
        stopLogTimers();
    }
}

void ReadingCollection::startLogTimers() {
    f_.scaleConfigRS.ConnectionString = m_.cfgconn;
    f_.scaleConfigRS.RecordSource =
        QStringLiteral("select * from [ScaleCFG] Where [sctype] <> 'RS232' Order by [NetID]");
    core::Connection connection = core::Connection::open(f_.scaleConfigRS.ConnectionString);
    const QList<core::ScaleCfgRow> rows =
        core::scaleCfgByType(connection, core::ScaleTypeFilter::notRs232);
    for (int i = 0; i < core::timer5Count; ++i) {
        m_.slavepollcount[i] = 0;
        m_.slavepollmax[i] = 0;
    }
    // The member index counts polled rows, not scale slots: a member logs the slot of its own
    // number, whichever scale its row belongs to.
    int member = 0;
    for (const core::ScaleCfgRow& row : rows) {
        if (row.netId.isNull() || row.netId.toLongLong() >= logTimerNetIdLimit || !row.pollActive) {
            continue;
        }
        core::Timer& timer = f_.Timer5[member];
        timer.setEnabled(true);
        timer.setInterval(logTickMs);
        m_.slavepollmax[member] =
            static_cast<std::int32_t>(std::nearbyint(row.pollTime.toDouble()));
        ++member;
    }
}

void ReadingCollection::stopLogTimers() {
    for (int i = 0; i < core::timer5Count; ++i) {
        f_.Timer5[i].setEnabled(false);
        m_.slavepollcount[i] = 0;
        m_.slavepollmax[i] = 0;
    }
}

void ReadingCollection::Timer5_Timer(int index) {
    // A count of n ticks stores first on tick n + 1: the counter starts at 0, stands at 1 after
    // a store, and goes up in every tick.
    if (m_.slavepollcount[index] >= m_.slavepollmax[index]) {
        store(m_.scaledesc[index], m_.scaleweight[index]);
        m_.slavepollcount[index] = 0;
    }
    m_.slavepollcount[index] += 1;
}

void ReadingCollection::btn_LogData_Click() {
    // The button passes over every failure, a scale list with no selection included.
    try {
        const int slot = f_.Combo1.listIndex();
        if (m_.scaleweight[slot].isEmpty()) {
            return;
        }
        store(QString::number(m_.netid[slot]), m_.scaleweight[slot]);
        core::yieldToEvents();
        if (f_.chk_Excel.value() == 1 && excelOutput) {
            // Slot 0 whichever scale is selected, and the spreadsheet row as it stood.
            excelOutput(0);
        }
    } catch (const core::FatalError&) {
    }
}

void ReadingCollection::btn_dataLogAll_Click() {
    const int count = static_cast<int>(f_.Combo1.items().size());
    for (int i = 0; i < count; ++i) {
        const qint64 id = store(QString::number(m_.netid[i]), unlessEmpty(m_.scaleweight[i]));
        core::yieldToEvents();
        // The screen closed in the yield: its scale table is cleared, nothing more to keep.
        if (m_.formclosing != 0) {
            return;
        }
        if (f_.chk_Excel.value() == 1 && excelOutput) {
            setExcelRowAfter(m_, id);
            excelOutput(i);
        }
    }
}

} // namespace stellwyn::collection
