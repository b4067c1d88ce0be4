#include "Main.h"

#include "core/AppHome.h"
#include "core/CfgTxt.h"
#include "core/Dialogs.h"
#include "core/Getdatapath.h"
#include "core/Module1.h"
#include "core/SettingsStore.h"
#include "core/Yield.h"
#include "core/store/Compaction.h"
#include "core/store/ConnectionText.h"
#include "core/store/ReadingServer.h"

#include <QFile>

namespace stellwyn::app {

namespace {
const QString svdata = QStringLiteral("svdata.mdb");
const QString cfgTxt = QStringLiteral("cfg.txt");
} // namespace

Main::Main(core::Module1& m, core::Dialogs& dialogs, const core::AppHome& home)
    : m_(m), dialogs_(dialogs), home_(home) {}

bool Main::run() {
    core::yieldToEvents();

    lock_ = std::make_unique<core::InstanceLock>(home_.file(QStringLiteral("stellwyn.lock")));
    if (!lock_->tryAcquire()) {
        dialogs_.beep();
        dialogs_.message(QStringLiteral(
            "There is already a previous instance of the Stellwyn program running."));
        return false;
    }

    compact();

    if (loadFrame) {
        loadFrame();
    }
    m_.formactive = core::vbFalse;
    if (showFrame) {
        showFrame();
    }

    ensureCfgTxt();
    chooseDataPathIfMissing();

    // Read again: a folder chosen just now takes effect here.
    m_.datapath = core::cfgtxt::readFirstField(home_.file(cfgTxt)).value_or(QString());
    m_.dataconn = core::connectionText(m_.datapath);
    m_.cfgconn = m_.dataconn;
    m_.readingsconn =
        core::readingsConnectionText(m_.dataconn, core::readingServerSetting(core::SettingsStore(
                                                      home_.file(QStringLiteral("stellwyn.ini")))));

    if (loadsettings) {
        loadsettings();
    }
    return true;
}

void Main::compact() {
    // Only the copy beside the program is compacted; a database kept elsewhere never is, and
    // such an installation sees the "Could not open" box at every start.
    if (QFile::exists(home_.file(svdata))) {
        dialogs_.setBusy(true);
        core::compactDatabase(home_.folder());
        dialogs_.setBusy(false);
    } else {
        dialogs_.message(QStringLiteral("Could not open ") + core::displayPath(home_.file(svdata)));
    }
}

void Main::ensureCfgTxt() {
    const QString path = home_.file(cfgTxt);
    QFile probe(path);
    if (!probe.open(QIODevice::ReadOnly)) {
        core::cfgtxt::write(path, home_.folder());
    }
    probe.close();
    core::yieldToEvents();
}

void Main::chooseDataPathIfMissing() {
    const QString folder = core::cfgtxt::readFirstField(home_.file(cfgTxt)).value_or(QString());
    if (QFile::exists(folder + u'/' + svdata)) {
        return;
    }
    dialogs_.message(QStringLiteral("The datafile SVDATA.MDB was not found at the configured "
                                    "datapath. Please press OK and select one now"));
    core::Getdatapath chooser(m_, dialogs_, home_);
    if (showGetdatapath && dialogs_.interactive()) {
        showGetdatapath(chooser);
    }
}

} // namespace stellwyn::app
