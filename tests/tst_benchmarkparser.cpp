#include "probes/benchmarkparser.h"
#include "probes/benchmarktool.h"
#include "tests/support/testbase.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>

namespace {

constexpr float infinite = std::numeric_limits<float>::infinity();

/// What the tool prints on a machine with 16 cores.
QByteArray recordedOutput(const QByteArray &lineEnd)
{
    const QList<QByteArray> lines{
        "NDI Benchmark",          "Preparing : 16 CPU cores detected.",        "",     "Testing : 1920x1080 UYVY",
        "  1 stream : 412.7 fps", "**** Results : 38.5 Streams of 1080p ****", "Done."};
    return lines.join(lineEnd) + lineEnd;
}

/// Folders and environment of a run of the stand-in; the environment is as before when it is gone.
class StandIn final {
public:
    StandIn() : m_pathBefore(qgetenv("PATH")) {}
    ~StandIn()
    {
        qputenv("PATH", m_pathBefore);
        for (const char *name : {"OUTPUT", "ERRORS", "STATUS", "HANG"})
            qunsetenv(QByteArray("VEXA_STANDIN_") + name);
    }
    Q_DISABLE_COPY_MOVE(StandIn)

    QString folder(const QString &name) const
    {
        QDir(m_root.path()).mkpath(name);
        return m_root.filePath(name);
    }
    /// Puts the stand-in there under the tool's name and returns its path.
    QString installIn(const QString &name) const
    {
        const QString path = QDir(folder(name)).filePath(benchmarkToolName());
        return QFile::copy(QStringLiteral(VEXA_STANDIN_BENCHMARK), path) ? path : QString();
    }
    void prints(const char *stream, const QByteArray &text) const
    {
        const QString path = m_root.filePath(QLatin1String(stream));
        QFile file(path);
        if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size())
            qputenv((QByteArray("VEXA_STANDIN_") + stream).constData(), QDir::toNativeSeparators(path).toLocal8Bit());
    }

private:
    QTemporaryDir m_root;
    QByteArray m_pathBefore;
};

} // namespace

class TestBenchmarkParser final : public TestBase {
    Q_OBJECT

private slots:
    void parse_data();
    void parse();
    void wholeStreams_data();
    void wholeStreams();
    void rating_data();
    void rating();
    void nameOfTheTool();
    void ownFolderComesFirst();
    void searchPathComesSecond();
    void nowhere();
    void runs_data();
    void runs();
    void errorsAreReadToo();
    void hangingToolIsEnded();
    void missingToolSaysNothing();
    void fileThatIsNoProgramSaysNothing();
};

void TestBenchmarkParser::parse_data()
{
    QTest::addColumn<QString>("output");
    QTest::addColumn<int>("cores");
    QTest::addColumn<float>("streams");
    const auto row = [](const char *name, const QString &output, int cores, float streams) {
        QTest::newRow(name) << output << cores << streams;
    };
    row("nothing", QString(), 0, 0.0F);
    row("empty lines", QStringLiteral("\n\r\n  \n"), 0, 0.0F);
    row("a whole report", QString::fromLatin1(recordedOutput("\n")), 16, 38.5F);
    row("with the line ends of Windows", QString::fromLatin1(recordedOutput("\r\n")), 16, 38.5F);
    row("cores", QStringLiteral("Preparing : 16 CPU cores detected."), 16, 0.0F);
    row("one core", QStringLiteral("Preparing : 1 CPU cores detected."), 1, 0.0F);
    row("cores between blanks", QStringLiteral(" \tPreparing : 8 CPU cores detected. \r\n"), 8, 0.0F);
    row("cores without the words behind", QStringLiteral("Preparing : 12"), 12, 0.0F);
    row("negative cores", QStringLiteral("Preparing : -4 CPU cores detected."), -4, 0.0F);
    row("marks several times", QStringLiteral("Preparing : Preparing : 6 CPU cores detected. CPU cores detected."), 6,
        0.0F);
    row("no number of cores", QStringLiteral("Preparing : many CPU cores detected."), 0, 0.0F);
    row("half a core", QStringLiteral("Preparing : 1.5 CPU cores detected."), 0, 0.0F);
    row("hexadecimal cores", QStringLiteral("Preparing : 0x10 CPU cores detected."), 0, 0.0F);
    row("the largest number of cores", QStringLiteral("Preparing : 2147483647 CPU cores detected."), 2147483647, 0.0F);
    row("one more", QStringLiteral("Preparing : 2147483648 CPU cores detected."), 0, 0.0F);
    row("another case of letters", QStringLiteral("preparing : 16 CPU cores detected."), 0, 0.0F);
    row("not at the beginning", QStringLiteral("* Preparing : 16 CPU cores detected."), 0, 0.0F);
    row("no blank before the colon", QStringLiteral("Preparing: 16 CPU cores detected."), 0, 0.0F);
    row("nothing behind the mark", QStringLiteral("Preparing : \n"), 0, 0.0F);
    row("the last line with cores counts", QStringLiteral("Preparing : 16\nPreparing : 4\n"), 4, 0.0F);
    row("also when it does not read", QStringLiteral("Preparing : 16\nPreparing : x\n"), 0, 0.0F);
    row("streams", QStringLiteral("**** Results : 38.5 Streams of 1080p ****"), 0, 38.5F);
    row("whole streams", QStringLiteral("**** Results : 51 Streams of 1080p ****"), 0, 51.0F);
    row("an exponent", QStringLiteral("**** Results : 1.5e2 Streams of 1080p ****"), 0, 150.0F);
    row("negative streams", QStringLiteral("**** Results : -3.5 Streams of 1080p ****"), 0, -3.5F);
    row("decimal comma", QStringLiteral("**** Results : 38,5 Streams of 1080p ****"), 0, 0.0F);
    row("at the beginning of the line", QStringLiteral("Results : 38.5 Streams of 1080p ****"), 0, 0.0F);
    row("at the beginning, behind blanks", QStringLiteral("   Results : 38.5 Streams of 1080p ****"), 0, 0.0F);
    row("at the beginning, it does not even spoil an earlier one",
        QStringLiteral("**** Results : 38.5 Streams of 1080p ****\nResults : 7\n"), 0, 38.5F);
    row("behind one character, which stays", QStringLiteral("1Results : 38.5"), 0, 0.0F);
    row("other stars", QStringLiteral("** Results : 38.5 Streams of 1080p **"), 0, 0.0F);
    row("another case of the results", QStringLiteral("**** results : 38.5 Streams of 1080p ****"), 0, 0.0F);
    row("the last line with streams counts",
        QStringLiteral("**** Results : 38.5 Streams of 1080p ****\n**** Results : 12.25 Streams of 1080p ****"), 0,
        12.25F);
    row("a later one that does not read", QStringLiteral("**** Results : 38.5 Streams of 1080p ****\n* Results : none"),
        0, 0.0F);
    row("both in a line: the cores' line", QStringLiteral("Preparing : 5 Results : 7"), 0, 0.0F);
    row("a line cut off", QStringLiteral("Preparing : 16 CPU cores detected.\n**** Results : 38."), 16, 38.0F);
    row("a null character", QStringLiteral("Preparing : 16").append(QChar(0)), 0, 0.0F);
}

void TestBenchmarkParser::parse()
{
    QFETCH(QString, output);
    const BenchmarkReport report = parseBenchmarkOutput(output);
    QTEST(report.cores, "cores");
    QTEST(report.streams, "streams");
}

void TestBenchmarkParser::wholeStreams_data()
{
    QTest::addColumn<float>("streams");
    QTest::addColumn<int>("expected");
    QTest::newRow("nothing") << 0.0F << 0;
    QTest::newRow("25.9 is 25") << 25.9F << 25;
    QTest::newRow("26") << 26.0F << 26;
    QTest::newRow("50.99 is 50") << 50.99F << 50;
    QTest::newRow("51") << 51.0F << 51;
    QTest::newRow("towards zero") << -3.9F << -3;
    QTest::newRow("the last below the largest int") << 2147483520.0F << 2147483520;
    QTest::newRow("the first above it") << 2147483648.0F << std::numeric_limits<int>::max();
    QTest::newRow("the smallest int") << -2147483648.0F << std::numeric_limits<int>::min();
    QTest::newRow("below it") << -3e9F << std::numeric_limits<int>::min();
    QTest::newRow("infinite") << infinite << std::numeric_limits<int>::max();
    QTest::newRow("infinite below zero") << -infinite << std::numeric_limits<int>::min();
    QTest::newRow("not a number") << std::numeric_limits<float>::quiet_NaN() << 0;
}

void TestBenchmarkParser::wholeStreams()
{
    QFETCH(float, streams);
    BenchmarkReport report;
    report.streams = streams;
    QTEST(report.wholeStreams(), "expected");
}

void TestBenchmarkParser::rating_data()
{
    QTest::addColumn<int>("streams");
    QTest::addColumn<int>("expected");
    QTest::newRow("negative") << -1 << int(BenchmarkRating::Low);
    QTest::newRow("none") << 0 << int(BenchmarkRating::Low);
    QTest::newRow("25") << 25 << int(BenchmarkRating::Low);
    QTest::newRow("26") << 26 << int(BenchmarkRating::Medium);
    QTest::newRow("50") << 50 << int(BenchmarkRating::Medium);
    QTest::newRow("51") << 51 << int(BenchmarkRating::High);
    QTest::newRow("very many") << 100000 << int(BenchmarkRating::High);
}

void TestBenchmarkParser::rating()
{
    QFETCH(int, streams);
    QTEST(int(rateStreams(streams)), "expected");
}

void TestBenchmarkParser::nameOfTheTool()
{
#ifdef Q_OS_WIN // the one thing that differs
    QCOMPARE(benchmarkToolName(), QStringLiteral("NDI Benchmark.exe"));
#else
    QCOMPARE(benchmarkToolName(), QStringLiteral("ndi-benchmark"));
#endif
    QCOMPARE(benchmarkTimeoutMs, 30000);
}

void TestBenchmarkParser::ownFolderComesFirst()
{
    const StandIn standIn;
    const QString own = standIn.installIn(QStringLiteral("own"));
    QVERIFY(!standIn.installIn(QStringLiteral("on the path")).isEmpty());
    qputenv("PATH", QDir::toNativeSeparators(standIn.folder(QStringLiteral("on the path"))).toLocal8Bit());
    QCOMPARE(findBenchmarkTool(standIn.folder(QStringLiteral("own")), benchmarkToolName()), own);
}

void TestBenchmarkParser::searchPathComesSecond()
{
    const StandIn standIn;
    const QString onPath = standIn.installIn(QStringLiteral("on the path"));
    qputenv("PATH", QDir::toNativeSeparators(standIn.folder(QStringLiteral("on the path"))).toLocal8Bit());
    QCOMPARE(findBenchmarkTool(standIn.folder(QStringLiteral("empty")), benchmarkToolName()), onPath);
    QCOMPARE(findBenchmarkTool(QString(), benchmarkToolName()), onPath);
}

void TestBenchmarkParser::nowhere()
{
    const StandIn standIn;
    QVERIFY(!standIn.installIn(QStringLiteral("working folder")).isEmpty());
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(standIn.folder(QStringLiteral("working folder"))));
    qputenv("PATH", QDir::toNativeSeparators(standIn.folder(QStringLiteral("nothing here"))).toLocal8Bit());
    const QString found = findBenchmarkTool(standIn.folder(QStringLiteral("empty")), benchmarkToolName());
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(found, QString()); // what lies in the working folder is not started
}

void TestBenchmarkParser::runs_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QByteArray>("status");
    QTest::newRow("a report") << recordedOutput("\n") << QByteArray("0");
    QTest::newRow("a report and a failure") << recordedOutput("\r\n") << QByteArray("3");
    QTest::newRow("nothing") << QByteArray() << QByteArray("0");
    QTest::newRow("more than a pipe holds") << QByteArray("a line of the report\n").repeated(20000) << QByteArray("0");
}

void TestBenchmarkParser::runs()
{
    QFETCH(QByteArray, output);
    QFETCH(QByteArray, status);
    const StandIn standIn;
    const QString tool = standIn.installIn(QStringLiteral("a folder with blanks"));
    standIn.prints("OUTPUT", output);
    qputenv("VEXA_STANDIN_STATUS", status);
    QCOMPARE(runBenchmarkTool(tool, 20000), QString::fromLatin1(output));
}

void TestBenchmarkParser::errorsAreReadToo()
{
    const StandIn standIn;
    const QString tool = standIn.installIn(QStringLiteral("tool"));
    standIn.prints("OUTPUT", "Preparing : 16 CPU cores detected.\n");
    standIn.prints("ERRORS", "**** Results : 38.5 Streams of 1080p ****\n");
    const BenchmarkReport report = parseBenchmarkOutput(runBenchmarkTool(tool, 20000));
    QCOMPARE(report.cores, 16);
    QCOMPARE(report.streams, 38.5F);
}

void TestBenchmarkParser::hangingToolIsEnded()
{
    const StandIn standIn;
    const QString tool = standIn.installIn(QStringLiteral("tool"));
    standIn.prints("OUTPUT", recordedOutput("\n"));
    qputenv("VEXA_STANDIN_HANG", "1");
    QElapsedTimer clock;
    clock.start();
    // Long enough that it has printed its report, also on a busy machine.
    const QString output = runBenchmarkTool(tool, 3000);
    const qint64 tookMs = clock.elapsed();
    QCOMPARE(output, QString::fromLatin1(recordedOutput("\n")));
    QVERIFY2(tookMs >= 2900 && tookMs < 10000, qPrintable(QString::number(tookMs)));
}

void TestBenchmarkParser::missingToolSaysNothing()
{
    const StandIn standIn;
    QCOMPARE(runBenchmarkTool(QString(), 20000), QString());
    QCOMPARE(runBenchmarkTool(standIn.folder(QStringLiteral("empty")) + QStringLiteral("/none"), 20000), QString());
}

void TestBenchmarkParser::fileThatIsNoProgramSaysNothing()
{
    const StandIn standIn;
    const QString path = QDir(standIn.folder(QStringLiteral("tool"))).filePath(benchmarkToolName());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write("\x01\x02 no program") > 0);
    file.close();
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(runBenchmarkTool(path, 20000), QString());
}

QTEST_GUILESS_MAIN(TestBenchmarkParser)

#include "tst_benchmarkparser.moc"
