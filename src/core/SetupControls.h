#pragma once

#include "Controls.h"
#include "SerialDeviceList.h"

namespace stellwyn::core {

// The serial device of the chosen port: what the system offers, and the path the settings
// file names for the port, which may be one the system no longer has.
struct SerialDeviceBox {
    QList<SerialDevice> devices;
    QString text;
    bool enabled = true;
    QString toolTip;
};

// The Setup screen's controls, in one plain object that its logic and its view share.
// Design values are the ones the screen has when it is created.
class SetupControls {
public:
    SetupControls();
    SetupControls(const SetupControls&) = delete;
    SetupControls& operator=(const SetupControls&) = delete;

    QString caption;

    // Link type.
    Frame frm_commtype;
    OptionButton opt_rs232;
    OptionButton opt_usb485;
    OptionButton opt_ethernet;
    OptionGroup commtypeGroup;
    Label Label4;
    TextBox txt_IP_address;

    // Serial port.
    Frame frm_commport;
    OptionButton opt_com1;
    OptionButton opt_com2;
    OptionGroup commportGroup;
    Label lbl_device;
    SerialDeviceBox cmb_device;
    // Shown when the device that the port names is not on this computer now.
    Label lbl_device_gone;

    // Communications.
    Frame Frame1;
    Label lbl_netpolltime;
    TextBox txt_netpolltime;
    Label lbl_netdeltime;
    TextBox txt_netdeltime;
    Label lbl_usberr;
    TextBox txt_usberr;
    CheckBox chk_RFnet;
    Label Label1;
    ComboBox cmbRfNetID;
    CheckBox chk_smallfonts;
    CheckBox chk_enbcol;
    CommandButton btn_datapath;

    // Scale records: txtFields 5, 4 and 0 are in use, bound to sctype, NetID and Description.
    Frame Frame2;
    CheckedArray<Label, 6> lblFields;
    CheckedArray<TextBox, 6> txtFields;
    Label lbl_active;
    CheckBox chkFields;
    CheckBox Chk_TimerDataLog;
    Label lbl_logtime;
    TextBox Text1;
    Label lbl_seconds;
    CheckedArray<CommandButton, 4> Command1;
    CommandButton Command2;
    CommandButton Command3;

    // The SD card group, filled by the SD memory part of the program.
    Frame SD_Mem_Op;

    CommandButton OK;
    CommandButton Cancel;
};

// The indexes of txtFields in use.
inline constexpr int fieldSctype = 5;
inline constexpr int fieldNetId = 4;
inline constexpr int fieldDescription = 0;

} // namespace stellwyn::core
