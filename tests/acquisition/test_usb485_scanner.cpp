// The USB-RS485 scanner against simulated indicators behind a simulated adapter: which replies
// become readings, what each marker does to the text, the rows kept, print bursts, and the
// reply wait across midnight.
#include "ScannerFixture.h"
#include "acquisition/Frames.h"
#include "acquisition/ReplyMarkers.h"
#include "links/SimFtdi.h"
#include "sim/WireTime.h"

#include <QTest>

using namespace stellwyn;
using acquisitiontest::ScannerFixture;

namespace {

// Four scales in the table (128, 130, 131, 132) and one on the bus that is not (135); the
// main display shows 130.
struct Usb485 : ScannerFixture {
    explicit Usb485(const QDateTime& start = acquisitiontest::noon())
        : ScannerFixture(start), ftdi({128, 130, 131, 132, 135}, clock) {
        links::FtHandle handle = 0;
        ftdi.FT_Open(0, handle);
        m.usbhandle = handle;
        context.links.ftdi = &ftdi;
        const QList<std::pair<int, QByteArray>> weights = {
            {128, "20.0"}, {130, "12.5"}, {131, "30.0"}, {132, "40.0"}, {135, "99.9"}};
        for (const auto& [netId, weight] : weights) {
            scale(netId).weight().setFixedText(weight);
            if (netId != 135) {
                addScale(netId, QStringLiteral("Scale %1").arg(netId));
            }
        }
        m.curscale = 1;
    }

    sim::Indicator& scale(int netId) { return *ftdi.bus().find(netId); }
    void print(const QList<int>& netIds) { ftdi.bus().print(netIds, sim::lineSeconds(clock)); }

    // One step of a network pass: the request, then the scanner.
    void ask(int netId) {
        links::DWORD written = 0;
        ftdi.FT_Write(m.usbhandle, acquisition::frames::addressedRequest(netId, '1'), 3, written);
        scanners.USB485_inputscan();
    }

    links::SimFtdi ftdi;
};

} // namespace

class Usb485ScannerTest : public QObject {
    Q_OBJECT
private slots:
    void reply_takenOrDropped_data();
    void reply_takenOrDropped();
    void markers_readInOrder_data();
    void markers_readInOrder();
    void replySplitOverReads_isTakenWhole_data();
    void replySplitOverReads_isTakenWhole();
    void printBurst_furtherCellsCountedNotMatched_data();
    void printBurst_furtherCellsCountedNotMatched();
    void lateLineEndOfOneReply_doesNotCostTheNext();
    void replyWait_endsAfterAQuarterSecondEvenAcrossMidnight_data();
    void replyWait_endsAfterAQuarterSecondEvenAcrossMidnight();
    void reading_showsOnTheSlaveWindowOfItsEntryOnly();
    void screenClosedInAYield_showsAndStoresNothingMore_data();
    void screenClosedInAYield_showsAndStoresNothingMore();
};

void Usb485ScannerTest::reply_takenOrDropped_data() {
    QTest::addColumn<QString>("shape");
    QTest::addColumn<int>("netId");
    QTest::addColumn<int>("check1");
    QTest::addColumn<int>("autoSave");
    QTest::addColumn<QString>("weight"); // null: the reply is dropped
    QTest::addColumn<QString>("groupnum");
    QTest::addColumn<QStringList>("rows");

    const QString noGroup;
    // The scanner acts at the CR; the LF is still on the wire.
    const QString group7 = QStringLiteral(" Group 7    12.5\r");
    QTest::newRow("plain, nothing ticked")
        << "plain" << 130 << 1 << 0 << "    12.5" << noGroup << QStringList{};
    QTest::newRow("plain, Auto Save")
        << "plain" << 130 << 0 << 1 << "    12.5" << noGroup << QStringList{"130|12.5"};
    QTest::newRow("+ marks a print")
        << "plus" << 130 << 0 << 0 << "+   12.5" << noGroup << QStringList{"130|12.5"};
    QTest::newRow("D ends the text, marks a print")
        << "D" << 130 << 0 << 0 << "    12.5" << noGroup << QStringList{"130|12.5"};
    QTest::newRow("#, Check1 off")
        << "hash" << 130 << 0 << 0 << "  12.5" << group7 << QStringList{};
    QTest::newRow("#, Check1 on") << "hash" << 130 << 1 << 0 << "  12.5" << group7
                                  << QStringList{"130|  12.5"};
    QTest::newRow("# with Auto Save, stored twice")
        << "hash" << 130 << 1 << 1 << "  12.5" << group7 << QStringList{"130|  12.5", "130|12.5"};
    QTest::newRow("! tag then #") << "tag" << 130 << 1 << 0 << "  12.5" << group7
                                  << QStringList{"130|  12.5"};
    QTest::newRow("! without #, dropped")
        << "bangNoHash" << 130 << 1 << 1 << QString() << noGroup << QStringList{};
    QTest::newRow("address 127, dropped")
        << "low127" << 130 << 1 << 1 << QString() << noGroup << QStringList{};
    QTest::newRow("address 128, taken")
        << "plain" << 128 << 0 << 1 << "    20.0" << noGroup << QStringList{"128|20.0"};
    QTest::newRow("unknown address, dropped")
        << "plain" << 135 << 1 << 1 << QString() << noGroup << QStringList{};
}

void Usb485ScannerTest::reply_takenOrDropped() {
    QFETCH(QString, shape);
    QFETCH(int, netId);
    QFETCH(int, check1);
    QFETCH(int, autoSave);
    QFETCH(QString, weight);
    QFETCH(QString, groupnum);
    QFETCH(QStringList, rows);

    Usb485 s;
    sim::Indicator& ind = s.scale(netId);
    ind.setGroup('7');
    if (shape == u"plus") {
        s.print({netId});
    } else if (shape == u"D" || shape == u"hash" || shape == u"tag") {
        ind.setPrintStyle(shape == u"D" ? sim::PrintStyle::D : sim::PrintStyle::Hash);
        ind.setTag(shape == u"tag" ? QByteArray("LOT 007") : QByteArray());
        s.print({netId});
    } else if (shape == u"bangNoHash") {
        ind.addFault(acquisitiontest::fault(sim::Fault::Kind::BangNoHash));
    } else if (shape == u"low127") {
        ind.addFault(acquisitiontest::fault(sim::Fault::Kind::LowAddress));
    }
    for (int i = 0; i < core::scaleTableSize; ++i) {
        s.m.scaleweight[i] = QStringLiteral("old %1").arg(i);
    }
    s.f.Screen.caption = QStringLiteral("old");
    s.f.Check1.setValue(check1);
    s.f.chk_SaveOnPrint.setValue(autoSave);
    const QStringList before = s.snapshot();

    s.ask(netId);

    if (weight.isNull()) {
        QCOMPARE(s.snapshot(), before);
        return;
    }
    const int i = s.m.netid[0] == netId ? 0 : 1;
    QCOMPARE(s.m.scaleweight[i], weight);
    QCOMPARE(s.f.NetList.text(i + 1, 0), s.m.scaledesc[i]);
    QCOMPARE(s.f.NetList.text(i + 1, 1), weight);
    QCOMPARE(s.f.Screen.caption, i == s.m.curscale ? weight : QStringLiteral("old"));
    QCOMPARE(s.f.txt_groupnum.text, groupnum);
    QCOMPARE(s.storedRows(), rows);
    QCOMPARE(s.m.usberrcount, 0.0);
}

void Usb485ScannerTest::markers_readInOrder_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("tagblz");
    QTest::addColumn<bool>("taken");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("tag");
    QTest::addColumn<bool>("printflag");

    QTest::newRow("tag, leading zeros kept") << "!LOT 007#1  12.5\r\n"
                                             << 0 << true << "  12.5"
                                             << "007" << false;
    QTest::newRow("tag, leading zeros removed") << "!LOT 007#1  12.5\r\n"
                                                << 1 << true << "  12.5"
                                                << "7" << false;
    QTest::newRow("tag of zeros") << "!000#1  12.5\r\n"
                                  << 1 << true << "  12.5"
                                  << "" << false;
    QTest::newRow("D hides what follows") << "  12.5D 99\r\n"
                                          << 0 << true << "  12.5"
                                          << "" << true;
    QTest::newRow("# in front of !") << "#1!TAG 12.5\r\n"
                                     << 0 << false << ""
                                     << "" << false;
    QTest::newRow("no word between ! and #") << "!  #1 12.5\r\n"
                                             << 0 << false << ""
                                             << "" << false;
}

void Usb485ScannerTest::markers_readInOrder() {
    QFETCH(QString, text);
    QFETCH(int, tagblz);
    QFETCH(bool, taken);
    QFETCH(QString, shown);
    QFETCH(QString, tag);
    QFETCH(bool, printflag);

    core::Module1 m;
    m.tagblz = static_cast<std::int16_t>(tagblz);
    const std::optional<acquisition::MarkedText> marked = acquisition::readMarkers(m, text, false);
    QCOMPARE(marked.has_value(), taken);
    if (taken) {
        QCOMPARE(marked->text, shown);
        QCOMPARE(marked->tag, tag);
        QCOMPARE(marked->printflag, printflag);
    }
}

void Usb485ScannerTest::replySplitOverReads_isTakenWhole_data() {
    QTest::addColumn<int>("splitAt");
    QTest::newRow("address alone first") << 1;
    QTest::newRow("inside the weight") << 6;
    QTest::newRow("CR first, LF later") << 10;
}

void Usb485ScannerTest::replySplitOverReads_isTakenWhole() {
    QFETCH(int, splitAt);
    Usb485 s;
    s.ftdi.bus().setByteTime(0);
    s.scale(130).addFault(acquisitiontest::fault(sim::Fault::Kind::Split, 1, 0.05, splitAt));
    s.f.chk_SaveOnPrint.setValue(1);

    s.ask(130);

    QCOMPARE(s.m.scaleweight[1], QStringLiteral("    12.5"));
    QCOMPARE(s.storedRows(), QStringList{"130|12.5"});
    QCOMPARE(s.m.scalelast[0], QString());
}

void Usb485ScannerTest::printBurst_furtherCellsCountedNotMatched_data() {
    QTest::addColumn<QList<int>>("printing");
    QTest::addColumn<QStringList>("rows");
    QTest::newRow("three indicators")
        << QList<int>{130, 131, 132} << QStringList{"130|12.5", "131|30.0", "132|40.0"};
    // 128 is taken as the first cell but not counted behind it: one cell is counted, so the
    // cell of 128 is stored and the one of 131 behind it is not.
    QTest::newRow("128 among the further cells")
        << QList<int>{130, 128, 131} << QStringList{"130|12.5", "128|20.0"};
}

void Usb485ScannerTest::printBurst_furtherCellsCountedNotMatched() {
    QFETCH(QList<int>, printing);
    QFETCH(QStringList, rows);
    Usb485 s;
    s.ftdi.bus().setByteTime(0); // the burst arrives as one read, as on the original adapters
    s.f.chk_Excel.setValue(1);
    s.f.Combo1.setListIndex(2);
    s.print(printing);

    s.ask(130);

    QCOMPARE(s.storedRows(), rows);
    QCOMPARE(s.m.scaleweight[1], QStringLiteral("+   12.5"));
    QCOMPARE(s.m.scaleweight[2], QString()); // further cells never reach the table
    QCOMPARE(s.f.NetList.rows(), 3);
    QCOMPARE(s.excelCalls, QList<int>{2});
    QCOMPARE(s.m.excelrow, rows.size() + 1); // the last row's ID + 1
}

void Usb485ScannerTest::lateLineEndOfOneReply_doesNotCostTheNext() {
    Usb485 s; // 9600 baud: the reply comes a byte at a time, the LF after the CR
    s.ask(130);
    s.clock.advance(0.01);
    links::DWORD waiting = 0;
    s.ftdi.FT_GetQueueStatus(s.m.usbhandle, waiting);
    QCOMPARE(waiting, links::DWORD{1});

    s.ask(131);

    QCOMPARE(s.m.scaleweight[1], QStringLiteral("    12.5"));
    QCOMPARE(s.m.scaleweight[2], QStringLiteral("    30.0"));
    QCOMPARE(s.m.usberrcount, 0.0);
}

void Usb485ScannerTest::replyWait_endsAfterAQuarterSecondEvenAcrossMidnight_data() {
    QTest::addColumn<QTime>("start");
    QTest::addColumn<bool>("silent");
    QTest::addColumn<QString>("weight");
    QTest::addColumn<double>("errors");
    QTest::addColumn<QTime>("endsBy");

    const QTime noon(12, 0);
    const QTime late(23, 59, 59, 900);
    QTest::newRow("silent at noon") << noon << true << "" << 1.0 << QTime(12, 0, 0, 252);
    QTest::newRow("silent from 23:59:59.9") << late << true << "" << 1.0 << QTime(0, 0, 0, 253);
    QTest::newRow("answering from 23:59:59.9")
        << late << false << "    12.5" << 0.0 << QTime(0, 0, 0, 20);
}

void Usb485ScannerTest::replyWait_endsAfterAQuarterSecondEvenAcrossMidnight() {
    QFETCH(QTime, start);
    QFETCH(bool, silent);
    QFETCH(QString, weight);
    QFETCH(double, errors);
    QFETCH(QTime, endsBy);
    Usb485 s(QDateTime(QDate(2026, 1, 5), start));
    if (silent) {
        s.scale(130).addFault(acquisitiontest::fault(sim::Fault::Kind::Silence));
    }

    s.ask(130);

    QCOMPARE(s.m.scaleweight[1], weight);
    QCOMPARE(s.m.usberrcount, errors);
    // Never before a quarter second after its start (or after midnight), never much later.
    const QTime ended = s.clock.now().time();
    QVERIFY2(ended <= endsBy, qPrintable(ended.toString("HH:mm:ss.zzz")));
    if (silent) {
        QVERIFY2(ended >= endsBy.addMSecs(-3), qPrintable(ended.toString("HH:mm:ss.zzz")));
    }
}

void Usb485ScannerTest::reading_showsOnTheSlaveWindowOfItsEntryOnly() {
    Usb485 s;
    s.m.slaveopen[1] = 1;
    s.m.slaveopen[2] = 1;
    s.ask(130); // entry 1, its window open
    s.ask(128); // entry 0, its window closed
    QCOMPARE(s.slaveTexts, QStringList{"1:    12.5"});
}

void Usb485ScannerTest::screenClosedInAYield_showsAndStoresNothingMore_data() {
    QTest::addColumn<QString>("closeAt");
    QTest::addColumn<QString>("weight");
    QTest::addColumn<bool>("shown"); // on the screen, its slave window and the scan table
    QTest::addColumn<QStringList>("rows");
    QTest::newRow("in the reply wait") << "wait" << QString() << false << QStringList{};
    QTest::newRow("once the reading is taken") << "reading"
                                               << "  12.5" << false << QStringList{};
    QTest::newRow("after the group row") << "row"
                                         << "  12.5" << true << QStringList{"130|  12.5"};
}

void Usb485ScannerTest::screenClosedInAYield_showsAndStoresNothingMore() {
    QFETCH(QString, closeAt);
    QFETCH(QString, weight);
    QFETCH(bool, shown);
    QFETCH(QStringList, rows);
    Usb485 s;
    // A group print with every store ticked: a row for the group, one for Auto Save, Excel.
    s.scale(130).setGroup('7');
    s.scale(130).setPrintStyle(sim::PrintStyle::Hash);
    s.print({130});
    s.f.Check1.setValue(1);
    s.f.chk_SaveOnPrint.setValue(1);
    s.f.chk_Excel.setValue(1);
    s.m.slaveopen[1] = 1;
    int yields = 0;
    s.closeAtYield([&] {
        ++yields;
        if (closeAt == u"wait") {
            return yields > 1;
        }
        return closeAt == u"reading" ? !s.m.scaleweight[1].isEmpty() : !s.storedRows().isEmpty();
    });

    s.ask(130);

    QCOMPARE(s.m.scaleweight[1], weight);
    QCOMPARE(s.storedRows(), rows);
    QCOMPARE(s.f.Screen.caption, shown ? weight : QString());
    QCOMPARE(s.f.NetList.rows() > 1, shown);
    QCOMPARE(s.slaveTexts, shown ? QStringList{"1:" + weight} : QStringList{});
    QCOMPARE(s.excelCalls, QList<int>{});
}

QTEST_GUILESS_MAIN(Usb485ScannerTest)
#include "test_usb485_scanner.moc"
