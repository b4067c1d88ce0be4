// Execute strings from other programs over a real local socket: what each string runs, the
// bytes of the clear sequence on each link, the queue, refusals, the socket's privacy, and the
// stellwyn-exec client.
#include "FakeSerialPort.h"
#include "RecordingDialogs.h"
#include "ScriptedFtdi.h"
#include "TempHome.h"
#include "acquisition/AcquisitionContext.h"
#include "core/Clock.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "indicator_config/CapturingDialogs.h"
#include "indicator_config/CommandInterface.h"
#include "indicator_config/CommandProtocol.h"
#include "indicator_config/CommandServer.h"
#include "indicator_config/ConfigOperations.h"

#include <QFileInfo>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace stellwyn;
using namespace stellwyn::indicator_config;

namespace {

constexpr int replyWaitMs = 5000;

// Each operation asked for, with its argument.
class RecordingOperations final : public ConfigOperations {
public:
    std::int16_t save_screen_to_scale(std::int32_t& id) override {
        return log("save_screen_to_scale", id);
    }
    std::int16_t load_screen_from_scale(std::int32_t& id) override {
        return log("load_screen_from_scale", id);
    }
    std::int16_t save_screen_to_db(const QString& name) override {
        return log("save_screen_to_db", name);
    }
    std::int16_t load_screen_from_db(const QString& name) override {
        log("load_screen_from_db", name);
        if (duringLoad) {
            duringLoad();
        }
        return 0;
    }
    void move_ocdb_to_ocscreen() override { log("move_ocdb_to_ocscreen"); }
    std::int16_t upload_oc(std::int32_t& id) override { return log("upload_oc", id); }
    void move_scale_to_ocscreen(std::int32_t& id) override { log("move_scale_to_ocscreen", id); }
    void move_ocscreen_to_ocdb() override { log("move_ocscreen_to_ocdb"); }
    void hideBusyLabel() override { log("hideBusyLabel"); }

    QStringList calls;
    std::function<void()> duringLoad;

private:
    std::int16_t log(const char* name, const QVariant& arg = {}) {
        calls << (arg.isValid() ? QStringLiteral("%1(%2)").arg(name, arg.toString())
                                : QString::fromLatin1(name));
        return 0;
    }
};

// A running instance's command side on a USB485 adapter with scales 130 and 131, 131 selected,
// and the RS-232 port open, with a client connected once started.
struct Instance {
    Instance() {
        ftdi.devices << linkstest::ScriptedFtdi::Device{"FT0001", "USB-RS485"};
        ftdi.FT_Open(0, m.usbhandle);
        ftdi.calls.clear();
        serial.PortOpen(true);
        m.commtype = QStringLiteral("USB485");
        m.netid[0] = 130;
        m.netid[1] = 131;
        m.scalecount = 2;
        f.Combo1.addItem(QStringLiteral("Scale 130"));
        f.Combo1.addItem(QStringLiteral("Scale 131"));
        f.Combo1.setListIndex(1);
    }

    bool start() {
        if (!server.listen()) {
            return false;
        }
        QObject::connect(&client, &QLocalSocket::readyRead, &client, [this] {
            while (client.canReadLine()) {
                received << client.readLine().chopped(1);
            }
        });
        client.connectToServer(server.path());
        return client.waitForConnected(replyWaitMs);
    }

    void send(const QByteArray& bytes) {
        client.write(bytes);
        client.flush();
    }

    // Every reply line so far, once there are `count` of them or they stop coming.
    QList<QByteArray> replies(qsizetype count) {
        static_cast<void>(
            QTest::qWaitFor([this, count] { return received.size() >= count; }, replyWaitMs));
        return received;
    }

    QTemporaryDir runtime;
    // Before the server below takes its path from it.
    bool runtimeSet = qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
    testsupport::TempHome home;
    core::VirtualClock clock;
    core::Module1 m;
    core::Form1Controls f;
    linkstest::FakeSerialPort serial;
    linkstest::ScriptedFtdi ftdi;
    acquisition::AcquisitionContext context{m, f, clock, {&serial, &ftdi, nullptr}, {}};
    CapturingDialogs dialogs{std::make_unique<testsupport::RecordingDialogs>()};
    RecordingOperations operations;
    CommandInterface linkExecute{context, operations, dialogs};
    CommandServer server{protocol::socketPath(home.path()),
                         [this](const QString& cmdStr) {
                             std::int16_t Cancel = -1;
                             linkExecute.Form_LinkExecute(cmdStr, Cancel);
                         },
                         dialogs};
    QLocalSocket client;
    QList<QByteArray> received;
};

mode_t modeOf(const QString& path) {
    struct stat st {};
    ::lstat(QFile::encodeName(path).constData(), &st);
    return st.st_mode & 07777;
}

// What a killed instance leaves: a socket file that nobody listens on.
void leaveStaleSocket(const QString& path) {
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    ::close(fd);
}

} // namespace

class CommandInterfaceTest : public QObject {
    Q_OBJECT
private slots:
    void executeString_data();
    void executeString();
    void stringArrivingInAYieldWaitsForTheRunningOne();
    void badLinesAreRefusedAndChangeNothing_data();
    void badLinesAreRefusedAndChangeNothing();
    void socketIsPrivateAndTakesOverAStaleOne();
    void stellwynExec_data();
    void stellwynExec();
};

void CommandInterfaceTest::executeString_data() {
    QTest::addColumn<QString>("commtype");
    QTest::addColumn<bool>("timeoutsFail");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QStringList>("ftdiCalls");
    QTest::addColumn<QByteArray>("serialBytes");
    QTest::addColumn<QList<QByteArray>>("waitReplies");
    QTest::addColumn<double>("seconds");

    const QString usb485 = QStringLiteral("USB485");
    const QList<QByteArray> okEnd{"ok", "end"};
    QTest::newRow("word in lower case")
        << usb485 << false << QByteArray("ulg,5")
        << QStringList{"load_screen_from_db(5)", "save_screen_to_scale(5)"} << QStringList{}
        << QByteArray() << okEnd << 0.0;
    QTest::newRow("no comma") << usb485 << false << QByteArray("ULG") << QStringList{}
                              << QStringList{} << QByteArray() << okEnd << 0.0;
    QTest::newRow("unknown word") << usb485 << false << QByteArray("XYZ,5") << QStringList{}
                                  << QStringList{} << QByteArray() << okEnd << 0.0;
    QTest::newRow("argument not numeric")
        << usb485 << false << QByteArray("ULG,Scale #7")
        << QStringList{"load_screen_from_db(Scale #7)", "save_screen_to_scale(0)"} << QStringList{}
        << QByteArray() << okEnd << 0.0;
    QTest::newRow("number among blanks, text kept")
        << usb485 << false << QByteArray("DLG, 12 ")
        << QStringList{"load_screen_from_scale(12)", "save_screen_to_db( 12 )"} << QStringList{}
        << QByteArray() << okEnd << 0.0;
    QTest::newRow("output upload, empty argument")
        << usb485 << false << QByteArray("ULR,")
        << QStringList{"move_ocdb_to_ocscreen", "upload_oc(131)"} << QStringList{} << QByteArray()
        << okEnd << 0.0;
    QTest::newRow("output download ignores argument")
        << usb485 << false << QByteArray("dlr,130")
        << QStringList{"move_scale_to_ocscreen(131)", "move_ocscreen_to_ocdb"} << QStringList{}
        << QByteArray() << okEnd << 0.0;
    QTest::newRow("clear, not numeric, USB485")
        << usb485 << false << QByteArray("CLT,abc") << QStringList{"hideBusyLabel"}
        << QStringList{"FT_SetTimeouts h1 15000 0", "FT_Write h1 00 11 52"} << QByteArray() << okEnd
        << 2.4;
    QTest::newRow("clear, timeouts refused, USB485")
        << usb485 << true << QByteArray("CLT,131") << QStringList{"hideBusyLabel"}
        << QStringList{"FT_SetTimeouts h1 15000 0", "FT_Write h1 83 11 52"} << QByteArray()
        << QList<QByteArray>{"ok", "message SetFlowControl Failed", "end"} << 2.4;
    QTest::newRow("clear, not numeric, RS232")
        << QStringLiteral("RS232") << false << QByteArray("clt,abc") << QStringList{"hideBusyLabel"}
        << QStringList{} << QByteArray("*R") << okEnd << 2.4;
    QTest::newRow("clear sends nothing on RS485")
        << QStringLiteral("RS485") << false << QByteArray("CLT,5") << QStringList{"hideBusyLabel"}
        << QStringList{} << QByteArray() << okEnd << 2.4;
}

void CommandInterfaceTest::executeString() {
    QFETCH(QString, commtype);
    QFETCH(bool, timeoutsFail);
    QFETCH(QByteArray, line);
    QFETCH(QStringList, calls);
    QFETCH(QStringList, ftdiCalls);
    QFETCH(QByteArray, serialBytes);
    QFETCH(QList<QByteArray>, waitReplies);
    QFETCH(double, seconds);

    Instance instance;
    instance.m.commtype = commtype;
    if (timeoutsFail) {
        instance.ftdi.results.insert(QStringLiteral("FT_SetTimeouts"), links::FT_IO_ERROR);
    }
    QVERIFY(instance.start());
    instance.send("wait " + line + '\n');

    QCOMPARE(instance.replies(waitReplies.size()), waitReplies);
    QCOMPARE(instance.operations.calls, calls);
    QCOMPARE(instance.ftdi.calls, ftdiCalls);
    QCOMPARE(instance.serial.written, serialBytes);
    QCOMPARE(instance.clock.elapsed() + 1.0, seconds + 1.0);
}

void CommandInterfaceTest::stringArrivingInAYieldWaitsForTheRunningOne() {
    Instance instance;
    QVERIFY(instance.start());
    // A second program sends its string, and has it taken, while the first string yields
    // inside its first step.
    QLocalSocket second;
    second.connectToServer(instance.server.path());
    QVERIFY(second.waitForConnected(replyWaitMs));
    QByteArray secondReply;
    instance.operations.duringLoad = [&] {
        if (instance.operations.calls.size() == 1) {
            second.write("ULG,2\n");
            second.flush();
            static_cast<void>(QTest::qWaitFor([&] { return second.canReadLine(); }, replyWaitMs));
            secondReply = second.readLine();
        }
    };
    instance.send("ULG,1\n");

    QVERIFY(QTest::qWaitFor([&] { return instance.operations.calls.size() >= 4; }, replyWaitMs));
    QCOMPARE(secondReply, QByteArray("ok\n"));
    QCOMPARE(instance.operations.calls,
             (QStringList{"load_screen_from_db(1)", "save_screen_to_scale(1)",
                          "load_screen_from_db(2)", "save_screen_to_scale(2)"}));
}

void CommandInterfaceTest::badLinesAreRefusedAndChangeNothing_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("reply");

    const QByteArray head("ULG,");
    QTest::newRow("5 KiB line") << head + QByteArray(5 * 1024, 'a') + '\n' << QByteArray("refused");
    QTest::newRow("4 KiB line is taken")
        << head + QByteArray(protocol::maxLineBytes - head.size(), 'a') + "\r\n"
        << QByteArray("ok");
    QTest::newRow("not UTF-8") << QByteArray("ULG,\xff\xfe\n") << QByteArray("refused");
    QTest::newRow("UTF-8 sequence cut short") << QByteArray("ULG,\xc3\n") << QByteArray("refused");
}

void CommandInterfaceTest::badLinesAreRefusedAndChangeNothing() {
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, reply);

    Instance instance;
    QVERIFY(instance.start());
    // The bad line in pieces, as a slow client would send it.
    for (qsizetype at = 0; at < bytes.size(); at += 1000) {
        instance.send(bytes.mid(at, 1000));
    }
    instance.send("wait DLG,1\n");

    QCOMPARE(instance.replies(3), (QList<QByteArray>{reply, "ok", "end"}));
    const QStringList dlg{"load_screen_from_scale(1)", "save_screen_to_db(1)"};
    if (reply == "refused") {
        QCOMPARE(instance.operations.calls, dlg);
    } else {
        QCOMPARE(instance.operations.calls.mid(2), dlg);
    }
}

void CommandInterfaceTest::socketIsPrivateAndTakesOverAStaleOne() {
    Instance instance;
    const QString folder = QFileInfo(instance.server.path()).path();
    QVERIFY(QDir().mkpath(folder));
    ::chmod(QFile::encodeName(folder).constData(), 0755);
    leaveStaleSocket(instance.server.path());

    QVERIFY(instance.start());
    QCOMPARE(modeOf(folder), mode_t{0700});
    QCOMPARE(modeOf(instance.server.path()), mode_t{0600});
    instance.send("ULG\n");
    QCOMPARE(instance.replies(1), QList<QByteArray>{"ok"});
}

void CommandInterfaceTest::stellwynExec_data() {
    QTest::addColumn<bool>("running");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("output");

    QTest::newRow("no instance") << false << QStringList{"ULG,12"} << 2 << QByteArray();
    QTest::newRow("acknowledged") << true << QStringList{"ULG,12"} << 0 << QByteArray();
    QTest::newRow("waits and prints the messages")
        << true << QStringList{"--wait", "CLT,131"} << 0 << QByteArray("SetFlowControl Failed\n");
}

void CommandInterfaceTest::stellwynExec() {
    QFETCH(bool, running);
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, output);

    Instance instance;
    instance.ftdi.results.insert(QStringLiteral("FT_SetTimeouts"), links::FT_IO_ERROR);
    if (running) {
        QVERIFY(instance.start());
    }
    QProcess exec;
    exec.setProgram(qEnvironmentVariable("STELLWYN_BIN_DIR") + QStringLiteral("/stellwyn-exec"));
    exec.setArguments(QStringList{"--home", instance.home.path()} + arguments);
    exec.start();
    QVERIFY(QTest::qWaitFor([&] { return exec.state() == QProcess::NotRunning; }, replyWaitMs));
    QCOMPARE(exec.exitStatus(), QProcess::NormalExit);
    QCOMPARE(exec.exitCode(), exitCode);
    QCOMPARE(exec.readAllStandardOutput(), output);
}

QTEST_MAIN(CommandInterfaceTest)
#include "test_command_interface.moc"
