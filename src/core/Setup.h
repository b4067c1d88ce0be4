#pragma once

#include "ScaleRecordset.h"
#include "SerialDeviceList.h"
#include "SetupControls.h"

#include <QObject>
#include <functional>

namespace stellwyn::core {

class AppHome;
class Dialogs;
class Getdatapath;
class Module1;
class SettingsStore;
struct SysCfgRecord;

// The Setup screen: the link, the serial device of its port, the communications settings and
// the scale records. Nothing on it waits for OK: a setting is written to syscfg as it changes
// and a scale field when it loses focus, so OK and Cancel both only close the screen, and the
// settings are loaded again as it unloads.
class Setup : public QObject {
    Q_OBJECT
public:
    Setup(Module1& m, Dialogs& dialogs, const AppHome& home, SettingsStore& settings,
          QObject* parent = nullptr);

    SetupControls c;
    // datPrimaryRS: the scale rows shown, of the link type chosen.
    ScaleRecordset datPrimaryRS;

    // Hooks the composition root sets.
    std::function<void(Getdatapath&)> showGetdatapath;
    // Finds the time zone and the SD card's drive while the screen loads.
    std::function<void(Setup&)> findSdMemory;
    // The serial devices to offer for the port.
    std::function<QList<SerialDevice>()> listSerialDevices = [] { return serialDevices(); };

    // Loads the screen. False when it unloaded at once (syscfg holds no record).
    bool Form_Load();
    bool unloaded() const { return unloaded_; }

    void savesettings();
    void sortscales();
    void checkfields();
    static QString blz1(const QString& text);

    void txt_netpolltime_LostFocus();
    void txt_netdeltime_LostFocus();
    void txt_usberr_Change(const QString& text);
    void txtFields_LostFocus(int index);
    void chkFields_LostFocus();
    void Text1_LostFocus();
    // Keeps the scale address in the settings store, or says beside the box why it will not.
    void txt_IP_address_LostFocus();

    void btn_datapath_Click();
    void Command1_Click(int index);
    void Command2_Click();
    void Command3_Click();
    void OK_Click();
    void Cancel_Click();

    // The serial device of the chosen port: one from the list, or a path typed by hand. An
    // empty text goes back to the port's default device.
    void cmb_device_Commit(const QString& path);
    // Reads the system's serial devices and the port's setting again.
    void refreshDevices();

signals:
    // Something shown has changed; the view draws the controls again.
    void changed();
    // The view puts the focus on txtFields(index) and selects its whole text.
    void focusField(int index);
    void unloadRequested();

private:
    void optionClick();
    void loadControls(const SysCfgRecord& row);
    void bindFields();
    ScaleSetupFields fieldsOnScreen();
    void updateRecord();
    int chosenPort() const;
    void unload();

    Module1& m_;
    Dialogs& dialogs_;
    const AppHome& home_;
    SettingsStore& settings_;
    // Set while the load fills the controls: the clicks that raises write nothing, since the
    // load writes the whole row once at its end.
    bool loading_ = false;
    bool unloaded_ = false;
};

} // namespace stellwyn::core
