#include "tests/support/programrun.h"
#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"

#include <QtTest>

/// A whole test of the real program, measured against what the loopback runtime says it did.
class TestConsoleAccuracy final : public TestBase {
    Q_OBJECT

private slots:
    void eightReceiversLoseNothing();
};

void TestConsoleAccuracy::eightReceiversLoseNothing()
{
    constexpr int receivers = 8;
    ProgramRun run({QStringLiteral("-test"), QStringLiteral("LOOPBACK (1080p59.94)"), QStringLiteral("-receivers"),
                    QString::number(receivers)});
    // A second of frames can wait: a machine that stands still for less loses none of them by itself.
    run.setScenario(R"json({"queueFrames":60,"sources":[{"name":"LOOPBACK (1080p59.94)",)json"
                    R"json("width":1920,"height":1080,"rateN":60000,"rateD":1001}]})json");
    run.keepTruth();
    run.start();
    QVERIFY2(run.waitForFinished(100000), run.account());
    QVERIFY2(run.endedWith(1), run.account());

    const TestRecord record = TestRecord::read(run.recordPath());
    QCOMPARE(record.problem, QString());
    QCOMPARE(run.standardOutput(), QByteArray(record.rows.size(), '.'));
    const std::vector<loopback::TruthRecord> events = loopback::readTruth(run.truthPath().toStdString());
    QCOMPARE(int(loopback::countTruth(events, "drop")), 0);
    QCOMPARE(int(loopback::countTruth(events, "refree")), 0);
    QCOMPARE(int(loopback::countTruth(events, "dead")), 0);

    const QVector<ReceiverTruth> truth = truthOfReceivers(events);
    QCOMPARE(truth.size(), receivers);
    QVector<int> pairing;
    QCOMPARE(pairWithTruth(record, truth, &pairing), QString());
    for (int receiver = 1; receiver <= receivers; ++receiver) {
        const QVector<TestRecordRow> rows = record.rowsOf(receiver);
        const ReceiverTruth &handedOver = truth.at(pairing.at(receiver - 1));
        QCOMPARE(checkRowsAmongThemselves(rows), QString());
        QVERIFY2(medianHeldMs(handedOver) < 1, qPrintable(QString::number(medianHeldMs(handedOver))));
        for (const TestRecordRow &row : rows) {
            QCOMPARE(row.sourceName, QByteArray("LOOPBACK (1080p59.94)"));
            QCOMPARE(row.width, 1920);
            QCOMPARE(row.height, 1080);
            QCOMPARE(row.defaultFps, 59.0);
        }
        const int firstFrame = int(handedOver.frames.first().number);
        QVERIFY2(firstFrame <= 120, qPrintable(QString::number(firstFrame))); // a receiver may connect a moment late
        // A minute at 60000/1001 frames a second, less what connecting takes; its end may come late.
        QVERIFY2(rows.size() >= 3600 - firstFrame - 120 && rows.size() <= 3660,
                 qPrintable(QString::number(rows.size())));
        for (int frame = 0; frame < handedOver.frames.size(); ++frame)
            QCOMPARE(int(handedOver.frames.at(frame).number), firstFrame + frame);
        // What was handed over without a row came after the minute.
        for (int frame = rows.size(); frame < handedOver.frames.size(); ++frame)
            QVERIFY2(handedOver.timeMs(frame) >= 58000, qPrintable(QString::number(handedOver.timeMs(frame))));
    }
}

QTEST_GUILESS_MAIN(TestConsoleAccuracy)
#include "tst_console_accuracy.moc"
