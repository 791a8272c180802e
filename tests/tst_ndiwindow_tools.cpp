#include "charts/customplot.h"
#include "probes/benchmarkdlg.h"
#include "resources/vexaresources.h"
#include "tests/standin_analysis/standincontrol.h"
#include "tests/standin_analysis/testfolder.h"
#include "tests/support/windowcase.h"

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QSignalSpy>

namespace {

constexpr int waitMs = 30000;

std::unique_ptr<AnalysisWorker> standinWorker()
{
    return std::make_unique<AnalysisWorker>(StandinControl::toolPath(), StandinControl::relayPath());
}

} // namespace

/// The window together with the outside tools: worker, relay and a stand-in for the analysis tool.
class TestNdiWindowTools final : public TestBase {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void samplesOfTheTool();
    void toolThatEndsWithoutSamples();
    void secondRunReplacesTheFirst();
    void anotherTestEndsTheTool();
    void lateSamplesOfAnEarlierRun();
    void closingWhileTheToolHangs();
    void benchmarkDialog();
    void hostileReports_data();
    void hostileReports();

private:
    void startAnalysis(WindowCase &test, StandinControl &tools);

    std::unique_ptr<TestFolder> m_folder;
    QString m_former;
};

void TestNdiWindowTools::init()
{
    initVexaResources();
    m_former = QDir::currentPath();
    m_folder = std::make_unique<TestFolder>();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    qputenv("HOME", m_folder->path().toUtf8());
    qputenv("XDG_CONFIG_HOME", m_folder->path().toUtf8());
}

void TestNdiWindowTools::cleanup()
{
    QDir::setCurrent(m_former);
    m_folder.reset();
}

void TestNdiWindowTools::startAnalysis(WindowCase &test, StandinControl &tools)
{
    QVERIFY(test.isReady(1));
    test.choose(test.ui().analysisOption);
    test.press();
    QVERIFY(tools.waitForTools());
    QVERIFY(test.ui().waiting_spinner->isVisible());
}

void TestNdiWindowTools::samplesOfTheTool()
{
    StandinControl tools;
    WindowCase test(1, 3000, true, 0, standinWorker); // the second sample comes before the end
    startAnalysis(test, tools);
    QCOMPARE(tools.arguments().constFirst(), QByteArray("/source:CAM 1"));
    tools.tell("out", "12:01:02.345: Video data rate (MBps) Avg=6.5\r\n");
    QTRY_COMPARE_WITH_TIMEOUT(test.ui().lblDataRateValue->text(), QStringLiteral("6.5MBps"), waitMs);
    QVERIFY(!test.ui().waiting_spinner->isVisible() && test.ui().progress_viewer->isVisible());
    tools.tell("out", "12:01:02.445: Video recv (mS) Min=0.25 Avg=1.5 Max=9.75\r\n");
    QTRY_COMPARE_WITH_TIMEOUT(test.ui().lblLatencyValue->text(), QStringLiteral("Avg: 1.5mS  Min: 0.25mS  Max: 9.75mS"),
                              waitMs);
    QTRY_VERIFY_WITH_TIMEOUT(test.isIdle(), waitMs); // by its timer; the tool goes on
    QVERIFY(test.ui().btn_test->isEnabled() && test.ui().benchmarkOption->isEnabled());
    QCOMPARE(test.ui().analysis_latency_plot->maximumPoints(0)[0], QPointF(100, 9.75));
    tools.tell("exit 0");
    QVERIFY(tools.waitUntilGone());
}

void TestNdiWindowTools::toolThatEndsWithoutSamples()
{
    StandinControl tools;
    WindowCase test(1, 60000, true, 0, standinWorker);
    startAnalysis(test, tools);
    tools.tell("out", "cannot connect\r\n");
    tools.tell("exit 3");
    QTRY_VERIFY_WITH_TIMEOUT(test.isIdle(), waitMs);
    QVERIFY(!test.ui().waiting_spinner->isVisible());
}

void TestNdiWindowTools::secondRunReplacesTheFirst()
{
    StandinControl tools;
    WindowCase test(1, 100, true, 0, standinWorker);
    startAnalysis(test, tools);
    tools.tell("out", "12:01:02.345: Video data rate (MBps) Avg=6.5\r\n");
    QTRY_VERIFY_WITH_TIMEOUT(test.isIdle(), waitMs);
    // The first tool still runs: the next run ends it.
    test.press();
    QVERIFY(tools.waitForTools(2));
    QVERIFY(test.ui().waiting_spinner->isVisible());
    tools.tell("out", QByteArray("12:01:09.000: Video data rate (MBps) Avg=7.5\r\n"), 1);
    QTRY_COMPARE_WITH_TIMEOUT(test.ui().lblDataRateValue->text(), QStringLiteral("7.5MBps"), waitMs);
    QTRY_VERIFY_WITH_TIMEOUT(test.isIdle(), waitMs);
    test.window->requestClose();
    test.window.reset();
    QVERIFY(tools.waitUntilGone());
}

void TestNdiWindowTools::anotherTestEndsTheTool()
{
    StandinControl tools;
    WindowCase test(1, 100, true, 0, standinWorker);
    startAnalysis(test, tools);
    tools.tell("out", "12:01:02.345: Video data rate (MBps) Avg=6.5\r\n");
    QTRY_VERIFY_WITH_TIMEOUT(test.isIdle(), waitMs);
    test.ndi.setScript(framesWithoutEnd());
    test.choose(test.ui().singleOption);
    test.press();
    QVERIFY(tools.waitUntilGone());
    QTRY_VERIFY_WITH_TIMEOUT(test.isIdle(), waitMs);
}

void TestNdiWindowTools::lateSamplesOfAnEarlierRun()
{
    StandinControl tools;
    AnalysisWorker *worker = nullptr;
    AnalysisRun run([&worker] {
        std::unique_ptr<AnalysisWorker> made = standinWorker();
        worker = made.get();
        return made;
    });
    QSignalSpy rates(&run, &AnalysisRun::gotVideoDataRate);
    QSignalSpy sizes(&run, &AnalysisRun::gotVideoSize);
    QSignalSpy ends(&run, &AnalysisRun::ended);
    run.start(QStringLiteral("CAM 1"), 60);
    QVERIFY(tools.waitForTools());
    // From another thread, so that they wait in the queue of this one.
    std::thread([worker] {
        emit worker->gotVideoDataRate(QTime(10, 0), 6.5);
        emit worker->gotVideoSize(QTime(10, 0), 1, 2, 3);
        emit worker->finished();
    }).join();
    run.start(QStringLiteral("CAM 1"), 60);
    QVERIFY(tools.waitForTools(2));
    QCoreApplication::processEvents();
    QCOMPARE(rates.count() + sizes.count() + ends.count(), 0);
    QVERIFY(run.isRunning());
    run.abort();
    QVERIFY(tools.waitUntilGone());
}

void TestNdiWindowTools::closingWhileTheToolHangs()
{
    StandinControl tools;
    WindowCase test(1, 60000, true, 0, standinWorker);
    startAnalysis(test, tools);
    QSignalSpy closed(test.window.get(), &NDIWindow::closeWindow);
    QElapsedTimer clock;
    clock.start();
    test.window->requestClose();
    QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed()))); // a promise
    QCOMPARE(closed.count(), 1);
    QVERIFY(tools.waitUntilGone());
}

void TestNdiWindowTools::benchmarkDialog()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    test.choose(test.ui().benchmarkOption);
    bool isBenchmark = false;
    NextDialog dialog([&](QDialog *opened) {
        isBenchmark = qobject_cast<BenchmarkDlg *>(opened) != nullptr;
        opened->findChild<QAbstractButton *>(QStringLiteral("btnClose"))->click();
    });
    test.ui().btn_benchmark->click();
    QVERIFY(dialog.seen);
    QVERIFY(isBenchmark);
}

void TestNdiWindowTools::hostileReports_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("series");
    QTest::newRow("empty") << QByteArray() << 0;
    QTest::newRow("binary") << QByteArray(4096, '\x00') << 0;
    QTest::newRow("axes of no length") << QByteArray("SINGLETEST FPSCHART 0 0 2 1 5 60 1 6 60") << 2;
    QTest::newRow("axes below zero") << QByteArray("SINGLETEST FPSCHART -60 -90 1 2 5 60 7 50") << 1;
    QTest::newRow("undefined values") << QByteArray("SINGLETEST FPSCHART 60 90 1 4 5 nan 6 inf 7 -inf 8 1e308") << 1;
    QTest::newRow("times that go back") << QByteArray("SINGLETEST FPSCHART 60 90 1 4 50000 60 100 5 -7 8 99999 7") << 1;
    QTest::newRow("more graphs than there are colours") << QByteArray("SINGLETEST FPSCHART 60 90 40 1 5 6") << 40;
    QTest::newRow("endless points") << QByteArray("SINGLETEST FPSCHART 60 90 1 2147483647 1 2") << 1;
    QTest::newRow("sections without end")
        << "SINGLETEST " + QByteArray("FPSCHART 60 90 1000 ").repeated(20000) + "FPSCHART 60 90 2 1 5 6" << 2;
    QTest::newRow("too many graphs") << QByteArray("SINGLETEST FPSCHART 60 90 2000000000") << 0;
}

void TestNdiWindowTools::hostileReports()
{
    QFETCH(QByteArray, content);
    const QString path = m_folder->filePath(QStringLiteral("hostile.vdf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    test.ui().fpsPlot->rawToggle()->setChecked(true);
    NextDialog ask([&](QDialog *dialog) { openReport(dialog, path); });
    test.ui().btn_import1->click();
    QVERIFY(ask.seen);
    QTEST(test.ui().fpsPlot->seriesCount(), "series");
    QVERIFY(!test.window->grab().isNull()); // painted, with whatever it holds
}

QTEST_MAIN(TestNdiWindowTools)
#include "tst_ndiwindow_tools.moc"
