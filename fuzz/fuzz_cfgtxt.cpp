// cfg.txt's first field from any first line, and the bounded read of any file.
#include "core/CfgTxt.h"

#include <QTemporaryFile>
#include <cstddef>
#include <cstdint>

using namespace stellwyn;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QString field = core::cfgtxt::firstField(QString::fromLocal8Bit(bytes));
    if (field.size() > bytes.size()) {
        __builtin_trap();
    }
    QTemporaryFile file;
    if (file.open()) {
        file.write(bytes);
        file.close();
        const auto read = core::cfgtxt::readFirstField(file.fileName());
        if (!read || read->size() > core::cfgtxt::kLongestLine) {
            __builtin_trap();
        }
    }
    return 0;
}
