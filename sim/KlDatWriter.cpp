#include "KlDatWriter.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTime>

namespace stellwyn::sim {

namespace {

constexpr qsizetype kShortest = 16;
constexpr qsizetype kLongest = 69;

QByteArray record(char address, int i, QRandomGenerator& rng, const QDate& firstDate) {
    QByteArray line(1, address);
    if (i % 3 == 0) {
        line += "!ROW " + QByteArray::number(1 + i % 9) + " TAG" +
                QByteArray::number(rng.bounded(1, 1000)).rightJustified(3, '0');
    }
    if (i % 3 == 0 || i % 2 == 0) {
        line += '#' + QByteArray(1, static_cast<char>('1' + i % 4));
    }
    // Readings keep their blanks inside, so right-justify them in seven places.
    const double weight = rng.bounded(100000) / 10.0;
    line += QByteArray::number(weight, 'f', 1).rightJustified(7, ' ');
    const QDate date = firstDate.addDays(i / 200);
    const QTime time = QTime(6, 0).addSecs((i * 37) % (12 * 3600));
    line += '%' + date.toString(QStringLiteral("MM/dd/yyyy")).toLatin1();
    line += '@' + time.toString(QStringLiteral("HH:mm:ss")).toLatin1();
    return line;
}

// Lines a reader skips by their length alone, the edge lengths among them.
QList<QByteArray> misfits(char address) {
    const QByteArray base = QByteArray(1, address) + "#1  12.5%01/05/2026@06:00:00";
    return {
        base.left(kShortest - 1),
        QByteArrayLiteral("x"),
        base + QByteArray(kLongest + 1 - base.size(), ' ').replace(' ', '0'),
        QByteArray(1, address) + "!" + QByteArray(60, 'W') + "#1  99.9%01/05/2026@06:00:00",
    };
}

} // namespace

bool isKlRecordLength(qsizetype length) {
    return length >= kShortest && length <= kLongest;
}

QList<QByteArray> klDatLines(const KlDatOptions& options) {
    QRandomGenerator rng(options.seed);
    const QList<int> ids = options.ids.isEmpty() ? QList<int>{130} : options.ids;
    const QList<QByteArray> odd = misfits(static_cast<char>(ids.front()));
    QList<QByteArray> lines;
    qsizetype nextOdd = 0;
    const int n = std::max(0, options.records);
    for (int i = 0; i < n; ++i) {
        lines.append(record(static_cast<char>(ids.at(i % ids.size())), i, rng, options.firstDate));
        // Misfits stand among the records: after the first, and then spread through the file.
        if (nextOdd < odd.size() && (i == 0 || i == (n * (nextOdd + 1)) / (odd.size() + 1))) {
            lines.append(odd.at(nextOdd++));
        }
    }
    while (nextOdd < odd.size()) {
        lines.append(odd.at(nextOdd++));
    }
    return lines;
}

QByteArray klDatContent(const KlDatOptions& options) {
    QByteArray out;
    for (const QByteArray& line : klDatLines(options)) {
        out += line + "\r\n";
    }
    return out;
}

bool writeKlDat(const QString& path, const KlDatOptions& options, QString* error) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        *error = file.errorString();
        return false;
    }
    const QByteArray content = klDatContent(options);
    if (file.write(content) != content.size()) {
        *error = file.errorString();
        return false;
    }
    return true;
}

} // namespace stellwyn::sim
