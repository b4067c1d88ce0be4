#include "ScannerFixture.h"

#include "core/store/Connection.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"

namespace stellwyn::acquisitiontest {

ScannerFixture::ScannerFixture(const QDateTime& start)
    : clock(start), context{m, f, clock, {}, {}}, scanners(context) {
    core::createDatabase(home.path());
    m.dataconn = core::connectionText(home.path());
    context.hooks.showOnSlave = [this](int k, const QString& text) {
        slaveTexts << QStringLiteral("%1:%2").arg(k).arg(text);
    };
    context.hooks.excelOutput = [this](int listIndex) { excelCalls << listIndex; };
    port.PortOpen(true);
    context.links.MSComm1 = &port;
}

void ScannerFixture::closeAtYield(std::function<bool()> when) {
    // A call queued while events run is made at the next yield.
    QMetaObject::invokeMethod(
        &yieldWatch,
        [this, when] {
            if (when()) {
                m.formclosing = core::vbTrue;
            } else {
                closeAtYield(when);
            }
        },
        Qt::QueuedConnection);
}

void ScannerFixture::addScale(int netId, const QString& description) {
    m.netid[m.scalecount] = netId;
    m.scaledesc[m.scalecount] = description;
    ++m.scalecount;
    f.Combo1.addItem(description);
}

QStringList ScannerFixture::storedRows() const {
    core::Connection connection = core::Connection::open(m.dataconn);
    QStringList rows;
    for (const core::DataColRow& row : core::readings(connection, core::DataColOrder::byId)) {
        rows << row.scaleId + u'|' +
                    (row.reading.isNull() ? QStringLiteral("<null>") : row.reading.toString());
    }
    return rows;
}

QStringList ScannerFixture::snapshot() const {
    QStringList state;
    for (int i = 0; i < core::scaleTableSize; ++i) {
        state << m.scaleweight[i] << m.scalelast[i];
    }
    for (int row = 1; row < f.NetList.rows(); ++row) {
        state << f.NetList.text(row, 0) << f.NetList.text(row, 1);
    }
    state << f.Screen.caption << f.txt_groupnum.text << storedRows() << slaveTexts;
    return state;
}

} // namespace stellwyn::acquisitiontest
