#include "WeightModel.h"

#include <algorithm>
#include <cmath>

namespace stellwyn::sim {

namespace {
constexpr int kWidth = 6;
}

void WeightModel::set(double value, double at) {
    fixed_.clear();
    from_ = target_ = value;
    start_ = at;
    settle_ = 0.0;
}

void WeightModel::moveTo(double target, double at, double settleSeconds) {
    const double here = valueAt(at);
    fixed_.clear();
    from_ = here;
    target_ = target;
    start_ = at;
    settle_ = std::max(0.0, settleSeconds);
}

void WeightModel::setFixedText(const QByteArray& text) {
    fixed_ = text.left(kWidth).rightJustified(kWidth, ' ');
}

double WeightModel::valueAt(double t) const {
    if (!movingAt(t)) {
        return t < start_ ? from_ : target_;
    }
    // Eased so that the reading creeps into place the way a loaded platform does.
    const double s = (t - start_) / settle_;
    const double eased = 1.0 - std::pow(1.0 - s, 3.0);
    return from_ + (target_ - from_) * eased;
}

bool WeightModel::movingAt(double t) const {
    return settle_ > 0.0 && t >= start_ && t < start_ + settle_;
}

QByteArray WeightModel::textAt(double t) const {
    if (!fixed_.isEmpty()) {
        return fixed_;
    }
    QByteArray text = QByteArray::number(valueAt(t), 'f', std::clamp(decimals_, 0, 4));
    if (text.size() > kWidth) {
        // Dashes rather than letters: "D" in a reading would read as a print mark.
        return QByteArray(kWidth, '-');
    }
    return text.rightJustified(kWidth, ' ');
}

} // namespace stellwyn::sim
