#include "Indicator.h"

namespace stellwyn::sim {

namespace {

constexpr int kValueWidth = 5;

// Word i of a fresh setup is its own number, so that a host reading the wrong word sees it.
QStringList numberedWords(int count, int offset) {
    QStringList words;
    for (int i = 0; i < count; ++i) {
        words.append(QString::number(i + offset));
    }
    return words;
}

QStringList freshGroupWords() {
    QStringList words = numberedWords(Indicator::kGroupWordCount, 0);
    for (int v = 0; v < Indicator::kGroupValueCount; ++v) {
        words[Indicator::kFirstGroupValueWord + v] =
            QStringLiteral("%1.5").arg(v + 1, 3, 10, QLatin1Char('0'));
    }
    return words;
}

QString valueAt(const QByteArray& payload, int index) {
    return QString::fromLatin1(
        payload.mid(static_cast<qsizetype>(index) * kValueWidth, kValueWidth));
}

} // namespace

bool isKeyCode(char code) {
    return (code >= '0' && code <= '9') || code == '.' || code == 'E';
}

Indicator::Indicator(int netId)
    : netId_(netId), groupWords_(freshGroupWords()),
      outputWords_(numberedWords(kOutputWordCount, 100)),
      totalsWords_(numberedWords(kTotalsWordCount, 1)) {}

bool Indicator::takePrint() {
    const bool pending = printPending_;
    printPending_ = false;
    return pending;
}

bool Indicator::hasFault(Fault::Kind kind) const {
    for (const Fault& f : faults_) {
        if (f.kind == kind) {
            return true;
        }
    }
    return false;
}

void Indicator::beginUpload(char code, const QByteArray& payload) {
    uploads_.append(Upload{code, payload});
}

void Indicator::continueUpload(const QByteArray& bytes) {
    if (!uploads_.isEmpty()) {
        uploads_.last().payload.append(bytes);
    }
}

void Indicator::store() {
    for (qsizetype i = storedUploads_; i < uploads_.size(); ++i) {
        const Upload& upload = uploads_.at(i);
        if (upload.code >= 'A' && upload.code <= 'H') {
            applyOutputUpload(upload);
        } else {
            applyGroupUpload(upload);
        }
    }
    storedUploads_ = uploads_.size();
    ++storeCount_;
}

void Indicator::applyGroupUpload(const Upload& upload) {
    const int first = kFirstGroupValueWord;
    const QByteArray& p = upload.payload;
    switch (upload.code) {
    case '1':
        groupWords_[first] = valueAt(p, 0);
        groupWords_[first + 1] = valueAt(p, 1);
        break;
    case '0': {
        groupWords_[first + 2] = valueAt(p, 0);
        // On RS-232 the fourth value rides in this frame, behind the first CR.
        const qsizetype cr = p.indexOf('\r');
        if (cr >= 0 && cr + 1 < p.size()) {
            groupWords_[first + 3] = QString::fromLatin1(p.mid(cr + 1, kValueWidth));
        }
        break;
    }
    case 'I':
        groupWords_[first + 3] = valueAt(p, 0);
        break;
    case '9':
        groupWords_[first + 4] = valueAt(p, 0);
        groupWords_[first + 5] = valueAt(p, 1);
        break;
    case '3':
    case '4':
    case '5':
    case '6':
    case '7':
    case '8':
        if (!p.isEmpty()) {
            groupWords_[upload.code - '0'] = QString::number(static_cast<unsigned char>(p.at(0)));
        }
        break;
    default:
        break;
    }
}

void Indicator::applyOutputUpload(const Upload& upload) {
    // The items of a frame are taken as tab-separated; a frame that does not hold the full set
    // leaves the stored items as they were.
    const int frame = upload.code - 'A';
    const int count = upload.code == 'H' ? 2 : 6;
    QByteArray body = upload.payload;
    const qsizetype cr = body.indexOf('\r');
    if (cr >= 0) {
        body.truncate(cr);
    }
    const QList<QByteArray> items = body.split('\t');
    if (items.size() != count) {
        return;
    }
    for (int i = 0; i < count; ++i) {
        outputWords_[frame * 6 + i] = QString::fromLatin1(items.at(i));
    }
}

void Indicator::resetTotals() {
    for (QString& word : totalsWords_) {
        word = QStringLiteral("0");
    }
}

} // namespace stellwyn::sim
