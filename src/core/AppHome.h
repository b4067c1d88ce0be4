#pragma once

#include <QString>

namespace stellwyn::core {

// The application home stands for the program's folder: cfg.txt, the settings file, the
// instance lock, sccfg.mdb and the copy of svdata.mdb that each start compacts live there.
class AppHome {
public:
    explicit AppHome(const QString& folder);

    // --home DIR, else STELLWYN_HOME, else the user's application data folder.
    static QString resolve(const QString& commandLineHome);

    const QString& folder() const { return folder_; }
    QString file(const QString& name) const;
    // Makes the folder when it is missing; false when it cannot be made.
    bool ensureExists() const;

private:
    QString folder_;
};

// A path as the platform writes it, for messages.
QString displayPath(const QString& path);

} // namespace stellwyn::core
