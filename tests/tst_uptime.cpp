#include "probes/uptime.h"
#include "tests/support/testbase.h"

#include <QElapsedTimer>
#include <QtTest>

class TestUptime final : public TestBase {
    Q_OBJECT

private slots:
    void text_data();
    void text();
    void clockGoesOn();
};

void TestUptime::text_data()
{
    constexpr quint64 second = 1000;
    constexpr quint64 minute = 60 * second;
    constexpr quint64 hour = 60 * minute;
    constexpr quint64 day = 24 * hour;
    QTest::addColumn<quint64>("milliseconds");
    QTest::addColumn<QString>("shown");
    QTest::newRow("just started") << quint64(0) << QStringLiteral("0 : 0 : 0 : 0");
    QTest::newRow("less than a second") << second - 1 << QStringLiteral("0 : 0 : 0 : 0");
    QTest::newRow("a second") << second << QStringLiteral("0 : 0 : 0 : 1");
    QTest::newRow("before the minute") << minute - 1 << QStringLiteral("0 : 0 : 0 : 59");
    QTest::newRow("a minute") << minute << QStringLiteral("0 : 0 : 1 : 0");
    QTest::newRow("before the hour") << hour - 1 << QStringLiteral("0 : 0 : 59 : 59");
    QTest::newRow("an hour") << hour << QStringLiteral("0 : 1 : 0 : 0");
    QTest::newRow("before the day") << day - 1 << QStringLiteral("0 : 23 : 59 : 59");
    QTest::newRow("a day") << day << QStringLiteral("1 : 0 : 0 : 0");
    QTest::newRow("one, two, three, four")
        << day + 2 * hour + 3 * minute + 4 * second + 999 << QStringLiteral("1 : 2 : 3 : 4");
    QTest::newRow("more than 32 bits of milliseconds") << 50 * day + 5 * second << QStringLiteral("50 : 0 : 0 : 5");
    QTest::newRow("ten years") << 3653 * day + 23 * hour << QStringLiteral("3653 : 23 : 0 : 0");
}

void TestUptime::text()
{
    QFETCH(quint64, milliseconds);
    QTEST(uptimeText(milliseconds), "shown");
}

void TestUptime::clockGoesOn()
{
    const quint64 before = systemUptimeMs();
    QVERIFY(before > 0);
    QTRY_VERIFY(systemUptimeMs() > before);
    QVERIFY(systemUptimeMs() < before + 60000);
}

QTEST_APPLESS_MAIN(TestUptime)
#include "tst_uptime.moc"
