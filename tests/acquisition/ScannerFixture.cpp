#include "ScannerFixture.h"

#include "core/store/Connection.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "core/store/DataColTable.h"

#include <QCoreApplication>
#include <QEvent>

namespace stellwyn::acquisitiontest {

namespace {
// Looks at every yield: an event posted while events run is delivered at the next one.
class YieldWatcher final : public QObject {
public:
    YieldWatcher(std::function<bool()> when, std::function<void()> then)
        : when_(std::move(when)), then_(std::move(then)) {
        post();
    }

    bool event(QEvent* e) override {
        if (e->type() != QEvent::User) {
            return QObject::event(e);
        }
        if (when_()) {
            then_();
        } else {
            post();
        }
        return true;
    }

private:
    void post() { QCoreApplication::postEvent(this, new QEvent(QEvent::User)); }

    std::function<bool()> when_;
    std::function<void()> then_;
};
} // namespace

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
    closer =
        std::make_unique<YieldWatcher>(std::move(when), [this] { m.formclosing = core::vbTrue; });
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
