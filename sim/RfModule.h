#pragma once

#include "Bus.h"
#include "LineDevice.h"

namespace stellwyn::sim {

// The RF module on the computer's side of a radio network, in front of a bus. "+++" puts it in
// command mode, answered by "OK" and CR; a command line ends in CR; "ATHP nn,CN" tunes it to
// channel nn and leaves command mode. In data mode bytes reach the bus only while the module
// is on the bus's channel.
class RfModule final : public LineDevice {
public:
    // busChannel of -1 lets every channel through.
    RfModule(Bus& bus, int busChannel = -1, int channel = 0);

    int channel() const { return channel_; }
    bool inCommandMode() const { return command_; }
    // Every command line taken, without its CR, in order.
    const QList<QByteArray>& commands() const { return commands_; }

    // What the module keeps from the bus (its command lines, and data while off the bus's
    // channel) goes to the bus's frame log as received, so that a log shows every byte the host
    // sent, once.
    void receive(const QByteArray& bytes, double at) override;
    void advanceTo(double t) override { bus_.advanceTo(t); }
    QByteArray takeDue(double now) override { return bus_.takeDue(now); }
    std::optional<double> nextEvent() const override { return bus_.nextEvent(); }
    void discardOutput() override { bus_.discardOutput(); }

private:
    void commandLine(const QByteArray& line, double at);
    bool linked() const { return busChannel_ < 0 || busChannel_ == channel_; }

    Bus& bus_;
    int busChannel_;
    int channel_;
    bool command_ = false;
    int pluses_ = 0;
    QByteArray line_;
    QList<QByteArray> commands_;
};

} // namespace stellwyn::sim
