#include "tests/support/testbase.h"
#include "widgets/qroundprogressbar.h"

#include <QConicalGradient>
#include <QImage>
#include <QPainter>
#include <QtMath>
#include <QtTest>

#include <limits>

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
const QColor accent(21, 207, 187);

/// Writes down which steps the painting takes.
class WatchedBar final : public QRoundProgressBar {
public:
    QStringList steps;
    QRectF baseRect;
    double shownValue = -1.0;
    double arcStep = -1.0;

protected:
    void drawBackground(QPainter &, const QRectF &rect) override
    {
        steps.append(QStringLiteral("background"));
        baseRect = rect;
    }
    void drawBase(QPainter &, const QRectF &) override { steps.append(QStringLiteral("base")); }
    void drawValue(QPainter &, const QRectF &, double value, double step) override
    {
        steps.append(QStringLiteral("value"));
        shownValue = value;
        arcStep = step;
    }
    void calculateInnerRect(const QRectF &rect, QRectF &innerRect, double &innerRadius) override
    {
        steps.append(QStringLiteral("inner rectangle"));
        innerRect = rect.adjusted(7, 7, -7, -7);
        innerRadius = 42.0;
    }
    void drawInnerBackground(QPainter &, const QRectF &rect) override
    {
        steps.append(QStringLiteral("inner background"));
        m_innerRect = rect;
    }
    void drawText(QPainter &painter, const QRectF &rect, double radius, double value) override
    {
        steps.append(QStringLiteral("text"));
        handedOn = rect == m_innerRect && radius == 42.0 && value == shownValue;
        antialiased = painter.testRenderHint(QPainter::Antialiasing);
    }

public:
    bool handedOn = false;
    bool antialiased = false;

private:
    QRectF m_innerRect;
};

/// The picture in device pixels. What the bar leaves alone stays transparent.
QImage painted(QWidget *widget)
{
    const double ratio = widget->devicePixelRatioF();
    QImage image(widget->size() * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    widget->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

/// The colour at a radius from the middle of the square at the top left, and an angle from twelve
/// o'clock, clockwise.
QColor colorAt(const QImage &image, int side, double radius, double degrees)
{
    const double ratio = image.devicePixelRatioF();
    const double turned = qDegreesToRadians(degrees);
    return image.pixelColor(int((side / 2.0 + radius * std::sin(turned)) * ratio),
                            int((side / 2.0 - radius * std::cos(turned)) * ratio));
}

/// Whether two colours are the same to the eye.
bool isClose(const QColor &left, const QColor &right)
{
    return std::abs(left.red() - right.red()) <= 3 && std::abs(left.green() - right.green()) <= 3
           && std::abs(left.blue() - right.blue()) <= 3;
}

constexpr int side = 200;
constexpr double ringMiddle = 90.0; // radius within the ring of a bar of that side

} // namespace

class TestRoundProgressBar final : public TestBase {
    Q_OBJECT

private slots:
    void startsAsDescribed();
    void rangeAndValue_data();
    void rangeAndValue();
    void slotsOfTheRange();
    void format_data();
    void format();
    void stepsInTheirOrder();
    void sizes_data();
    void sizes();
    void standsAtTheTopLeft();
    void ring_data();
    void ring();
    void percentageStandsInTheMiddle();
    void isMadeOfDevicePixels();
    void gradientBecomesTheHighlight();
    void gradientRunsClockwise();
    void unchangedValueNeedsNoPaint();
};

void TestRoundProgressBar::startsAsDescribed()
{
    QRoundProgressBar bar;
    QCOMPARE(bar.minimum(), 0.0);
    QCOMPARE(bar.maximum(), 100.0);
    QCOMPARE(bar.value(), 0.0);
    QCOMPARE(bar.text(), QStringLiteral("0%"));
    QCOMPARE(bar.palette().color(QPalette::Highlight), accent);
    QVERIFY(bar.dataColors().isEmpty());
}

void TestRoundProgressBar::rangeAndValue_data()
{
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<double>("value");
    QTest::addColumn<QVector<double>>("expected"); // minimum, maximum, value
    QTest::newRow("in the middle") << 0.0 << 10.0 << 5.0 << QVector<double>{0.0, 10.0, 5.0};
    QTest::newRow("the least") << 2.0 << 10.0 << 2.0 << QVector<double>{2.0, 10.0, 2.0};
    QTest::newRow("below the least") << 2.0 << 10.0 << 1.9 << QVector<double>{2.0, 10.0, 2.0};
    QTest::newRow("the most") << 0.0 << 10.0 << 10.0 << QVector<double>{0.0, 10.0, 10.0};
    QTest::newRow("above the most") << 0.0 << 10.0 << 10.1 << QVector<double>{0.0, 10.0, 10.0};
    QTest::newRow("the wrong way round") << 10.0 << 0.0 << 5.0 << QVector<double>{0.0, 10.0, 5.0};
    QTest::newRow("an empty range") << 7.0 << 7.0 << 5.0 << QVector<double>{7.0, 7.0, 7.0};
    QTest::newRow("no number for a range") << notANumber << 10.0 << 5.0 << QVector<double>{0.0, 100.0, 5.0};
    QTest::newRow("an infinite range") << 0.0 << infinite << 5.0 << QVector<double>{0.0, 100.0, 5.0};
    QTest::newRow("no number for a value") << 0.0 << 10.0 << notANumber << QVector<double>{0.0, 10.0, 0.0};
    QTest::newRow("an infinite value") << 0.0 << 10.0 << infinite << QVector<double>{0.0, 10.0, 0.0};
}

void TestRoundProgressBar::rangeAndValue()
{
    QFETCH(double, minimum);
    QFETCH(double, maximum);
    QFETCH(double, value);
    QRoundProgressBar bar;
    bar.setRange(minimum, maximum);
    bar.setValue(value);
    const QVector<double> state{bar.minimum(), bar.maximum(), bar.value()};
    QTEST(state, "expected");
}

void TestRoundProgressBar::slotsOfTheRange()
{
    QRoundProgressBar bar;
    bar.setValue(80.0);
    bar.setMaximum(60.0);
    QCOMPARE(bar.value(), 60.0);
    bar.setMinimum(20.0);
    QCOMPARE(bar.minimum(), 20.0);
    QCOMPARE(bar.maximum(), 60.0);
    bar.setMinimum(90.0); // above the maximum
    QCOMPARE(bar.minimum(), 60.0);
    QCOMPARE(bar.maximum(), 90.0);
    bar.setMaximum(notANumber);
    QCOMPARE(bar.maximum(), 90.0);
}

void TestRoundProgressBar::format_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("expected");
    QTest::newRow("the number alone") << QStringLiteral("%p") << QStringLiteral("50");
    QTest::newRow("with a sign") << QStringLiteral("%p%") << QStringLiteral("50%");
    QTest::newRow("twice") << QStringLiteral("%p of %p") << QStringLiteral("50 of 50");
    QTest::newRow("other text stays") << QStringLiteral("100% of p") << QStringLiteral("100% of p");
    QTest::newRow("nothing") << QString() << QString();
}

void TestRoundProgressBar::format()
{
    QFETCH(QString, format);
    QRoundProgressBar bar;
    bar.setValue(50.7);
    bar.setFormat(format);
    QCOMPARE(bar.format(), format);
    QTEST(bar.text(), "expected");
    bar.resize(80, 80);
    QVERIFY(!painted(&bar).isNull());
}

void TestRoundProgressBar::stepsInTheirOrder()
{
    WatchedBar bar;
    bar.resize(120, 100);
    bar.setRange(0, 50);
    bar.setValue(10);
    painted(&bar);
    const QStringList expected{QStringLiteral("background"),
                               QStringLiteral("base"),
                               QStringLiteral("value"),
                               QStringLiteral("inner rectangle"),
                               QStringLiteral("inner background"),
                               QStringLiteral("text")};
    QCOMPARE(bar.steps, expected);
    QCOMPARE(bar.baseRect, QRectF(1, 1, 98, 98));
    QCOMPARE(bar.shownValue, 10.0);
    QCOMPARE(bar.arcStep, 72.0);
    QVERIFY(bar.handedOn);
    QVERIFY(bar.antialiased);
}

void TestRoundProgressBar::sizes_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("steps");
    QTest::newRow("one pixel") << QSize(1, 1) << 0;
    QTest::newRow("two pixels leave nothing") << QSize(2, 2) << 0;
    QTest::newRow("a wide strip of two") << QSize(100, 2) << 0;
    QTest::newRow("three pixels") << QSize(3, 3) << 6;
    QTest::newRow("a wide strip of three") << QSize(100, 3) << 6;
}

void TestRoundProgressBar::sizes()
{
    QFETCH(QSize, size);
    WatchedBar watched;
    watched.resize(size);
    painted(&watched);
    QTEST(watched.steps.size(), "steps");
    QRoundProgressBar bar; // and the real steps take it
    bar.resize(size);
    bar.setValue(60);
    painted(&bar);
}

void TestRoundProgressBar::standsAtTheTopLeft()
{
    QRoundProgressBar bar;
    bar.setValue(100);
    bar.setAttribute(Qt::WA_NoSystemBackground);
    bar.resize(side + 100, side);
    const double ratio = bar.devicePixelRatioF();
    QImage image(bar.size() * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::white);
    bar.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    QVERIFY(isClose(colorAt(image, side, ringMiddle, 90), accent));
    QVERIFY(isClose(colorAt(image, side, ringMiddle, 270), accent));
    QCOMPARE(image.pixelColor(int((side + 50) * ratio), int(side / 2.0 * ratio)), QColor(Qt::white));
}

void TestRoundProgressBar::ring_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QVector<double>>("filled");
    QTest::addColumn<QVector<double>>("waiting");
    QTest::newRow("0") << 0.0 << QVector<double>{} << QVector<double>{0, 2, 90, 180, 270, 358};
    QTest::newRow("25") << 25.0 << QVector<double>{3, 45, 87} << QVector<double>{93, 180, 270, 357};
    QTest::newRow("50") << 50.0 << QVector<double>{3, 90, 177} << QVector<double>{183, 270, 357};
    QTest::newRow("99") << 99.0 << QVector<double>{3, 180, 353} << QVector<double>{358.2};
    QTest::newRow("100") << 100.0 << QVector<double>{0, 2, 90, 180, 270, 358} << QVector<double>{};
}

void TestRoundProgressBar::ring()
{
    QFETCH(double, value);
    QFETCH(QVector<double>, filled);
    QFETCH(QVector<double>, waiting);
    QRoundProgressBar bar;
    bar.setFormat(QString());
    bar.resize(side, side);
    bar.setValue(value);
    const QImage image = painted(&bar);
    const QColor panel(32, 32, 32);
    for (double angle : filled) {
        const QColor color = colorAt(image, side, ringMiddle, angle);
        QVERIFY2(isClose(color, accent), qPrintable(QStringLiteral("%1: %2").arg(angle).arg(color.name())));
    }
    for (double angle : waiting) {
        // Soft: between the panel and the arc, much nearer to the panel, and not the same as it.
        const QColor color = colorAt(image, side, ringMiddle, angle);
        QVERIFY2(color.green() > panel.green() + 10 && color.green() < 80 && color.red() < panel.red(),
                 qPrintable(QStringLiteral("%1: %2").arg(angle).arg(color.name())));
    }
    for (double angle : {0.0, 90.0, 180.0, 270.0})
        QVERIFY(isClose(colorAt(image, side, 70, angle), panel)); // inside the ring
    QVERIFY(isClose(image.pixelColor(image.width() / 2, image.height() / 2), panel));
}

void TestRoundProgressBar::percentageStandsInTheMiddle()
{
    QRoundProgressBar bar;
    bar.resize(side, side);
    bar.setValue(88);
    const QImage image = painted(&bar);
    QRect letters;
    const double ratio = image.devicePixelRatioF();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const double toMiddle = std::hypot(x / ratio - side / 2.0, y / ratio - side / 2.0);
            if (toMiddle < 78.0 && image.pixelColor(x, y).green() > 150) // not the ring
                letters |= QRect(x, y, 1, 1);
        }
    }
    QVERIFY2(letters.width() > 60 * ratio && letters.width() < 135 * ratio,
             qPrintable(QString::number(letters.width())));
    QVERIFY(letters.height() > 20 * ratio);
    QVERIFY(std::abs(QRectF(letters).center().x() - side / 2.0 * ratio) < 6 * ratio);
    QVERIFY(std::abs(QRectF(letters).center().y() - side / 2.0 * ratio) < 8 * ratio);
}

void TestRoundProgressBar::isMadeOfDevicePixels()
{
    QRoundProgressBar bar;
    QCOMPARE(bar.devicePixelRatioF(), qEnvironmentVariable("QT_SCALE_FACTOR", QStringLiteral("1")).toDouble());
    bar.resize(side, side);
    bar.setValue(60);
    const QImage image = painted(&bar);
    QCOMPARE(image.size(), QSize(side, side) * bar.devicePixelRatioF());
    // Had every pixel been doubled, all blocks of two by two would be of one colour.
    int uneven = 0;
    for (int y = 0; y + 1 < image.height(); y += 2) {
        for (int x = 0; x + 1 < image.width(); x += 2) {
            const QRgb first = image.pixel(x, y);
            if (image.pixel(x + 1, y) != first || image.pixel(x, y + 1) != first || image.pixel(x + 1, y + 1) != first)
                ++uneven;
        }
    }
    QVERIFY2(uneven > 200, qPrintable(QString::number(uneven)));
}

void TestRoundProgressBar::gradientBecomesTheHighlight()
{
    const QGradientStops stops{{0.0, Qt::red}, {0.25, Qt::green}, {1.0, Qt::blue}};
    QRoundProgressBar bar;
    bar.resize(side, side);
    bar.setDataColors(stops);
    QCOMPARE(bar.dataColors(), stops);
    QVERIFY(!bar.palette().brush(QPalette::Highlight).gradient()); // not before a paint
    painted(&bar);
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        const QGradient *gradient = bar.palette().brush(group, QPalette::Highlight).gradient();
        QVERIFY(gradient);
        QCOMPARE(gradient->type(), QGradient::ConicalGradient);
        QCOMPARE(gradient->coordinateMode(), QGradient::ObjectBoundingMode);
        QCOMPARE(static_cast<const QConicalGradient *>(gradient)->center(), QPointF(0.5, 0.5));
        QCOMPARE(gradient->stops(), clockwiseStops(stops));
    }
    // Once: what the palette is given later stays.
    QPalette colors = bar.palette();
    colors.setBrush(QPalette::Highlight, Qt::yellow);
    bar.setPalette(colors);
    bar.setValue(30);
    bar.setDataColors(stops);
    painted(&bar);
    QCOMPARE(bar.palette().brush(QPalette::Highlight), QBrush(Qt::yellow));
    bar.setDataColors({});
    painted(&bar);
    QCOMPARE(bar.palette().brush(QPalette::Highlight), QBrush(accent));
}

void TestRoundProgressBar::gradientRunsClockwise()
{
    QRoundProgressBar bar;
    bar.setFormat(QString());
    bar.resize(side, side);
    bar.setDataColors({{0.0, QColor(255, 0, 0)}, {0.5, QColor(0, 255, 0)}, {1.0, QColor(0, 0, 255)}});
    bar.setValue(100);
    QImage image = painted(&bar);
    const QColor start = colorAt(image, side, ringMiddle, 2);
    QVERIFY2(start.red() > 240 && start.blue() < 10, qPrintable(start.name()));
    const QColor half = colorAt(image, side, ringMiddle, 180);
    QVERIFY2(half.green() > 240, qPrintable(half.name()));
    const QColor end = colorAt(image, side, ringMiddle, 358);
    QVERIFY2(end.blue() > 240 && end.red() < 10, qPrintable(end.name()));
    const QColor quarter = colorAt(image, side, ringMiddle, 90);
    QVERIFY2(std::abs(quarter.red() - 127) < 8 && std::abs(quarter.green() - 127) < 8, qPrintable(quarter.name()));

    bar.setValue(40); // a shorter arc has the same colours at the same places
    image = painted(&bar);
    QVERIFY(isClose(colorAt(image, side, ringMiddle, 90), quarter));
}

void TestRoundProgressBar::unchangedValueNeedsNoPaint()
{
    WatchedBar bar;
    bar.resize(100, 100);
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));
    QTRY_VERIFY(!bar.steps.isEmpty());
    QCoreApplication::processEvents();
    bar.steps.clear();
    bar.setValue(bar.value());
    bar.setFormat(bar.format());
    QCoreApplication::processEvents();
    QCOMPARE(bar.steps, QStringList());
    bar.setValue(1);
    QTRY_COMPARE(bar.steps.size(), 6);
}

QTEST_MAIN(TestRoundProgressBar)

#include "tst_roundprogressbar.moc"
