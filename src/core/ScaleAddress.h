#pragma once

#include <QString>
#include <optional>

namespace stellwyn::core {

class SettingsStore;

// Where the Ethernet link connects: the scales' network endpoint, written "host" or
// "host:port" ("[::1]:2000" for an IPv6 address with a port). syscfg has no field for it, so
// it is kept in the settings store, [Ethernet] Address.
struct ScaleAddress {
    static constexpr quint16 defaultPort = 2000;

    QString host;
    quint16 port = defaultPort;

    QString text() const;
};

// The address in a text, or nothing with the reason in `error`.
std::optional<ScaleAddress> parseScaleAddress(const QString& text, QString* error);

QString storedScaleAddress(const SettingsStore& settings);
void storeScaleAddress(SettingsStore& settings, const QString& text);

} // namespace stellwyn::core
