#pragma once

#include "CheckedArray.h"

#include <QString>
#include <QStringList>
#include <array>
#include <functional>
#include <vector>

namespace stellwyn::core {

// The state of one control as a form keeps it, without any widget. Views draw it and forward
// the operator's input; logic reads and writes it. Setting a value from code runs the control's
// click handling exactly where a form would: an option button that becomes true, a check box
// whose value changes, a list whose index is set.

struct Label {
    QString caption;
    bool enabled = true;
    bool visible = true;
};

struct TextBox {
    QString text;
    bool enabled = true;
    bool visible = true;
    QString toolTip;
    // Set when the text was refused and not stored: says why, beside the box.
    QString error;
};

class CheckBox {
public:
    int value() const { return value_; }
    // 0 unticked, 1 ticked. A change runs Click.
    void setValue(int value);

    QString caption;
    bool enabled = true;
    bool visible = true;
    QString toolTip;
    std::function<void()> Click;

private:
    int value_ = 0;
};

// A button; its click is wired by the piece that owns what it does.
struct CommandButton {
    QString caption;
    bool enabled = true;
    bool visible = true;
    std::function<void()> Click;
};

// A frame of the form: a caption around other controls, which it disables with itself.
struct Frame {
    QString caption;
    bool enabled = true;
    bool visible = true;
};

// A data control: the connection and the query of the recordset a form holds. The code that
// refreshes it re-runs the query; whatever is bound to it follows through Refreshed.
struct DataControl {
    QString ConnectionString;
    QString RecordSource;
    std::function<void()> Refreshed;
};

class OptionGroup;

class OptionButton {
public:
    bool value() const { return value_; }
    // Becoming true clears the other buttons of its group and runs Click; becoming false
    // runs nothing.
    void setValue(bool value);

    QString caption;
    bool enabled = true;
    bool visible = true;
    std::function<void()> Click;

private:
    friend class OptionGroup;
    OptionGroup* group_ = nullptr;
    bool value_ = false;
};

// Option buttons in one frame: at most one of them is true.
class OptionGroup {
public:
    void add(OptionButton& button);
    void clearOthers(const OptionButton& chosen);

private:
    std::vector<OptionButton*> buttons_;
};

class ComboBox {
public:
    const QStringList& items() const { return items_; }
    void addItem(const QString& item) { items_ << item; }
    void clear();
    int listIndex() const { return listIndex_; }
    // Setting the index runs Click, as a list does whenever its index is set.
    void setListIndex(int index);

    bool enabled = true;
    std::function<void()> Click;

private:
    QStringList items_;
    int listIndex_ = -1;
};

// A timer's two properties. It fires only while enabled with an interval above 0; the driver
// that turns this state into real ticks listens to Changed.
class Timer {
public:
    int interval() const { return interval_; }
    bool enabled() const { return enabled_; }
    bool running() const { return enabled_ && interval_ > 0; }
    void setInterval(int milliseconds);
    void setEnabled(bool enabled);

    std::function<void()> Tick;
    std::function<void()> Changed;

private:
    int interval_ = 0;
    bool enabled_ = false;
};

// A grid of text cells with a fixed header row 0.
class TextGrid {
public:
    explicit TextGrid(int columns) : columns_(columns) {}

    int rows() const { return static_cast<int>(cells_.size()) + 1; }
    int columns() const { return columns_; }
    // Row 1 and up; a row past the end is added.
    QString text(int row, int column) const;
    void setText(int row, int column, const QString& text);
    void addRow(const QStringList& cells);
    // Removes every row but the header.
    void clearRows() { cells_.clear(); }
    // Empties every cell and keeps the rows.
    void clearCells();

    bool visible = true;
    int row = 0;
    std::function<void()> Changed;

private:
    int columns_;
    std::vector<QStringList> cells_;
};

} // namespace stellwyn::core
