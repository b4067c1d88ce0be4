#pragma once

#include "RealTimePump.h"

#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <memory>

namespace stellwyn::sim {

// Serves a device on a pseudo-terminal, so that a program opens the slave side as it would a
// serial port. The slave is set to raw mode; the server holds the slave open itself so that a
// client closing and reopening the port does not hang up the master.
class PtyServer : public QObject {
    Q_OBJECT
public:
    PtyServer(LineDevice& device, const core::Clock& clock, QObject* parent = nullptr);
    ~PtyServer() override;

    // Opens the pair; false with errorString() set when the system refuses.
    bool open();
    QString slavePath() const { return slavePath_; }
    QString errorString() const { return error_; }
    // Also reachable by this path, a symbolic link made now and removed with the server.
    bool linkAs(const QString& path);
    // Paces what the program writes: each byte takes this long on the line.
    void setByteTime(double seconds) { pump_.setByteTime(seconds); }

private:
    void onReadable();
    void writeOut(const QByteArray& bytes);
    void closeAll();

    RealTimePump pump_;
    int master_ = -1;
    int slave_ = -1;
    QString slavePath_;
    QString linkPath_;
    QString error_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace stellwyn::sim
