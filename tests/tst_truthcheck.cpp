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

} // namespace

/// The checks that the tests of whole programs trust.
class TestTruthCheck final : public TestBase {
    Q_OBJECT

private slots:
    void rowsThatFit();
    void wrongRows();
    void theFirstMillisecond();
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

QTEST_GUILESS_MAIN(TestTruthCheck)
#include "tst_truthcheck.moc"
