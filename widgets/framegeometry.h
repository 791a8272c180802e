#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <Qt>

#include <optional>

// Where the borders of a window without a frame are, and what dragging them makes of its geometry. All in
// pixels of the screen, without any widget.

/// The part of a window's border that a point lies in. The bottom right corner is a part of the right one.
enum class FrameZone { none, topLeft, topRight, bottomLeft, top, left, right, bottom };

/// border: how many pixels along each edge of the window belong to it. Outside the window there is none.
FrameZone zoneAt(const QPoint &position, const QRect &window, int border);

Qt::CursorShape cursorOf(FrameZone zone);

/// The edges that follow the mouse after a press in this zone; none of them for FrameZone::none.
Qt::Edges edgesOf(FrameZone zone);

/// The window when the mouse has dragged these edges to a position. start: the window before the drag;
/// desktop: size that the windows may use; least: the smallest size of the window. Nothing when the window
/// should stay as it is: too small, too near to the end of the desktop, or no edge dragged.
std::optional<QRect> draggedGeometry(Qt::Edges edges, const QRect &start, const QPoint &mouse, const QSize &desktop,
                                     const QSize &least);

/// On a screen that is larger than 1920 x 1080 in both directions, the maximised window: of that size, in the
/// middle. Nothing for any other screen, which it fills.
std::optional<QRect> centredMaximum(const QRect &screen);
