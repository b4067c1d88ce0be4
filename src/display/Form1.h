#pragma once

#include "Data1Recordset.h"
#include "Form1Layout.h"
#include "Keypad.h"
#include "SlaveWindows.h"
#include "acquisition/AcquisitionContext.h"
#include "acquisition/ModeTimers.h"
#include "acquisition/ScanTable.h"
#include "acquisition/Scanners.h"
#include "collection/CollectionGrid.h"
#include "collection/DataColModel.h"
#include "collection/ExcelInterface.h"
#include "collection/ReadingCollection.h"
#include "core/Form1Controls.h"
#include "indicator_config/IndicatorSetup.h"
#include "links/SerialLink.h"

#include <QObject>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace stellwyn::core {
class AppHome;
class Clock;
class Dialogs;
class Module1;
class Timer;
} // namespace stellwyn::core

namespace stellwyn::links {
class Ethernet;
class FtdiApi;
class SerialPort;
class UsbLink;
} // namespace stellwyn::links

namespace stellwyn::acquisition {
class QtTimerDriver;
}

namespace stellwyn::display {

// What the main screen is built from. The USB link and its library live as long as the
// program, since the adapter stays open between uses of the screen; the serial port is made
// for each screen and closes with it.
struct Form1Services {
    core::Module1& m;
    core::Dialogs& dialogs;
    core::Clock& clock;
    const core::AppHome& home;
    std::function<std::unique_ptr<links::SerialPort>()> makeMSComm1;
    links::FtdiApi* ftdi = nullptr;
    links::UsbLink* usb = nullptr;
    // Turns the state of each timer into ticks; real timers on the event loop when unset.
    std::function<void(core::Timer&)> driveTimer;
    // The running spreadsheet program that "Excel Output" writes to; none reachable when unset.
    collection::SpreadsheetApp* spreadsheet = nullptr;
};

// What the screen asks of the frame around it. Unset ones are passed over.
struct Form1Calls {
    // A line on the frame's status bar.
    std::function<void(const QString& text)> showStatus;
};

// The main screen: creates the acquisition pieces, wires each control event to the piece that
// owns it, and runs the screen's life from load to unload. The view draws its state.
class Form1 : public QObject {
    Q_OBJECT
public:
    explicit Form1(Form1Services services, Form1Calls calls = {}, QObject* parent = nullptr);
    ~Form1() override;

    core::Form1Controls& controls() { return f_; }
    const Form1Layout& layout() const { return layout_; }
    Keypad& keypad() { return keypad_; }
    acquisition::ScanTable& scanTable() { return scanTable_; }
    acquisition::ModeTimers& modeTimers() { return timers_; }
    Data1Recordset& data1() { return data1_; }
    collection::ReadingCollection& collection() { return collection_; }
    collection::ExcelInterface& excel() { return excel_; }
    collection::CollectionGrid& grid() { return grid_; }
    // The rows of data2 as the collection pane's grid shows them.
    collection::DataColModel& data2Rows() { return data2Rows_; }
    SlaveWindows& slaves() { return slaves_; }
    links::SerialPort& MSComm1() { return *MSComm1_; }
    // The indicator setup transfers, for the setup pane and for other programs' commands.
    indicator_config::IndicatorSetup& indicatorSetup() { return setup_; }
    indicator_config::ConfigOperations& configOperations() { return setup_; }
    // The screen's state and links, for the pieces that act on them from outside the form.
    acquisition::AcquisitionContext& context() { return context_; }
    // The Ethernet link, made by the activation on "Ethernet"; null otherwise.
    links::Ethernet* ethernet() { return ethernet_.get(); }

    void Form_Load();
    // Each activation of the window; the body runs once for each life of the form.
    void Form_Activate();
    // A public routine other screens call: one yield.
    void formactivate();
    void Command1_Click();
    // Whatever the Ethernet link received: replies count after its "?" handshake.
    void Winsock1_DataArrival();
    // The hidden start and stop of the USB event thread.
    void TConn_Click();
    void TDis_Click();
    void Form_Unload();
    // Any unload of the form: Form_Unload runs, then the form goes.
    void unload();
    void hide();

    // Adds the default ScaleCFG row for scale i unless one with its serial number exists.
    void adddefrec(int i);

    bool isVisible() const { return visible_; }
    bool isUnloaded() const { return unloaded_; }
    // True while one of the form's handlers runs, in a yield or not: the form must outlive it.
    bool busy() const { return busy_ > 0; }
    // Runs an event of the form's controls, keeping the form alive while it does. An error it
    // does not trap ends the program here.
    void runEvent(const std::function<void()>& handler);

signals:
    void hidden();
    void unloaded();

private:
    // Counts a running handler for as long as it runs.
    class Busy {
    public:
        explicit Busy(Form1& form) : form_(form) { ++form_.busy_; }
        ~Busy() { --form_.busy_; }
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

    private:
        Form1& form_;
    };

    void driveTimers();
    void driveTimer(core::Timer& timer);
    // The steps of the activation, each false when the activation ends there.
    void placePanes();
    // The body of Form_Activate, which may end early at any of its yields.
    void activate();
    bool startLink();
    void startEthernet();
    void bindData();
    bool matchScaleRows();
    // False when the activation ends here: a device refused, or the screen closed in a yield.
    bool matchScaleRow(int i);
    // Devices opened by an activation that the closing screen ended: nothing else would close
    // them, since the unload has already cleared the table that held their handles.
    void closeScaleDevices();
    void fillCombo();
    void seedTimers();
    void setDefaultMode();
    // After a yield: the operator may have closed the form meanwhile.
    bool gone() const { return unloaded_; }

    Form1Services s_;
    Form1Calls calls_;
    core::Form1Controls f_;
    Form1Layout layout_;
    std::unique_ptr<links::SerialPort> MSComm1_;
    acquisition::AcquisitionContext context_;
    links::SerialLink serialLink_;
    acquisition::Scanners scanners_;
    acquisition::ModeTimers timers_;
    acquisition::ScanTable scanTable_;
    Keypad keypad_;
    Data1Recordset data1_;
    collection::ReadingCollection collection_;
    collection::CollectionGrid grid_;
    collection::DataColModel data2Rows_;
    collection::ExcelInterface excel_;
    SlaveWindows slaves_;
    indicator_config::IndicatorSetup setup_;
    bool data2Bound_ = false;
    std::unique_ptr<acquisition::QtTimerDriver> timerDriver_;
    // After the timer driver, so that it goes first.
    std::unique_ptr<links::Ethernet> ethernet_;
    bool visible_ = true;
    bool unloaded_ = false;
    // Scale devices the running activation opened on "USB".
    std::vector<std::int32_t> openedScales_;
    int busy_ = 0;
};

} // namespace stellwyn::display
