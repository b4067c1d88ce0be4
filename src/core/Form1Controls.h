#pragma once

#include "Controls.h"

namespace stellwyn::core {

inline constexpr int timer1Count = 10;
inline constexpr int timer5Count = 10;

// The state of the main screen's controls, in one plain object that every piece working on
// the screen is handed: mode timers, scanners, scan table, collection, keypad, slaves.
// Design values are the ones the screen has when it is created.
class Form1Controls {
public:
    Form1Controls();
    Form1Controls(const Form1Controls&) = delete;
    Form1Controls& operator=(const Form1Controls&) = delete;

    // The form itself; sizes in twips.
    QString caption;
    int left = 330;
    int top = 270;
    int width = 12540;
    int height = 5905;

    // Display.
    Label Screen;
    TextBox txt_groupnum;
    Label Datamsg;

    // Controls panel.
    Label Label1;
    ComboBox Combo1;
    Frame frame_mode;
    OptionButton opt_single;
    OptionButton opt_network;
    OptionGroup modeGroup;
    CheckBox chk_pollenb;
    Label Label2;
    TextBox txt_polltime;
    CheckBox chk_frame;
    Frame Frame2;
    OptionButton opt_netscan;
    OptionButton opt_none;
    OptionButton opt_datacol;
    OptionButton opt_setup;
    OptionGroup showGroup;
    CheckBox chk_txon;
    CommandButton Command1;
    Frame Frame5;
    CommandButton Command11;
    CommandButton btn_saveslave;
    CommandButton btn_slavesload;
    CommandButton btn_closeallslaves;
    // Start and stop of the USB event thread: hidden, and shown by nothing.
    CommandButton TConn;
    CommandButton TDis;

    // Lower panes.
    bool netwindowVisible = false;
    bool datawindowVisible = false;
    bool setupwindowVisible = false;
    Label NetFrame;
    TextGrid NetList{2};

    // Data collection pane.
    Label Label20;
    CheckBox Check1;
    CheckBox chk_SaveOnPrint;
    CheckBox chk_Excel;
    CheckBox chk_Reset_Row;
    CommandButton btn_LogData;
    CommandButton btn_dataLogAll;
    Frame Frame1;
    OptionButton opt_ID;
    OptionButton opt_datetime;
    OptionButton opt_desc;
    OptionButton opt_grp;
    OptionGroup sortGroup;
    CommandButton Command2;
    // Writes the kept readings to a CSV or XLSX file.
    CommandButton btn_export;
    // On a station whose readings go to a server: the rows of every station, not only its own.
    CheckBox chk_allstations;

    // The recordsets of the scale rows and of the readings.
    DataControl data1;
    DataControl data2;
    DataControl scaleConfigRS;

    // Timers.
    CheckedArray<Timer, timer1Count> Timer1;
    Timer Timer2;
    Timer Timer3;
    Timer Timer4;
    CheckedArray<Timer, timer5Count> Timer5;
};

} // namespace stellwyn::core
