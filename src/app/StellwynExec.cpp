// stellwyn-exec: sends execute strings to the Stellwyn program that runs on a home, as another
// program would, and optionally waits for each one's end and prints what it said.
#include "core/AppHome.h"
#include "indicator_config/CommandProtocol.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QLocalSocket>
#include <cstdio>
#include <optional>

using namespace stellwyn;
namespace protocol = indicator_config::protocol;

namespace {

constexpr int exitRefused = 1;
constexpr int exitNoInstance = 2;
constexpr int exitUsage = 64;
constexpr int connectWaitMs = 2000;
// Of a refused string, enough to tell which it was.
constexpr qsizetype shownChars = 60;

void printLine(FILE* stream, const QString& text) {
    std::fprintf(stream, "%s\n", qPrintable(text));
    std::fflush(stream);
}

void complain(const QString& text) {
    printLine(stderr, QStringLiteral("stellwyn-exec: ") + text);
}

// The next line from the program, without its LF; nothing when the program went away first.
std::optional<QByteArray> readLine(QLocalSocket& socket) {
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(-1)) {
            return std::nullopt;
        }
    }
    QByteArray line = socket.readLine();
    line.chop(1);
    return line;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("stellwyn-exec"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Sends execute strings, such as ULG,12, to the running Stellwyn program of a home.\n"
        "Exit status: 0 all taken, 1 a string refused or the program went away, 2 no program "
        "runs on the home, 64 a bad command line."));
    parser.addHelpOption();
    const QCommandLineOption homeOption(
        QStringLiteral("home"),
        QStringLiteral("The application home of the program to drive (default: STELLWYN_HOME, "
                       "else the user's data folder)."),
        QStringLiteral("DIR"));
    const QCommandLineOption demoOption(
        QStringLiteral("demo"),
        QStringLiteral("Drive the demonstration that stellwyn --demo runs on the same --home."));
    const QCommandLineOption waitOption(
        QStringLiteral("wait"),
        QStringLiteral("Wait for each command's end and print the messages it raised, one a "
                       "line."));
    parser.addOptions({homeOption, demoOption, waitOption});
    parser.addPositionalArgument(QStringLiteral("command"),
                                 QStringLiteral("An execute string: a word, a comma and an "
                                                "argument. Several are sent in order."),
                                 QStringLiteral("COMMAND..."));
    if (!parser.parse(QCoreApplication::arguments())) {
        complain(parser.errorText());
        return exitUsage;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        return 0;
    }
    const QStringList commands = parser.positionalArguments();
    if (commands.isEmpty()) {
        complain(QStringLiteral("no execute string given (see --help)"));
        return exitUsage;
    }
    for (const QString& command : commands) {
        if (command.contains(u'\n') || command.contains(u'\r')) {
            complain(QStringLiteral("an execute string is one line: ") + command);
            return exitUsage;
        }
    }

    QString home = parser.value(homeOption);
    // The same home as stellwyn --demo: demo/ in the usual home unless --home names one.
    if (parser.isSet(demoOption) && home.isEmpty()) {
        home = QDir(core::AppHome::resolve(QString())).filePath(QStringLiteral("demo"));
    }
    home = core::AppHome::resolve(home);

    QLocalSocket socket;
    socket.connectToServer(protocol::socketPath(home));
    if (!socket.waitForConnected(connectWaitMs)) {
        QString text = QStringLiteral("no Stellwyn program takes commands on the home %1")
                           .arg(core::displayPath(home));
        // Not found and refused (a socket left by a program that was killed) say nothing more.
        if (socket.error() != QLocalSocket::ServerNotFoundError &&
            socket.error() != QLocalSocket::ConnectionRefusedError) {
            text += QStringLiteral(" (%1)").arg(socket.errorString());
        }
        complain(text);
        return exitNoInstance;
    }

    const bool wait = parser.isSet(waitOption);
    for (const QString& command : commands) {
        QByteArray line = command.toUtf8() + '\n';
        if (wait) {
            line.prepend(protocol::waitPrefix.toByteArray());
        }
        socket.write(line);
        socket.flush();
        const std::optional<QByteArray> answer = readLine(socket);
        if (!answer) {
            complain(QStringLiteral("the program went away before it answered"));
            return exitRefused;
        }
        if (*answer != protocol::ok) {
            complain(QStringLiteral("refused: ") +
                     (command.size() > shownChars ? command.left(shownChars) + QStringLiteral("...")
                                                  : command));
            return exitRefused;
        }
        while (wait) {
            const std::optional<QByteArray> said = readLine(socket);
            if (!said) {
                complain(QStringLiteral("the program went away before the command ended"));
                return exitRefused;
            }
            if (*said == protocol::end) {
                break;
            }
            if (said->startsWith(protocol::messagePrefix)) {
                printLine(stdout, QString::fromUtf8(said->mid(protocol::messagePrefix.size())));
            }
        }
    }
    return 0;
}
