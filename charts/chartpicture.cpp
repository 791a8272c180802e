#include "charts/chartpicture.h"

#include "charts/chartstyle.h"

#include <QPainter>

#include <cmath>

namespace {

/// How far a line's pixels reach beyond its ends.
constexpr double lineReach = 2.0;

/// A line that is cut by the painter's clip can come out one pixel aside. So strips are put together on the
/// side, this much wider than what is taken from them, and no line that is cut touches what is taken.
constexpr int stripMargin = 8;

bool bandIsWhole(const ChartContents &contents, std::size_t index)
{
    const std::size_t size = contents.average[index].size();
    return size >= 2 && contents.minimum[index].size() == size && contents.maximum[index].size() == size;
}

/// The integer part as an int; axes can be longer than an int holds.
int truncated(double value)
{
    constexpr double most = 2147483647.0;
    return static_cast<int>(std::clamp(value, -most, most));
}

} // namespace

void ChartPicture::restart()
{
    m_series.clear();
    m_visible.clear();
    m_grid = QImage();
    m_workbench = QImage();
    m_whole = QImage();
}

QImage ChartPicture::blankImage() const
{
    const QSize size(static_cast<int>(std::ceil(m_view.geometry.width * m_view.pixelRatio)),
                     static_cast<int>(std::ceil(m_view.geometry.height * m_view.pixelRatio)));
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(m_view.pixelRatio);
    image.fill(Qt::transparent);
    return image;
}

QRect ChartPicture::plotClip() const
{
    const ChartGeometry &geometry = m_view.geometry;
    return {geometry.plotLeft, 0, geometry.plotWidth + 1, geometry.height};
}

void ChartPicture::paintGrid()
{
    m_grid = blankImage();
    const ChartGeometry &geometry = m_view.geometry;
    if (!geometry.isDrawable())
        return;
    QPainter painter(&m_grid);
    painter.setFont(ChartStyle::font(8));
    painter.setPen(ChartStyle::gridColor());

    const int xStep = truncated(geometry.lengthS / (m_view.verticalLines - 1));
    for (int i = 0; i < m_view.verticalLines; ++i) {
        const double x = i * (geometry.plotWidth / geometry.lengthS) * xStep + geometry.plotLeft;
        painter.drawLine(QLineF(x, ChartGeometry::plotTop, x, geometry.height - ChartGeometry::belowPlot));
        if (i > 0)
            painter.drawText(QPoint(truncated(x - 15), geometry.height - 10),
                             QStringLiteral("%1").arg(static_cast<qint64>(i) * xStep));
    }
    const int yStep = truncated(geometry.topValue / (m_view.horizontalLines - 1));
    for (int j = 0; j < m_view.horizontalLines; ++j) {
        const double y =
            geometry.plotHeight - j * (geometry.plotHeight / geometry.topValue) * yStep + ChartGeometry::plotTop;
        painter.drawLine(QLineF(geometry.plotLeft, y, geometry.plotRight(), y));
        painter.drawText(QRect(0, truncated(y - 5), geometry.labelWidth + 5, 15), Qt::AlignRight,
                         QStringLiteral("%1").arg(static_cast<qint64>(j) * yStep));
    }
}

XRange ChartPicture::advancePlain(const ChartContents &contents, std::size_t index)
{
    const PointSeries &points = contents.plain[index];
    XRange changed;
    Layer &layer = m_series[index].plain;
    if (m_view.raw && points.size() >= 2 && layer.pairs < points.size() - 1) {
        if (layer.image.isNull())
            layer.image = blankImage();
        for (std::size_t k = layer.pairs; k < points.size(); ++k) {
            const double x = m_view.geometry.map(points[k]).x();
            changed.unite(XRange{x, x}.grownBy(lineReach));
        }
        QPainter painter(&layer.image);
        painter.setClipRect(plotClip());
        paintPlainSegments(painter, points, layer.pairs, points.size() - 1, m_view.geometry, contents.colorOf(index),
                           m_view.pixelRatio);
        layer.pairs = points.size() - 1;
    }
    if (m_view.smooth)
        changed.unite(m_series[index].plainCurve.update(points, m_view.geometry).grownBy(lineReach));
    return changed;
}

XRange ChartPicture::advanceBand(const ChartContents &contents, std::size_t index)
{
    if (!bandIsWhole(contents, index))
        return {};
    XRange changed;
    const BandPoints band{contents.minimum[index], contents.average[index], contents.maximum[index]};
    const std::size_t size = band.average.size();
    Series &series = m_series[index];
    Layer &layer = series.band;
    if (m_view.raw && layer.pairs < size - 1) {
        if (layer.image.isNull())
            layer.image = blankImage();
        for (std::size_t k = layer.pairs; k < size; ++k) {
            const double x = m_view.geometry.map(band.average[k]).x();
            changed.unite(XRange{x, x}.grownBy(lineReach + 1.0));
        }
        QPainter painter(&layer.image);
        painter.setClipRect(plotClip());
        paintBandSegments(painter, band, layer.pairs, size - 1, m_view.geometry, contents.colorOf(index),
                          m_view.pixelRatio);
        layer.pairs = size - 1;
    }
    if (m_view.smooth) {
        changed.unite(series.averageCurve.update(band.average, m_view.geometry).grownBy(lineReach));
        changed.unite(series.maximumCurve.update(band.maximum, m_view.geometry).grownBy(lineReach));
        changed.unite(series.minimumCurve.update(band.minimum, m_view.geometry).grownBy(lineReach));
    }
    return changed;
}

XRange ChartPicture::advanceSeries(const ChartContents &contents, std::size_t index)
{
    XRange changed = advancePlain(contents, index);
    changed.unite(advanceBand(contents, index));
    return changed;
}

XRange ChartPicture::cursorStrip() const
{
    if (!m_view.geometry.isDrawable() || !m_view.geometry.showsCursor(m_view.cursorMs))
        return {};
    const double x = m_view.geometry.cursorX(m_view.cursorMs);
    return XRange{x, x}.grownBy(lineReach);
}

void ChartPicture::compose(const ChartContents &contents, const QRect &strip)
{
    paintStrip(contents, strip.adjusted(-stripMargin, 0, stripMargin, 0));
    QPainter painter(&m_whole);
    painter.setClipRect(strip);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QPointF(0, 0), m_workbench);
}

void ChartPicture::paintStrip(const ChartContents &contents, const QRect &strip)
{
    QPainter painter(&m_workbench);
    painter.setClipRect(strip);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QPointF(0, 0), m_grid);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);

    const ChartGeometry &geometry = m_view.geometry;
    if (!geometry.isDrawable())
        return;
    if (geometry.showsCursor(m_view.cursorMs)) {
        const double x = geometry.cursorX(m_view.cursorMs);
        painter.setPen(QPen(ChartStyle::gridColor(), 1.0, Qt::DashLine));
        painter.drawLine(QLineF(x, ChartGeometry::plotTop, x, geometry.plotBottom()));
    }

    painter.setClipRect(strip.intersected(plotClip()));
    const XRange range{static_cast<double>(strip.left()), static_cast<double>(strip.left() + strip.width())};
    for (std::size_t i = 0; i < m_series.size(); ++i) {
        if (!m_visible[i])
            continue;
        const Series &series = m_series[i];
        const QColor smooth = ChartStyle::smoothOf(contents.colorOf(i));
        if (m_view.raw && !series.plain.image.isNull())
            painter.drawImage(QPointF(0, 0), series.plain.image);
        if (m_view.smooth)
            series.plainCurve.paint(painter, range, geometry, smooth);
        if (m_view.raw && !series.band.image.isNull())
            painter.drawImage(QPointF(0, 0), series.band.image);
        if (m_view.smooth) {
            series.averageCurve.paint(painter, range, geometry, smooth);
            series.maximumCurve.paint(painter, range, geometry, ChartStyle::smoothOf(Qt::red));
            series.minimumCurve.paint(painter, range, geometry, ChartStyle::smoothOf(Qt::blue));
        }
    }
}

QRect ChartPicture::update(const ChartContents &contents, const ChartView &view)
{
    const QRect everything(0, 0, view.geometry.width, view.geometry.height);
    if (everything.isEmpty()) {
        restart();
        return {};
    }
    const bool mappingChanged = m_whole.isNull() || view.geometry != m_view.geometry
                                || view.pixelRatio != m_view.pixelRatio || m_series.size() != contents.plain.size();
    const bool selectionChanged =
        view.raw != m_view.raw || view.smooth != m_view.smooth || m_visible != contents.visible;
    const XRange formerCursor = cursorStrip();
    const bool cursorMoved = view.cursorMs != m_view.cursorMs;
    m_view = view;
    m_visible = contents.visible;

    if (mappingChanged) {
        m_series.clear();
        m_series.resize(contents.plain.size());
        paintGrid();
        m_workbench = blankImage();
        m_whole = blankImage();
    }
    XRange changed;
    if (view.geometry.isDrawable()) {
        for (std::size_t i = 0; i < m_series.size(); ++i) {
            if (m_visible[i])
                changed.unite(advanceSeries(contents, i));
        }
    }
    if (mappingChanged || selectionChanged) {
        ++m_fullRedraws;
        compose(contents, everything);
        return everything;
    }

    QRect changedRect;
    const auto composeStrip = [&](XRange range) {
        if (range.isEmpty())
            return;
        const int left = truncated(std::floor(std::max(range.left, -1.0)));
        const int right = truncated(std::ceil(std::min(range.right, view.geometry.width + 1.0)));
        const QRect strip = QRect(left, 0, right - left + 1, view.geometry.height).intersected(everything);
        if (strip.isEmpty())
            return;
        compose(contents, strip);
        changedRect |= strip;
    };
    composeStrip(changed);
    if (cursorMoved) {
        composeStrip(formerCursor);
        composeStrip(cursorStrip());
    }
    return changedRect;
}
