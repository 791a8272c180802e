#include "charts/chartgeometry.h"

#include <cmath>
#include <limits>

namespace {

/// Width of the label column; an axis without positive top has none, an absurd one is cut to what an int holds.
int labelColumn(double topValue)
{
    constexpr int pixelsPerDigit = 9;
    if (!(topValue > 0.0) || !std::isfinite(topValue))
        return 0;
    return static_cast<int>(std::ceil(std::log(topValue + 1.0) / std::log(10.0))) * pixelsPerDigit;
}

} // namespace

ChartGeometry::ChartGeometry(QSize size, double top, double seconds)
    : width(size.width()), height(size.height()), topValue(top), lengthS(seconds), labelWidth(labelColumn(top)),
      plotLeft(labelWidth + 10), plotWidth(width - rightOfPlot - plotLeft), plotHeight(height - plotTop - belowPlot)
{
}

bool ChartGeometry::isDrawable() const
{
    return topValue > 0.0 && std::isfinite(topValue) && lengthS > 0.0 && std::isfinite(lengthS) && plotWidth > 0
           && plotHeight > 0;
}

double ChartGeometry::cursorX(int timeMs) const
{
    return timeMs / 1000.0 * plotWidth / lengthS + plotLeft;
}

bool ChartGeometry::showsCursor(int timeMs) const
{
    return timeMs >= 0 && timeMs <= lengthMs();
}

std::optional<int> ChartGeometry::cursorTime(double mouseX) const
{
    const int divisor = width - 10 - plotLeft;
    if (divisor <= 0)
        return std::nullopt;
    const double timeMs = (mouseX - plotLeft) * lengthS / divisor * 1000.0;
    if (std::isnan(timeMs))
        return std::nullopt;
    if (timeMs >= static_cast<double>(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (timeMs <= static_cast<double>(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return static_cast<int>(timeMs);
}

bool ChartGeometry::operator==(const ChartGeometry &other) const
{
    return width == other.width && height == other.height && topValue == other.topValue && lengthS == other.lengthS;
}

double grownAxisTop(double value, double top)
{
    if (!std::isfinite(value) || value <= 0.0 || !(value > top))
        return top;
    const double magnitude = std::pow(10.0, std::floor(std::log(value) / std::log(10.0)));
    const double grown = std::ceil(value / magnitude) * magnitude;
    return std::isfinite(grown) && grown > 0.0 ? grown : top;
}
