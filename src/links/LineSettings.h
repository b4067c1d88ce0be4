#pragma once

#include <QString>
#include <optional>

namespace stellwyn::links {

// The framing of a serial line as the control's Settings text gives it: "baud,parity,data,stop".
struct LineSettings {
    int baud = 9600;
    char parity = 'N'; // N, E, O, M or S
    int dataBits = 8;  // 4 to 8
    int stopBits = 1;  // 1 or 2; "1.5" is kept as 15
    friend bool operator==(const LineSettings&, const LineSettings&) = default;
};

// Nothing when the text is not a valid setting, as the control refuses it.
std::optional<LineSettings> parseLineSettings(const QString& text);

} // namespace stellwyn::links
