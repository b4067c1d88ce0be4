#pragma once

#include <QByteArray>
#include <QString>

namespace stellwyn::linkstest {

// A pseudo-terminal for the serial backends: the program opens the slave as its port, the test
// plays the far end on the master.
class PtyPair {
public:
    PtyPair();
    ~PtyPair();
    PtyPair(const PtyPair&) = delete;
    PtyPair& operator=(const PtyPair&) = delete;

    bool ok() const { return master_ >= 0; }
    const QString& slavePath() const { return slavePath_; }

    void send(const QByteArray& bytes);
    // Reads until `count` bytes have come or timeoutMs has passed.
    QByteArray receive(qsizetype count, int timeoutMs);
    // The far end goes away, as a pulled cable or adapter.
    void hangUp();

private:
    int master_ = -1;
    QString slavePath_;
};

// The baud rates a terminal device holds, as numbers (rates off the standard list included).
struct LineSpeed {
    unsigned in = 0;
    unsigned out = 0;
};
LineSpeed lineSpeed(int fd);

// The 256 byte values in order, for checks that a line passes every byte untouched.
QByteArray allByteValues();

} // namespace stellwyn::linkstest
