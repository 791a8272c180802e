#include "app/openglcheck.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

bool isOpenGlUsable(QOffscreenSurface *surface)
{
    surface->create();
    if (!surface->isValid())
        return false;
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(surface))
        return false; // it would have no functions
    QOpenGLFunctions *const functions = context.functions();
    const bool usable = functions && functions->glGetString(GL_VERSION);
    context.doneCurrent();
    return usable;
}
