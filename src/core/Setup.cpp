#include "Setup.h"

#include "Conversions.h"
#include "Dialogs.h"
#include "Getdatapath.h"
#include "LoadSettings.h"
#include "Module1.h"
#include "ScaleAddress.h"
#include "SettingsStore.h"
#include "Yield.h"
#include "store/SysCfg.h"

#include <QFileInfo>

namespace stellwyn::core {

namespace {

const QString kPorts = QStringLiteral("Ports");

// The limits below keep out what would break the program later rather than at the screen: a
// NetID is one address byte and never 0, and the times become timer intervals in
// milliseconds.
constexpr double kLongestTime = 3600.0;
constexpr int kMaxNetId = 255;
constexpr int kMaxUsbReset = 32767;

QString timeRefusal() {
    return QStringLiteral("Not saved: enter a number of seconds from 0 to %1.").arg(kLongestTime);
}

bool isTime(const QString& text) {
    double value = 0.0;
    return parseNumber(text, value) && value >= 0.0 && value <= kLongestTime;
}

bool isWholeNumber(const QString& text, int low, int high) {
    bool ok = false;
    const int value = trimBlanks(text).toInt(&ok);
    return ok && value >= low && value <= high;
}

QString shown(const QVariant& value) {
    return value.isNull() ? QString() : value.toString();
}

} // namespace

Setup::Setup(Module1& m, Dialogs& dialogs, const AppHome& home, SettingsStore& settings,
             QObject* parent)
    : QObject(parent), m_(m), dialogs_(dialogs), home_(home), settings_(settings) {
    const auto save = [this] {
        if (!loading_) {
            savesettings();
            emit changed();
        }
    };
    c.chk_enbcol.Click = save;
    c.chk_RFnet.Click = save;
    c.chk_smallfonts.Click = save;
    c.cmbRfNetID.Click = save;
    c.Chk_TimerDataLog.Click = save;
    const auto portClick = [this, save] {
        save();
        if (!loading_) {
            refreshDevices();
        }
    };
    c.opt_com1.Click = portClick;
    c.opt_com2.Click = portClick;
    c.opt_rs232.Click = [this] { optionClick(); };
    c.opt_usb485.Click = [this] { optionClick(); };
    c.opt_ethernet.Click = [this] { optionClick(); };
    c.btn_datapath.Click = [this] { btn_datapath_Click(); };
    for (int i = 0; i < c.Command1.size(); ++i) {
        c.Command1[i].Click = [this, i] { Command1_Click(i); };
    }
    c.Command2.Click = [this] { Command2_Click(); };
    c.Command3.Click = [this] { Command3_Click(); };
    c.OK.Click = [this] { OK_Click(); };
    c.Cancel.Click = [this] { Cancel_Click(); };
}

bool Setup::Form_Load() {
    for (int channel = 0; channel <= 6; ++channel) {
        c.cmbRfNetID.addItem(QString::number(channel));
    }

    std::optional<SysCfgRecord> row;
    {
        Connection connection = Connection::open(m_.cfgconn);
        row = readSysCfg(connection);
    }
    if (!row) {
        dialogs_.message(QStringLiteral("The configuration record is missing"));
        unload();
        return false;
    }

    loadControls(*row);
    c.txt_IP_address.text = storedScaleAddress(settings_);
    refreshDevices();

    datPrimaryRS.ConnectionString = m_.cfgconn;
    sortscales();
    if (datPrimaryRS.RecordCount() == 0) {
        {
            Connection connection = Connection::open(m_.cfgconn);
            insertScaleCfg(connection, setupNewScaleCfg(QStringLiteral("130"), true));
        }
        try {
            sortscales();
        } catch (const DatabaseError&) {
            // The row is in; the screen shows it at the next refresh.
        }
        dialogs_.message(QStringLiteral("There were no scale configuration records. A new one "
                                        "has been created for Network ID#130."));
    }

    if (findSdMemory) {
        findSdMemory(*this);
    }

    checkfields();
    savesettings();
    emit changed();
    return true;
}

void Setup::loadControls(const SysCfgRecord& row) {
    loading_ = true;
    const QString commtype = shown(row.commtype);
    if (commtype == u"RS232") {
        c.opt_rs232.setValue(true);
    } else if (commtype == u"USB485") {
        c.opt_usb485.setValue(true);
    } else if (commtype == u"Ethernet") {
        c.opt_ethernet.setValue(true);
    }
    const QString commport = shown(row.commport).trimmed();
    if (commport == u"1") {
        c.opt_com1.setValue(true);
    } else if (commport == u"2") {
        c.opt_com2.setValue(true);
    }

    if (!row.netpolltime.isNull()) {
        c.txt_netpolltime.text = row.netpolltime.toString();
    }
    if (!row.netdeltime.isNull()) {
        c.txt_netdeltime.text = row.netdeltime.toString();
    }
    if (!row.usbreset.isNull()) {
        c.txt_usberr.text = row.usbreset.toString();
    }
    c.chk_RFnet.setValue(toBool16(row.rfnet, QStringLiteral("rfnet")) != 0 ? 1 : 0);
    c.chk_smallfonts.setValue(toBool16(row.smallfonts, QStringLiteral("smallfonts")) != 0 ? 1 : 0);
    c.chk_enbcol.setValue(
        toBool16(row.datacolenbstart, QStringLiteral("datacolenbstart")) != 0 ? 1 : 0);
    // A channel the list does not hold shows as channel 0, the first the screen offers.
    bool ok = false;
    const int channel = shown(row.rfnetid).trimmed().toInt(&ok);
    c.cmbRfNetID.setListIndex(ok && channel >= 0 && channel < c.cmbRfNetID.items().size() ? channel
                                                                                          : 0);
    loading_ = false;
}

void Setup::savesettings() {
    Connection connection = Connection::open(m_.cfgconn);
    const std::optional<SysCfgRecord> stored = readSysCfg(connection);
    if (!stored) {
        dialogs_.message(QStringLiteral("The configuration record is missing"));
        return;
    }

    SysCfgSettings s;
    if (c.opt_rs232.value()) {
        s.commtype = QStringLiteral("RS232");
    } else if (c.opt_usb485.value()) {
        s.commtype = QStringLiteral("USB485");
    } else if (c.opt_ethernet.value()) {
        s.commtype = QStringLiteral("Ethernet");
    } else {
        // A link type the screen has no option for ("RS485", "USB") stays as stored.
        s.commtype = shown(stored->commtype);
    }
    s.commport = c.opt_com1.value() ? QStringLiteral("1") : QStringLiteral("2");

    if (c.txt_netpolltime.text.isEmpty()) {
        c.txt_netpolltime.text = QStringLiteral(".33");
    }
    if (c.txt_netdeltime.text.isEmpty()) {
        c.txt_netdeltime.text = QStringLiteral(".01");
    }
    // A box whose text would not load keeps the stored value and says why beside it.
    const auto checked = [](TextBox& box, bool valid, const QString& refusal,
                            const QVariant& storedValue) {
        box.error = valid ? QString() : refusal;
        return valid ? box.text : shown(storedValue);
    };
    s.netpolltime = checked(c.txt_netpolltime, isTime(c.txt_netpolltime.text), timeRefusal(),
                            stored->netpolltime);
    s.netdeltime =
        checked(c.txt_netdeltime, isTime(c.txt_netdeltime.text), timeRefusal(), stored->netdeltime);
    s.usbreset = checked(
        c.txt_usberr,
        c.txt_usberr.text.trimmed().isEmpty() || isWholeNumber(c.txt_usberr.text, 0, kMaxUsbReset),
        QStringLiteral("Not saved: enter a whole number from 0 to %1.").arg(kMaxUsbReset),
        stored->usbreset);

    s.rfnet = c.chk_RFnet.value() != 0;
    s.smallfonts = c.chk_smallfonts.value() != 0;
    s.datacolenbstart = c.chk_enbcol.value() != 0;
    s.rfnetid = c.cmbRfNetID.listIndex();
    try {
        writeSysCfg(connection, s);
    } catch (const DatabaseError&) {
        // A failed write is not reported: the screen shows what the operator chose, and the
        // settings loaded at the close show what was kept.
    }
}

void Setup::sortscales() {
    datPrimaryRS.ConnectionString = m_.cfgconn;
    datPrimaryRS.filter =
        c.opt_rs232.value() ? ScaleTypeFilter::rs232Only : ScaleTypeFilter::notRs232;
    datPrimaryRS.Refresh();
    bindFields();
}

void Setup::checkfields() {
    bool port = true;
    bool rf = true;
    bool records = true;
    if (c.opt_usb485.value()) {
        port = false;
    } else if (c.opt_rs232.value()) {
        rf = false;
        records = false;
    } else if (c.opt_ethernet.value()) {
        port = false;
        rf = false;
        records = false;
    }
    // With no option chosen (a link type the screen does not offer) nothing is taken away.
    c.frm_commport.enabled = port;
    c.opt_com1.enabled = port;
    c.opt_com2.enabled = port;
    c.lbl_device.enabled = port;
    c.cmb_device.enabled = port;

    c.chk_RFnet.enabled = rf;
    c.Label1.enabled = rf;
    c.cmbRfNetID.enabled = rf;

    for (const int i : {fieldSctype, fieldNetId, fieldDescription}) {
        c.lblFields[i].enabled = records;
        c.txtFields[i].enabled = records;
    }
    c.lbl_active.enabled = records;
    c.chkFields.enabled = records;
    for (int i = 0; i < c.Command1.size(); ++i) {
        c.Command1[i].enabled = records;
    }
    c.Command2.enabled = records;
    c.Command3.enabled = records;
    c.Frame2.enabled = records;
    const bool ethernet = c.opt_ethernet.value();
    c.Label4.enabled = ethernet;
    c.txt_IP_address.enabled = ethernet;
}

QString Setup::blz1(const QString& text) {
    if (text.trimmed().isEmpty()) {
        return {};
    }
    qsizetype first = 0;
    while (first < text.size() && text.at(first) == u'0') {
        ++first;
    }
    return text.mid(first);
}

void Setup::optionClick() {
    if (loading_) {
        return;
    }
    checkfields();
    emit changed();
    yieldToEvents();
    savesettings();
    sortscales();
    emit changed();
}

void Setup::txt_IP_address_LostFocus() {
    TextBox& box = c.txt_IP_address;
    QString refusal;
    if (box.text.trimmed().isEmpty() || parseScaleAddress(box.text, &refusal)) {
        box.error.clear();
        storeScaleAddress(settings_, box.text);
    } else {
        box.error = QStringLiteral("Not saved: ") + refusal;
    }
    emit changed();
}

void Setup::txt_netpolltime_LostFocus() {
    savesettings();
    emit changed();
}

void Setup::txt_netdeltime_LostFocus() {
    savesettings();
    emit changed();
}

void Setup::txt_usberr_Change(const QString& text) {
    c.txt_usberr.text = text;
    savesettings();
    emit changed();
}

// The record fields show the current row; with none, they are empty.
void Setup::bindFields() {
    const ScaleCfgRow* row = datPrimaryRS.current();
    c.txtFields[fieldSctype].text = row != nullptr ? row->sctype : QString();
    c.txtFields[fieldNetId].text = row != nullptr ? shown(row->netId) : QString();
    c.txtFields[fieldDescription].text = row != nullptr ? row->description : QString();
    c.Text1.text = row != nullptr ? shown(row->pollTime) : QString();
    c.txtFields[fieldNetId].error.clear();
    c.Text1.error.clear();
    c.chkFields.setValue(row != nullptr && row->active ? 1 : 0);
    c.Chk_TimerDataLog.setValue(row != nullptr && row->pollActive ? 1 : 0);
}

// What the record fields hold, with a refused NetID or log time left as stored.
ScaleSetupFields Setup::fieldsOnScreen() {
    const ScaleCfgRow* row = datPrimaryRS.current();
    ScaleSetupFields fields;
    fields.sctype = c.txtFields[fieldSctype].text;
    fields.description = c.txtFields[fieldDescription].text;
    fields.active = c.chkFields.value() != 0;
    fields.pollActive = c.Chk_TimerDataLog.value() != 0;

    TextBox& netId = c.txtFields[fieldNetId];
    const bool netIdValid = isWholeNumber(netId.text, 1, kMaxNetId);
    netId.error = netIdValid ? QString()
                             : QStringLiteral("Not saved: the Network ID is a whole number "
                                              "from 1 to %1.")
                                   .arg(kMaxNetId);
    fields.netId =
        netIdValid ? QVariant(trimBlanks(netId.text)) : (row != nullptr ? row->netId : QVariant());

    const bool pollTimeValid = c.Text1.text.trimmed().isEmpty() || isTime(c.Text1.text);
    c.Text1.error = pollTimeValid ? QString() : timeRefusal();
    fields.pollTime =
        pollTimeValid ? QVariant(c.Text1.text) : (row != nullptr ? row->pollTime : QVariant());
    return fields;
}

void Setup::updateRecord() {
    if (datPrimaryRS.current() == nullptr) {
        return;
    }
    datPrimaryRS.Update(fieldsOnScreen());
    emit changed();
}

void Setup::txtFields_LostFocus(int) {
    updateRecord();
}

void Setup::chkFields_LostFocus() {
    updateRecord();
}

void Setup::Text1_LostFocus() {
    updateRecord();
}

void Setup::btn_datapath_Click() {
    Getdatapath chooser(m_, dialogs_, home_);
    if (showGetdatapath && dialogs_.interactive()) {
        showGetdatapath(chooser);
    }
}

void Setup::Command1_Click(int index) {
    switch (index) {
    case 0:
        datPrimaryRS.MoveFirst();
        break;
    case 1:
        datPrimaryRS.MovePrevious();
        if (datPrimaryRS.bof()) {
            datPrimaryRS.MoveFirst();
        }
        break;
    case 2:
        datPrimaryRS.MoveNext();
        if (datPrimaryRS.eof()) {
            datPrimaryRS.MoveLast();
        }
        break;
    case 3:
        datPrimaryRS.MoveLast();
        break;
    default:
        return;
    }
    bindFields();
    emit changed();
}

void Setup::Command2_Click() {
    const ScaleCfgRow* shownRow = datPrimaryRS.current();
    // The new row takes the NetID and the tick on the screen; a refused NetID is not copied.
    const QString netId = c.txtFields[fieldNetId].text;
    const QVariant newNetId = isWholeNumber(netId, 1, kMaxNetId)
                                  ? QVariant(trimBlanks(netId))
                                  : (shownRow != nullptr ? shownRow->netId : QVariant());
    const qint64 id = datPrimaryRS.AddNew(setupNewScaleCfg(newNetId, c.chkFields.value() != 0));
    datPrimaryRS.Refresh();
    datPrimaryRS.MoveFirst();
    datPrimaryRS.FindId(id);
    bindFields();
    emit changed();
    emit focusField(fieldNetId);
}

void Setup::Command3_Click() {
    if (!dialogs_.question(QStringLiteral("Record Deletion Request"),
                           QStringLiteral("Are you sure that you want to delete this record?"))) {
        return;
    }
    datPrimaryRS.Delete();
    sortscales();
    datPrimaryRS.Refresh();
    datPrimaryRS.MoveFirst();
    bindFields();
    emit changed();
}

void Setup::OK_Click() {
    dialogs_.setBusy(true);
    unload();
}

void Setup::Cancel_Click() {
    dialogs_.setBusy(true);
    unload();
}

void Setup::unload() {
    if (unloaded_) {
        return;
    }
    unloaded_ = true;
    // Form_Unload: what was saved takes effect in the shared state.
    loadsettings(m_);
    dialogs_.setBusy(false);
    emit unloadRequested();
}

int Setup::chosenPort() const {
    return c.opt_com2.value() ? 2 : 1;
}

void Setup::refreshDevices() {
    c.cmb_device.devices = listSerialDevices ? listSerialDevices() : QList<SerialDevice>{};
    c.cmb_device.text = settings_.serialDevicePath(chosenPort());
    c.lbl_device_gone.visible = !QFileInfo::exists(c.cmb_device.text);
    emit changed();
}

void Setup::cmb_device_Commit(const QString& path) {
    const QString key = QStringLiteral("COM%1").arg(chosenPort());
    const QString trimmed = path.trimmed();
    if (trimmed.isEmpty()) {
        settings_.removeSetting(kPorts, key);
    } else if (trimmed != c.cmb_device.text) {
        settings_.saveSetting(kPorts, key, trimmed);
    }
    refreshDevices();
}

} // namespace stellwyn::core
