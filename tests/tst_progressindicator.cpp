#include "tests/support/testbase.h"
#include "widgets/qprogressindicator.h"

#include <QAbstractEventDispatcher>
#include <QImage>
#include <QTimerEvent>
#include <QtMath>
#include <QtTest>

namespace {

/// An indicator whose timer is the test's own hand.
class SteppedIndicator final : public QProgressIndicator {
public:
    void tick()
    {
        QTimerEvent event(0);
        timerEvent(&event);
    }
    int ticks() const { return m_ticks; }

protected:
    void timerEvent(QTimerEvent *event) override
    {
        ++m_ticks;
        QProgressIndicator::timerEvent(event);
    }

private:
    int m_ticks = 0;
};

QList<QAbstractEventDispatcher::TimerInfo> timersOf(QObject *object)
{
    return QAbstractEventDispatcher::instance()->registeredTimers(object);
}

QImage painted(QWidget *widget)
{
    QImage image(widget->size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    widget->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

bool isBlank(const QImage &image)
{
    QImage blank(image.size(), image.format());
    blank.fill(Qt::white);
    return image == blank;
}

/// The colour in the middle of the spoke that stands at this angle from twelve o'clock, clockwise.
QColor colorAt(const QImage &image, const SpokeGeometry &geometry, int degrees)
{
    const double radius = geometry.outerRadius - geometry.length / 2.0;
    const double turned = qDegreesToRadians(double(degrees));
    return image.pixelColor(int(image.width() / 2.0 + radius * std::sin(turned)),
                            int(image.height() / 2.0 - radius * std::cos(turned)));
}

} // namespace

class TestProgressIndicator final : public TestBase {
    Q_OBJECT

private slots:
    void geometry_data();
    void geometry();
    void opacity_data();
    void opacity();
    void startsAsDescribed();
    void startAndStop();
    void delayOfARunningAnimation();
    void delayWhileStoppedStartsNothing();
    void delay_data();
    void delay();
    void twelveStepsAreOnceAround();
    void theTimerTurnsIt();
    void startGoesBackToTheBeginning();
    void nothingIsPaintedWhenStopped();
    void spokesFadeAgainstTheClock_data();
    void spokesFadeAgainstTheClock();
    void opacityOfTheColourIsNotUsed();
    void tinySizesPaintNothing();
};

void TestProgressIndicator::geometry_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("outerRadius");
    QTest::addColumn<int>("cornerRadius");
    QTest::addColumn<QRect>("spoke");
    QTest::newRow("nothing") << QSize(0, 0) << 0 << 0 << QRect(0, 0, 0, 0);
    QTest::newRow("no height") << QSize(20, 0) << 0 << 0 << QRect(0, 0, 0, 0);
    QTest::newRow("negative") << QSize(-5, 20) << 0 << 0 << QRect(0, 0, 0, 0);
    QTest::newRow("one pixel") << QSize(1, 1) << 0 << 0 << QRect(0, 0, 0, 0);
    QTest::newRow("spokes without a width") << QSize(8, 8) << 3 << 0 << QRect(0, -3, 0, 2);
    QTest::newRow("the first with a width") << QSize(9, 9) << 4 << 0 << QRect(0, -4, 1, 3);
    QTest::newRow("the usual size") << QSize(20, 20) << 9 << 1 << QRect(-1, -9, 2, 6);
    QTest::newRow("wide: the height counts") << QSize(200, 20) << 9 << 1 << QRect(-1, -9, 2, 6);
    QTest::newRow("tall: the width counts") << QSize(20, 200) << 9 << 1 << QRect(-1, -9, 2, 6);
    QTest::newRow("the last with thick spokes") << QSize(32, 32) << 15 << 1 << QRect(-1, -15, 3, 10);
    QTest::newRow("the first with thin spokes") << QSize(33, 33) << 16 << 1 << QRect(-1, -16, 2, 10);
    QTest::newRow("an odd width of spokes") << QSize(72, 72) << 35 << 2 << QRect(-2, -35, 5, 22);
    QTest::newRow("large") << QSize(120, 120) << 59 << 4 << QRect(-4, -59, 8, 37);
}

void TestProgressIndicator::geometry()
{
    QFETCH(QSize, size);
    const SpokeGeometry geometry = spokeGeometry(size);
    QTEST(geometry.outerRadius, "outerRadius");
    QTEST(geometry.cornerRadius, "cornerRadius");
    QTEST(geometry.spoke(), "spoke");
}

void TestProgressIndicator::opacity_data()
{
    QTest::addColumn<int>("spoke");
    QTest::addColumn<double>("expected");
    QTest::newRow("the leading one") << 0 << 1.0;
    QTest::newRow("the next") << 1 << 11.0 / 12.0;
    QTest::newRow("opposite") << 6 << 0.5;
    QTest::newRow("the last") << 11 << 1.0 / 12.0;
}

void TestProgressIndicator::opacity()
{
    QFETCH(int, spoke);
    QTEST(spokeOpacity(spoke), "expected");
}

void TestProgressIndicator::startsAsDescribed()
{
    QProgressIndicator indicator;
    QCOMPARE(indicator.angle(), 0);
    QVERIFY(!indicator.isAnimated());
    QCOMPARE(indicator.animationDelay(), 40);
    QVERIFY(!indicator.isDisplayedWhenStopped());
    QCOMPARE(indicator.color(), QColor(Qt::black));
    QCOMPARE(indicator.sizeHint(), QSize(20, 20));
    QCOMPARE(indicator.sizePolicy(), QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed));
    QCOMPARE(indicator.focusPolicy(), Qt::NoFocus);
}

void TestProgressIndicator::startAndStop()
{
    QProgressIndicator indicator;
    indicator.startAnimation();
    indicator.startAnimation();
    QVERIFY(indicator.isAnimated());
    QCOMPARE(timersOf(&indicator).size(), 1);
    QCOMPARE(timersOf(&indicator).constFirst().interval, 40);
    QCOMPARE(timersOf(&indicator).constFirst().timerType, Qt::CoarseTimer);
    indicator.stopAnimation();
    QVERIFY(!indicator.isAnimated());
    QCOMPARE(timersOf(&indicator).size(), 0);
    indicator.stopAnimation();
    QVERIFY(!indicator.isAnimated());
}

void TestProgressIndicator::delayOfARunningAnimation()
{
    QProgressIndicator indicator;
    indicator.startAnimation();
    indicator.setAnimationDelay(500);
    QVERIFY(indicator.isAnimated());
    QCOMPARE(timersOf(&indicator).size(), 1);
    QCOMPARE(timersOf(&indicator).constFirst().interval, 500);
}

void TestProgressIndicator::delayWhileStoppedStartsNothing()
{
    QProgressIndicator indicator;
    indicator.setAnimationDelay(80);
    QVERIFY(!indicator.isAnimated());
    QCOMPARE(timersOf(&indicator).size(), 0);
    indicator.startAnimation();
    QCOMPARE(timersOf(&indicator).constFirst().interval, 80);
}

void TestProgressIndicator::delay_data()
{
    QTest::addColumn<int>("delayMs");
    QTest::addColumn<int>("expectedMs");
    QTest::newRow("2") << 2 << 2;
    QTest::newRow("1, the shortest") << 1 << 1;
    QTest::newRow("0 would spin") << 0 << 1;
    QTest::newRow("negative") << -40 << 1;
}

void TestProgressIndicator::delay()
{
    QFETCH(int, delayMs);
    QProgressIndicator indicator;
    indicator.setAnimationDelay(delayMs);
    QTEST(indicator.animationDelay(), "expectedMs");
}

void TestProgressIndicator::twelveStepsAreOnceAround()
{
    SteppedIndicator indicator;
    for (int step = 1; step < 12; ++step) {
        indicator.tick();
        QCOMPARE(indicator.angle(), 30 * step);
    }
    indicator.tick();
    QCOMPARE(indicator.angle(), 0);
}

void TestProgressIndicator::theTimerTurnsIt()
{
    SteppedIndicator indicator;
    indicator.setAnimationDelay(1);
    indicator.startAnimation();
    QTRY_VERIFY(indicator.ticks() >= 3);
    QCOMPARE(indicator.angle(), 30 * indicator.ticks() % 360);
}

void TestProgressIndicator::startGoesBackToTheBeginning()
{
    SteppedIndicator indicator;
    indicator.startAnimation();
    indicator.tick();
    indicator.stopAnimation();
    QCOMPARE(indicator.angle(), 30);
    indicator.startAnimation();
    QCOMPARE(indicator.angle(), 0);
    indicator.tick();
    indicator.startAnimation();
    QCOMPARE(indicator.angle(), 0);
}

void TestProgressIndicator::nothingIsPaintedWhenStopped()
{
    QProgressIndicator indicator;
    indicator.resize(40, 40);
    QVERIFY(isBlank(painted(&indicator)));
    indicator.startAnimation();
    const QImage turning = painted(&indicator);
    QVERIFY(!isBlank(turning));
    indicator.stopAnimation();
    QVERIFY(isBlank(painted(&indicator)));
    indicator.setDisplayedWhenStopped(true);
    QVERIFY(indicator.isDisplayedWhenStopped());
    QCOMPARE(painted(&indicator), turning);
}

void TestProgressIndicator::spokesFadeAgainstTheClock_data()
{
    QTest::addColumn<int>("steps");
    QTest::newRow("at the beginning") << 0;
    QTest::newRow("one step on") << 1;
    QTest::newRow("eleven steps on") << 11;
}

void TestProgressIndicator::spokesFadeAgainstTheClock()
{
    QFETCH(int, steps);
    SteppedIndicator indicator;
    indicator.resize(120, 120);
    indicator.setColor(QColor(21, 207, 187));
    indicator.setDisplayedWhenStopped(true);
    for (int i = 0; i < steps; ++i)
        indicator.tick();
    const QImage image = painted(&indicator);
    const SpokeGeometry geometry = spokeGeometry(indicator.size());
    for (int spoke = 0; spoke < spokeCount; ++spoke) {
        const QColor color = colorAt(image, geometry, 30 * steps - 30 * spoke);
        const auto onWhite = [spoke](int part) { return 255.0 - (255.0 - part) * (1.0 - spoke / 12.0); };
        QVERIFY2(std::abs(color.red() - onWhite(21)) <= 2 && std::abs(color.green() - onWhite(207)) <= 2
                     && std::abs(color.blue() - onWhite(187)) <= 2,
                 qPrintable(QStringLiteral("spoke %1 is %2").arg(spoke).arg(color.name())));
        const QColor between = colorAt(image, geometry, 30 * steps - 30 * spoke + 15);
        QCOMPARE(between, QColor(Qt::white));
    }
}

void TestProgressIndicator::opacityOfTheColourIsNotUsed()
{
    QProgressIndicator indicator;
    indicator.resize(120, 120);
    indicator.setDisplayedWhenStopped(true);
    indicator.setColor(QColor(21, 207, 187));
    const QImage opaque = painted(&indicator);
    indicator.setColor(QColor(21, 207, 187, 40));
    QCOMPARE(painted(&indicator), opaque);
}

void TestProgressIndicator::tinySizesPaintNothing()
{
    QProgressIndicator indicator;
    indicator.setDisplayedWhenStopped(true);
    for (int side = 1; side <= 8; ++side) {
        indicator.resize(side, side);
        QVERIFY(isBlank(painted(&indicator)));
    }
    indicator.resize(9, 9);
    QVERIFY(!isBlank(painted(&indicator)));
}

QTEST_MAIN(TestProgressIndicator)

#include "tst_progressindicator.moc"
