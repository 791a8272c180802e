#pragma once

#include <QColor>
#include <QFont>

/// Colours and fonts that the parts of a chart share.
namespace ChartStyle {

inline QColor gridColor()
{
    return {66, 66, 66};
}

inline QFont font(int pointSize)
{
    return {QStringLiteral("Kumbh Sans"), pointSize, QFont::Normal};
}

/// Colour of the area below a line.
inline QColor fillOf(QColor line)
{
    line.setAlpha(50);
    return line;
}

/// Colour of the smooth curve of a line.
inline QColor smoothOf(const QColor &line)
{
    return line.lighter(150);
}

} // namespace ChartStyle
