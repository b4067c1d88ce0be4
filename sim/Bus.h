#pragma once

#include "FrameParser.h"
#include "Indicator.h"
#include "LineDevice.h"
#include "OutputSchedule.h"

#include <QList>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace stellwyn::sim {

// The indicators on one line, and the firmware side of the frames. RS-232 mode has one
// indicator that takes "*" requests and "!U" uploads; addressed mode has any number, each
// answering only frames that carry its NetID.
class Bus final : public LineDevice {
public:
    enum class Mode { Rs232, Addressed };
    enum class Direction { Received, Sent };
    using FrameLogger = std::function<void(double t, Direction, const QByteArray& frame)>;
    using Action = std::function<void(double t)>;

    explicit Bus(Mode mode);

    Mode mode() const { return mode_; }
    bool addressed() const { return mode_ == Mode::Addressed; }

    // RS-232 mode takes one indicator only; its NetID is kept for logs and prints.
    Indicator& add(int netId);
    Indicator* find(int netId);
    const std::vector<std::unique_ptr<Indicator>>& indicators() const { return indicators_; }

    // Time between the last byte of a request and the first byte of its reply.
    void setTurnaround(double seconds) { turnaround_ = seconds; }
    // Pacing of the indicators' output; 0 sends a reply all at once.
    void setByteTime(double seconds) { output_.setByteTime(seconds); }
    void setFrameLogger(FrameLogger logger) { logger_ = std::move(logger); }

    // Runs action when the line's time reaches t.
    void schedule(double t, Action action);
    // The print key pressed on these indicators at t. On RS-232 the print line goes out at
    // once; on addressed links the print waits for the next request, and every indicator
    // holding a print answers it in the same burst.
    void print(const QList<int>& netIds, double t);
    // Addressed links: every held print goes out now, unasked, back to back.
    void pushPrints(double t);
    // Continuous output: these indicators send their reading now, unasked, as they would to a
    // request (an 11-byte cell on addressed links, the reading and CR LF on RS-232).
    void sendReadings(const QList<int>& netIds, double t);
    // Puts bytes on the line as they are (a module in front of the bus answering for itself).
    void send(const QByteArray& bytes, double at);
    // Bytes from the host that a device in front of the bus took, for the frame log.
    void logReceived(const QByteArray& bytes, double at) { log(Direction::Received, bytes, at); }

    void receive(const QByteArray& bytes, double at) override;
    void advanceTo(double t) override;
    QByteArray takeDue(double now) override;
    std::optional<double> nextEvent() const override;
    void discardOutput() override { output_.clear(); }

private:
    void onFrame(const FrameEvent& ev);
    Indicator* target(int address);
    void answer(Indicator& indicator, char code);
    QByteArray burstFollowers(const Indicator& first);
    void reply(Indicator& indicator, const QByteArray& bytes, double at);
    void log(Direction direction, const QByteArray& bytes, double t);

    Mode mode_;
    FrameParser parser_;
    std::vector<std::unique_ptr<Indicator>> indicators_;
    OutputSchedule output_;
    std::multimap<double, Action> timeline_;
    FrameLogger logger_;
    double turnaround_ = 0.0;
    double now_ = 0.0;
};

} // namespace stellwyn::sim
