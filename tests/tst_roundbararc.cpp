#include "tests/support/testbase.h"
#include "widgets/qroundprogressbar.h"

#include <QPainterPath>
#include <QtMath>
#include <QtTest>

#include <limits>

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double ringMiddle = 90.0; // radius within the ring of the arcs below

} // namespace

/// The round bar's arithmetic and shapes, without a widget.
class TestRoundBarArc final : public TestBase {
    Q_OBJECT

private slots:
    void arcStep_data();
    void arcStep();
    void percent_data();
    void percent();
    void arc_data();
    void arc();
    void arcStaysInsideTheRing();
    void clockwiseStopsAreTurned();
};

void TestRoundBarArc::arcStep_data()
{
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("expected");
    QTest::newRow("nothing") << 0.0 << 100.0 << 0.0 << 0.0;
    QTest::newRow("a quarter") << 0.0 << 100.0 << 25.0 << 90.0;
    QTest::newRow("all") << 0.0 << 100.0 << 100.0 << 360.0;
    QTest::newRow("another range") << 0.0 << 60.0 << 10.0 << 60.0;
    QTest::newRow("counted from zero, not from the minimum") << 50.0 << 100.0 << 50.0 << 360.0;
    QTest::newRow("negative") << -50.0 << 50.0 << -25.0 << -90.0;
    QTest::newRow("an empty range") << 5.0 << 5.0 << 5.0 << 0.0;
    QTest::newRow("the wrong way round") << 100.0 << 0.0 << 50.0 << 0.0;
}

void TestRoundBarArc::arcStep()
{
    QFETCH(double, minimum);
    QFETCH(double, maximum);
    QFETCH(double, value);
    QTEST(roundBarArcStep(minimum, maximum, value), "expected");
}

void TestRoundBarArc::percent_data()
{
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("expected");
    QTest::newRow("nothing") << 0.0 << 100.0 << 0.0 << 0;
    QTest::newRow("not yet one") << 0.0 << 100.0 << 0.999 << 0;
    QTest::newRow("one") << 0.0 << 100.0 << 1.0 << 1;
    QTest::newRow("half") << 0.0 << 100.0 << 50.0 << 50;
    QTest::newRow("not yet all") << 0.0 << 100.0 << 99.99 << 99;
    QTest::newRow("all") << 0.0 << 100.0 << 100.0 << 100;
    QTest::newRow("beyond") << 0.0 << 100.0 << 150.0 << 100;
    QTest::newRow("below") << 0.0 << 100.0 << -1.0 << 0;
    QTest::newRow("29 hundredths of one") << 0.0 << 1.0 << 0.29 << 29;
    QTest::newRow("counted from the minimum") << 50.0 << 100.0 << 75.0 << 50;
    QTest::newRow("an empty range") << 5.0 << 5.0 << 5.0 << 0;
    QTest::newRow("a range beyond all numbers") << -1.7e308 << 1.7e308 << 1.7e308 << 0;
}

void TestRoundBarArc::percent()
{
    QFETCH(double, minimum);
    QFETCH(double, maximum);
    QFETCH(double, value);
    QTEST(roundBarPercent(minimum, maximum, value), "expected");
}

void TestRoundBarArc::arc_data()
{
    QTest::addColumn<double>("degrees");
    QTest::addColumn<QVector<double>>("inside");
    QTest::addColumn<QVector<double>>("outside");
    QTest::newRow("nothing") << 0.0 << QVector<double>{} << QVector<double>{0.0, 0.5, 90.0, 180.0, 270.0, 359.5};
    QTest::newRow("one degree") << 1.0 << QVector<double>{0.5} << QVector<double>{1.5, 359.5};
    QTest::newRow("a quarter") << 90.0 << QVector<double>{1.0, 45.0, 89.0} << QVector<double>{91.0, 180.0, 359.0};
    QTest::newRow("nearly all") << 359.0 << QVector<double>{1.0, 180.0, 358.0} << QVector<double>{359.5};
    QTest::newRow("all") << 360.0 << QVector<double>{0.0, 90.0, 180.0, 270.0, 359.5} << QVector<double>{};
    QTest::newRow("more than all") << 1000.0 << QVector<double>{0.0, 90.0, 180.0, 270.0, 359.5} << QVector<double>{};
    QTest::newRow("infinite") << infinite << QVector<double>{0.0, 90.0, 180.0, 270.0, 359.5} << QVector<double>{};
    QTest::newRow("not a number") << notANumber << QVector<double>{} << QVector<double>{0.5, 90.0, 180.0, 270.0};
    QTest::newRow("against the clock") << -90.0 << QVector<double>{359.0, 315.0, 271.0} << QVector<double>{1.0, 269.0};
}

void TestRoundBarArc::arc()
{
    QFETCH(double, degrees);
    QFETCH(QVector<double>, inside);
    QFETCH(QVector<double>, outside);
    const QPainterPath path = roundBarArc(QRectF(0, 0, 200, 200), 20.0, degrees);
    const auto onTheRing = [](double angle) {
        const double turned = qDegreesToRadians(angle);
        return QPointF(100.0 + ringMiddle * std::sin(turned), 100.0 - ringMiddle * std::cos(turned));
    };
    for (double angle : inside)
        QVERIFY2(path.contains(onTheRing(angle)), qPrintable(QString::number(angle)));
    for (double angle : outside)
        QVERIFY2(!path.contains(onTheRing(angle)), qPrintable(QString::number(angle)));
}

void TestRoundBarArc::arcStaysInsideTheRing()
{
    for (int degrees = -360; degrees <= 360; degrees += 5) {
        const QPainterPath path = roundBarArc(QRectF(10, 10, 200, 200), 20.0, degrees);
        QVERIFY(!path.contains(QPointF(110, 110)));
        // Curves are made of pieces that are a little off a circle.
        QVERIFY2(path.isEmpty() || QRectF(9.9, 9.9, 200.2, 200.2).contains(path.boundingRect()),
                 qPrintable(QString::number(degrees)));
        for (int angle = 0; angle < 360; angle += 5) {
            const double turned = qDegreesToRadians(double(angle));
            QVERIFY(!path.contains(QPointF(110 + 79.5 * std::sin(turned), 110 - 79.5 * std::cos(turned))));
        }
    }
    QVERIFY(roundBarArc(QRectF(0, 0, 10, 10), 5.0, 90.0).isEmpty()); // no hole is left
    QVERIFY(roundBarArc(QRectF(0, 0, 10, 10), 0.0, 90.0).isEmpty());
    QVERIFY(roundBarArc(QRectF(), 1.0, 90.0).isEmpty());
}

void TestRoundBarArc::clockwiseStopsAreTurned()
{
    const QGradientStops stops{{0.0, Qt::red}, {0.25, Qt::green}, {1.0, Qt::blue}};
    const QGradientStops turned{{0.0, Qt::blue}, {0.75, Qt::green}, {1.0, Qt::red}};
    QCOMPARE(clockwiseStops(stops), turned);
    QCOMPARE(clockwiseStops({}), QGradientStops());
}

QTEST_GUILESS_MAIN(TestRoundBarArc)

#include "tst_roundbararc.moc"
