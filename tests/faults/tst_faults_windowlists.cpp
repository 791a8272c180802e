#include "tests/faults/drivenwindow.h"
#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"

#include <QtTest>

/// Lists of sources that ask much of the window.
class TestFaultsWindowLists final : public TestBase {
    Q_OBJECT

private slots:
    void twoThousandSources();
    void aListThatMoves();
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
    QTest::qWait(3000); // of measuring; a busy window does not take up the last of it
    window.startOrStop();
    QVERIFY2(window.hasEnded(), window.account());
    QVERIFY2(window.closes(), window.account());
    QCOMPARE(window.records().size(), 1);
    const TestRecord record = TestRecord::read(window.records().constFirst());
    QCOMPARE(record.problem, QString());
    QVERIFY(record.rows.size() > 30);
}

/// What is measured is what the list says now, and not what was at its place before.
void TestFaultsWindowLists::aListThatMoves()
{
    const QByteArray size = R"("width":640,"height":360,"rateN":50,"rateD":1)";
    DrivenWindow window;
    window.setScenario(R"({"discoveryMs":0,"discoveryBatch":100,"sources":[{"name":"LEAVES","disappearMs":10000,)"
                       + size + R"(},{"name":"STAYS",)" + size + "}]}");
    window.start();
    QVERIFY2(window.isOpen(2), window.account());
    const auto isShorter = [&window] {
        window.press({DrivenWindow::Key::F5});
        return window.saidSoFar("vexa.window: sources listed: 1\n") > 0;
    };
    QVERIFY2(QTest::qWaitFor(isShorter, 40000), window.account());
    window.startOrStop();
    QVERIFY2(window.hasStarted("single, 1 receivers"), window.account());
    QTest::qWait(3000); // of measuring
    window.startOrStop();
    QVERIFY2(window.hasEnded(), window.account());
    QVERIFY2(window.closes(), window.account());
    QCOMPARE(window.records().size(), 1);
    const TestRecord record = TestRecord::read(window.records().constFirst());
    QCOMPARE(record.problem, QString());
    QVERIFY(record.rows.size() > 30);
    for (const TestRecordRow &row : record.rows)
        QCOMPARE(row.sourceName, QByteArray("STAYS"));
    const QVector<ReceiverTruth> receivers = truthOfReceivers(loopback::readTruth(window.truthPath().toStdString()));
    // The record's rows are frames of a receiver of that source.
    std::int64_t source = -1;
    for (const loopback::TruthRecord &event : loopback::readTruth(window.truthPath().toStdString())) {
        if (event.kind == "create" && receivers.at(int(event.receiver)).frames.size() >= record.rows.size())
            source = event.number;
    }
    QCOMPARE(int(source), 1);
}

QTEST_GUILESS_MAIN(TestFaultsWindowLists)

#include "tst_faults_windowlists.moc"
