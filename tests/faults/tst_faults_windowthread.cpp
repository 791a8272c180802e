#include "app/recordfile.h"
#include "charts/customplot.h"
#include "loopback/truthreader.h"
#include "mainwindow/ndiwindow.h"
#include "ndi/ndilib.h"
#include "resources/vexaresources.h"
#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"
#include "tests/support/windowcase.h"
#include "ui_ndiwindow.h"
#include "widgets/stylesheetnoise.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>

namespace {

constexpr int sourceCount = 2; ///< one of them sends nothing
constexpr int receiverCount = 8;
constexpr int stallMs = 5000;
constexpr int framesDuringStall = stallMs / 1000 * 50;

} // namespace

/// What cannot be done to the window from outside of its process. One window for all: the runtime is left once.
class TestFaultsWindowThread final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void stalledForFiveSeconds();
    void stopAfterAStallLosesNothing_data();
    void stopAfterAStallLosesNothing();
    void twoHundredStartsAndStops();
    void closedWhileAskingForAFormat();
    void cleanupTestCase();

private:
    const Ui::NDIWindow &ui() const { return m_window->form(); }
    bool isIdle() const { return ui().btn_test->text() == QStringLiteral("TEST") && ui().timeList->isEnabled(); }
    std::vector<loopback::TruthRecord> truth() const
    {
        return loopback::readTruth(m_home.filePath(QStringLiteral("truth.txt")).toStdString());
    }

    QTemporaryDir m_home;
    std::unique_ptr<NDIWindow> m_window;
};

void TestFaultsWindowThread::initTestCase()
{
    initVexaResources();
    QVERIFY(m_home.isValid());
    for (const char *name : {"HOME", "XDG_CONFIG_HOME", "VEXA_JOURNAL_FOLDER"})
        qputenv(name, m_home.path().toUtf8());
    QFile file(m_home.filePath(QStringLiteral("scenario.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"({"queueFrames":1000,"discoveryMs":0,"discoveryBatch":100,"sources":[)"
               R"({"name":"STAGE","width":640,"height":360,"rateN":50,"rateD":1},{"name":"MUTE","startMs":3600000}]})");
    file.close();
    qputenv("VEXA_LOOPBACK_SCENARIO", file.fileName().toUtf8());
    qputenv("VEXA_LOOPBACK_TRUTH", m_home.filePath(QStringLiteral("truth.txt")).toUtf8());
    qputenv("NDI_RUNTIME_DIR_V6", VEXA_LOOPBACK_DIR);
    QVERIFY2(NDIlib_initialize(), qPrintable(ndiRuntimeProblem()));
    expectScreenWarnings();
    m_window = std::make_unique<NDIWindow>(NDIWindowParts::ofThisMachine());
    m_window->show();
    QTRY_COMPARE(ui().sourceList->count(), sourceCount);
    QTRY_VERIFY(ui().label_videoWidth->text() == QStringLiteral("640")); // its format is known
    QTRY_COMPARE(int(loopback::countTruth(truth(), "create")), sourceCount);
}

/// The receivers go on measuring on their own threads, and everything of it arrives.
void TestFaultsWindowThread::stalledForFiveSeconds()
{
    expectScreenWarnings();
    const StyleSheetNoiseFilter filter; // as in the program
    ui().threadCount->setCurrentIndex(receiverCount - 1);
    ui().btn_test->click();
    QTRY_VERIFY(ui().fpsPlot->seriesCount() == receiverCount && ui().fpsPlot->plainPoints(0).size() > 25);
    const int paintsBefore = ui().fpsPlot->paints();
    QThread::msleep(stallMs); // on purpose
    QTRY_VERIFY(ui().fpsPlot->plainPoints(0).size() > framesDuringStall + 100);
    QTRY_VERIFY(ui().fpsPlot->paints() > paintsBefore + 3); // the charts are alive
    // What was handed over up to now arrives. Read once: the file is long, and reading it is work of this thread.
    int handedOverByNow = 0;
    for (const ReceiverTruth &receiver : truthOfReceivers(truth()).mid(sourceCount))
        handedOverByNow = std::max(handedOverByNow, int(receiver.frames.size()));
    QVERIFY(handedOverByNow > framesDuringStall);
    for (int receiver = 0; receiver < receiverCount; ++receiver)
        QTRY_VERIFY_WITH_TIMEOUT(int(ui().fpsPlot->plainPoints(receiver).size()) >= handedOverByNow, 60000);
    ui().btn_test->click();
    QTRY_VERIFY(isIdle());

    const TestRecord record = TestRecord::read(recordPath());
    QCOMPARE(record.problem, QString());
    const auto events = truth();
    QCOMPARE(int(loopback::countTruth(events, "drop")), 0);
    const QVector<ReceiverTruth> receivers = truthOfReceivers(events).mid(sourceCount); // the first ask for formats
    QCOMPARE(receivers.size(), receiverCount);
    QVector<int> pairing;
    QCOMPARE(pairWithTruth(record, receivers, &pairing), QString());
    for (int receiver = 0; receiver < receiverCount; ++receiver) {
        const QVector<TestRecordRow> rows = record.rowsOf(receiver + 1);
        QCOMPARE(checkRowsAmongThemselves(rows), QString());
        const ReceiverTruth &handedOver = receivers.at(pairing.at(receiver));
        QVERIFY(rows.size() >= handedOverByNow);
        // The intervals do not show the stall: every one is that of its two frames, which were not waited for.
        for (int row = 1; row < rows.size(); ++row) {
            const int trueMs = handedOver.timeMs(row) - handedOver.timeMs(row - 1);
            QVERIFY2(trueMs < stallMs / 2, qPrintable(QString::number(trueMs)));
        }
        QVERIFY(rows.size() > framesDuringStall + 50);
        QCOMPARE(int(ui().fpsPlot->plainPoints(receiver).size()), int(rows.size()));
    }
    QVERIFY(QFile::remove(recordPath()));
}

void TestFaultsWindowThread::stopAfterAStallLosesNothing_data()
{
    QTest::addColumn<bool>("isByUser");
    QTest::newRow("by the user") << true;
    QTest::newRow("by time") << false;
}

/// The window's thread is stalled until the test ends. The record has all frames that were measured during the stall.
void TestFaultsWindowThread::stopAfterAStallLosesNothing()
{
    QFETCH(bool, isByUser);
    expectScreenWarnings();
    const StyleSheetNoiseFilter filter; // as in the program
    const int before = truthOfReceivers(truth()).size();
    ui().threadCount->setCurrentIndex(receiverCount - 1);
    ui().btn_test->click();
    QTRY_VERIFY(ui().fpsPlot->seriesCount() == receiverCount && ui().fpsPlot->plainPoints(0).size() > 5);
    QThread::msleep(1000); // on purpose
    const std::int64_t stopNs =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count();
    if (isByUser)
        ui().btn_test->click();
    else
        m_window->stopTest();
    QTRY_VERIFY(isIdle());

    const TestRecord record = TestRecord::read(recordPath());
    QCOMPARE(record.problem, QString());
    const QVector<ReceiverTruth> receivers = truthOfReceivers(truth()).mid(before);
    QVector<int> pairing;
    QCOMPARE(pairWithTruth(record, receivers, &pairing), QString());
    for (int receiver = 0; receiver < receiverCount; ++receiver) {
        // A frame is freed after it was measured.
        const QVector<std::int64_t> &freedNs = receivers.at(pairing.at(receiver)).freedNs;
        const auto measured =
            std::count_if(freedNs.cbegin(), freedNs.cend(), [stopNs](std::int64_t timeNs) { return timeNs < stopNs; });
        QVERIFY(measured > 10);
        QVERIFY2(record.rowsOf(receiver + 1).size() >= measured, qPrintable(QString::number(measured)));
    }
    QVERIFY(QFile::remove(recordPath()));
}

void TestFaultsWindowThread::twoHundredStartsAndStops()
{
    expectScreenWarnings();
    const StyleSheetNoiseFilter filter; // as in the program
    ui().threadCount->setCurrentIndex(1);
    QVERIFY(isIdle());
    const int before = truthOfReceivers(truth()).size();
    for (int run = 0; run < 200; ++run) {
        ui().btn_test->click();
        QCOMPARE(ui().btn_test->text(), QStringLiteral("STOP"));
        if (run % 4 != 0) // some are stopped before they have begun
            QTRY_VERIFY(ui().fpsPlot->plainPoints(0).size() > 0);
        ui().btn_test->click();
        QTRY_VERIFY(isIdle());
    }
    const auto events = truth();
    QCOMPARE(truthOfReceivers(events).size(), before + 400);
    QCOMPARE(int(loopback::countTruth(events, "destroy")), before + 400 - 1); // one still asks for a format
    QCOMPARE(int(loopback::countTruth(events, "dead")), 0);
    QCOMPARE(int(loopback::countTruth(events, "refree")), 0);
    QCOMPARE(TestRecord::read(recordPath()).problem, QString());
    QVERIFY(QDir(m_home.path()).entryList({QStringLiteral("*.journal")}, QDir::Files).isEmpty());
}

/// Whoever asks is told to end, and nothing is left of it when the window says that it may go.
void TestFaultsWindowThread::closedWhileAskingForAFormat()
{
    expectScreenWarnings();
    const auto alive = [this] {
        const auto events = truth();
        return int(loopback::countTruth(events, "create") - loopback::countTruth(events, "destroy"));
    };
    QTRY_COMPARE(alive(), 1);
    const QSignalSpy closed(m_window.get(), &NDIWindow::closeWindow);
    m_window->requestClose();
    QCOMPARE(closed.count(), 1);
    QCOMPARE(alive(), 0);
}

void TestFaultsWindowThread::cleanupTestCase()
{
    m_window.reset();
}

QTEST_MAIN(TestFaultsWindowThread)

#include "tst_faults_windowthread.moc"
