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

void StoredText::appendNumber(int value) {
    char digits[12];
    int n = 0;
    unsigned magnitude = value < 0 ? 0U - unsigned(value) : unsigned(value);
    do {
        digits[n++] = char('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (value < 0) {
        append('-');
    }
    while (n > 0) {
        append(digits[--n]);
    }
}

StoredText StoredText::fromLatin1(const QString& text) {
    StoredText stored;
    for (QChar c : text) {
        stored.append(char(c.unicode()));
    }
    return stored;
}

namespace {

// Digits only, 1 to maxDigits of them; -1 otherwise.
int smallNumber(QByteArrayView digits, qsizetype maxDigits) {
    if (digits.isEmpty() || digits.size() > maxDigits) {
        return -1;
    }
    int value = 0;
    for (char c : digits) {
        if (c < '0' || c > '9') {
            return -1;
        }
        value = value * 10 + (c - '0');
    }
    return value;
}

// The card's everyday forms, "M/d/yyyy" and "M/d/yy", read without the general date parser:
// a card holds a million of them. Anything else is left to the general parser.
StoredText quickLogDate(QByteArrayView text) {
    const qsizetype first = text.indexOf('/');
    const qsizetype second = first < 0 ? -1 : text.indexOf('/', first + 1);
    if (second < 0) {
        return {};
    }
    const int month = smallNumber(text.first(first), 2);
    const int day = smallNumber(text.sliced(first + 1, second - first - 1), 2);
    const QByteArrayView yearText = text.sliced(second + 1);
    if (yearText.size() != 2 && yearText.size() != 4) {
        return {};
    }
    int year = smallNumber(yearText, 4);
    if (month < 0 || day < 0 || year < 0) {
        return {};
    }
    if (yearText.size() == 2) {
        year += year < 50 ? 2000 : 1900;
    }
    if (!QDate::isValid(year, month, day)) {
        return {};
    }
    StoredText stored;
    stored.appendTwoDigits(year / 100);
    stored.appendTwoDigits(year % 100);
    stored.append('-');
    stored.appendTwoDigits(month);
    stored.append('-');
    stored.appendTwoDigits(day);
    return stored;
}

// "H:m:s" and "-H:m:s" with one or two digits each.
StoredText quickLogTime(QByteArrayView text) {
    const bool negative = text.startsWith('-');
    if (negative) {
        text = text.sliced(1);
    }
    const qsizetype first = text.indexOf(':');
    const qsizetype second = first < 0 ? -1 : text.indexOf(':', first + 1);
    if (second < 0) {
        return {};
    }
    const int hour = smallNumber(text.first(first), 2);
    const int minute = smallNumber(text.sliced(first + 1, second - first - 1), 2);
    const int second_ = smallNumber(text.sliced(second + 1), 2);
    if (hour < 0 || minute < 0 || second_ < 0 || minute > 59 || second_ > 59 ||
        (!negative && hour > 23)) {
        return {};
    }
    StoredText stored;
    if (negative) {
        stored.append('-');
        stored.appendNumber(hour);
    } else {
        stored.appendTwoDigits(hour);
    }
    stored.append(':');
    stored.appendTwoDigits(minute);
    stored.append(':');
    stored.appendTwoDigits(second_);
    return stored;
}

// What the quick forms leave goes to the general parsers, trimmed of every kind of blank.
QString generalText(QByteArrayView text) {
    return QString::fromLatin1(text).trimmed();
}

} // namespace

StoredText storedDateFromLogText(QByteArrayView text) {
    const StoredText quick = quickLogDate(text.trimmed());
    if (!quick.isNull()) {
        return quick;
    }
    const QString trimmed = generalText(text);
    for (const QString& format :
         {QStringLiteral("M/d/yyyy"), QStringLiteral("M/d/yy"), QStringLiteral("yyyy-MM-dd")}) {
        QDate date = QDate::fromString(trimmed, format);
        // Qt reads a signed year; a card's "-2004" is damage, not a date before the era.
        if (date.isValid() && date.year() > 0) {
            if (format == QLatin1String("M/d/yy") && date.year() < 1950) {
                date = date.addYears(100);
            }
            return StoredText::fromLatin1(storedDate(date));
        }
    }
    return {};
}

StoredText storedTimeFromLogText(QByteArrayView text) {
    const StoredText quick = quickLogTime(text.trimmed());
    if (!quick.isNull()) {
        return quick;
    }
    const QString trimmed = generalText(text);
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
        return time.isValid() ? StoredText::fromLatin1(storedTime(time)) : StoredText();
    }
    return StoredText::fromLatin1(QStringLiteral("-%1:%2:%3")
                                      .arg(hour)
                                      .arg(minute, 2, 10, QLatin1Char('0'))
                                      .arg(second, 2, 10, QLatin1Char('0')));
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
