#include "Form1Controls.h"

namespace stellwyn::core {

Form1Controls::Form1Controls() {
    caption = QStringLiteral("Stellwyn");

    Datamsg.caption = QStringLiteral("Collecting Data...");
    Datamsg.visible = false;
    Label1.caption = QStringLiteral("Active Scale:");
    frame_mode.caption = QStringLiteral("Operating Mode");
    opt_single.caption = QStringLiteral("Single");
    opt_network.caption = QStringLiteral("Network");
    modeGroup.add(opt_single);
    modeGroup.add(opt_network);
    chk_pollenb.caption = QStringLiteral("Poll");
    Label2.caption = QStringLiteral("Poll Time:");
    chk_frame.caption = QStringLiteral("Frame");
    Frame2.caption = QStringLiteral("Show");
    opt_netscan.caption = QStringLiteral("Network Scan");
    opt_none.caption = QStringLiteral("None");
    opt_datacol.caption = QStringLiteral("Data Collection");
    showGroup.add(opt_netscan);
    showGroup.add(opt_none);
    opt_setup.caption = QStringLiteral("Setup");
    showGroup.add(opt_datacol);
    showGroup.add(opt_setup);
    chk_txon.caption = QStringLiteral("Tx On");
    chk_txon.visible = false;
    // Ticked by design, before any handler is attached.
    chk_txon.setValue(1);
    Command1.caption = QStringLiteral("E&xit");
    Frame5.caption = QStringLiteral("Slave Windows");
    Command11.caption = QStringLiteral("Open For Current Scale");
    btn_saveslave.caption = QStringLiteral("Save Current Layout");
    btn_slavesload.caption = QStringLiteral("Restore Saved Layout");
    btn_closeallslaves.caption = QStringLiteral("Close All");
    TConn.caption = QStringLiteral("TMain");
    TConn.visible = false;
    TDis.caption = QStringLiteral("TDis");
    TDis.visible = false;

    NetFrame.caption = QStringLiteral("Network Scan");

    Label20.caption = QStringLiteral("Data Collection");
    Check1.caption = QStringLiteral("Enabled");
    Check1.visible = false;
    chk_SaveOnPrint.caption = QStringLiteral("Auto Save");
    chk_Excel.caption = QStringLiteral("Excel Output");
    chk_Reset_Row.caption = QStringLiteral("Excel Row 1");
    chk_Reset_Row.visible = false;
    btn_LogData.caption = QStringLiteral("Save Current");
    btn_dataLogAll.caption = QStringLiteral("Save All");
    Frame1.caption = QStringLiteral("Sort by");
    opt_ID.caption = QStringLiteral("ID");
    opt_datetime.caption = QStringLiteral("Dat/Time");
    opt_desc.caption = QStringLiteral("Scale ID");
    opt_grp.caption = QStringLiteral("Weight");
    sortGroup.add(opt_ID);
    sortGroup.add(opt_datetime);
    sortGroup.add(opt_desc);
    sortGroup.add(opt_grp);
    Command2.caption = QStringLiteral("Clear List");
    btn_export.caption = QStringLiteral("Export…");
    chk_allstations.caption = QStringLiteral("All stations");
    chk_allstations.visible = false;
    // Sorting by ID is the option selected at design, before any handler is attached.
    opt_ID.setValue(true);

    Timer2.setInterval(100);
    Timer3.setInterval(100);
    Timer4.setInterval(100);
}

} // namespace stellwyn::core
