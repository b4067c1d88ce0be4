#pragma once

#include "links/SerialPort.h"

#include <QByteArray>
#include <QSet>
#include <QStringList>

namespace stellwyn::sim {
class InProcessLink;
}

namespace stellwyn::linkstest {

// MSComm1 for unit tests: records every operation in order, takes bytes to feed, and refuses
// ports or calls on demand. Attached to an in-process link, it talks to a simulated bus.
class FakeSerialPort final : public links::SerialPort {
public:
    void CommPort(std::int16_t port) override;
    void Settings(const QString& settings) override;
    void InputLen(std::int16_t length) override;
    void PortOpen(bool open) override;
    void Output(const QByteArray& bytes) override;
    int InBufferCount() override;
    QByteArray Input() override;

    void feed(const QByteArray& bytes) { received_.append(bytes); }
    void attach(sim::InProcessLink& link) { link_ = &link; }
    bool isOpen() const { return open_; }

    // "CommPort 1", "Settings 9600,N,8,1", "InputLen 0", "PortOpen true", "Output <hex>".
    QStringList operations;
    QByteArray written;
    // Ports that do not exist on this machine: opening them raises the control's error.
    QSet<int> missingPorts;
    // The n-th CommPort call (from 1) raises the control's error; 0 for none.
    int failCommPortCall = 0;

private:
    int commPortCalls_ = 0;
    int port_ = 1;
    int inputLen_ = 0;
    bool open_ = false;
    QByteArray received_;
    sim::InProcessLink* link_ = nullptr;
};

} // namespace stellwyn::linkstest
