#pragma once

class QPainter;

namespace stellwyn::display {

// Draws the indicator in design twips: the painter's transform maps twips to pixels. A key
// given as pressed is drawn pushed in.
void paintIndicator(QPainter& painter, int pressedKeycode);

inline constexpr int noKeyPressed = -1;

} // namespace stellwyn::display
