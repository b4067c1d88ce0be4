#include "ReplyText.h"

#include "core/InputBound.h"
#include "core/Module1.h"

#include <algorithm>

namespace stellwyn::acquisition {

namespace {
constexpr qsizetype cellSize = 11;
constexpr int furtherCellLimit = 20;
constexpr qsizetype readBufferSize = 256;
constexpr qsizetype weightOffset = 3;
constexpr qsizetype weightWidth = 6;

bool isLineEnd(char c) {
    return c == '\r' || c == '\n';
}
} // namespace

QByteArray appendReply(QString& received, QByteArray chunk, bool& cut) {
    if (received.isEmpty()) {
        qsizetype skip = 0;
        while (skip < chunk.size() && isLineEnd(chunk.at(skip))) {
            ++skip;
        }
        chunk.remove(0, skip);
    }
    const QByteArrayView tail = QByteArrayView(chunk).last(std::min(chunk.size(), core::kInputCap));
    cut = core::appendBounded(received, QString::fromLatin1(tail)) || tail.size() < chunk.size();
    return chunk;
}

QString cutAtLineEnd(const QString& text) {
    QString cut = text;
    const qsizetype cr = cut.indexOf(u'\r');
    if (cr >= 0) {
        cut.truncate(cr);
    }
    const qsizetype lf = cut.indexOf(u'\n');
    if (lf >= 0) {
        cut.truncate(lf);
    }
    return cut;
}

QString lastSix(const QString& text) {
    return core::trimBlanks(text.right(weightWidth));
}

std::optional<AddressedReply> splitAddress(const QString& line) {
    if (line.isEmpty()) {
        return std::nullopt;
    }
    const int address = line.at(0).unicode();
    if (address < 128 || address > 256) {
        return std::nullopt;
    }
    return AddressedReply{address, line.mid(1)};
}

int findScale(const core::Module1& m, int address) {
    for (int i = 0; i < m.scalecount; ++i) {
        if (m.netid[i] == address) {
            return i;
        }
    }
    return -1;
}

QList<FurtherCell> furtherCells(const QByteArray& lastChunk) {
    // The chunk as it stood in the fixed read buffer: cut to its size and padded with blanks.
    QByteArray buffer = lastChunk.left(readBufferSize);
    buffer.append(readBufferSize - buffer.size(), ' ');
    const auto addressAt = [&buffer](int j) {
        return static_cast<int>(static_cast<unsigned char>(buffer.at(cellSize * j)));
    };
    int count = 0;
    for (int j = 1; j <= furtherCellLimit; ++j) {
        const int address = addressAt(j);
        if (address > 128 && address < 256) {
            ++count;
        }
    }
    QList<FurtherCell> cells;
    for (int j = 1; j <= count; ++j) {
        cells << FurtherCell{addressAt(j), QString::fromLatin1(buffer.mid(
                                               cellSize * j + weightOffset, weightWidth))};
    }
    return cells;
}

} // namespace stellwyn::acquisition
