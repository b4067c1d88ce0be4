// The frame trace of the links: a real request and the simulated indicator's reply appear as
// hex under the link's own category once QT_LOGGING_RULES asks for it, and not a line before.
#include "FakeSerialPort.h"
#include "core/Clock.h"
#include "links/SimFtdi.h"
#include "sim/Bus.h"
#include "sim/InProcessLink.h"

#include <QLoggingCategory>
#include <QTest>

using namespace stellwyn;
using links::DWORD;
using links::FtHandle;

namespace {

QStringList traced;

void keepLinkLines(QtMsgType, const QMessageLogContext& context, const QString& text) {
    if (context.category != nullptr && qstrncmp(context.category, "stellwyn.link.", 14) == 0) {
        traced << QString::fromLatin1(context.category) + QStringLiteral(": ") + text;
    }
}

// Polls NetID 130 once and returns its reply, on the serial control or the USB adapter.
QByteArray pollOnce(const QString& link) {
    core::VirtualClock clock;
    const QByteArray request("\x82\x11"
                             "1");
    if (link == u"serial") {
        sim::Bus bus(sim::Bus::Mode::Addressed);
        bus.add(130);
        sim::InProcessLink line(bus, clock);
        linkstest::FakeSerialPort port;
        port.attach(line);
        port.CommPort(1);
        port.PortOpen(true);
        port.Output(request);
        clock.advance(0.1);
        return port.Input();
    }
    links::SimFtdi ftdi({130}, clock);
    FtHandle handle = 0;
    ftdi.FT_Open(0, handle);
    DWORD done = 0;
    ftdi.FT_Write(handle, request, 3, done);
    clock.advance(0.1);
    ftdi.FT_GetQueueStatus(handle, done);
    QByteArray reply;
    ftdi.FT_Read(handle, reply, done, done);
    return reply;
}

} // namespace

class FrameTrace : public QObject {
    Q_OBJECT
private slots:
    void frames_tracedAsHexOnlyWhenAsked_data();
    void frames_tracedAsHexOnlyWhenAsked();
    void cleanup();
};

void FrameTrace::frames_tracedAsHexOnlyWhenAsked_data() {
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("rules");
    QTest::addColumn<QString>("sent"); // empty: nothing traced at all

    QTest::newRow("serial, by default") << "serial"
                                        << ""
                                        << "";
    QTest::newRow("serial, asked for") << "serial"
                                       << "stellwyn.link.*=true"
                                       << "stellwyn.link.serial: COM1 sent 82 11 31";
    QTest::newRow("USB, by default") << "ftdi"
                                     << ""
                                     << "";
    QTest::newRow("USB, asked for") << "ftdi"
                                    << "stellwyn.link.ftdi.debug=true"
                                    << "stellwyn.link.ftdi: handle 4096 sent 82 11 31";
}

void FrameTrace::frames_tracedAsHexOnlyWhenAsked() {
    QFETCH(QString, link);
    QFETCH(QString, rules);
    QFETCH(QString, sent);
    QLoggingCategory::setFilterRules(rules);
    traced.clear();
    const QtMessageHandler previous = qInstallMessageHandler(keepLinkLines);
    const QByteArray reply = pollOnce(link);
    qInstallMessageHandler(previous);

    QVERIFY(reply.endsWith("\r\n"));
    if (sent.isEmpty()) {
        QCOMPARE(traced, QStringList());
        return;
    }
    const QString received = sent.left(sent.indexOf(QStringLiteral(" sent "))) +
                             QStringLiteral(" received ") + QString::fromLatin1(reply.toHex(' '));
    QCOMPARE(traced, (QStringList{sent, received}));
}

void FrameTrace::cleanup() {
    QLoggingCategory::setFilterRules(QString());
}

QTEST_GUILESS_MAIN(FrameTrace)
#include "test_frame_trace.moc"
