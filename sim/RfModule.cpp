#include "RfModule.h"

namespace stellwyn::sim {

namespace {
const QByteArray kOk = QByteArrayLiteral("OK\r");
const QByteArray kError = QByteArrayLiteral("ERROR\r");
const QByteArray kChannelCommand = QByteArrayLiteral("ATHP");
const QByteArray kLeave = QByteArrayLiteral(",CN");
} // namespace

RfModule::RfModule(Bus& bus, int busChannel, int channel)
    : bus_(bus), busChannel_(busChannel), channel_(channel) {}

void RfModule::receive(const QByteArray& bytes, double at) {
    bus_.advanceTo(at);
    QByteArray data;
    for (char b : bytes) {
        if (command_) {
            if (b == '\r') {
                bus_.logReceived(line_ + '\r', at);
                commandLine(line_, at);
                line_.clear();
            } else {
                line_.append(b);
            }
            continue;
        }
        data.append(b);
        pluses_ = b == '+' ? pluses_ + 1 : 0;
        if (pluses_ == 3) {
            // The escape itself went on to the bus as three stray bytes, as over the air.
            pluses_ = 0;
            command_ = true;
            if (linked()) {
                bus_.receive(data, at);
            } else {
                bus_.logReceived(data, at);
            }
            data.clear();
            bus_.send(kOk, at);
        }
    }
    if (!data.isEmpty()) {
        if (linked()) {
            bus_.receive(data, at);
        } else {
            bus_.logReceived(data, at);
        }
    }
}

void RfModule::commandLine(const QByteArray& line, double at) {
    commands_.append(line);
    const QByteArray text = line.trimmed();
    if (!text.startsWith(kChannelCommand) || !text.endsWith(kLeave)) {
        bus_.send(kError, at);
        return;
    }
    const QByteArray digits =
        text.mid(kChannelCommand.size(), text.size() - kChannelCommand.size() - kLeave.size())
            .trimmed();
    bool ok = false;
    const int channel = digits.toInt(&ok);
    // Without digits the module keeps the channel it has.
    if (ok) {
        channel_ = channel;
    }
    command_ = false;
    bus_.send(kOk, at);
}

} // namespace stellwyn::sim
