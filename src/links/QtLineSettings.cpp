#include "links/QtLineSettings.h"

namespace stellwyn::links {

namespace {

QSerialPort::Parity parityOf(char parity) {
    switch (parity) {
    case 'E':
        return QSerialPort::EvenParity;
    case 'O':
        return QSerialPort::OddParity;
    case 'M':
        return QSerialPort::MarkParity;
    case 'S':
        return QSerialPort::SpaceParity;
    default:
        return QSerialPort::NoParity;
    }
}

QSerialPort::StopBits stopBitsOf(int stopBits) {
    switch (stopBits) {
    case 2:
        return QSerialPort::TwoStop;
    case 15:
        return QSerialPort::OneAndHalfStop;
    default:
        return QSerialPort::OneStop;
    }
}

} // namespace

bool applyLineSettings(QSerialPort& port, const LineSettings& settings) {
    const bool ok = port.setBaudRate(settings.baud) &&
                    port.setDataBits(static_cast<QSerialPort::DataBits>(settings.dataBits)) &&
                    port.setParity(parityOf(settings.parity)) &&
                    port.setStopBits(stopBitsOf(settings.stopBits)) &&
                    port.setFlowControl(QSerialPort::NoFlowControl);
    port.clearError();
    return ok;
}

} // namespace stellwyn::links
