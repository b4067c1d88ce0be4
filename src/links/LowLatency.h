#pragma once

namespace stellwyn::links {

// Asks the serial driver to hand received bytes on at once instead of after its latency
// timer (16 ms by default on FTDI adapters, too slow for a 0.25 s reply wait across a
// network). False when the system does not allow it; the link then works, only slower.
bool requestLowLatency(int fd);

} // namespace stellwyn::links
