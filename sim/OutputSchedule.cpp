#include "OutputSchedule.h"

#include "WireTime.h"

#include <algorithm>

namespace stellwyn::sim {

void OutputSchedule::add(const QByteArray& bytes, double earliest) {
    if (bytes.isEmpty()) {
        return;
    }
    // A piece that has begun to go out keeps the line; the rest are ordered by their time,
    // equal times in the order they were added.
    auto pos = pieces_.begin();
    if (pos != pieces_.end() && pos->sent > 0) {
        ++pos;
    }
    pos = std::upper_bound(pos, pieces_.end(), earliest,
                           [](double t, const Piece& p) { return t < p.earliest; });
    pieces_.insert(pos, Piece{earliest, bytes, earliest, 0});
    plan();
}

void OutputSchedule::plan() {
    double free = lineFree_;
    for (Piece& p : pieces_) {
        if (p.sent == 0) {
            p.start = std::max(p.earliest, free);
        }
        free = p.start + static_cast<double>(p.bytes.size()) * byteTime_;
    }
}

double OutputSchedule::dueOf(const Piece& piece, qsizetype index) const {
    return piece.start + static_cast<double>(index + 1) * byteTime_;
}

QByteArray OutputSchedule::take(double now) {
    QByteArray out;
    while (!pieces_.empty()) {
        Piece& p = pieces_.front();
        while (p.sent < p.bytes.size() && dueOf(p, p.sent) <= now + kTimeSlack) {
            out.append(p.bytes.at(p.sent));
            ++p.sent;
        }
        if (p.sent < p.bytes.size()) {
            break;
        }
        lineFree_ = dueOf(p, p.sent - 1);
        pieces_.pop_front();
        plan();
    }
    return out;
}

std::optional<double> OutputSchedule::next() const {
    if (pieces_.empty()) {
        return std::nullopt;
    }
    const Piece& p = pieces_.front();
    return dueOf(p, p.sent);
}

void OutputSchedule::clear() {
    pieces_.clear();
}

} // namespace stellwyn::sim
