// cfg.txt, the data path chooser, value conversions and the one-line message form.
#include "RecordingDialogs.h"
#include "TempHome.h"
#include "core/AppHome.h"
#include "core/CfgTxt.h"
#include "core/Conversions.h"
#include "core/FatalError.h"
#include "core/Getdatapath.h"
#include "core/Module1.h"

#include <QDir>
#include <QTest>

using namespace stellwyn::core;
using stellwyn::testsupport::RecordingDialogs;
using stellwyn::testsupport::TempHome;

namespace {
const QString wrongPath = QStringLiteral(
    "message: That path is not correct. Please select the drive and directory where svdata.mdb "
    "is located.");
const QString cancelQuestion =
    QStringLiteral("question: Cancel Changes: Cancel changes and exit. Are you sure?");
} // namespace

class StartupFiles : public QObject {
    Q_OBJECT
private slots:
    void cfgFirstField_data();
    void cfgFirstField();
    void cfgMissingFileReadsNothing();
    void chooser_okay_data();
    void chooser_okay();
    void chooser_cancel_data();
    void chooser_cancel();
    void conversions_data();
    void conversions();
    void oneLine_data();
    void oneLine();
};

void StartupFiles::cfgFirstField_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("field");
    QTest::newRow("plain line") << QByteArray("/srv/scales\n") << "/srv/scales";
    QTest::newRow("cut at a comma") << QByteArray("/srv/a,b\n") << "/srv/a";
    QTest::newRow("blanks around") << QByteArray("  /srv/x  \r\n") << "/srv/x";
    QTest::newRow("quoted keeps its comma") << QByteArray("\"/srv/a,b\"\n") << "/srv/a,b";
    QTest::newRow("only the first line") << QByteArray("/one\n/two\n") << "/one";
    QTest::newRow("empty file") << QByteArray() << "";
    const QByteArray endless = '/' + QByteArray(1 << 20, 'a');
    QTest::newRow("a megabyte with no line end, read as far as a path goes")
        << endless << QString::fromLatin1(endless.left(cfgtxt::kLongestLine));
}

void StartupFiles::cfgFirstField() {
    QFETCH(QByteArray, file);
    QFETCH(QString, field);
    TempHome home;
    home.write(QStringLiteral("cfg.txt"), file);
    QCOMPARE(cfgtxt::readFirstField(home.file(QStringLiteral("cfg.txt"))), field);
}

void StartupFiles::cfgMissingFileReadsNothing() {
    TempHome home;
    QVERIFY(!cfgtxt::readFirstField(home.file(QStringLiteral("cfg.txt"))).has_value());
    QVERIFY(cfgtxt::write(home.file(QStringLiteral("cfg.txt")), QStringLiteral("/data")));
    QCOMPARE(home.read(QStringLiteral("cfg.txt")), QByteArray("/data\n"));
}

void StartupFiles::chooser_okay_data() {
    QTest::addColumn<bool>("withDatabase");
    QTest::addColumn<bool>("trailingSlash");
    QTest::newRow("folder without the data file") << false << false;
    QTest::newRow("folder with the data file") << true << false;
    QTest::newRow("trailing separator is dropped") << true << true;
}

void StartupFiles::chooser_okay() {
    QFETCH(bool, withDatabase);
    QFETCH(bool, trailingSlash);
    TempHome program;
    TempHome data;
    program.write(QStringLiteral("cfg.txt"), "/before\n");
    if (withDatabase) {
        data.write(QStringLiteral("svdata.mdb"), "x");
    }
    Module1 m;
    RecordingDialogs dialogs;
    const AppHome home(program.path());
    Getdatapath chooser(m, dialogs, home);
    QCOMPARE(chooser.label1(), program.path());
    chooser.Dir1_Change(data.path() + (trailingSlash ? QStringLiteral("/") : QString()));
    QCOMPARE(chooser.label1(), data.path() + (trailingSlash ? QStringLiteral("/") : QString()));
    chooser.Command1_Click();

    QCOMPARE(m.datapath, data.path());
    if (withDatabase) {
        QVERIFY(dialogs.said.isEmpty());
        QVERIFY(chooser.unloaded());
        QCOMPARE(program.read(QStringLiteral("cfg.txt")), data.path().toLocal8Bit() + '\n');
    } else {
        QCOMPARE(dialogs.said, QStringList{wrongPath});
        QVERIFY(!chooser.unloaded());
        QCOMPARE(program.read(QStringLiteral("cfg.txt")), QByteArray("/before\n"));
    }
}

void StartupFiles::chooser_cancel_data() {
    QTest::addColumn<bool>("yes");
    QTest::newRow("No stays") << false;
    QTest::newRow("Yes leaves cfg.txt alone") << true;
}

void StartupFiles::chooser_cancel() {
    QFETCH(bool, yes);
    TempHome program;
    TempHome data;
    data.write(QStringLiteral("svdata.mdb"), "x");
    program.write(QStringLiteral("cfg.txt"), "/before\n");
    Module1 m;
    RecordingDialogs dialogs;
    dialogs.answers = {yes};
    const AppHome home(program.path());
    Getdatapath chooser(m, dialogs, home);
    chooser.Dir1_Change(data.path());
    chooser.Command2_Click();
    QCOMPARE(dialogs.said, QStringList{cancelQuestion});
    QCOMPARE(chooser.unloaded(), yes);
    QCOMPARE(program.read(QStringLiteral("cfg.txt")), QByteArray("/before\n"));
}

void StartupFiles::conversions_data() {
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QVariant>("expected"); // invalid: the conversion is fatal

    QTest::newRow("int16 from text") << QVariant(QStringLiteral("2")) << "int16" << QVariant(2);
    QTest::newRow("int16 rounds half to even") << QVariant(2.5) << "int16" << QVariant(2);
    QTest::newRow("int16 -1 stays") << QVariant(-1) << "int16" << QVariant(-1);
    QTest::newRow("int16 overflow") << QVariant(40000) << "int16" << QVariant();
    QTest::newRow("int16 null") << QVariant() << "int16" << QVariant();
    QTest::newRow("int16 letters") << QVariant(QStringLiteral("one")) << "int16" << QVariant();
    QTest::newRow("double with a leading point")
        << QVariant(QStringLiteral(".33")) << "double" << QVariant(0.33);
    QTest::newRow("double with a comma is not a number")
        << QVariant(QStringLiteral("0,33")) << "double" << QVariant();
    QTest::newRow("bool any non-zero is true") << QVariant(1) << "bool" << QVariant(-1);
    QTest::newRow("bool zero") << QVariant(0) << "bool" << QVariant(0);
    QTest::newRow("text from a number") << QVariant(3) << "text" << QVariant(QStringLiteral("3"));
    QTest::newRow("text null") << QVariant() << "text" << QVariant();
}

void StartupFiles::conversions() {
    QFETCH(QVariant, value);
    QFETCH(QString, kind);
    QFETCH(QVariant, expected);
    const QString field = QStringLiteral("field");
    auto convert = [&]() -> QVariant {
        if (kind == u"int16") {
            return toInt16(value, field);
        }
        if (kind == u"double") {
            return toDouble(value, field);
        }
        if (kind == u"bool") {
            return toBool16(value, field);
        }
        return toText(value, field);
    };
    if (!expected.isValid()) {
        try {
            convert();
            QFAIL("conversion should have been fatal");
        } catch (const FatalError& error) {
            QVERIFY(error.text().contains(field));
        }
        return;
    }
    QCOMPARE(convert().toString(), expected.toString());
}

void StartupFiles::oneLine_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("line");
    QTest::newRow("plain") << "abc"
                           << "abc";
    QTest::newRow("CR") << "a\rb"
                        << "a\\nb";
    QTest::newRow("LF") << "a\nb"
                        << "a\\nb";
    QTest::newRow("CR LF is one break") << "a\r\nb"
                                        << "a\\nb";
    QTest::newRow("leading CR") << "\r x"
                                << "\\n x";
}

void StartupFiles::oneLine() {
    QFETCH(QString, text);
    QFETCH(QString, line);
    QCOMPARE(UnattendedDialogs::oneLine(text), line);
}

QTEST_GUILESS_MAIN(StartupFiles)
#include "test_startup_files.moc"
