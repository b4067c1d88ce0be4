#pragma once

#include <QDeadlineTimer>
#include <QString>
#include <functional>

namespace stellwyn::links {

// An adapter pulled out while the program runs. It is told once; it is looked for again now
// and then, since a scan asks many times a second and looking may cost a listing of the bus;
// and it is told when it is back. The backend says how its device opens again and gets its
// line back; the scans go on by themselves.
class AdapterPresence {
public:
    // name: what the operator knows the adapter by (its device name, its serial number).
    AdapterPresence(QString name, std::function<void(const QString&)> showStatus);

    bool away() const { return away_; }
    // The adapter stopped answering; only the first call tells it.
    void lost();
    // While away, at most every half second: reopen, which opens the adapter again and gives it
    // its line. True when the adapter is there.
    bool tryBack(const std::function<bool()>& reopen);

private:
    void tell(const QString& text) const;

    QString name_;
    std::function<void(const QString&)> showStatus_;
    bool away_ = false;
    QDeadlineTimer nextTry_;
};

} // namespace stellwyn::links
