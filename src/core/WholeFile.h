#pragma once

#include <QByteArray>
#include <QSaveFile>

namespace stellwyn::core {

// Writes all of bytes to a file opened Unbuffered. Qt gives a write that a full disk cut short
// as a short count and keeps the system's reason to itself; the rest is written again, and that
// attempt fails with the reason in errorString().
inline bool writeWhole(QFileDevice& file, const QByteArray& bytes) {
    qint64 done = 0;
    while (done < bytes.size()) {
        const qint64 n = file.write(bytes.constData() + done, bytes.size() - done);
        if (n <= 0) {
            return false;
        }
        done += n;
    }
    return true;
}

// Puts the new file in place of the old one, or leaves the old one as it was. QSaveFile's own
// commit (Qt 6.4) checks only the writes that reached the disk before it: bytes still in its
// buffer that then fail to go out would not stop the rename, and a cut-short file would replace
// a whole one. They are sent first; on a failure the file keeps its error text, and the new
// copy goes with the QSaveFile.
inline bool commitWhole(QSaveFile& file) {
    return file.flush() && file.commit();
}

} // namespace stellwyn::core
