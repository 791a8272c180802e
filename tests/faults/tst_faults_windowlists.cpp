#include "loopback/truthreader.h"
#include "tests/faults/drivenwindow.h"
#include "tests/support/testbase.h"
#include "tests/support/testrecord.h"

#include <QElapsedTimer>
#include <QtTest>

/// Lists of sources that ask much of the window.
class TestFaultsWindowLists final : public TestBase {
    Q_OBJECT

private slots:
    void twoThousandSources();
    void aListThatNeverSettles();
};

void TestFaultsWindowLists::twoThousandSources()
{
    DrivenWindow window;
    window.setScenario(R"({"discoveryMs":0,"discoveryBatch":100000,)"
                       R"("sources":[{"name":"WALL %1","repeat":2000,"width":64,"height":36}]})");
    window.start();
    QVERIFY2(window.isOpen(2000), window.account());
    window.chooseTwoReceivers();
    window.startOrStop();
    QVERIFY2(window.hasStarted("single, 2 receivers"), window.account());
    QTest::qWait(1000); // of measuring
    window.startOrStop();
    QVERIFY2(window.hasEnded(), window.account());
    QVERIFY2(window.closes(), window.account());
    QCOMPARE(window.records().size(), 1);
    const TestRecord record = TestRecord::read(window.records().constFirst());
    QCOMPARE(record.problem, QString());
    QVERIFY(record.rows.size() > 60);
}

/// The list changes ten times a second while it is asked for again and again.
void TestFaultsWindowLists::aListThatNeverSettles()
{
    DrivenWindow window;
    window.setScenario(
        R"({"discoveryMs":0,"discoveryBatch":100,"sources":[)"
        R"({"name":"STAYS","width":640,"height":360,"rateN":50,"rateD":1},)"
        R"({"name":"RESTLESS","width":640,"height":360,"rateN":50,"rateD":1,"churn":{"periodMs":100}}]})");
    window.start();
    QVERIFY2(window.isShown(), window.account());
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 7000) {
        window.press({DrivenWindow::Key::F5});
        QTest::qWait(50);
    }
    QVERIFY2(window.saidSoFar("vexa.window: sources listed: ") >= 20, window.account());
    QVERIFY2(window.saidSoFar("vexa.window: sources listed: 1\n") > 0, window.account());
    QVERIFY2(window.saidSoFar("vexa.window: sources listed: 2\n") > 0, window.account());
    window.startOrStop();
    QVERIFY2(window.hasStarted("single, 1 receivers"), window.account());
    QTest::qWait(1000); // of measuring
    window.startOrStop();
    QVERIFY2(window.hasEnded(), window.account());
    QVERIFY2(window.closes(), window.account());
    QCOMPARE(window.records().size(), 1);
    const auto events = loopback::readTruth(window.truthPath().toStdString());
    QCOMPARE(int(loopback::countTruth(events, "dead")), 0);
    QCOMPARE(int(loopback::countTruth(events, "refree")), 0);
}

QTEST_GUILESS_MAIN(TestFaultsWindowLists)

#include "tst_faults_windowlists.moc"
