#include "charts/chartgeometry.h"
#include "tests/support/testbase.h"

#include <QtTest>

#include <cmath>
#include <limits>

class TestChartGeometry final : public TestBase {
    Q_OBJECT

private slots:
    void layout_data();
    void layout();
    void mapsSamples_data();
    void mapsSamples();
    void isDrawable_data();
    void isDrawable();
    void cursorTime_data();
    void cursorTime();
    void cursorLagsBehindThePointer();
    void showsCursorOnTheAxisOnly_data();
    void showsCursorOnTheAxisOnly();
    void axisGrowth_data();
    void axisGrowth();
};

void TestChartGeometry::layout_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("top");
    QTest::addColumn<int>("labelWidth");
    QTest::addColumn<int>("plotLeft");
    QTest::addColumn<int>("plotWidth");
    QTest::addColumn<int>("plotHeight");
    QTest::newRow("two digits") << QSize(649, 300) << 60.0 << 18 << 28 << 600 << 235;
    QTest::newRow("three digits") << QSize(649, 300) << 400.0 << 27 << 37 << 591 << 235;
    QTest::newRow("9 has one digit") << QSize(649, 300) << 9.0 << 9 << 19 << 609 << 235;
    QTest::newRow("10 has two") << QSize(649, 300) << 10.0 << 18 << 28 << 600 << 235;
    QTest::newRow("99 has two") << QSize(649, 300) << 99.0 << 18 << 28 << 600 << 235;
    QTest::newRow("100 has three") << QSize(649, 300) << 100.0 << 27 << 37 << 591 << 235;
    QTest::newRow("below one still one digit") << QSize(649, 300) << 0.8 << 9 << 19 << 609 << 235;
    QTest::newRow("a top of 0 has no labels") << QSize(649, 300) << 0.0 << 0 << 10 << 618 << 235;
    QTest::newRow("a top below 0 has no labels") << QSize(649, 300) << -7.0 << 0 << 10 << 618 << 235;
    QTest::newRow("an infinite top has no labels")
        << QSize(649, 300) << std::numeric_limits<double>::infinity() << 0 << 10 << 618 << 235;
    QTest::newRow("the largest top fits an int")
        << QSize(649, 300) << std::numeric_limits<double>::max() << 2781 << 2791 << -2163 << 235;
}

void TestChartGeometry::layout()
{
    QFETCH(QSize, size);
    QFETCH(double, top);
    const ChartGeometry geometry(size, top, 60.0);
    QTEST(geometry.labelWidth, "labelWidth");
    QTEST(geometry.plotLeft, "plotLeft");
    QTEST(geometry.plotWidth, "plotWidth");
    QTEST(geometry.plotHeight, "plotHeight");
    QCOMPARE(geometry.plotBottom(), geometry.plotHeight + 40);
    QCOMPARE(geometry.plotBottom(), size.height() - 25);
}

void TestChartGeometry::mapsSamples_data()
{
    QTest::addColumn<QPointF>("sample");
    QTest::addColumn<QPointF>("pixel");
    QTest::newRow("start at the bottom left") << QPointF(0, 0) << QPointF(28, 275);
    QTest::newRow("end at the top right") << QPointF(60000, 60) << QPointF(628, 40);
    QTest::newRow("middle") << QPointF(30000, 30) << QPointF(328, 157.5);
    QTest::newRow("before the start") << QPointF(-1000, 0) << QPointF(18, 275);
    QTest::newRow("above the top") << QPointF(0, 120) << QPointF(28, -195);
}

void TestChartGeometry::mapsSamples()
{
    QFETCH(QPointF, sample);
    QFETCH(QPointF, pixel);
    const QPointF mapped = ChartGeometry(QSize(649, 300), 60.0, 60.0).map(sample);
    QVERIFY(std::abs(mapped.x() - pixel.x()) < 1e-9);
    QVERIFY(std::abs(mapped.y() - pixel.y()) < 1e-9);
}

void TestChartGeometry::isDrawable_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("top");
    QTest::addColumn<double>("length");
    QTest::addColumn<bool>("drawable");
    QTest::newRow("usual") << QSize(649, 300) << 60.0 << 60.0 << true;
    QTest::newRow("one pixel of plot") << QSize(50, 66) << 60.0 << 60.0 << true;
    QTest::newRow("no width") << QSize(49, 66) << 60.0 << 60.0 << false;
    QTest::newRow("no height") << QSize(50, 65) << 60.0 << 60.0 << false;
    QTest::newRow("no top") << QSize(649, 300) << 0.0 << 60.0 << false;
    QTest::newRow("no length") << QSize(649, 300) << 60.0 << 0.0 << false;
    QTest::newRow("a length below 0") << QSize(649, 300) << 60.0 << -1.0 << false;
    QTest::newRow("an undefined top") << QSize(649, 300) << std::nan("") << 60.0 << false;
}

void TestChartGeometry::isDrawable()
{
    QFETCH(QSize, size);
    QFETCH(double, top);
    QFETCH(double, length);
    QTEST(ChartGeometry(size, top, length).isDrawable(), "drawable");
}

void TestChartGeometry::cursorTime_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("length");
    QTest::addColumn<double>("mouseX");
    QTest::addColumn<bool>("known");
    QTest::addColumn<int>("timeMs");
    QTest::newRow("middle of the plot") << QSize(649, 300) << 60.0 << 328.0 << true << 29459;
    QTest::newRow("on the axis") << QSize(649, 300) << 60.0 << 28.0 << true << 0;
    QTest::newRow("left of the axis") << QSize(649, 300) << 60.0 << 27.0 << true << -98;
    QTest::newRow("eleven pixels past the plot is the end") << QSize(649, 300) << 60.0 << 639.0 << true << 60000;
    QTest::newRow("no length") << QSize(649, 300) << 0.0 << 328.0 << true << 0;
    QTest::newRow("no room") << QSize(38, 300) << 60.0 << 20.0 << false << 0;
    QTest::newRow("less than no room") << QSize(20, 300) << 60.0 << 10.0 << false << 0;
    QTest::newRow("clamped to an int") << QSize(39, 300) << 1e9 << 39.0 << true << std::numeric_limits<int>::max();
    QTest::newRow("clamped below") << QSize(39, 300) << 1e9 << 0.0 << true << std::numeric_limits<int>::min();
}

void TestChartGeometry::cursorTime()
{
    QFETCH(QSize, size);
    QFETCH(double, length);
    QFETCH(double, mouseX);
    QFETCH(bool, known);
    const std::optional<int> time = ChartGeometry(size, 60.0, length).cursorTime(mouseX);
    QCOMPARE(time.has_value(), known);
    QTEST(time.value_or(0), "timeMs");
}

void TestChartGeometry::cursorLagsBehindThePointer()
{
    const ChartGeometry geometry(QSize(649, 300), 60.0, 60.0);
    QVERIFY(std::abs(geometry.cursorX(29459) - 322.59) < 1e-9);
}

void TestChartGeometry::showsCursorOnTheAxisOnly_data()
{
    QTest::addColumn<int>("timeMs");
    QTest::addColumn<bool>("shown");
    QTest::newRow("start value") << -10000 << false;
    QTest::newRow("just before the start") << -1 << false;
    QTest::newRow("start") << 0 << true;
    QTest::newRow("end") << 60000 << true;
    QTest::newRow("just after the end") << 60001 << false;
}

void TestChartGeometry::showsCursorOnTheAxisOnly()
{
    QFETCH(int, timeMs);
    QTEST(ChartGeometry(QSize(649, 300), 60.0, 60.0).showsCursor(timeMs), "shown");
}

void TestChartGeometry::axisGrowth_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("top");
    QTest::addColumn<double>("grown");
    const double infinity = std::numeric_limits<double>::infinity();
    QTest::newRow("347 over 60 gives 400") << 347.0 << 60.0 << 400.0;
    QTest::newRow("0.73 over 0.5 gives 0.8") << 0.73 << 0.5 << 0.8;
    QTest::newRow("0.7 over 0.5 stays one digit") << 0.7 << 0.5 << 0.7;
    QTest::newRow("1200 over 400 gives 2000") << 1200.0 << 400.0 << 2000.0;
    QTest::newRow("61 over 60 gives 70") << 61.0 << 60.0 << 70.0;
    QTest::newRow("60 over 60 stays") << 60.0 << 60.0 << 60.0;
    QTest::newRow("59 never shrinks it") << 59.0 << 60.0 << 60.0;
    QTest::newRow("0 over a negative top leaves it") << 0.0 << -5.0 << -5.0;
    QTest::newRow("a negative value leaves it") << -3.0 << -5.0 << -5.0;
    QTest::newRow("something over 0 grows") << 3.2 << 0.0 << 4.0;
    QTest::newRow("infinite values leave it") << infinity << 60.0 << 60.0;
    QTest::newRow("undefined values leave it") << std::nan("") << 60.0 << 60.0;
    QTest::newRow("the largest double would round to infinity") << std::numeric_limits<double>::max() << 60.0 << 60.0;
    QTest::newRow("a value whose power of ten vanishes") << std::numeric_limits<double>::denorm_min() << 0.0 << 0.0;
}

void TestChartGeometry::axisGrowth()
{
    QFETCH(double, value);
    QFETCH(double, top);
    QFETCH(double, grown);
    const double result = grownAxisTop(value, top);
    QVERIFY(std::isfinite(result));
    QVERIFY2(std::abs(result - grown) <= 1e-12 * std::max(1.0, std::abs(grown)), qPrintable(QString::number(result)));
}

QTEST_GUILESS_MAIN(TestChartGeometry)
#include "tst_chartgeometry.moc"
