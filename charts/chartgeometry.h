#pragma once

#include <QPointF>
#include <QSize>

#include <optional>

/// Where a chart's picture lies for one widget size and one pair of axes. Plain numbers, in logical
/// pixels with the origin at the widget's top left. Thread-safe: nothing changes after construction.
struct ChartGeometry {
    static constexpr int plotTop = 40;
    static constexpr int belowPlot = 25;
    static constexpr int rightOfPlot = 21;

    ChartGeometry() = default;
    /// topValue: end of the vertical axis in value units; lengthS: length of the horizontal axis in seconds.
    ChartGeometry(QSize size, double topValue, double lengthS);

    int width = 0;
    int height = 0;
    double topValue = 0.0;
    double lengthS = 0.0;
    int labelWidth = 0; ///< 9 per digit of the top value
    int plotLeft = 0;
    int plotWidth = 0;  ///< may be negative in a small widget
    int plotHeight = 0; ///< may be negative in a small widget

    /// Whether there is room and both axes have a length; nothing is drawn otherwise.
    bool isDrawable() const;
    int plotBottom() const { return plotHeight + plotTop; }
    int plotRight() const { return plotLeft + plotWidth; }
    double lengthMs() const { return lengthS * 1000.0; }

    /// Maps a sample (ms, value); the coordinates are not finite when the sample or the axes are not.
    QPointF map(QPointF sample) const
    {
        return {sample.x() * plotWidth / 1000.0 / lengthS + plotLeft,
                plotHeight - sample.y() * plotHeight / topValue + plotTop};
    }
    /// x of the cursor line at a time in ms.
    double cursorX(int timeMs) const;
    /// Whether a cursor at this time lies on the axis.
    bool showsCursor(int timeMs) const;
    /// Cursor time in ms for a mouse position, clamped to int. The cursor is meant to lag a little to
    /// the left of the pointer: the divisor reaches 11 pixels past the plot. Empty without room.
    std::optional<int> cursorTime(double mouseX) const;

    bool operator==(const ChartGeometry &other) const;
    bool operator!=(const ChartGeometry &other) const { return !(*this == other); }
};

/// Top of the vertical axis after a value: the value rounded up to one significant digit when it lies
/// above the present top, else the present top (347 over 60 gives 400). Only a finite value above 0
/// with a finite result moves the axis.
double grownAxisTop(double value, double top);
