#pragma once

#include "charts/chartgeometry.h"
#include "charts/pointseries.h"
#include "charts/segments.h"
#include "charts/smoothcurve.h"
#include "charts/xrange.h"

#include <QColor>
#include <QImage>
#include <QRect>

#include <functional>
#include <vector>

class QPainter;

/// What a chart shows, by reference: the chart owns it and it only grows until ChartPicture::restart().
struct ChartContents {
    const std::vector<PointSeries> &plain;
    const std::vector<PointSeries> &average;
    const std::vector<PointSeries> &minimum;
    const std::vector<PointSeries> &maximum;
    const std::vector<quint8> &visible;         ///< 1 = drawn
    std::function<QColor(std::size_t)> colorOf; ///< of a series
};

/// How a chart shows it.
struct ChartView {
    ChartGeometry geometry;
    double pixelRatio = 1.0; ///< device pixels per logical pixel
    double verticalLines = 7.0;
    double horizontalLines = 7.0;
    bool raw = false;
    bool smooth = false;
    int cursorMs = -1; ///< a time off the axis shows no cursor
};

/// The picture of a chart without its callouts, kept from paint to paint: grid, cursor line and series.
/// The raw drawing of each series has a transparent layer of its own to which only new segments are drawn;
/// a smooth curve is kept as one y for each column. What changed is put together anew as one upright strip,
/// so the cost follows new samples and pixels, not the length of the test. Memory: while the chart is shown
/// three images and, in raw drawing, one for each series (4 bytes a device pixel).
/// GUI thread.
class ChartPicture final {
public:
    /// Brings the picture up to date and returns what changed, in logical pixels.
    QRect update(const ChartContents &contents, const ChartView &view);
    /// Premultiplied, transparent where nothing is drawn, in the pixel ratio of the last view.
    const QImage &image() const { return m_whole; }
    /// The contents are others now.
    void restart();
    /// Gives the images back; the next update draws everything again.
    void release() { restart(); }
    /// How often everything was drawn anew.
    int fullRedraws() const { return m_fullRedraws; }

private:
    struct Layer {
        QImage image;
        std::size_t pairs = 0; ///< drawn so far
    };
    struct Series {
        Layer plain;
        Layer band;
        SmoothCurve plainCurve;
        SmoothCurve averageCurve;
        SmoothCurve maximumCurve;
        SmoothCurve minimumCurve;
    };

    QImage blankImage() const;
    void paintGrid();
    QRect plotClip() const;
    XRange advanceSeries(const ChartContents &contents, std::size_t index);
    XRange advancePlain(const ChartContents &contents, std::size_t index);
    XRange advanceBand(const ChartContents &contents, std::size_t index);
    void compose(const ChartContents &contents, const QRect &strip);
    void paintStrip(const ChartContents &contents, const QRect &strip);
    XRange cursorStrip() const;

    ChartView m_view;
    std::vector<quint8> m_visible;
    std::vector<Series> m_series;
    QImage m_grid;
    QImage m_workbench; ///< where strips are put together
    QImage m_whole;
    int m_fullRedraws = 0;
};
