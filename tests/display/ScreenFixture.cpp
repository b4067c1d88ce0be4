#include "ScreenFixture.h"

#include "../links/ScaleCfgFixture.h"
#include "core/store/Connection.h"
#include "core/store/ConnectionText.h"
#include "core/store/ScaleCfgTable.h"

namespace stellwyn::displaytest {

void setSysCfg(const QString& home, const QString& field, const QVariant& value) {
    auto connection = core::Connection::open(home + QStringLiteral("/svdata.mdb"));
    // The field names are the test's own literals.
    connection.run(QStringLiteral("update syscfg set %1 = ?").arg(field), {value});
}

ScreenFixture::ScreenFixture(const QString& commtype, const QString& rows,
                             const QString& sccfgRows) {
    linkstest::makeScaleCfg(home.path(), QStringLiteral("svdata.mdb"), linkstest::scaleRows(rows));
    linkstest::makeScaleCfg(home.path(), QStringLiteral("sccfg.mdb"),
                            linkstest::scaleRows(sccfgRows));
    setSysCfg(home.path(), QStringLiteral("commtype"), commtype);
    m.cfgconn = core::connectionText(home.path());
    m.dataconn = m.cfgconn;
}

display::Form1& ScreenFixture::newForm(links::FtdiApi* ftdiOverride) {
    timers.reset();
    form_.reset();
    timers = std::make_unique<testsupport::VirtualTimers>(clock);
    form_ = makeForm(ftdiOverride, true);
    return *form_;
}

std::unique_ptr<display::Form1> ScreenFixture::makeForm(links::FtdiApi* ftdiOverride,
                                                        bool virtualTimers) {
    links::UsbLink* link = &usb;
    if (ftdiOverride != nullptr) {
        usbOverride_ = std::make_unique<links::UsbLink>(m, *ftdiOverride, dialogs);
        link = usbOverride_.get();
    }
    std::function<void(core::Timer&)> drive;
    if (virtualTimers) {
        drive = [this](core::Timer& timer) { timers->drive(timer); };
    }
    display::Form1Services services{m,
                                    dialogs,
                                    clock,
                                    appHome,
                                    [this] {
                                        auto port = std::make_unique<linkstest::FakeSerialPort>();
                                        port->missingPorts = missingPorts;
                                        port_ = port.get();
                                        return port;
                                    },
                                    ftdiOverride != nullptr ? ftdiOverride : &ftdi,
                                    link,
                                    drive};
    display::Form1Calls calls;
    calls.showStatus = [this](const QString& text) { statuses << text; };
    return std::make_unique<display::Form1>(std::move(services), std::move(calls));
}

QStringList ScreenFixture::scaleCfgRows() const {
    auto connection = core::Connection::open(home.file(QStringLiteral("svdata.mdb")));
    QStringList out;
    for (const core::ScaleCfgRow& row : core::allScaleCfg(connection)) {
        out << row.sctype + u'/' + row.serialNo;
    }
    return out;
}

} // namespace stellwyn::displaytest
