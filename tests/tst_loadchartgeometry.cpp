#include "charts/loadchartgeometry.h"
#include "tests/support/testbase.h"

#include <QtTest>

#include <limits>

class TestLoadChartGeometry final : public TestBase {
    Q_OBJECT

private slots:
    void verticalGrid_data();
    void verticalGrid();
    void horizontalGrid_data();
    void horizontalGrid();
    void seriesX_data();
    void seriesX();
    void seriesY_data();
    void seriesY();
    void edges();
    void tinyWidgetsStayCalm();
};

void TestLoadChartGeometry::verticalGrid_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("sample");
    QTest::addColumn<int>("x");
    const auto row = [](const char *name, int width, int sample, int x) {
        QTest::newRow(name) << width << sample << x;
    };
    row("first line", 400, 0, 30);
    row("line of 10 samples", 400, 10, 90);
    row("last line", 400, 60, 390);
    row("truncated: 10 x 101 / 60 = 16.8", 141, 10, 46);
    row("truncated: 50 x 101 / 60 = 84.2", 141, 50, 114);
    row("no width left", 40, 60, 30);
    row("negative width is truncated towards zero: -7 x 10 / 60 = -1.2", 33, 10, 29);
}

void TestLoadChartGeometry::verticalGrid()
{
    QFETCH(int, width);
    QFETCH(int, sample);
    QFETCH(int, x);
    const LoadChartGeometry geometry(QSize(width, 160), 100, 60);
    QCOMPARE(geometry.gridX(sample), x);
    QCOMPARE(geometry.sampleLabel(sample), QPoint(x - 5, 157));
}

void TestLoadChartGeometry::horizontalGrid_data()
{
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("below");
    QTest::addColumn<int>("y");
    const auto row = [](const char *name, int height, int below, int y) {
        QTest::newRow(name) << height << below << y;
    };
    row("100% at the top", 145, 0, 30);
    row("80%", 145, 20, 50);
    row("0% at the bottom", 145, 100, 130);
    row("truncated: 20 x 104 / 100 = 20.8", 149, 20, 50);
    row("no height left", 45, 100, 30);
}

void TestLoadChartGeometry::horizontalGrid()
{
    QFETCH(int, height);
    QFETCH(int, below);
    QFETCH(int, y);
    const LoadChartGeometry geometry(QSize(400, height), 100, 60);
    QCOMPARE(geometry.gridY(below), y);
    QCOMPARE(geometry.percentLabel(below), QPoint(3, y));
}

void TestLoadChartGeometry::seriesX_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("age");
    QTest::addColumn<int>("x");
    const auto row = [](const char *name, int width, int age, int x) { QTest::newRow(name) << width << age << x; };
    row("newest at the right edge", 400, 0, 390);
    row("one step back", 400, 1, 384);
    row("oldest of sixty", 400, 59, 36);
    row("truncated: 59 x 101 / 60 = 99.3", 141, 1, 129);
    row("truncated: 1 x 101 / 60 = 1.7", 141, 59, 31);
}

void TestLoadChartGeometry::seriesX()
{
    QFETCH(int, width);
    QFETCH(int, age);
    QFETCH(int, x);
    QCOMPARE(LoadChartGeometry(QSize(width, 160), 100, 60).seriesX(age), x);
}

void TestLoadChartGeometry::seriesY_data()
{
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("percent");
    QTest::addColumn<int>("y");
    const auto row = [](const char *name, int height, int percent, int y) {
        QTest::newRow(name) << height << percent << y;
    };
    row("nothing", 145, 0, 130);
    row("half", 145, 50, 80);
    row("full load at the top of the plot", 145, 100, 30);
    row("above the top", 145, 130, 0);
    row("above the widget", 145, 153, -23);
    row("truncated: 33 x 115 / 100 = 37.95", 160, 33, 108);
    row("negative lies below", 145, -3, 133);
    row("the last that is not cut", 145, 100000, -99870);
    row("cut", 145, 100001, -99870);
    row("largest", 145, std::numeric_limits<int>::max(), -99870);
    row("smallest", 145, std::numeric_limits<int>::min(), 100130);
}

void TestLoadChartGeometry::seriesY()
{
    QFETCH(int, height);
    QFETCH(int, percent);
    QFETCH(int, y);
    QCOMPARE(LoadChartGeometry(QSize(400, height), 100, 60).seriesY(percent), y);
}

void TestLoadChartGeometry::edges()
{
    const LoadChartGeometry geometry(QSize(400, 160), 100, 60);
    QCOMPARE(geometry.plotLeft(), 30);
    QCOMPARE(geometry.plotTop(), 30);
    QCOMPARE(geometry.gridRight(), 390);
    QCOMPARE(geometry.plotBottom(), 145);
    QCOMPARE(geometry.seriesX(0), geometry.gridRight());
    QCOMPARE(geometry.seriesY(100), geometry.plotTop());
    QCOMPARE(geometry.gridY(100), geometry.plotBottom());
}

void TestLoadChartGeometry::tinyWidgetsStayCalm()
{
    const LoadChartGeometry geometry(QSize(0, 0), 100, 60);
    QCOMPARE(geometry.gridX(60), -10);
    QCOMPARE(geometry.gridY(100), -15);
    QCOMPARE(geometry.seriesX(0), -10);
    QCOMPARE(geometry.seriesY(100), 30);
}

QTEST_GUILESS_MAIN(TestLoadChartGeometry)
#include "tst_loadchartgeometry.moc"
