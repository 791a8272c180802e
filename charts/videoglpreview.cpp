#include "charts/videoglpreview.h"

#include "charts/openglwindow.h"
#include "charts/previewgeometry.h"

#include <QOpenGLContext>

namespace {

constexpr int positionAttribute = 0;
constexpr int coordinateAttribute = 1;
constexpr int leastWidth = 11; ///< pixels; the scaler makes nothing of less

// OpenGL reads these at every draw, so they stay where they are. The first row of a picture is its top.
constexpr std::array<GLfloat, 8> vertexPositions{-1.0F, -1.0F, 1.0F, -1.0F, -1.0F, 1.0F, 1.0F, 1.0F};
constexpr std::array<GLfloat, 8> textureCoordinates{0.0F, 1.0F, 1.0F, 1.0F, 0.0F, 0.0F, 1.0F, 0.0F};

constexpr const char *vertexShader = "attribute vec4 vertexPosition;"
                                     "        attribute vec2 textureCoordinate;"
                                     "        varying vec2 texture_Out;"
                                     "        void main(void)"
                                     "        {"
                                     "            gl_Position = vertexPosition;"
                                     "            texture_Out = textureCoordinate;"
                                     "        }";

constexpr const char *fragmentShader = "varying vec2 texture_Out;"
                                       "        uniform sampler2D tex_y;"
                                       "        uniform sampler2D tex_u;"
                                       "        uniform sampler2D tex_v;"
                                       "        void main(void)"
                                       "        {"
                                       "            vec3 YUV;"
                                       "            vec3 RGB;"
                                       "            YUV.x = texture2D(tex_y, texture_Out).r;"
                                       "            YUV.y = texture2D(tex_u, texture_Out).r - 0.5;"
                                       "            YUV.z = texture2D(tex_v, texture_Out).r - 0.5;"
                                       "            RGB = mat3(1.0, 1.0, 1.0,"
                                       "                0.0, -0.39465, 2.03211,"
                                       "                1.13983, -0.58060, 0.0) * YUV;"
                                       "            gl_FragColor = vec4(RGB, 1.0);"
                                       "        }";

} // namespace

VideoGlPreview::VideoGlPreview(QWidget *newContainer) : QOpenGLWidget(newContainer), container(newContainer)
{
    setUpdateBehavior(QOpenGLWidget::PartialUpdate);
    giveOwnWindow(this);
}

VideoGlPreview::~VideoGlPreview()
{
    disconnect(m_contextEnd);
    makeCurrent();
    releaseGl();
    doneCurrent();
}

void VideoGlPreview::setSource(int index)
{
    selectedSource = index;
}

void VideoGlPreview::setFrame(int sourceIndex, int, int width, int height, uint8_t *pData)
{
    if (selectedSource == -1)
        return;
    std::unique_ptr<uint8_t[]> frame(pData);
    if (sourceIndex != selectedSource || pendingFrame)
        return;
    pendingFrame = std::move(frame);
    frameWidth = width;
    frameHeight = height;
    if (container && width > 0 && height > 0)
        fitInto(*container, width, height);
}

void VideoGlPreview::warmUp()
{
    if (isVisible() || pendingFrame)
        return;
    grabFramebuffer(); // sets OpenGL up, shown or not
    if (!m_hasFunctions)
        return;
    constexpr int side = 32;
    constexpr std::size_t bytes = std::size_t(side) * side * 2 + frameTailBytes;
    pendingFrame = std::make_unique<uint8_t[]>(bytes);
    frameWidth = side;
    frameHeight = side;
    makeCurrent();
    resizeGL(width(), height());
    drawPendingFrame();
    pendingFrame.reset();
    glClear(GL_COLOR_BUFFER_BIT);
    glFinish();
    doneCurrent();
}

void VideoGlPreview::fitInto(const QWidget &room, int frameW, int frameH)
{
    if (size().isEmpty() || room.size().isEmpty())
        return;
    const float newFrameAspect = aspectRatio(frameW, frameH);
    const float newContainerAspect = aspectRatio(room.width(), room.height());
    if (newFrameAspect == frameAspect && newContainerAspect == containerAspect)
        return;
    frameAspect = newFrameAspect;
    setFixedSize(fittedPreviewSize(frameW, frameH, room.width(), room.height()));
    // A container that follows its content may have changed with it.
    if (!room.size().isEmpty())
        containerAspect = aspectRatio(room.width(), room.height());
}

void VideoGlPreview::initializeGL()
{
    // OpenGL ES passes the version check, but has no fixed pipeline.
    m_hasFunctions = !context()->isOpenGLES() && initializeOpenGLFunctions();
    if (!m_hasFunctions)
        return;
    // Another window brings another context, and with it all this again.
    m_contextEnd = connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] {
        makeCurrent();
        releaseGl();
        doneCurrent();
    });

    buildProgram();
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_DECAL);
    glVertexAttribPointer(positionAttribute, 2, GL_FLOAT, GL_FALSE, 0, vertexPositions.data());
    glEnableVertexAttribArray(positionAttribute);
    glVertexAttribPointer(coordinateAttribute, 2, GL_FLOAT, GL_FALSE, 0, textureCoordinates.data());
    glEnableVertexAttribArray(coordinateAttribute);
    texYLocation = program->uniformLocation("tex_y");
    texULocation = program->uniformLocation("tex_u");
    texVLocation = program->uniformLocation("tex_v");
    makeTextures();
    glClearColor(0.1255F, 0.1255F, 0.1255F, 1.0F); // the grey of the panel around it
    glClear(GL_COLOR_BUFFER_BIT);
}

void VideoGlPreview::buildProgram()
{
    program = std::make_unique<QOpenGLShaderProgram>();
    program->addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentShader);
    program->addShaderFromSourceCode(QOpenGLShader::Vertex, vertexShader);
    program->bindAttributeLocation("vertexPosition", positionAttribute);
    program->bindAttributeLocation("textureCoordinate", coordinateAttribute);
    program->link();
    program->bind();
}

void VideoGlPreview::makeTextures()
{
    for (GLuint &texture : textures) {
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    }
}

void VideoGlPreview::releaseGl()
{
    if (!m_hasFunctions)
        return;
    program.reset();
    glDeleteTextures(static_cast<GLsizei>(textures.size()), textures.data());
    textures = {};
    m_hasFunctions = false;
}

void VideoGlPreview::resizeGL(int w, int h)
{
    if (!m_hasFunctions)
        return;
    glViewport(0, 0, w, h);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void VideoGlPreview::paintGL()
{
    if (pendingFrame) {
        if (m_hasFunctions && selectedSource != -1)
            drawPendingFrame();
        pendingFrame.reset();
    }
    emit finishedToRenderPixmap();
    QOpenGLWidget::paintGL();
}

void VideoGlPreview::drawPendingFrame()
{
    if (frameWidth < 1 || frameHeight < 1 || width() < leastWidth || height() == 0)
        return;
    const PreviewPlanes *const planes = m_scaler.scale(pendingFrame.get(), frameWidth, frameHeight, width(), height());
    if (!planes)
        return;
    uploadPlane(0, texYLocation, planes->y, planes->width, planes->height);
    uploadPlane(1, texULocation, planes->u, planes->chromaWidth, planes->chromaHeight);
    uploadPlane(2, texVLocation, planes->v, planes->chromaWidth, planes->chromaHeight);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

void VideoGlPreview::uploadPlane(unsigned unit, int samplerLocation, const uint8_t *pixels, int planeWidth,
                                 int planeHeight)
{
    glActiveTexture(GL_TEXTURE0 + unit);
    glBindTexture(GL_TEXTURE_2D, textures.at(unit));
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RED, planeWidth, planeHeight, 0, GL_RED, GL_UNSIGNED_BYTE, pixels);
    glUniform1i(samplerLocation, static_cast<GLint>(unit));
}
