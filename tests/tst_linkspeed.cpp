#include "probes/linkspeed.h"
#include "tests/support/testbase.h"

#include <QtTest>

class TestLinkSpeed final : public TestBase {
    Q_OBJECT

private slots:
    void bits_data();
    void bits();
    void sysfs_data();
    void sysfs();
    void text();
    void unknownAdapter();
};

void TestLinkSpeed::bits_data()
{
    QTest::addColumn<QString>("bits");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *title, const char *bits, const char *shown) {
        QTest::newRow(title) << QString::fromLatin1(bits) << QString::fromLatin1(shown);
    };
    row("10 Mbit/s", "10000000", "10/10Mbps");
    row("100 Mbit/s", "100000000", "100/100Mbps");
    row("1 Gbit/s", "1000000000", "1000/1000Mbps");
    row("wireless, the fraction is cut", "866700000", "866/866Mbps");
    row("the largest number", "2147483647", "2147/2147Mbps");
    row("one more", "2147483648", "0/0Mbps");
    row("2.5 Gbit/s", "2500000000", "0/0Mbps");
    row("10 Gbit/s", "10000000000", "0/0Mbps");
    row("not known to the driver", "9223372036854775807", "0/0Mbps");
    row("less than a megabit", "999999", "0/0Mbps");
    row("toward zero", "-1999999", "-1/-1Mbps");
    row("no number", "fast", "0/0Mbps");
    row("empty", "", "0/0Mbps");
}

void TestLinkSpeed::bits()
{
    QFETCH(QString, bits);
    QTEST(linkSpeedOfBits(bits), "shown");
}

void TestLinkSpeed::sysfs_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("megabits"); // 0: unknown
    QTest::newRow("gigabit") << QByteArray("1000\n") << 1000;
    QTest::newRow("2.5 gigabit") << QByteArray("2500\n") << 2500;
    QTest::newRow("100 gigabit") << QByteArray("100000\n") << 100000;
    QTest::newRow("slowest") << QByteArray("1\n") << 1;
    QTest::newRow("no link") << QByteArray("-1\n") << 0;
    QTest::newRow("no link, older driver") << QByteArray("4294967295\n") << 0;
    QTest::newRow("zero") << QByteArray("0\n") << 0;
    QTest::newRow("not readable") << QByteArray() << 0;
    QTest::newRow("words") << QByteArray("unknown\n") << 0;
}

void TestLinkSpeed::sysfs()
{
    QFETCH(QByteArray, content);
    QTEST(linkSpeedInSysfs(content).value_or(0), "megabits");
}

void TestLinkSpeed::text()
{
    QCOMPARE(linkSpeedText(2500), QStringLiteral("2500/2500Mbps"));
}

void TestLinkSpeed::unknownAdapter()
{
    const std::atomic<bool> abort{false};
    QCOMPARE(getLinkSpeed(QStringLiteral("no such adapter"), abort), QString());
    QCOMPARE(getLinkSpeed(QStringLiteral("it's ' or Name like '%"), abort), QString());
    QCOMPARE(getLinkSpeed(QString(), abort), QString());
}

QTEST_APPLESS_MAIN(TestLinkSpeed)
#include "tst_linkspeed.moc"
