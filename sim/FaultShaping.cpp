#include "FaultShaping.h"

#include <algorithm>
#include <optional>

namespace stellwyn::sim {

namespace {

// The fault of this kind that is armed, counted down, or nothing. A fault with a count is
// dropped once spent; one without stays.
std::optional<Fault> spend(Indicator& indicator, Fault::Kind kind) {
    QList<Fault>& faults = indicator.faults();
    for (qsizetype i = 0; i < faults.size(); ++i) {
        if (faults[i].kind != kind) {
            continue;
        }
        const Fault used = faults[i];
        if (faults[i].remaining > 0 && --faults[i].remaining == 0) {
            faults.removeAt(i);
        }
        return used;
    }
    return std::nullopt;
}

} // namespace

bool useFault(Indicator& indicator, Fault::Kind kind) {
    return spend(indicator, kind).has_value();
}

QList<ReplyPiece> shapeReply(Indicator& indicator, QByteArray reply, bool addressed) {
    if (useFault(indicator, Fault::Kind::Silence)) {
        return {};
    }
    if (const auto f = spend(indicator, Fault::Kind::LowAddress);
        f && addressed && !reply.isEmpty()) {
        reply[0] = static_cast<char>(f->address);
    }
    if (useFault(indicator, Fault::Kind::MissingCr)) {
        reply.replace("\r", "");
    }
    if (const auto f = spend(indicator, Fault::Kind::Garbage)) {
        reply.prepend(f->bytes);
    }
    double delay = 0.0;
    if (const auto f = spend(indicator, Fault::Kind::Late)) {
        delay = f->seconds;
    }
    if (const auto f = spend(indicator, Fault::Kind::Split)) {
        const qsizetype at = std::clamp<qsizetype>(f->splitAt, 0, reply.size());
        return {ReplyPiece{reply.left(at), delay}, ReplyPiece{reply.mid(at), delay + f->seconds}};
    }
    return {ReplyPiece{reply, delay}};
}

} // namespace stellwyn::sim
