#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>

class QOpenGLWidget;
class VideoGlPreview;

/// Lets OpenGL do for the first time, in idle moments and unseen, what the first test would wait for: the preview's
/// context and its shaders, and Qt's drawing with OpenGL of the window that the preview is on.
/// Software OpenGL translates shaders into machine code then, for some 100 ms in all. GUI thread.
class PreviewWarmUp final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PreviewWarmUp)

public:
    /// preview is not owned and has to live as long. isBusy: whether now is no idle moment; that ends it.
    PreviewWarmUp(VideoGlPreview *preview, std::function<bool()> isBusy, QObject *parent = nullptr);
    ~PreviewWarmUp() override;

    /// Begins somewhat later, when the window is on the screen; one that is not there for ten seconds is given up.
    void start();

signals:
    /// Nothing more will be done; wasDone: all of it was.
    void finished(bool wasDone);

private:
    enum class Step { preview, window, end };

    void next();
    bool isOnScreen() const;
    bool canDraw() const;
    void drawUnseen();
    void end(bool wasDone);

    VideoGlPreview *m_preview;
    std::function<bool()> m_isBusy;
    Step m_step = Step::preview;
    int m_starts = 0;
    int m_leftToDraw = 0;
    QTimer m_timer;
    QPointer<QOpenGLWidget> m_unseen; ///< makes Qt draw with OpenGL; the window may take it with it
};
