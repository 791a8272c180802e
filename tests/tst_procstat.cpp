#include "probes/procstat.h"
#include "tests/support/testbase.h"

#include <QtTest>

class TestProcStat final : public TestBase {
    Q_OBJECT

private slots:
    void parse_data();
    void parse();
    void busy_data();
    void busy();
    void firstReadingTellsNothing();
    void unreadableTextIsSkipped();
};

void TestProcStat::parse_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("isRead");
    QTest::addColumn<quint64>("total");
    QTest::addColumn<quint64>("idle");
    QTest::newRow("whole file, core lines follow")
        << QByteArray("cpu  10 1 5 80 4 2 3 6 0 0\ncpu0 1 1 1 1\nintr 5\n") << true << quint64(111) << quint64(84);
    QTest::newRow("guest time is not counted twice")
        << QByteArray("cpu 10 0 5 80 5 0 0 0 7 9\n") << true << quint64(100) << quint64(85);
    QTest::newRow("no line end") << QByteArray("cpu 10 0 5 80 5") << true << quint64(100) << quint64(85);
    QTest::newRow("larger than 32 bits") << QByteArray("cpu 5000000000 0 0 7000000000 0 0 0 0\n") << true
                                         << quint64(12000000000) << quint64(7000000000);
    QTest::newRow("old kernel without disk wait") << QByteArray("cpu 1 2 3 4\n") << false << quint64(0) << quint64(0);
    QTest::newRow("core line first") << QByteArray("cpu0 1 2 3 4 5\n") << false << quint64(0) << quint64(0);
    QTest::newRow("a word among the numbers") << QByteArray("cpu 1 x 3 4 5\n") << false << quint64(0) << quint64(0);
    QTest::newRow("a negative number") << QByteArray("cpu 1 2 3 -4 5\n") << false << quint64(0) << quint64(0);
    QTest::newRow("empty") << QByteArray() << false << quint64(0) << quint64(0);
}

void TestProcStat::parse()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, isRead);
    QFETCH(quint64, total);
    QFETCH(quint64, idle);
    const std::optional<CpuTicks> ticks = parseProcStat(text);
    QCOMPARE(ticks.has_value(), isRead);
    QCOMPARE(ticks.value_or(CpuTicks()).total, total);
    QCOMPARE(ticks.value_or(CpuTicks()).idle, idle);
}

void TestProcStat::busy_data()
{
    QTest::addColumn<quint64>("totalBefore");
    QTest::addColumn<quint64>("idleBefore");
    QTest::addColumn<quint64>("totalAfter");
    QTest::addColumn<quint64>("idleAfter");
    QTest::addColumn<int>("percent"); // -1: none
    const auto row = [](const char *name, quint64 total0, quint64 idle0, quint64 total1, quint64 idle1, int percent) {
        QTest::newRow(name) << total0 << idle0 << total1 << idle1 << percent;
    };
    row("a quarter", 1000, 500, 1200, 650, 25);
    row("all idle", 1000, 500, 1200, 700, 0);
    row("all busy", 1000, 500, 1200, 500, 100);
    row("truncated, not rounded", 0, 0, 1000, 1, 99);
    row("just below one percent", 0, 0, 1000, 991, 0);
    row("exactly one percent", 0, 0, 1000, 990, 1);
    row("disk wait went back", 1000, 500, 1200, 490, 100);
    row("more idle than time", 1000, 500, 1200, 800, 0);
    row("no time has passed", 1000, 500, 1000, 500, -1);
    row("time went back", 1000, 500, 900, 400, -1);
}

void TestProcStat::busy()
{
    QFETCH(quint64, totalBefore);
    QFETCH(quint64, idleBefore);
    QFETCH(quint64, totalAfter);
    QFETCH(quint64, idleAfter);
    QFETCH(int, percent);
    QCOMPARE(busyPercent({totalBefore, idleBefore}, {totalAfter, idleAfter}).value_or(-1), percent);
}

void TestProcStat::firstReadingTellsNothing()
{
    ProcessorLoad load;
    QVERIFY(!load.add("cpu 100 0 0 100 0 0 0 0\n"));
    QCOMPARE(load.add("cpu 130 0 0 160 10 0 0 0\n"), std::optional<int>(30));
    QCOMPARE(load.add("cpu 230 0 0 160 10 0 0 0\n"), std::optional<int>(100));
}

void TestProcStat::unreadableTextIsSkipped()
{
    ProcessorLoad load;
    QVERIFY(!load.add(QByteArray()));
    QVERIFY(!load.add("cpu 100 0 0 100 0 0 0 0\n"));
    QVERIFY(!load.add("nonsense"));
    QCOMPARE(load.add("cpu 150 0 0 150 0 0 0 0\n"), std::optional<int>(50));
}

QTEST_GUILESS_MAIN(TestProcStat)
#include "tst_procstat.moc"
