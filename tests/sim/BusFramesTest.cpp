// Frames in, replies out, byte for byte, on a bus with no timing at all.
#include "core/Clock.h"
#include "sim/Bus.h"
#include "sim/InProcessLink.h"
#include "sim/WireTime.h"

#include <QTest>

using namespace stellwyn;
using sim::Bus;

namespace {

QByteArray cell(int address, char mark, const QByteArray& weight) {
    return QByteArray(1, static_cast<char>(address)) + mark + ' ' + weight + "\r\n";
}

QByteArray addressed(int address, char type, const QByteArray& rest) {
    return QByteArray(1, static_cast<char>(address)) + type + rest;
}

// A bus of 130, 131 and 132 (or one RS-232 indicator 130) weighing 12.5, 7.0 and 0.0.
struct Line {
    core::VirtualClock clock;
    Bus bus;
    sim::InProcessLink link;

    explicit Line(Bus::Mode mode) : bus(mode), link(bus, clock) {
        const QList<double> weights{12.5, 7.0, 0.0};
        const int n = mode == Bus::Mode::Rs232 ? 1 : 3;
        for (int i = 0; i < n; ++i) {
            bus.add(130 + i).weight().set(weights[i], 0.0);
        }
    }
    QByteArray ask(const QByteArray& frame) {
        link.write(frame);
        return link.readAll();
    }
};

} // namespace

class BusFramesTest : public QObject {
    Q_OBJECT
private slots:
    void request_getsItsReplyByteForByte_data();
    void request_getsItsReplyByteForByte();
    void keys_areRecordedInOrderAndOnlyByTheAddressedIndicator();
    void groupUploadRs232_isRecordedFrameByFrameAndStoredOnS();
    void groupUploadAddressed_isRecordedFrameByFrameAndStoredOnS();
    void outputUpload_framesAsTheHostSendsThem_areRecordedWithTheirCrs();
    void outputUpload_takesTabSeparatedItemsOnlyAfterStore();
    void totals_readThenReset();
    void printBurst_answersWithEveryHeldPrintBackToBack_data();
    void printBurst_answersWithEveryHeldPrintBackToBack();
    void rs232Print_goesOutUnaskedInItsStyle_data();
    void rs232Print_goesOutUnaskedInItsStyle();
    void frameSplitAcrossWrites_isAnsweredOnce();
};

void BusFramesTest::request_getsItsReplyByteForByte_data() {
    QTest::addColumn<bool>("rs232");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("reply");

    const QByteArray group =
        QByteArray("0\t1\t2\t3\t4\t5\t6\t7\t8\t9\t10\t11\t12\t13\t14\t15\t16\t17\t18\t"
                   "19\t20\t21\t22\t23\t24\t25\t26\t27\t28\t29\t30\t") +
        "001.5\t002.5\t003.5\t004.5\t005.5\t006.5\t37\r\n";
    QTest::newRow("rs232 P") << true << QByteArray("*P") << QByteArray("  12.5\r\n");
    QTest::newRow("rs232 F") << true << QByteArray("*F") << QByteArray("  12.5\r\n");
    QTest::newRow("rs232 key 1 also reads") << true << QByteArray("*1") << QByteArray("  12.5\r\n");
    QTest::newRow("rs232 key 5 is silent") << true << QByteArray("*5") << QByteArray();
    QTest::newRow("rs232 ignores addressed frame")
        << true << addressed(130, 0x11, "1") << QByteArray();
    QTest::newRow("rs232 G") << true << QByteArray("*G") << group;
    QTest::newRow("addressed 1 to 130")
        << false << addressed(130, 0x11, "1") << cell(130, ' ', "  12.5");
    QTest::newRow("addressed F to 131")
        << false << addressed(131, 0x11, "F") << cell(131, ' ', "   7.0");
    QTest::newRow("addressed K to 132")
        << false << addressed(132, 0x11, "K") << cell(132, ' ', "   0.0");
    QTest::newRow("addressed P") << false << addressed(130, 0x11, "P") << cell(130, ' ', "  12.5");
    QTest::newRow("addressed unknown NetID") << false << addressed(133, 0x11, "1") << QByteArray();
    QTest::newRow("addressed ignores rs232 frame") << false << QByteArray("*P") << QByteArray();
    QTest::newRow("addressed upload header is not a request")
        << false << addressed(130, 0x12, "1") << QByteArray();
    QTest::newRow("addressed G") << false << addressed(131, 0x11, "G") << "\x83" + group;
    QTest::newRow("addressed S says nothing") << false << addressed(130, 0x11, "S") << QByteArray();
    QTest::newRow("stray bytes then a request")
        << false << QByteArray("\r\n\x05") + addressed(130, 0x11, "1") << cell(130, ' ', "  12.5");
}

void BusFramesTest::request_getsItsReplyByteForByte() {
    QFETCH(bool, rs232);
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, reply);
    Line line(rs232 ? Bus::Mode::Rs232 : Bus::Mode::Addressed);
    QCOMPARE(line.ask(request), reply);
}

void BusFramesTest::keys_areRecordedInOrderAndOnlyByTheAddressedIndicator() {
    Line line(Bus::Mode::Addressed);
    for (char key : QByteArray("7.0E1")) {
        line.ask(addressed(131, 0x11, QByteArray(1, key)));
    }
    line.ask(addressed(130, 0x11, "9"));
    QCOMPARE(line.bus.find(131)->keys(), QByteArray("7.0E1"));
    QCOMPARE(line.bus.find(130)->keys(), QByteArray("9"));
    QCOMPARE(line.bus.find(132)->keys(), QByteArray());
    QCOMPARE(line.bus.find(131)->requests(), QByteArray("7.0E1"));
}

void BusFramesTest::groupUploadRs232_isRecordedFrameByFrameAndStoredOnS() {
    Line line(Bus::Mode::Rs232);
    // The host's group write on RS-232: the fourth value rides in frame "0", bytes 3 to 8 go
    // one write each with no CR.
    QByteArray wire = "!U1011.1022.2\r!U0033.3\r044.4\r!U9055.5066.6\r!U2\r";
    for (char code = '3'; code <= '8'; ++code) {
        wire += QByteArray("!U") + code + QByteArray(1, static_cast<char>(code - '0'));
    }
    QCOMPARE(line.ask(wire), QByteArray());
    const sim::Indicator& ind = *line.bus.find(130);
    const QList<sim::Upload> expected{{'1', "011.1022.2\r"}, {'0', "033.3\r044.4\r"},
                                      {'9', "055.5066.6\r"}, {'2', "\r"},
                                      {'3', "\x03"},         {'4', "\x04"},
                                      {'5', "\x05"},         {'6', "\x06"},
                                      {'7', "\x07"},         {'8', "\x08"}};
    QCOMPARE(ind.uploads(), expected);

    // Nothing counts until "S".
    QVERIFY(line.ask("*G").contains("001.5\t002.5"));
    QCOMPARE(line.ask("*S"), QByteArray());
    const QList<QByteArray> words = line.ask("*G").chopped(2).split('\t');
    QCOMPARE(words.mid(31, 6),
             (QList<QByteArray>{"011.1", "022.2", "033.3", "044.4", "055.5", "066.6"}));
    QCOMPARE(words.mid(3, 6), (QList<QByteArray>{"3", "4", "5", "6", "7", "8"}));
}

void BusFramesTest::groupUploadAddressed_isRecordedFrameByFrameAndStoredOnS() {
    Line line(Bus::Mode::Addressed);
    auto up = [](char code, const QByteArray& payload) {
        return addressed(131, 0x12, QByteArray(1, code) + payload);
    };
    QByteArray wire = up('1', "011.1022.2\r") + up('0', "033.3\r") + up('I', "044.4\r") +
                      up('9', "055.5066.6\r") + up('2', "\r");
    // The single-byte frames go four times each; a NUL byte is a value like any other.
    for (char code = '3'; code <= '8'; ++code) {
        wire += up(code, QByteArray(1, '\0')).repeated(4);
    }
    QCOMPARE(line.ask(wire), QByteArray());
    const QList<sim::Upload>& got = line.bus.find(131)->uploads();
    QCOMPARE(got.size(), 5 + 6 * 4);
    QCOMPARE(got.at(2), (sim::Upload{'I', "044.4\r"}));
    QCOMPARE(got.at(5), (sim::Upload{'3', QByteArray(1, '\0')}));
    QCOMPARE(got.at(28), (sim::Upload{'8', QByteArray(1, '\0')}));
    QVERIFY(line.bus.find(130)->uploads().isEmpty());
    QVERIFY(line.bus.find(132)->uploads().isEmpty());

    line.ask(addressed(131, 0x11, "S"));
    const QByteArray reply = line.ask(addressed(131, 0x11, "G"));
    QCOMPARE(reply.at(0), '\x83');
    const QList<QByteArray> words = reply.mid(1).chopped(2).split('\t');
    QCOMPARE(words.mid(31, 6),
             (QList<QByteArray>{"011.1", "022.2", "033.3", "044.4", "055.5", "066.6"}));
    QCOMPARE(words.at(3), QByteArray("0"));
    // Another indicator's setup is untouched.
    QVERIFY(line.ask(addressed(130, 0x11, "G")).contains("001.5\t002.5"));
}

void BusFramesTest::outputUpload_framesAsTheHostSendsThem_areRecordedWithTheirCrs() {
    Line rs(Bus::Mode::Rs232);
    QByteArray wire;
    for (char code = 'A'; code <= 'F'; ++code) {
        wire += QByteArray("!U") + code + '\r';
    }
    wire += "!UG" + QByteArray(7, '\r') + "!UH" + QByteArray(3, '\r') + "*S";
    rs.ask(wire);
    const QList<sim::Upload>& got = rs.bus.find(130)->uploads();
    QCOMPARE(got.size(), 8);
    QCOMPARE(got.at(0), (sim::Upload{'A', "\r"}));
    QCOMPARE(got.at(6), (sim::Upload{'G', QByteArray(7, '\r')}));
    QCOMPARE(got.at(7), (sim::Upload{'H', QByteArray(3, '\r')}));
    QCOMPARE(rs.bus.find(130)->storeCount(), 1);

    Line net(Bus::Mode::Addressed);
    const QByteArray header = addressed(132, 0x12, "G");
    net.ask(header.repeated(7) + '\r' + addressed(132, 0x12, "H").repeated(3) + '\r');
    const QList<sim::Upload>& frames = net.bus.find(132)->uploads();
    QCOMPARE(frames.size(), 2);
    QCOMPARE(frames.at(0), (sim::Upload{'G', header.repeated(6) + '\r'}));
    QCOMPARE(frames.at(1), (sim::Upload{'H', addressed(132, 0x12, "H").repeated(2) + '\r'}));
}

void BusFramesTest::outputUpload_takesTabSeparatedItemsOnlyAfterStore() {
    Line line(Bus::Mode::Rs232);
    line.ask("!UB1\t2\t3\t4\t5\t6\r!UH7\t8\r");
    QByteArray before = line.ask("*J");
    QVERIFY(before.startsWith("100\t101\t102\t103\t104\t105\t106\t"));
    line.ask("*S");
    const QList<QByteArray> words = line.ask("*J").chopped(2).split('\t');
    QCOMPARE(words.size(), 44);
    QCOMPARE(words.mid(5, 8), (QList<QByteArray>{"105", "1", "2", "3", "4", "5", "6", "112"}));
    QCOMPARE(words.mid(42), (QList<QByteArray>{"7", "8"}));
}

void BusFramesTest::totals_readThenReset() {
    Line line(Bus::Mode::Addressed);
    const QByteArray before = line.ask(addressed(130, 0x11, "T"));
    QCOMPARE(before.at(0), '\x82');
    QVERIFY(before.endsWith("\r\n"));
    const QList<QByteArray> words = before.mid(1).chopped(2).split('\t');
    QVERIFY(words.size() >= 19);
    QVERIFY(words.at(18) != "0");

    QCOMPARE(line.ask(addressed(130, 0x11, "R")), QByteArray());
    const QList<QByteArray> after =
        line.ask(addressed(130, 0x11, "T")).mid(1).chopped(2).split('\t');
    QCOMPARE(after.size(), words.size());
    QCOMPARE(after.at(18), QByteArray("0"));
    QCOMPARE(after.count("0"), after.size());
    // The clear went to 130 only.
    QCOMPARE(line.ask(addressed(131, 0x11, "T")).mid(1).chopped(2).split('\t').at(18),
             words.at(18));
}

void BusFramesTest::printBurst_answersWithEveryHeldPrintBackToBack_data() {
    QTest::addColumn<QList<int>>("printers");
    QTest::addColumn<int>("polled");
    QTest::addColumn<QByteArray>("reply");

    const QByteArray a = cell(130, '+', "  12.5");
    const QByteArray b = cell(131, '+', "   7.0");
    const QByteArray c = cell(132, '+', "   0.0");
    QTest::newRow("one printer") << QList<int>{131} << 131 << b;
    QTest::newRow("all three, first polled") << QList<int>{130, 131, 132} << 130 << a + b + c;
    QTest::newRow("polled one leads the burst") << QList<int>{130, 131, 132} << 132 << c + a + b;
    QTest::newRow("gap among printers") << QList<int>{130, 132} << 130 << a + c;
    QTest::newRow("poll of a non-printer gets a plain cell")
        << QList<int>{130} << 131 << cell(131, ' ', "   7.0");
    QTest::newRow("unknown printer is ignored") << QList<int>{140, 131} << 131 << b;
}

void BusFramesTest::printBurst_answersWithEveryHeldPrintBackToBack() {
    QFETCH(QList<int>, printers);
    QFETCH(int, polled);
    QFETCH(QByteArray, reply);
    Line line(Bus::Mode::Addressed);
    line.bus.print(printers, 0.0);
    const QByteArray got = line.ask(addressed(polled, 0x11, "1"));
    QCOMPARE(got, reply);
    QCOMPARE(got.size() % 11, 0);
    // A print is answered once; the next poll reads plainly.
    QCOMPARE(line.ask(addressed(polled, 0x11, "1")).at(1), ' ');
}

void BusFramesTest::rs232Print_goesOutUnaskedInItsStyle_data() {
    QTest::addColumn<QString>("style");
    QTest::addColumn<QByteArray>("tag");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("plus falls back to a group line")
        << "plus" << QByteArray() << QByteArray("#2  12.5\r\n");
    QTest::newRow("hash") << "hash" << QByteArray() << QByteArray("#2  12.5\r\n");
    QTest::newRow("tagged") << "hash" << QByteArray("ROW 3 TAG17")
                            << QByteArray("!ROW 3 TAG17#2  12.5\r\n");
    QTest::newRow("D") << "d" << QByteArray() << QByteArray("  12.5D\r\n");
}

void BusFramesTest::rs232Print_goesOutUnaskedInItsStyle() {
    QFETCH(QString, style);
    QFETCH(QByteArray, tag);
    QFETCH(QByteArray, line);
    Line rs(Bus::Mode::Rs232);
    sim::Indicator& ind = *rs.bus.find(130);
    ind.setGroup('2');
    ind.setTag(tag);
    ind.setPrintStyle(style == "d"      ? sim::PrintStyle::D
                      : style == "hash" ? sim::PrintStyle::Hash
                                        : sim::PrintStyle::Plus);
    rs.bus.print({130}, sim::lineSeconds(rs.clock));
    QCOMPARE(rs.link.readAll(), line);
    QCOMPARE(rs.ask("*P"), QByteArray("  12.5\r\n"));
}

void BusFramesTest::frameSplitAcrossWrites_isAnsweredOnce() {
    Line line(Bus::Mode::Addressed);
    QCOMPARE(line.ask(QByteArray(1, '\x82')), QByteArray());
    QCOMPARE(line.ask(QByteArray(1, '\x11')), QByteArray());
    QCOMPARE(line.ask("1"), cell(130, ' ', "  12.5"));
    QCOMPARE(line.bus.find(130)->requests(), QByteArray("1"));
}

QTEST_GUILESS_MAIN(BusFramesTest)
#include "BusFramesTest.moc"
