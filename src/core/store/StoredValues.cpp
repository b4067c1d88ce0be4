#include "core/store/StoredValues.h"

#include "core/store/Connection.h"

#include <QRegularExpression>

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

QString storedDateFromLogText(const QString& text) {
    const QString trimmed = text.trimmed();
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
    static const QRegularExpression form(
        QStringLiteral(R"(^(-?)(\d{1,2}):(\d{1,2})(?::(\d{1,2}))?$)"));
    const QRegularExpressionMatch m = form.match(text.trimmed());
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
