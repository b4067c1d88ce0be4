#include "InputBound.h"

namespace stellwyn::core {

namespace {
// Only the part of `more` that can stay is ever copied, so one huge chunk costs no more than
// a full buffer.
template <typename Text, typename View> bool appendKeepingTail(Text& kept, View more) {
    const qsizetype over = kept.size() + more.size() - kInputCap;
    if (over <= 0) {
        kept.append(more);
        return false;
    }
    if (more.size() >= kInputCap) {
        kept.clear();
        kept.append(more.last(kInputCap));
    } else {
        kept.remove(0, over);
        kept.append(more);
    }
    return true;
}
} // namespace

bool appendBounded(QString& kept, QStringView more) {
    return appendKeepingTail(kept, more);
}

bool appendBounded(QByteArray& kept, QByteArrayView more) {
    return appendKeepingTail(kept, more);
}

QString boundedValue(const QString& value, const QLoggingCategory& category, const QString& what) {
    if (value.size() <= kInputCap) {
        return value;
    }
    qCWarning(category).noquote() << what << "is" << value.size()
                                  << "characters long; only its first" << kInputCap << "are read";
    return value.left(kInputCap);
}

CutNote::CutNote(const QLoggingCategory& category, QString what)
    : category_(category), what_(std::move(what)) {}

void CutNote::cut() {
    if (told_) {
        return;
    }
    told_ = true;
    qCWarning(category_).noquote()
        << what_ << "grew past" << kInputCap << "bytes; only its newest" << kInputCap << "are kept";
}

} // namespace stellwyn::core
