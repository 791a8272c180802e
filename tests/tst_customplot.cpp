#include "charts/customplot.h"
#include "mainwindow/customsourcebutton.h"
#include "tests/charts/naivechart.h"
#include "tests/charts/picturecompare.h"
#include "tests/support/testbase.h"

#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>
#include <QSignalSpy>
#include <QToolButton>
#include <QVBoxLayout>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

namespace {

const QColor background(21, 21, 21);
const QSize usualSize(649, 300);

/// A chart as the window has it, with its header, on the dark background.
std::unique_ptr<CustomPlot> makeChart(int lengthS, int top, int series, QSize size = usualSize)
{
    TestBase::expectWarning(QStringLiteral("Could not parse stylesheet"));
    TestBase::expectWarning(QStringLiteral("propagateSizeHints"));
    auto chart = std::make_unique<CustomPlot>();
    QPalette palette = chart->palette();
    palette.setColor(QPalette::Window, background);
    chart->setPalette(palette);
    chart->setAutoFillBackground(true);
    chart->setupLayout();
    chart->setMetaInfo(lengthS, top, series);
    chart->resize(size);
    return chart;
}

QImage pictureOf(CustomPlot &chart)
{
    return chart.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

/// The picture below the header, drawn the plain way.
QImage naiveBelowHeader(const NaiveChart &naive)
{
    QImage image(QSize(naive.width, naive.height), QImage::Format_RGB32);
    image.fill(background);
    QPainter painter(&image);
    naive.paint(painter);
    painter.end();
    return image.copy(0, 40, naive.width, naive.height - 40);
}

QImage belowHeader(CustomPlot &chart)
{
    return pictureOf(chart).copy(0, 40, chart.width(), chart.height() - 40);
}

NaiveChart naiveOf(const CustomPlot &chart, bool raw, bool smooth)
{
    NaiveChart naive;
    naive.width = chart.width();
    naive.height = chart.height();
    naive.maxX = chart.axisLengthS();
    naive.maxY = chart.axisTop();
    naive.raw = raw;
    naive.smooth = smooth;
    naive.hoverTime = chart.cursorTimeMs();
    for (int i = 0; i < chart.seriesCount(); ++i) {
        NaiveSeries one;
        one.color = chart.seriesColor(i);
        one.visible = chart.isSeriesVisible(i);
        const auto copy = [](const PointSeries &from, std::vector<QPointF> &to) {
            for (std::size_t k = 0; k < from.size(); ++k)
                to.push_back(from[k]);
        };
        copy(chart.plainPoints(i), one.plain);
        copy(chart.averagePoints(i), one.average);
        copy(chart.minimumPoints(i), one.minimum);
        copy(chart.maximumPoints(i), one.maximum);
        naive.series.push_back(one);
    }
    return naive;
}

void hover(CustomPlot &chart, int x, int y = 150)
{
    QMouseEvent move(QEvent::MouseMove, QPointF(x, y), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&chart, &move);
}

/// Red, and counts its paints.
class PaintedParent final : public QWidget {
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        ++paints;
        QPainter(this).fillRect(event->rect(), Qt::red);
    }
};

/// Remembers what a widget was asked to paint.
class PaintWatcher final : public QObject {
public:
    explicit PaintWatcher(QWidget &widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent *>(event)->region();
        return QObject::eventFilter(watched, event);
    }
    QRegion region;
};

int brightPixels(const QImage &image, const QRect &area, QColor than)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            count += image.rect().contains(x, y) && image.pixelColor(x, y).lightness() > than.lightness() + 15 ? 1 : 0;
    }
    return count;
}

} // namespace

class TestCustomPlot final : public TestBase {
    Q_OBJECT

private slots:
    void startsWithAMinuteAndSixty();
    void headerIsBuilt();
    void titleReachesTheHeader();
    void withoutHeaderNoSeriesIsShown();
    void newChartForgetsTheOld();
    void whatLiesOutsideIsIgnored_data();
    void whatLiesOutsideIsIgnored();
    void axisGrowsWithValues();
    void axisGrowsWithBandMaxima();
    void infiniteValuesAreStoredAndNotDrawn();
    void moreThanTenSeriesHaveColours();
    void gridAndLabels();
    void drawings_data();
    void drawings();
    void fillAndLineColours();
    void hoverShowsCursorAndCallout();
    void calloutsOfABand();
    void noCalloutForZeroOrWithoutDrawings();
    void hiddenSeriesIsNeitherDrawnNorRead();
    void labelsReachTheButtons();
    void samplesBetweenPaintsCostOnePaint();
    void paintsAtAPace_data();
    void paintsAtAPace();
    void cursorDoesNotWaitForAMeasurement();
    void groundIsPaintedAlone();
    void newSampleRepaintsAStripBelowTheHeader();
    void changesDuringAPartialPaintAreNotLost();
    void hiddenChartIsBroughtUpToDateWhenShown();
    void tinyWidgets_data();
    void tinyWidgets();
};

void TestCustomPlot::startsWithAMinuteAndSixty()
{
    CustomPlot chart;
    QCOMPARE(chart.axisLengthS(), 60.0);
    QCOMPARE(chart.axisTop(), 60.0);
    QCOMPARE(chart.seriesCount(), 0);
    QCOMPARE(chart.cursorTimeMs(), -10000);
    QVERIFY(chart.hasMouseTracking());
    QVERIFY(!chart.smoothToggle() && !chart.rawToggle());
    const QVector<QColor> colors{{21, 207, 187}, {153, 0, 255}, {251, 135, 25},  {230, 51, 64}, {37, 204, 85},
                                 {26, 83, 92},   {0, 102, 255}, {230, 230, 230}, {0, 0, 255},   {233, 122, 205}};
    for (int i = 0; i < colors.size(); ++i)
        QCOMPARE(chart.seriesColor(i), colors[i]);
}

void TestCustomPlot::headerIsBuilt()
{
    auto chart = makeChart(60, 60, 3);
    auto *layout = qobject_cast<QVBoxLayout *>(chart->layout());
    QVERIFY(layout);
    QCOMPARE(layout->spacing(), 0);
    QCOMPARE(layout->contentsMargins(), QMargins(5, 5, 10, 10));
    QWidget *top = layout->itemAt(0)->widget();
    QCOMPARE(top->minimumHeight(), 30);
    QCOMPARE(top->maximumHeight(), 30);
    auto *topLayout = qobject_cast<QHBoxLayout *>(top->layout());
    QCOMPARE(topLayout->contentsMargins(), QMargins(25, 5, 10, 0));
    QCOMPARE(topLayout->spacing(), 4);
    auto *name = chart->findChild<QLabel *>(QStringLiteral("nameLabel"));
    QCOMPARE(name->styleSheet(), QStringLiteral("#nameLabel{color:white}"));
    QCOMPARE(name->minimumWidth(), 80);
    QCOMPARE(name->maximumWidth(), 80);
    auto *receivers = chart->findChild<QLabel *>(QStringLiteral("recLabel"));
    QCOMPARE(receivers->text(), QStringLiteral("RECEIVER:        "));
    QCOMPARE(receivers->styleSheet(), QStringLiteral("#recLabel{color:white}"));
    QCOMPARE(chart->legendButtons().size(), 3);

    QVERIFY(chart->smoothToggle()->isCheckable() && chart->smoothToggle()->isChecked());
    QVERIFY(chart->rawToggle()->isCheckable() && !chart->rawToggle()->isChecked());
    QCOMPARE(chart->smoothToggle()->styleSheet(),
             QStringLiteral("QToolButton{border-image: url(:/images/smooth-graph-OFF.png);}"
                            "QToolButton:checked{border-image: url(:/images/smooth-graph-ON.png);}"));
    QCOMPARE(chart->rawToggle()->styleSheet(),
             QStringLiteral("QToolButton{border-image: url(:/images/raw-graph-OFF.png);}"
                            "QToolButton:checked{border-image: url(:/images/raw-graph-ON.png);}"));
}

void TestCustomPlot::titleReachesTheHeader()
{
    CustomPlot chart;
    chart.setTitle(QStringLiteral("LATENCY"));
    chart.setupLayout();
    QCOMPARE(chart.findChild<QLabel *>(QStringLiteral("nameLabel"))->text(), QStringLiteral("LATENCY"));
}

void TestCustomPlot::withoutHeaderNoSeriesIsShown()
{
    CustomPlot chart;
    chart.resize(usualSize);
    chart.setMetaInfo(60, 60, 2);
    QVERIFY(chart.legendButtons().isEmpty());
    QVERIFY(!chart.isSeriesVisible(0));
    chart.appendNewData(0, 1000, 30);
    chart.appendNewData(0, 2000, 40);
    chart.setGraphLabel(0, QStringLiteral("x"));
    QCOMPARE(chart.plainPoints(0).size(), std::size_t(2));
    chart.grab();
}

void TestCustomPlot::newChartForgetsTheOld()
{
    auto chart = makeChart(60, 60, 2);
    for (int i = 0; i < 50; ++i)
        chart->appendNewData(1, i * 1000, 300.0);
    QCOMPARE(chart->axisTop(), 300.0);
    pictureOf(*chart);
    chart->setMetaInfo(120, 40, 1);
    QCOMPARE(chart->axisLengthS(), 120.0);
    QCOMPARE(chart->axisTop(), 40.0);
    QCOMPARE(chart->legendButtons().size(), 1);
    QVERIFY(chart->plainPoints(0).isEmpty());
    QVERIFY(comparePictures(belowHeader(*chart), naiveBelowHeader(naiveOf(*chart, true, true))).largestOpaque <= 2);
    chart->setMetaInfo(120, 40, -3);
    QCOMPARE(chart->seriesCount(), 0);
}

void TestCustomPlot::whatLiesOutsideIsIgnored_data()
{
    QTest::addColumn<int>("series");
    QTest::addColumn<int>("index");
    QTest::newRow("no series at all") << 0 << 0;
    QTest::newRow("one too far") << 2 << 2;
    QTest::newRow("below the first") << 2 << -1;
}

void TestCustomPlot::whatLiesOutsideIsIgnored()
{
    QFETCH(int, series);
    QFETCH(int, index);
    auto chart = makeChart(60, 60, series);
    chart->appendNewData(index, 1000, 500.0);
    chart->appendNewMultiData(index, 1000, 1, 900.0, 500.0);
    chart->setGraphLabel(index, QStringLiteral("x"));
    QCOMPARE(chart->axisTop(), 60.0);
    QVERIFY(!chart->isSeriesVisible(index));
    pictureOf(*chart);
}

void TestCustomPlot::axisGrowsWithValues()
{
    auto chart = makeChart(60, 60, 1);
    chart->appendNewData(0, 1000, 60.0);
    QCOMPARE(chart->axisTop(), 60.0);
    chart->appendNewData(0, 2000, 347.0);
    QCOMPARE(chart->axisTop(), 400.0);
    chart->appendNewData(0, 3000, 10.0);
    QCOMPARE(chart->axisTop(), 400.0);
}

void TestCustomPlot::axisGrowsWithBandMaxima()
{
    auto chart = makeChart(60, 60, 1);
    chart->appendNewMultiData(0, 1000, 5.0, 73.0, 20.0);
    QCOMPARE(chart->axisTop(), 80.0);
    QCOMPARE(chart->minimumPoints(0)[0], QPointF(1000, 5));
    QCOMPARE(chart->maximumPoints(0)[0], QPointF(1000, 73));
    QCOMPARE(chart->averagePoints(0)[0], QPointF(1000, 20));
    QVERIFY(chart->plainPoints(0).isEmpty());
}

void TestCustomPlot::infiniteValuesAreStoredAndNotDrawn()
{
    auto chart = makeChart(60, 60, 1);
    chart->rawToggle()->setChecked(true);
    chart->appendNewData(0, 1000, 30.0);
    chart->appendNewData(0, 9000, std::numeric_limits<double>::infinity());
    chart->appendNewData(0, 20000, 30.0);
    chart->appendNewData(0, 30000, 50.0);
    QCOMPARE(chart->axisTop(), 60.0);
    QVERIFY(std::isinf(chart->plainPoints(0)[1].y()));
    const PictureDifference difference =
        comparePictures(belowHeader(*chart), naiveBelowHeader(naiveOf(*chart, true, true)));
    QVERIFY2(difference.largestOpaque <= 2, qPrintable(difference.text()));
}

void TestCustomPlot::moreThanTenSeriesHaveColours()
{
    auto chart = makeChart(60, 60, 24);
    QSet<QRgb> colors;
    for (int i = 0; i < 24; ++i)
        colors.insert(chart->seriesColor(i).rgb());
    QCOMPARE(colors.size(), 24);
    for (int i = 0; i < 24; ++i) {
        chart->appendNewData(i, 1000, 20.0);
        chart->appendNewData(i, 30000, 10.0 + i);
    }
    pictureOf(*chart);
}

void TestCustomPlot::gridAndLabels()
{
    auto chart = makeChart(60, 60, 1);
    const QImage image = pictureOf(*chart);
    const QColor line(66, 66, 66);
    for (int i = 0; i < 7; ++i) {
        QCOMPARE(image.pixelColor(28 + i * 100, 60), line);
        QCOMPARE(image.pixelColor(28 + i * 100, 40), line);
        QCOMPARE(image.pixelColor(29 + i * 100, 60), background);
        // The labels of 10, 20 ... 60 seconds; none at 0.
        const int text = brightPixels(image, QRect(28 + i * 100 - 15, 285, 25, 8), background);
        QVERIFY2(i == 0 ? text == 0 : text > 5, qPrintable(QStringLiteral("%1: %2").arg(i).arg(text)));
    }
    for (int j = 0; j < 7; ++j) {
        const int y = static_cast<int>(275 - j * 235 / 6.0);
        const bool here = image.pixelColor(80, y) == line;
        QVERIFY(here || image.pixelColor(80, y + 1) == line);
        QCOMPARE(image.pixelColor(80, here ? y + 1 : y), background);
        QCOMPARE(image.pixelColor(80, y - 2), background);
        QVERIFY(brightPixels(image, QRect(0, y - 5, 23, 15), background) > 3);
    }
}

void TestCustomPlot::drawings_data()
{
    QTest::addColumn<bool>("raw");
    QTest::addColumn<bool>("smooth");
    QTest::newRow("none") << false << false;
    QTest::newRow("raw") << true << false;
    QTest::newRow("smooth") << false << true;
    QTest::newRow("both") << true << true;
}

void TestCustomPlot::drawings()
{
    QFETCH(bool, raw);
    QFETCH(bool, smooth);
    auto chart = makeChart(60, 60, 3);
    chart->rawToggle()->setChecked(raw);
    chart->smoothToggle()->setChecked(smooth);
    for (int i = 0; i < 600; ++i) {
        for (int series = 0; series < 3; ++series)
            chart->appendNewData(series, i * 90, 15.0 * (series + 1) + i % 5);
        if (i % 50 == 0)
            pictureOf(*chart);
    }
    const QImage image = belowHeader(*chart);
    const PictureDifference difference = comparePictures(image, naiveBelowHeader(naiveOf(*chart, raw, smooth)));
    QVERIFY2(difference.largestOpaque <= 3, qPrintable(difference.text()));
    // Something is there, or nothing but the grid.
    const bool bare = comparePictures(image, naiveBelowHeader(naiveOf(*chart, false, false))).pixels == 0;
    QCOMPARE(bare, !raw && !smooth);
}

void TestCustomPlot::fillAndLineColours()
{
    auto chart = makeChart(60, 60, 1);
    chart->rawToggle()->setChecked(true);
    chart->smoothToggle()->setChecked(false);
    chart->appendNewData(0, 0, 30.0);
    chart->appendNewData(0, 60000, 30.0);
    const QImage image = pictureOf(*chart);
    QCOMPARE(image.pixelColor(300, 157), QColor(21, 207, 187));
    const QColor fill = image.pixelColor(300, 200);
    QVERIFY(qAbs(fill.green() - (207 * 50 + 21 * 205) / 255) <= 2);
    QVERIFY(qAbs(fill.red() - 21) <= 2);
    QCOMPARE(image.pixelColor(300, 100), background);
}

void TestCustomPlot::hoverShowsCursorAndCallout()
{
    auto chart = makeChart(60, 60, 2);
    chart->rawToggle()->setChecked(true);
    for (int i = 0; i <= 600; ++i) {
        chart->appendNewData(0, i * 100, 20.0);
        chart->appendNewData(1, i * 100, 45.5);
    }
    hover(*chart, 328);
    QCOMPARE(chart->cursorTimeMs(), 29459);
    const QImage image = pictureOf(*chart);
    // Cursor line at 322.59, 12 pixels below the axis line of 60 fps, dashed.
    int dashes = 0;
    for (int y = 41; y < 80; ++y)
        dashes +=
            image.pixelColor(322, y) == QColor(66, 66, 66) || image.pixelColor(323, y) == QColor(66, 66, 66) ? 1 : 0;
    QVERIFY2(dashes > 15 && dashes < 39, qPrintable(QString::number(dashes)));
    // The larger of the two values, 45.5, lies at y = 96.8: its callout stands above.
    QCOMPARE(image.pixelColor(322, 97), QColor(230, 230, 230));
    QCOMPARE(image.pixelColor(296, 60), QColor(66, 66, 66));
    QVERIFY(brightPixels(image, QRect(293, 51, 58, 28), QColor(120, 120, 120)) > 20);

    hover(*chart, 5); // left of the axis: no cursor, no callout
    QVERIFY(chart->cursorTimeMs() < 0);
    const QImage without = pictureOf(*chart);
    QCOMPARE(without.pixelColor(296, 60), background);
}

void TestCustomPlot::calloutsOfABand()
{
    auto chart = makeChart(60, 60, 1);
    chart->rawToggle()->setChecked(true);
    for (int i = 0; i <= 60; ++i)
        chart->appendNewMultiData(0, i * 1000, 10.0, 50.0, 30.0);
    hover(*chart, 333); // 29950 ms belongs to the tenth of 29900: no sample there
    const QImage nothing = pictureOf(*chart);
    hover(*chart, 334); // 30049 ms, sample at 30000
    QCOMPARE(chart->cursorTimeMs() / 100, 300);
    const QImage image = pictureOf(*chart);
    const int x = 328;
    QCOMPARE(image.pixelColor(x, 157), QColor(230, 230, 230)); // average, box to the left
    QCOMPARE(image.pixelColor(x - 70, 145), QColor(66, 66, 66));
    QCOMPARE(image.pixelColor(x, 79), QColor(230, 230, 230)); // maximum, box above
    QCOMPARE(image.pixelColor(x - 26, 40), QColor(66, 66, 66));
    QCOMPARE(image.pixelColor(x, 236), QColor(230, 230, 230)); // minimum, box above as it is near the bottom
    QCOMPARE(image.pixelColor(x - 26, 192), QColor(66, 66, 66));
    QVERIFY(nothing.pixelColor(x - 70, 145) != QColor(66, 66, 66));
}

void TestCustomPlot::noCalloutForZeroOrWithoutDrawings()
{
    auto chart = makeChart(60, 60, 1);
    chart->rawToggle()->setChecked(true);
    for (int i = 0; i <= 600; ++i)
        chart->appendNewData(0, i * 100, i < 300 ? 0.0 : 30.0);
    hover(*chart, 128); // value 0
    NaiveChart naive = naiveOf(*chart, true, true);
    QVERIFY(comparePictures(belowHeader(*chart), naiveBelowHeader(naive)).largestOpaque <= 2);

    hover(*chart, 500); // value 30, but nothing is drawn
    chart->rawToggle()->setChecked(false);
    chart->smoothToggle()->setChecked(false);
    naive = naiveOf(*chart, false, false);
    QVERIFY(comparePictures(belowHeader(*chart), naiveBelowHeader(naive)).largestOpaque <= 2);
    chart->smoothToggle()->setChecked(true); // read from the smooth drawing alone, too
    const PictureDifference difference =
        comparePictures(belowHeader(*chart), naiveBelowHeader(naiveOf(*chart, false, true)));
    QVERIFY(difference.pixels > 1000);
}

void TestCustomPlot::hiddenSeriesIsNeitherDrawnNorRead()
{
    auto chart = makeChart(60, 60, 2);
    chart->rawToggle()->setChecked(true);
    for (int i = 0; i <= 600; ++i) {
        chart->appendNewData(0, i * 100, 20.0);
        chart->appendNewData(1, i * 100, 47.0);
    }
    hover(*chart, 328);
    QTest::mouseClick(chart->legendButtons().at(1), Qt::LeftButton);
    QVERIFY(!chart->isSeriesVisible(1));
    const QImage image = pictureOf(*chart);
    QCOMPARE(image.pixelColor(200, 90), background);             // line of 47
    QCOMPARE(image.pixelColor(322, 197), QColor(230, 230, 230)); // circle at 20
    QTest::mouseClick(chart->legendButtons().at(1), Qt::LeftButton);
    QVERIFY(chart->isSeriesVisible(1));
    QCOMPARE(pictureOf(*chart).pixelColor(322, 91), QColor(230, 230, 230)); // circle at 47
}

void TestCustomPlot::labelsReachTheButtons()
{
    auto chart = makeChart(60, 60, 2);
    chart->setGraphLabel(1, QStringLiteral("12"));
    QCOMPARE(chart->legendButtons().at(1)->text(), QStringLiteral("12"));
    QCOMPARE(chart->legendButtons().at(0)->text(), QStringLiteral("1"));
}

void TestCustomPlot::samplesBetweenPaintsCostOnePaint()
{
    auto chart = makeChart(60, 60, 1);
    chart->show();
    QVERIFY(QTest::qWaitForWindowExposed(chart.get()));
    QTRY_VERIFY(chart->paints() > 0);
    const int before = chart->paints();
    for (int i = 0; i < 1000; ++i)
        chart->appendNewData(0, i * 10, 30.0);
    QTRY_VERIFY(chart->paints() > before);
    QCOMPARE(chart->paints(), before + 1);
}

void TestCustomPlot::paintsAtAPace_data()
{
    QTest::addColumn<bool>("moves");
    QTest::addColumn<int>("mostPerSecond");
    QTest::newRow("samples alone") << false << 20;
    QTest::newRow("samples and a cursor that moves") << true << 60;
}

void TestCustomPlot::paintsAtAPace()
{
    QFETCH(bool, moves);
    QFETCH(int, mostPerSecond);
    auto chart = makeChart(60, 60, 1);
    chart->show();
    QVERIFY(QTest::qWaitForWindowExposed(chart.get()));
    const int before = chart->paints();
    QElapsedTimer clock;
    clock.start();
    int sample = 0;
    const auto paints = [&] { return chart->paints() - before; };
    while (clock.elapsed() < 300 || (paints() < 2 && clock.elapsed() < 20000)) {
        chart->appendNewData(0, ++sample, 30.0);
        if (moves)
            hover(*chart, 100 + sample % 300);
        QCoreApplication::processEvents();
    }
    const qint64 passedMs = clock.elapsed();
    QVERIFY2(paints() <= passedMs * mostPerSecond / 1000 + 2,
             qPrintable(QStringLiteral("%1 in %2 ms").arg(paints()).arg(passedMs)));
    QVERIFY(paints() >= 2);
}

void TestCustomPlot::cursorDoesNotWaitForAMeasurement()
{
    for (int i = 0; i < 20; ++i) { // now and then the measurement is due at once, too
        RepaintPacer pacer;
        const QSignalSpy due(&pacer, &RepaintPacer::due);
        pacer.requestForMeasurement();
        pacer.request();
        QCoreApplication::processEvents();
        QCOMPARE(due.count(), 1);
    }
}

void TestCustomPlot::groundIsPaintedAlone()
{
    PaintedParent parent;
    parent.resize(400, 320);
    auto chart = makeChart(60, 60, 1);
    CustomPlot *const plot = chart.release(); // the parent's
    plot->setAutoFillBackground(false);
    plot->setParent(&parent);
    plot->setGeometry(10, 10, 380, 300);
    plot->setGround(Qt::blue, 5);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    QTRY_VERIFY(plot->paints() > 0);
    const QImage picture = parent.grab().toImage();
    for (const QPoint &corner : {QPoint(10, 10), QPoint(389, 10), QPoint(14, 309), QPoint(389, 305)})
        QCOMPARE(picture.pixelColor(corner), QColor(Qt::red));
    for (const QPoint &inside : {QPoint(15, 10), QPoint(10, 15), QPoint(384, 309), QPoint(389, 304)})
        QCOMPARE(picture.pixelColor(inside), QColor(Qt::blue));

    QCoreApplication::processEvents();
    const int paints = plot->paints();
    const int parentPaints = parent.paints;
    for (int i = 0; i < 300; ++i)
        plot->appendNewData(0, i * 100, 30.0);
    QTRY_VERIFY(plot->paints() > paints);
    QCOMPARE(parent.paints, parentPaints);
}

void TestCustomPlot::newSampleRepaintsAStripBelowTheHeader()
{
    auto chart = makeChart(60, 60, 1);
    chart->rawToggle()->setChecked(true);
    chart->show();
    QVERIFY(QTest::qWaitForWindowExposed(chart.get()));
    for (int i = 0; i < 300; ++i)
        chart->appendNewData(0, i * 100, 30.0 + i % 7);
    const int before = chart->paints();
    QTRY_VERIFY(chart->paints() > before);

    const PaintWatcher watcher(*chart);
    chart->appendNewData(0, 30000, 31.0);
    QTRY_VERIFY(!watcher.region.isEmpty());
    const QRect strip = watcher.region.boundingRect();
    QVERIFY(strip.contains(QPoint(328, 150)));         // where the sample is
    QVERIFY2(strip.width() <= 60 && strip.top() >= 35, // the header ends at 35
             qPrintable(QStringLiteral("%1 at %2").arg(strip.width()).arg(strip.top())));
}

void TestCustomPlot::changesDuringAPartialPaintAreNotLost()
{
    auto chart = makeChart(60, 60, 1);
    chart->rawToggle()->setChecked(true);
    chart->show();
    QVERIFY(QTest::qWaitForWindowExposed(chart.get()));
    for (int i = 0; i < 300; ++i)
        chart->appendNewData(0, i * 100, 30.0);
    QTRY_VERIFY(chart->paints() > 1);
    // A paint of a corner only takes samples in that lie elsewhere.
    for (int i = 300; i < 400; ++i)
        chart->appendNewData(0, i * 100, 30.0);
    const int before = chart->paints();
    chart->repaint(QRect(0, 290, 5, 5));
    QVERIFY(chart->paints() > before);
    const int afterCorner = chart->paints();
    QTRY_VERIFY(chart->paints() > afterCorner);
}

void TestCustomPlot::hiddenChartIsBroughtUpToDateWhenShown()
{
    auto chart = makeChart(60, 60, 1);
    chart->rawToggle()->setChecked(true);
    chart->show();
    QVERIFY(QTest::qWaitForWindowExposed(chart.get()));
    chart->smoothToggle()->setChecked(false);
    chart->hide();
    for (int i = 0; i < 300; ++i)
        chart->appendNewData(0, i * 100, 30.0);
    QCoreApplication::processEvents();
    const int redraws = chart->fullRedraws();
    chart->show();
    QVERIFY(QTest::qWaitForWindowExposed(chart.get()));
    QTRY_COMPARE(chart->fullRedraws(), redraws + 1);
    QCOMPARE(pictureOf(*chart).pixelColor(100, 157), QColor(21, 207, 187));
}

void TestCustomPlot::tinyWidgets_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("1 x 1") << QSize(1, 1);
    QTest::newRow("narrower than the labels") << QSize(30, 200);
    QTest::newRow("lower than the header") << QSize(200, 40);
    QTest::newRow("just no plot") << QSize(49, 65);
    QTest::newRow("120 x 100") << QSize(120, 100);
}

void TestCustomPlot::tinyWidgets()
{
    QFETCH(QSize, size);
    auto chart = makeChart(60, 60, 1, size);
    chart->setMinimumSize(1, 1);
    chart->layout()->setSizeConstraint(QLayout::SetNoConstraint);
    chart->resize(size);
    chart->rawToggle()->setChecked(true);
    for (int i = 0; i < 300; ++i)
        chart->appendNewData(0, i * 100, 30.0);
    hover(*chart, size.width() / 2);
    QCOMPARE(pictureOf(*chart).size(), size);
}

QTEST_MAIN(TestCustomPlot)
#include "tst_customplot.moc"
