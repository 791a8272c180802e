#include "charts/openglwindow.h"

#include <QEvent>
#include <QGuiApplication>
#include <QOpenGLWidget>
#include <QWindow>

namespace {

/// Keeps a widget's own window where the widget is, and within what the widgets around it show: Qt moves it when the
/// widget is moved within its parent, and clips it by nothing but the window. A child of the widget.
class OwnWindowPlace final : public QObject {
public:
    explicit OwnWindowPlace(QWidget *widget) : QObject(widget), m_widget(widget) { watchAncestors(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        switch (event->type()) {
        case QEvent::ParentChange:
            watchAncestors();
            break;
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::Show:
            follow();
            break;
        default:
            break;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    void watchAncestors()
    {
        for (QWidget *widget = m_widget; widget; widget = widget->parentWidget())
            widget->installEventFilter(this);
    }

    void follow()
    {
        QWindow *const own = m_widget->windowHandle();
        const QWidget *const around = m_widget->nativeParentWidget();
        if (!own || !own->handle() || !around)
            return;
        own->setPosition(m_widget->mapTo(around, QPoint()));
        const QRegion mask = maskWithin(*around);
        if (mask != own->mask())
            own->setMask(mask);
    }

    /// What is seen of the widget; empty, as QWindow has it, for all of it.
    QRegion maskWithin(const QWidget &around) const
    {
        QRect seen = m_widget->rect();
        for (const QWidget *widget = m_widget; widget != &around; widget = widget->parentWidget()) {
            const QWidget *const parent = widget->parentWidget();
            seen &= QRect(m_widget->mapFrom(parent, QPoint()), parent->size());
        }
        if (seen == m_widget->rect())
            return {};
        return seen.isEmpty() ? QRect(-1, -1, 1, 1) : seen;
    }

    QWidget *const m_widget;
};

} // namespace

bool giveOwnWindow(QOpenGLWidget *widget)
{
    if (QGuiApplication::platformName() != QLatin1String("xcb") || widget->isWindow())
        return false;
    widget->setWindowFlag(Qt::WindowTransparentForInput);
    // Neither the widgets around it nor those beside it get windows, too.
    widget->setAttribute(Qt::WA_DontCreateNativeAncestors);
    const bool siblingsAreLeft = QCoreApplication::testAttribute(Qt::AA_DontCreateNativeWidgetSiblings);
    QCoreApplication::setAttribute(Qt::AA_DontCreateNativeWidgetSiblings);
    widget->setAttribute(Qt::WA_NativeWindow);
    QCoreApplication::setAttribute(Qt::AA_DontCreateNativeWidgetSiblings, siblingsAreLeft);
    new OwnWindowPlace(widget);
    return true;
}
