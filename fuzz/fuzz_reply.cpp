// A device's bytes through what every scanner does with them: the receive text with its line
// ends and its cap, the address test, the markers of a network reply, the print's further
// cells. The first byte sets tagblz and cuts the input into chunks as reads would.
// A tag of more words than the token table holds is the program's fatal error by design, so that
// ending is expected here; anything else escaping is a finding.
#include "acquisition/ReplyMarkers.h"
#include "acquisition/ReplyText.h"
#include "core/FatalError.h"
#include "core/Module1.h"

#include <cstddef>
#include <cstdint>

using namespace stellwyn;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    core::Module1 m;
    m.tagblz = (data[0] & 1) != 0 ? core::vbTrue : core::vbFalse;
    const std::size_t chunkSize = 1 + (data[0] >> 1) % 64;
    const QByteArray input(reinterpret_cast<const char*>(data + 1),
                           static_cast<qsizetype>(size - 1));
    QString received;
    for (qsizetype at = 0; at < input.size(); at += static_cast<qsizetype>(chunkSize)) {
        const QByteArray chunk = input.mid(at, static_cast<qsizetype>(chunkSize));
        bool cut = false;
        acquisition::appendReply(received, chunk, cut);
        if (!received.contains(u'\r')) {
            continue;
        }
        const QString line = acquisition::cutAtLineEnd(received);
        acquisition::lastSix(line);
        if (const auto reply = acquisition::splitAddress(line)) {
            acquisition::findScale(m, reply->address);
            try {
                if (const auto marked = acquisition::readMarkers(m, reply->text, false)) {
                    acquisition::lastSix(marked->text);
                }
            } catch (const core::FatalError&) {
                return 0;
            }
        }
        acquisition::furtherCells(chunk);
        received.clear();
    }
    return 0;
}
