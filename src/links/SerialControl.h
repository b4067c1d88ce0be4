#pragma once

#include "links/LineSettings.h"
#include "links/SerialDevice.h"
#include "links/SerialPort.h"

#include <memory>

namespace stellwyn::links {

// The control's own rules over a device: port numbers, the settings text, the input length,
// and the errors of a port that is not open.
class SerialControl final : public SerialPort {
public:
    explicit SerialControl(std::unique_ptr<SerialDevice> device);
    ~SerialControl() override;
    SerialControl(const SerialControl&) = delete;
    SerialControl& operator=(const SerialControl&) = delete;

    void CommPort(std::int16_t port) override;
    void Settings(const QString& settings) override;
    void InputLen(std::int16_t length) override;
    void PortOpen(bool open) override;
    bool isPortOpen() const override { return open_; }
    void Output(const QByteArray& bytes) override;
    int InBufferCount() override;
    QByteArray Input() override;

private:
    void requireOpen() const;

    std::unique_ptr<SerialDevice> device_;
    std::int16_t port_ = 1;
    LineSettings settings_;
    std::int16_t inputLen_ = 0;
    bool open_ = false;
};

} // namespace stellwyn::links
