#include "Form1Layout.h"

namespace stellwyn::display {

ScreenFace Form1Layout::screenFace(std::int16_t smallfonts) {
    if (smallfonts != 0) {
        return {QStringLiteral("Arial"), 48, true, {1320, 1020, 3495, 1035}};
    }
    return {QStringLiteral("Swiss911 XCm BT"), 72, true, {1320, 840, 3495, 1575}};
}

} // namespace stellwyn::display
