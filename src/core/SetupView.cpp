#include "SetupView.h"

#include "FatalError.h"
#include "Setup.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace stellwyn::core {

namespace {

// The screen's captions carry no access keys of their own; the view marks one letter of each
// so that every control can be reached from the keyboard.
QString withMnemonic(const QString& caption, QChar letter) {
    if (caption.contains(u'&')) {
        return caption;
    }
    const qsizetype at = caption.indexOf(letter);
    return at < 0 ? caption : caption.left(at) + u'&' + caption.mid(at);
}

void showState(QWidget* widget, bool enabled, bool visible) {
    widget->setEnabled(enabled);
    // Controls hidden at design are never shown; the others follow their frame.
    if (!visible) {
        widget->setVisible(false);
    }
}

QLabel* errorLabel(const char* name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(name) + QStringLiteral("_error"));
    label->setWordWrap(true);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, QColor(0xb0, 0x00, 0x20));
    label->setPalette(palette);
    label->hide();
    return label;
}

void setError(QLabel* label, const QString& text) {
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

} // namespace

SetupView::SetupView(Setup& logic, QWidget* parent) : QDialog(parent), logic_(logic) {
    SetupControls& c = logic_.c;
    setWindowTitle(c.caption);
    setModal(true);
    setObjectName(QStringLiteral("Setup"));

    // Link type.
    auto* commtype = new QGroupBox(c.frm_commtype.caption, this);
    commtype->setObjectName(QStringLiteral("frm_commtype"));
    auto* commtypeLayout = new QVBoxLayout(commtype);
    const auto option = [this](QWidget* group, const char* name, OptionButton& state,
                               QChar letter) {
        auto* radio = new QRadioButton(withMnemonic(state.caption, letter), group);
        radio->setObjectName(QString::fromLatin1(name));
        group->layout()->addWidget(radio);
        // Clicks and arrow keys, not the toggles that drawing the state makes.
        connect(radio, &QRadioButton::clicked, this, [this, &state](bool on) {
            if (on) {
                runHandler([&] {
                    leaveFocusedField();
                    state.setValue(true);
                });
            }
        });
        syncs_.push_back([radio, &state] {
            showState(radio, state.enabled, state.visible);
            radio->setChecked(state.value());
        });
        return radio;
    };
    option(commtype, "opt_rs232", c.opt_rs232, u'R');
    option(commtype, "opt_usb485", c.opt_usb485, u'U');
    option(commtype, "opt_ethernet", c.opt_ethernet, u'E');
    auto* label4 = new QLabel(c.Label4.caption, commtype);
    label4->setObjectName(QStringLiteral("Label4"));
    commtypeLayout->addWidget(label4);
    QLabel* ipError = nullptr;
    QLineEdit* ip = lineEdit("txt_IP_address", c.txt_IP_address, &ipError);
    commtypeLayout->addWidget(ip);
    commtypeLayout->addWidget(ipError);
    label4->setBuddy(ip);
    lostFocus_.insert(ip, [this] { logic_.txt_IP_address_LostFocus(); });
    syncs_.push_back([label4, &c] { showState(label4, c.Label4.enabled, c.Label4.visible); });
    commtypeLayout->addStretch();

    // Serial port and its device.
    auto* commport = new QGroupBox(c.frm_commport.caption, this);
    commport->setObjectName(QStringLiteral("frm_commport"));
    auto* commportLayout = new QVBoxLayout(commport);
    auto* ports = new QHBoxLayout;
    commportLayout->addLayout(ports);
    auto* portOptions = new QWidget(commport);
    portOptions->setLayout(new QHBoxLayout);
    portOptions->layout()->setContentsMargins(0, 0, 0, 0);
    option(portOptions, "opt_com1", c.opt_com1, u'1');
    option(portOptions, "opt_com2", c.opt_com2, u'2');
    ports->addWidget(portOptions);
    ports->addStretch();
    auto* deviceLabel = new QLabel(withMnemonic(c.lbl_device.caption, u'v'), commport);
    auto* device = new QComboBox(commport);
    device->setObjectName(QStringLiteral("cmb_device"));
    device->setEditable(true);
    device->setInsertPolicy(QComboBox::NoInsert);
    device->setToolTip(c.cmb_device.toolTip);
    device->setMinimumContentsLength(24);
    device->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    deviceLabel->setBuddy(device);
    auto* deviceRow = new QHBoxLayout;
    deviceRow->addWidget(deviceLabel);
    deviceRow->addWidget(device, 1);
    commportLayout->addLayout(deviceRow);
    auto* deviceGone = errorLabel("cmb_device", commport);
    deviceGone->setText(c.lbl_device_gone.caption);
    commportLayout->addWidget(deviceGone);
    connect(device, &QComboBox::activated, this, [this, device](int index) {
        runHandler([&] { logic_.cmb_device_Commit(device->itemData(index).toString()); });
    });
    connect(device->lineEdit(), &QLineEdit::editingFinished, this, [this, device] {
        runHandler([&] { logic_.cmb_device_Commit(device->currentText()); });
    });
    syncs_.push_back([device, deviceLabel, deviceGone, commport, &c] {
        const SerialDeviceBox& box = c.cmb_device;
        commport->setEnabled(c.frm_commport.enabled);
        device->setEnabled(box.enabled);
        deviceLabel->setEnabled(c.lbl_device.enabled);
        QStringList paths;
        for (int i = 0; i < device->count(); ++i) {
            paths << device->itemData(i).toString();
        }
        QStringList offered;
        for (const SerialDevice& d : box.devices) {
            offered << d.path;
        }
        if (paths != offered) {
            device->clear();
            for (const SerialDevice& d : box.devices) {
                device->addItem(d.description.isEmpty()
                                    ? d.path
                                    : QStringLiteral("%1 (%2)").arg(d.path, d.description),
                                d.path);
            }
        }
        device->setCurrentIndex(device->findData(box.text));
        device->setEditText(box.text);
        deviceGone->setVisible(c.lbl_device_gone.visible);
    });

    // Communications.
    auto* frame1 = new QGroupBox(c.Frame1.caption, this);
    frame1->setObjectName(QStringLiteral("Frame1"));
    auto* frame1Layout = new QFormLayout(frame1);
    const auto timeRow = [&](const char* name, Label& label, TextBox& state, QChar letter) {
        QLabel* error = nullptr;
        QLineEdit* edit = lineEdit(name, state, &error);
        edit->setMaximumWidth(fontMetrics().horizontalAdvance(QLatin1Char('0')) * 12);
        // The column has room beside these short boxes for the note of a refused time.
        auto* field = new QHBoxLayout;
        field->addWidget(edit);
        field->addWidget(error, 1);
        auto* caption = new QLabel(withMnemonic(label.caption, letter), frame1);
        caption->setBuddy(edit);
        frame1Layout->addRow(caption, field);
        return edit;
    };
    QLineEdit* netpoll = timeRow("txt_netpolltime", c.lbl_netpolltime, c.txt_netpolltime, u'o');
    lostFocus_.insert(netpoll, [this] { logic_.txt_netpolltime_LostFocus(); });
    QLineEdit* netdel = timeRow("txt_netdeltime", c.lbl_netdeltime, c.txt_netdeltime, u'y');
    lostFocus_.insert(netdel, [this] { logic_.txt_netdeltime_LostFocus(); });
    QLineEdit* usberr = timeRow("txt_usberr", c.lbl_usberr, c.txt_usberr, u'E');
    connect(usberr, &QLineEdit::textEdited, this,
            [this](const QString& text) { runHandler([&] { logic_.txt_usberr_Change(text); }); });

    QCheckBox* rfnet = checkBox("chk_RFnet", c.chk_RFnet);
    rfnet->setText(withMnemonic(c.chk_RFnet.caption, u'F'));
    auto* label1 = new QLabel(withMnemonic(c.Label1.caption, u'h'), frame1);
    label1->setObjectName(QStringLiteral("Label1"));
    auto* channel = new QComboBox(frame1);
    channel->setObjectName(QStringLiteral("cmbRfNetID"));
    label1->setBuddy(channel);
    auto* rfRow = new QHBoxLayout;
    rfRow->addWidget(rfnet);
    rfRow->addSpacing(fontMetrics().averageCharWidth() * 2);
    rfRow->addWidget(label1);
    rfRow->addWidget(channel);
    rfRow->addStretch();
    frame1Layout->addRow(rfRow);
    connect(channel, &QComboBox::activated, this,
            [&c](int index) { runHandler([&] { c.cmbRfNetID.setListIndex(index); }); });
    syncs_.push_back([channel, label1, &c] {
        if (channel->count() != c.cmbRfNetID.items().size()) {
            channel->clear();
            channel->addItems(c.cmbRfNetID.items());
        }
        channel->setCurrentIndex(c.cmbRfNetID.listIndex());
        channel->setEnabled(c.cmbRfNetID.enabled);
        label1->setEnabled(c.Label1.enabled);
    });
    QCheckBox* smallfonts = checkBox("chk_smallfonts", c.chk_smallfonts);
    smallfonts->setText(withMnemonic(c.chk_smallfonts.caption, u'm'));
    frame1Layout->addRow(smallfonts);
    QCheckBox* enbcol = checkBox("chk_enbcol", c.chk_enbcol);
    enbcol->setText(withMnemonic(c.chk_enbcol.caption, u'b'));
    frame1Layout->addRow(enbcol);
    QPushButton* datapath = button("btn_datapath", c.btn_datapath);
    auto* datapathRow = new QHBoxLayout;
    datapathRow->addWidget(datapath);
    datapathRow->addStretch();
    frame1Layout->addRow(datapathRow);

    // Scale records.
    auto* frame2 = new QGroupBox(c.Frame2.caption, this);
    frame2->setObjectName(QStringLiteral("Frame2"));
    auto* frame2Layout = new QFormLayout(frame2);
    const auto fieldRow = [&](int index, QChar letter) {
        QLabel* error = nullptr;
        const QByteArray name = QStringLiteral("txtFields%1").arg(index).toLatin1();
        QLineEdit* edit = lineEdit(name.constData(), c.txtFields[index], &error);
        lostFocus_.insert(edit, [this, index] { logic_.txtFields_LostFocus(index); });
        auto* field = new QVBoxLayout;
        field->addWidget(edit);
        field->addWidget(error);
        auto* caption = new QLabel(withMnemonic(c.lblFields[index].caption, letter), frame2);
        caption->setBuddy(edit);
        frame2Layout->addRow(caption, field);
        syncs_.push_back([caption, index, &c] { caption->setEnabled(c.lblFields[index].enabled); });
    };
    fieldRow(fieldSctype, u'T');
    fieldRow(fieldNetId, u'I');
    fieldRow(fieldDescription, u'n');
    QCheckBox* active = checkBox("chkFields", c.chkFields);
    auto* activeLabel = new QLabel(withMnemonic(c.lbl_active.caption, u'A'), frame2);
    activeLabel->setBuddy(active);
    frame2Layout->addRow(activeLabel, active);
    lostFocus_.insert(active, [this] { logic_.chkFields_LostFocus(); });
    syncs_.push_back([activeLabel, &c] { activeLabel->setEnabled(c.lbl_active.enabled); });

    QCheckBox* timerLog = checkBox("Chk_TimerDataLog", c.Chk_TimerDataLog);
    frame2Layout->addRow(timerLog);
    QLabel* text1Error = nullptr;
    QLineEdit* text1 = lineEdit("Text1", c.Text1, &text1Error);
    lostFocus_.insert(text1, [this] { logic_.Text1_LostFocus(); });
    auto* logTime = new QLabel(c.lbl_logtime.caption, frame2);
    auto* seconds = new QLabel(c.lbl_seconds.caption, frame2);
    auto* logRow = new QHBoxLayout;
    logRow->addWidget(logTime);
    logRow->addWidget(text1);
    logRow->addWidget(seconds);
    logRow->addWidget(text1Error);
    frame2Layout->addRow(logRow);
    syncs_.push_back([logTime, seconds, &c] {
        showState(logTime, c.lbl_logtime.enabled, c.lbl_logtime.visible);
        showState(seconds, c.lbl_seconds.enabled, c.lbl_seconds.visible);
    });

    auto* navigation = new QHBoxLayout;
    const char* moves[] = {"First", "Prev", "Next", "Last"};
    const QChar moveKeys[] = {u's', u'P', u'x', u'\0'};
    for (int i = 0; i < 4; ++i) {
        auto* move = new QPushButton(withMnemonic(c.Command1[i].caption, moveKeys[i]), frame2);
        move->setObjectName(QStringLiteral("Command1_%1").arg(moves[i]));
        move->setAutoDefault(false);
        navigation->addWidget(move);
        connect(move, &QPushButton::clicked, this, [this, i] {
            runHandler([&] {
                leaveFocusedField();
                logic_.Command1_Click(i);
            });
        });
        syncs_.push_back([move, i, &c] { move->setEnabled(c.Command1[i].enabled); });
    }
    frame2Layout->addRow(navigation);
    auto* records = new QHBoxLayout;
    QPushButton* add = button("Command2", c.Command2);
    add->setText(withMnemonic(c.Command2.caption, u'c'));
    QPushButton* remove = button("Command3", c.Command3);
    remove->setText(withMnemonic(c.Command3.caption, u'l'));
    records->addWidget(add);
    records->addWidget(remove);
    records->addStretch();
    frame2Layout->addRow(records);
    syncs_.push_back([frame2, &c] { frame2->setEnabled(c.Frame2.enabled); });

    // The SD card group.
    auto* sd = new QGroupBox(c.SD_Mem_Op.caption, this);
    sd->setObjectName(QStringLiteral("SD_Mem_Op"));
    sd->setLayout(new QVBoxLayout);
    sd->setEnabled(false);
    sdGroup_ = sd;

    QPushButton* ok = button("OK", c.OK);
    ok->setDefault(true);
    QPushButton* cancel = button("Cancel", c.Cancel);

    auto* left = new QVBoxLayout;
    auto* top = new QHBoxLayout;
    top->addWidget(commtype);
    top->addWidget(commport, 1);
    left->addLayout(top);
    left->addWidget(frame1);
    left->addStretch();
    auto* right = new QVBoxLayout;
    right->addWidget(frame2);
    right->addWidget(sd, 1);
    auto* columns = new QHBoxLayout;
    columns->addLayout(left, 1);
    columns->addLayout(right, 1);
    auto* closing = new QHBoxLayout;
    closing->addStretch();
    closing->addWidget(ok);
    closing->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addLayout(closing);

    // The order in which Tab walks the screen: down the left column, then the records.
    QWidget* order[] = {findChild<QRadioButton*>(QStringLiteral("opt_rs232")),
                        findChild<QRadioButton*>(QStringLiteral("opt_usb485")),
                        findChild<QRadioButton*>(QStringLiteral("opt_com1")),
                        findChild<QRadioButton*>(QStringLiteral("opt_com2")),
                        device,
                        netpoll,
                        netdel,
                        usberr,
                        rfnet,
                        channel,
                        smallfonts,
                        enbcol,
                        datapath};
    for (std::size_t i = 1; i < std::size(order); ++i) {
        setTabOrder(order[i - 1], order[i]);
    }
    setTabOrder(datapath, findChild<QLineEdit*>(QStringLiteral("txtFields5")));

    connect(&logic_, &Setup::changed, this, &SetupView::sync);
    connect(&logic_, &Setup::focusField, this, &SetupView::focusField);
    connect(&logic_, &Setup::unloadRequested, this, &QDialog::accept);
    sync();
}

QLineEdit* SetupView::lineEdit(const char* name, TextBox& state, QLabel** error) {
    auto* edit = new QLineEdit(this);
    edit->setObjectName(QString::fromLatin1(name));
    edit->setToolTip(state.toolTip);
    edit->installEventFilter(this);
    *error = errorLabel(name, this);
    connect(edit, &QLineEdit::textEdited, this,
            [&state](const QString& text) { state.text = text; });
    QLabel* errorText = *error;
    syncs_.push_back([edit, errorText, &state] {
        showState(edit, state.enabled, state.visible);
        if (edit->text() != state.text) {
            edit->setText(state.text);
        }
        setError(errorText, state.visible ? state.error : QString());
        edit->setAccessibleDescription(state.error);
    });
    return edit;
}

QCheckBox* SetupView::checkBox(const char* name, CheckBox& state) {
    auto* box = new QCheckBox(state.caption, this);
    box->setObjectName(QString::fromLatin1(name));
    box->setToolTip(state.toolTip);
    box->installEventFilter(this);
    connect(box, &QCheckBox::clicked, this,
            [&state](bool checked) { runHandler([&] { state.setValue(checked ? 1 : 0); }); });
    syncs_.push_back([box, &state] {
        showState(box, state.enabled, state.visible);
        box->setChecked(state.value() != 0);
    });
    return box;
}

QPushButton* SetupView::button(const char* name, CommandButton& state) {
    auto* push = new QPushButton(state.caption, this);
    push->setObjectName(QString::fromLatin1(name));
    push->setAutoDefault(false);
    connect(push, &QPushButton::clicked, this, [this, &state] {
        runHandler([&] {
            leaveFocusedField();
            if (state.Click) {
                state.Click();
            }
        });
    });
    syncs_.push_back([push, &state] { showState(push, state.enabled, state.visible); });
    return push;
}

void SetupView::sync() {
    for (const auto& draw : syncs_) {
        draw();
    }
}

bool SetupView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        const auto handler = lostFocus_.constFind(watched);
        if (handler != lostFocus_.cend()) {
            runHandler(*handler);
        }
    }
    return QDialog::eventFilter(watched, event);
}

void SetupView::leaveFocusedField() {
    const auto handler = lostFocus_.constFind(QApplication::focusWidget());
    if (handler != lostFocus_.cend()) {
        (*handler)();
    }
}

void SetupView::focusField(int index) {
    auto* edit = findChild<QLineEdit*>(QStringLiteral("txtFields%1").arg(index));
    if (edit != nullptr) {
        edit->setFocus(Qt::OtherFocusReason);
        edit->setSelection(0, static_cast<int>(edit->text().size()));
    }
}

// Closing the window is the Cancel button.
void SetupView::reject() {
    runHandler([this] {
        leaveFocusedField();
        logic_.Cancel_Click();
    });
}

} // namespace stellwyn::core
