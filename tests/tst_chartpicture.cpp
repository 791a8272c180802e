#include "charts/chartpicture.h"
#include "tests/charts/naivechart.h"
#include "tests/charts/picturecompare.h"
#include "tests/support/testbase.h"

#include <QtTest>

#include <cmath>
#include <limits>
#include <random>

namespace {

/// The same samples in the program's lists and in those of the plain drawing.
class Chart {
public:
    Chart(int series, QSize size, double maxX, double maxY)
    {
        const auto count = static_cast<std::size_t>(series);
        for (std::vector<PointSeries> *lists : {&plain, &average, &minimum, &maximum})
            lists->resize(count);
        visible.assign(count, 1);
        naive.width = size.width();
        naive.height = size.height();
        naive.maxX = maxX;
        naive.maxY = maxY;
        naive.series.resize(count);
        for (std::size_t i = 0; i < count; ++i)
            naive.series[i].color = QColor::fromHsv(static_cast<int>(i) * 45 % 360, 230, 207);
    }

    void append(int series, double timeMs, double value)
    {
        const auto i = static_cast<std::size_t>(series);
        plain[i].append({timeMs, value});
        naive.series[i].plain.emplace_back(timeMs, value);
    }
    void appendBand(int series, double timeMs, double low, double high, double middle)
    {
        const auto i = static_cast<std::size_t>(series);
        average[i].append({timeMs, middle});
        maximum[i].append({timeMs, high});
        minimum[i].append({timeMs, low});
        naive.series[i].average.emplace_back(timeMs, middle);
        naive.series[i].maximum.emplace_back(timeMs, high);
        naive.series[i].minimum.emplace_back(timeMs, low);
    }
    void show(int series, bool shown)
    {
        visible[static_cast<std::size_t>(series)] = shown ? 1 : 0;
        naive.series[static_cast<std::size_t>(series)].visible = shown;
    }

    QRegion update(double pixelRatio = 1.0)
    {
        const ChartContents contents{plain,   average, minimum,
                                     maximum, visible, [this](std::size_t i) { return naive.series[i].color; }};
        ChartView view;
        view.geometry = ChartGeometry(QSize(naive.width, naive.height), naive.maxY, naive.maxX);
        view.pixelRatio = pixelRatio;
        view.raw = naive.raw;
        view.smooth = naive.smooth;
        view.cursorMs = naive.hoverTime;
        view.tolerance = tolerance;
        return picture.update(contents, view);
    }

    NaiveChart naive;
    ChartPicture picture;
    double tolerance = 0.0;

private:
    std::vector<PointSeries> plain;
    std::vector<PointSeries> average;
    std::vector<PointSeries> minimum;
    std::vector<PointSeries> maximum;
    std::vector<quint8> visible;
};

/// What lies below a translucent area is blended layer by layer here and pair by pair there: 8 bits round
/// differently once for each series.
constexpr int translucentTolerance = 3;

void compare(Chart &chart, double pixelRatio, const char *when)
{
    const QImage expected = chart.naive.image(pixelRatio);
    const PictureDifference difference = comparePictures(chart.picture.image(), expected);
    if (difference.largestOpaque > 2 || difference.largestTranslucent > translucentTolerance) {
        const QString where =
            keepPictures(QString::fromLatin1(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('-')),
                         chart.picture.image(), expected);
        QFAIL(qPrintable(QStringLiteral("%1: %2, %3").arg(QLatin1String(when), difference.text(), where)));
    }
}

} // namespace

class TestChartPicture final : public TestBase {
    Q_OBJECT

private slots:
    void isThatOfDrawingEveryPairInOrder_data();
    void isThatOfDrawingEveryPairInOrder();
    void hostileSamples_data();
    void hostileSamples();
    void newSamplesChangeAStripOnly();
    void toleratedCurveIsRedrawnNearItsEndOnly();
    void manySeriesStayBounded_data();
    void manySeriesStayBounded();
    void cursorChangesTwoStrips();
    void redrawsAllOnlyWhenItMust();
    void withoutRoomOrAxesNothingIsDrawn_data();
    void withoutRoomOrAxesNothingIsDrawn();
};

void TestChartPicture::isThatOfDrawingEveryPairInOrder_data()
{
    QTest::addColumn<bool>("raw");
    QTest::addColumn<bool>("smooth");
    QTest::addColumn<bool>("band");
    QTest::addColumn<int>("series");
    QTest::addColumn<double>("stepMs");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("pixelRatio");

    const QSize usual(640, 240);
    QTest::newRow("raw, many points a pixel") << true << false << false << 8 << 17.0 << usual << 1.0;
    QTest::newRow("smooth, many points a pixel") << false << true << false << 8 << 17.0 << usual << 1.0;
    QTest::newRow("both, many points a pixel") << true << true << false << 8 << 17.0 << usual << 1.0;
    QTest::newRow("none") << false << false << false << 3 << 50.0 << usual << 1.0;
    QTest::newRow("one series, a point for many pixels") << true << true << false << 1 << 2300.0 << usual << 1.0;
    QTest::newRow("one series, about a point a pixel") << true << true << false << 1 << 100.0 << usual << 1.0;
    QTest::newRow("band, raw") << true << false << true << 1 << 700.0 << usual << 1.0;
    QTest::newRow("band, many points a pixel") << true << true << true << 3 << 21.0 << usual << 1.0;
    QTest::newRow("band, smooth") << false << true << true << 2 << 250.0 << usual << 1.0;
    QTest::newRow("tiny widget") << true << true << false << 3 << 40.0 << QSize(120, 100) << 1.0;
    QTest::newRow("twice the pixels") << true << true << false << 4 << 30.0 << usual << 2.0;
    QTest::newRow("one and a half times the pixels") << true << true << false << 4 << 30.0 << QSize(400, 200) << 1.5;
    QTest::newRow("one and a quarter times the pixels") << true << true << true << 2 << 90.0 << QSize(401, 203) << 1.25;
    QTest::newRow("very wide") << true << true << false << 2 << 17.0 << QSize(3840, 300) << 1.0;
}

void TestChartPicture::isThatOfDrawingEveryPairInOrder()
{
    QFETCH(bool, raw);
    QFETCH(bool, smooth);
    QFETCH(bool, band);
    QFETCH(int, series);
    QFETCH(double, stepMs);
    QFETCH(QSize, size);
    QFETCH(double, pixelRatio);

    Chart chart(series, size, 60.0, 80.0);
    chart.naive.raw = raw;
    chart.naive.smooth = smooth;
    chart.naive.hoverTime = 20000;
    std::mt19937 random(7);
    std::uniform_real_distribution<double> noise(-6.0, 6.0);
    double timeMs = 5.0;
    int step = 0;
    for (; timeMs < 63000.0; timeMs += stepMs, ++step) { // a little beyond the end of the axis
        for (int i = 0; i < series; ++i) {
            const double value = 10.0 + 60.0 * (i + 1) / (series + 1) + noise(random) - (step % 97 == 0 ? 9.0 : 0.0);
            if (band)
                chart.appendBand(i, timeMs, value - 3.0, value + 4.0, value);
            else
                chart.append(i, timeMs, value);
        }
        // In steps of different lengths, as paints come between samples.
        if (step % 13 == 0 || step % 31 == 0)
            chart.update(pixelRatio);
        if (step == 200) {
            chart.update(pixelRatio);
            compare(chart, pixelRatio, "after 200 steps");
            if (QTest::currentTestFailed())
                return;
            chart.naive.hoverTime = 31234;
        }
        if (step == 400 && series > 1)
            chart.show(1, false);
        if (step == 500 && series > 1)
            chart.show(1, true);
    }
    chart.update(pixelRatio);
    compare(chart, pixelRatio, "at the end, sample by sample");
    if (QTest::currentTestFailed())
        return;

    chart.picture.restart();
    chart.update(pixelRatio);
    compare(chart, pixelRatio, "drawn anew as a whole");
}

void TestChartPicture::hostileSamples_data()
{
    QTest::addColumn<QVector<QPointF>>("points");
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("times that go back") << QVector<QPointF>{
        {1000, 10}, {30000, 60}, {20000, 30}, {50000, 20}, {4000, 70}};
    QTest::newRow("times before the start") << QVector<QPointF>{{-20000, 10}, {-100, 60}, {20000, 30}, {40000, 55}};
    QTest::newRow("times beyond the end and back")
        << QVector<QPointF>{{40000, 10}, {90000, 60}, {70000, 30}, {30000, 55}, {59000, 5}};
    QTest::newRow("infinite and undefined values")
        << QVector<QPointF>{{1000, 10},  {9000, infinity}, {15000, 30},        {20000, nan},
                            {25000, 55}, {30000, 44},      {38000, -infinity}, {50000, 40}};
    QTest::newRow("values below zero and above the top")
        << QVector<QPointF>{{1000, 10}, {9000, -30}, {15000, 30}, {20000, 120}, {25000, 55}, {30000, -5}};
    QTest::newRow("equal times") << QVector<QPointF>{{1000, 10},  {1000, 30},  {15000, 30},
                                                     {15000, 70}, {25000, 55}, {25000, 5}};
    QVector<QPointF> gaps; // in each column of pixels a noise, a gap and far below a slow rise
    for (int i = 0; i < 200; ++i)
        gaps.append({13000 + i * 6.0, i % 20 == 8 ? infinity : i % 20 < 8 ? 50.0 + i % 2 * 3 : 20.0 + i % 20 * 0.02});
    QTest::newRow("gaps within columns") << gaps;
    QTest::newRow("one point") << QVector<QPointF>{{1000, 10}};
    QTest::newRow("two points") << QVector<QPointF>{{1000, 10}, {40000, 30}};
    QTest::newRow("three points") << QVector<QPointF>{{1000, 10}, {30000, 50}, {40000, 30}};
    QTest::newRow("three points in one column") << QVector<QPointF>{{1000, 10}, {1001, 50}, {1002, 30}};
}

void TestChartPicture::hostileSamples()
{
    QFETCH(QVector<QPointF>, points);
    Chart chart(1, QSize(500, 220), 60.0, 80.0);
    chart.naive.raw = chart.naive.smooth = true;
    for (const QPointF &point : points) {
        chart.append(0, point.x(), point.y());
        chart.update();
        // A picture of overlapping areas is the same only as long as all come in order, so compare every step.
        compare(chart, 1.0, qPrintable(QStringLiteral("after %1 ms").arg(point.x())));
        if (QTest::currentTestFailed())
            return;
    }
    chart.picture.restart();
    chart.update();
    compare(chart, 1.0, "drawn anew as a whole");
}

void TestChartPicture::toleratedCurveIsRedrawnNearItsEndOnly()
{
    constexpr double tolerance = 1.0 / 64.0;
    Chart chart(2, QSize(900, 300), 300.0, 60.0);
    chart.naive.smooth = true;
    chart.tolerance = tolerance;
    std::mt19937 random(5);
    std::uniform_real_distribution<double> noise(-4.0, 4.0);
    int widest = 0;
    int partial = 0; // how many pixels differ at most from the exact picture
    for (int index = 0; index < 6000; ++index) {
        for (int series = 0; series < 2; ++series)
            chart.append(series, index * 16.0, 40.0 - series * 20.0 + noise(random));
        const QRect changed = chart.update().boundingRect();
        if (index < 2000)
            continue;
        widest = std::max(widest, changed.width());
        if (index % 500 == 0)
            partial = std::max(partial, comparePictures(chart.picture.image(), chart.naive.image(1.0)).pixels);
    }
    // A new knot is off by at most 8 of 60 units, 32 pixels. That fades by 2 - sqrt(3) from knot to knot: five pixels
    // each, after six knots it is below the tolerance. The curve's bend at the new knot makes it one knot more.
    const double knots = std::log(tolerance / 32.0) / std::log(2.0 - std::sqrt(3.0)) + 1.0;
    const int most = static_cast<int>(std::ceil(knots + 1.0)) * 5 + 8;
    QVERIFY2(widest > 8 && widest <= most, qPrintable(QStringLiteral("%1 of %2").arg(widest).arg(most)));
    QVERIFY2(partial <= 20, qPrintable(QString::number(partial)));

    chart.tolerance = 0.0;
    chart.update();
    compare(chart, 1.0, "exact again, without a full redraw");
    QCOMPARE(chart.picture.fullRedraws(), 1);
}

void TestChartPicture::manySeriesStayBounded_data()
{
    QTest::addColumn<int>("series");
    QTest::addColumn<bool>("band");
    QTest::addColumn<double>("backMs");
    QTest::newRow("plain") << 1000 << false << 0.0;
    QTest::newRow("plain, times that go back") << 100 << false << 9000.0;
    QTest::newRow("band") << 100 << true << 0.0;
}

void TestChartPicture::manySeriesStayBounded()
{
    QFETCH(int, series);
    QFETCH(bool, band);
    QFETCH(double, backMs);
    constexpr QSize size(900, 300);
    Chart chart(series, size, 60.0, 80.0);
    chart.naive.raw = chart.naive.smooth = true;
    const auto append = [&](int index) {
        const double timeMs = index * 4000.0 - (index % 5 == 4 ? backMs : 0.0);
        for (int i = 0; i < series; ++i) {
            const double value = 5.0 + i * 65.0 / series + (index * 7 + i) % 11 * 0.4;
            if (band)
                chart.appendBand(i, timeMs, value - 2.0, value + 1.0, value);
            else
                chart.append(i, timeMs, value);
        }
    };
    for (int index = 0; index < 9; ++index)
        append(index);
    chart.update();
    constexpr qint64 most = 64 * 1024 * 1024;
    constexpr qint64 bytesEach = 900 * 300 * 4;
    QVERIFY2(chart.picture.imageBytes() <= most, qPrintable(QString::number(chart.picture.imageBytes())));
    QVERIFY(chart.picture.imageBytes() > most - bytesEach);
    compare(chart, 1.0, "drawn as a whole");
    if (QTest::currentTestFailed())
        return;
    for (int index = 9; index < 13; ++index) {
        append(index);
        chart.naive.hoverTime = index * 3000;
        chart.update();
    }
    compare(chart, 1.0, "after new samples and cursors");
    QVERIFY(chart.picture.imageBytes() <= most);
    QCOMPARE(chart.picture.fullRedraws(), 1);
}

void TestChartPicture::newSamplesChangeAStripOnly()
{
    Chart chart(2, QSize(900, 300), 300.0, 60.0);
    chart.naive.raw = true;
    int index = 0;
    for (; index < 6000; ++index) {
        for (int series = 0; series < 2; ++series)
            chart.append(series, index * 16.0, 40.0 + index % 7);
    }
    QCOMPARE(chart.update(), QRegion(0, 0, 900, 300));
    chart.append(0, index * 16.0, 41.0);
    const QRect raw = chart.update().boundingRect();
    QVERIFY2(raw.width() <= 8 && raw.width() > 0, qPrintable(QString::number(raw.width())));

    chart.naive.smooth = true;
    chart.update();
    ++index;
    chart.append(0, index * 16.0, 49.0);
    const QRect smooth = chart.update().boundingRect();
    QVERIFY2(smooth.width() <= 150 && smooth.width() > 8, qPrintable(QString::number(smooth.width())));
    QVERIFY(chart.update().isEmpty());
}

void TestChartPicture::cursorChangesTwoStrips()
{
    Chart chart(1, QSize(649, 300), 60.0, 60.0);
    chart.update();
    chart.naive.hoverTime = 30000;
    const QRect shown = chart.update().boundingRect();
    QVERIFY(shown.width() <= 8 && shown.contains(QPoint(328, 100)));
    chart.naive.hoverTime = 10000;
    const QRegion moved = chart.update();
    QVERIFY(moved.contains(QPoint(328, 100)) && moved.contains(QPoint(128, 100)));
    QVERIFY(!moved.contains(QPoint(200, 100)));
    chart.naive.hoverTime = -1;
    QVERIFY(chart.update().boundingRect().width() <= 8);
    compare(chart, 1.0, "without cursor");
}

void TestChartPicture::redrawsAllOnlyWhenItMust()
{
    Chart chart(2, QSize(640, 240), 60.0, 60.0);
    chart.naive.raw = true;
    chart.update();
    QCOMPARE(chart.picture.fullRedraws(), 1);
    for (int i = 0; i < 100; ++i) {
        chart.append(0, i * 100.0, 30.0);
        chart.append(1, i * 100.0, 20.0);
        chart.naive.hoverTime = i * 500;
        chart.update();
    }
    QCOMPARE(chart.picture.fullRedraws(), 1);
    chart.naive.maxY = 70.0;
    chart.update();
    QCOMPARE(chart.picture.fullRedraws(), 2);
    chart.show(0, false);
    chart.update();
    QCOMPARE(chart.picture.fullRedraws(), 3);
    chart.naive.width = 700;
    chart.update();
    QCOMPARE(chart.picture.fullRedraws(), 4);
    chart.update(2.0);
    QCOMPARE(chart.picture.fullRedraws(), 5);
}

void TestChartPicture::withoutRoomOrAxesNothingIsDrawn_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("maxX");
    QTest::addColumn<double>("maxY");
    QTest::newRow("no length") << QSize(640, 240) << 0.0 << 60.0;
    QTest::newRow("no top") << QSize(640, 240) << 60.0 << 0.0;
    QTest::newRow("a top below zero") << QSize(640, 240) << 60.0 << -5.0;
    QTest::newRow("plot of no width") << QSize(49, 240) << 60.0 << 60.0;
    QTest::newRow("plot of no height") << QSize(640, 65) << 60.0 << 60.0;
    QTest::newRow("nothing at all") << QSize(0, 0) << 60.0 << 60.0;
}

void TestChartPicture::withoutRoomOrAxesNothingIsDrawn()
{
    QFETCH(QSize, size);
    QFETCH(double, maxX);
    QFETCH(double, maxY);
    Chart chart(1, size, maxX, maxY);
    chart.naive.raw = chart.naive.smooth = true;
    chart.naive.hoverTime = 0;
    for (int i = 0; i < 10; ++i)
        chart.append(0, i * 1000.0, i);
    chart.update();
    const QImage &image = chart.picture.image();
    QCOMPARE(image.size(), size);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            QCOMPARE(image.pixel(x, y), 0U);
    }
}

QTEST_MAIN(TestChartPicture)
#include "tst_chartpicture.moc"
