#pragma once

#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>

class QMdiArea;
class QMdiSubWindow;

namespace stellwyn::display {

class Form1;
class Form1View;

// The one main screen of the frame: made at its first use, shown inside the frame, activated
// each time it comes to the front, and destroyed by unloading, so that the next use starts
// from the design again.
class Form1Host : public QObject {
    Q_OBJECT
public:
    Form1Host(QMdiArea& area, std::function<std::unique_ptr<Form1>()> makeForm,
              QObject* parent = nullptr);
    ~Form1Host() override;

    // "Activate Remote Screen": creating the form runs Form_Load, showing it Form_Activate.
    void show();

    Form1* form() const { return form_.get(); }
    Form1View* view() const { return view_; }

signals:
    // The form of the last show has gone.
    void closed();

private:
    void fitToForm();
    void destroyWhenIdle();

    QMdiArea& area_;
    std::function<std::unique_ptr<Form1>()> makeForm_;
    std::unique_ptr<Form1> form_;
    QPointer<QMdiSubWindow> window_;
    Form1View* view_ = nullptr;
    bool sized_ = false;
    // A show asked for while the last form was unloaded and not yet destroyed.
    bool showWhenGone_ = false;
};

} // namespace stellwyn::display
