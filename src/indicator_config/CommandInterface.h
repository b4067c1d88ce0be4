#pragma once

#include <QString>
#include <cstdint>

namespace stellwyn::core {
class Dialogs;
}

namespace stellwyn::acquisition {
struct AcquisitionContext;
}

namespace stellwyn::indicator_config {

class ConfigOperations;

// An execute string taken apart: the word before the first comma, the text after it, and that
// text as a scale address when it is a whole number.
struct ExecuteString {
    QString word;
    QString arg;
    std::int32_t id = 0;
};

// Nothing when the string holds no comma. `id` is `arg` read as a 32-bit whole number: decimal
// digits with an optional sign, blanks around them allowed; anything else ("Scale #7", "",
// "12.5", a number out of range) leaves it 0.
bool parseExecuteString(const QString& cmdStr, ExecuteString& out);

// The entry of other programs into the indicator setup transfers: one execute string at a time,
// on the screen's state and links, as if an operator had pressed the matching buttons. Other
// programs always get a positive acknowledgement; results of the transfers are dropped.
class CommandInterface {
public:
    CommandInterface(acquisition::AcquisitionContext& context, ConfigOperations& operations,
                     core::Dialogs& dialogs);

    // Cancel is set to 0 whatever the string holds.
    void Form_LinkExecute(const QString& CmdStr, std::int16_t& Cancel);

private:
    // Clears the totals of the scale at this address; the pane's busy label ends hidden.
    void clearTotals(std::int32_t id);
    // The NetID of the scale selected in Combo1; no selection is a bounds failure.
    std::int32_t selectedNetId() const;

    acquisition::AcquisitionContext& c_;
    ConfigOperations& operations_;
    core::Dialogs& dialogs_;
};

} // namespace stellwyn::indicator_config
