#include "Scenario.h"

#include "WireTime.h"

#include <QRegularExpression>
#include <map>

namespace stellwyn::sim {

namespace {

using Words = QStringList;

// The indicators an ID word names on this bus.
QList<Indicator*> named(Bus& bus, const QString& id) {
    QList<Indicator*> out;
    for (const auto& ind : bus.indicators()) {
        if (id == QLatin1String("*") || bus.mode() == Bus::Mode::Rs232 ||
            ind->netId() == id.toInt()) {
            out.append(ind.get());
        }
    }
    return out;
}

bool readNumber(const QString& word, double* out) {
    bool ok = false;
    *out = word.toDouble(&ok);
    return ok;
}

bool readIds(const QString& word, QList<int>* out) {
    out->clear();
    for (const QString& part : word.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        bool ok = false;
        const int id = part.toInt(&ok);
        if (!ok || id < 0 || id > 255) {
            return false;
        }
        out->append(id);
    }
    return !out->isEmpty();
}

// The print key, pressed again every `every` seconds when that is above 0.
struct PrintPress {
    Bus* bus;
    QList<int> ids;
    double every;
    bool push;

    void operator()(double t) const {
        bus->print(ids, t);
        if (push && bus->addressed()) {
            bus->pushPrints(t);
        }
        if (every > 0.0) {
            bus->schedule(t + every, *this);
        }
    }
};

// Continuous output, every `every` seconds.
struct Stream {
    Bus* bus;
    QList<int> ids;
    double every;

    void operator()(double t) const {
        bus->sendReadings(ids, t);
        bus->schedule(t + every, *this);
    }
};

bool isId(const QString& word) {
    bool ok = false;
    const int id = word.toInt(&ok);
    return word == QLatin1String("*") || (ok && id >= 0 && id <= 255);
}

// Reads "key value" pairs that follow the fixed words of a directive.
bool readOptions(const Words& w, qsizetype from, const QStringList& keys,
                 std::map<QString, double>* out) {
    for (qsizetype i = from; i < w.size(); ++i) {
        if (!keys.contains(w[i])) {
            return false;
        }
        if (w[i] == QLatin1String("push")) {
            (*out)[w[i]] = 1.0;
            continue;
        }
        double v = 0.0;
        if (i + 1 >= w.size() || !readNumber(w[i + 1], &v)) {
            return false;
        }
        (*out)[w[i]] = v;
        ++i;
    }
    return true;
}

} // namespace

bool Scenario::parse(const QString& text, QString* error) {
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (qsizetype i = 0; i < lines.size(); ++i) {
        QString why;
        if (!parseLine(lines[i], &why)) {
            *error = QStringLiteral("line %1: %2").arg(i + 1).arg(why);
            return false;
        }
    }
    return true;
}

bool Scenario::parseLine(const QString& line, QString* error) {
    const QString trimmed = line.trimmed();
    if (trimmed.isEmpty() || trimmed.startsWith(QLatin1String("//"))) {
        return true;
    }
    const Words w = trimmed.split(QRegularExpression(QStringLiteral("\\s+")));
    const QString& what = w[0];
    auto fail = [&](const QString& why) {
        *error = why + QStringLiteral(": ") + trimmed;
        return false;
    };

    if (what == QLatin1String("mode") && w.size() == 2) {
        if (w[1] != QLatin1String("rs232") && w[1] != QLatin1String("addressed")) {
            return fail(QStringLiteral("mode is rs232 or addressed"));
        }
        mode = w[1] == QLatin1String("rs232") ? Bus::Mode::Rs232 : Bus::Mode::Addressed;
        return true;
    }
    if (what == QLatin1String("ids") && w.size() == 2) {
        return readIds(w[1], &ids) || fail(QStringLiteral("NetIDs are 0 to 255"));
    }
    if (what == QLatin1String("pace") && w.size() == 2) {
        pace = w[1] == QLatin1String("on");
        return pace || w[1] == QLatin1String("off") || fail(QStringLiteral("pace on or off"));
    }
    if (what == QLatin1String("turnaround") && w.size() == 2) {
        return readNumber(w[1], &turnaround) || fail(QStringLiteral("seconds expected"));
    }
    if (what == QLatin1String("rf") && w.size() == 2) {
        bool ok = false;
        rfChannel = w[1].toInt(&ok);
        return (ok && rfChannel >= 0) || fail(QStringLiteral("channel expected"));
    }
    if (w.size() < 2 ||
        (what != QLatin1String("print") && what != QLatin1String("stream") && !isId(w[1]))) {
        return fail(QStringLiteral("unknown directive or bad ID"));
    }
    const QString& id = w[1];

    if (what == QLatin1String("weight") && w.size() >= 3) {
        double value = 0.0;
        std::map<QString, double> opt;
        if (!readNumber(w[2], &value) ||
            !readOptions(w, 3, {QStringLiteral("settle"), QStringLiteral("at")}, &opt)) {
            return fail(QStringLiteral("weight ID VALUE [settle S] [at T]"));
        }
        const double settle =
            opt.count(QStringLiteral("settle")) ? opt[QStringLiteral("settle")] : 0.0;
        const double at = opt.count(QStringLiteral("at")) ? opt[QStringLiteral("at")] : 0.0;
        steps_.push_back([id, value, settle, at](Bus& bus, double origin) {
            bus.schedule(origin + at, [&bus, id, value, settle](double t) {
                for (Indicator* ind : named(bus, id)) {
                    ind->weight().moveTo(value, t, settle);
                }
            });
        });
        return true;
    }
    if (what == QLatin1String("decimals") && w.size() == 3) {
        const int n = w[2].toInt();
        steps_.push_back([id, n](Bus& bus, double) {
            for (Indicator* ind : named(bus, id)) {
                ind->weight().setDecimals(n);
            }
        });
        return true;
    }
    if (what == QLatin1String("group") && w.size() == 3 && w[2].size() == 1) {
        const char g = w[2].at(0).toLatin1();
        steps_.push_back([id, g](Bus& bus, double) {
            for (Indicator* ind : named(bus, id)) {
                ind->setGroup(g);
            }
        });
        return true;
    }
    if (what == QLatin1String("tag") && w.size() >= 3) {
        const QByteArray words = w.mid(2).join(QLatin1Char(' ')).toLatin1();
        steps_.push_back([id, words](Bus& bus, double) {
            for (Indicator* ind : named(bus, id)) {
                ind->setTag(words);
            }
        });
        return true;
    }
    if (what == QLatin1String("style") && w.size() == 3) {
        PrintStyle style = PrintStyle::Plus;
        if (w[2] == QLatin1String("hash")) {
            style = PrintStyle::Hash;
        } else if (w[2] == QLatin1String("d")) {
            style = PrintStyle::D;
        } else if (w[2] != QLatin1String("plus")) {
            return fail(QStringLiteral("style is plus, hash or d"));
        }
        steps_.push_back([id, style](Bus& bus, double) {
            for (Indicator* ind : named(bus, id)) {
                ind->setPrintStyle(style);
            }
        });
        return true;
    }
    if (what == QLatin1String("print")) {
        QList<int> who;
        std::map<QString, double> opt;
        const bool all = id == QLatin1String("*");
        if ((!all && !readIds(id, &who)) ||
            !readOptions(w, 2,
                         {QStringLiteral("at"), QStringLiteral("every"), QStringLiteral("push")},
                         &opt)) {
            return fail(QStringLiteral("print IDS [at T] [every S] [push]"));
        }
        const double at = opt.count(QStringLiteral("at")) ? opt[QStringLiteral("at")] : 0.0;
        const double every =
            opt.count(QStringLiteral("every")) ? opt[QStringLiteral("every")] : 0.0;
        const bool push = opt.count(QStringLiteral("push")) > 0;
        steps_.push_back([who, all, at, every, push](Bus& bus, double origin) {
            QList<int> ids = who;
            if (all) {
                for (const auto& ind : bus.indicators()) {
                    ids.append(ind->netId());
                }
            }
            bus.schedule(origin + at, PrintPress{&bus, ids, every, push});
        });
        return true;
    }
    if (what == QLatin1String("stream")) {
        QList<int> who;
        std::map<QString, double> opt;
        const bool all = id == QLatin1String("*");
        if ((!all && !readIds(id, &who)) ||
            !readOptions(w, 2, {QStringLiteral("at"), QStringLiteral("every")}, &opt) ||
            !opt.count(QStringLiteral("every")) || opt[QStringLiteral("every")] <= 0.0) {
            return fail(QStringLiteral("stream IDS every S [at T]"));
        }
        const double at = opt.count(QStringLiteral("at")) ? opt[QStringLiteral("at")] : 0.0;
        const double every = opt[QStringLiteral("every")];
        steps_.push_back([who, all, at, every](Bus& bus, double origin) {
            QList<int> ids = who;
            if (all) {
                for (const auto& ind : bus.indicators()) {
                    ids.append(ind->netId());
                }
            }
            bus.schedule(origin + at, Stream{&bus, ids, every});
        });
        return true;
    }
    if (what == QLatin1String("fault") && w.size() >= 3) {
        Fault f;
        qsizetype next = 3;
        const QString& kind = w[2];
        double v = 0.0;
        if (kind == QLatin1String("silence")) {
            f.kind = Fault::Kind::Silence;
        } else if (kind == QLatin1String("late") && w.size() > 3 && readNumber(w[3], &v)) {
            f.kind = Fault::Kind::Late;
            f.seconds = v;
            next = 4;
        } else if (kind == QLatin1String("split") && w.size() > 4 && readNumber(w[4], &v)) {
            f.kind = Fault::Kind::Split;
            f.splitAt = w[3].toInt();
            f.seconds = v;
            next = 5;
        } else if (kind == QLatin1String("garbage") && w.size() > 3) {
            f.kind = Fault::Kind::Garbage;
            f.bytes = QByteArray::fromHex(w[3].toLatin1());
            next = 4;
        } else if (kind == QLatin1String("low-address") && w.size() > 3) {
            f.kind = Fault::Kind::LowAddress;
            f.address = w[3].toInt();
            next = 4;
        } else if (kind == QLatin1String("bang-no-hash")) {
            f.kind = Fault::Kind::BangNoHash;
        } else if (kind == QLatin1String("missing-cr")) {
            f.kind = Fault::Kind::MissingCr;
        } else {
            return fail(QStringLiteral("unknown fault"));
        }
        std::map<QString, double> opt;
        if (!readOptions(w, next, {QStringLiteral("count")}, &opt)) {
            return fail(QStringLiteral("fault ... [count N]"));
        }
        f.remaining =
            opt.count(QStringLiteral("count")) ? static_cast<int>(opt[QStringLiteral("count")]) : 0;
        steps_.push_back([id, f](Bus& bus, double) {
            for (Indicator* ind : named(bus, id)) {
                ind->addFault(f);
            }
        });
        return true;
    }
    return fail(QStringLiteral("unknown directive"));
}

void Scenario::populate(Bus& bus, double origin) const {
    bus.setTurnaround(turnaround);
    bus.setByteTime(pace ? kByteTime9600 : 0.0);
    const QList<int> wanted = bus.mode() == Bus::Mode::Rs232 ? ids.mid(0, 1) : ids;
    for (int id : wanted) {
        bus.add(id);
    }
    for (const Step& step : steps_) {
        step(bus, origin);
    }
}

} // namespace stellwyn::sim
