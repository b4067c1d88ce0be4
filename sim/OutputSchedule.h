#pragma once

#include <QByteArray>
#include <deque>
#include <optional>

namespace stellwyn::sim {

// Bytes waiting to go out on one line. Each piece has a time before which it may not start;
// with pacing, the line carries one byte per byte time and a piece waits for the line to be
// free, so pieces never interleave.
class OutputSchedule {
public:
    void setByteTime(double seconds) { byteTime_ = seconds; }
    double byteTime() const { return byteTime_; }

    void add(const QByteArray& bytes, double earliest);
    // Every byte that has fully left the line by `now`, in order.
    QByteArray take(double now);
    // When the next byte will have left the line.
    std::optional<double> next() const;
    bool empty() const { return pieces_.empty(); }
    void clear();

private:
    struct Piece {
        double earliest = 0.0;
        QByteArray bytes;
        double start = 0.0;
        qsizetype sent = 0;
    };

    void plan();
    double dueOf(const Piece& piece, qsizetype index) const;

    std::deque<Piece> pieces_;
    double byteTime_ = 0.0;
    double lineFree_ = 0.0;
};

} // namespace stellwyn::sim
