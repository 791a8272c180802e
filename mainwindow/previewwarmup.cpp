#include "mainwindow/previewwarmup.h"

#include "charts/videoglpreview.h"

#include <QOpenGLWidget>
#include <QWindow>

#include <utility>

namespace {

constexpr int startMs = 400; ///< the window paints itself first
constexpr int stepMs = 50;   ///< for whatever else waits
constexpr int mostStarts = 25;

} // namespace

PreviewWarmUp::PreviewWarmUp(VideoGlPreview *preview, std::function<bool()> isBusy, QObject *parent)
    : QObject(parent), m_preview(preview), m_isBusy(std::move(isBusy))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &PreviewWarmUp::next);
}

PreviewWarmUp::~PreviewWarmUp()
{
    delete m_unseen;
}

void PreviewWarmUp::start()
{
    m_timer.start(startMs);
}

bool PreviewWarmUp::isOnScreen() const
{
    const QWindow *const window = m_preview->window()->windowHandle();
    return window && window->isExposed();
}

/// Not every platform has windows for OpenGL.
bool PreviewWarmUp::canDraw() const
{
    return isOnScreen() && m_preview->window()->windowHandle()->surfaceType() != QSurface::RasterSurface;
}

void PreviewWarmUp::next()
{
    if (m_step == Step::preview && !isOnScreen() && ++m_starts < mostStarts) {
        start();
        return;
    }
    if (m_step != Step::end && (m_isBusy() || !canDraw())) {
        end(false);
        return;
    }
    switch (m_step) {
    case Step::preview:
        m_preview->warmUp();
        m_step = Step::window;
        break;
    case Step::window: {
        QWidget *const window = m_preview->window();
        m_unseen = new QOpenGLWidget(window);
        m_unseen->setGeometry(-2, -2, 1, 1);
        m_unseen->show();
        window->update(0, 0, 1, 1);
        m_step = Step::end;
        break;
    }
    case Step::end:
        end(true);
        return;
    }
    m_timer.start(stepMs);
}

void PreviewWarmUp::end(bool wasDone)
{
    delete m_unseen;
    emit finished(wasDone);
}
