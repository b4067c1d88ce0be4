#include "FakeDriveQueries.h"
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "core/Module1.h"
#include "core/store/Connection.h"
#include "core/store/ConnectionText.h"
#include "core/store/CreateDatabase.h"
#include "sdmemory/CDriveInfo.h"
#include "sdmemory/FatBootSector.h"
#include "sdmemory/KlDatImport.h"
#include "sdmemory/LinuxDriveQueries.h"
#include "sdmemory/SdMemoryOptions.h"
#include "sdmemory/SdSetting.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

using namespace stellwyn;
using namespace stellwyn::sdmemory;
using sdtest::card32;
using sdtest::FakeDriveQueries;

class SdMemoryTest : public QObject {
    Q_OBJECT

    testsupport::TempHome home;
    core::Module1 m;
    testsupport::RecordingDialogs dialogs;
    FakeDriveQueries queries;

    QString klPath() const { return home.file(QStringLiteral("KL.Dat")); }
    void writeKl(const QByteArray& content) const {
        QFile f(klPath());
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(content);
    }
    // Every stored row as "ScaleID|Group|Reading|Date|Time|TagID", in store order.
    QStringList rows() const {
        core::Connection c = core::Connection::open(m.dataconn);
        QSqlQuery q = c.run(QStringLiteral(
            "select ScaleID, \"Group\", Reading, Date, Time, TagID from datacol order by ID"));
        QStringList out;
        while (q.next()) {
            QStringList fields;
            for (int i = 0; i < 6; ++i) {
                fields << q.value(i).toString();
            }
            out << fields.join(u'|');
        }
        return out;
    }
    std::unique_ptr<SdMemoryOptions> options() {
        auto o = std::make_unique<SdMemoryOptions>(m, dialogs, queries);
        m.sddrivepath = home.path() + u'/';
        return o;
    }

private slots:
    void init() {
        core::createDatabase(home.path());
        m.cfgconn = core::connectionText(home.path());
        m.dataconn = m.cfgconn;
        core::Connection c = core::Connection::open(m.dataconn);
        c.run(QStringLiteral("delete from datacol"));
        dialogs.said.clear();
        m.sdtimezone.clear();
        m.sddrivepath.clear();
        m.sddrivechosen = 0;
        queries = FakeDriveQueries();
        QFile::remove(klPath());
    }

    void formatSize_data() {
        QTest::addColumn<quint64>("size");
        QTest::addColumn<bool>("withBytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("0") << quint64(0) << true << "0 bytes";
        QTest::newRow("1") << quint64(1) << true << "1 byte";
        QTest::newRow("1023") << quint64(1023) << true << "1,023 bytes";
        QTest::newRow("1024") << quint64(1024) << true << "1.00 KB (1,024 bytes)";
        QTest::newRow("10240") << quint64(10240) << false << "10.0 KB";
        QTest::newRow("100 MB") << quint64(1048576) * 100 << false << "100 MB";
        QTest::newRow("just under 1 MB") << quint64(1048575) << false << "1024 KB";
        QTest::newRow("1 GB") << (quint64(1) << 30) << true << "1.00 GB (1,073,741,824 bytes)";
        QTest::newRow("3 TB") << (quint64(3) << 40) << false << "3.00 TB";
    }
    void formatSize() {
        QFETCH(quint64, size);
        QFETCH(bool, withBytes);
        QFETCH(QString, text);
        QCOMPARE(CDriveInfo::FormatSize(size, withBytes), text);
    }

    void driveRootAndSerial_data() {
        QTest::addColumn<QString>("given");
        QTest::addColumn<QString>("root");
        QTest::newRow("letter") << "e:"
                                << "E:/";
        QTest::newRow("letter and separator") << "e:/"
                                              << "E:/";
        QTest::newRow("list entry") << "e: [CARD]"
                                    << "E:/";
        QTest::newRow("mount point") << "/media/card"
                                     << "/media/card/";
    }
    void driveRootAndSerial() {
        QFETCH(QString, given);
        QFETCH(QString, root);
        FakeDriveQueries::Drive d = FakeDriveQueries::card(card32);
        d.volume.serialNumber = 0x0012ABCD;
        queries.add(root, d);
        CDriveInfo info(queries);
        info.setDrive(given);
        QCOMPARE(info.Drive(), root);
        QCOMPARE(info.SerialNumberEx(), QStringLiteral("0012-ABCD"));
        queries.drives[root].volume.serialNumber = 0x80000001;
        info.Refresh();
        QCOMPARE(info.SerialNumber(), QStringLiteral("-2147483647"));
        queries.drives[root].present = false;
        info.Refresh();
        QVERIFY(!info.Present());
        QCOMPARE(info.SerialNumberEx(), QString());
        QCOMPARE(info.TotalSpace(), quint64(0));
    }

    // Each line after the first is taken apart with the zone given; the first sets the carried
    // fields. The texts are as the card has them: the store's forms are the store's concern.
    void records_data() {
        QTest::addColumn<QString>("zone");
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("record");
        const QByteArray a("\x82");
        QTest::newRow("worked record") << "" << a + "!ROW 3 TAG17#2    432%04/03/2004@12:00:00"
                                       << "130|2|    432|04/03/2004|12:00:00|TAG17";
        QTest::newRow("pacific") << "Pacific Standard Time" << a + "#1 10%1/2/2026@09:30:15"
                                 << "130|1| 10|1/2/2026|6:30:15<null>";
        QTest::newRow("central below zero")
            << "Central Standard Time" << a + "#1 10%1/2/2026@00:10:00"
            << "130|1| 10|1/2/2026|-1:10:00<null>";
        QTest::newRow("eastern stays") << "Eastern Standard Time" << a + "#1 10%1/2/2026@09:30:15"
                                       << "130|1| 10|1/2/2026|09:30:15<null>";
        QTest::newRow("no tag, no group") << "" << a + "     55%1/2/2026@09:30:15"
                                          << "130<null>|     55|1/2/2026|09:30:15<null>";
        QTest::newRow("carried over") << "" << a + "#3 no fields here"
                                      << "130|3|    9|1/5/2026|08:00:00<null>";
        QTest::newRow("\"!\" as address")
            << "" << QByteArray("!x#4 12%1/2/2026@09:30:15") << "33|4| 12|1/2/2026|09:30:15<null>";
    }
    void records() {
        QFETCH(QString, zone);
        QFETCH(QByteArray, line);
        QFETCH(QString, record);
        KlRecordParser parser(zone);
        parser.parse("\x83#1    9%1/5/2026@08:00:00");
        const core::ImportedReading r = parser.parse(line);
        // A field the record leaves unset is stored as null, and shown so.
        const auto shown = [](QByteArrayView v) {
            return v.isNull() ? QStringLiteral("<null>") : u'|' + QString::fromLatin1(v);
        };
        QCOMPARE(QString::fromLatin1(r.scaleId) + shown(r.group) + shown(r.reading) +
                     shown(r.date) + shown(r.time) + shown(r.tagId),
                 record);
    }

    // The lengths 15 and 70 are skipped, 16 and 69 read; a byte beyond ASCII is a character of
    // its own (the card's single-byte code page), stored as that character.
    void lineLengths() {
        const QByteArray tail("%1/2/2026@09:30:15");
        const QList<QByteArray> lines = {
            "\x82 7%1/2/26@1:23",
            "\x82 \xb0"
            "7%1/2/26@1:23",
            "\x82" + QByteArray(50, '1') + tail,
            "\x82" + QByteArray(51, '2') + tail,
            QByteArray(3, ' '),
        };
        writeKl(lines.join("\r\n") + "\r\n");
        auto o = options();
        o->chk_erase_after_read.setValue(0);
        o->Read_Dat_File_Click();
        const QStringList stored = rows();
        QCOMPARE(stored.size(), 2);
        QVERIFY(stored.at(0).startsWith(QStringLiteral("130|| °7|")));
        QVERIFY(stored.at(1).startsWith(QStringLiteral("130||") + QString(50, u'1')));
    }

    void readTwiceDoublesThenEraseEmpties() {
        writeKl("\x82#1   10%1/2/2026@09:30:15\r\n\x83#2   20%1/2/2026@09:31:15\r\n");
        auto o = options();
        o->chk_erase_after_read.setValue(0);
        o->Read_Dat_File_Click();
        o->Read_Dat_File_Click();
        QCOMPARE(rows().size(), 4);
        o->chk_erase_after_read.setValue(1);
        o->Read_Dat_File_Click();
        QCOMPARE(rows().size(), 6);
        QFile f(klPath());
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll(), QByteArray(" \r\n"));
        o->Read_Dat_File_Click();
        QCOMPARE(rows().size(), 6);
        o->chk_erase_after_read.setValue(0);
        o->Erase_Dat_File_Click();
        QCOMPARE(dialogs.texts(),
                 (QStringList{"message: Finished reading Data", "message: Finished reading Data",
                              "message: Finished reading Data and Erased KL.Dat file",
                              "message: Finished reading Data and Erased KL.Dat file",
                              "message: Finished Erase Data"}));
    }

    void failuresKeepRowsAndFile_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("kept");
        QTest::newRow("tag without group") << QByteArray("\x82#1   10%1/2/2026@09:30:15\r\n"
                                                         "\x82!TAG 17 and no mark 10%1/2\r\n")
                                           << 1;
        QTest::newRow("date the store refuses")
            << QByteArray("\x82#1   10%1/2/2026@09:30:15\r\n\x82#1   10%99/99/99@09:30:15\r\n")
            << 1;
    }
    void failuresKeepRowsAndFile() {
        QFETCH(QByteArray, content);
        QFETCH(int, kept);
        writeKl(content);
        auto o = options();
        o->Read_Dat_File_Click();
        QCOMPARE(dialogs.texts(), QStringList{"message: Error Reading File!"});
        QCOMPARE(rows().size(), kept);
        QFile f(klPath());
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll(), content);
    }

    void missingFileAndNoDrive() {
        auto o = options();
        o->Read_Dat_File_Click();
        m.sddrivepath.clear();
        o->Read_Dat_File_Click();
        QCOMPARE(dialogs.texts(), QStringList{"message: Error Reading File!"});
    }

    void badLinesAreCountedAndCancelKeepsRows() {
        // Past the reader's block of 1 MiB, so that a record lies across two blocks.
        constexpr int records = 40000;
        QByteArray content;
        for (int i = 0; i < records; ++i) {
            content += "\x82#1   10%1/2/2026@09:30:15\r\n";
        }
        content +=
            QByteArray(70 * 1024, 'x') + "\r\n" + QByteArray("\x82#1 \0 10%1/2/26@1:2:3\n", 22);
        writeKl(content);
        auto o = options();
        o->chk_erase_after_read.setValue(0);
        o->Read_Dat_File_Click();
        const QStringList stored = rows();
        QCOMPARE(stored.count(QStringLiteral("130|1|   10|2026-01-02|09:30:15|")), records);
        QCOMPARE(stored.size(), records);
        QCOMPARE(dialogs.texts().last(),
                 QStringLiteral("message: 2 lines of KL.Dat held bytes that are not text or were "
                                "longer than 64 KiB; they were passed over."));
        dialogs.said.clear();
        o->chk_erase_after_read.setValue(1);
        o->progress = [](qint64, qint64) { return false; };
        o->Read_Dat_File_Click();
        QCOMPARE(rows().size(), records + 8191);
        QVERIFY(dialogs.texts().first().startsWith(QStringLiteral("message: Reading stopped.")));
        QCOMPARE(QFileInfo(klPath()).size(), content.size());
    }

    void discoveryTakesLastCardAndStandardZone() {
        queries.add(QStringLiteral("/"), FakeDriveQueries::Drive{});
        queries.add(QStringLiteral("/media/a/"), FakeDriveQueries::card(card32));
        queries.add(QStringLiteral("/media/big/"), FakeDriveQueries::card(33'000'000));
        queries.add(QStringLiteral("/media/fat32/"),
                    FakeDriveQueries::card(card32, QStringLiteral("FAT32")));
        queries.add(QStringLiteral("/media/b/"), FakeDriveQueries::card(card32));
        queries.add(QStringLiteral("/media/c/"), FakeDriveQueries::card(28'500'000));
        queries.zone = {timeZoneStandard, QStringLiteral("Central Standard Time\0junk")};
        SdMemoryOptions o(m, dialogs, queries);
        o.discover();
        QCOMPARE(m.sddrivepath, QStringLiteral("/media/b/"));
        QCOMPARE(o.txt_Default_SD_Drive.text, QStringLiteral("/media/b/"));
        QCOMPARE(m.sdtimezone, QStringLiteral("Central Standard Time"));

        queries.zone = {timeZoneDaylight, QStringLiteral("Pacific Standard Time")};
        o.discover();
        QCOMPARE(o.txt_Default_Time_Zone.text, QStringLiteral("Central Standard Time"));
        queries.zone = {timeZoneUnknown, {}};
        o.discover();
        QCOMPARE(o.txt_Default_Time_Zone.text, QStringLiteral("Time Zone Unknown!"));
        QCOMPARE(m.sdtimezone, QStringLiteral("Central Standard Time"));
    }

    void settingSearchesAndOk() {
        queries.add(QStringLiteral("/"), FakeDriveQueries::Drive{});
        queries.add(QStringLiteral("/media/a/"), FakeDriveQueries::card(card32));
        queries.add(QStringLiteral("/media/b/"), FakeDriveQueries::card(card32));
        {
            SdSetting form(m, dialogs, queries);
            form.Form_Load();
            QCOMPARE(
                dialogs.texts(),
                (QStringList{
                    "message: Program Found Drive '/media/a/'  [Removable] as Default SD Drive",
                    "message: Program Found Drive '/media/b/'  [Removable] as Default SD Drive"}));
            QCOMPARE(form.Drive1.Drive(), QStringLiteral("/media/b/"));
            QCOMPARE(form.txt_Vol_Label.text, QStringLiteral("CARD"));
            QCOMPARE(form.txt_File_Sys_Name.text, QStringLiteral("FAT"));
            QCOMPARE(form.txt_Volume_Comp.text, QStringLiteral("False"));
            form.cmd_OK_Click();
        }
        QCOMPARE(m.sddrivechosen, std::int16_t(0));
        QCOMPARE(m.sddrivepath, QStringLiteral("/media/b//"));

        dialogs.said.clear();
        {
            SdSetting form(m, dialogs, queries);
            form.Form_Load();
            form.Drive1_Change(0);
            form.cmd_Cancel_Click();
        }
        QCOMPARE(m.sddrivepath, QStringLiteral("/media/b/"));
        {
            SdSetting form(m, dialogs, queries);
            form.Form_Load();
            form.Drive1_Change(-1, home.path());
            form.cmd_OK_Click();
        }
        QCOMPARE(m.sddrivechosen, std::int16_t(1));
        QCOMPARE(m.sddrivepath, home.path() + QStringLiteral("//"));
        dialogs.said.clear();
        SdSetting again(m, dialogs, queries);
        again.Form_Load();
        QCOMPARE(dialogs.texts(),
                 QStringList{"message: User Setted '" + m.sddrivepath + "'as Default SD Drive"});
        QCOMPARE(again.Drive1.items,
                 (QStringList{"/", "/media/a/", "/media/b/", home.path() + u'/'}));
        again.cmd_OK_Click();
        QCOMPARE(m.sddrivechosen, std::int16_t(1));
        QCOMPARE(m.sddrivepath, home.path() + QStringLiteral("//"));
    }

    void settingShowsEmptyDrives_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("label");
        QTest::newRow("floppy") << int(driveRemovable) << "[Disk Not Present]";
        QTest::newRow("cd") << int(driveCdrom) << "[Disc Not Present]";
        QTest::newRow("fixed") << int(driveFixed) << "";
    }
    void settingShowsEmptyDrives() {
        QFETCH(int, type);
        QFETCH(QString, label);
        FakeDriveQueries::Drive empty;
        empty.type = type;
        empty.present = false;
        queries.add(QStringLiteral("/"), FakeDriveQueries::Drive{});
        queries.add(QStringLiteral("/media/empty/"), empty);
        SdSetting form(m, dialogs, queries);
        form.Form_Load();
        form.Drive1_Change(1);
        QCOMPARE(form.txt_Vol_Label.text, label);
        QCOMPARE(form.txt_Tot_Space.text, QString());
        QCOMPARE(form.txt_Drive_Type.text, CDriveInfo::driveTypeText(type));
    }

    void bootSectorOfFormattedImage() {
        if (QStandardPaths::findExecutable(QStringLiteral("mformat")).isEmpty()) {
            QSKIP("mtools is not installed (scripts/setup installs it)");
        }
        const QString image = home.file(QStringLiteral("card.img"));
        {
            QFile f(image);
            QVERIFY(f.open(QIODevice::WriteOnly));
            QVERIFY(f.resize(32 * 1024 * 1024));
        }
        QProcess mformat;
        mformat.start(QStringLiteral("mformat"),
                      {QStringLiteral("-i"), image, QStringLiteral("-v"),
                       QStringLiteral("SCALELOG"), QStringLiteral("-N"), QStringLiteral("1a2b3c4d"),
                       QStringLiteral("::")});
        QVERIFY(mformat.waitForFinished());
        QCOMPARE(mformat.exitCode(), 0);
        const std::optional<FatVolume> volume = readFatBootSector(image);
        QVERIFY(volume);
        QCOMPARE(volume->fileSystem, QStringLiteral("FAT"));
        QCOMPARE(volume->label, QStringLiteral("SCALELOG"));
        QCOMPARE(volume->serialNumber, 0x1a2b3c4dU);
        QVERIFY(!parseFatBootSector(QByteArray(512, '\0')));
    }

    void drivesFromMountInfo() {
        const QString info = home.file(QStringLiteral("mountinfo"));
        QFile f(info);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("21 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                "22 21 0:5 / /proc rw - proc proc rw\n"
                "23 21 0:20 / /sys rw - sysfs sysfs rw\n"
                "40 21 8:17 / /media/op/SCALE\\040LOG rw,nosuid shared:9 - vfat /dev/sdb1 rw\n"
                "41 21 0:44 / /mnt/share rw - nfs4 server:/export rw\n"
                "42 21 0:45 / /run/user/1000 rw - tmpfs tmpfs rw\n"
                "43 21 11:0 / /media/cd ro - iso9660 /dev/sr0 ro\n");
        f.close();
        LinuxDriveQueries linux({info, home.path(), home.path(), home.path()});
        QCOMPARE(linux.roots(),
                 (QStringList{"/", "/media/op/SCALE LOG/", "/mnt/share/", "/media/cd/"}));
        QCOMPARE(linux.driveType(home.path() + QStringLiteral("/absent/")),
                 std::int32_t(driveNoRootDir));
        QCOMPARE(linux.driveType(QStringLiteral("/")), std::int32_t(driveFixed));
    }
};

QTEST_GUILESS_MAIN(SdMemoryTest)
#include "test_sdmemory.moc"
