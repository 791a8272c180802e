#include "probes/gpuloadtext.h"
#include "tests/support/testbase.h"

#include <QtTest>

#include <cmath>
#include <limits>

namespace {

constexpr int intMax = std::numeric_limits<int>::max();
constexpr int intMin = std::numeric_limits<int>::min();
constexpr int none = -12345;

const char i915Text[] = "pos:\t0\nflags:\t02100002\nmnt_id:\t26\nino:\t912\n"
                        "drm-driver:\ti915\ndrm-pdev:\t0000:00:02.0\ndrm-client-id:\t7\n"
                        "drm-total-system0:\t4 MiB\n"
                        "drm-engine-render:\t9288864723 ns\ndrm-engine-copy:\t2035071108 ns\n"
                        "drm-engine-video:\t0 ns\ndrm-engine-capacity-video:\t2\n";
const char xeText[] = "drm-driver:\txe\ndrm-client-id:\t41\ndrm-pdev:\t0000:03:00.0\n"
                      "drm-cycles-rcs:\t28257900\ndrm-total-cycles-rcs:\t7655183225\n"
                      "drm-cycles-vcs:\t0\ndrm-total-cycles-vcs:\t7655183225\ndrm-engine-capacity-vcs:\t2\n";

} // namespace

class TestGpuLoadText final : public TestBase {
    Q_OBJECT

private slots:
    void firstLine_data();
    void firstLine();
    void wholePercentStaysWithinInt();
    void sum_data();
    void sum();
    void i915UsageIsRead();
    void xeUsageIsRead();
    void otherDescriptors_data();
    void otherDescriptors();
    void busyTimeBecomesPercent();
    void busyCyclesBecomePercent();
};

void TestGpuLoadText::firstLine_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<int>("percent");
    QTest::newRow("fraction is cut") << QByteArray("12.7\r\n") << 12;
    QTest::newRow("two busy engines") << QByteArray("153.9\r\n") << 153;
    QTest::newRow("blanks around 0") << QByteArray("  \t0  \r\n") << 0;
    QTest::newRow("only the first line") << QByteArray("7\n80\n") << 7;
    QTest::newRow("no line end") << QByteArray("42.99") << 42;
    QTest::newRow("exponent") << QByteArray("1.5e1\n") << 15;
    QTest::newRow("negative, towards zero") << QByteArray("-3.9\n") << -3;
    QTest::newRow("nothing") << QByteArray() << none;
    QTest::newRow("empty first line") << QByteArray("\n55\n") << none;
    QTest::newRow("only blanks") << QByteArray("   \r\n") << none;
    QTest::newRow("letters") << QByteArray("Get-Counter : not found\n") << none;
    QTest::newRow("number and letters") << QByteArray("12 %\n") << none;
    QTest::newRow("decimal comma") << QByteArray("12,7\n") << none;
    QTest::newRow("huge") << QByteArray("1e300\n") << intMax;
    QTest::newRow("hugely negative") << QByteArray("-1e300\n") << intMin;
    QTest::newRow("infinite") << QByteArray("inf\n") << intMax;
    QTest::newRow("not a number") << QByteArray("nan\n") << 0;
}

void TestGpuLoadText::firstLine()
{
    QFETCH(QByteArray, output);
    QFETCH(int, percent);
    QCOMPARE(percentOfFirstLine(output).value_or(none), percent);
}

void TestGpuLoadText::wholePercentStaysWithinInt()
{
    QCOMPARE(wholePercent(0.999), 0);
    QCOMPARE(wholePercent(-0.999), 0);
    QCOMPARE(wholePercent(2147483646.9), intMax - 1);
    QCOMPARE(wholePercent(2147483648.0), intMax);
    QCOMPARE(wholePercent(-2147483649.0), intMin);
    QCOMPARE(wholePercent(std::numeric_limits<double>::infinity()), intMax);
    QCOMPARE(wholePercent(-std::numeric_limits<double>::infinity()), intMin);
    QCOMPARE(wholePercent(std::numeric_limits<double>::quiet_NaN()), 0);
}

void TestGpuLoadText::sum_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<double>("percent");
    QTest::newRow("one card") << QByteArray("37\n") << 37.0;
    QTest::newRow("three cards") << QByteArray("37\n90\n3\n") << 130.0;
    QTest::newRow("an idle card") << QByteArray("0\n") << 0.0;
    QTest::newRow("a card that cannot tell") << QByteArray("[N/A]\n12\n") << 12.0;
    QTest::newRow("infinite is no load") << QByteArray("inf\n12\nnan\n") << 12.0;
    QTest::newRow("no card can tell") << QByteArray("[N/A]\n[Not Supported]\n") << double(none);
    QTest::newRow("an error") << QByteArray("NVIDIA-SMI has failed because of 3 things\n") << double(none);
    QTest::newRow("nothing") << QByteArray() << double(none);
}

void TestGpuLoadText::sum()
{
    QFETCH(QByteArray, output);
    QFETCH(double, percent);
    QCOMPARE(sumOfLines(output).value_or(none), percent);
}

void TestGpuLoadText::i915UsageIsRead()
{
    const std::optional<DrmUsage> usage = parseDrmUsage(i915Text);
    QVERIFY(usage);
    QCOMPARE(usage->adapter, QByteArray("0000:00:02.0"));
    QCOMPARE(usage->clientId, quint64(7));
    QCOMPARE(usage->busyNs, (QMap<QByteArray, quint64>{{"render", 9288864723}, {"copy", 2035071108}, {"video", 0}}));
    QVERIFY(usage->busyCycles.isEmpty());
    QVERIFY(usage->totalCycles.isEmpty());
}

void TestGpuLoadText::xeUsageIsRead()
{
    const std::optional<DrmUsage> usage = parseDrmUsage(xeText);
    QVERIFY(usage);
    QCOMPARE(usage->adapter, QByteArray("0000:03:00.0"));
    QCOMPARE(usage->clientId, quint64(41));
    QVERIFY(usage->busyNs.isEmpty());
    QCOMPARE(usage->busyCycles, (QMap<QByteArray, quint64>{{"rcs", 28257900}, {"vcs", 0}}));
    QCOMPARE(usage->totalCycles, (QMap<QByteArray, quint64>{{"rcs", 7655183225}, {"vcs", 7655183225}}));
}

void TestGpuLoadText::otherDescriptors_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("a file") << QByteArray("pos:\t0\nflags:\t02100002\nmnt_id:\t26\nino:\t912\n");
    QTest::newRow("another driver") << QByteArray("drm-driver:\tamdgpu\ndrm-client-id:\t7\ndrm-engine-gfx:\t9 ns\n");
    QTest::newRow("no client number") << QByteArray("drm-driver:\ti915\ndrm-engine-render:\t9 ns\n");
    QTest::newRow("a client that is no number") << QByteArray("drm-driver:\ti915\ndrm-client-id:\tseven\n");
    QTest::newRow("a driver with a longer name") << QByteArray("drm-driver:\txe2\ndrm-client-id:\t7\n");
    QTest::newRow("empty") << QByteArray();
}

void TestGpuLoadText::otherDescriptors()
{
    QFETCH(QByteArray, text);
    QVERIFY(!parseDrmUsage(text));
}

void TestGpuLoadText::busyTimeBecomesPercent()
{
    constexpr qint64 secondNs = 1'000'000'000;
    DrmUsage before;
    before.busyNs = {{"render", 500}, {"copy", 0}, {"video", 900}};
    DrmUsage after = before;
    QCOMPARE(drmBusyPercent(before, after, secondNs), 0.0);
    after.busyNs = {{"render", 500 + 750'000'000}, {"copy", 500'000'000}, {"video", 100}, {"compute", 4'000'000'000}};
    // Video went back and compute is new: neither counts.
    QCOMPARE(drmBusyPercent(before, after, secondNs), 125.0);
    QCOMPARE(drmBusyPercent(before, after, 2 * secondNs), 62.5);
    QCOMPARE(drmBusyPercent(before, after, 0), 0.0);
    QCOMPARE(drmBusyPercent(before, after, -1), 0.0);
}

void TestGpuLoadText::busyCyclesBecomePercent()
{
    DrmUsage before;
    before.busyCycles = {{"rcs", 100}, {"vcs", 100}, {"bcs", 100}};
    before.totalCycles = {{"rcs", 1000}, {"vcs", 1000}, {"bcs", 1000}};
    DrmUsage after;
    after.busyCycles = {{"rcs", 400}, {"vcs", 1600}, {"bcs", 200}};
    after.totalCycles = {{"rcs", 2000}, {"vcs", 2000}, {"bcs", 1000}}; // no cycle of bcs has passed
    QCOMPARE(drmBusyPercent(before, after, 1), 180.0);
    before.busyNs = {{"rcs", 0}};
    after.busyNs = {{"rcs", 10}}; // told twice: the time counts
    QCOMPARE(drmBusyPercent(before, after, 100), 160.0);
}

QTEST_GUILESS_MAIN(TestGpuLoadText)
#include "tst_gpuloadtext.moc"
