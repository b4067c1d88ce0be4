#pragma once

#include <QDate>
#include <QString>
#include <QTime>
#include <QVariant>

namespace stellwyn::core {

// Yes/no fields hold -1 for true, as the program has always written them; any non-zero value
// read back counts as true, since other tools write 1.
inline constexpr int kYes = -1;
inline constexpr int kNo = 0;
inline int yesNo(bool value) {
    return value ? kYes : kNo;
}
bool isYes(const QVariant& stored);

// Dates and times are kept as text that sorts in time order, so the grid's "order by date,time"
// is an order in time and not by the regional spelling of a date.
QString storedDate(const QDate& date);
QString storedTime(const QTime& time);

// The SD card's log spells its date month/day/year, and its time comes with the hour already
// shifted by the time zone, which can leave it negative ("-2:15:00"). Both are brought into the
// sortable form; a negative hour is kept as it stands (it sorts before midnight of its day,
// where it belongs). Returns a null QString for a text the store cannot take as a date or time.
QString storedDateFromLogText(const QString& text);
QString storedTimeFromLogText(const QString& text);

// Converts what a Setup field holds to a number column's value, as the old store did at
// Update: an empty text stores nothing (null), a number stores itself, anything else is a
// DatabaseError that names the field and the value, and nothing is written.
QVariant wholeNumberForField(const QVariant& value, const QString& field);
QVariant numberForField(const QVariant& value, const QString& field);

} // namespace stellwyn::core
