#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>

namespace stellwyn::acquisition {

// Every byte sequence the program sends to an indicator is built here, so that the frames of
// each link live in one place. There is no checksum, sequence number or acknowledgement: a
// request is written and a text line is awaited.
namespace frames {

inline constexpr char requestMarker = 0x11; // behind the address of a request
inline constexpr char uploadMarker = 0x12;  // behind the address of an upload

// "*" and the code: a request on the RS-232 line and to a single USB scale.
QByteArray starRequest(char code);
// "!U" and the code: an upload on the RS-232 line.
QByteArray starUpload(char code);
// The address byte, 0x11 and the code: a request on an addressed network.
QByteArray addressedRequest(std::int32_t netId, char code);
// The address byte and 0x11 alone, for links that write the code as a piece of its own.
QByteArray addressPrefix(std::int32_t netId);
// The address byte, 0x12 and the code: an upload on an addressed network.
QByteArray addressedUpload(std::int32_t netId, char code);

// The code that asks a scale for a reading on each link; "Frame" ticked asks for "F".
char readingCode(const QString& commtype, bool frameTicked);

// The key a front-panel key code sends during a network pass: 0 and 2 to 9 the digit, 10 the
// decimal point, 11 Enter. Key 1 and anything above 11 send nothing there, since "1" is also
// the reading request.
std::optional<char> passKey(int keycode);
// The key a keypad press sends at once: as above, with key 1 sending "1".
std::optional<char> keypadKey(int keycode);

// The address byte of a NetID: its low eight bits.
char addressByte(std::int32_t netId);

} // namespace frames
} // namespace stellwyn::acquisition
