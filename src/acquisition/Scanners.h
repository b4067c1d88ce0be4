#pragma once

#include "ScanTable.h"
#include "core/InputBound.h"
#include "core/Module1.h"

#include <QByteArray>
#include <QString>
#include <array>
#include <optional>

namespace stellwyn::acquisition {

struct AcquisitionContext;

// The input scanners: each takes what its link has received, decides whether it is a reading,
// and feeds the scale table, the display, the slave windows, the scan table and the readings
// table. Called by the timers with no arguments; they return nothing.
class Scanners {
public:
    explicit Scanners(AcquisitionContext& context);

    void rs232_inputscan();
    void rs485_inputscan();
    void USB_inputscan();
    void USB485_inputscan();
    // The Ethernet link's parser; the index of the scale the reply was for, or -1.
    int parseweight(const QByteArray& data);

    // The text from its first character that is not "0"; empty for zeros only or blanks only.
    static QString blz(const QString& text);

private:
    // Adds what a link delivered to the receive text, bounded. Returns the chunk as kept: a
    // line end is looked for in that alone, so a text that never gets one costs no more at
    // each poll as it grows.
    QByteArray receive(const QByteArray& chunk);
    // The screen went in the last yield: nothing more may be shown or stored.
    bool closing() const;
    // The display of the main screen follows the scale it shows.
    void showOnScreen(int i);
    // One datacol row; returns its ID.
    qint64 store(const QString& scaleid, const std::optional<QString>& reading);
    // The spreadsheet output of the row just stored, for the scale picked in Combo1.
    void excelOutput(qint64 storedId);
    // The Ethernet parser's row, filed under the scale picked in Combo1.
    void Data_collect();

    AcquisitionContext& c_;
    ScanTable scanTable_;
    core::CutNote receiveCut_;
    // The scales of a network pass, by table entry, that did not answer their last request.
    std::array<bool, core::scaleTableSize> silentLast_{};
};

} // namespace stellwyn::acquisition
