#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPointF>

#include <vector>

/// The chart's picture in its plainest form: every pair of points drawn in order, nothing kept, nothing left out.
/// Written apart from the program's own code, so that the two can be compared.
struct NaiveSeries {
    std::vector<QPointF> plain;
    std::vector<QPointF> average;
    std::vector<QPointF> minimum;
    std::vector<QPointF> maximum;
    QColor color;
    bool visible = true;
};

struct NaiveChart {
    int width = 0;
    int height = 0;
    double maxX = 60.0;
    double maxY = 60.0;
    bool raw = false;
    bool smooth = false;
    int hoverTime = -10000;
    std::vector<NaiveSeries> series;

    /// Grid, labels, cursor line and series, without callouts.
    void paint(QPainter &painter) const;
    /// On a transparent image.
    QImage image(double pixelRatio) const;
    /// The largest pick over all visible series; list: one of the members of NaiveSeries.
    double pick(std::vector<QPointF> NaiveSeries::*list) const;

private:
    double left() const;
    QPointF map(QPointF sample) const;
    bool cut(QPointF &first, QPointF &second) const;
    void paintGrid(QPainter &painter) const;
    void paintRaw(QPainter &painter, const NaiveSeries &one) const;
    void paintBand(QPainter &painter, const NaiveSeries &one) const;
    void paintSmooth(QPainter &painter, const std::vector<QPointF> &points, const QColor &color) const;
};
