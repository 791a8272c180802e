#pragma once

#include "charts/previewscaler.h"

#include <QOpenGLFunctions_2_0>
#include <QOpenGLShaderProgram>
#include <QOpenGLWidget>
#include <QPixmap>
#include <QPointer>

#include <array>
#include <cstdint>
#include <memory>

/// Shows the frames of one source: scales each to its own size on the processor and lets the graphics
/// card turn it into colours. Fits itself into its container by the frame's shape. GUI thread.
///
/// At most one frame waits for the next paint; those that come meanwhile are dropped. Painting is asked
/// for by somebody else (PreviewThread), once for each finishedToRenderPixmap(). In a context that
/// lacks the functions of OpenGL 2, frames are taken and released and nothing is drawn.
class VideoGlPreview final : public QOpenGLWidget, private QOpenGLFunctions_2_0 {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(VideoGlPreview)

public:
    /// What the scaler may read behind the pixels of a frame, in bytes.
    static constexpr int frameTailBytes = PreviewScaler::frameTailBytes;

    /// newContainer is the parent, too; without one the preview keeps its size.
    explicit VideoGlPreview(QWidget *newContainer = nullptr);
    ~VideoGlPreview() override;

    /// Index of the source to show, -1 for none.
    int source() const { return selectedSource; }
    /// Whether OpenGL was set up and frames can be drawn; false before the first time on the screen.
    bool canDraw() const { return m_hasFunctions; }
    /// Does once, unseen, what the first frame would otherwise wait for: sets OpenGL up and draws a picture. For a
    /// hidden preview in a window that is on the screen; takes some ten ms, and leaves nothing to be seen.
    void warmUp();

public slots:
    /// Index of the source to show, -1 for none. A frame that waits is released with the next paint.
    void setSource(int index);

    /// Takes a frame of width * height * 2 bytes of UYVY, with frameTailBytes more behind it, and with it
    /// the duty to delete[] it. Only with no source selected the frame stays the caller's; see PreviewFeed.
    /// Sizes below 1 are allowed: pData is then released and never read. type, a FourCC, is not used.
    void setFrame(int sourceIndex, int type, int width, int height, uint8_t *pData);

signals:
    /// At the end of every paint, whether or not a frame was drawn.
    void finishedToRenderPixmap();

protected:
    void initializeGL() override;
    void resizeGL(int w, int h) override;
    void paintGL() override;

private:
    void fitInto(const QWidget &room, int frameW, int frameH);
    void buildProgram();
    void makeTextures();
    void drawPendingFrame();
    void uploadPlane(unsigned unit, int samplerLocation, const uint8_t *pixels, int planeWidth, int planeHeight);
    void releaseGl();

    QPixmap pixmap; ///< kept, not drawn
    int selectedSource = -1;
    std::unique_ptr<QOpenGLShaderProgram> program; ///< one for each context
    int texYLocation = -1;
    int texULocation = -1;
    int texVLocation = -1;
    std::array<GLuint, 3> textures{}; ///< Y, U, V
    std::unique_ptr<uint8_t[]> pendingFrame;
    int frameWidth = 0;  ///< pixels, of the pending frame
    int frameHeight = 0; ///< pixels, of the pending frame
    float frameAspect = 0.0F;
    float containerAspect = 0.0F;
    QPointer<QWidget> container;

    bool m_hasFunctions = false;
    PreviewScaler m_scaler;
    QMetaObject::Connection m_contextEnd;
};
