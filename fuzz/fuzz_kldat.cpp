// The records of a KL.Dat: any bytes, cut into lines as the reader cuts them, taken apart and
// their dates and times brought into the stored form, under each of the time zones that shift
// the hour.
#include "core/store/StoredValues.h"
#include "sdmemory/KlDatImport.h"

#include <cstddef>
#include <cstdint>

using namespace stellwyn;

namespace {

// Reads every byte of a view, so that the sanitizer sees a view that reaches past its buffer.
std::size_t touch(QByteArrayView view) {
    std::size_t sum = 0;
    for (char c : view) {
        sum += static_cast<unsigned char>(c);
    }
    return sum;
}

volatile std::size_t kldatSink;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    static const QString zones[] = {
        QStringLiteral("Pacific Standard Time"), QStringLiteral("Mountain Standard Time"),
        QStringLiteral("Central Standard Time"), QStringLiteral("Eastern Standard Time")};
    sdmemory::KlRecordParser parser(zones[data[0] % 4]);
    const QByteArrayView bytes(reinterpret_cast<const char*>(data) + 1,
                               static_cast<qsizetype>(size - 1));
    std::size_t sum = 0;
    qsizetype start = 0;
    while (start <= bytes.size()) {
        qsizetype end = start;
        while (end < bytes.size() && bytes[end] != '\r' && bytes[end] != '\n') {
            ++end;
        }
        const QByteArrayView line = bytes.sliced(start, end - start);
        start = end + 1;
        if (!sdmemory::isRecordLength(line.size())) {
            continue;
        }
        try {
            const core::ImportedReading record = parser.parse(line);
            if (record.group.size() > 1 || record.tagId.size() >= line.size() ||
                record.scaleId.size() > 3) {
                __builtin_trap();
            }
            sum += touch(record.scaleId) + touch(record.group) + touch(record.reading) +
                   touch(record.tagId);
            const core::StoredText date = core::storedDateFromLogText(record.date);
            const core::StoredText time = core::storedTimeFromLogText(record.time);
            if (date.view().size() > 10 || time.view().size() > 9) {
                __builtin_trap();
            }
            sum += touch(date.view()) + touch(time.view());
        } catch (const sdmemory::KlRecordError&) {
            // A tag with no group mark ends the read; the next line starts afresh here.
        }
    }
    // Kept where the optimiser must write it, so that the fields are read for real.
    kldatSink = sum;
    return 0;
}
