#pragma once

#include "Bus.h"

#include <QByteArray>
#include <QIODevice>

namespace stellwyn::sim {

// One line per frame: the line's time, RX or TX, and the bytes, printable ones as they are and
// the others as <hex>, so that a binary NetID and a CR stay visible.
QByteArray formatFrame(double t, Bus::Direction direction, const QByteArray& frame);

// Writes every frame of a bus to a device (a log file), flushing each line so that a reader
// following the file sees frames as they happen.
class FrameLog {
public:
    explicit FrameLog(QIODevice& out, double origin = 0.0) : out_(out), origin_(origin) {}
    void attach(Bus& bus);

private:
    QIODevice& out_;
    double origin_;
};

} // namespace stellwyn::sim
