#include "ControlsPanelView.h"

#include "Form1.h"
#include "Twips.h"
#include "core/Module1.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>

namespace stellwyn::display {

namespace {
// The panel's font: 8 point, as the form was drawn.
constexpr int fontTwips = 160;
} // namespace

ControlsPanelView::ControlsPanelView(Form1& form, QWidget* parent)
    : QWidget(parent), form_(form), bound_(form, this, fontTwips) {
    bound_.afterInput = [this] { sync(); };
    setObjectName(QStringLiteral("vsElastic2"));
    core::Form1Controls& f = form_.controls();

    QLabel* activeScale = bound_.label(f.Label1, this, {120, 60, 2700, 240}, "Label1");
    combo_ = bound_.placed(new QComboBox(this), {120, 300, 2700, 330});
    activeScale->setBuddy(combo_);
    combo_->setObjectName(QStringLiteral("Combo1"));
    combo_->setToolTip(QStringLiteral("Use this to select a scale to display on the main screen."));
    connect(combo_, &QComboBox::activated, this, [this](int index) {
        form_.runEvent([this, index] { form_.controls().Combo1.setListIndex(index); });
        sync();
    });
    bound_.addSync([this] {
        const core::ComboBox& state = form_.controls().Combo1;
        const QSignalBlocker block(combo_);
        // The list shows each description trimmed.
        QStringList wanted;
        for (const QString& item : state.items()) {
            wanted << core::trimBlanks(item);
        }
        QStringList shown;
        for (int i = 0; i < combo_->count(); ++i) {
            shown << combo_->itemText(i);
        }
        if (shown != wanted) {
            combo_->clear();
            combo_->addItems(wanted);
        }
        combo_->setCurrentIndex(state.listIndex());
        combo_->setEnabled(state.enabled);
    });

    QGroupBox* mode = bound_.frame(f.frame_mode, {60, 690, 2805, 1170}, "frame_mode");
    bound_.option(f.opt_single, mode, {120, 255, 1250, 255}, "opt_single")
        ->setToolTip(QStringLiteral("Use this to restrict operation to a single scale."));
    bound_.option(f.opt_network, mode, {1440, 255, 1300, 255}, "opt_network")
        ->setToolTip(QStringLiteral("Use this to start and monitor the scale network."));
    bound_.check(f.chk_pollenb, mode, {120, 540, 1250, 255}, "chk_pollenb")
        ->setToolTip(QStringLiteral("When using the single scale operating mode, use this to poll "
                                    "the scale for readings at regular intervals."));
    bound_.check(f.chk_frame, mode, {1440, 540, 1300, 255}, "chk_frame");
    QLabel* pollTime = bound_.label(f.Label2, mode, {120, 840, 1000, 255}, "Label2");
    polltime_ = bound_.placed(new QLineEdit(mode), {1140, 810, 900, 300});
    pollTime->setBuddy(polltime_);
    polltime_->setObjectName(QStringLiteral("txt_polltime"));
    polltime_->setToolTip(QStringLiteral(
        "In single mode, sets the interval time for auto updates. In network mode, determines how "
        "often the complete network is scanned."));
    // The box has no events of its own: the timers read its text when they need it.
    connect(polltime_, &QLineEdit::textEdited, this,
            [this](const QString& text) { form_.controls().txt_polltime.text = text; });
    bound_.addSync([this] {
        const core::TextBox& state = form_.controls().txt_polltime;
        if (polltime_->text() != state.text) {
            polltime_->setText(state.text);
        }
        polltime_->setEnabled(state.enabled);
        polltime_->setVisible(state.visible);
    });

    QGroupBox* show = bound_.frame(f.Frame2, {60, 1935, 2805, 810}, "Frame2");
    bound_.option(f.opt_netscan, show, {120, 255, 1500, 255}, "opt_netscan");
    bound_.option(f.opt_none, show, {1680, 255, 1050, 255}, "opt_none");
    bound_.option(f.opt_datacol, show, {120, 510, 1620, 255}, "opt_datacol");
    bound_.option(f.opt_setup, show, {1800, 510, 930, 255}, "opt_setup");

    bound_.button(f.Command1, this, {60, 2820, 2805, 360}, "Command1")
        ->setToolTip(QStringLiteral("Exits this screen and returns to the main menu."));

    QGroupBox* slaves = bound_.frame(f.Frame5, {60, 3240, 2805, 1230}, "Frame5");
    bound_.button(f.Command11, slaves, {120, 225, 2565, 240}, "Command11");
    bound_.button(f.btn_saveslave, slaves, {120, 465, 2565, 240}, "btn_saveslave");
    bound_.button(f.btn_slavesload, slaves, {120, 705, 2565, 240}, "btn_slavesload");
    bound_.button(f.btn_closeallslaves, slaves, {120, 945, 2565, 240}, "btn_closeallslaves");

    setScale(pixelsPerTwip(this));
}

void ControlsPanelView::setScale(double scale) {
    bound_.setScale(scale);
}

void ControlsPanelView::sync() {
    bound_.sync();
}

} // namespace stellwyn::display
