#include "SimOptions.h"

#include <QCommandLineParser>
#include <QFile>

namespace stellwyn::sim {

namespace {

QList<QCommandLineOption> optionList() {
    return {
        {QStringLiteral("mode"), QStringLiteral("Line mode: rs232 or addressed."),
         QStringLiteral("mode")},
        {QStringLiteral("ids"), QStringLiteral("NetIDs of the indicators, e.g. 130,131."),
         QStringLiteral("list")},
        {QStringLiteral("pace"),
         QStringLiteral("Send and receive at 9600 baud, 8N1 (1.0417 ms a byte).")},
        {QStringLiteral("link"), QStringLiteral("Symbolic link to the pseudo-terminal."),
         QStringLiteral("path")},
        {QStringLiteral("log"), QStringLiteral("Write every frame received and sent to file."),
         QStringLiteral("file")},
        {QStringLiteral("tcp"), QStringLiteral("Also serve on this TCP port (0: any free)."),
         QStringLiteral("port")},
        {QStringLiteral("no-pty"), QStringLiteral("Serve on TCP only.")},
        {QStringLiteral("rf"),
         QStringLiteral("Put an RF module in front; the bus listens on channel."),
         QStringLiteral("channel")},
        {QStringLiteral("scenario"), QStringLiteral("Read directives from file."),
         QStringLiteral("file")},
        {QStringLiteral("set"), QStringLiteral("One scenario directive; may be repeated."),
         QStringLiteral("directive")},
        {QStringLiteral("write-kl"), QStringLiteral("Write a KL.Dat file and leave."),
         QStringLiteral("file")},
        {QStringLiteral("lines"), QStringLiteral("Records in the KL.Dat file."),
         QStringLiteral("n")},
        {QStringLiteral("seed"), QStringLiteral("Seed of the KL.Dat readings."),
         QStringLiteral("n")},
    };
}

void addOptions(QCommandLineParser& parser) {
    parser.setApplicationDescription(
        QStringLiteral("Simulated weighing-scale indicators on a pseudo-terminal or a socket."));
    parser.addHelpOption();
    parser.addOptions(optionList());
}

} // namespace

QString simUsage() {
    QCommandLineParser parser;
    addOptions(parser);
    return parser.helpText();
}

bool parseSimOptions(const QStringList& arguments, SimOptions* o, QString* error) {
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments)) {
        *error = parser.errorText();
        return false;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        o->help = true;
        return true;
    }
    if (!parser.positionalArguments().isEmpty()) {
        *error = QStringLiteral("unexpected argument: ") + parser.positionalArguments().front();
        return false;
    }
    // The scenario file first; options on the command line then take precedence.
    if (parser.isSet(QStringLiteral("scenario"))) {
        QFile file(parser.value(QStringLiteral("scenario")));
        if (!file.open(QIODevice::ReadOnly)) {
            *error = file.fileName() + QStringLiteral(": ") + file.errorString();
            return false;
        }
        if (!o->scenario.parse(QString::fromUtf8(file.readAll()), error)) {
            *error = file.fileName() + QStringLiteral(", ") + *error;
            return false;
        }
    }
    QStringList directives;
    if (parser.isSet(QStringLiteral("mode"))) {
        directives << QStringLiteral("mode ") + parser.value(QStringLiteral("mode"));
    }
    if (parser.isSet(QStringLiteral("ids"))) {
        directives << QStringLiteral("ids ") + parser.value(QStringLiteral("ids"));
    }
    if (parser.isSet(QStringLiteral("pace"))) {
        directives << QStringLiteral("pace on");
    }
    if (parser.isSet(QStringLiteral("rf"))) {
        directives << QStringLiteral("rf ") + parser.value(QStringLiteral("rf"));
    }
    directives << parser.values(QStringLiteral("set"));
    for (const QString& d : directives) {
        if (!o->scenario.parseLine(d, error)) {
            return false;
        }
    }
    o->pty = !parser.isSet(QStringLiteral("no-pty"));
    o->linkPath = parser.value(QStringLiteral("link"));
    o->logPath = parser.value(QStringLiteral("log"));
    if (parser.isSet(QStringLiteral("tcp"))) {
        bool ok = false;
        o->tcpPort = parser.value(QStringLiteral("tcp")).toInt(&ok);
        if (!ok || o->tcpPort < 0 || o->tcpPort > 65535) {
            *error = QStringLiteral("--tcp takes a port number");
            return false;
        }
    }
    if (!o->pty && o->tcpPort < 0 && !parser.isSet(QStringLiteral("write-kl"))) {
        *error = QStringLiteral("--no-pty needs --tcp");
        return false;
    }
    if (parser.isSet(QStringLiteral("write-kl"))) {
        o->klPath = parser.value(QStringLiteral("write-kl"));
        o->kl.ids = o->scenario.ids;
        bool ok = true;
        if (parser.isSet(QStringLiteral("lines"))) {
            o->kl.records = parser.value(QStringLiteral("lines")).toInt(&ok);
        }
        if (!ok || o->kl.records < 0) {
            *error = QStringLiteral("--lines takes a count");
            return false;
        }
        if (parser.isSet(QStringLiteral("seed"))) {
            o->kl.seed = parser.value(QStringLiteral("seed")).toUInt();
        }
    }
    return true;
}

} // namespace stellwyn::sim
