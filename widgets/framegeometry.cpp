#include "widgets/framegeometry.h"

namespace {

constexpr int keptVisible = 50; ///< px of the window that stay on the desktop when an edge moves towards its end
constexpr QSize largest(1920, 1080);

bool isBefore(int position, int end)
{
    return position >= 1 && position < end - keptVisible;
}

} // namespace

FrameZone zoneAt(const QPoint &position, const QRect &window, int border)
{
    if (!window.contains(position))
        return FrameZone::none;
    const bool left = position.x() - window.left() < border;
    const bool top = position.y() - window.top() < border;
    const bool right = window.right() - position.x() < border;
    const bool bottom = window.bottom() - position.y() < border;
    if (left && top)
        return FrameZone::topLeft;
    if (right && top)
        return FrameZone::topRight;
    if (left && bottom)
        return FrameZone::bottomLeft;
    if (top)
        return FrameZone::top;
    if (left)
        return FrameZone::left;
    if (right)
        return FrameZone::right;
    if (bottom)
        return FrameZone::bottom;
    return FrameZone::none;
}

Qt::CursorShape cursorOf(FrameZone zone)
{
    switch (zone) {
    case FrameZone::topLeft:
        return Qt::SizeFDiagCursor;
    case FrameZone::topRight:
    case FrameZone::bottomLeft:
        return Qt::SizeBDiagCursor;
    case FrameZone::top:
    case FrameZone::bottom:
        return Qt::SizeVerCursor;
    case FrameZone::left:
    case FrameZone::right:
        return Qt::SizeHorCursor;
    case FrameZone::none:
        break;
    }
    return Qt::ArrowCursor;
}

Qt::Edges edgesOf(FrameZone zone)
{
    switch (zone) {
    case FrameZone::topLeft:
        return Qt::TopEdge | Qt::LeftEdge;
    case FrameZone::topRight:
        return Qt::TopEdge | Qt::RightEdge;
    case FrameZone::bottomLeft:
        return Qt::BottomEdge | Qt::LeftEdge;
    case FrameZone::top:
        return Qt::TopEdge;
    case FrameZone::left:
        return Qt::LeftEdge;
    case FrameZone::right:
        return Qt::RightEdge;
    case FrameZone::bottom:
        return Qt::BottomEdge;
    case FrameZone::none:
        break;
    }
    return {};
}

std::optional<QRect> draggedGeometry(Qt::Edges edges, const QRect &start, const QPoint &mouse, const QSize &desktop,
                                     const QSize &least)
{
    const int width = mouse.x() - start.x();
    const int height = mouse.y() - start.y();
    QRect dragged = start;
    bool isAllowed = false;
    if (edges == (Qt::TopEdge | Qt::LeftEdge)) {
        dragged.setTopLeft(mouse);
        isAllowed = mouse.x() >= 1 && mouse.y() >= 1;
    } else if (edges == (Qt::TopEdge | Qt::RightEdge)) {
        dragged.setTop(mouse.y());
        dragged.setWidth(width);
        isAllowed = width >= 1 && isBefore(mouse.y(), desktop.height());
    } else if (edges == (Qt::BottomEdge | Qt::LeftEdge)) {
        dragged.setLeft(mouse.x());
        dragged.setHeight(height);
        isAllowed = mouse.x() >= 1 && height >= 1;
    } else if (edges == Qt::TopEdge) {
        dragged.setTop(mouse.y());
        isAllowed = isBefore(mouse.y(), desktop.height());
    } else if (edges == Qt::LeftEdge) {
        dragged.setLeft(mouse.x());
        isAllowed = isBefore(mouse.x(), desktop.width());
    } else if (edges == Qt::RightEdge) {
        dragged.setWidth(width);
        isAllowed = width >= 1;
    } else if (edges == Qt::BottomEdge) {
        dragged.setHeight(height);
        isAllowed = height >= 1;
    }
    // An edge that passes the opposite one turns the rectangle over; one smaller than the window can be would
    // push the window along.
    if (!isAllowed || !dragged.isValid() || dragged.width() < least.width() || dragged.height() < least.height())
        return std::nullopt;
    return dragged;
}

std::optional<QRect> centredMaximum(const QRect &screen)
{
    if (screen.width() <= largest.width() || screen.height() <= largest.height())
        return std::nullopt;
    const QPoint offset((screen.width() - largest.width()) / 2, (screen.height() - largest.height()) / 2);
    return QRect(screen.topLeft() + offset, largest);
}
