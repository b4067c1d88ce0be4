#pragma once

#include "links/FtdiApi.h"

#include <QString>
#include <functional>
#include <memory>

namespace stellwyn::core {
class Clock;
class SettingsStore;
} // namespace stellwyn::core

namespace stellwyn::links {

// The FTDI backend that USB/Backend names: "kernel" (the default, and for any other value),
// "d2xx" (the library at USB/D2xxLibrary, default libftd2xx.so) or "sim" (simulated
// indicators with the NetIDs of USB/SimNetIds, default 130). A backend's own trouble (a library
// that will not load) goes to showStatus. The settings and clock must outlive the backend.
std::unique_ptr<FtdiApi> makeFtdiApi(const core::SettingsStore& settings,
                                     std::function<void(const QString&)> showStatus,
                                     core::Clock& clock);

} // namespace stellwyn::links
