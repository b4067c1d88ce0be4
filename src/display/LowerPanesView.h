#pragma once

#include "BoundControls.h"

#include <QWidget>

class QGroupBox;
class QLabel;
class QTableView;
class QTableWidget;

namespace stellwyn::display {

class Form1;

// netwindow: the network scan table, one row per scale with its latest reading. A click on a
// row picks that scale for the main display.
class NetWindowView : public QWidget {
    Q_OBJECT
public:
    NetWindowView(Form1& form, QWidget* parent = nullptr);

    void setScale(double scale);
    void sync();

private:
    Form1& form_;
    QGroupBox* frame_;
    QTableWidget* grid_;
    double scale_ = 1.0 / 15.0;
};

// datawindow: the data collection pane: the saved readings in a grid over data2, the sort
// options, and the buttons and check boxes that keep readings.
class DataWindowView : public QWidget {
    Q_OBJECT
public:
    DataWindowView(Form1& form, QWidget* parent = nullptr);

    void setScale(double scale);
    void sync();

private:
    Form1& form_;
    BoundControls bound_;
    QLabel* caption_;
    QTableView* grid_;
};

} // namespace stellwyn::display
