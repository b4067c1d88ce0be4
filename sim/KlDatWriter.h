#pragma once

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>

namespace stellwyn::sim {

// A "KL.Dat" as an indicator leaves it on its SD card: one record a line, the address
// character, an optional tag "!words#", an optional group "#g", the reading, "%", the date,
// "@", the time. Among the records stand a few lines too short (15 characters or fewer) and
// too long (70 or more) to be records, which a reader must pass over.
struct KlDatOptions {
    int records = 100;
    QList<int> ids{130, 131, 132};
    quint32 seed = 1;
    QDate firstDate{2026, 1, 5};
};

// Every line of the file without its line end; records and misfits in file order.
QList<QByteArray> klDatLines(const KlDatOptions& options);
// Lines ended by CR LF, as the indicator writes them.
QByteArray klDatContent(const KlDatOptions& options);
bool writeKlDat(const QString& path, const KlDatOptions& options, QString* error);

// Whether a line is long enough and short enough to be read as a record.
bool isKlRecordLength(qsizetype length);

} // namespace stellwyn::sim
