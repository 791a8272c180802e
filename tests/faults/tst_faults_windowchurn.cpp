#include "tests/faults/drivenwindow.h"
#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"

#include <QElapsedTimer>
#include <QtTest>

#include <algorithm>
#include <map>

namespace {

constexpr int churnMs = 70000;
constexpr int betweenTestsMs = 20000;
constexpr int fewestTests = 3;
constexpr int fewestFrames = 50; ///< of a receiver that measures; more than one that asks for a format gets
constexpr int fewestRows = 10;   ///< of these, for a busy window may still have to take most of them up
constexpr int fewestLists = 50;

bool measures(const ReceiverTruth &receiver)
{
    return receiver.frames.size() > fewestFrames;
}

} // namespace

/// A list of sources that changes ten times a second while it is asked for again and again, and what is measured from
/// it.
class TestFaultsWindowChurn final : public TestBase {
    Q_OBJECT

private slots:
    void aListThatNeverSettles();
};

void TestFaultsWindowChurn::aListThatNeverSettles()
{
    // The restless one comes first, so that the other one's place changes.
    const QByteArrayList names{"RESTLESS", "STAYS"};
    DrivenWindow window;
    window.setScenario(R"({"queueFrames":1000,"discoveryMs":0,"discoveryBatch":100,"sources":[)"
                       R"({"name":"RESTLESS","width":640,"height":360,"rateN":50,"rateD":1,"churn":{"periodMs":100}},)"
                       R"({"name":"STAYS","width":640,"height":360,"rateN":50,"rateD":1}]})");
    window.start();
    QVERIFY2(window.isShown(), window.account());
    const auto measuring = [&window] {
        const QVector<ReceiverTruth> receivers =
            truthOfReceivers(loopback::readTruth(window.truthPath().toStdString()));
        return int(std::count_if(receivers.cbegin(), receivers.cend(), measures));
    };
    QElapsedTimer clock;
    clock.start();
    int tests = 0;
    while (clock.elapsed() < churnMs || tests < fewestTests) {
        window.press({DrivenWindow::Key::F5});
        QTest::qWait(50);
        if (tests == fewestTests || clock.elapsed() < qint64(tests + 1) * betweenTestsMs)
            continue;
        ++tests;
        window.startOrStop();
        QVERIFY2(window.hasStarted("single, 1 receivers", tests), window.account());
        QTRY_VERIFY(measuring() >= tests);
        window.startOrStop();
        QVERIFY2(window.hasEnded(tests), window.account());
    }
    QCOMPARE(tests, fewestTests);
    QVERIFY2(window.saidSoFar("vexa.window: sources listed: ") >= fewestLists, window.account());
    QVERIFY2(window.saidSoFar("vexa.window: sources listed: 1\n") > 0, window.account());
    QVERIFY2(window.saidSoFar("vexa.window: sources listed: 2\n") > 0, window.account());
    QVERIFY2(window.closes(), window.account());

    const auto events = loopback::readTruth(window.truthPath().toStdString());
    for (const char *kind : {"dead", "refree", "drop"})
        QCOMPARE(int(loopback::countTruth(events, kind)), 0);
    // As many long ones among a source's receivers as there are records of it: the others ask for its format only.
    std::map<QByteArray, int> measured;
    const QVector<ReceiverTruth> receivers = truthOfReceivers(events);
    for (const loopback::TruthRecord &event : events) {
        if (event.kind == "create" && measures(receivers.at(int(event.receiver))))
            ++measured[names.at(int(event.number))];
    }
    std::map<QByteArray, int> recorded;
    QCOMPARE(window.records().size(), tests);
    for (const QString &path : window.records()) {
        const TestRecord record = TestRecord::read(path);
        QCOMPARE(record.problem, QString());
        QVERIFY2(record.rows.size() > fewestRows, qPrintable(QString::number(record.rows.size())));
        ++recorded[record.rows.constFirst().sourceName];
        for (const TestRecordRow &row : record.rows)
            QCOMPARE(row.sourceName, record.rows.constFirst().sourceName);
    }
    QVERIFY(recorded == measured);
}

QTEST_GUILESS_MAIN(TestFaultsWindowChurn)

#include "tst_faults_windowchurn.moc"
