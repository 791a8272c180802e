#include "charts/columnbins.h"
#include "charts/cursorpick.h"
#include "charts/naturalspline.h"
#include "tests/charts/naivechart.h"
#include "tests/support/testbase.h"

#include <QtTest>

#include <cmath>
#include <limits>
#include <random>

namespace {

using Points = QVector<QPointF>;

std::vector<QPointF> listOf(const Points &points)
{
    return {points.begin(), points.end()};
}

/// Natural cubic spline by Gaussian elimination on the full matrix of second derivatives.
class DenseSpline {
public:
    explicit DenseSpline(const std::vector<QPointF> &knots) : m_knots(knots), m_second(knots.size(), 0.0)
    {
        const std::size_t n = knots.size();
        std::vector<std::vector<double>> rows(n, std::vector<double>(n + 1, 0.0));
        rows[0][0] = 1.0;
        rows[n - 1][n - 1] = 1.0;
        for (std::size_t i = 1; i + 1 < n; ++i) {
            const double h0 = knots[i].x() - knots[i - 1].x();
            const double h1 = knots[i + 1].x() - knots[i].x();
            rows[i][i - 1] = h0 / 6.0;
            rows[i][i] = (h0 + h1) / 3.0;
            rows[i][i + 1] = h1 / 6.0;
            rows[i][n] = (knots[i + 1].y() - knots[i].y()) / h1 - (knots[i].y() - knots[i - 1].y()) / h0;
        }
        for (std::size_t i = 0; i < n; ++i) {
            for (std::size_t below = i + 1; below < std::min(n, i + 2); ++below) {
                const double factor = rows[below][i] / rows[i][i];
                for (std::size_t j = i; j <= n; ++j)
                    rows[below][j] -= factor * rows[i][j];
            }
        }
        for (std::size_t i = n; i-- > 0;) {
            double value = rows[i][n];
            for (std::size_t j = i + 1; j < n; ++j)
                value -= rows[i][j] * m_second[j];
            m_second[i] = value / rows[i][i];
        }
    }

    double at(double x) const
    {
        const std::size_t n = m_knots.size();
        if (x < m_knots.front().x())
            return m_knots.front().y() + slope(0, 0.0) * (x - m_knots.front().x());
        if (x >= m_knots.back().x())
            return m_knots.back().y() + slope(n - 2, width(n - 2)) * (x - m_knots.back().x());
        std::size_t i = 0;
        while (x >= m_knots[i + 1].x())
            ++i;
        const double h = width(i);
        const double a = (m_knots[i + 1].x() - x) / h;
        const double b = (x - m_knots[i].x()) / h;
        return a * m_knots[i].y() + b * m_knots[i + 1].y()
               + ((a * a * a - a) * m_second[i] + (b * b * b - b) * m_second[i + 1]) * h * h / 6.0;
    }

private:
    double width(std::size_t i) const { return m_knots[i + 1].x() - m_knots[i].x(); }
    double slope(std::size_t i, double offset) const
    {
        const double h = width(i);
        const double a = (h - offset) / h;
        const double b = offset / h;
        return (m_knots[i + 1].y() - m_knots[i].y()) / h - (3 * a * a - 1) / 6 * h * m_second[i]
               + (3 * b * b - 1) / 6 * h * m_second[i + 1];
    }

    std::vector<QPointF> m_knots;
    std::vector<double> m_second;
};

} // namespace

class TestChartCurves final : public TestBase {
    Q_OBJECT

private slots:
    void bins_data();
    void bins();
    void splineNeedsThreeGrowingKnots_data();
    void splineNeedsThreeGrowingKnots();
    void splineMeetsKnotsAndIsNatural();
    void splineThroughAStraightLineIsTheLine();
    void splineGoesOnStraightOutside();
    void splineIsThatOfTheFullMatrix();
    void splineKnownValues();
    void splineIsTheSameInAnyOrderOfQuestions();
    void updatedSplineIsThatOfAllKnots();
    void pick_data();
    void pick();
    void pickIsThatOfLookingAtAll();
    void seriesKeepsPointsInOrder();
};

void TestChartCurves::bins_data()
{
    QTest::addColumn<Points>("pixels");
    QTest::addColumn<Points>("knots");
    QTest::newRow("nothing") << Points{} << Points{};
    QTest::newRow("the first bin holds the first point and stands at 0")
        << Points{{100.4, 10}, {100.6, 20}, {101, 40}} << Points{{0, 10}, {100, 30}};
    QTest::newRow("points in the first five pixels join the first bin")
        << Points{{1, 10}, {4.9, 20}, {5, 40}} << Points{{0, 15}, {5, 40}};
    QTest::newRow("a column ends at a multiple of five")
        << Points{{28, 1}, {28, 3}, {29.9, 5}, {30, 7}, {34.9, 9}, {35, 11}}
        << Points{{0, 1}, {28, 4}, {30, 8}, {35, 11}};
    QTest::newRow("a bin is named by the column it began in")
        << Points{{0, 1}, {33, 2}, {34, 4}} << Points{{0, 1}, {33, 3}};
    QTest::newRow("x may go back") << Points{{50, 1}, {60, 2}, {40, 3}} << Points{{0, 1}, {60, 2}, {40, 3}};
    QTest::newRow("points that are not finite are passed over")
        << Points{{50, std::numeric_limits<double>::infinity()}, {50, 1}, {std::nan(""), 3}, {60, 2}}
        << Points{{0, 1}, {60, 2}};
}

void TestChartCurves::bins()
{
    QFETCH(Points, pixels);
    QFETCH(Points, knots);
    ColumnBins bins;
    for (const QPointF &pixel : pixels)
        bins.add(pixel);
    const std::vector<QPointF> made = bins.knots();
    QCOMPARE(Points(made.begin(), made.end()), knots);
}

void TestChartCurves::splineNeedsThreeGrowingKnots_data()
{
    QTest::addColumn<Points>("knots");
    QTest::addColumn<bool>("made");
    QTest::newRow("none") << Points{} << false;
    QTest::newRow("two") << Points{{0, 1}, {5, 2}} << false;
    QTest::newRow("three") << Points{{0, 1}, {5, 2}, {10, 1}} << true;
    QTest::newRow("equal x") << Points{{0, 1}, {5, 2}, {5, 1}} << false;
    QTest::newRow("x going back") << Points{{0, 1}, {5, 2}, {3, 1}} << false;
}

void TestChartCurves::splineNeedsThreeGrowingKnots()
{
    QFETCH(Points, knots);
    QTEST(NaturalSpline::through(listOf(knots)).has_value(), "made");
}

void TestChartCurves::splineMeetsKnotsAndIsNatural()
{
    const std::vector<QPointF> knots{{0, 10}, {28, 14}, {30, -3}, {35, 7}, {41, 7}, {60, 22}};
    auto spline = NaturalSpline::through(knots);
    QVERIFY(spline.has_value());
    for (const QPointF &knot : knots)
        QVERIFY(std::abs(spline->at(knot.x()) - knot.y()) < 1e-9);
    const auto second = [&](double x) {
        constexpr double h = 1e-3;
        return (spline->at(x + h) - 2 * spline->at(x) + spline->at(x - h)) / (h * h);
    };
    QVERIFY(std::abs(second(0.001)) < 0.01);
    QVERIFY(std::abs(second(59.999)) < 0.01);
    for (std::size_t i = 1; i + 1 < knots.size(); ++i) { // no jump of the slope or of the bend inside
        const double x = knots[i].x();
        QVERIFY(std::abs(second(x - 0.002) - second(x + 0.002)) < 0.1);
    }
}

void TestChartCurves::splineThroughAStraightLineIsTheLine()
{
    auto spline = NaturalSpline::through({{0, 3}, {7, 17}, {9, 21}, {20, 43}});
    for (double x = -10; x < 40; x += 0.7)
        QVERIFY(std::abs(spline->at(x) - (2 * x + 3)) < 1e-9);
}

void TestChartCurves::splineGoesOnStraightOutside()
{
    auto spline = NaturalSpline::through({{0, 0}, {10, 10}, {20, 0}, {30, 5}});
    const double slopeLeft = (spline->at(1e-6) - spline->at(0)) / 1e-6;
    const double slopeRight = (spline->at(30) - spline->at(30 - 1e-6)) / 1e-6;
    QVERIFY(std::abs(spline->at(-8) - (0 - 8 * slopeLeft)) < 1e-4);
    QVERIFY(std::abs(spline->at(42) - (5 + 12 * slopeRight)) < 1e-4);
}

void TestChartCurves::splineIsThatOfTheFullMatrix()
{
    std::mt19937 random(11);
    for (int run = 0; run < 20; ++run) {
        std::vector<QPointF> knots;
        double x = 0;
        for (int i = 0; i < 3 + run * 4; ++i) {
            knots.emplace_back(x, static_cast<double>(random() % 300));
            x += 1.0 + static_cast<double>(random() % 9);
        }
        auto spline = NaturalSpline::through(knots);
        const DenseSpline dense(knots);
        for (double at = -10; at < x + 10; at += 0.37)
            QVERIFY(std::abs(spline->at(at) - dense.at(at)) < 1e-8);
    }
}

void TestChartCurves::splineKnownValues()
{
    // By hand: knots 0, 1, 2 with values 0, 1, 0 have the second derivative -3 in the middle.
    auto spline = NaturalSpline::through({{0, 0}, {1, 1}, {2, 0}});
    QVERIFY(std::abs(spline->at(0.5) - 0.6875) < 1e-12);
    QVERIFY(std::abs(spline->at(1.5) - 0.6875) < 1e-12);
    QVERIFY(std::abs(spline->at(-1) - -1.5) < 1e-12);
    QVERIFY(std::abs(spline->at(3) - -1.5) < 1e-12);
}

void TestChartCurves::splineIsTheSameInAnyOrderOfQuestions()
{
    const std::vector<QPointF> knots{{0, 10}, {28, 14}, {30, -3}, {35, 7}, {41, 7}, {60, 22}};
    auto forward = NaturalSpline::through(knots);
    auto backward = NaturalSpline::through(knots);
    std::vector<double> ys;
    for (int x = -5; x <= 70; ++x)
        ys.push_back(forward->at(x));
    for (int x = 70; x >= -5; --x)
        QCOMPARE(backward->at(x), ys[static_cast<std::size_t>(x + 5)]);
}

void TestChartCurves::updatedSplineIsThatOfAllKnots()
{
    std::mt19937 random(13);
    NaturalSpline spline;
    std::vector<QPointF> knots;
    std::size_t fewest = 1000;
    for (int step = 0; step < 300; ++step) {
        const std::size_t kept = knots.empty() ? 0 : knots.size() - 1;
        if (knots.empty() || step % 3 == 0) // a new knot, then two moves of it
            knots.emplace_back(step * 5.0 / 3.0 + static_cast<double>(random() % 3), 0.0);
        knots.back().setY(static_cast<double>(random() % 300));
        std::vector<double> before;
        for (double x = -10.0; spline.isValid() && x < knots[kept > 0 ? kept - 1 : 0].x(); x += 1.0)
            before.push_back(spline.at(x));
        const std::size_t piece = spline.update(knots, kept);
        QCOMPARE(spline.isValid(), knots.size() > 2);
        if (!spline.isValid())
            continue;
        auto whole = NaturalSpline::through(knots);
        for (double x = -10.0; x < knots.back().x() + 20.0; x += 1.0) {
            QVERIFY(spline.at(x) == whole->at(x)); // bit by bit
        }
        if (piece > 0) { // nothing changed left of it, and it lies a bounded number of knots back
            for (std::size_t i = 0; i < before.size() && static_cast<double>(i) - 10.0 < spline.knotX(piece); ++i)
                QVERIFY(before[i] == whole->at(static_cast<double>(i) - 10.0));
            QVERIFY(knots.size() - piece <= 53);
            fewest = std::min(fewest, knots.size() - piece);
        }
    }
    QVERIFY2(fewest < 35, qPrintable(QString::number(fewest)));
}

void TestChartCurves::pick_data()
{
    QTest::addColumn<Points>("points");
    QTest::addColumn<int>("cursorMs");
    QTest::addColumn<double>("value"); // -1: none
    const Points usual{{1000, 1}, {1050, 2}, {1099, 3}, {1100, 4}, {1200, 5}};
    QTest::newRow("exactly on a point") << usual << 1050 << 2.0;
    QTest::newRow("nearest in its tenth of a second") << usual << 1080 << 3.0;
    QTest::newRow("the first of two equally near") << Points{{1000, 1}, {1020, 2}, {1100, 9}} << 1010 << 1.0;
    QTest::newRow("a nearer point of the next tenth does not count") << usual << 1099 << 3.0;
    QTest::newRow("last point") << usual << 1250 << 5.0;
    QTest::newRow("no point in this tenth") << usual << 1300 << -1.0;
    QTest::newRow("before all points") << usual << 900 << -1.0;
    QTest::newRow("one point is not drawn and not read") << Points{{1000, 1}} << 1000 << -1.0;
    QTest::newRow("a cursor left of the axis reads nothing") << Points{{0, 1}, {10, 2}} << -5 << -1.0;
    QTest::newRow("times just below 0 share the first tenth") << Points{{-40, 1}, {500, 2}} << 0 << 1.0;
    QTest::newRow("last segment cut at the end of the axis") << Points{{50000, 1}, {70000, 2}} << 60000 << 2.0;
    QTest::newRow("a segment wholly beyond the end") << Points{{59000, 1}, {60010, 2}, {60020, 3}} << 60000 << -1.0;
    QTest::newRow("on the end") << Points{{59000, 1}, {60000, 2}} << 60000 << 2.0;
    QTest::newRow("a value that is not finite is not read")
        << Points{{1000, std::numeric_limits<double>::infinity()}, {1090, 2}, {1200, 3}} << 1000 << 2.0;
    QTest::newRow("times that go back") << Points{{5000, 1}, {1000, 2}, {9000, 3}, {1010, 4}} << 1009 << 4.0;
    QTest::newRow("a segment that comes back from beyond the end") << Points{{70000, 1}, {50000, 2}} << 60000 << 1.0;
}

void TestChartCurves::pick()
{
    QFETCH(Points, points);
    QFETCH(int, cursorMs);
    PointSeries series;
    for (const QPointF &point : points)
        series.append(point);
    QTEST(pickValue(series, cursorMs, 60000.0).value_or(-1.0), "value");
}

void TestChartCurves::pickIsThatOfLookingAtAll()
{
    std::mt19937 random(3);
    for (int run = 0; run < 200; ++run) {
        NaiveChart naive;
        naive.maxX = 60.0;
        naive.series.resize(1);
        PointSeries series;
        const bool sorted = run % 3 != 0;
        double timeMs = 0;
        for (int i = 0; i < 80; ++i) {
            timeMs = sorted ? timeMs + static_cast<double>(random() % 1800) : static_cast<double>(random() % 70000);
            const double value = 1.0 + i;
            series.append({timeMs, value});
            naive.series[0].plain.emplace_back(timeMs, value);
        }
        QCOMPARE(series.isAscending(), sorted);
        for (int cursor = 0; cursor <= 60000; cursor += 37) {
            naive.hoverTime = cursor;
            QCOMPARE(std::max(0.0, pickValue(series, cursor, 60000.0).value_or(-1.0)), naive.pick(&NaiveSeries::plain));
        }
    }
}

void TestChartCurves::seriesKeepsPointsInOrder()
{
    PointSeries series;
    QVERIFY(series.isEmpty());
    const std::size_t count = 2 * PointSeries::blockPoints + 1;
    for (std::size_t i = 0; i < count; ++i)
        series.append(QPointF(static_cast<double>(i), -static_cast<double>(i)));
    QCOMPARE(series.size(), count);
    for (std::size_t i = 0; i < count; ++i)
        QCOMPARE(series[i], QPointF(static_cast<double>(i), -static_cast<double>(i)));
    QVERIFY(series.isAscending());
    series.append(QPointF(static_cast<double>(count - 1), 0.0));
    QVERIFY(series.isAscending());
    series.append(QPointF(0.0, 0.0));
    QVERIFY(!series.isAscending());
}

QTEST_GUILESS_MAIN(TestChartCurves)
#include "tst_chartcurves.moc"
