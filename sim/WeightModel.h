#pragma once

#include <QByteArray>

namespace stellwyn::sim {

// A load on the platform: it moves from where it was to a new target and settles there. The
// indicator shows it as six characters, right aligned, never as a number the host computes with.
class WeightModel {
public:
    void setDecimals(int decimals) { decimals_ = decimals; }
    int decimals() const { return decimals_; }

    // The weight jumps to value at once.
    void set(double value, double at);
    // The weight starts moving at `at` from where it is then and reaches target after settle.
    void moveTo(double target, double at, double settleSeconds);
    // Shows exactly this text (padded or cut to six characters) until the next set or move.
    void setFixedText(const QByteArray& text);

    double valueAt(double t) const;
    bool movingAt(double t) const;
    QByteArray textAt(double t) const;

private:
    double from_ = 0.0;
    double target_ = 0.0;
    double start_ = 0.0;
    double settle_ = 0.0;
    int decimals_ = 1;
    QByteArray fixed_;
};

} // namespace stellwyn::sim
