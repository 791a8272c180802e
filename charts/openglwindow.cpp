#include "charts/openglwindow.h"

#include <QGuiApplication>
#include <QOpenGLWidget>

bool giveOwnWindow(QOpenGLWidget *widget)
{
    if (QGuiApplication::platformName() != QLatin1String("xcb") || widget->isWindow())
        return false;
    widget->setWindowFlag(Qt::WindowTransparentForInput);
    widget->setAttribute(Qt::WA_DontCreateNativeAncestors);
    widget->setAttribute(Qt::WA_NativeWindow);
    return true;
}
