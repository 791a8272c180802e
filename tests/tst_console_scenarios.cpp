#include "tests/support/programrun.h"
#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"

#include <QtTest>

#include <algorithm>
#include <array>
#include <memory>

namespace {

constexpr int receiverCount = 3;
constexpr int testMs = 60000;
/// A receiver's clock may start so long after that of its test, with all the scenarios starting on two cores.
constexpr int lateStartMs = 2000;
const QString sourceName = QStringLiteral("STAGE");
/// What is timed happens at these frames. A machine that stands still spoils one of them, not most.
constexpr std::array<int, 5> eventFrames = {500, 900, 1300, 1700, 2100};

struct Scenario {
    QByteArray json;
    std::unique_ptr<ProgramRun> run;
    TestRecord record;
    std::vector<loopback::TruthRecord> events;
};

QByteArray oneSource(const QByteArray &more)
{
    return "{\"queueFrames\":100,\"sources\":[{\"name\":\"STAGE\",\"width\":640,\"height\":360," + more + "}]}";
}

/// An event at each of these frames; "more" are its further members.
QByteArray atEventFrames(const QByteArray &kind, const QByteArray &more)
{
    QByteArrayList events;
    for (const int frame : eventFrames)
        events.append("{\"kind\":\"" + kind + "\",\"atFrame\":" + QByteArray::number(frame) + "," + more + "}");
    return "\"events\":[" + events.join(',') + "]";
}

/// The row at which a receiver's first frame at or after a number of the source stands.
int rowOfFrame(const ReceiverTruth &truth, std::int64_t number)
{
    int row = 0;
    while (row < truth.frames.size() && truth.frames.at(row).number < number)
        ++row;
    return row;
}

} // namespace

/// What happens to a source in mid-test stands in the record where it happened. Each scenario takes its
/// minute, all of them at the same time.
class TestConsoleScenarios final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void everyRowIsAFrame_data();
    void everyRowIsAFrame();
    void droppedFramesAreAGap();
    void aStallIsOneLongInterval();
    void aBurstIsManyShortIntervals();
    void framesWithoutSizeAreLeftOut();
    void aNewSizeShowsFromItsFrame();
    void aNewRateShowsFromItsFrame();
    void aSourceThatComesBackGoesOn();
    void audioBetweenFramesChangesNothing();

private:
    const QVector<TestRecordRow> rows(const char *scenario, int receiver) const;
    /// The truth that belongs to a receiver of the record, 1-based.
    ReceiverTruth truthFor(const char *scenario, int receiver) const;

    std::map<QByteArray, Scenario> m_scenarios;
};

void TestConsoleScenarios::initTestCase()
{
    const QByteArray fifty = "\"rateN\":50,\"rateD\":1";
    m_scenarios["drop"].json = oneSource(fifty + "," + atEventFrames("drop", "\"frames\":30"));
    m_scenarios["stall"].json = oneSource(fifty + ",\"events\":[{\"kind\":\"stall\",\"atMs\":20000,\"ms\":1500}]");
    m_scenarios["burst"].json = oneSource(fifty + "," + atEventFrames("burst", "\"frames\":10"));
    m_scenarios["zero"].json = oneSource(fifty + ",\"events\":[{\"kind\":\"zeroSize\",\"atFrame\":700,\"frames\":4}]");
    m_scenarios["size"].json =
        oneSource(fifty + ",\"events\":[{\"kind\":\"size\",\"atFrame\":800,\"width\":1280,\"height\":720}]");
    m_scenarios["rate"].json = oneSource(
        "\"rateN\":60,\"rateD\":1,\"events\":[{\"kind\":\"rate\",\"atFrame\":1200,\"rateN\":25,\"rateD\":1}]");
    m_scenarios["vanish"].json = oneSource(fifty + ",\"events\":[{\"kind\":\"vanish\",\"atMs\":30000,\"ms\":3000}]");
    m_scenarios["audio"].json = oneSource(
        fifty
        + ",\"audio\":{\"blocksPerFrame\":2,\"samples\":480},\"events\":[{\"kind\":\"status\",\"atMs\":900},"
          "{\"kind\":\"unknown\",\"atMs\":1800,\"value\":4711},{\"kind\":\"unknown\",\"atMs\":2700,\"value\":101}]");
    m_scenarios["jitter"].json = oneSource(fifty + ",\"jitter\":{\"kind\":\"gaussian\",\"sigmaMs\":6,\"seed\":42}");
    for (auto &entry : m_scenarios) {
        Scenario &scenario = entry.second;
        scenario.run = std::make_unique<ProgramRun>(QStringList{
            QStringLiteral("-test"), sourceName, QStringLiteral("-receivers"), QString::number(receiverCount)});
        scenario.run->setScenario(scenario.json);
        scenario.run->keepTruth();
        scenario.run->start();
#if defined(Q_OS_WIN)
        // Nine programs that start at once under Wine keep each other from the processor for longer than a queue lasts.
        QVERIFY2(scenario.run->waitForError("Start Testing..."), scenario.run->account());
#endif
    }
    for (auto &entry : m_scenarios) {
        Scenario &scenario = entry.second;
        // In the event loop, which reads what all of them write; a full pipe would hold one up.
        QTRY_VERIFY_WITH_TIMEOUT(scenario.run->process().state() == QProcess::NotRunning, 120000);
        QVERIFY2(scenario.run->endedWith(1), scenario.run->account());
        scenario.record = TestRecord::read(scenario.run->recordPath());
        scenario.events = loopback::readTruth(scenario.run->truthPath().toStdString());
    }
}

const QVector<TestRecordRow> TestConsoleScenarios::rows(const char *scenario, int receiver) const
{
    return m_scenarios.at(scenario).record.rowsOf(receiver);
}

ReceiverTruth TestConsoleScenarios::truthFor(const char *scenario, int receiver) const
{
    const Scenario &which = m_scenarios.at(scenario);
    QVector<int> pairing;
    const QVector<ReceiverTruth> truth = truthOfReceivers(which.events);
    return pairWithTruth(which.record, truth, &pairing).isEmpty() ? truth.at(pairing.at(receiver - 1))
                                                                  : ReceiverTruth();
}

void TestConsoleScenarios::everyRowIsAFrame_data()
{
    QTest::addColumn<QByteArray>("scenario");
    for (const auto &entry : m_scenarios)
        QTest::newRow(entry.first.constData()) << entry.first;
}

void TestConsoleScenarios::everyRowIsAFrame()
{
    QFETCH(QByteArray, scenario);
    const Scenario &which = m_scenarios.at(scenario);
    QCOMPARE(which.record.problem, QString());
    QCOMPARE(int(loopback::countTruth(which.events, "drop")), 0);
    QCOMPARE(int(loopback::countTruth(which.events, "refree")), 0);
    QCOMPARE(int(loopback::countTruth(which.events, "dead")), 0);
    const QVector<ReceiverTruth> truth = truthOfReceivers(which.events);
    QCOMPARE(truth.size(), receiverCount);
    QVector<int> pairing;
    QCOMPARE(pairWithTruth(which.record, truth, &pairing), QString());
    for (int receiver = 1; receiver <= receiverCount; ++receiver) {
        const QVector<TestRecordRow> itsRows = which.record.rowsOf(receiver);
        QVERIFY(itsRows.size() > 1000);
        if (scenario != "zero") // a frame without a row still moves the window of the rate on
            QCOMPARE(checkRowsAmongThemselves(itsRows), QString());
        const ReceiverTruth &handedOver = truth.at(pairing.at(receiver - 1));
        for (int frame = itsRows.size(); frame < handedOver.frames.size(); ++frame)
            QVERIFY2(handedOver.timeMs(frame) >= testMs - lateStartMs,
                     qPrintable(QString::number(handedOver.timeMs(frame))));
    }
}

void TestConsoleScenarios::droppedFramesAreAGap()
{
    for (int receiver = 1; receiver <= receiverCount; ++receiver) {
        const ReceiverTruth truth = truthFor("drop", receiver);
        const QVector<TestRecordRow> all = rows("drop", receiver);
        std::array<int, eventFrames.size()> gapsMs{};
        for (std::size_t event = 0; event < eventFrames.size(); ++event) {
            const int row = rowOfFrame(truth, eventFrames[event]);
            QVERIFY(row > 0 && row < all.size());
            QCOMPARE(int(truth.frames.at(row - 1).number), eventFrames[event] - 1);
            QCOMPARE(int(truth.frames.at(row).number), eventFrames[event] + 30);
            gapsMs[event] = all.at(row).intervalMs;
        }
        std::sort(gapsMs.begin(), gapsMs.end());
        const int gapMs = gapsMs[gapsMs.size() / 2];
        QVERIFY2(qAbs(gapMs - 31 * 20) <= 100, qPrintable(QString::number(gapMs)));
    }
}

void TestConsoleScenarios::aStallIsOneLongInterval()
{
    for (int receiver = 1; receiver <= receiverCount; ++receiver) {
        const ReceiverTruth truth = truthFor("stall", receiver);
        const QVector<TestRecordRow> all = rows("stall", receiver);
        QVERIFY(truth.frames.size() >= all.size());
        int longIntervals = 0;
        for (int row = 1; row < all.size(); ++row) {
            const int gapMs = all.at(row).intervalMs;
            if (gapMs < 1000)
                continue;
            ++longIntervals;
            // The source's clock and the receiver's begin at different moments.
            QVERIFY2(qAbs(gapMs - 1520) <= 300, qPrintable(QString::number(gapMs)));
            QVERIFY2(qAbs(all.at(row).timeMs - 21500) <= 1000, qPrintable(QString::number(all.at(row).timeMs)));
        }
        QCOMPARE(longIntervals, 1);
    }
}

void TestConsoleScenarios::aBurstIsManyShortIntervals()
{
    for (int receiver = 1; receiver <= receiverCount; ++receiver) {
        const ReceiverTruth truth = truthFor("burst", receiver);
        const QVector<TestRecordRow> all = rows("burst", receiver);
        int bursts = 0;
        for (const int frame : eventFrames) {
            const int row = rowOfFrame(truth, frame);
            QVERIFY(row > 0 && row + 10 < all.size());
            const auto shortIntervals = std::count_if(all.cbegin() + row, all.cbegin() + row + 10,
                                                      [](const TestRecordRow &one) { return one.intervalMs <= 10; });
            bursts += all.at(row).intervalMs >= 100 && shortIntervals >= 5 ? 1 : 0; // of nine
        }
        QVERIFY2(bursts > int(eventFrames.size()) / 2, qPrintable(QString::number(bursts)));
    }
}

void TestConsoleScenarios::framesWithoutSizeAreLeftOut()
{
    const Scenario &scenario = m_scenarios.at("zero");
    const auto hasNoSize = [](const loopback::TruthRecord &record) {
        return record.kind == "video" && record.note == "0x0";
    };
    QCOMPARE(int(std::count_if(scenario.events.cbegin(), scenario.events.cend(), hasNoSize)), 4 * receiverCount);
    for (const TestRecordRow &row : scenario.record.rows)
        QVERIFY(row.width == 640 && row.height == 360);
}

void TestConsoleScenarios::aNewSizeShowsFromItsFrame()
{
    for (int receiver = 1; receiver <= receiverCount; ++receiver) {
        const int change = rowOfFrame(truthFor("size", receiver), 800);
        const QVector<TestRecordRow> all = rows("size", receiver);
        QVERIFY(change > 0 && change < all.size());
        for (int i = 0; i < all.size(); ++i)
            QCOMPARE(all.at(i).width, i < change ? 640 : 1280);
    }
}

void TestConsoleScenarios::aNewRateShowsFromItsFrame()
{
    for (int receiver = 1; receiver <= receiverCount; ++receiver) {
        const int change = rowOfFrame(truthFor("rate", receiver), 1200);
        const QVector<TestRecordRow> all = rows("rate", receiver);
        QVERIFY(change > 0 && change < all.size());
        for (int i = 0; i < all.size(); ++i)
            QCOMPARE(all.at(i).defaultFps, i < change ? 60.0 : 25.0);
        QVERIFY2(qAbs(medianRate(all, 25) - 25.0) < 8, qPrintable(QString::number(medianRate(all, 25))));
    }
}

void TestConsoleScenarios::aSourceThatComesBackGoesOn()
{
    for (int receiver = 1; receiver <= receiverCount; ++receiver) {
        int longIntervals = 0;
        for (const TestRecordRow &row : rows("vanish", receiver)) {
            if (row.intervalMs > 2000)
                ++longIntervals;
        }
        QCOMPARE(longIntervals, 1);
        QVERIFY(rows("vanish", receiver).last().timeMs > testMs - lateStartMs);
    }
}

void TestConsoleScenarios::audioBetweenFramesChangesNothing()
{
    const Scenario &scenario = m_scenarios.at("audio");
    QVERIFY(loopback::countTruth(scenario.events, "audio") > 2 * 2900 * receiverCount);
    QCOMPARE(int(loopback::countTruth(scenario.events, "status")), receiverCount);
    QCOMPARE(int(loopback::countTruth(scenario.events, "unknown")), 2 * receiverCount);
    QVERIFY(scenario.record.rows.size() > 2900 * receiverCount);
}

QTEST_GUILESS_MAIN(TestConsoleScenarios)
#include "tst_console_scenarios.moc"
