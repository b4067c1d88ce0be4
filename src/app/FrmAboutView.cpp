#include "FrmAboutView.h"

#include "FrmMain.h"
#include "Version.h"
#include "core/Dialogs.h"
#include "core/FatalError.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

namespace stellwyn::app {

QString FrmAboutView::versionText() {
    return QStringLiteral("Version ") + QString::number(versionMajor) + u'.' +
           QString::number(versionMinor) + u'.' + QString::number(versionRevision);
}

bool FrmAboutView::startSystemInfo() {
    static const char* const tools[] = {"hardinfo", "gnome-system-monitor", "ksysguard",
                                        "plasma-systemmonitor", "xfce4-taskmanager"};
    for (const char* tool : tools) {
        const QString program = QStandardPaths::findExecutable(QString::fromLatin1(tool));
        if (!program.isEmpty() && QProcess::startDetached(program, {})) {
            return true;
        }
    }
    return false;
}

FrmAboutView::FrmAboutView(core::Dialogs& dialogs, QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("About ") + FrmMain::caption());
    setObjectName(QStringLiteral("frmAbout"));

    auto* title = new QLabel(QStringLiteral("<h2>") + FrmMain::caption() + QStringLiteral("</h2>"));
    auto* version = new QLabel(versionText());
    version->setObjectName(QStringLiteral("lblVersion"));
    auto* contact = new QLabel(QStringLiteral(
        "Remote operation of weighing indicators over serial, RS-485, USB and Ethernet links.\n"
        "Support: support@stellwyn.example\n"
        "Documentation: the README that came with this program"));
    auto* disclaimer = new QLabel(QStringLiteral(
        "Warning: this program is provided as it is, without warranty of any kind. Readings "
        "shown here are copies of what the indicators report; the indicator's own display is "
        "the legal record for trade."));
    disclaimer->setWordWrap(true);

    auto* ok = new QPushButton(QStringLiteral("OK"));
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    auto* sysInfo = new QPushButton(QStringLiteral("&System Info..."));
    sysInfo->setObjectName(QStringLiteral("cmdSysInfo"));
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(sysInfo, &QPushButton::clicked, this, [&dialogs] {
        core::runHandler([&] {
            if (!startSystemInfo()) {
                dialogs.message(QStringLiteral("System Information Is Unavailable At This Time"));
            }
        });
    });

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(sysInfo);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(version);
    layout->addWidget(contact);
    layout->addWidget(disclaimer);
    layout->addLayout(buttons);
    setFixedWidth(460);
}

} // namespace stellwyn::app
