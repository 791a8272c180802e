#pragma once

#include <QPoint>
#include <QSize>

/// Where the load chart's picture lies: whole logical pixels, divisions truncated. Axes: 0 to topPercent
/// upwards, `samples` sampling steps to the right. Thread-safe: nothing changes after construction.
class LoadChartGeometry final {
public:
    LoadChartGeometry(QSize size, int topPercent, int samples);

    int plotLeft() const { return 30; }
    int plotTop() const { return 30; }
    int gridRight() const { return m_size.width() - 10; }
    int plotBottom() const { return m_size.height() - 15; }

    /// Vertical grid line and the start of its label's base line, `sample` steps right of the origin.
    int gridX(int sample) const;
    QPoint sampleLabel(int sample) const;

    /// Horizontal grid line and the start of its label's base line, this many percent below the top.
    int gridY(int percentBelowTop) const;
    QPoint percentLabel(int percentBelowTop) const;

    /// A sample's x by its age in sampling steps; the newest, age 0, is at the right edge.
    int seriesX(int age) const;
    /// A sample's y. Loads above the top lie above the plot; beyond 100000 percent they are cut.
    int seriesY(int percent) const;

private:
    int plotWidth() const { return m_size.width() - 40; }
    int plotHeight() const { return m_size.height() - 45; }

    QSize m_size;
    int m_topPercent;
    int m_samples;
};
