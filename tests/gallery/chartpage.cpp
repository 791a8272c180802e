#include "tests/gallery/chartpage.h"

#include "charts/customplot.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QMouseEvent>
#include <QTimer>
#include <QToolButton>

#include <cmath>
#include <memory>

namespace {

void makeDark(QWidget &widget)
{
    QPalette palette = widget.palette();
    palette.setColor(QPalette::Window, QColor(0x15, 0x15, 0x15));
    widget.setPalette(palette);
    widget.setAutoFillBackground(true);
}

double sampleOf(int series, int timeMs)
{
    const double noise = (timeMs * 7919 % 131) / 131.0 - 0.5;
    return 55.0 - series * 5.0 + 2.0 * std::sin(timeMs / 4000.0 + series) + 2.0 * noise;
}

/// Feeds a chart as a test of sixty frames a second would.
class Feeder final : public QObject {
public:
    Feeder(CustomPlot *chart, bool band) : QObject(chart), m_chart(chart), m_band(band)
    {
        m_clock.start();
        connect(&m_timer, &QTimer::timeout, this, &Feeder::feed);
        m_timer.start(16);
    }

private:
    void feed()
    {
        const int timeMs = static_cast<int>(m_clock.elapsed());
        for (int series = 0; series < m_chart->seriesCount(); ++series) {
            const double value = sampleOf(series, timeMs);
            if (m_band)
                m_chart->appendNewMultiData(series, timeMs, value - 5.0, value + 6.0, value);
            else
                m_chart->appendNewData(series, timeMs, value);
        }
    }

    CustomPlot *m_chart;
    bool m_band;
    QElapsedTimer m_clock;
    QTimer m_timer;
};

CustomPlot *makeChart(QWidget *parent, const QString &title, int series, int lengthS)
{
    auto *chart = new CustomPlot(parent);
    makeDark(*chart);
    chart->setTitle(title);
    chart->setupLayout();
    chart->setMetaInfo(lengthS, 60, series);
    return chart;
}

struct State {
    QString name;
    QSize size;
    int series;
    bool raw;
    bool smooth;
    bool band;
    int points;
    double mouseX; ///< share of the width; below 0: no cursor
};

QPixmap pictureOf(const State &state)
{
    const std::unique_ptr<CustomPlot> chart(makeChart(nullptr, QStringLiteral("FPS"), state.series, 60));
    chart->rawToggle()->setChecked(state.raw);
    chart->smoothToggle()->setChecked(state.smooth);
    chart->layout()->setSizeConstraint(QLayout::SetNoConstraint);
    chart->setMinimumSize(1, 1);
    chart->resize(state.size);
    for (int i = 0; i < state.points; ++i) {
        const int timeMs = static_cast<int>(60000.0 * i / state.points);
        for (int series = 0; series < state.series; ++series) {
            const double value = sampleOf(series, timeMs);
            if (state.band)
                chart->appendNewMultiData(series, timeMs, value - 12.0, value + 6.0, value);
            else
                chart->appendNewData(series, timeMs, value);
        }
    }
    if (state.mouseX >= 0.0) {
        QMouseEvent move(QEvent::MouseMove, QPointF(state.mouseX * state.size.width(), 90), Qt::NoButton, Qt::NoButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(chart.get(), &move);
    }
    return chart->grab();
}

} // namespace

QWidget *makeChartPage()
{
    auto *page = new QWidget;
    auto *grid = new QGridLayout(page);
    CustomPlot *eight = makeChart(page, QStringLiteral("FPS"), 8, 60);
    eight->rawToggle()->setChecked(true);
    new Feeder(eight, false);
    CustomPlot *smooth = makeChart(page, QStringLiteral("LATENCY"), 4, 60);
    new Feeder(smooth, false);
    CustomPlot *band = makeChart(page, QStringLiteral("VIDEO RECV"), 1, 60);
    band->rawToggle()->setChecked(true);
    new Feeder(band, true);
    CustomPlot *many = makeChart(page, QStringLiteral("DATA RATE"), 14, 60);
    new Feeder(many, false);
    grid->addWidget(eight, 0, 0);
    grid->addWidget(smooth, 0, 1);
    grid->addWidget(band, 1, 0);
    grid->addWidget(many, 1, 1);
    return page;
}

std::vector<std::pair<QString, QPixmap>> chartStates()
{
    const QSize usual(649, 260);
    const QVector<State> states{
        {QStringLiteral("raw-one"), usual, 1, true, false, false, 3600, 0.5},
        {QStringLiteral("smooth-one"), usual, 1, false, true, false, 3600, 0.06},
        {QStringLiteral("both-eight"), usual, 8, true, true, false, 3600, 0.96},
        {QStringLiteral("none"), usual, 2, false, false, false, 3600, 0.5},
        {QStringLiteral("band-raw"), usual, 1, true, false, true, 700, 0.5},
        {QStringLiteral("band-smooth-left"), usual, 1, false, true, true, 700, 0.08},
        {QStringLiteral("points-0"), usual, 1, true, true, false, 0, 0.5},
        {QStringLiteral("points-1"), usual, 1, true, true, false, 1, 0.05},
        {QStringLiteral("points-2"), usual, 1, true, true, false, 2, 0.5},
        {QStringLiteral("points-3"), usual, 1, true, true, false, 3, 0.35},
        {QStringLiteral("tiny"), QSize(120, 100), 2, true, true, false, 3600, 0.5},
        {QStringLiteral("wide"), QSize(3840, 300), 8, true, true, false, 3600, 0.5},
    };
    std::vector<std::pair<QString, QPixmap>> pictures;
    for (const State &state : states)
        pictures.emplace_back(state.name, pictureOf(state));
    return pictures;
}
