#include "charts/chartpicture.h"

#include "charts/chartstyle.h"

#include <QPainter>

#include <cmath>

namespace {

/// How far a line's pixels reach beyond its ends.
constexpr double lineReach = 2.0;

/// Of all images of a chart.
constexpr qint64 mostImageBytes = qint64(64) * 1024 * 1024;

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

/// The logical pixel that holds a coordinate, cut to what no widget exceeds.
int pixelAt(double coordinate)
{
    constexpr double most = 1e6;
    return static_cast<int>(std::floor(std::clamp(coordinate, -most, most)));
}

} // namespace

void ChartPicture::restart()
{
    m_series.clear();
    m_visible.clear();
    m_grid = QImage();
    m_workbench = QImage();
    m_whole = QImage();
    m_memory.clear();
    m_memoryInUse = 0;
}

qint64 ChartPicture::imageBytes() const
{
    return static_cast<qint64>(m_memory.size()) * m_bytesEach;
}

QSize ChartPicture::deviceSize() const
{
    return {static_cast<int>(std::ceil(m_view.geometry.width * m_view.pixelRatio)),
            static_cast<int>(std::ceil(m_view.geometry.height * m_view.pixelRatio))};
}

/// Fresh memory costs more than drawing on it, so that of former images is used again while it suffices.
QImage ChartPicture::blankImage()
{
    if (m_memoryInUse == m_memory.size())
        m_memory.push_back(std::make_unique<uchar[]>(static_cast<std::size_t>(m_bytesEach)));
    const QSize size = deviceSize();
    QImage image(m_memory[m_memoryInUse++].get(), size.width(), size.height(), QImage::Format_ARGB32_Premultiplied);
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

    std::vector<QLineF> lines;
    const int xStep = truncated(geometry.lengthS / (m_view.verticalLines - 1));
    for (int i = 0; i < m_view.verticalLines; ++i) {
        const double x = i * (geometry.plotWidth / geometry.lengthS) * xStep + geometry.plotLeft;
        lines.emplace_back(x, ChartGeometry::plotTop, x, geometry.height - ChartGeometry::belowPlot);
        if (i > 0)
            painter.drawText(QPoint(truncated(x - 15), geometry.height - 10),
                             QStringLiteral("%1").arg(static_cast<qint64>(i) * xStep));
    }
    const int yStep = truncated(geometry.topValue / (m_view.horizontalLines - 1));
    for (int j = 0; j < m_view.horizontalLines; ++j) {
        const double y =
            geometry.plotHeight - j * (geometry.plotHeight / geometry.topValue) * yStep + ChartGeometry::plotTop;
        lines.emplace_back(geometry.plotLeft, y, geometry.plotRight(), y);
        painter.drawText(QRect(0, truncated(y - 5), geometry.labelWidth + 5, 15), Qt::AlignRight,
                         QStringLiteral("%1").arg(static_cast<qint64>(j) * yStep));
    }
    drawOpaqueLines(painter, ChartStyle::gridColor(), lines);
}

void ChartPicture::paintPairs(QPainter &painter, const ChartContents &contents, std::size_t index, bool band,
                              std::size_t first, std::size_t end) const
{
    const QColor color = contents.colorOf(index);
    if (band)
        paintBandSegments(painter, {contents.minimum[index], contents.average[index], contents.maximum[index]}, first,
                          end, m_view.geometry, color, m_view.pixelRatio);
    else
        paintPlainSegments(painter, contents.plain[index], first, end, m_view.geometry, color, m_view.pixelRatio);
}

/// Takes the new pairs of the plain or band series and draws them when there is a layer or room for one.
XRange ChartPicture::advanceRaw(const ChartContents &contents, std::size_t index, bool band)
{
    const PointSeries &points = band ? contents.average[index] : contents.plain[index];
    Layer &layer = band ? m_series[index].band : m_series[index].plain;
    if (points.size() < 2 || (band && !bandIsWhole(contents, index)) || layer.pairs == points.size() - 1)
        return {};

    XRange times;
    XRange figures{0.0, 0.0};
    for (std::size_t k = layer.pairs; k < points.size(); ++k) {
        times.unite({points[k].x(), points[k].x()});
        const double y = points[k].y();
        figures.unite({y, y}); // nothing when it is not a number
        if (band) {
            figures.unite({contents.maximum[index][k].y(), contents.maximum[index][k].y()});
            figures.unite({contents.minimum[index][k].y(), contents.minimum[index][k].y()});
        }
    }
    const QPointF topLeft = m_view.geometry.map({times.left, figures.right});
    const QPointF bottomRight = m_view.geometry.map({times.right, figures.left});
    layer.top = std::min(layer.top, topLeft.y() - lineReach);
    m_top = std::min(m_top, layer.top);
    m_bottom = std::max(m_bottom, bottomRight.y() + lineReach);

    if (layer.pairs == 0 && static_cast<qint64>(m_memoryInUse + 1) * m_bytesEach <= mostImageBytes)
        layer.image = blankImage();
    if (!layer.image.isNull()) {
        QPainter painter(&layer.image);
        painter.setClipRect(plotClip());
        paintPairs(painter, contents, index, band, layer.pairs, points.size() - 1);
    }
    layer.pairs = points.size() - 1;
    return XRange{topLeft.x(), bottomRight.x()}.grownBy(lineReach + 1.0);
}

XRange ChartPicture::advanceSeries(const ChartContents &contents, std::size_t index)
{
    XRange changed;
    if (m_view.raw) {
        changed.unite(advanceRaw(contents, index, false));
        changed.unite(advanceRaw(contents, index, true));
    }
    if (m_view.smooth) {
        Series &series = m_series[index];
        const auto advance = [&](SmoothCurve &curve, const PointSeries &points) {
            changed.unite(curve.update(points, m_view.geometry, m_view.tolerance).grownBy(lineReach));
        };
        advance(series.plainCurve, contents.plain[index]);
        if (bandIsWhole(contents, index)) {
            advance(series.averageCurve, contents.average[index]);
            advance(series.maximumCurve, contents.maximum[index]);
            advance(series.minimumCurve, contents.minimum[index]);
        }
    }
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
    paintStrip(contents, strip);
    QPainter painter(&m_whole);
    painter.setClipRect(strip);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QPointF(0, 0), m_workbench);
}

/// Only images are clipped to the strip. A line that the painter's clip cuts can come out one pixel aside, so
/// all lines that touch the strip are drawn as a whole.
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
    const XRange range{static_cast<double>(strip.left()), static_cast<double>(strip.left() + strip.width())};
    const XRange cursor = cursorStrip();
    if (cursor.left <= range.right && range.left <= cursor.right) {
        const double x = geometry.cursorX(m_view.cursorMs);
        painter.setClipping(false);
        painter.setPen(QPen(ChartStyle::gridColor(), 1.0, Qt::DashLine));
        painter.drawLine(QLineF(x, ChartGeometry::plotTop, x, geometry.plotBottom()));
    }

    for (std::size_t i = 0; i < m_series.size(); ++i) {
        if (!m_visible[i])
            continue;
        const Series &series = m_series[i];
        const QColor smooth = ChartStyle::smoothOf(contents.colorOf(i));
        const auto paintCurve = [&](const SmoothCurve &curve, const QColor &color) {
            if (!m_view.smooth)
                return;
            painter.setClipRect(plotClip());
            curve.paint(painter, range, geometry, color);
        };
        paintRaw(painter, contents, i, false, strip);
        paintCurve(series.plainCurve, smooth);
        paintRaw(painter, contents, i, true, strip);
        paintCurve(series.averageCurve, smooth);
        paintCurve(series.maximumCurve, ChartStyle::smoothOf(Qt::red));
        paintCurve(series.minimumCurve, ChartStyle::smoothOf(Qt::blue));
    }
}

void ChartPicture::paintRaw(QPainter &painter, const ChartContents &contents, std::size_t index, bool band,
                            const QRect &strip) const
{
    const Layer &layer = band ? m_series[index].band : m_series[index].plain;
    if (!m_view.raw || layer.pairs == 0)
        return;
    if (!layer.image.isNull()) {
        QRect clip = strip.intersected(plotClip());
        clip.setTop(std::max(clip.top(), pixelAt(layer.top)));
        painter.setClipRect(clip);
        painter.drawImage(QPointF(0, 0), layer.image);
        return;
    }
    const PointSeries &points = band ? contents.average[index] : contents.plain[index];
    std::size_t first = 0;
    std::size_t end = layer.pairs;
    if (points.isAscending()) {
        const ChartGeometry &geometry = m_view.geometry;
        const auto timeAt = [&](double x) {
            return (x - geometry.plotLeft) * geometry.lengthMs() / geometry.plotWidth;
        };
        const std::size_t after = points.firstFrom(timeAt(strip.left() - lineReach - 2.0));
        first = std::min(end, after > 0 ? after - 1 : 0);
        end = std::min(end, points.firstFrom(timeAt(strip.left() + strip.width() + lineReach + 2.0)));
    }
    painter.setClipRect(plotClip());
    if (first < end)
        paintPairs(painter, contents, index, band, first, end);
}

QRegion ChartPicture::update(const ChartContents &contents, const ChartView &view)
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
        const qint64 bytes = qint64(4) * deviceSize().width() * deviceSize().height();
        if (bytes > m_bytesEach || bytes < m_bytesEach / 2) {
            m_memory.clear();
            m_bytesEach = bytes;
        }
        m_memoryInUse = 0;
        paintGrid();
        m_workbench = blankImage();
        m_whole = blankImage();
        m_top = ChartGeometry::plotTop - lineReach;
        m_bottom = view.geometry.plotBottom() + lineReach;
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

    QRegion changedRegion;
    const auto composeStrip = [&](XRange range) {
        if (range.isEmpty())
            return;
        const QRect strip =
            QRect(QPoint(pixelAt(range.left), pixelAt(m_top)), QPoint(pixelAt(range.right) + 1, pixelAt(m_bottom) + 1))
                .intersected(everything);
        if (strip.isEmpty())
            return;
        compose(contents, strip);
        changedRegion += strip;
    };
    composeStrip(changed);
    if (cursorMoved) {
        composeStrip(formerCursor);
        composeStrip(cursorStrip());
    }
    return changedRegion;
}
