#include "charts/cpugputrack.h"

#include "charts/loadchartgeometry.h"
#include "probes/loadtrack.h"

#include <QPainter>
#include <QThread>

namespace {

/// How one of the two figures looks.
struct SeriesStyle {
    QBrush fill;
    QPen line;
    int legendLeft;
    QString name;
};

const SeriesStyle &cpuStyle()
{
    static const SeriesStyle style{QBrush(QColor(21, 210, 176, 50), Qt::Dense4Pattern),
                                   QPen(QColor(22, 225, 251, 100), 1, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin), 35,
                                   QStringLiteral("CPU")};
    return style;
}

const SeriesStyle &gpuStyle()
{
    static const SeriesStyle style{QBrush(QColor(0, 123, 255, 50), Qt::Dense4Pattern),
                                   QPen(QColor(0, 123, 255, 150), 1, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin), 105,
                                   QStringLiteral("GPU")};
    return style;
}

QString fontFamily()
{
    return QStringLiteral("Kumbh Sans");
}

void drawSeries(QPainter &painter, const LoadChartGeometry &geometry, const SeriesStyle &style,
                const QList<int> &history)
{
    const QPen noOutline(QColor(0, 0, 0, 0));
    painter.setBrush(style.fill);
    const int bottom = geometry.plotBottom();
    for (int age = 0; age < history.size() - 1; ++age) {
        const int newest = history.size() - 1 - age;
        const QPoint newer(geometry.seriesX(age), geometry.seriesY(history.at(newest)));
        const QPoint older(geometry.seriesX(age + 1), geometry.seriesY(history.at(newest - 1)));
        const QPoint area[] = {newer, older, {older.x(), bottom}, {newer.x(), bottom}};
        painter.setPen(noOutline);
        painter.drawPolygon(area, 4);
        painter.setPen(style.line);
        painter.drawLine(newer, older);
    }
}

void drawLegend(QPainter &painter, const SeriesStyle &style)
{
    constexpr int top = 8;
    constexpr int bottom = 22;
    const int left = style.legendLeft;
    const int right = left + 14;
    const QPoint square[] = {{left, top}, {left, bottom}, {right, bottom}, {right, top}};
    painter.setBrush(style.fill);
    painter.setPen(style.line);
    painter.drawPolygon(square, 4);
    painter.setPen(QColor(255, 225, 255));
    painter.setFont(QFont(fontFamily(), 10, QFont::Bold));
    painter.drawText(right + 6, bottom, style.name);
}

} // namespace

CpuGpuTrack::CpuGpuTrack(QWidget *parent) : CpuGpuTrack(std::make_unique<LoadTrack>(), parent) {}

CpuGpuTrack::CpuGpuTrack(std::unique_ptr<LoadTrack> loadTrack, QWidget *parent)
    : QWidget(parent), sampler(std::move(loadTrack)), samplerThread(std::make_unique<QThread>())
{
    samplerThread->setObjectName(QStringLiteral("loadSampler"));
    connect(samplerThread.get(), &QThread::started, sampler.get(), &LoadTrack::start);
    connect(sampler.get(), &LoadTrack::gpuCpuLoad, this, &CpuGpuTrack::gpuCpuLoad);
    connect(sampler.get(), &LoadTrack::terminate, samplerThread.get(), &QThread::quit);
    connect(sampler.get(), &LoadTrack::terminate, this, [this] { emit finished(); });
    sampler->moveToThread(samplerThread.get());
    sampler->running = true;
    samplerThread->start(QThread::InheritPriority);
}

CpuGpuTrack::~CpuGpuTrack()
{
    sampler->running = false;
    sampler->abort();
    samplerThread->quit();
    samplerThread->wait();
}

void CpuGpuTrack::gpuCpuLoad(int cpuLoad, int gpuLoad)
{
    const int mostSamples = static_cast<int>(historyLength);
    if (gpuHistory.size() >= mostSamples)
        gpuHistory.removeFirst();
    if (cpuHistory.size() >= mostSamples)
        cpuHistory.removeFirst();
    gpuHistory.append(gpuLoad);
    cpuHistory.append(cpuLoad);
    update();
}

void CpuGpuTrack::paintEvent(QPaintEvent *)
{
    const LoadChartGeometry geometry(size(), static_cast<int>(maxLoad), static_cast<int>(historyLength));
    QPainter painter(this);
    drawGrid(painter, geometry);
    drawSeries(painter, geometry, cpuStyle(), cpuHistory);
    drawLegend(painter, cpuStyle());
    drawSeries(painter, geometry, gpuStyle(), gpuHistory);
    drawLegend(painter, gpuStyle());
}

void CpuGpuTrack::drawGrid(QPainter &painter, const LoadChartGeometry &geometry) const
{
    const QPen gridPen(QColor(30, 30, 30));
    const QPen labelPen(QColor(70, 70, 70));
    QFont font;
    font.setPointSize(8);
    font.setFamily(fontFamily());
    painter.setFont(font);
    const int samples = static_cast<int>(historyLength);
    const int stepSamples = static_cast<int>(sampleStep);
    for (int sample = 0; sample <= samples; sample += stepSamples) {
        painter.setPen(gridPen);
        const int x = geometry.gridX(sample);
        painter.drawLine(x, geometry.plotTop(), x, geometry.plotBottom());
        painter.setPen(labelPen);
        if (sample > 0)
            painter.drawText(geometry.sampleLabel(sample), QString::number(sample));
    }
    const int top = static_cast<int>(maxLoad);
    const int stepPercent = static_cast<int>(loadStep);
    for (int below = 0; below <= top; below += stepPercent) {
        painter.setPen(gridPen);
        const int y = geometry.gridY(below);
        painter.drawLine(geometry.plotLeft(), y, geometry.gridRight(), y);
        painter.setPen(labelPen);
        painter.drawText(geometry.percentLabel(below), QStringLiteral("%1%").arg(top - below));
    }
}
