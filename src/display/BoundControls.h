#pragma once

#include "Form1Layout.h"

#include <QWidget>
#include <functional>
#include <vector>

class QCheckBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;

namespace stellwyn::core {
class CheckBox;
struct CommandButton;
struct Frame;
class OptionButton;
struct Label;
} // namespace stellwyn::core

namespace stellwyn::display {

class Form1;

// Widgets of a pane of the main screen, each bound to the state of one of the form's controls:
// placed in design twips and scaled with the pane, drawn from the state at each sync, and the
// operator's input handed to the control, whose click handling does the rest.
class BoundControls {
public:
    BoundControls(Form1& form, QWidget* owner, int fontTwips);

    // Runs after each input the widgets hand on, so the pane can redraw what it changed.
    std::function<void()> afterInput;

    template <typename W> W* placed(W* widget, const Place& place);
    QGroupBox* frame(const core::Frame& state, const Place& place, const char* name);
    QRadioButton* option(core::OptionButton& state, QWidget* parent, const Place& place,
                         const char* name);
    QCheckBox* check(core::CheckBox& state, QWidget* parent, const Place& place, const char* name);
    QPushButton* button(core::CommandButton& state, QWidget* parent, const Place& place,
                        const char* name);
    QLabel* label(const core::Label& state, QWidget* parent, const Place& place, const char* name);
    void addSync(std::function<void()> sync) { syncs_.push_back(std::move(sync)); }

    void setScale(double scale);
    void sync();

private:
    Form1& form_;
    QWidget* owner_;
    int fontTwips_;
    struct Placement {
        QWidget* widget;
        Place place;
    };
    std::vector<Placement> placements_;
    std::vector<std::function<void()>> syncs_;
};

template <typename W> W* BoundControls::placed(W* widget, const Place& place) {
    placements_.push_back({widget, place});
    return widget;
}

} // namespace stellwyn::display
