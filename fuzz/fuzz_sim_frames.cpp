// The simulator's frame parser on any bytes from a host, in both of its modes, fed in pieces.
#include "sim/FrameParser.h"

#include <cstddef>
#include <cstdint>

using namespace stellwyn;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const auto mode =
        (data[0] & 1) != 0 ? sim::FrameParser::Mode::Addressed : sim::FrameParser::Mode::Rs232;
    const qsizetype piece = 1 + (data[0] >> 1) % 16;
    const QByteArray input(reinterpret_cast<const char*>(data + 1),
                           static_cast<qsizetype>(size - 1));
    qsizetype seen = 0;
    sim::FrameParser parser(mode, [&seen](const sim::FrameEvent& e) {
        // Every byte fed belongs to one event at most.
        seen += e.raw.size();
    });
    for (qsizetype at = 0; at < input.size(); at += piece) {
        parser.feed(input.mid(at, piece));
    }
    parser.reset();
    if (seen > input.size()) {
        __builtin_trap();
    }
    return 0;
}
