#include "FrmMainView.h"

#include "FrmMain.h"
#include "core/FatalError.h"

#include <QAction>
#include <QCloseEvent>
#include <QDateTime>
#include <QGuiApplication>
#include <QLabel>
#include <QMdiArea>
#include <QMenuBar>
#include <QScreen>
#include <QStatusBar>
#include <QStyle>
#include <QTimer>
#include <QToolBar>
#include <algorithm>

namespace stellwyn::app {

namespace {
constexpr double twipsPerInch = 1440.0;
// A frame smaller than this shows nothing of its menu.
constexpr int smallestSide = 200;

// A recognisable picture for each toolbar button, taken from the desktop theme when it has
// one and from the style otherwise.
QIcon toolbarIcon(const QString& button, const QStyle* style) {
    static const QHash<QString, QString> themeNames = {
        {QStringLiteral("New"), QStringLiteral("document-new")},
        {QStringLiteral("Open"), QStringLiteral("document-open")},
        {QStringLiteral("Save"), QStringLiteral("document-save")},
        {QStringLiteral("Print"), QStringLiteral("document-print")},
        {QStringLiteral("Cut"), QStringLiteral("edit-cut")},
        {QStringLiteral("Copy"), QStringLiteral("edit-copy")},
        {QStringLiteral("Paste"), QStringLiteral("edit-paste")},
        {QStringLiteral("Bold"), QStringLiteral("format-text-bold")},
        {QStringLiteral("Italic"), QStringLiteral("format-text-italic")},
        {QStringLiteral("Underline"), QStringLiteral("format-text-underline")},
        {QStringLiteral("Left"), QStringLiteral("format-justify-left")},
        {QStringLiteral("Center"), QStringLiteral("format-justify-center")},
        {QStringLiteral("Right"), QStringLiteral("format-justify-right")},
    };
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == u"hicolor") {
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    }
    const QString name = themeNames.value(button);
    QIcon icon = QIcon::fromTheme(name);
    if (icon.isNull()) {
        icon = QIcon::fromTheme(name + QStringLiteral("-symbolic"));
    }
    if (icon.isNull() && button == QStringLiteral("Open")) {
        icon = style->standardIcon(QStyle::SP_DialogOpenButton);
    } else if (icon.isNull() && button == QStringLiteral("Save")) {
        icon = style->standardIcon(QStyle::SP_DialogSaveButton);
    } else if (icon.isNull() && button == QStringLiteral("New")) {
        icon = style->standardIcon(QStyle::SP_FileIcon);
    }
    return icon;
}
} // namespace

FrmMainView::FrmMainView(FrmMain& logic, QWidget* parent)
    : QMainWindow(parent), logic_(logic), area_(new QMdiArea(this)) {
    setWindowTitle(FrmMain::caption());
    setObjectName(QStringLiteral("frmMain"));
    area_->setBackground(palette().dark());
    setCentralWidget(area_);
    buildMenus();
    buildToolBar();
    buildStatusBar();
}

void FrmMainView::buildMenus() {
    QMenuBar* bar = menuBar();
    QAction* mArs = bar->addAction(FrmMain::m_arsCaption());
    mArs->setObjectName(QStringLiteral("m_ars"));
    // Each menu entry enters the frame's handler through the guard for untrapped errors.
    const auto enter = [this](void (FrmMain::*handler)()) {
        return [this, handler] { core::runHandler([&] { (logic_.*handler)(); }); };
    };
    connect(mArs, &QAction::triggered, &logic_, enter(&FrmMain::m_ars_Click));
    QAction* setups = bar->addAction(FrmMain::mnu_setupsCaption());
    setups->setObjectName(QStringLiteral("mnu_setups"));
    connect(setups, &QAction::triggered, &logic_, enter(&FrmMain::mnu_setups_Click));
    QAction* about = bar->addAction(FrmMain::mnuHelpAboutCaption());
    about->setObjectName(QStringLiteral("mnuHelpAbout"));
    connect(about, &QAction::triggered, &logic_, enter(&FrmMain::mnuHelpAbout_Click));
    QAction* exitAction = bar->addAction(FrmMain::m_exitCaption());
    exitAction->setObjectName(QStringLiteral("m_exit"));
    connect(exitAction, &QAction::triggered, &logic_, enter(&FrmMain::m_exit_Click));
}

void FrmMainView::buildToolBar() {
    auto* toolbar = addToolBar(QStringLiteral("tbToolBar"));
    toolbar->setObjectName(QStringLiteral("tbToolBar"));
    toolbar->setMovable(false);
    toolbar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    toolbar->setIconSize(QSize(20, 20));
    const QStringList buttons = FrmMain::toolbarButtons();
    for (int i = 0; i < buttons.size(); ++i) {
        if (i == 4 || i == 7 || i == 10) {
            toolbar->addSeparator();
        }
        QAction* action = toolbar->addAction(toolbarIcon(buttons[i], style()), buttons[i]);
        action->setToolTip(buttons[i]);
        connect(action, &QAction::triggered, &logic_,
                [this, i] { core::runHandler([&] { logic_.tbToolBar_ButtonClick(i); }); });
    }
}

void FrmMainView::buildStatusBar() {
    QStatusBar* bar = statusBar();
    bar->setObjectName(QStringLiteral("sbStatusBar"));
    statusPanel_ = new QLabel(FrmMain::statusPanelText(), bar);
    statusPanel_->setObjectName(QStringLiteral("statusPanel"));
    linkPanel_ = new QLabel(bar);
    linkPanel_->setObjectName(QStringLiteral("linkPanel"));
    linkPanel_->setAccessibleName(QStringLiteral("Link status"));
    datePanel_ = new QLabel(bar);
    timePanel_ = new QLabel(bar);
    bar->addWidget(statusPanel_, 1);
    bar->addPermanentWidget(linkPanel_);
    bar->addPermanentWidget(datePanel_);
    bar->addPermanentWidget(timePanel_);
    // The date and time panels show the system clock by themselves.
    auto* tick = new QTimer(this);
    connect(tick, &QTimer::timeout, this, &FrmMainView::refreshClock);
    tick->start(1000);
    refreshClock();
}

void FrmMainView::showStatus(const QString& text) {
    statusPanel_->setText(text);
}

void FrmMainView::showLinkStatus(const QString& text) {
    linkPanel_->setText(text);
}

void FrmMainView::refreshClock() {
    const QDateTime now = QDateTime::currentDateTime();
    datePanel_->setText(QLocale().toString(now.date(), QLocale::ShortFormat));
    timePanel_->setText(QLocale().toString(now.time(), QLocale::ShortFormat));
}

int FrmMainView::toPixels(int twips, bool horizontal) const {
    const int dpi = horizontal ? logicalDpiX() : logicalDpiY();
    return qRound(twips * dpi / twipsPerInch);
}

int FrmMainView::toTwips(int pixels, bool horizontal) const {
    const int dpi = horizontal ? logicalDpiX() : logicalDpiY();
    return qRound(pixels * twipsPerInch / dpi);
}

QRect FrmMainView::visiblePlace(int left, int top, int width, int height, int dpiX, int dpiY,
                                const QRect& screen) {
    // In double: a kept number near the int limit times the resolution would overflow an int.
    const auto pixels = [](int twips, int dpi) { return double(twips) * dpi / twipsPerInch; };
    const auto side = [](double wanted, int room) {
        return std::clamp(wanted, std::min(double(smallestSide), double(room)), double(room));
    };
    const double w = side(pixels(width, dpiX), screen.width());
    const double h = side(pixels(height, dpiY), screen.height());
    const double x = std::clamp(pixels(left, dpiX), double(screen.left()),
                                double(screen.left()) + screen.width() - w);
    const double y = std::clamp(pixels(top, dpiY), double(screen.top()),
                                double(screen.top()) + screen.height() - h);
    return {qRound(x), qRound(y), qRound(w), qRound(h)};
}

void FrmMainView::applyPlace() {
    const QScreen* target = QGuiApplication::primaryScreen();
    if (target == nullptr) {
        return;
    }
    const QRect place = visiblePlace(logic_.left(), logic_.top(), logic_.width(), logic_.height(),
                                     logicalDpiX(), logicalDpiY(), target->availableGeometry());
    resize(place.size());
    move(place.topLeft());
}

void FrmMainView::closeEvent(QCloseEvent* event) {
    const bool minimized = isMinimized();
    if (!minimized) {
        const QRect frame = frameGeometry();
        logic_.setPlace(toTwips(frame.x(), true), toTwips(frame.y(), false), toTwips(width(), true),
                        toTwips(height(), false));
    }
    core::runHandler([&] { logic_.MDIForm_Unload(minimized); });
    event->accept();
}

} // namespace stellwyn::app
