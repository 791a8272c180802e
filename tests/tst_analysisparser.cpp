#include "probes/analysisparser.h"
#include "probes/analysistool.h"
#include "tests/support/testbase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

namespace {

constexpr double none = -1.0; // no such value is ever reported

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QStringList texts(std::initializer_list<const char *> list)
{
    QStringList strings;
    for (const char *utf8 : list)
        strings.append(text(utf8));
    return strings;
}

} // namespace

class TestAnalysisParser final : public TestBase {
    Q_OBJECT

private slots:
    void dataRate_data();
    void dataRate();
    void receiveTime_data();
    void receiveTime();
    void bothInOneLine();
    void timeStamp_data();
    void timeStamp();
    void lines_data();
    void lines();
    void toolOrder();
    void searchPath();
    void firstProgram();
};

void TestAnalysisParser::dataRate_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<double>("rate");
    const auto row = [](const char *title, const char *line, double rate) {
        QTest::newRow(title) << text(line) << rate;
    };
    row("a plain line", "12:01:02.345: Video data rate (MBps) Min=6.1, Max=7.2, Avg=6.7975", 6.7975);
    row("blanks and a carriage return around the value", "12:01:02.345: Video data rate (MBps) Avg=  6.5 \t\r", 6.5);
    row("exponent", "12:01:02.345: Video data rate (MBps) Avg=1.5e1", 15.0);
    row("text behind the value", "12:01:02.345: Video data rate (MBps) Avg=6.5 MB", none);
    row("another value behind it", "12:01:02.345: Video data rate (MBps) Avg=6.5, Max=7", none);
    row("the first Avg= counts", "12:01:02.345: Video data rate (MBps) Avg=6.5 Avg=7.5", none);
    row("Avg= before the name", "12:01:02.345: Avg=6.5 Video data rate (MBps)", none);
    row("decimal comma", "12:01:02.345: Video data rate (MBps) Avg=6,5", none);
    row("zero", "12:01:02.345: Video data rate (MBps) Avg=0", none);
    row("below zero", "12:01:02.345: Video data rate (MBps) Avg=-1", none);
    row("just above zero", "12:01:02.345: Video data rate (MBps) Avg=0.001", 0.001);
    row("no number", "12:01:02.345: Video data rate (MBps) Avg=nan", none);
    row("nothing behind Avg=", "12:01:02.345: Video data rate (MBps) Avg=", none);
    row("no Avg=", "12:01:02.345: Video data rate (MBps) Max=6.5", none);
    row("avg= in small letters", "12:01:02.345: Video data rate (MBps) avg=6.5", none);
    row("other capitals", "12:01:02.345: video data rate (MBps) Avg=6.5", none);
    row("audio", "12:01:02.345: Audio data rate (MBps) Avg=6.5", none);
    row("no time", "Video data rate (MBps) Avg=6.5", none);
    row("no blank after the time", "12:01:02.345:Video data rate (MBps)\tAvg=6.5", none);
    row("newer generation", "12:01:02.345: Video data rate (Mbps) Avg=54.38", 6.7975);
    row("newer generation, one bit", "12:01:02.345: Video data rate (Mbps) Avg=0.000001", 0.000000125);
    row("newer generation, zero", "12:01:02.345: Video data rate (Mbps) Avg=0", none);
    row("newer generation, text behind the value", "12:01:02.345: Video data rate (Mbps) Avg=54.38 Mbps", none);
    row("a third unit", "12:01:02.345: Video data rate (mbps) Avg=54.38", none);
    row("both units: the older rule", "12:01:02.345: Video data rate (Mbps) Video data rate (MBps) Avg=54.38", 54.38);
    row("empty", "", none);
}

void TestAnalysisParser::dataRate()
{
    QFETCH(QString, line);
    QFETCH(double, rate);
    const AnalysisLine parsed = parseAnalysisLine(line);
    QVERIFY(!parsed.receiveTime);
    QCOMPARE(parsed.dataRate ? parsed.dataRate->megabytesPerSecond : none, rate);
    QCOMPARE(parsed.dataRate ? parsed.dataRate->time : QTime(12, 1, 2, 345), QTime(12, 1, 2, 345));
}

void TestAnalysisParser::receiveTime_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<double>("average");
    const auto row = [](const char *title, const char *line, double minimum, double maximum, double average) {
        QTest::newRow(title) << text(line) << minimum << maximum << average;
    };
    row("a plain line", "12:01:02.345: Video recv (mS) Min=0.25 Max=9.75 Avg=1.5", 0.25, 9.75, 1.5);
    row("another order", "12:01:02.345: Video recv (mS) Avg=1.5 Min=0.25 Max=9.75", 0.25, 9.75, 1.5);
    row("text behind", "12:01:02.345: Video recv (mS) Min=0.25 Max=9.75 Avg=1.5 frames", 0.25, 9.75, 1.5);
    row("all zero", "12:01:02.345: Video recv (mS) Min=0 Max=0 Avg=0", 0.0, 0.0, 0.0);
    row("below zero", "12:01:02.345: Video recv (mS) Min=-1 Max=0 Avg=0", -1.0, 0.0, 0.0);
    row("commas belong to the values", "12:01:02.345: Video recv (mS) Min=0.25, Max=9.75, Avg=1.5", 0.0, 0.0, 1.5);
    row("a blank before a value", "12:01:02.345: Video recv (mS) Min= 0.25 Max=9.75 Avg=1.5", 0.0, 9.75, 1.5);
    row("the first of each key", "12:01:02.345: Video recv (mS) Min=1 Max=2 Avg=3 Min=4 Max=5 Avg=6", 1.0, 2.0, 3.0);
    row("keys within words", "12:01:02.345: Video recv (mS) xMin=1 xMax=2 xAvg=3", 1.0, 2.0, 3.0);
    row("a carriage return that nobody took away", "12:01:02.345: Video recv (mS) Min=1 Avg=3 Max=9.75\r", 1.0, 9.75,
        3.0);
    row("no Max=", "12:01:02.345: Video recv (mS) Min=1 Avg=3", none, none, none);
    row("no Min=", "12:01:02.345: Video recv (mS) Max=1 Avg=3", none, none, none);
    row("no Avg=", "12:01:02.345: Video recv (mS) Min=1 Max=3", none, none, none);
    row("no time", "at once: Video recv (mS) Min=1 Max=2 Avg=3", none, none, none);
    row("newer generation", "12:01:02.345: Video recv (ms) Min=0.25 Max=9.75 Avg=1.5", 0.25, 9.75, 1.5);
    row("a third unit", "12:01:02.345: Video recv (MS) Min=0.25 Max=9.75 Avg=1.5", none, none, none);
    row("sending", "12:01:02.345: Video send (mS) Min=0.25 Max=9.75 Avg=1.5", none, none, none);
}

void TestAnalysisParser::receiveTime()
{
    QFETCH(QString, line);
    const AnalysisLine parsed = parseAnalysisLine(line);
    QVERIFY(!parsed.dataRate);
    const AnalysisReceiveTime absent{QTime(12, 1, 2, 345), none, none, none};
    const AnalysisReceiveTime found = parsed.receiveTime.value_or(absent);
    QTEST(found.minMs, "minimum");
    QTEST(found.maxMs, "maximum");
    QTEST(found.averageMs, "average");
    QCOMPARE(found.time, QTime(12, 1, 2, 345));
}

void TestAnalysisParser::bothInOneLine()
{
    const AnalysisLine parsed =
        parseAnalysisLine(text("23:59:59.999: Video recv (mS) Min=1 Max=2 Video data rate (MBps) Avg=6.5"));
    QVERIFY(parsed.dataRate && parsed.receiveTime);
    QCOMPARE(parsed.dataRate->megabytesPerSecond, 6.5);
    QCOMPARE(parsed.receiveTime->averageMs, 6.5);
    QCOMPARE(parsed.receiveTime->time, QTime(23, 59, 59, 999));
}

void TestAnalysisParser::timeStamp_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QTime>("time");
    QTest::newRow("the usual") << text("12:01:02.345: x") << QTime(12, 1, 2, 345);
    QTest::newRow("nothing behind the blank") << text("12:01:02.345: ") << QTime(12, 1, 2, 345);
    QTest::newRow("midnight") << text("00:00:00.000: x") << QTime(0, 0);
    QTest::newRow("no blank") << text("12:01:02.345:") << QTime();
    QTest::newRow("a tab") << text("12:01:02.345:\tx") << QTime();
    QTest::newRow("a blank first") << text(" 12:01:02.345: x") << QTime();
    QTest::newRow("no colon at the end") << text("12:01:02.345 x") << QTime();
    QTest::newRow("no milliseconds") << text("12:01:02: x") << QTime();
    QTest::newRow("hour 24") << text("24:01:02.345: x") << QTime();
    QTest::newRow("minute 60") << text("12:60:02.345: x") << QTime();
    QTest::newRow("second 60") << text("12:01:60.345: x") << QTime();
    QTest::newRow("words") << text("Avg=1 x") << QTime();
    QTest::newRow("empty") << QString() << QTime();
}

void TestAnalysisParser::timeStamp()
{
    QFETCH(QString, line);
    QTEST(analysisTimeStamp(line), "time");
}

void TestAnalysisParser::lines_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("nothing") << QByteArray() << QStringList();
    QTest::newRow("LF") << QByteArray("a\nb\n") << texts({"a", "b"});
    QTest::newRow("CR LF") << QByteArray("a\r\nb\r\n") << texts({"a", "b"});
    QTest::newRow("no line end at the end") << QByteArray("a\nb") << texts({"a", "b"});
    QTest::newRow("a CR without its LF at the end") << QByteArray("a\nb\r") << texts({"a", "b"});
    QTest::newRow("empty lines") << QByteArray("\n\na\n") << texts({"", "", "a"});
    QTest::newRow("CR inside") << QByteArray("a\rb\n") << texts({"a\rb"});
    QTest::newRow("other letters") << QByteArray("K\xc3\x96LN\n") << texts({"K\xc3\x96LN"});
}

void TestAnalysisParser::lines()
{
    QFETCH(QByteArray, output);
    QTEST(analysisLines(output), "lines");
}

void TestAnalysisParser::toolOrder()
{
    const QString ndi4 = text("c:\\Program Files\\NewTek\\NDI 4 Analysis BETA\\x64\\NDIAnalysis.exe");
    const QString ndi5 = text("c:\\Program Files\\NDI\\NDI 5 Analysis BETA\\x64\\NDIAnalysis.exe");
    const QString ndi6 = text("c:\\Program Files\\NDI\\NDI 6 Tools\\Analysis\\NDIAnalysis.exe");
    const QString found = text("d:\\tools\\NDIAnalysis.exe");
    const QString root = text("d:\\NDIAnalysis.exe");
    const QStringList folders = texts({"d:\\tools", "d:\\"});
    QCOMPARE(windowsAnalysisToolsForRun(folders), (QStringList{ndi5, ndi4, ndi6, found, root}));
    QCOMPARE(windowsAnalysisToolsForCheck(folders), (QStringList{ndi4, ndi5, ndi6, found, root}));
    QCOMPARE(linuxAnalysisTools(text("/opt/vexa"), texts({"/usr/bin", "/"})),
             texts({"/opt/vexa/NDIAnalysis", "/usr/bin/NDIAnalysis", "/NDIAnalysis"}));
    const QString relay = analysisRelayName();
    QCOMPARE(analysisRelays(text("/opt/vexa"), texts({"/usr/bin"})),
             (QStringList{text("/opt/vexa/") + relay, text("/usr/bin/") + relay}));
}

void TestAnalysisParser::searchPath()
{
    QCOMPARE(searchPathFolders(text("/usr/bin::.:bin:/opt/a b:/x\"y"), QLatin1Char(':')),
             texts({"/usr/bin", "/opt/a b"}));
    QCOMPARE(searchPathFolders(
                 text("C:\\Windows;;.;bin;C:rel;/here;\\here;//server/share;\"D:\\a;b\";\"E:\\c d\";\\\\server\\share"),
                 QLatin1Char(';')),
             texts({"C:\\Windows", "E:\\c d", "\\\\server\\share"}));
    QCOMPARE(searchPathFolders(QString(), QLatin1Char(';')), QStringList());
}

void TestAnalysisParser::firstProgram()
{
    QTemporaryDir folder;
    const QString folderOfThatName = folder.filePath(text("a.exe"));
    const QString program = folder.filePath(text("b.exe"));
    const QString another = folder.filePath(text("c.exe"));
    QVERIFY(QDir().mkdir(folderOfThatName));
    for (const QString &path : {program, another}) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    QCOMPARE(firstProgramOf({folder.filePath(text("none.exe")), folderOfThatName, program, another}), program);
    QCOMPARE(firstProgramOf({another, program}), another);
    QCOMPARE(firstProgramOf({folderOfThatName}), QString());
    QCOMPARE(firstProgramOf({}), QString());
}

QTEST_APPLESS_MAIN(TestAnalysisParser)
#include "tst_analysisparser.moc"
