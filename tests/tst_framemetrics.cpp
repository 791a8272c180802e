#include "ndi/framemetrics.h"
#include "tests/support/testbase.h"

#include <QtTest>

#include <limits>

class TestFrameMetrics final : public TestBase {
    Q_OBJECT

private slots:
    void nominalRate_data();
    void nominalRate();
    void figures_data();
    void figures();
    void windowHoldsNominalManyArrivals_data();
    void windowHoldsNominalManyArrivals();
    void windowShrinksByOneAFrameAfterARateDrop();
    void restartForgetsTheLastRun();
    void steadyRateReadsAsItself();
    void copyBytes_data();
    void copyBytes();
};

void TestFrameMetrics::nominalRate_data()
{
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::addColumn<int>("expected");
    QTest::newRow("29.97 is cut to 29") << 30000 << 1001 << 29;
    QTest::newRow("59.94 is cut to 59") << 60000 << 1001 << 59;
    QTest::newRow("25 stays") << 25 << 1 << 25;
    QTest::newRow("one and a half is 1") << 3 << 2 << 1;
    QTest::newRow("below one is 0") << 1 << 2 << 0;
    QTest::newRow("a denominator of 0 is 0") << 60000 << 0 << 0;
    QTest::newRow("both 0") << 0 << 0 << 0;
    QTest::newRow("a negative quotient is kept") << -60 << 1 << -60;
    QTest::newRow("cut towards zero") << -3 << 2 << -1;
    QTest::newRow("the one quotient outside int") << least << -1 << most;
    QTest::newRow("the largest") << most << 1 << most;
}

void TestFrameMetrics::nominalRate()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    QTEST(::nominalRate(numerator, denominator), "expected");
}

void TestFrameMetrics::figures_data()
{
    constexpr double infinite = std::numeric_limits<double>::infinity();
    QTest::addColumn<int>("nominal");
    QTest::addColumn<QVector<int>>("arrivals");
    QTest::addColumn<QVector<double>>("rates");
    QTest::addColumn<QVector<int>>("intervals");
    QTest::newRow("first frame: one in the time since the start")
        << 25 << QVector<int>{40} << QVector<double>{25.0} << QVector<int>{0};
    QTest::newRow("two frames") << 25 << QVector<int>{40, 90} << QVector<double>{25.0, 2000.0 / 90}
                                << QVector<int>{0, 50};
    QTest::newRow("first frame in the millisecond of the start")
        << 25 << QVector<int>{0} << QVector<double>{infinite} << QVector<int>{0};
    QTest::newRow("after an arrival at 0 the next interval is 0 too")
        << 25 << QVector<int>{0, 20} << QVector<double>{infinite, 100.0} << QVector<int>{0, 0};
    QTest::newRow("two arrivals in the same millisecond")
        << 2 << QVector<int>{10, 10} << QVector<double>{100.0, infinite} << QVector<int>{0, 0};
    QTest::newRow("a gap is the next frame's interval")
        << 25 << QVector<int>{40, 1040} << QVector<double>{25.0, 2000.0 / 1040} << QVector<int>{0, 1000};
    QTest::newRow("nominal 1 measures nothing")
        << 1 << QVector<int>{500, 1500} << QVector<double>{0.0, 0.0} << QVector<int>{0, 1000};
    QTest::newRow("nominal 0 measures nothing")
        << 0 << QVector<int>{500, 1500} << QVector<double>{0.0, 0.0} << QVector<int>{0, 1000};
    QTest::newRow("negative nominal measures nothing")
        << -5 << QVector<int>{500, 1500} << QVector<double>{0.0, 0.0} << QVector<int>{0, 1000};
    QTest::newRow("nominal 2 spans two arrivals")
        << 2 << QVector<int>{500, 1000, 1250} << QVector<double>{2.0, 2.0, 4.0} << QVector<int>{0, 500, 250};
}

void TestFrameMetrics::figures()
{
    QFETCH(int, nominal);
    QFETCH(QVector<int>, arrivals);
    QFETCH(QVector<double>, rates);
    QFETCH(QVector<int>, intervals);
    FrameTimes times;
    times.restart();
    for (int i = 0; i < arrivals.size(); ++i) {
        const FrameFigures figures = times.add(arrivals.at(i), nominal);
        QCOMPARE(figures.framesPerSecond, rates.at(i));
        QCOMPARE(figures.intervalMs, intervals.at(i));
    }
}

void TestFrameMetrics::windowHoldsNominalManyArrivals_data()
{
    QTest::addColumn<int>("nominal");
    QTest::newRow("25") << 25;
    QTest::newRow("29, of 29.97") << 29;
    QTest::newRow("59, of 59.94") << 59;
}

void TestFrameMetrics::windowHoldsNominalManyArrivals()
{
    QFETCH(int, nominal);
    FrameTimes times;
    times.restart();
    for (int frame = 1; frame < nominal; ++frame) {
        times.add(frame * 10, nominal);
        QCOMPARE(times.size(), frame + 1);
        QCOMPARE(times.oldestMs(), 0);
    }
    for (int frame = nominal; frame < 3 * nominal; ++frame) {
        times.add(frame * 10, nominal);
        QCOMPARE(times.size(), nominal);
        QCOMPARE(times.oldestMs(), (frame - nominal + 1) * 10);
    }
}

void TestFrameMetrics::windowShrinksByOneAFrameAfterARateDrop()
{
    FrameTimes times;
    times.restart();
    int now = 0;
    for (int frame = 0; frame < 120; ++frame)
        times.add(now += 16, 60);
    QCOMPARE(times.size(), 60);
    // Each frame of the slower stream adds one entry and takes one away.
    for (int frame = 0; frame < 50; ++frame) {
        times.add(now += 40, 25);
        QCOMPARE(times.size(), 60);
    }
}

void TestFrameMetrics::restartForgetsTheLastRun()
{
    FrameTimes times;
    times.restart();
    times.add(100, 25);
    times.add(140, 25);
    times.restart();
    QCOMPARE(times.size(), 1);
    const FrameFigures figures = times.add(50, 25);
    QCOMPARE(figures.intervalMs, 0);
    QCOMPARE(figures.framesPerSecond, 20.0);
}

void TestFrameMetrics::steadyRateReadsAsItself()
{
    FrameTimes times;
    times.restart();
    double last = 0.0;
    for (int frame = 1; frame <= 3600; ++frame)
        last = times.add(int(frame * 1001.0 / 60.0), 59).framesPerSecond;
    QVERIFY2(qAbs(last - 59.94) < 0.1, qPrintable(QString::number(last)));
}

void TestFrameMetrics::copyBytes_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<quint64>("bytes");
    QTest::newRow("1080p") << 1920 << 1080 << quint64(4147200);
    QTest::newRow("one pixel") << 1 << 1 << quint64(2);
    QTest::newRow("no width") << 0 << 1080 << quint64(0);
    QTest::newRow("no height") << 1920 << 0 << quint64(0);
    QTest::newRow("negative") << -1920 << -1080 << quint64(0);
    QTest::newRow("1 GiB") << 32768 << 16384 << quint64(1073741824);
    QTest::newRow("over 1 GiB") << 32768 << 16385 << quint64(0);
    QTest::newRow("a product beyond 32 bits") << 65536 << 65536 << quint64(0);
}

void TestFrameMetrics::copyBytes()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QTEST(quint64(frameCopyBytes(width, height)), "bytes");
}

QTEST_APPLESS_MAIN(TestFrameMetrics)
#include "tst_framemetrics.moc"
