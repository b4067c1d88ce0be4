#pragma once

#include <QByteArray>
#include <QLoggingCategory>
#include <QString>

namespace stellwyn::core {

// Everything that comes from outside (a device, a socket, a file line, a settings value) is
// bounded before it is kept. A receive text that never sees its line end (a wrong baud rate, a
// device that ends lines with LF alone) would otherwise grow for as long as the link runs; its
// newest part is the only one a line end can still complete, so a stream keeps its tail.
inline constexpr qsizetype kInputCap = 4096;

// Appends `more` to `kept` and keeps the last kInputCap of the whole, never copying more of
// `more` than can stay. True when anything was dropped.
bool appendBounded(QString& kept, QStringView more);
bool appendBounded(QByteArray& kept, QByteArrayView more);

// A value read whole from outside (a settings value, a file line): its first kInputCap
// characters, the part a person reads first. A cut is told to the log, naming `what`.
QString boundedValue(const QString& value, const QLoggingCategory& category, const QString& what);

// Tells the log once, for the life of its owner, that the input it watches was cut: every poll
// of a link that runs at the wrong speed would say it again.
class CutNote {
public:
    CutNote(const QLoggingCategory& category, QString what);
    void cut();

private:
    const QLoggingCategory& category_;
    QString what_;
    bool told_ = false;
};

} // namespace stellwyn::core
