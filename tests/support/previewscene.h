#pragma once

#include "charts/videoglpreview.h"
#include "tests/support/previewframes.h"

#include <QImage>
#include <QOpenGLWidget>
#include <QSignalSpy>
#include <QSurfaceFormat>
#include <QWidget>

#include <memory>

/// A window for OpenGL on the screen: showing one takes seconds under Wine, so tests share it.
class OpenGlWindow final : public QWidget {
public:
    OpenGlWindow()
    {
        resize(800, 600);
        move(50, 50);
        m_openGl.setGeometry(0, 0, 1, 1); // makes it a window for OpenGL from the start
    }

private:
    QOpenGLWidget m_openGl{this};
};

/// A container in a window, and the preview in it as large as the container.
struct PreviewScene {
    PreviewScene(QWidget &window, const QSize &containerSize,
                 const QSurfaceFormat &format = QSurfaceFormat::defaultFormat())
        : container(&window), preview(std::make_unique<VideoGlPreview>(&container))
    {
        container.setGeometry(30, 20, containerSize.width(), containerSize.height());
        preview->setFormat(format);
        preview->resize(containerSize);
        preview->setSource(0);
    }

    /// Waits for the first paint; the window is on the screen.
    bool show()
    {
        QSignalSpy paints(preview.get(), &VideoGlPreview::finishedToRenderPixmap);
        container.show();
        return !paints.isEmpty() || paints.wait();
    }

    void send(const BarPicture &picture, int source = 0) const
    {
        preview->setFrame(source, 0, picture.width, picture.height, picture.makeFrame());
    }

    /// Paints now; the picture in the preview's own buffer.
    QImage paint() const { return preview->grabFramebuffer(); }

    QWidget container;
    std::unique_ptr<VideoGlPreview> preview;
};
