#include "charts/callout.h"
#include "tests/support/testbase.h"

#include <QImage>
#include <QPainter>
#include <QtTest>

#include <cmath>

Q_DECLARE_METATYPE(CalloutSide)
Q_DECLARE_METATYPE(CalloutFigure)

class TestChartCallout final : public TestBase {
    Q_OBJECT

private slots:
    void boxes_data();
    void boxes();
    void sides_data();
    void sides();
    void texts_data();
    void texts();
    void painting();
};

void TestChartCallout::boxes_data()
{
    QTest::addColumn<CalloutSide>("side");
    QTest::addColumn<QPolygonF>("box");
    QTest::addColumn<QRectF>("text");
    QTest::newRow("above")
        << CalloutSide::above
        << QPolygonF({{200, 90}, {194, 84}, {170, 84}, {170, 54}, {230, 54}, {230, 84}, {206, 84}, {200, 90}})
        << QRectF(170, 54, 60, 30);
    QTest::newRow("below")
        << CalloutSide::below
        << QPolygonF({{200, 110}, {206, 116}, {230, 116}, {230, 146}, {170, 146}, {170, 116}, {194, 116}, {200, 110}})
        << QRectF(170, 116, 60, 30);
    QTest::newRow("left")
        << CalloutSide::left
        << QPolygonF({{190, 100}, {184, 106}, {184, 115}, {124, 115}, {124, 85}, {184, 85}, {184, 94}, {190, 100}})
        << QRectF(124, 85, 60, 30);
    QTest::newRow("right")
        << CalloutSide::right
        << QPolygonF({{210, 100}, {216, 106}, {216, 115}, {276, 115}, {276, 85}, {216, 85}, {216, 94}, {210, 100}})
        << QRectF(216, 85, 60, 30);
}

void TestChartCallout::boxes()
{
    QFETCH(CalloutSide, side);
    const QPointF anchor(200, 100);
    QTEST(calloutBox(side, anchor), "box");
    QTEST(calloutTextRect(side, anchor), "text");
    QVERIFY(calloutBounds(side, anchor).contains(calloutBox(side, anchor).boundingRect()));
    QVERIFY(calloutBounds(side, anchor).contains(QRectF(196, 96, 8, 8)));
}

void TestChartCallout::sides_data()
{
    QTest::addColumn<CalloutFigure>("figure");
    QTest::addColumn<QPointF>("anchor");
    QTest::addColumn<CalloutSide>("side");
    // 649 x 300 with a top of 60: label column 18, plot height 235.
    QTest::newRow("plain at 90") << CalloutFigure::plain << QPointF(300, 90) << CalloutSide::below;
    QTest::newRow("plain below 90") << CalloutFigure::plain << QPointF(300, 90.5) << CalloutSide::above;
    QTest::newRow("average at the left edge") << CalloutFigure::average << QPointF(78, 100) << CalloutSide::right;
    QTest::newRow("average farther right") << CalloutFigure::average << QPointF(78.5, 100) << CalloutSide::left;
    QTest::newRow("maximum at the top") << CalloutFigure::maximum << QPointF(300, 41) << CalloutSide::above;
    QTest::newRow("maximum at the bottom") << CalloutFigure::maximum << QPointF(300, 270) << CalloutSide::above;
    QTest::newRow("minimum near the bottom") << CalloutFigure::minimum << QPointF(300, 225) << CalloutSide::above;
    QTest::newRow("minimum higher") << CalloutFigure::minimum << QPointF(300, 224.5) << CalloutSide::below;
}

void TestChartCallout::sides()
{
    QFETCH(CalloutFigure, figure);
    QFETCH(QPointF, anchor);
    QTEST(calloutSide(figure, anchor, ChartGeometry(QSize(649, 300), 60.0, 60.0)), "side");
}

void TestChartCallout::texts_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("cut, not rounded") << 29.979 << QStringLiteral("29.97");
    QTest::newRow("whole") << 60.0 << QStringLiteral("60");
    QTest::newRow("one decimal") << 59.9 << QStringLiteral("59.9");
    QTest::newRow("below the decimals shown") << 0.005 << QStringLiteral("0");
    QTest::newRow("six digits at most") << 12345.678 << QStringLiteral("12345.7");
    QTest::newRow("beyond the range of an int") << 3e12 << QStringLiteral("3e+12");
}

void TestChartCallout::texts()
{
    QFETCH(double, value);
    QTEST(calloutText(value), "text");
}

void TestChartCallout::painting()
{
    QImage image(400, 200, QImage::Format_RGB32);
    image.fill(QColor(21, 21, 21));
    QPainter painter(&image);
    paintCallout(painter, CalloutSide::above, QPointF(200, 100), 59.94);
    painter.end();
    QCOMPARE(image.pixelColor(200, 100), QColor(230, 230, 230)); // circle
    QCOMPARE(image.pixelColor(172, 56), QColor(66, 66, 66));     // box
    QCOMPARE(image.pixelColor(200, 87), QColor(66, 66, 66));     // arrow
    QCOMPARE(image.pixelColor(180, 90), QColor(21, 21, 21));     // beside the arrow
    int bright = 0;
    for (int y = 54; y < 84; ++y) {
        for (int x = 170; x < 230; ++x)
            bright += image.pixelColor(x, y).lightness() > 180 ? 1 : 0;
    }
    QVERIFY2(bright > 20, qPrintable(QString::number(bright))); // text
}

QTEST_MAIN(TestChartCallout)
#include "tst_chartcallout.moc"
