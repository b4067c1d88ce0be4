#pragma once

#include <QDialog>

class QComboBox;
class QLabel;
class QTreeView;
class QFileSystemModel;

namespace stellwyn::core {

class Getdatapath;

// Draws the data path chooser and forwards the operator's picks to its logic.
class GetdatapathView : public QDialog {
    Q_OBJECT
public:
    explicit GetdatapathView(Getdatapath& logic, QWidget* parent = nullptr);

protected:
    void reject() override;

private:
    void showFolder(const QString& folder);

    Getdatapath& logic_;
    QComboBox* drive1_;
    QTreeView* dir1_;
    QFileSystemModel* model_;
    QLabel* label1_;
};

} // namespace stellwyn::core
