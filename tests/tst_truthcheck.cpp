#include "tests/support/testbase.h"
#include "tests/support/truthcheck.h"

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

constexpr qint64 nsPerMs = 1000000;
constexpr int framePeriodMs = 40;
constexpr int quicklyUs = 200; ///< how long a program keeps a frame that has nothing else to do

/// A receiver that was handed a frame each 40 ms, the first of them after so long.
ReceiverTruth truthFrom(int firstMs, int frames)
{
    ReceiverTruth truth;
    truth.createdNs = 5000 * nsPerMs;
    truth.askedNs = truth.createdNs + quicklyUs * 1000;
    for (int i = 0; i < frames; ++i) {
        loopback::TruthRecord frame;
        frame.timeNs = truth.createdNs + (firstMs + framePeriodMs * i) * nsPerMs + nsPerMs / 2;
        truth.frames.append(frame);
        truth.freedNs.append(frame.timeNs + quicklyUs * 1000);
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

loopback::TruthRecord line(const char *kind, int receiver, qint64 timeNs, int number = 0, const char *note = "")
{
    loopback::TruthRecord record;
    record.kind = kind;
    record.receiver = receiver;
    record.timeNs = timeNs;
    record.number = number;
    record.note = note;
    return record;
}

} // namespace

/// The checks that the tests of whole programs trust.
class TestTruthCheck final : public TestBase {
    Q_OBJECT

private slots:
    void rowsThatFit();
    void wrongRows();
    void theFirstMillisecond();
    void linesAreSortedByReceiver();
    void receiversAreFoundAgain();
    void timesOfRows_data();
    void timesOfRows();
    void aClockThatStartsLate();
    void aClockThatIsReadLate();
    void rowsWithoutFrames();
    void heldFrames();
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

void TestTruthCheck::linesAreSortedByReceiver()
{
    const QVector<ReceiverTruth> truth = truthOfReceivers(
        {line("create", 0, 100), line("create", 1, 110), line("ask", 1, 120), line("ask", 0, 130),
         line("video", 1, 200, 7, "640x360"), line("video", 0, 210, 7, "640x360"), line("free", 0, 220, 7),
         line("free", 1, 230, 7), line("video", 0, 300, 8, "0x0"), line("free", 0, 310, 8), line("skip", -1, 315, 9),
         line("video", 0, 320, 9, "640x360"), line("video", 0, 330, 9, "640x360"), line("free", 0, 340, 9)});
    QCOMPARE(truth.size(), 2);
    QCOMPARE(truth.at(0).createdNs, std::int64_t(100));
    QCOMPARE(truth.at(0).askedNs, std::int64_t(130));
    QCOMPARE(truth.at(1).createdNs, std::int64_t(110));
    QCOMPARE(truth.at(1).askedNs, std::int64_t(120));
    QCOMPARE(truth.at(1).freedNs, (QVector<std::int64_t>{230}));
    QCOMPARE(truth.at(0).frames.size(), 3); // without the one that has no size
    QCOMPARE(truth.at(0).freedNs.size(), 3);
    QCOMPARE(truth.at(0).freedNs.at(0), std::int64_t(220));
    QVERIFY(truth.at(0).freedNs.at(1) > std::int64_t(1) << 60); // never
    QCOMPARE(truth.at(0).freedNs.at(2), std::int64_t(340));
}

void TestTruthCheck::receiversAreFoundAgain()
{
    const QVector<ReceiverTruth> truth{truthFrom(5, 100), truthFrom(25, 100), truthFrom(15, 100)};
    QVector<int> pairing;
    QCOMPARE(pairWithTruth(recordOf({truth.at(2), truth.at(0), truth.at(1)}), truth, &pairing), QString());
    QCOMPARE(pairing, (QVector<int>{2, 0, 1}));
    const QString wrong = pairWithTruth(recordOf({truth.at(2), truth.at(0), truth.at(0)}), truth, &pairing);
    QVERIFY2(wrong.contains(QLatin1String("\n3 as 1: row 0 says 5 ms, ")), qPrintable(wrong));
}

void TestTruthCheck::timesOfRows_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("offMs");
    QTest::addColumn<bool>("isRight");
    QTest::newRow("as they were") << 0 << 0 << 0 << true;
    QTest::newRow("one a little") << 1000 << 1 << 1 << false;
    QTest::newRow("one a little early") << 1000 << 1 << -1 << false;
    QTest::newRow("all a little late") << 0 << 4000 << 1 << false;
    QTest::newRow("all a little early") << 0 << 4000 << -1 << false;
    QTest::newRow("a frame left out") << 1000 << 3000 << framePeriodMs << false;
}

void TestTruthCheck::timesOfRows()
{
    QFETCH(int, first);
    QFETCH(int, count);
    QFETCH(int, offMs);
    QFETCH(bool, isRight);
    const ReceiverTruth truth = truthFrom(5, 4000);
    QVector<TestRecordRow> rows = recordOf({truth}).rowsOf(1);
    for (int i = first; i < first + count; ++i)
        rows[i].timeMs += offMs;
    QCOMPARE(checkRowTimes(rows, truth).isEmpty(), isRight);
}

/// The machine may stop the program before it starts the clock; then all rows are early, and by the same.
void TestTruthCheck::aClockThatStartsLate()
{
    ReceiverTruth truth = truthFrom(100, 4000);
    QVector<TestRecordRow> rows = recordOf({truth}).rowsOf(1);
    for (TestRecordRow &row : rows)
        row.timeMs -= 49;
    QVERIFY(!checkRowTimes(rows, truth).isEmpty());
    truth.askedNs = truth.createdNs + 50 * nsPerMs;
    QCOMPARE(checkRowTimes(rows, truth), QString());
    rows[2000].timeMs += 3; // in between
    QVERIFY(!checkRowTimes(rows, truth).isEmpty());
}

/// It may also stop it before it reads the clock; then that row is late.
void TestTruthCheck::aClockThatIsReadLate()
{
    ReceiverTruth truth = truthFrom(100, 4000);
    QVector<TestRecordRow> rows = recordOf({truth}).rowsOf(1);
    rows[2000].timeMs += 30;
    QVERIFY(!checkRowTimes(rows, truth).isEmpty());
    truth.freedNs[2000] = truth.frames.at(2000).timeNs + 31 * nsPerMs;
    QCOMPARE(checkRowTimes(rows, truth), QString());
    rows[2000].timeMs += 2;
    QVERIFY(!checkRowTimes(rows, truth).isEmpty());
}

void TestTruthCheck::rowsWithoutFrames()
{
    const ReceiverTruth truth = truthFrom(5, 10);
    QCOMPARE(checkRowTimes(recordOf({truthFrom(5, 11)}).rowsOf(1), truth), QStringLiteral("11 rows of 10 frames"));
    QCOMPARE(checkRowTimes(recordOf({truthFrom(5, 9)}).rowsOf(1), truth), QString()); // the end comes between
    QCOMPARE(checkRowTimes({}, ReceiverTruth()), QString());
}

void TestTruthCheck::heldFrames()
{
    ReceiverTruth truth = truthFrom(5, 5);
    QCOMPARE(medianHeldMs(truth), 0.2);
    truth.freedNs[0] += 9 * nsPerMs;
    truth.freedNs[4] += 9 * nsPerMs;
    QCOMPARE(medianHeldMs(truth), 0.2);
    truth.freedNs[2] += 9 * nsPerMs;
    QCOMPARE(medianHeldMs(truth), 9.2);
    QCOMPARE(medianHeldMs(ReceiverTruth()), 0.0);
}

QTEST_GUILESS_MAIN(TestTruthCheck)
#include "tst_truthcheck.moc"
