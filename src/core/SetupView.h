#pragma once

#include <QDialog>
#include <QHash>
#include <functional>
#include <vector>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace stellwyn::core {

class Setup;
class CheckBox;
struct CommandButton;
struct TextBox;

// Draws the Setup screen from its controls' state and forwards the operator's input: clicks,
// typed text, and a field's loss of focus, which is when the screen writes it.
class SetupView : public QDialog {
    Q_OBJECT
public:
    explicit SetupView(Setup& logic, QWidget* parent = nullptr);

    // Draws every control from the state again.
    void sync();
    // The "SD Memory Options" group, empty and disabled until the SD memory part fills it.
    QGroupBox* sdMemoryGroup() const { return sdGroup_; }

protected:
    void reject() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QLineEdit* lineEdit(const char* name, TextBox& state, QLabel** error);
    QCheckBox* checkBox(const char* name, CheckBox& state);
    QPushButton* button(const char* name, CommandButton& state);
    // A click of a button first writes the field being edited, as leaving it would.
    void leaveFocusedField();
    void focusField(int index);

    Setup& logic_;
    QGroupBox* sdGroup_ = nullptr;
    std::vector<std::function<void()>> syncs_;
    QHash<QObject*, std::function<void()>> lostFocus_;
};

} // namespace stellwyn::core
