#pragma once

#include "charts/chartgeometry.h"
#include "charts/pointseries.h"
#include "charts/segments.h"
#include "charts/smoothcurve.h"
#include "charts/xrange.h"

#include <QColor>
#include <QImage>
#include <QRect>
#include <QRegion>

#include <functional>
#include <memory>
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
    /// How far, in logical pixels, a smooth curve may stay from where new samples move it, see SmoothCurve.
    double tolerance = 0.0;
};

/// The picture of a chart without its callouts, kept from paint to paint: grid, cursor line and series.
/// What changed is composed anew as one upright strip, so the cost follows new samples and pixels, not the
/// length of the test. In raw drawing a series has a transparent layer to which only new segments are drawn; a
/// smooth curve is kept as one y for each column. Memory: three images of 4 bytes a device pixel while the
/// chart is shown, and layers as long as all images together stay within 64 MB; the samples of series without
/// a layer are drawn directly with each strip that they touch.
/// GUI thread.
class ChartPicture final {
public:
    /// Brings the picture up to date and returns what changed, in logical pixels.
    QRegion update(const ChartContents &contents, const ChartView &view);
    /// Premultiplied, transparent where nothing is drawn, in the pixel ratio of the last view.
    const QImage &image() const { return m_whole; }
    /// The contents are others now.
    void restart();
    /// Releases the images; the next update draws everything again.
    void release() { restart(); }
    /// How often everything was drawn anew.
    int fullRedraws() const { return m_fullRedraws; }
    /// Memory of all images.
    qint64 imageBytes() const;

private:
    struct Layer {
        QImage image;          ///< null when the pairs are drawn directly
        std::size_t pairs = 0; ///< taken so far
        double top = 1e6;      ///< nothing is drawn above this y
    };
    struct Series {
        Layer plain;
        Layer band;
        SmoothCurve plainCurve;
        SmoothCurve averageCurve;
        SmoothCurve maximumCurve;
        SmoothCurve minimumCurve;
    };

    QSize deviceSize() const;
    QImage blankImage();
    void paintGrid();
    QRect plotClip() const;
    XRange advanceSeries(const ChartContents &contents, std::size_t index);
    XRange advanceRaw(const ChartContents &contents, std::size_t index, bool band);
    void paintPairs(QPainter &painter, const ChartContents &contents, std::size_t index, bool band, std::size_t first,
                    std::size_t end) const;
    void paintRaw(QPainter &painter, const ChartContents &contents, std::size_t index, bool band,
                  const QRect &strip) const;
    void compose(const ChartContents &contents, const QRect &strip);
    void paintStrip(const ChartContents &contents, const QRect &strip);
    XRange cursorStrip() const;

    ChartView m_view;
    std::vector<quint8> m_visible;
    std::vector<Series> m_series;
    QImage m_grid;
    QImage m_workbench; ///< where strips are composed; anything beside the strip is scratch
    QImage m_whole;
    std::vector<std::unique_ptr<uchar[]>> m_memory; ///< of the images
    std::size_t m_memoryInUse = 0;
    qint64 m_bytesEach = 0;
    double m_top = 0.0; ///< between these y lies all but the grid's labels
    double m_bottom = 0.0;
    int m_fullRedraws = 0;
};
