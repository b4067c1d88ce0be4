#pragma once

// A Setup screen over a new database in a scratch home, as a first start makes it.
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "core/AppHome.h"
#include "core/Module1.h"
#include "core/SettingsStore.h"
#include "core/Setup.h"
#include "core/store/Connection.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"

#include <memory>

namespace setuptest {

using namespace stellwyn;

struct SetupFixture {
    SetupFixture() : appHome(home.path()), settings(home.file(QStringLiteral("stellwyn.ini"))) {
        core::createDatabase(home.path());
        m.cfgconn = core::connectionText(home.path());
        m.dataconn = m.cfgconn;
    }

    core::Connection db() const {
        return core::Connection::open(home.file(QStringLiteral("svdata.mdb")));
    }
    QVariant stored(const QString& sql, const QVariantList& values = {}) const {
        core::Connection c = db();
        QSqlQuery q = c.run(sql, values);
        return q.next() ? q.value(0) : QVariant();
    }
    void run(const QString& sql, const QVariantList& values = {}) const {
        core::Connection c = db();
        c.run(sql, values);
    }
    void addScale(const QString& sctype, int netId) const {
        run(QStringLiteral("insert into ScaleCFG (sctype, NetID, Description, Active) "
                           "values (?, ?, ?, -1)"),
            {sctype, netId, QStringLiteral("scale %1").arg(netId)});
    }
    // The screen, loaded; devices are none unless a test gives them.
    core::Setup& load() {
        setup = std::make_unique<core::Setup>(m, dialogs, appHome, settings);
        setup->listSerialDevices = [] { return QList<core::SerialDevice>{}; };
        setup->Form_Load();
        return *setup;
    }

    testsupport::TempHome home;
    core::AppHome appHome;
    core::SettingsStore settings;
    core::Module1 m;
    testsupport::RecordingDialogs dialogs;
    std::unique_ptr<core::Setup> setup;
};

} // namespace setuptest
