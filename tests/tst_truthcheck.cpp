#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"
#include "tests/support/truthpairing.h"

namespace {

/// Rows of a receiver of a source of 25 frames per second that fit each other, at these times.
QVector<TestRecordRow> rowsAt(const QVector<int> &timesMs)
{
    QVector<TestRecordRow> rows;
    for (int i = 0; i < timesMs.size(); ++i) {
        TestRecordRow row;
        row.defaultFps = 25.0;
        row.timeMs = timesMs.at(i);
        row.intervalMs = i == 0 ? 0 : timesMs.at(i) - timesMs.at(i - 1);
        row.fps = 1000.0 * (i + 1) / timesMs.at(i);
        rows.append(row);
    }
    return rows;
}

/// A receiver that was handed a frame each 40 ms, the first of them after so long.
ReceiverTruth truthFrom(int firstMs, int frames)
{
    ReceiverTruth truth;
    for (int i = 0; i < frames; ++i) {
        loopback::TruthRecord frame;
        frame.timeNs = (firstMs + 40 * i) * qint64(1000000);
        truth.frames.append(frame);
    }
    return truth;
}

/// The rows of such receivers, in this order.
TestRecord recordOf(const QVector<ReceiverTruth> &receivers)
{
    TestRecord record;
    for (int receiver = 0; receiver < receivers.size(); ++receiver) {
        for (int i = 0; i < receivers.at(receiver).frames.size(); ++i) {
            TestRecordRow row;
            row.receiver = receiver + 1;
            row.timeMs = receivers.at(receiver).timeMs(i);
            record.rows.append(row);
        }
    }
    return record;
}

constexpr Nearness tolerance{1, 50};

} // namespace

/// The checks that the tests of whole programs trust.
class TestTruthCheck final : public TestBase {
    Q_OBJECT

private slots:
    void rowsThatFit();
    void wrongRows();
    void theFirstMillisecond();
    void receiversAreFoundAgain();
    void rowsFarFromTheTruth_data();
    void rowsFarFromTheTruth();
};

void TestTruthCheck::rowsThatFit()
{
    QCOMPARE(checkRowsAmongThemselves({}), QString());
    QCOMPARE(checkRowsAmongThemselves(rowsAt({12, 52, 52, 95})), QString());
}

void TestTruthCheck::wrongRows()
{
    const QVector<TestRecordRow> good = rowsAt({12, 52, 95});
    QVector<TestRecordRow> wrong = good;
    wrong[2].intervalMs = 42;
    QCOMPARE(checkRowsAmongThemselves(wrong), QStringLiteral("row 2: interval 42, not 43"));
    wrong = good;
    wrong[0].intervalMs = 12;
    QCOMPARE(checkRowsAmongThemselves(wrong), QStringLiteral("row 0: interval 12, not 0"));
    wrong = good;
    wrong[1].fps = 25.0;
    QVERIFY(checkRowsAmongThemselves(wrong).startsWith(QLatin1String("row 1: rate 25, not")));
    QCOMPARE(checkRowsAmongThemselves(rowsAt({12, 52, 51})), QStringLiteral("row 2: time goes back"));
}

void TestTruthCheck::theFirstMillisecond()
{
    QVector<TestRecordRow> rows = rowsAt({0, 17, 57});
    QCOMPARE(checkRowsAmongThemselves(rows), QStringLiteral("row 1: interval 17, not 0"));
    rows[1].intervalMs = 0;
    QCOMPARE(checkRowsAmongThemselves(rows), QString());
}

void TestTruthCheck::receiversAreFoundAgain()
{
    const QVector<ReceiverTruth> truth{truthFrom(5, 100), truthFrom(25, 100), truthFrom(15, 100)};
    QVector<int> pairing;
    QCOMPARE(pairNearTruth(recordOf({truth.at(2), truth.at(0), truth.at(1)}), truth, tolerance, &pairing), QString());
    QCOMPARE(pairing, (QVector<int>{2, 0, 1}));
    QCOMPARE(pairWithTruth(recordOf({truth.at(2), truth.at(0), truth.at(1)}), truth, 1, &pairing), QString());
    QCOMPARE(pairing, (QVector<int>{2, 0, 1}));
}

void TestTruthCheck::rowsFarFromTheTruth_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("offMs");
    QTest::addColumn<bool>("isRight");
    QTest::newRow("all a little") << 0 << 4000 << 1 << true;
    QTest::newRow("four of four thousand") << 1000 << 4 << 30 << true;
    QTest::newRow("five of four thousand") << 1000 << 5 << 30 << false;
    QTest::newRow("one by much") << 1000 << 1 << 51 << false;
    QTest::newRow("all by more than a little") << 0 << 4000 << 2 << false;
    QTest::newRow("a frame left out") << 1000 << 3000 << 40 << false;
}

void TestTruthCheck::rowsFarFromTheTruth()
{
    QFETCH(int, first);
    QFETCH(int, count);
    QFETCH(int, offMs);
    QFETCH(bool, isRight);
    const QVector<ReceiverTruth> truth{truthFrom(5, 4000)};
    TestRecord record = recordOf(truth);
    for (int i = first; i < first + count; ++i)
        record.rows[i].timeMs += offMs;
    QVector<int> pairing;
    QCOMPARE(pairNearTruth(record, truth, tolerance, &pairing).isEmpty(), isRight);
}

QTEST_GUILESS_MAIN(TestTruthCheck)
#include "tst_truthcheck.moc"
