#include "Getdatapath.h"

#include "AppHome.h"
#include "CfgTxt.h"
#include "Dialogs.h"
#include "Module1.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

namespace stellwyn::core {

Getdatapath::Getdatapath(Module1& m, Dialogs& dialogs, const AppHome& home, QObject* parent)
    : QObject(parent), m_(m), dialogs_(dialogs), home_(home) {
    Dir1_Change(home_.folder());
}

QString Getdatapath::caption() {
    return QStringLiteral("Data File Path");
}
QString Getdatapath::label2Caption() {
    return QStringLiteral("Please select the location for the data file SVDATA.MDB");
}
QString Getdatapath::command1Caption() {
    return QStringLiteral("Okay");
}
QString Getdatapath::command2Caption() {
    return QStringLiteral("Cancel");
}

QStringList Getdatapath::drives() const {
    QStringList roots;
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
        if (volume.isValid() && volume.isReady() && !roots.contains(volume.rootPath())) {
            roots << volume.rootPath();
        }
    }
    roots.sort();
    return roots;
}

void Getdatapath::Drive1_Change(const QString& drive) {
    drive_ = drive;
    Dir1_Change(drive);
}

void Getdatapath::Dir1_Change(const QString& folder) {
    dir_ = folder;
    label1_ = folder;
    emit dirChanged(folder);
}

void Getdatapath::Command1_Click() {
    QString path = label1_;
    if (path.size() > 1 && (path.endsWith(u'/') || path.endsWith(u'\\'))) {
        path.chop(1);
    }
    m_.datapath = path;
    const QFileInfo found(path + QStringLiteral("/svdata.mdb"));
    if (!found.isFile() || found.fileName().toUpper() != QStringLiteral("SVDATA.MDB")) {
        dialogs_.message(QStringLiteral("That path is not correct. Please select the drive and "
                                        "directory where svdata.mdb is located."));
        return;
    }
    // A failure to rewrite cfg.txt is passed over: the screen still closes, and the next
    // start asks again. The file is replaced whole, so it is never left without a folder.
    cfgtxt::write(home_.file(QStringLiteral("cfg.txt")), m_.datapath);
    unload();
}

void Getdatapath::Command2_Click() {
    if (dialogs_.question(QStringLiteral("Cancel Changes"),
                          QStringLiteral("Cancel changes and exit. Are you sure?"))) {
        unload();
    }
}

void Getdatapath::unload() {
    unloaded_ = true;
    emit unloadRequested();
}

} // namespace stellwyn::core
