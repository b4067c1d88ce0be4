#pragma once

#include <QString>
#include <cstdint>

namespace stellwyn::display {

// A place on the form in design twips.
struct Place {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

// The face, size and place of the live weight.
struct ScreenFace {
    QString family;
    int pointSize = 0;
    bool bold = false;
    Place place;
};

// Where the panes of the main screen stand. The panes scale their contents with the form, so
// everything inside them is given in the design's twips and the view maps it to pixels.
struct Form1Layout {
    // The picture of the indicator, with the live weight and the keypad over it.
    static constexpr Place vsElastic1{0, 0, 9435, 5415};
    // The controls panel.
    static constexpr Place vsElastic2{9450, 0, 2925, 5415};
    static constexpr Place netwindowDesign{0, 4500, 12645, 3015};
    static constexpr Place datawindowDesign{0, 4500, 12540, 3015};

    // The face of the live weight: a large display face, or Arial where the settings ask for
    // small fonts.
    static ScreenFace screenFace(std::int16_t smallfonts);

    Place netwindow = netwindowDesign;
    Place datawindow = datawindowDesign;
    ScreenFace Screen = screenFace(0);
};

} // namespace stellwyn::display
