#pragma once

#include "BoundControls.h"
#include "core/Controls.h"

#include <QWidget>

class QLabel;
class QTableWidget;

namespace stellwyn::display {

class Form1;

// setupwindow: the "Indicator Setup" pane. The buttons of the group setup, output
// configuration and totals transfers, the pane title and busy label they write, and a table of
// what the indicator last said: the six group values (which the operator may edit before
// sending them), the output configuration words and the totals.
class SetupWindowView : public QWidget {
    Q_OBJECT
public:
    SetupWindowView(Form1& form, QWidget* parent = nullptr);

    void setScale(double scale);
    void sync();

private:
    void fillTable();

    Form1& form_;
    BoundControls bound_;
    core::Frame groupFrame_;
    core::Frame outputFrame_;
    core::Frame totalsFrame_;
    QLabel* title_;
    QTableWidget* table_;
};

} // namespace stellwyn::display
