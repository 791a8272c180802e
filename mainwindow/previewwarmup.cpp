#include "mainwindow/previewwarmup.h"

#include "charts/openglwindow.h"
#include "charts/videoglpreview.h"

#include <QImage>
#include <QOpenGLFunctions>
#include <QOpenGLWidget>
#include <QPixmap>
#include <QWindow>

#include <utility>

namespace {

constexpr int startMs = 400; ///< the window paints itself first
constexpr int stepMs = 50;   ///< for whatever else waits
constexpr int mostStarts = 25;
constexpr int drawings = 3;         ///< a first one is not like the later ones
constexpr int drawnWithinMs = 2000; ///< a window of its own waits for the window system first

/// The pixels that the window has there. Of three by three: of sizes that are powers of two OpenGL makes a special
/// case.
class UnseenPatch final : public QOpenGLWidget {
public:
    static constexpr int side = 3;

    explicit UnseenPatch(QWidget *window) : QOpenGLWidget(window) { setGeometry(-side, -side, side, side); }

    /// Moves it to where it could be seen, but looks like what is there.
    void cover(const QPoint &place)
    {
        move(place);
        m_below = parentWidget()->grab(geometry()).toImage();
    }

protected:
    void paintGL() override
    {
        QOpenGLFunctions *const gl = context()->functions();
        gl->glEnable(GL_SCISSOR_TEST);
        for (int y = 0; y < m_below.height(); ++y) {
            for (int x = 0; x < m_below.width(); ++x) {
                const QColor colour = m_below.pixelColor(x, y);
                gl->glScissor(x, m_below.height() - 1 - y, 1, 1);
                gl->glClearColor(static_cast<GLfloat>(colour.redF()), static_cast<GLfloat>(colour.greenF()),
                                 static_cast<GLfloat>(colour.blueF()), 1.0F);
                gl->glClear(GL_COLOR_BUFFER_BIT);
            }
        }
        gl->glDisable(GL_SCISSOR_TEST);
    }

private:
    QImage m_below;
};

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
    case Step::window:
        m_step = Step::end;
        drawUnseen();
        return;
    case Step::end:
        end(m_leftToDraw <= 0);
        return;
    }
    m_timer.start(stepMs);
}

void PreviewWarmUp::drawUnseen()
{
    QWidget *const window = m_preview->window();
    auto *const patch = new UnseenPatch(window);
    m_unseen = patch;
    if (giveOwnWindow(patch)) {
        // A window of its own is drawn only where it is on the screen.
        patch->cover(window->rect().center());
        m_leftToDraw = drawings;
        connect(patch, &QOpenGLWidget::frameSwapped, this, [this, patch] {
            if (--m_leftToDraw > 0)
                patch->update();
            else
                m_timer.start(0);
        });
        m_timer.start(drawnWithinMs);
    } else {
        window->update(0, 0, 1, 1);
        m_timer.start(stepMs);
    }
    patch->show();
}

void PreviewWarmUp::end(bool wasDone)
{
    delete m_unseen;
    emit finished(wasDone);
}
