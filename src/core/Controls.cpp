#include "Controls.h"

#include "FatalError.h"

namespace stellwyn::core {

void CheckBox::setValue(int value) {
    if (value == value_) {
        return;
    }
    value_ = value;
    if (Click) {
        Click();
    }
}

void OptionButton::setValue(bool value) {
    if (value == value_) {
        return;
    }
    value_ = value;
    if (!value) {
        return;
    }
    if (group_ != nullptr) {
        group_->clearOthers(*this);
    }
    if (Click) {
        Click();
    }
}

void OptionGroup::add(OptionButton& button) {
    button.group_ = this;
    buttons_.push_back(&button);
}

void OptionGroup::clearOthers(const OptionButton& chosen) {
    for (OptionButton* button : buttons_) {
        if (button != &chosen) {
            button->value_ = false;
        }
    }
}

void ComboBox::clear() {
    items_.clear();
    listIndex_ = -1;
}

void ComboBox::setListIndex(int index) {
    if (index < -1 || index >= items_.size()) {
        throw FatalError(QStringLiteral("Invalid property value (list index %1 of %2 items)")
                             .arg(index)
                             .arg(items_.size()));
    }
    listIndex_ = index;
    if (Click) {
        Click();
    }
}

void Timer::setInterval(int milliseconds) {
    if (milliseconds < 0) {
        throw FatalError(
            QStringLiteral("Invalid property value (timer interval %1)").arg(milliseconds));
    }
    interval_ = milliseconds;
    if (Changed) {
        Changed();
    }
}

void Timer::setEnabled(bool enabled) {
    enabled_ = enabled;
    if (Changed) {
        Changed();
    }
}

QString TextGrid::text(int row, int column) const {
    if (row < 1 || row > static_cast<int>(cells_.size()) || column < 0 || column >= columns_) {
        return {};
    }
    return cells_[static_cast<std::size_t>(row - 1)][column];
}

void TextGrid::setText(int row, int column, const QString& text) {
    if (row < 1 || column < 0 || column >= columns_) {
        throw FatalError(
            QStringLiteral("Subscript out of range (grid cell %1, %2)").arg(row).arg(column));
    }
    while (static_cast<int>(cells_.size()) < row) {
        QStringList empty;
        for (int c = 0; c < columns_; ++c) {
            empty << QString();
        }
        cells_.push_back(empty);
    }
    cells_[static_cast<std::size_t>(row - 1)][column] = text;
    if (Changed) {
        Changed();
    }
}

void TextGrid::addRow(const QStringList& cells) {
    QStringList row = cells.mid(0, columns_);
    while (row.size() < columns_) {
        row << QString();
    }
    cells_.push_back(row);
    if (Changed) {
        Changed();
    }
}

void TextGrid::clearCells() {
    for (QStringList& row : cells_) {
        for (QString& cell : row) {
            cell.clear();
        }
    }
    if (Changed) {
        Changed();
    }
}

} // namespace stellwyn::core
