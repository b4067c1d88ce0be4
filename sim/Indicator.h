#pragma once

#include "Fault.h"
#include "WeightModel.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

namespace stellwyn::sim {

// One frame of an upload as it came in: the code after "!U" (or NetID, 0x12) and every byte
// behind it up to the next frame, CRs included.
struct Upload {
    char code = 0;
    QByteArray payload;
    friend bool operator==(const Upload&, const Upload&) = default;
};

// How a print shows in the reading text.
enum class PrintStyle {
    Plus, // "+" at offset 1 of the cell; on RS-232, which has no cell, a "#" group line
    Hash, // "#", the group character, then the reading
    D,    // the reading followed by "D"
};

// One weighing-scale indicator as the host sees it over the wire: what it weighs, how it
// prints, the setup it stores, and everything it was sent.
class Indicator {
public:
    static constexpr int kGroupWordCount = 38;
    static constexpr int kFirstGroupValueWord = 31;
    static constexpr int kGroupValueCount = 6;
    static constexpr int kOutputWordCount = 44;
    static constexpr int kTotalsWordCount = 20;

    explicit Indicator(int netId);

    int netId() const { return netId_; }
    WeightModel& weight() { return weight_; }
    const WeightModel& weight() const { return weight_; }

    void setGroup(char group) { group_ = group; }
    char group() const { return group_; }
    // Blank-separated words shown between "!" and "#"; empty for no tag.
    void setTag(const QByteArray& words) { tag_ = words; }
    const QByteArray& tag() const { return tag_; }
    void setPrintStyle(PrintStyle style) { style_ = style; }
    PrintStyle printStyle() const { return style_; }

    void requestPrint() { printPending_ = true; }
    bool printPending() const { return printPending_; }
    bool takePrint();

    void addFault(const Fault& fault) { faults_.append(fault); }
    void clearFaults() { faults_.clear(); }
    QList<Fault>& faults() { return faults_; }
    bool hasFault(Fault::Kind kind) const;

    const QStringList& groupWords() const { return groupWords_; }
    const QStringList& outputWords() const { return outputWords_; }
    const QStringList& totalsWords() const { return totalsWords_; }
    void setGroupWords(const QStringList& words) { groupWords_ = words; }
    void setOutputWords(const QStringList& words) { outputWords_ = words; }
    void setTotalsWords(const QStringList& words) { totalsWords_ = words; }

    // What came over the wire, in order of arrival.
    const QList<Upload>& uploads() const { return uploads_; }
    const QByteArray& keys() const { return keys_; }
    const QByteArray& requests() const { return requests_; }
    int storeCount() const { return storeCount_; }

    void recordRequest(char code) { requests_.append(code); }
    void recordKey(char code) { keys_.append(code); }
    void beginUpload(char code, const QByteArray& payload);
    void continueUpload(const QByteArray& bytes);
    // "S": the uploads since the last store become the stored setup.
    void store();
    // "R": every total back to zero.
    void resetTotals();

private:
    void applyGroupUpload(const Upload& upload);
    void applyOutputUpload(const Upload& upload);

    int netId_;
    WeightModel weight_;
    char group_ = '1';
    QByteArray tag_;
    PrintStyle style_ = PrintStyle::Plus;
    bool printPending_ = false;
    QList<Fault> faults_;
    QStringList groupWords_;
    QStringList outputWords_;
    QStringList totalsWords_;
    QList<Upload> uploads_;
    qsizetype storedUploads_ = 0;
    QByteArray keys_;
    QByteArray requests_;
    int storeCount_ = 0;
};

// True for the bytes that are front-panel keys.
bool isKeyCode(char code);

} // namespace stellwyn::sim
