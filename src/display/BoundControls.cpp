#include "BoundControls.h"

#include "Form1.h"
#include "Twips.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>

namespace stellwyn::display {

BoundControls::BoundControls(Form1& form, QWidget* owner, int fontTwips)
    : form_(form), owner_(owner), fontTwips_(fontTwips) {}

QGroupBox* BoundControls::frame(const core::Frame& state, const Place& place, const char* name) {
    auto* box = placed(new QGroupBox(state.caption, owner_), place);
    box->setObjectName(QLatin1String(name));
    syncs_.push_back([box, &state] {
        box->setTitle(state.caption);
        box->setEnabled(state.enabled);
        box->setVisible(state.visible);
    });
    return box;
}

QRadioButton* BoundControls::option(core::OptionButton& state, QWidget* parent, const Place& place,
                                    const char* name) {
    auto* radio = placed(new QRadioButton(state.caption, parent), place);
    radio->setObjectName(QLatin1String(name));
    // The form's state says which button of a group is on, and may have none on.
    radio->setAutoExclusive(false);
    QObject::connect(radio, &QRadioButton::clicked, owner_, [this, &state] {
        form_.runEvent([&state] { state.setValue(true); });
        if (afterInput) {
            afterInput();
        }
    });
    syncs_.push_back([radio, &state] {
        const QSignalBlocker block(radio);
        radio->setChecked(state.value());
        radio->setEnabled(state.enabled);
        radio->setVisible(state.visible);
    });
    return radio;
}

QCheckBox* BoundControls::check(core::CheckBox& state, QWidget* parent, const Place& place,
                                const char* name) {
    auto* box = placed(new QCheckBox(state.caption, parent), place);
    box->setObjectName(QLatin1String(name));
    QObject::connect(box, &QCheckBox::clicked, owner_, [this, &state](bool ticked) {
        form_.runEvent([&state, ticked] { state.setValue(ticked ? 1 : 0); });
        if (afterInput) {
            afterInput();
        }
    });
    syncs_.push_back([box, &state] {
        const QSignalBlocker block(box);
        box->setChecked(state.value() == 1);
        box->setEnabled(state.enabled);
        box->setVisible(state.visible);
    });
    return box;
}

QPushButton* BoundControls::button(core::CommandButton& state, QWidget* parent, const Place& place,
                                   const char* name) {
    auto* push = placed(new QPushButton(state.caption, parent), place);
    push->setObjectName(QLatin1String(name));
    QObject::connect(push, &QPushButton::clicked, owner_, [this, &state] {
        form_.runEvent([&state] {
            if (state.Click) {
                state.Click();
            }
        });
    });
    syncs_.push_back([push, &state] {
        push->setText(state.caption);
        push->setEnabled(state.enabled);
        push->setVisible(state.visible);
    });
    return push;
}

QLabel* BoundControls::label(const core::Label& state, QWidget* parent, const Place& place,
                             const char* name) {
    auto* text = placed(new QLabel(state.caption, parent), place);
    text->setObjectName(QLatin1String(name));
    syncs_.push_back([text, &state] {
        text->setText(state.caption);
        text->setEnabled(state.enabled);
        text->setVisible(state.visible);
    });
    return text;
}

void BoundControls::setScale(double scale) {
    QFont paneFont = owner_->font();
    paneFont.setPixelSize(std::max(1, toPixels(fontTwips_, scale)));
    for (const Placement& p : placements_) {
        p.widget->setGeometry(toPixels(p.place, scale));
        p.widget->setFont(paneFont);
    }
}

void BoundControls::sync() {
    if (form_.isUnloaded()) {
        return;
    }
    for (const auto& s : syncs_) {
        s();
    }
}

} // namespace stellwyn::display
