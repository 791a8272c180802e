#include "probes/memoryinfo.h"
#include "tests/support/testbase.h"

#include <QtTest>

class TestMemoryInfo final : public TestBase {
    Q_OBJECT

private slots:
    void text_data();
    void text();
    void valueIsSinglePrecision();
};

void TestMemoryInfo::text_data()
{
    constexpr quint64 gib = 1ULL << 30;
    constexpr quint64 tenth = gib / 10;
    QTest::addColumn<quint64>("bytes");
    QTest::addColumn<QString>("shown");
    QTest::newRow("nothing") << quint64(0) << QStringLiteral("0G");
    QTest::newRow("16 GiB") << 16 * gib << QStringLiteral("16G");
    QTest::newRow("15.9 GiB") << 16 * gib - tenth << QStringLiteral("15.9G");
    QTest::newRow("8 GiB less what the firmware keeps") << quint64(8482746368) << QStringLiteral("7.9G");
    QTest::newRow("just below half a tenth") << gib + tenth / 2 - 1000 << QStringLiteral("1G");
    QTest::newRow("just above half a tenth") << gib + tenth / 2 + 1000 << QStringLiteral("1.1G");
    QTest::newRow("exactly half a tenth goes up") << 4 * gib + gib / 4 << QStringLiteral("4.3G");
    QTest::newRow("less than half a tenth") << tenth / 2 - 1000 << QStringLiteral("0G");
    QTest::newRow("a server") << 1536 * gib << QStringLiteral("1536G");
    QTest::newRow("a large server: six digits") << 24576 * gib + 4 * tenth << QStringLiteral("24576.4G");
    QTest::newRow("more than six digits") << (gib << 20) << QStringLiteral("1.04858e+06G");
}

void TestMemoryInfo::text()
{
    QFETCH(quint64, bytes);
    QTEST(memoryText(gibibytes(bytes)), "shown");
}

void TestMemoryInfo::valueIsSinglePrecision()
{
    QCOMPARE(gibibytes(8482746368), 7.9F);
    // The bytes do not fit into 24 bits: in single precision this is 0.15 GiB, in double precision a little less.
    constexpr quint64 bytes = 161061273;
    QCOMPARE(static_cast<quint64>(static_cast<float>(bytes)), quint64(161061280));
    QCOMPARE(gibibytes(bytes), 0.2F);
}

QTEST_APPLESS_MAIN(TestMemoryInfo)
#include "tst_memoryinfo.moc"
