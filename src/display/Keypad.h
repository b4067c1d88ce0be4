#pragma once

#include <array>
#include <optional>

namespace stellwyn::core {
class Dialogs;
}

namespace stellwyn::acquisition {
struct AcquisitionContext;
}

namespace stellwyn::display {

// The keypad on the picture of the indicator. A click presses the key under the last point the
// pointer moved to, and sends it to the scale shown, or leaves it for the next network pass.
class Keypad {
public:
    // A band of the picture in design twips, both ends included.
    struct Band {
        int from;
        int to;
    };
    static constexpr std::array<Band, 3> columns{{{5550, 6390}, {6630, 7470}, {7725, 8565}}};
    static constexpr std::array<Band, 4> rows{
        {{885, 1425}, {1830, 2385}, {2790, 3345}, {3765, 4275}}};

    // The key code at a column and row, counted from 0: the digits as themselves, "." 10, "E" 11.
    static int keycodeAt(int column, int row);
    // The key under a point of the picture; none between the bands.
    static std::optional<int> keyAt(int x, int y);

    Keypad(acquisition::AcquisitionContext& context, core::Dialogs& dialogs);

    // The picture reports every pointer move; the point is kept for the next click.
    void vsElastic1_MouseMove(int x, int y);
    void vsElastic1_Click();

    int vselasticx() const { return vselasticx_; }
    int vselasticy() const { return vselasticy_; }

private:
    void send(int keycode);

    acquisition::AcquisitionContext& c_;
    core::Dialogs& dialogs_;
    int vselasticx_ = 0;
    int vselasticy_ = 0;
};

} // namespace stellwyn::display
