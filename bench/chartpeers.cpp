#include "bench/chartpeers.h"

#include "charts/customplot.h"
#include "mainwindow/customsourcebutton.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QMouseEvent>
#include <QTimer>
#include <QToolButton>

#ifdef VEXA_HAVE_QCUSTOMPLOT
#include <qcustomplot.h>
#endif
#ifdef VEXA_HAVE_QWT
#include <qwt_plot.h>
#include <qwt_plot_curve.h>
#include <qwt_series_data.h>
#endif
#ifdef VEXA_HAVE_QTCHARTS
#include <QtCharts/QChart>
#include <QtCharts/QChartView>
#include <QtCharts/QLineSeries>
#include <QtCharts/QValueAxis>
#endif

#include <cmath>

namespace {

constexpr int topValue = 70;

[[maybe_unused]] QColor peerColor(int series) // without a peer there is none to colour
{
    return QColor::fromHsv(series * 45, 200, 220);
}

/// Paints come a frame apart, for every chart: until then other programs use the processor's caches. Waiting takes
/// no processor time.
void waitForAFrame()
{
    QEventLoop loop;
    QTimer::singleShot(20, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

class OurChart final : public ChartPeer {
public:
    OurChart(bool raw, bool smooth)
    {
        m_chart.setupLayout();
        m_chart.setMetaInfo(ChartData::lengthS, topValue, ChartData::series);
        m_chart.rawToggle()->setChecked(raw);
        m_chart.smoothToggle()->setChecked(smooth);
    }
    QWidget *widget() override { return &m_chart; }
    void append(int series, double timeMs, double value) override
    {
        m_chart.appendNewData(series, static_cast<int>(timeMs), value);
    }
    void paint() override
    {
        waitForAFrame(); // the chart paces its repaints and paints within
    }
    void hover(int x) override
    {
        QMouseEvent move(QEvent::MouseMove, QPointF(x, 150), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&m_chart, &move);
    }

private:
    CustomPlot m_chart;
};

#ifdef VEXA_HAVE_QCUSTOMPLOT
class QCustomPlotChart final : public ChartPeer {
public:
    QCustomPlotChart(bool filled, bool antialiased)
    {
        if (!antialiased)
            m_plot.setNotAntialiasedElements(QCP::aeAll);
        for (int i = 0; i < ChartData::series; ++i) {
            QCPGraph *graph = m_plot.addGraph();
            QColor fill = peerColor(i);
            graph->setPen(QPen(fill));
            fill.setAlpha(50);
            if (filled)
                graph->setBrush(fill);
        }
        m_plot.xAxis->setRange(0, ChartData::lengthS * 1000.0);
        m_plot.yAxis->setRange(0, topValue);
    }
    QWidget *widget() override { return &m_plot; }
    void append(int series, double timeMs, double value) override { m_plot.graph(series)->addData(timeMs, value); }
    void paint() override
    {
        waitForAFrame();
        m_plot.replot(QCustomPlot::rpImmediateRefresh);
    }

private:
    QCustomPlot m_plot;
};
#endif

#ifdef VEXA_HAVE_QWT
class GrowingSeries final : public QwtArraySeriesData<QPointF> {
public:
    void append(QPointF point) { d_samples.append(point); }
    QRectF boundingRect() const override { return {0, 0, ChartData::lengthS * 1000.0, topValue}; }
};

class QwtChart final : public ChartPeer {
public:
    explicit QwtChart(bool filled)
    {
        for (int i = 0; i < ChartData::series; ++i) {
            auto *curve = new QwtPlotCurve;
            QColor fill = peerColor(i);
            curve->setPen(fill);
            fill.setAlpha(50);
            if (filled)
                curve->setBrush(fill);
            m_data.push_back(new GrowingSeries);
            curve->setSamples(m_data.back());
            curve->attach(&m_plot);
        }
        m_plot.setAxisScale(QwtPlot::xBottom, 0, ChartData::lengthS * 1000.0);
        m_plot.setAxisScale(QwtPlot::yLeft, 0, topValue);
    }
    QWidget *widget() override { return &m_plot; }
    void append(int series, double timeMs, double value) override
    {
        m_data[static_cast<std::size_t>(series)]->append({timeMs, value});
    }
    void paint() override
    {
        waitForAFrame();
        m_plot.replot();
        QCoreApplication::processEvents();
    }

private:
    QwtPlot m_plot;
    std::vector<GrowingSeries *> m_data; // the curves own them
};
#endif

#ifdef VEXA_HAVE_QTCHARTS
class QtChartsChart final : public ChartPeer {
public:
    QtChartsChart() : m_view(new QtCharts::QChart)
    {
        auto *xAxis = new QtCharts::QValueAxis;
        auto *yAxis = new QtCharts::QValueAxis;
        xAxis->setRange(0, ChartData::lengthS * 1000.0);
        yAxis->setRange(0, topValue);
        QtCharts::QChart *chart = m_view.chart();
        chart->legend()->hide();
        chart->addAxis(xAxis, Qt::AlignBottom);
        chart->addAxis(yAxis, Qt::AlignLeft);
        for (int i = 0; i < ChartData::series; ++i) {
            auto *line = new QtCharts::QLineSeries;
            line->setPen(QPen(peerColor(i)));
            chart->addSeries(line);
            line->attachAxis(xAxis);
            line->attachAxis(yAxis);
            m_lines.push_back(line);
        }
        m_pending.resize(ChartData::series);
    }
    QWidget *widget() override { return &m_view; }
    // Each append to a line series tells the chart: what came between two paints goes in as one replacement.
    void append(int series, double timeMs, double value) override
    {
        m_pending[static_cast<std::size_t>(series)].append({timeMs, value});
    }
    void paint() override
    {
        waitForAFrame();
        for (std::size_t i = 0; i < m_lines.size(); ++i)
            m_lines[i]->replace(m_pending[i]);
        QCoreApplication::processEvents();
    }

private:
    QtCharts::QChartView m_view;
    std::vector<QtCharts::QLineSeries *> m_lines; // the chart owns them
    std::vector<QVector<QPointF>> m_pending;
};
#endif

} // namespace

ChartData::ChartData(int points) : pointsPerSeries(points) {}

double ChartData::timeMs(int index) const
{
    return std::floor(index * (lengthS * 1000.0 / pointsPerSeries));
}

double ChartData::value(int of, int index) const
{
    // A cheap, repeatable noise.
    auto hash = static_cast<quint32>(index) * 2654435761U + static_cast<quint32>(of) * 40503U;
    hash ^= hash >> 15;
    const double noise = (hash % 1000) / 1000.0 - 0.5;
    const double dip = hash % 397 == 0 ? 20.0 : 0.0;
    return 58.0 - of * 4.0 + noise * 2.0 - dip;
}

std::vector<ChartPeerFactory> chartPeers()
{
    std::vector<ChartPeerFactory> peers;
    peers.push_back({QString::fromLatin1(chartOfTheGoals), [] { return std::make_unique<OurChart>(true, true); }});
    peers.push_back({QStringLiteral("ours, raw"), [] { return std::make_unique<OurChart>(true, false); }});
    peers.push_back({QStringLiteral("ours, smooth"), [] { return std::make_unique<OurChart>(false, true); }});
#ifdef VEXA_HAVE_QCUSTOMPLOT
    peers.push_back({QStringLiteral("QCustomPlot, filled (antialiased)"),
                     [] { return std::make_unique<QCustomPlotChart>(true, true); }});
    peers.push_back(
        {QString::fromLatin1(chartPeerOfTheGoals), [] { return std::make_unique<QCustomPlotChart>(false, true); }});
    peers.push_back({QStringLiteral("QCustomPlot, lines (antialiasing off)"),
                     [] { return std::make_unique<QCustomPlotChart>(false, false); }});
#endif
#ifdef VEXA_HAVE_QWT
    peers.push_back({QStringLiteral("Qwt, filled"), [] { return std::make_unique<QwtChart>(true); }});
    peers.push_back({QStringLiteral("Qwt, lines"), [] { return std::make_unique<QwtChart>(false); }});
#endif
#ifdef VEXA_HAVE_QTCHARTS
    peers.push_back({QStringLiteral("Qt Charts, lines"), [] { return std::make_unique<QtChartsChart>(); }});
#endif
    return peers;
}
