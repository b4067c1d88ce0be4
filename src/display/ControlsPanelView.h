#pragma once

#include "BoundControls.h"

#include <QWidget>

class QComboBox;
class QLineEdit;

namespace stellwyn::display {

class Form1;

// The controls panel beside the picture: the scale choice, the operating mode, what the lower
// pane shows, the exit button and the slave window commands. Each control is placed in design
// twips and scales with the pane; the operator's input goes to the form's controls, whose click
// handling does the rest.
class ControlsPanelView : public QWidget {
    Q_OBJECT
public:
    ControlsPanelView(Form1& form, QWidget* parent = nullptr);

    void setScale(double scale);
    // Brings every widget in line with the form's state.
    void sync();

private:
    Form1& form_;
    BoundControls bound_;
    QComboBox* combo_ = nullptr;
    QLineEdit* polltime_ = nullptr;
};

} // namespace stellwyn::display
