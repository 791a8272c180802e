#include "charts/cpugputrack.h"

#include "probes/childoutput.h"
#include "probes/loadtrack.h"
#include "tests/load/scriptedreader.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <cstdio>
#include <limits>

namespace {

// Plot of 600 x 100 at (30, 30): 10 pixels a sample, 1 pixel a percent.
constexpr int width = 640;
constexpr int height = 145;
constexpr QRgb background = 0xff151515;
constexpr QRgb grid = 0xff1e1e1e;

/// A chart in a dark panel, fed by the test alone: its sampler sleeps until the end.
class Panel final {
public:
    Panel()
    {
        QPalette palette = m_panel.palette();
        palette.setColor(QPalette::Window, QColor(background));
        m_panel.setPalette(palette);
        m_panel.setAutoFillBackground(true);
        m_panel.resize(width, height);
        chart = new CpuGpuTrack(std::make_unique<LoadTrack>(std::make_unique<ScriptedReader>(), std::chrono::hours(1)),
                                &m_panel);
        chart->setGeometry(0, 0, width, height);
    }

    void feed(int count, int cpuLoad, int gpuLoad)
    {
        for (int i = 0; i < count; ++i)
            chart->gpuCpuLoad(cpuLoad, gpuLoad);
    }
    QImage picture() { return m_panel.grab().toImage().convertToFormat(QImage::Format_RGB32); }

    CpuGpuTrack *chart = nullptr; ///< the panel's

private:
    QWidget m_panel;
};

/// A colour laid over another one.
QRgb over(QColor upper, QRgb lower)
{
    const int alpha = upper.alpha();
    const auto mix = [alpha](int above, int below) { return (above * alpha + below * (255 - alpha)) / 255; };
    return qRgb(mix(upper.red(), qRed(lower)), mix(upper.green(), qGreen(lower)), mix(upper.blue(), qBlue(lower)));
}

/// Whether every channel differs by no more than one step of rounding.
bool isNear(QRgb one, QRgb other)
{
    return qAbs(qRed(one) - qRed(other)) <= 1 && qAbs(qGreen(one) - qGreen(other)) <= 1
           && qAbs(qBlue(one) - qBlue(other)) <= 1;
}

QByteArray named(QRgb colour)
{
    return QByteArray::number(colour & 0xffffff, 16);
}

#define COMPARE_COLOUR(actual, expected)                                                                               \
    QVERIFY2(isNear(actual, expected), (named(actual) + " instead of " + named(expected)).constData())

const QColor cpuFill(21, 210, 176, 50);
const QColor cpuLine(22, 225, 251, 100);
const QColor gpuFill(0, 123, 255, 50);
const QColor gpuLine(0, 123, 255, 150);

/// How many of the pixels in the area are near the colour.
int countNear(const QImage &picture, QRect area, QRgb colour)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            count += isNear(picture.pixel(x, y), colour) ? 1 : 0;
    }
    return count;
}

/// The area as it is with this text drawn on the bare background.
bool showsText(const QImage &picture, QRect area, const QString &text, QPoint baseLine, const QFont &font, QColor pen)
{
    QImage expected(picture.size(), picture.format());
    const int dotsPerMetre = qRound(QWidget().logicalDpiY() / 0.0254); // letters as large as in a widget
    expected.setDotsPerMeterX(dotsPerMetre);
    expected.setDotsPerMeterY(dotsPerMetre);
    expected.fill(background);
    QPainter painter(&expected);
    painter.setFont(font);
    painter.setPen(pen);
    painter.drawText(baseLine, text);
    painter.end();
    return countNear(expected, area, background) < area.width() * area.height()
           && picture.copy(area) == expected.copy(area);
}

} // namespace

class TestCpuGpuTrack final : public TestBase {
    Q_OBJECT

private slots:
    void gridLines();
    void labels();
    void legends();
    void lessThanTwoSamplesDrawNoSeries();
    void processorSeries();
    void graphicsSeriesLiesOverTheProcessors();
    void slopesJoinTheSamples();
    void nothingLeftOfTheOldestSample();
    void loadsAbove100AreDrawnAboveThePlot();
    void absurdLoadsDoNoHarm();
    void anySizeIsDrawn();
    void oldestSampleIsDropped();
    void showsWhatTheSamplerReports();
    void finishedWhenTheSamplerEnds();
    void destructionIsQuickWhileSleeping();
    void destructionIsQuickWhileAChildHangs();
    void samplesThePlatform();
};

void TestCpuGpuTrack::gridLines()
{
    Panel panel;
    const QImage picture = panel.picture();
    // Between two horizontal lines; each vertical line is one pixel wide.
    for (int x = 25; x < width; ++x) {
        const bool isLine = x >= 30 && (x - 30) % 100 == 0;
        QCOMPARE(named(picture.pixel(x, 60)), named(isLine ? grid : background));
    }
    for (int y = 23; y < height - 10; ++y) {
        const bool isLine = y >= 30 && y <= 130 && (y - 30) % 20 == 0;
        QCOMPARE(named(picture.pixel(260, y)), named(isLine ? grid : background));
    }
    // Ends: vertical lines over the plot's height, horizontal ones over its width.
    QCOMPARE(picture.pixel(230, 29), background);
    QCOMPARE(picture.pixel(230, 31), grid);
    QCOMPARE(picture.pixel(230, 130), grid);
    QCOMPARE(picture.pixel(230, 131), background);
    QCOMPARE(picture.pixel(29, 130), background);
    QCOMPARE(picture.pixel(630, 130), grid);
    QCOMPARE(picture.pixel(631, 130), background);
}

void TestCpuGpuTrack::labels()
{
    Panel panel;
    const QImage picture = panel.picture();
    QFont font;
    font.setPointSize(8);
    font.setFamily(QStringLiteral("Kumbh Sans"));
    const QColor pen(70, 70, 70);
    for (int i = 0; i <= 5; ++i) {
        const int y = 30 + 20 * i;
        const QString text = QString::number(100 - 20 * i) + QLatin1Char('%');
        QVERIFY2(showsText(picture, QRect(0, y - 9, 29, 10), text, QPoint(3, y), font, pen), qPrintable(text));
    }
    for (int i = 1; i <= 6; ++i) {
        const int x = 25 + 100 * i;
        const QString text = QString::number(10 * i);
        QVERIFY2(showsText(picture, QRect(x - 10, 132, 25, 13), text, QPoint(x, height - 3), font, pen),
                 qPrintable(text));
    }
    QCOMPARE(countNear(picture, QRect(25, 135, 40, 10), background), 400); // no label under the origin
}

void TestCpuGpuTrack::legends()
{
    Panel panel;
    const QImage picture = panel.picture();
    const QFont font(QStringLiteral("Kumbh Sans"), 10, 75);
    const QColor pen(255, 225, 255);
    QVERIFY(showsText(picture, QRect(51, 5, 53, 22), QStringLiteral("CPU"), QPoint(55, 22), font, pen));
    QVERIFY(showsText(picture, QRect(121, 5, 53, 22), QStringLiteral("GPU"), QPoint(125, 22), font, pen));
    const auto isSquare = [&picture](int left, const QColor &fill, const QColor &line) {
        const QRgb filled = over(fill, background);
        const QRect inside(left + 1, 9, 13, 13);
        const int patterned = countNear(picture, inside, filled);
        COMPARE_COLOUR(picture.pixel(left + 7, 8), over(line, background));
        COMPARE_COLOUR(picture.pixel(left + 14, 15), over(line, background));
        QCOMPARE(picture.pixel(left + 15, 15), background);
        QCOMPARE(picture.pixel(left + 7, 7), background);
        QVERIFY2(patterned >= 80 && patterned <= 90, qPrintable(QString::number(patterned))); // half of 169
        QCOMPARE(countNear(picture, inside, background), 169 - patterned);
    };
    isSquare(35, cpuFill, cpuLine);
    isSquare(105, gpuFill, gpuLine);
}

void TestCpuGpuTrack::lessThanTwoSamplesDrawNoSeries()
{
    Panel panel;
    const QImage empty = panel.picture();
    panel.feed(1, 50, 70);
    QCOMPARE(panel.picture(), empty);
    panel.feed(1, 50, 70);
    QVERIFY(panel.picture() != empty);
}

void TestCpuGpuTrack::processorSeries()
{
    Panel panel;
    panel.feed(60, 50, 0);
    const QImage picture = panel.picture();
    // 50 % lies at y = 80; in the middle of a segment no other one touches.
    const QRgb filled = over(cpuFill, background);
    const QRgb line = picture.pixel(235, 80);
    QVERIFY2(isNear(line, over(cpuLine, background)) || isNear(line, over(cpuLine, filled)), named(line));
    QCOMPARE(picture.pixel(235, 79), background);
    // Every second pixel below is filled, in the pattern's order.
    const QRect below(231, 91, 98, 18);
    QCOMPARE(countNear(picture, below, filled), below.width() * below.height() / 2);
    QCOMPARE(countNear(picture, below, background), below.width() * below.height() / 2);
    QVERIFY(picture.pixel(240, 100) != picture.pixel(241, 100));
    // Down to the bottom line, from the oldest sample (59 steps back) to the right edge.
    QCOMPARE(countNear(picture, QRect(231, 125, 98, 5), filled), 98 * 5 / 2);
    QVERIFY(countNear(picture, QRect(40, 111, 9, 18), filled) > 70);
    QVERIFY(countNear(picture, QRect(620, 111, 9, 18), filled) > 70);
    QCOMPARE(countNear(picture, QRect(632, 30, 8, 100), background), 800);
}

void TestCpuGpuTrack::graphicsSeriesLiesOverTheProcessors()
{
    Panel panel;
    panel.feed(60, 75, 25);
    const QImage picture = panel.picture();
    // 75 % at y = 55, 25 % at y = 105.
    const QRgb cpuFilled = over(cpuFill, background);
    const QRgb cpu = picture.pixel(235, 55);
    QVERIFY2(isNear(cpu, over(cpuLine, background)) || isNear(cpu, over(cpuLine, cpuFilled)), named(cpu));
    // The pattern hits the same pixels for both.
    const QRgb bothFilled = over(gpuFill, cpuFilled);
    const QRgb gpu = picture.pixel(235, 105);
    QVERIFY2(isNear(gpu, over(gpuLine, background)) || isNear(gpu, over(gpuLine, bothFilled)), named(gpu));
    const QRect between(231, 91, 98, 14);
    QCOMPARE(countNear(picture, between, cpuFilled), between.width() * between.height() / 2);
    const QRect below(231, 111, 98, 18);
    QCOMPARE(countNear(picture, below, bothFilled), below.width() * below.height() / 2);
    QCOMPARE(countNear(picture, below, background), below.width() * below.height() / 2);
}

void TestCpuGpuTrack::slopesJoinTheSamples()
{
    Panel panel;
    panel.chart->gpuCpuLoad(0, 0);
    panel.chart->gpuCpuLoad(50, 0);
    panel.chart->gpuCpuLoad(50, 0); // newest: x = 630; before: 620; oldest: 610
    const QImage picture = panel.picture();
    const QRgb filled = over(cpuFill, background);
    const auto isLine = [&](int x, int y) {
        const QRgb colour = picture.pixel(x, y);
        return isNear(colour, over(cpuLine, background)) || isNear(colour, over(cpuLine, filled));
    };
    QVERIFY(isLine(625, 80));
    QVERIFY(isLine(615, 105)); // half way up
    QVERIFY(!isLine(615, 95));
    QCOMPARE(picture.pixel(615, 95), background);
    QVERIFY(!isLine(615, 120));
}

void TestCpuGpuTrack::nothingLeftOfTheOldestSample()
{
    Panel panel;
    const QImage empty = panel.picture();
    panel.feed(11, 50, 80); // the oldest is 10 steps back, at x = 530
    const QImage picture = panel.picture();
    QCOMPARE(picture.copy(0, 0, 529, height), empty.copy(0, 0, 529, height));
    QVERIFY(picture.pixel(535, 50) != empty.pixel(535, 50));
}

void TestCpuGpuTrack::loadsAbove100AreDrawnAboveThePlot()
{
    Panel panel;
    panel.feed(60, 0, 120); // 120 % lies at y = 10
    const QImage picture = panel.picture();
    const QRgb filled = over(gpuFill, background);
    const QRgb line = picture.pixel(335, 10);
    QVERIFY2(isNear(line, over(gpuLine, background)) || isNear(line, over(gpuLine, filled)), named(line));
    QCOMPARE(picture.pixel(335, 9), background);
    QCOMPARE(countNear(picture, QRect(331, 12, 98, 16), filled), 98 * 16 / 2);

    // 130 % is the widget's top row.
    panel.feed(60, 0, 130);
    const QRgb top = panel.picture().pixel(335, 0);
    QVERIFY2(isNear(top, over(gpuLine, background)) || isNear(top, over(gpuLine, filled)), named(top));
}

void TestCpuGpuTrack::absurdLoadsDoNoHarm()
{
    Panel panel;
    panel.feed(30, 0, std::numeric_limits<int>::max());
    panel.feed(30, 0, std::numeric_limits<int>::min());
    const QImage picture = panel.picture();
    const QRgb filled = over(gpuFill, background);
    QCOMPARE(countNear(picture, QRect(231, 91, 98, 18), filled), 98 * 18 / 2);
    QCOMPARE(countNear(picture, QRect(231, 0, 98, 28), filled), 98 * 28 / 2);
    QCOMPARE(countNear(picture, QRect(431, 91, 98, 18), background), 98 * 18);
}

void TestCpuGpuTrack::anySizeIsDrawn()
{
    Panel panel;
    panel.feed(60, 30, 130);
    for (const QSize size : {QSize(1, 1), QSize(30, 200), QSize(120, 20), QSize(40, 45), QSize(4000, 30)}) {
        panel.chart->resize(size);
        QCOMPARE(panel.chart->grab().size(), size);
    }
}

void TestCpuGpuTrack::oldestSampleIsDropped()
{
    Panel panel;
    for (int i = 1; i <= 60; ++i)
        panel.chart->gpuCpuLoad(i, 100 + i);
    QCOMPARE(panel.chart->cpuHistory.size(), 60);
    QCOMPARE(panel.chart->cpuHistory.first(), 1);
    panel.chart->gpuCpuLoad(61, 161);
    QCOMPARE(panel.chart->cpuHistory.size(), 60);
    QCOMPARE(panel.chart->gpuHistory.size(), 60);
    QCOMPARE(panel.chart->cpuHistory.first(), 2);
    QCOMPARE(panel.chart->cpuHistory.last(), 61);
    QCOMPARE(panel.chart->gpuHistory.first(), 102);
    QCOMPARE(panel.chart->gpuHistory.last(), 161);
}

void TestCpuGpuTrack::showsWhatTheSamplerReports()
{
    auto reader = std::make_unique<ScriptedReader>();
    reader->processor = [load = 0]() mutable { return std::optional<int>(load++); };
    reader->graphics = [](const LoadAbort &) { return std::optional<int>(7); };
    CpuGpuTrack chart(std::make_unique<LoadTrack>(std::move(reader), std::chrono::milliseconds(1)));
    QTRY_VERIFY(chart.cpuHistory.size() >= 3);
    QCOMPARE(chart.cpuHistory.mid(0, 3), (QList<int>{0, 1, 2}));
    QCOMPARE(chart.gpuHistory.mid(0, 3), (QList<int>{7, 7, 7}));
    QVERIFY(chart.sampler->thread() == chart.samplerThread.get());
    QVERIFY(!chart.sampler->parent());
}

void TestCpuGpuTrack::finishedWhenTheSamplerEnds()
{
    CpuGpuTrack chart(std::make_unique<LoadTrack>(std::make_unique<ScriptedReader>(), std::chrono::milliseconds(1)));
    QSignalSpy ends(&chart, &CpuGpuTrack::finished);
    QThread *emittedOn = nullptr;
    connect(
        &chart, &CpuGpuTrack::finished, &chart, [&emittedOn] { emittedOn = QThread::currentThread(); },
        Qt::DirectConnection);
    QVERIFY(chart.sampler->running);
    QTRY_VERIFY(!chart.cpuHistory.isEmpty());
    QCOMPARE(ends.count(), 0);
    chart.sampler->running = false;
    QTRY_COMPARE(ends.count(), 1);
    QCOMPARE(emittedOn, QThread::currentThread());
    QTRY_VERIFY(chart.samplerThread->isFinished());
}

void TestCpuGpuTrack::destructionIsQuickWhileSleeping()
{
    QElapsedTimer time;
    {
        CpuGpuTrack chart(std::make_unique<LoadTrack>(std::make_unique<ScriptedReader>(), std::chrono::hours(1)));
        QTRY_VERIFY(chart.samplerThread->isRunning());
        time.start();
    }
    QVERIFY2(time.elapsed() < 200, qPrintable(QString::number(time.elapsed())));
}

void TestCpuGpuTrack::destructionIsQuickWhileAChildHangs()
{
    const QTemporaryDir folder;
    const QString sign = folder.filePath(QStringLiteral("sign"));
    auto reader = std::make_unique<ScriptedReader>();
    reader->graphics = [sign](const LoadAbort &abort) -> std::optional<int> {
        childOutput(QCoreApplication::applicationFilePath(), {QStringLiteral("hang"), sign}, std::chrono::seconds(30),
                    abort);
        return std::nullopt;
    };
    QElapsedTimer time;
    {
        CpuGpuTrack chart(std::make_unique<LoadTrack>(std::move(reader), std::chrono::milliseconds(0)));
        QTRY_VERIFY(QFile::exists(sign));
        time.start();
    }
    QVERIFY2(time.elapsed() < 200, qPrintable(QString::number(time.elapsed())));
}

void TestCpuGpuTrack::samplesThePlatform()
{
    CpuGpuTrack chart;
    QTRY_COMPARE_WITH_TIMEOUT(chart.cpuHistory.size(), 1, 35000);
    QCOMPARE(chart.cpuHistory.first(), 0);
    QVERIFY(chart.gpuHistory.first() >= 0);
}

int main(int argc, char *argv[])
{
    if (argc == 3 && qstrcmp(argv[1], "hang") == 0) {
        // The child of a test: leaves a sign that it runs, and waits until the parent is gone.
        QFile sign(QFile::decodeName(argv[2]));
        if (!sign.open(QIODevice::WriteOnly))
            return 1;
        while (std::getchar() != EOF) {
        }
        return 0;
    }
    const QApplication application(argc, argv);
    TestCpuGpuTrack test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_cpugputrack.moc"
