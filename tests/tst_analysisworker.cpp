#include "probes/analysistool.h"
#include "probes/analysisworker.h"
#include "tests/standin_analysis/hostilenames.h"
#include "tests/standin_analysis/workerrun.h"
#include "tests/support/testbase.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>

namespace {

constexpr int waitMs = 30000;
const QString commandFileName = QStringLiteral("NDIAnalysis.bat");
const QString noTool;

QByteArray rateLine(int second, const char *rate)
{
    return QByteArray("12:00:") + QByteArray::number(second) + ".000: Video data rate (MBps) Avg=" + rate + "\n";
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot open");
}

} // namespace

/// The worker, the relay and the stand-in tool together, and the file between them.
class TestAnalysisWorker final : public TestBase {
    Q_OBJECT

private slots:
    void commandFile_data();
    void commandFile();
    void commandFileIsMadeAnew();
    void commandFileIsNotWrittenThroughALink();
    void noNameNoFile();
    void withoutAToolTheFileIsEmpty();
    void anOlderFileIsNotRun();
    void noCommandNoRun();
    void relayIsFoundOnTheSearchPathOnly();
    void missingRelayEndsTheRun();
    void relayThatIsNoProgramEndsTheRun();
    void withoutAToolTheRunEnds();

    void samplesArriveWhileTheToolRuns();
    void bothGenerations();
    void splitLinesAreNotJoined();
    void byteByByte();
    void burstBeforeTheEnd();
    void lastLineWithoutLineEnd();
    void silentTool();
    void exitStatusDoesNotMatter();
    void muchOnStandardError();
    void hostileNames_data();
    void hostileNames();

    void quitDoesNotEndARun();
    void abortEndsASilentTool();
    void abortEndsAToolThatPrintsWithoutEnd();
    void abortBeforeTheRun();
    void readingOutsideOfARunDoesNothing();
    void twoRuns();
};

void TestAnalysisWorker::commandFile_data()
{
    QTest::addColumn<QString>("tool");
    QTest::addColumn<QString>("source");
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QByteArray>("expected");
    const QString tool = QStringLiteral("c:\\Program Files\\NDI\\NDI 5 Analysis BETA\\x64\\NDIAnalysis.exe");
    const QByteArray head = "\"c:\\Program Files\\NDI\\NDI 5 Analysis BETA\\x64\\NDIAnalysis.exe\" /source:\"";
    QTest::newRow("one minute") << tool << QStringLiteral("MACHINE (Camera 1)") << 60
                                << QByteArray(head + "MACHINE (Camera 1)\" /time:70");
    QTest::newRow("five minutes") << tool << QStringLiteral("A") << 300 << QByteArray(head + "A\" /time:310");
    QTest::newRow("a quotation mark stays")
        << tool << QStringLiteral("x\" & calc & \"") << 60 << QByteArray(head + "x\" & calc & \"\" /time:70");
    QTest::newRow("placeholders stay") << tool << QStringLiteral("%1 %2 %s %PATH%") << 60
                                       << QByteArray(head + "%1 %2 %s %PATH%\" /time:70");
    QTest::newRow("UTF-8") << tool << QString::fromUtf8("K\xc3\x96LN (\xe6\x9d\xb1\xe4\xba\xac \xf0\x9f\x8e\xa5)") << 60
                           << QByteArray(head + "K\xc3\x96LN (\xe6\x9d\xb1\xe4\xba\xac \xf0\x9f\x8e\xa5)\" /time:70");
    QTest::newRow("line ends stay") << tool << QStringLiteral("a\r\nb\n") << 60
                                    << QByteArray(head + "a\r\nb\n\" /time:70");
}

void TestAnalysisWorker::commandFile()
{
    WorkerRun run;
    QFETCH(QString, tool);
    QFETCH(QString, source);
    QFETCH(int, seconds);
    run.makeWorker(tool, QString());
    run.worker->createAnalysis(source, seconds);
    QTEST(contents(commandFileName), "expected");
}

void TestAnalysisWorker::commandFileIsMadeAnew()
{
    WorkerRun run;
    run.makeWorker(QStringLiteral("/t"), QString());
    run.worker->createAnalysis(QString(500, QLatin1Char('x')), 60);
    run.worker->createAnalysis(QStringLiteral("y"), 60);
    QCOMPARE(contents(commandFileName), QByteArray("\"/t\" /source:\"y\" /time:70"));
}

/// Somebody else puts links in the file's place again and again.
void TestAnalysisWorker::commandFileIsNotWrittenThroughALink()
{
#ifdef Q_OS_WIN
    QSKIP("only an administrator makes links there");
#endif
    WorkerRun run;
    const QString target = QStringLiteral("target");
    QFile file(target);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("mine");
    file.close();
    std::atomic<bool> isOver{false};
    std::thread linker([&] {
        while (!isOver)
            QFile::link(target, commandFileName);
    });
    run.makeWorker(QStringLiteral("/t"), QString());
    for (int i = 0; i < 2000; ++i)
        run.worker->createAnalysis(QStringLiteral("x"), 60);
    isOver = true;
    linker.join();
    QCOMPARE(contents(target), QByteArray("mine"));
}

void TestAnalysisWorker::noNameNoFile()
{
    WorkerRun run;
    run.makeWorker(QStringLiteral("/t"), QString());
    run.worker->createAnalysis(QString(), 60);
    QVERIFY(!QFile::exists(commandFileName));
}

void TestAnalysisWorker::withoutAToolTheFileIsEmpty()
{
    WorkerRun run;
    run.makeWorker(noTool, QString());
    run.worker->createAnalysis(QStringLiteral("x"), 60);
    QCOMPARE(contents(commandFileName), QByteArray());
}

void TestAnalysisWorker::anOlderFileIsNotRun()
{
    WorkerRun run;
    // A folder of that name: it can neither be removed nor opened, whoever runs the test.
    QVERIFY(QDir().mkdir(commandFileName));
    run.makeWorker(StandinControl::toolPath(), StandinControl::relayPath());
    run.worker->createAnalysis(QStringLiteral("x"), 60);
    QVERIFY(QDir().rmdir(commandFileName));
    QFile older(commandFileName);
    QVERIFY(older.open(QIODevice::WriteOnly));
    older.write(StandinControl::commandFile("older"));
    older.close();
    run.startThread();
    QVERIFY(run.waitForEnd()); // at once: the stand-in would wait for orders
}

void TestAnalysisWorker::noCommandNoRun()
{
    WorkerRun run;
    QFile older(commandFileName);
    QVERIFY(older.open(QIODevice::WriteOnly));
    older.write(StandinControl::commandFile("older"));
    older.close();
    run.makeWorker(StandinControl::toolPath(), StandinControl::relayPath());
    run.startThread();
    QVERIFY(run.waitForEnd());
}

void TestAnalysisWorker::relayIsFoundOnTheSearchPathOnly()
{
    WorkerRun run;
    const QByteArray searchPath = qgetenv("PATH");
    const QFileInfo relay(StandinControl::relayPath());
    QVERIFY(QFile::copy(relay.filePath(), relay.fileName())); // into the working folder
    qputenv("PATH", "." + QString(QDir::listSeparator()).toUtf8());
    const QString without = analysisRelay();
    qputenv("PATH", "." + QString(QDir::listSeparator()).toUtf8() + QDir::toNativeSeparators(relay.path()).toUtf8());
    const QString with = analysisRelay();
    qputenv("PATH", searchPath);
    QCOMPARE(without, QString());
    QCOMPARE(QFileInfo(with).canonicalFilePath(), relay.canonicalFilePath());
}

void TestAnalysisWorker::missingRelayEndsTheRun()
{
    WorkerRun run;
    for (const QString &relay : {QString(), run.folder() + QLatin1String("/pipe_stdout.exe")}) {
        run.makeWorker(StandinControl::toolPath(), relay);
        run.worker->createAnalysis(QStringLiteral("x"), 60);
        run.startThread();
        QVERIFY(run.waitForEnd());
    }
}

void TestAnalysisWorker::relayThatIsNoProgramEndsTheRun()
{
    WorkerRun run;
    const QString path = run.folder() + QLatin1String("/pipe_stdout.exe");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("no program\n");
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    file.close();
    run.makeWorker(StandinControl::toolPath(), path);
    run.worker->createAnalysis(QStringLiteral("x"), 60);
    run.startThread();
    QVERIFY(run.waitForEnd());
}

void TestAnalysisWorker::withoutAToolTheRunEnds()
{
    WorkerRun run;
    run.makeWorker(noTool, StandinControl::relayPath());
    run.worker->createAnalysis(QStringLiteral("x"), 60);
    run.startThread();
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.rates.count() + run.sizes.count(), 0);
}

void TestAnalysisWorker::samplesArriveWhileTheToolRuns()
{
    WorkerRun run;
    QVERIFY(run.start());
    run.tools->tell("out", "NDI Analysis\r\n\r\n12:01:02.345: Video data rate (MBps) Avg=6.5\r\n");
    QTRY_COMPARE_WITH_TIMEOUT(run.rates.count(), 1, waitMs);
    QCOMPARE(run.rates.constFirst(), (QVariantList{QTime(12, 1, 2, 345), 6.5}));
    QCOMPARE(run.sizes.count(), 0);
    run.tools->tell("out", "12:01:03.345: Video recv (mS) Min=0.25 Avg=1.5 Max=9.75\r\n");
    QTRY_COMPARE_WITH_TIMEOUT(run.sizes.count(), 1, waitMs);
    QCOMPARE(run.sizes.constFirst(), (QVariantList{QTime(12, 1, 3, 345), 0.25, 9.75, 1.5}));
    QCOMPARE(run.finishedCount, 0);
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.rates.count(), 1);
    QCOMPARE(run.sizes.count(), 1);
}

void TestAnalysisWorker::bothGenerations()
{
    WorkerRun run;
    QVERIFY(run.start());
    run.tools->tell("out", "12:00:01.000: Video data rate (MBps) Min=1, Max=9, Avg=6.7975\n"
                           "12:00:01.000: Video recv (mS) Min=1 Max=9 Avg=2\n"
                           "12:00:02.000: Video data rate (Mbps) Min=1, Max=99, Avg=54.38\n"
                           "12:00:02.000: Video recv (ms) Min=3 Max=8 Avg=4\n"
                           "12:00:03.000: Audio data rate (Mbps) Avg=1.5\n");
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.rateValues(), (QList<double>{6.7975, 6.7975}));
    QCOMPARE(run.sizes.count(), 2);
    QCOMPARE(run.sizes.at(0), (QVariantList{QTime(12, 0, 1), 1.0, 9.0, 2.0}));
    QCOMPARE(run.sizes.at(1), (QVariantList{QTime(12, 0, 2), 3.0, 8.0, 4.0}));
}

void TestAnalysisWorker::splitLinesAreNotJoined()
{
    WorkerRun run;
    QVERIFY(run.start());
    run.tools->tell("out", rateLine(10, "1") + "12:00:11.000: Video data rate (MB");
    QTRY_COMPARE_WITH_TIMEOUT(run.rates.count(), 1, waitMs);
    run.tools->tell("out", "ps) Avg=2\n" + rateLine(12, "3"));
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.rateValues(), (QList<double>{1.0, 3.0}));
}

void TestAnalysisWorker::byteByByte()
{
    WorkerRun run;
    QVERIFY(run.start());
    const QByteArray line = rateLine(10, "6.5");
    run.tools->tell("slow 1", line);
    QVERIFY(run.tools->waitUntilDone());
    run.tools->tell("out", rateLine(11, "7.5"));
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
    // The first line came in pieces and gives at most what one of its beginnings says.
    QCOMPARE(run.rateValues().constLast(), 7.5);
    QVERIFY(run.rates.count() <= 2);
    QVERIFY(run.rates.count() == 1 || run.rateValues().constFirst() == 6.0 || run.rateValues().constFirst() == 6.5);
}

void TestAnalysisWorker::burstBeforeTheEnd()
{
    WorkerRun run;
    QVERIFY(run.start());
    // So many bytes that reads split lines; whole blocks of lines come in each.
    run.tools->tell("repeat 20000", rateLine(10, "6.5"));
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
    QVERIFY2(run.rates.count() > 10000 && run.rates.count() <= 20000,
             QByteArray::number(run.rates.count()).constData());
    const QList<double> values = run.rateValues();
    QVERIFY(std::all_of(values.cbegin(), values.cend(), [](double value) { return value == 6.5 || value == 6.0; }));
}

void TestAnalysisWorker::lastLineWithoutLineEnd()
{
    WorkerRun run;
    QVERIFY(run.start());
    run.tools->tell("out", rateLine(10, "6.5").trimmed());
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.rateValues(), QList<double>{6.5});
}

void TestAnalysisWorker::silentTool()
{
    WorkerRun run;
    QVERIFY(run.start());
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.rates.count() + run.sizes.count(), 0);
}

void TestAnalysisWorker::exitStatusDoesNotMatter()
{
    WorkerRun run;
    QVERIFY(run.start());
    run.tools->tell("out", rateLine(10, "6.5"));
    run.tools->tell("exit 3");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.rateValues(), QList<double>{6.5});
}

void TestAnalysisWorker::muchOnStandardError()
{
    WorkerRun run;
    QVERIFY(run.start());
    run.tools->tell("err", QByteArray(200000, 'e') + rateLine(10, "1"));
    run.tools->tell("out", rateLine(11, "2"));
    QTRY_COMPARE_WITH_TIMEOUT(run.rates.count(), 1, waitMs);
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.rateValues(), QList<double>{2.0});
}

void TestAnalysisWorker::hostileNames_data()
{
    QTest::addColumn<QByteArray>("name");
    const QByteArrayList names = ::hostileNames();
    for (int i = 0; i < names.size(); ++i)
        QTest::addRow("name %d", i) << names.at(i);
}

void TestAnalysisWorker::hostileNames()
{
    WorkerRun run;
    QFETCH(QByteArray, name);
    QVERIFY(run.start(name));
    QCOMPARE(run.tools->arguments(), (QByteArrayList{"/source:" + name, "/time:70"}));
    run.tools->tell("out", rateLine(10, "6.5"));
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.rateValues(), QList<double>{6.5});
    QCOMPARE(QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{commandFileName});
    QCOMPARE(contents(commandFileName), StandinControl::commandFile(name));
}

void TestAnalysisWorker::quitDoesNotEndARun()
{
    WorkerRun run;
    QVERIFY(run.start());
    run.tools->tell("out", rateLine(10, "1"));
    QTRY_COMPARE_WITH_TIMEOUT(run.rates.count(), 1, waitMs);
    run.worker->quit();
    run.tools->tell("slow 10", QByteArray(50, '\n')); // longer than a wait of the worker
    QVERIFY(run.tools->waitUntilDone());
    run.tools->tell("out", rateLine(11, "2"));
    QTRY_COMPARE_WITH_TIMEOUT(run.rates.count(), 2, waitMs);
    QCOMPARE(run.finishedCount, 0);
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
}

void TestAnalysisWorker::abortEndsASilentTool()
{
    WorkerRun run;
    QVERIFY(run.start());
    QElapsedTimer timer;
    timer.start();
    run.worker->requestAbort();
    QVERIFY(run.waitForEnd());
    QVERIFY2(timer.elapsed() < 5000, QByteArray::number(timer.elapsed()).constData());
    QCOMPARE(run.finishedCount, 1);
    QVERIFY(run.tools->waitUntilGone());
}

void TestAnalysisWorker::abortEndsAToolThatPrintsWithoutEnd()
{
    WorkerRun run;
    QVERIFY(run.start());
    run.tools->tell("forever", rateLine(10, "6.5").repeated(1000));
    run.tools->tell("never carried out");
    QTRY_VERIFY_WITH_TIMEOUT(run.rates.count() > 10000, waitMs);
    QElapsedTimer timer;
    timer.start();
    run.worker->requestAbort();
    QVERIFY(run.waitForEnd());
    QVERIFY2(timer.elapsed() < 5000, QByteArray::number(timer.elapsed()).constData());
    QVERIFY(run.tools->waitUntilGone());
}

void TestAnalysisWorker::abortBeforeTheRun()
{
    WorkerRun run;
    run.makeWorker(StandinControl::toolPath(), StandinControl::relayPath());
    run.worker->createAnalysis(QStringLiteral("x"), 60);
    run.worker->requestAbort();
    run.startThread();
    QVERIFY(run.waitForEnd());
}

void TestAnalysisWorker::readingOutsideOfARunDoesNothing()
{
    WorkerRun run;
    run.makeWorker(StandinControl::toolPath(), StandinControl::relayPath());
    run.worker->readAnalysis();
    QCOMPARE(run.rates.count() + run.sizes.count() + run.finishedCount, 0);
}

void TestAnalysisWorker::twoRuns()
{
    WorkerRun run;
    QVERIFY(run.start("first"));
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
    run.tools.reset(); // the next one says where it listens
    run.tools = std::make_unique<StandinControl>();
    QVERIFY(run.start("second"));
    QCOMPARE(run.tools->arguments().constFirst(), QByteArray("/source:second"));
    run.tools->tell("out", rateLine(10, "6.5"));
    run.tools->tell("exit 0");
    QVERIFY(run.waitForEnd());
    QCOMPARE(run.rateValues(), QList<double>{6.5});
}

QTEST_GUILESS_MAIN(TestAnalysisWorker)
#include "tst_analysisworker.moc"
