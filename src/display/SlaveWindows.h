#pragma once

#include "Form1Layout.h"

#include <QObject>
#include <QString>
#include <array>
#include <cstdint>

namespace stellwyn::core {
class Form1Controls;
class Module1;
} // namespace stellwyn::core

namespace stellwyn::display {

// One slave window as its form holds it: a small window with the weight of one scale in large
// digits. Sizes and places are in twips, outer size of the window, as the layout stores them.
struct SlaveForm {
    // Between Form_Load and Form_Unload.
    bool loaded = false;
    bool visible = false;
    QString Caption;
    // The caption of the label Screen: the weight text.
    QString screen;
    // The label's face and its place inside the window, chosen by the small-fonts setting.
    ScreenFace face;
    int Width = 3615;
    int Height = 1995;
    int Left = 0;
    int Top = 0;
    // False until code places the window; until then the window system chooses where it opens.
    bool placed = false;
    // Grows each time code sets the place or shows the window, so that a view puts the window
    // back even where the numbers did not change.
    int placeVersion = 0;
};

// The ten slave windows and the four buttons of the frame that open, place, save and close
// them. Window k follows scale entry k of the tables; windows 0 to 8 keep a layout in the
// settings table, window 9 can be opened but is never saved, restored or closed by the button.
class SlaveWindows : public QObject {
    Q_OBJECT
public:
    SlaveWindows(core::Module1& m, core::Form1Controls& f, QObject* parent = nullptr);

    const SlaveForm& slave(int k) const;

    // The buttons of the frame.
    void Command11_Click();
    void btn_saveslave_Click();
    void btn_slavesload_Click();
    void btn_closeallslaves_Click();
    // Opens the windows the saved layout enables; also run at activation of the main screen.
    void slavesload();

    // The operator clicked the weight of window k: that scale becomes the selected one.
    void Screen_Click(int k);
    // The window was closed, by the operator or by code.
    void unload(int k);
    // The operator moved window k (twips).
    void moved(int k, int left, int top);
    // The scan has a new weight for the scale of window k.
    void showWeight(int k, const QString& text);

signals:
    // Window k's state changed and its view should follow.
    void changed(int k);

private:
    SlaveForm& form(int k);
    void show(int k);
    void Form_Load(int k);
    void Form_Unload(int k);
    void sizeToOpen(int k);

    core::Module1& m_;
    core::Form1Controls& f_;
    std::array<SlaveForm, 10> forms_;
};

// The face of a slave's label for a small-fonts setting, its place inside the window.
ScreenFace slaveFace(std::int16_t smallfonts);

} // namespace stellwyn::display
