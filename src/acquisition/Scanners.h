#pragma once

#include <QByteArray>
#include <QString>

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
    void parseweight(const QByteArray& data);

    // The text from its first character that is not "0"; empty for zeros only or blanks only.
    static QString blz(const QString& text);

private:
    AcquisitionContext& c_;
};

} // namespace stellwyn::acquisition
