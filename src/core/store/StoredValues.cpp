#include "core/store/StoredValues.h"

#include "core/store/Connection.h"

#include <QRegularExpression>
#include <optional>

namespace stellwyn::core {

bool isYes(const QVariant& stored) {
    if (stored.isNull()) {
        return false;
    }
    bool ok = false;
    const double number = stored.toDouble(&ok);
    if (ok) {
        return number != 0.0;
    }
    // A text such as "True" left by another tool.
    const QString text = stored.toString().trimmed();
    return text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 ||
           text.compare(QLatin1String("yes"), Qt::CaseInsensitive) == 0;
}

QString storedDate(const QDate& date) {
    return date.toString(QStringLiteral("yyyy-MM-dd"));
}

QString storedTime(const QTime& time) {
    return time.toString(QStringLiteral("HH:mm:ss"));
}

namespace {

// Digits only, 1 to maxDigits of them; -1 otherwise.
int smallNumber(QStringView digits, qsizetype maxDigits) {
    if (digits.isEmpty() || digits.size() > maxDigits) {
        return -1;
    }
    int value = 0;
    for (QChar c : digits) {
        if (c < u'0' || c > u'9') {
            return -1;
        }
        value = value * 10 + (c.unicode() - u'0');
    }
    return value;
}

void appendTwoDigits(QString& text, int value) {
    text += QChar(u'0' + value / 10);
    text += QChar(u'0' + value % 10);
}

// The card's everyday forms, "M/d/yyyy" and "M/d/yy", read without the general date parser:
// a card holds a million of them. Anything else is left to the general parser.
std::optional<QString> quickLogDate(QStringView text) {
    const qsizetype first = text.indexOf(u'/');
    const qsizetype second = first < 0 ? -1 : text.indexOf(u'/', first + 1);
    if (second < 0) {
        return std::nullopt;
    }
    const int month = smallNumber(text.left(first), 2);
    const int day = smallNumber(text.mid(first + 1, second - first - 1), 2);
    const QStringView yearText = text.mid(second + 1);
    if (yearText.size() != 2 && yearText.size() != 4) {
        return std::nullopt;
    }
    int year = smallNumber(yearText, 4);
    if (month < 0 || day < 0 || year < 0) {
        return std::nullopt;
    }
    if (yearText.size() == 2) {
        year += year < 50 ? 2000 : 1900;
    }
    if (!QDate::isValid(year, month, day)) {
        return std::nullopt;
    }
    QString stored;
    stored.reserve(10);
    appendTwoDigits(stored, year / 100);
    appendTwoDigits(stored, year % 100);
    stored += u'-';
    appendTwoDigits(stored, month);
    stored += u'-';
    appendTwoDigits(stored, day);
    return stored;
}

// "H:m:s" and "-H:m:s" with one or two digits each.
std::optional<QString> quickLogTime(QStringView text) {
    const bool negative = text.startsWith(u'-');
    if (negative) {
        text = text.mid(1);
    }
    const qsizetype first = text.indexOf(u':');
    const qsizetype second = first < 0 ? -1 : text.indexOf(u':', first + 1);
    if (second < 0) {
        return std::nullopt;
    }
    const int hour = smallNumber(text.left(first), 2);
    const int minute = smallNumber(text.mid(first + 1, second - first - 1), 2);
    const int second_ = smallNumber(text.mid(second + 1), 2);
    if (hour < 0 || minute < 0 || second_ < 0 || minute > 59 || second_ > 59 ||
        (!negative && hour > 23)) {
        return std::nullopt;
    }
    QString stored;
    stored.reserve(9);
    if (negative) {
        stored += u'-';
        stored += QString::number(hour);
    } else {
        appendTwoDigits(stored, hour);
    }
    stored += u':';
    appendTwoDigits(stored, minute);
    stored += u':';
    appendTwoDigits(stored, second_);
    return stored;
}

} // namespace

QString storedDateFromLogText(const QString& text) {
    const QString trimmed = text.trimmed();
    if (const std::optional<QString> quick = quickLogDate(trimmed)) {
        return *quick;
    }
    for (const QString& format :
         {QStringLiteral("M/d/yyyy"), QStringLiteral("M/d/yy"), QStringLiteral("yyyy-MM-dd")}) {
        QDate date = QDate::fromString(trimmed, format);
        if (date.isValid()) {
            if (format == QLatin1String("M/d/yy") && date.year() < 1950) {
                date = date.addYears(100);
            }
            return storedDate(date);
        }
    }
    return {};
}

QString storedTimeFromLogText(const QString& text) {
    const QString trimmed = text.trimmed();
    if (const std::optional<QString> quick = quickLogTime(trimmed)) {
        return *quick;
    }
    static const QRegularExpression form(
        QStringLiteral(R"(^(-?)(\d{1,2}):(\d{1,2})(?::(\d{1,2}))?$)"));
    const QRegularExpressionMatch m = form.match(trimmed);
    if (!m.hasMatch()) {
        return {};
    }
    const int hour = m.captured(2).toInt();
    const int minute = m.captured(3).toInt();
    const int second = m.captured(4).isEmpty() ? 0 : m.captured(4).toInt();
    if (minute > 59 || second > 59) {
        return {};
    }
    if (m.captured(1).isEmpty()) {
        const QTime time(hour, minute, second);
        return time.isValid() ? storedTime(time) : QString();
    }
    return QStringLiteral("-%1:%2:%3")
        .arg(hour)
        .arg(minute, 2, 10, QLatin1Char('0'))
        .arg(second, 2, 10, QLatin1Char('0'));
}

namespace {

QString shownValue(const QVariant& value) {
    return value.toString();
}

} // namespace

QVariant wholeNumberForField(const QVariant& value, const QString& field) {
    if (value.isNull() || value.toString().trimmed().isEmpty()) {
        return {};
    }
    bool ok = false;
    const qlonglong number = value.toString().trimmed().toLongLong(&ok);
    if (!ok) {
        throw DatabaseError(QStringLiteral("The field %1 needs a whole number; \"%2\" is not one.")
                                .arg(field, shownValue(value)));
    }
    return number;
}

QVariant numberForField(const QVariant& value, const QString& field) {
    if (value.isNull() || value.toString().trimmed().isEmpty()) {
        return {};
    }
    bool ok = false;
    // Numbers keep the point as their decimal separator, as the settings always have.
    const double number = value.toString().trimmed().toDouble(&ok);
    if (!ok) {
        throw DatabaseError(QStringLiteral("The field %1 needs a number; \"%2\" is not one.")
                                .arg(field, shownValue(value)));
    }
    return number;
}

} // namespace stellwyn::core
