// Execute strings from other programs, taken apart into word, argument and scale address.
#include "indicator_config/CommandInterface.h"

#include <cstddef>
#include <cstdint>

using namespace stellwyn;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    indicator_config::ExecuteString parsed;
    if (indicator_config::parseExecuteString(text, parsed) &&
        parsed.word.size() + parsed.arg.size() >= text.size()) {
        // The comma between them is no part of either.
        __builtin_trap();
    }
    return 0;
}
