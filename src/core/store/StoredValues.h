#pragma once

#include <QByteArrayView>
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

// A date or time in the form the store keeps, built without the heap: a card's import converts
// a million of them. Null (empty) when the text could not be taken.
class StoredText {
public:
    bool isNull() const { return size_ == 0; }
    QByteArrayView view() const { return {bytes_, size_}; }
    void append(char c) {
        if (size_ < qsizetype(sizeof bytes_)) {
            bytes_[size_++] = c;
        }
    }
    void appendTwoDigits(int value) {
        append(char('0' + value / 10 % 10));
        append(char('0' + value % 10));
    }
    void appendNumber(int value);
    static StoredText fromLatin1(const QString& text);

private:
    char bytes_[16];
    qsizetype size_ = 0;
};

// The SD card's log spells its date month/day/year, and its time comes with the hour already
// shifted by the time zone, which can leave it negative ("-2:15:00"). Both are brought into the
// sortable form; a negative hour is kept as it stands (it sorts before midnight of its day,
// where it belongs). The texts are the card's bytes, one character each.
StoredText storedDateFromLogText(QByteArrayView text);
StoredText storedTimeFromLogText(QByteArrayView text);

// Converts what a Setup field holds to a number column's value, as the old store did at
// Update: an empty text stores nothing (null), a number stores itself, anything else is a
// DatabaseError that names the field and the value, and nothing is written.
QVariant wholeNumberForField(const QVariant& value, const QString& field);
QVariant numberForField(const QVariant& value, const QString& field);

} // namespace stellwyn::core
