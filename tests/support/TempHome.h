#pragma once

#include <QString>
#include <QTemporaryDir>

namespace stellwyn::testsupport {

// A fresh application home for one test, removed afterwards.
class TempHome {
public:
    TempHome();
    QString path() const { return dir_.path(); }
    QString file(const QString& name) const { return dir_.filePath(name); }
    bool exists(const QString& name) const;
    QByteArray read(const QString& name) const;
    void write(const QString& name, const QByteArray& bytes) const;

private:
    QTemporaryDir dir_;
};

} // namespace stellwyn::testsupport
