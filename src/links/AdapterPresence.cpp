#include "links/AdapterPresence.h"

#include "links/LinksLog.h"

namespace stellwyn::links {

namespace {
constexpr int kRetryMs = 500;
}

AdapterPresence::AdapterPresence(QString name, std::function<void(const QString&)> showStatus)
    : name_(std::move(name)), showStatus_(std::move(showStatus)) {}

void AdapterPresence::lost() {
    if (away_) {
        return;
    }
    away_ = true;
    tell(QStringLiteral("The USB adapter %1 is gone. Its scales are polled again as soon as it is "
                        "plugged back in.")
             .arg(name_));
    nextTry_ = QDeadlineTimer(kRetryMs);
}

bool AdapterPresence::tryBack(const std::function<bool()>& reopen) {
    if (!away_) {
        return true;
    }
    if (!nextTry_.hasExpired()) {
        return false;
    }
    if (!reopen()) {
        nextTry_ = QDeadlineTimer(kRetryMs);
        return false;
    }
    away_ = false;
    tell(QStringLiteral("The USB adapter %1 is back.").arg(name_));
    return true;
}

void AdapterPresence::tell(const QString& text) const {
    qCWarning(lcFtdi).noquote() << text;
    if (showStatus_) {
        showStatus_(text);
    }
}

} // namespace stellwyn::links
