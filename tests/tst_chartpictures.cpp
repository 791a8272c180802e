// Compares charts with pictures that were looked at and kept. To make them anew after a wanted change:
//     VEXA_NEW_PICTURES=1 QT_QPA_PLATFORM=offscreen build/release/tests/tst_chartpictures
// then look at tests/charts/pictures and commit them.
#include "charts/customplot.h"
#include "tests/charts/picturecompare.h"
#include "tests/support/testbase.h"

#include <QMouseEvent>
#include <QPainter>
#include <QToolButton>
#include <QtTest>

#include <cmath>
#include <functional>

namespace {

constexpr QSize chartSize(480, 220);

using Fill = std::function<void(CustomPlot &)>;

void fillWave(CustomPlot &chart)
{
    for (int i = 0; i < 1200; ++i) {
        for (int series = 0; series < chart.seriesCount(); ++series) {
            const double value = 25.0 + 15.0 * std::sin(i / 90.0 + series) + (i * 7919 % 13) * 0.4;
            chart.appendNewData(series, i * 50, value);
        }
    }
}

void fillBand(CustomPlot &chart)
{
    for (int i = 0; i < 45; ++i) {
        const double middle = 30.0 + 10.0 * std::sin(i / 5.0);
        chart.appendNewMultiData(0, i * 1000, middle - 6.0 - i % 3, middle + 7.0 + i % 4, middle);
    }
}

void fillFewPoints(CustomPlot &chart)
{
    chart.appendNewData(0, 3000, 10.0);
    chart.appendNewData(0, 20000, 47.0);
    chart.appendNewData(0, 31000, 22.0);
}

} // namespace

Q_DECLARE_METATYPE(Fill)

class TestChartPictures final : public TestBase {
    Q_OBJECT

private slots:
    void lookAsKept_data();
    void lookAsKept();
};

void TestChartPictures::lookAsKept_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("series");
    QTest::addColumn<bool>("raw");
    QTest::addColumn<bool>("smooth");
    QTest::addColumn<int>("mouseX");
    QTest::addColumn<Fill>("fill");
    QTest::newRow("raw, three series") << QStringLiteral("raw") << 3 << true << false << -1 << Fill(fillWave);
    QTest::newRow("smooth, three series") << QStringLiteral("smooth") << 3 << false << true << -1 << Fill(fillWave);
    QTest::newRow("both, with cursor") << QStringLiteral("both-cursor") << 1 << true << true << 250 << Fill(fillWave);
    QTest::newRow("band, with cursor") << QStringLiteral("band-cursor") << 1 << true << false << 242 << Fill(fillBand);
    QTest::newRow("band, both") << QStringLiteral("band-both") << 1 << true << true << -1 << Fill(fillBand);
    QTest::newRow("three points") << QStringLiteral("three-points") << 1 << true << true << -1 << Fill(fillFewPoints);
}

void TestChartPictures::lookAsKept()
{
    expectWarning(QStringLiteral("Could not parse stylesheet"));
    QFETCH(QString, name);
    QFETCH(int, series);
    QFETCH(bool, raw);
    QFETCH(bool, smooth);
    QFETCH(int, mouseX);
    QFETCH(Fill, fill);

    CustomPlot chart;
    QPalette palette = chart.palette();
    palette.setColor(QPalette::Window, QColor(21, 21, 21));
    chart.setPalette(palette);
    chart.setAutoFillBackground(true);
    chart.setupLayout();
    chart.setMetaInfo(60, 60, series);
    chart.resize(chartSize);
    chart.rawToggle()->setChecked(raw);
    chart.smoothToggle()->setChecked(smooth);
    fill(chart);
    if (mouseX >= 0) {
        QMouseEvent move(QEvent::MouseMove, QPointF(mouseX, 100), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&chart, &move);
    }

    // Letters look different from machine to machine: the header, the labels and all that is
    // bright in the callouts are left out. What they say is looked at elsewhere.
    QImage picture = chart.grab().toImage().convertToFormat(QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.fillRect(QRect(0, 0, chartSize.width(), 40), Qt::black);
    painter.fillRect(QRect(0, 0, 28, chartSize.height()), Qt::black);
    painter.fillRect(QRect(0, chartSize.height() - 24, chartSize.width(), 24), Qt::black);
    painter.end();
    const QRgb letters = qRgb(255, 255, 255);
    const QRgb box = qRgb(66, 66, 66);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb pixel = picture.pixel(x, y);
            const bool grey = qRed(pixel) == qGreen(pixel) && qGreen(pixel) == qBlue(pixel);
            if (grey && pixel >= box && pixel <= letters)
                picture.setPixel(x, y, box);
        }
    }

    const QString file = QStringLiteral(VEXA_TEST_SOURCE_DIR "/charts/pictures/%1.png").arg(name);
    if (qEnvironmentVariableIsSet("VEXA_NEW_PICTURES"))
        QVERIFY(picture.save(file));
    const QImage kept(file);
    QVERIFY2(!kept.isNull(), qPrintable(file));
    const PictureDifference difference = comparePictures(picture, kept);
    // The two platforms' compilers round the last bit of a coordinate differently here and there.
    if (difference.pixels > 12)
        QFAIL(qPrintable(QStringLiteral("%1, %2").arg(difference.text(), keepPictures(name, picture, kept))));
}

QTEST_MAIN(TestChartPictures)
#include "tst_chartpictures.moc"
