#include "tests/support/programrun.h"
#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"

#include <QElapsedTimer>
#include <QtTest>

#include <algorithm>

namespace {

constexpr int churnMs = 70000;
constexpr int longestSearchMs = 60000;

const QStringList lastOfTheWall{QStringLiteral("-test"), QStringLiteral("WALL (2000)"), QStringLiteral("-receivers"),
                                QStringLiteral("2")};

} // namespace

/// Lists of sources that ask much of the program from the console.
class TestFaultsLists final : public TestBase {
    Q_OBJECT

private slots:
    void twoThousandSources();
    void aListThatNeverSettles();
};

void TestFaultsLists::twoThousandSources()
{
    const QByteArray wall(R"json({"sources":[{"name":"WALL (%1)","repeat":2000,"width":64,"height":36,)json"
                          R"json("rateN":50,"rateD":1}]})json");
    ProgramRun list({QStringLiteral("-findsources")});
    ProgramRun test(lastOfTheWall);
    test.keepTruth();
    for (ProgramRun *run : {&list, &test}) {
        run->setScenario(wall);
        run->start();
    }
    QVERIFY2(list.waitForFinished(), list.account());
    const QByteArray said = list.standardError();
    QVERIFY2(said.contains("NDI Sources : 2000\n[1] WALL (1)\n") && said.contains("\n[2000] WALL (2000)\n"),
             said.right(200).constData());
    QVERIFY2(test.waitForDots(100), test.account());
    test.interrupt(ProgramRun::Interrupt::Interrupt);
    QVERIFY2(test.waitForFinished() && test.endedWith(1), test.account());
    const TestRecord record = TestRecord::read(test.recordPath());
    QCOMPARE(record.problem, QString());
    QVERIFY(record.rows.size() >= 100);
    for (const TestRecordRow &row : record.rows)
        QCOMPARE(row.sourceName, QByteArray("WALL (2000)"));
    for (const loopback::TruthRecord &event : loopback::readTruth(test.truthPath().toStdString())) {
        if (event.kind == "create")
            QCOMPARE(int(event.number), 1999);
    }
}

/// The search ends after a minute with what there is then; the test after it is not disturbed by a list that still
/// changes.
void TestFaultsLists::aListThatNeverSettles()
{
    // Long queues: whatever the machine does to the runtime, the loss of a frame is the program's fault.
    const QByteArray restless(R"({"queueFrames":1000,"sources":[{"name":"RESTLESS","churn":{"periodMs":100}},)"
                              R"({"name":"STAYS","width":640,"height":360,"rateN":50,"rateD":1}]})");
    ProgramRun list({QStringLiteral("-findsources")});
    ProgramRun test(
        {QStringLiteral("-test"), QStringLiteral("STAYS"), QStringLiteral("-receivers"), QStringLiteral("2")});
    test.keepTruth();
    QElapsedTimer clock;
    clock.start();
    for (ProgramRun *run : {&list, &test}) {
        run->setScenario(restless);
        run->start();
    }
    QVERIFY2(list.waitForFinished(longestSearchMs + 30000), list.account());
    QVERIFY2(clock.elapsed() >= longestSearchMs, qPrintable(QString::number(clock.elapsed())));
    QVERIFY2(list.endedWith(1), list.account());
    QVERIFY2(list.standardError().contains("] STAYS\n"), list.account());
    QVERIFY2(test.waitForError("Start Testing...", 30000), test.account());
    QTest::qWait(int(qMax(qint64(0), churnMs - clock.elapsed()))); // it goes on changing
    QVERIFY2(test.waitForDots(400), test.account());
    test.interrupt(ProgramRun::Interrupt::Interrupt);
    QVERIFY2(test.waitForFinished() && test.endedWith(1), test.account());
    const TestRecord record = TestRecord::read(test.recordPath());
    QCOMPARE(record.problem, QString());
    QVERIFY(record.rows.size() >= 400);
    QVERIFY(std::all_of(record.rows.cbegin(), record.rows.cend(),
                        [](const TestRecordRow &row) { return row.sourceName == "STAYS" && row.intervalMs < 1000; }));
    const auto events = loopback::readTruth(test.truthPath().toStdString());
    for (const char *kind : {"dead", "refree", "drop"})
        QCOMPARE(int(loopback::countTruth(events, kind)), 0);
    QVector<int> pairing;
    QCOMPARE(pairWithTruth(record, truthOfReceivers(events), &pairing), QString());
}

QTEST_GUILESS_MAIN(TestFaultsLists)

#include "tst_faults_lists.moc"
