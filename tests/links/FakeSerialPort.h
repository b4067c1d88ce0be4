#pragma once

#include "links/SerialControl.h"
#include "links/SerialDevice.h"

#include <QByteArray>
#include <QSet>
#include <QStringList>

namespace stellwyn::sim {
class InProcessLink;
}

namespace stellwyn::linkstest {

// The device under the serial control in unit tests: bytes fed by the test, or a simulated bus
// on an in-process line, and everything written.
class FakeSerialDevice final : public links::SerialDevice {
public:
    bool open(int port, QString& error) override;
    void close() override {}
    bool configure(const links::LineSettings&) override { return true; }
    void write(const QByteArray& bytes) override;
    qint64 bytesWaiting() override;
    QByteArray read(qint64 maxSize) override;

    QByteArray received; // arrived, not yet read
    QByteArray written;
    QSet<int> missingPorts; // ports that do not exist on this machine
    sim::InProcessLink* line = nullptr;
};

// MSComm1 for unit tests: the real control over a FakeSerialDevice, recording the operations
// asked of it in order ("CommPort 1", "Settings 9600,N,8,1", "InputLen 0", "PortOpen true",
// "Output <hex>").
class FakeSerialPort final : public links::SerialPort {
public:
    FakeSerialPort() : FakeSerialPort(std::make_unique<FakeSerialDevice>()) {}

    void CommPort(std::int16_t port) override;
    void Settings(const QString& settings) override;
    void InputLen(std::int16_t length) override;
    void PortOpen(bool open) override;
    bool isPortOpen() const override { return control_.isPortOpen(); }
    void Output(const QByteArray& bytes) override;
    int InBufferCount() override { return control_.InBufferCount(); }
    QByteArray Input() override { return control_.Input(); }

    void attach(sim::InProcessLink& link) { device_.line = &link; }

    QStringList operations;
    QByteArray& written;
    QSet<int>& missingPorts;

private:
    explicit FakeSerialPort(std::unique_ptr<FakeSerialDevice> device);

    FakeSerialDevice& device_;
    links::SerialControl control_;
};

} // namespace stellwyn::linkstest
