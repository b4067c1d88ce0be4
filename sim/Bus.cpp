#include "Bus.h"

#include "FaultShaping.h"
#include "Replies.h"

#include <stdexcept>

namespace stellwyn::sim {

namespace {
FrameParser::Mode parserMode(Bus::Mode mode) {
    return mode == Bus::Mode::Rs232 ? FrameParser::Mode::Rs232 : FrameParser::Mode::Addressed;
}
} // namespace

Bus::Bus(Mode mode)
    : mode_(mode), parser_(parserMode(mode), [this](const FrameEvent& ev) { onFrame(ev); }) {}

Indicator& Bus::add(int netId) {
    if (mode_ == Mode::Rs232 && !indicators_.empty()) {
        throw std::logic_error("an RS-232 line has one indicator");
    }
    if (find(netId) != nullptr) {
        throw std::logic_error("two indicators with one NetID");
    }
    indicators_.push_back(std::make_unique<Indicator>(netId));
    return *indicators_.back();
}

Indicator* Bus::find(int netId) {
    for (auto& ind : indicators_) {
        if (ind->netId() == netId) {
            return ind.get();
        }
    }
    return nullptr;
}

void Bus::schedule(double t, Action action) {
    timeline_.emplace(t, std::move(action));
}

void Bus::receive(const QByteArray& bytes, double at) {
    advanceTo(at);
    now_ = std::max(now_, at);
    parser_.feed(bytes);
}

void Bus::advanceTo(double t) {
    while (!timeline_.empty() && timeline_.begin()->first <= t) {
        auto node = timeline_.extract(timeline_.begin());
        now_ = std::max(now_, node.key());
        node.mapped()(node.key());
    }
    now_ = std::max(now_, t);
}

QByteArray Bus::takeDue(double now) {
    return output_.take(now);
}

std::optional<double> Bus::nextEvent() const {
    std::optional<double> next = output_.next();
    if (!timeline_.empty() && (!next || timeline_.begin()->first < *next)) {
        next = timeline_.begin()->first;
    }
    return next;
}

Indicator* Bus::target(int address) {
    if (mode_ == Mode::Rs232) {
        return indicators_.empty() ? nullptr : indicators_.front().get();
    }
    return find(address);
}

void Bus::onFrame(const FrameEvent& ev) {
    log(Direction::Received, ev.raw, now_);
    if (ev.kind == FrameEvent::Kind::Stray) {
        return;
    }
    // Every indicator hears every frame; only the one addressed acts on it.
    Indicator* ind = target(ev.address);
    if (ind == nullptr) {
        return;
    }
    switch (ev.kind) {
    case FrameEvent::Kind::Request:
        ind->recordRequest(ev.code);
        answer(*ind, ev.code);
        break;
    case FrameEvent::Kind::Upload:
        ind->beginUpload(ev.code, ev.payload);
        break;
    case FrameEvent::Kind::Continuation:
        ind->continueUpload(ev.payload);
        break;
    case FrameEvent::Kind::Stray:
        break;
    }
}

void Bus::answer(Indicator& ind, char code) {
    const int address = addressed() ? ind.netId() : -1;
    if (isKeyCode(code)) {
        ind.recordKey(code);
    }
    switch (code) {
    case 'P':
    case 'F':
    case '1':
    case 'K': {
        const bool print = ind.takePrint();
        const bool broken = useFault(ind, Fault::Kind::BangNoHash);
        QByteArray text = replies::reading(ind, address, now_, print, broken);
        if (print && addressed()) {
            text += burstFollowers(ind);
        }
        reply(ind, text, now_ + turnaround_);
        break;
    }
    case 'G':
        reply(ind, replies::words(ind.groupWords(), address), now_ + turnaround_);
        break;
    case 'J':
        reply(ind, replies::words(ind.outputWords(), address), now_ + turnaround_);
        break;
    case 'T':
        reply(ind, replies::words(ind.totalsWords(), address), now_ + turnaround_);
        break;
    case 'S':
        ind.store();
        break;
    case 'R':
        ind.resetTotals();
        break;
    default:
        break;
    }
}

QByteArray Bus::burstFollowers(const Indicator& first) {
    QByteArray cells;
    for (auto& other : indicators_) {
        if (other.get() == &first || !other->takePrint()) {
            continue;
        }
        if (useFault(*other, Fault::Kind::Silence)) {
            continue;
        }
        cells += replies::plusCell(*other, now_);
    }
    return cells;
}

void Bus::reply(Indicator& ind, const QByteArray& bytes, double at) {
    for (const ReplyPiece& piece : shapeReply(ind, bytes, addressed())) {
        send(piece.bytes, at + piece.delay);
    }
}

void Bus::print(const QList<int>& netIds, double t) {
    advanceTo(t);
    for (int id : netIds) {
        Indicator* ind = mode_ == Mode::Rs232 ? target(-1) : find(id);
        if (ind == nullptr) {
            continue;
        }
        if (mode_ == Mode::Rs232) {
            const QByteArray line = useFault(*ind, Fault::Kind::BangNoHash)
                                        ? replies::reading(*ind, -1, t, true, true)
                                        : replies::printLine(*ind, t);
            reply(*ind, line, t);
        } else {
            ind->requestPrint();
        }
    }
}

void Bus::pushPrints(double t) {
    advanceTo(t);
    QByteArray cells;
    for (auto& ind : indicators_) {
        if (ind->takePrint() && !useFault(*ind, Fault::Kind::Silence)) {
            cells += replies::plusCell(*ind, t);
        }
    }
    send(cells, t);
}

void Bus::sendReadings(const QList<int>& netIds, double t) {
    advanceTo(t);
    for (int id : netIds) {
        Indicator* ind = mode_ == Mode::Rs232 ? target(-1) : find(id);
        if (ind != nullptr && !useFault(*ind, Fault::Kind::Silence)) {
            reply(*ind, replies::reading(*ind, addressed() ? ind->netId() : -1, t, false, false),
                  t);
        }
    }
}

void Bus::send(const QByteArray& bytes, double at) {
    if (bytes.isEmpty()) {
        return;
    }
    log(Direction::Sent, bytes, at);
    output_.add(bytes, at);
}

void Bus::log(Direction direction, const QByteArray& bytes, double t) {
    if (logger_ && !bytes.isEmpty()) {
        logger_(t, direction, bytes);
    }
}

} // namespace stellwyn::sim
