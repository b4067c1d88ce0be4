#include "DemoHome.h"

#include "core/AppHome.h"
#include "core/ScaleAddress.h"
#include "core/SettingsStore.h"
#include "core/store/Connection.h"
#include "core/store/CreateDatabase.h"
#include "core/store/ScaleCfgTable.h"
#include "links/SimFtdi.h"
#include "sim/Scenario.h"
#include "sim/WireTime.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <memory>

namespace stellwyn::app {

namespace {

const QList<int> demoNetIds{130, 131, 132};
const QList<int> ethernetNetIds{130, 131};

void setWhenMissing(core::SettingsStore& settings, const QString& section, const QString& key,
                    const QString& value) {
    if (!settings.contains(section, key)) {
        settings.saveSetting(section, key, value);
    }
}

// One scale's load: a new weight now and then, settling in over a couple of seconds, and
// now and then taken off the platform altogether.
void scheduleNextLoad(sim::Bus& bus, int netId, double at) {
    bus.schedule(at, [&bus, netId](double t) {
        QRandomGenerator& random = *QRandomGenerator::global();
        sim::Indicator* indicator = bus.find(netId);
        if (indicator == nullptr) {
            return;
        }
        const bool unload = random.bounded(6) == 0;
        const double target = unload ? 0.0 : 5.0 + random.bounded(4800) / 10.0;
        indicator->weight().moveTo(target, t, 1.5 + random.bounded(20) / 10.0);
        scheduleNextLoad(bus, netId, t + 4.0 + random.bounded(40) / 10.0);
    });
}

} // namespace

QString demoHomeFolder(const QString& commandLineHome, bool ethernet) {
    if (!commandLineHome.isEmpty()) {
        return commandLineHome;
    }
    return QDir(core::AppHome::resolve(QString()))
        .filePath(ethernet ? QStringLiteral("demo-ethernet") : QStringLiteral("demo"));
}

void prepareDemoHome(const core::AppHome& home, bool ethernet) {
    home.ensureExists();
    if (!QFile::exists(home.file(QStringLiteral("svdata.mdb")))) {
        core::createDatabase(home.folder());
        auto connection = core::Connection::open(home.file(QStringLiteral("svdata.mdb")));
        connection.run(QStringLiteral("update syscfg set commtype = ?"),
                       {ethernet ? QStringLiteral("Ethernet") : QStringLiteral("USB485")});
        for (const int netId : ethernet ? ethernetNetIds : demoNetIds) {
            core::insertScaleCfg(connection, core::setupNewScaleCfg(netId, true));
        }
    }
    core::SettingsStore settings(home.file(QStringLiteral("stellwyn.ini")));
    const QString usb = QStringLiteral("USB");
    setWhenMissing(settings, usb, QStringLiteral("Backend"), QStringLiteral("sim"));
    QStringList ids;
    for (const int netId : demoNetIds) {
        ids << QString::number(netId);
    }
    setWhenMissing(settings, usb, QStringLiteral("SimNetIds"), ids.join(u','));
    // Room for the main screen with its scan table below it, in twips.
    const QString frame = QStringLiteral("Settings");
    setWhenMissing(settings, frame, QStringLiteral("MainLeft"), QStringLiteral("300"));
    setWhenMissing(settings, frame, QStringLiteral("MainTop"), QStringLiteral("300"));
    setWhenMissing(settings, frame, QStringLiteral("MainWidth"), QStringLiteral("13400"));
    setWhenMissing(settings, frame, QStringLiteral("MainHeight"), QStringLiteral("10600"));
}

EthernetDemo::EthernetDemo(const core::Clock& clock)
    : bus_(sim::Bus::Mode::Addressed), server_(bus_, clock) {
    sim::Scenario scenario;
    QString error;
    scenario.parseLine(QStringLiteral("ids 130,131"), &error);
    // Apart in time, as two scales on one line are: a text that arrives with two replies in it
    // is read for its first alone.
    scenario.parseLine(QStringLiteral("stream 130 every 0.5"), &error);
    scenario.parseLine(QStringLiteral("stream 131 every 0.5 at 0.25"), &error);
    const double now = sim::lineSeconds(clock);
    scenario.populate(bus_, now);
    double start = now;
    for (const int netId : ethernetNetIds) {
        scheduleNextLoad(bus_, netId, start);
        start += 1.3;
    }
}

bool EthernetDemo::start(const core::AppHome& home, QString* error) {
    if (!server_.listen(0, QHostAddress::LocalHost)) {
        *error = server_.errorString();
        return false;
    }
    core::SettingsStore settings(home.file(QStringLiteral("stellwyn.ini")));
    core::storeScaleAddress(settings, QStringLiteral("127.0.0.1:%1").arg(server_.port()));
    return true;
}

void startDemoMotion(links::FtdiApi& ftdi, const core::Clock& clock) {
    auto* simulated = dynamic_cast<links::SimFtdi*>(&ftdi);
    if (simulated == nullptr) {
        return;
    }
    sim::Bus& bus = simulated->bus();
    const double now = sim::lineSeconds(clock);
    double start = now;
    for (const auto& indicator : bus.indicators()) {
        scheduleNextLoad(bus, indicator->netId(), start);
        start += 1.3;
    }
}

} // namespace stellwyn::app
