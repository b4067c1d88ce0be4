#include "FrameLog.h"

#include <QFileDevice>

namespace stellwyn::sim {

QByteArray formatFrame(double t, Bus::Direction direction, const QByteArray& frame) {
    QByteArray line = QByteArray::number(t, 'f', 4);
    line += direction == Bus::Direction::Received ? " RX " : " TX ";
    for (char c : frame) {
        const auto u = static_cast<unsigned char>(c);
        if (u >= 0x20 && u < 0x7f && c != '<') {
            line += c;
        } else {
            line += '<' + QByteArray::number(u, 16).rightJustified(2, '0').toUpper() + '>';
        }
    }
    return line + '\n';
}

void FrameLog::attach(Bus& bus) {
    bus.setFrameLogger([this](double t, Bus::Direction d, const QByteArray& frame) {
        out_.write(formatFrame(t - origin_, d, frame));
        if (auto* file = qobject_cast<QFileDevice*>(&out_)) {
            file->flush();
        }
    });
}

} // namespace stellwyn::sim
