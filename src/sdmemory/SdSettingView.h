#pragma once

#include <QDialog>

namespace stellwyn::sdmemory {

class SdSetting;

// Draws SD_Setting and forwards the operator's choice of drive, or of a folder that stands in
// for the card.
class SdSettingView : public QDialog {
    Q_OBJECT
public:
    explicit SdSettingView(SdSetting& logic, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void reject() override;

private:
    SdSetting& logic_;
};

} // namespace stellwyn::sdmemory
