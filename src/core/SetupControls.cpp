#include "SetupControls.h"

namespace stellwyn::core {

SetupControls::SetupControls() {
    caption = QStringLiteral("Communications Setup");

    frm_commtype.caption = QStringLiteral("Comm Type");
    opt_rs232.caption = QStringLiteral("RS232");
    opt_usb485.caption = QStringLiteral("USB-RS485");
    opt_ethernet.caption = QStringLiteral("Ethernet");
    commtypeGroup.add(opt_rs232);
    commtypeGroup.add(opt_usb485);
    commtypeGroup.add(opt_ethernet);
    Label4.caption = QStringLiteral("Scale IP Address:");
    txt_IP_address.toolTip = QStringLiteral("The scales' network address: a host name or IP "
                                            "address, and a port after a colon when it is not "
                                            "2000");

    frm_commport.caption = QStringLiteral("Comm Port");
    opt_com1.caption = QStringLiteral("COM1");
    opt_com2.caption = QStringLiteral("COM2");
    commportGroup.add(opt_com1);
    commportGroup.add(opt_com2);
    lbl_device.caption = QStringLiteral("Device:");
    cmb_device.toolTip = QStringLiteral("The serial device that this port opens. Pick one of "
                                        "this computer's ports or type a device path.");
    lbl_device_gone.caption = QStringLiteral("This device is not on this computer now.");
    lbl_device_gone.visible = false;

    const QString scanTip =
        QStringLiteral("Determines how often the RS485 network is scanned for new readings");
    Frame1.caption = QStringLiteral("Communications");
    lbl_netpolltime.caption = QStringLiteral("Net Poll Time:");
    txt_netpolltime.toolTip = scanTip;
    lbl_netdeltime.caption = QStringLiteral("Net Delay Time:");
    txt_netdeltime.toolTip = scanTip;
    lbl_usberr.caption = QStringLiteral("USB Error Reset:");
    txt_usberr.toolTip = scanTip;
    chk_RFnet.caption = QStringLiteral("RF Network:");
    Label1.caption = QStringLiteral("Channel:");
    chk_smallfonts.caption = QStringLiteral("Small Display Fonts:");
    chk_enbcol.caption = QStringLiteral("Enable Data Collection At Startup:");
    btn_datapath.caption = QStringLiteral("&Data Path");

    const QString idTip =
        QStringLiteral("Unique identification number to be used on RS485 networks");
    Frame2.caption = QStringLiteral("Scale Configurations");
    lblFields[fieldSctype].caption = QStringLiteral("Type:");
    txtFields[fieldSctype].toolTip = idTip;
    lblFields[fieldNetId].caption = QStringLiteral("Scale Network ID:");
    txtFields[fieldNetId].toolTip = idTip;
    lblFields[fieldDescription].caption = QStringLiteral("Description:");
    txtFields[fieldDescription].toolTip =
        QStringLiteral("Description used to identify USB scales. Automatically assigned");
    lbl_active.caption = QStringLiteral("Scale Active:");
    chkFields.toolTip = QStringLiteral("Activates or deactivates this scale");
    Chk_TimerDataLog.caption = QStringLiteral("Data Log Timer Enabled");
    Chk_TimerDataLog.visible = false;
    lbl_logtime.caption = QStringLiteral("Data Log Time:");
    lbl_logtime.visible = false;
    Text1.visible = false;
    lbl_seconds.caption = QStringLiteral("Seconds");
    lbl_seconds.visible = false;
    Command1[0].caption = QStringLiteral("First");
    Command1[1].caption = QStringLiteral("Prev");
    Command1[2].caption = QStringLiteral("Next");
    Command1[3].caption = QStringLiteral("Last");
    Command2.caption = QStringLiteral("Add Scale");
    Command3.caption = QStringLiteral("Delete Scale");

    SD_Mem_Op.caption = QStringLiteral("SD Memory Options");

    OK.caption = QStringLiteral("OK");
    Cancel.caption = QStringLiteral("Cancel");
}

} // namespace stellwyn::core
