#include "tests/faults/drivenwindow.h"
#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"

#include <QElapsedTimer>
#include <QtTest>

#include <map>

namespace {

constexpr int churnMs = 70000;
constexpr int betweenTestsMs = 20000;
constexpr int measuredMs = 2000;
constexpr int fewestRows = 50;

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
    window.setScenario(R"({"discoveryMs":0,"discoveryBatch":100,"sources":[)"
                       R"({"name":"RESTLESS","width":640,"height":360,"rateN":50,"rateD":1,"churn":{"periodMs":100}},)"
                       R"({"name":"STAYS","width":640,"height":360,"rateN":50,"rateD":1}]})");
    window.start();
    QVERIFY2(window.isShown(), window.account());
    QElapsedTimer clock;
    clock.start();
    int tests = 0;
    while (clock.elapsed() < churnMs) {
        window.press({DrivenWindow::Key::F5});
        QTest::qWait(50);
        if (clock.elapsed() < qint64(tests + 1) * betweenTestsMs)
            continue;
        ++tests;
        window.startOrStop();
        QVERIFY2(window.hasStarted("single, 1 receivers", tests), window.account());
        QTest::qWait(measuredMs);
        window.startOrStop();
        QVERIFY2(window.hasEnded(tests), window.account());
    }
    QCOMPARE(tests, churnMs / betweenTestsMs);
    QVERIFY2(window.saidSoFar("vexa.window: sources listed: ") >= 200, window.account());
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
        if (event.kind == "create" && receivers.at(int(event.receiver)).frames.size() > fewestRows)
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
