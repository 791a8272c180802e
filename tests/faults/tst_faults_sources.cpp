#include "tests/support/programrun.h"
#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"

#include <QtTest>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <memory>

namespace {

constexpr int runMs = 9000;    ///< from the last one's start to the interrupt; every fault comes before
constexpr int uptakeMs = 2500; ///< how far behind a slow machine may be when the program is interrupted

/// What a run left behind.
struct Outcome {
    std::unique_ptr<ProgramRun> run;
    TestRecord record;
    std::vector<loopback::TruthRecord> events;
    qint64 endNs = 0; ///< steady clock; when it was asked to end
};

struct Fault {
    QByteArray json;
    int receivers = 2;
    bool endsByItself = false; ///< all its receivers fail
    std::function<void(const Outcome &)> check;
};

qint64 steadyNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

QByteArray stage(const QByteArray &more, const QByteArray &size = "\"width\":640,\"height\":360,")
{
    // Long queues: whatever the machine does to the runtime, the loss of a frame is the program's fault.
    return "{\"queueFrames\":1000,\"sources\":[{\"name\":\"STAGE\"," + size + more + "}]}";
}

QByteArray fifty(const QByteArray &more)
{
    return stage("\"rateN\":50,\"rateD\":1," + more);
}

int longIntervals(const QVector<TestRecordRow> &rows, int ms)
{
    return static_cast<int>(
        std::count_if(rows.cbegin(), rows.cend(), [ms](const TestRecordRow &row) { return row.intervalMs >= ms; }));
}

/// Every frame that the runtime handed over before the end has its row, and nothing was lost on the way. What the
/// program had not taken up by then, uptakeMs at most, need not be there.
void everyFrameIsARow(const Outcome &outcome)
{
    QCOMPARE(outcome.record.problem, QString());
    QCOMPARE(static_cast<int>(loopback::countTruth(outcome.events, "drop")), 0);
    QCOMPARE(static_cast<int>(loopback::countTruth(outcome.events, "dead")), 0);
    QCOMPARE(static_cast<int>(loopback::countTruth(outcome.events, "refree")), 0);
    const QVector<ReceiverTruth> truth = truthOfReceivers(outcome.events);
    QVector<int> pairing;
    QCOMPARE(pairWithTruth(outcome.record, truth, &pairing), QString());
    for (int receiver = 0; receiver < truth.size(); ++receiver) {
        const ReceiverTruth &handedOver = truth.at(pairing.at(receiver));
        const QVector<TestRecordRow> rows = outcome.record.rowsOf(receiver + 1);
        for (int row = 0; row < rows.size(); ++row) // exact, however late the rows are
            QCOMPARE(rows.at(row).intervalMs, expectedIntervalMs(rows, row));
        for (int frame = rows.size(); frame < handedOver.frames.size(); ++frame)
            QVERIFY(handedOver.frames.at(frame).timeNs > outcome.endNs - uptakeMs * qint64(1000000));
    }
}

/// The record has its header and no row.
void nothingWasMeasured(const Outcome &outcome)
{
    QFile record(outcome.run->recordPath());
    QVERIFY2(record.open(QIODevice::ReadOnly), outcome.run->account());
    const QByteArray text = record.readAll();
    QVERIFY2(text.startsWith("NDI Source Name,") && text.endsWith("\n\n") && text.count('\n') == 2, text.constData());
}

/// The rows of every receiver all have this size and nominal rate.
std::function<void(const Outcome &)> rowsSay(int width, int height, double defaultFps, int atLeast = 100)
{
    return [=](const Outcome &outcome) {
        everyFrameIsARow(outcome);
        QVERIFY2(outcome.record.rows.size() >= atLeast, qPrintable(QString::number(outcome.record.rows.size())));
        for (const TestRecordRow &row : outcome.record.rows) {
            QCOMPARE(row.width, width);
            QCOMPARE(row.height, height);
            QCOMPARE(row.defaultFps, defaultFps);
        }
    };
}

/// A rate that the frames declare, with frames that really come at 50.
Fault declaredRate(const QByteArray &numerator, const QByteArray &denominator, double shown)
{
    return {stage("\"rateN\":" + numerator + ",\"rateD\":" + denominator + ",\"clockRateN\":50"), 2, false,
            rowsSay(640, 360, shown)};
}

Fault declaredSize(const QByteArray &more, int width, int height)
{
    return {stage("\"rateN\":50,\"rateD\":1" + more,
                  "\"width\":" + QByteArray::number(width) + ",\"height\":" + QByteArray::number(height) + ","),
            2, false, rowsSay(width, height, 50)};
}

} // namespace

/// Sources that misbehave in every way, each measured by the program from the console and ended by an interrupt. All of
/// them run at the same time; the record must hold what the truth file says.
class TestFaultsSources final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void fault_data();
    void fault();

private:
    static std::map<QByteArray, Fault> faults();

    std::map<QByteArray, Fault> m_faults = faults();
    std::map<QByteArray, Outcome> m_outcomes;
};

std::map<QByteArray, Fault> TestFaultsSources::faults()
{
    std::map<QByteArray, Fault> all;
    all["vanishes for three seconds"] = {fifty("\"events\":[{\"kind\":\"vanish\",\"atMs\":2000,\"ms\":3000}]"), 2,
                                         false, [](const Outcome &outcome) {
                                             everyFrameIsARow(outcome);
                                             for (int receiver = 1; receiver <= 2; ++receiver) {
                                                 const QVector<TestRecordRow> rows = outcome.record.rowsOf(receiver);
                                                 QCOMPARE(longIntervals(rows, 2000), 1);
                                                 QVERIFY(rows.last().timeMs > 5500); // it goes on afterwards
                                             }
                                         }};
    all["vanishes for ever"] = {fifty("\"endMs\":2000"), 2, false, [](const Outcome &outcome) {
                                    everyFrameIsARow(outcome);
                                    for (int receiver = 1; receiver <= 2; ++receiver) {
                                        const QVector<TestRecordRow> rows = outcome.record.rowsOf(receiver);
                                        QVERIFY(!rows.isEmpty() && rows.size() <= 100);
                                        QVERIFY(rows.last().timeMs < 5000);
                                    }
                                }};
    all["comes back with another size"] = {fifty("\"events\":[{\"kind\":\"vanish\",\"atMs\":2000,\"ms\":2000},"
                                                 "{\"kind\":\"size\",\"atMs\":3000,\"width\":1280,\"height\":720}]"),
                                           2, false, [](const Outcome &outcome) {
                                               everyFrameIsARow(outcome);
                                               for (int receiver = 1; receiver <= 2; ++receiver) {
                                                   bool isBack = false;
                                                   for (const TestRecordRow &row : outcome.record.rowsOf(receiver)) {
                                                       isBack = isBack || row.intervalMs >= 1000;
                                                       QCOMPARE(row.width, isBack ? 1280 : 640);
                                                   }
                                                   QVERIFY(isBack);
                                               }
                                           }};
    all["error frame first, on one receiver"] = {
        fifty("\"startMs\":3000,\"events\":[{\"kind\":\"error\",\"atMs\":2000,\"receiver\":0}]"), 2, false,
        [](const Outcome &outcome) {
            QCOMPARE(static_cast<int>(loopback::countTruth(outcome.events, "error")), 1);
            everyFrameIsARow(outcome);
            QVERIFY(outcome.record.rows.size() >= 100); // the other one's
        }};
    all["error frame in the middle, on one receiver"] = {
        fifty("\"events\":[{\"kind\":\"error\",\"atMs\":4000,\"receiver\":1}]"), 2, false, [](const Outcome &outcome) {
            everyFrameIsARow(outcome);
            int ended = 0;
            for (int receiver = 1; receiver <= 2; ++receiver)
                ended += outcome.record.rowsOf(receiver).last().timeMs < 6000;
            QCOMPARE(ended, 1);
        }};
    all["error frame first, on all receivers"] = {
        fifty("\"startMs\":3000,\"events\":[{\"kind\":\"error\",\"atMs\":2000}]"), 3, true, [](const Outcome &outcome) {
            QVERIFY(outcome.record.header.isEmpty()); // nothing was measured
        }};
    all["error frame in the middle, on all receivers"] = {fifty("\"events\":[{\"kind\":\"error\",\"atMs\":4000}]"), 3,
                                                          true, [](const Outcome &outcome) {
                                                              everyFrameIsARow(outcome);
                                                              for (int receiver = 1; receiver <= 3; ++receiver)
                                                                  QVERIFY(!outcome.record.rowsOf(receiver).isEmpty());
                                                          }};
    all["sends nothing"] = {fifty("\"startMs\":3600000"), 2, false, nothingWasMeasured};
    all["changes from 60 to 25"] = {
        stage("\"rateN\":60,\"rateD\":1,\"events\":[{\"kind\":\"rate\",\"atMs\":2500,\"rateN\":25,\"rateD\":1}]"), 2,
        false, [](const Outcome &outcome) {
            everyFrameIsARow(outcome);
            for (int receiver = 1; receiver <= 2; ++receiver) {
                const QVector<TestRecordRow> rows = outcome.record.rowsOf(receiver);
                QCOMPARE(rows.first().defaultFps, 60.0);
                QCOMPARE(rows.last().defaultFps, 25.0);
                QCOMPARE(checkRowsAmongThemselves(rows), QString());
                QVERIFY2(qAbs(medianRate(rows, 25) - 25.0) < 8, qPrintable(QString::number(medianRate(rows, 25))));
            }
        }};
    all["sends frames of unknown kinds"] = {
        fifty("\"events\":[{\"kind\":\"unknown\",\"atMs\":2000,\"value\":4711},{\"kind\":\"unknown\",\"atMs\":2400,"
              "\"value\":-1},{\"kind\":\"unknown\",\"atMs\":2800,\"value\":107},{\"kind\":\"status\",\"atMs\":3200}]"),
        2, false, [](const Outcome &outcome) {
            everyFrameIsARow(outcome);
            QCOMPARE(static_cast<int>(loopback::countTruth(outcome.events, "unknown")), 3 * 2);
            QVERIFY(outcome.record.rows.last().timeMs > 5500);
        }};
    all["rate over nothing"] = declaredRate("50", "0", 0);
    all["rate of nothing"] = declaredRate("0", "1001", 0);
    all["rate 1/1"] = declaredRate("1", "1", 1);
    all["rate 120000/1001"] = {stage("\"rateN\":120000,\"rateD\":1001"), 2, false, rowsSay(640, 360, 119)};
    all["rate as high as a number can be"] = declaredRate("2147483647", "1", 2147480000.0);
    all["rate below nothing"] = declaredRate("-2147483648", "-1", 2147480000.0);
    all["rate backwards"] = declaredRate("-50", "1", -50);
    all["no size"] = {stage("\"rateN\":50,\"rateD\":1", "\"width\":0,\"height\":0,"), 2, false, nothingWasMeasured};
    all["one pixel"] = declaredSize("", 1, 1);
    all["16384 x 16384"] = {stage("\"rateN\":25,\"rateD\":1", "\"width\":16384,\"height\":16384,"), 1, false,
                            rowsSay(16384, 16384, 25, 25)};
    all["odd size"] = declaredSize("", 641, 361);
    all["negative size"] = declaredSize("", -640, -360);
    all["negative width"] = declaredSize("", -1, 1080);
    all["lines shorter than the picture"] = declaredSize(",\"stride\":100", 640, 360);
    all["lines longer than the picture"] = declaredSize(",\"stride\":4096", 640, 360);
    all["lines upwards"] = declaredSize(",\"stride\":-1280", 640, 360);
    all["pixels of an unknown kind"] = declaredSize(",\"fourCC\":\"?!?!\"", 640, 360);
    all["no pixels"] = declaredSize(",\"noData\":true", 640, 360);
    return all;
}

void TestFaultsSources::initTestCase()
{
    for (const auto &[name, fault] : m_faults) {
        Outcome &outcome = m_outcomes[name];
        outcome.run =
            std::make_unique<ProgramRun>(QStringList{QStringLiteral("-test"), QStringLiteral("STAGE"),
                                                     QStringLiteral("-receivers"), QString::number(fault.receivers)});
        outcome.run->setScenario(fault.json);
        outcome.run->keepTruth();
        outcome.run->start();
    }
    for (auto &[name, outcome] : m_outcomes)
        QVERIFY2(outcome.run->waitForError("Start Testing..."), outcome.run->account());
    QTest::qWait(runMs); // what happens to the sources happens by the clock
    for (auto &[name, outcome] : m_outcomes) {
        if (!m_faults.at(name).endsByItself) {
            QVERIFY2(outcome.run->process().state() == QProcess::Running, outcome.run->account());
            outcome.endNs = steadyNs();
            outcome.run->interrupt(ProgramRun::Interrupt::Interrupt);
        }
    }
    for (auto &[name, outcome] : m_outcomes) {
        if (outcome.endNs == 0)
            outcome.endNs = steadyNs();
        QVERIFY2(
            QTest::qWaitFor([&run = outcome.run] { return run->process().state() == QProcess::NotRunning; }, 30000),
            (name + ": " + outcome.run->account()).constData());
        QVERIFY2(outcome.run->endedWith(1), outcome.run->account());
        outcome.events = loopback::readTruth(outcome.run->truthPath().toStdString());
        QString record = outcome.run->recordPath();
        if (m_faults.at(name).endsByItself) { // the next start makes the record
            QVERIFY2(outcome.run->standardError().endsWith("All Receivers have been closed.\n"),
                     outcome.run->account());
            record = outcome.run->recoverRecord();
            QCOMPARE(outcome.run->journals(), QStringList());
        }
        if (!record.isEmpty())
            outcome.record = TestRecord::read(record);
    }
}

void TestFaultsSources::fault_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const auto &[name, fault] : m_faults)
        QTest::newRow(name.constData()) << name;
}

void TestFaultsSources::fault()
{
    QFETCH(QByteArray, name);
    m_faults.at(name).check(m_outcomes.at(name));
}

QTEST_GUILESS_MAIN(TestFaultsSources)

#include "tst_faults_sources.moc"
