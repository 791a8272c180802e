#include "charts/loadchartgeometry.h"

LoadChartGeometry::LoadChartGeometry(QSize size, int topPercent, int samples)
    : m_size(size), m_topPercent(topPercent), m_samples(samples)
{
}

int LoadChartGeometry::gridX(int sample) const
{
    return sample * plotWidth() / m_samples + plotLeft();
}

QPoint LoadChartGeometry::sampleLabel(int sample) const
{
    return {sample * plotWidth() / m_samples + 25, m_size.height() - 3};
}

int LoadChartGeometry::gridY(int percentBelowTop) const
{
    return percentBelowTop * plotHeight() / m_topPercent + plotTop();
}

QPoint LoadChartGeometry::percentLabel(int percentBelowTop) const
{
    return {3, gridY(percentBelowTop)};
}

int LoadChartGeometry::seriesX(int age) const
{
    return gridX(m_samples - age);
}

int LoadChartGeometry::seriesY(int percent) const
{
    constexpr int mostPercent = 100000; // keeps the coordinate within int on any screen
    const qint64 aboveBottom = qint64(qBound(-mostPercent, percent, mostPercent)) * plotHeight() / m_topPercent;
    return plotBottom() - static_cast<int>(aboveBottom);
}
