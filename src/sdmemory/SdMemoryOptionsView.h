#pragma once

#include <QObject>

class QGroupBox;
class QProgressDialog;

namespace stellwyn::sdmemory {

class SdMemoryOptions;

// Fills the Setup screen's SD group with its controls, and shows a long read's progress with
// a Cancel button.
class SdMemoryOptionsView : public QObject {
    Q_OBJECT
public:
    SdMemoryOptionsView(SdMemoryOptions& logic, QGroupBox* group);

private:
    bool showProgress(qint64 done, qint64 total);

    SdMemoryOptions& logic_;
    QGroupBox* group_;
    QProgressDialog* progress_ = nullptr;
};

} // namespace stellwyn::sdmemory
