#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

namespace stellwyn::core {

class Module1;
class Dialogs;
class AppHome;

// The data path chooser, "Data File Path": the operator points at the folder that holds
// svdata.mdb and the choice is written to cfg.txt in the program's folder.
class Getdatapath : public QObject {
    Q_OBJECT
public:
    Getdatapath(Module1& m, Dialogs& dialogs, const AppHome& home, QObject* parent = nullptr);

    static QString caption();
    static QString label2Caption();
    static QString command1Caption();
    static QString command2Caption();

    // Drive1: the mounted volumes to pick from; choosing one moves Dir1 to its root.
    QStringList drives() const;
    const QString& drive() const { return drive_; }
    void Drive1_Change(const QString& drive);

    // Dir1: the folder shown; a change shows it in Label1.
    const QString& dir() const { return dir_; }
    void Dir1_Change(const QString& folder);
    const QString& label1() const { return label1_; }

    void Command1_Click(); // Okay
    void Command2_Click(); // Cancel

    bool unloaded() const { return unloaded_; }

signals:
    void dirChanged(const QString& folder);
    void unloadRequested();

private:
    void unload();

    Module1& m_;
    Dialogs& dialogs_;
    const AppHome& home_;
    QString drive_;
    QString dir_;
    QString label1_;
    bool unloaded_ = false;
};

} // namespace stellwyn::core
