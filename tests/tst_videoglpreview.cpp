#include "charts/videoglpreview.h"
#include "tests/support/previewframes.h"
#include "tests/support/previewscene.h"
#include "tests/support/previewscreen.h"
#include "tests/support/testbase.h"

#include <QGuiApplication>
#include <QOpenGLContext>
#include <QScreen>
#include <QSignalSpy>
#include <QSurfaceFormat>
#include <QWindow>
#include <QtTest>

#include <memory>

namespace {

constexpr int tolerance = 3; ///< of 255: rounding of the scaler, of the textures and of the shader
const YuvColour red{65, 100, 212};
const YuvColour blue{35, 212, 114};
const QColor grey(32, 32, 32); ///< before anything was drawn

/// Whether this machine makes contexts of OpenGL ES.
bool hasOpenGlEs(const QSurfaceFormat &format)
{
    QOpenGLContext context;
    context.setFormat(format);
    return context.create() && context.isOpenGLES();
}

QColor middleOf(const QImage &image)
{
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

bool isClose(const QColor &left, const QColor &right)
{
    return std::abs(left.red() - right.red()) <= tolerance && std::abs(left.green() - right.green()) <= tolerance
           && std::abs(left.blue() - right.blue()) <= tolerance;
}

} // namespace

class TestVideoGlPreview final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void nothingIsSelectedAtFirst();
    void withoutASourceTheFrameStaysTheCallers();
    void framesOfOtherSourcesAreReleased();
    void onlyOneFrameWaitsForAPaint();
    void theWidgetTakesTheShapeOfTheFrame_data();
    void theWidgetTakesTheShapeOfTheFrame();
    void itFollowsItsContainer();
    void withoutAContainerItKeepsItsSize();
    void thePictureIsRight_data();
    void thePictureIsRight();
    void thePictureReachesTheScreen();
    void theFirstRowIsOnTop();
    void everyPaintIsSignalled();
    void aNarrowOrFlatWidgetDrawsNothing_data();
    void aNarrowOrFlatWidgetDrawsNothing();
    void framesWithoutASizeAreReleased_data();
    void framesWithoutASizeAreReleased();
    void theSourceMayChangeInMidRun();
    void aFrameThatWaitsIsReleasedAtTheEnd();
    void aContextWithoutTheOldFunctionsDrawsNothing_data();
    void aContextWithoutTheOldFunctionsDrawsNothing();
    void anotherWindowAnotherContext();
    void goesAwayOutsideAnyWindow();
    void manySizesOneAfterAnother();
    void noFrameIsLeft();
    void cleanupTestCase() { m_window.reset(); }

private:
    std::unique_ptr<OpenGlWindow> m_window;
};

void TestVideoGlPreview::initTestCase()
{
    QVERIFY2(QGuiApplication::platformName() != QLatin1String("offscreen"), "this test needs a screen");
    m_window = std::make_unique<OpenGlWindow>();
    QVERIFY(showOnScreen(*m_window));
}

void TestVideoGlPreview::nothingIsSelectedAtFirst()
{
    const VideoGlPreview preview;
    QCOMPARE(preview.source(), -1);
    QCOMPARE(preview.updateBehavior(), QOpenGLWidget::PartialUpdate);
    QVERIFY(!preview.canDraw());
}

void TestVideoGlPreview::withoutASourceTheFrameStaysTheCallers()
{
    PreviewScene scene(*m_window, {400, 225});
    scene.preview->setSource(-1);
    const BarPicture picture = plainPicture(64, 36, red);
    std::unique_ptr<uint8_t[]> frame(picture.makeFrame());
    scene.preview->setFrame(0, 0, 64, 36, frame.get());
    scene.preview->setFrame(-1, 0, 64, 36, frame.get());
    QCOMPARE(framesAlive(), 1);
    QCOMPARE(int(frame[1]), red.y);
}

void TestVideoGlPreview::framesOfOtherSourcesAreReleased()
{
    PreviewScene scene(*m_window, {400, 225});
    QVERIFY(scene.show());
    scene.send(plainPicture(64, 48, red), 1);
    QCOMPARE(framesAlive(), 0);
    QCOMPARE(scene.preview->size(), QSize(400, 225)); // and change nothing
    QVERIFY(isClose(middleOf(scene.paint()), grey));
}

void TestVideoGlPreview::onlyOneFrameWaitsForAPaint()
{
    PreviewScene scene(*m_window, {400, 225});
    QVERIFY(scene.show());
    scene.paint();
    scene.send(plainPicture(640, 360, red)); // the shape is new, so this one is painted at once
    scene.paint();
    scene.send(plainPicture(640, 360, blue));
    QCOMPARE(framesAlive(), 1);
    scene.send(plainPicture(320, 360, red));
    QCOMPARE(framesAlive(), 1);
    QCOMPARE(scene.preview->size(), QSize(400, 225));
    QVERIFY(isClose(middleOf(scene.paint()), shownColour(blue)));
    QCOMPARE(framesAlive(), 0);
}

void TestVideoGlPreview::theWidgetTakesTheShapeOfTheFrame_data()
{
    QTest::addColumn<QSize>("container");
    QTest::addColumn<QSize>("frame");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("wide in a square") << QSize(400, 400) << QSize(1920, 1080) << QSize(400, 225);
    QTest::newRow("tall in a square") << QSize(400, 400) << QSize(720, 1280) << QSize(225, 400);
    QTest::newRow("same shape") << QSize(400, 225) << QSize(1920, 1080) << QSize(400, 225);
}

void TestVideoGlPreview::theWidgetTakesTheShapeOfTheFrame()
{
    QFETCH(QSize, container);
    QFETCH(QSize, frame);
    QFETCH(QSize, expected);
    PreviewScene scene(*m_window, container);
    QVERIFY(scene.show());
    scene.send(colourBars(frame.width(), frame.height()));
    QCOMPARE(scene.preview->minimumSize(), expected);
    QCOMPARE(scene.preview->maximumSize(), expected);
    QCOMPARE(scene.preview->size(), expected);
    scene.paint();
}

void TestVideoGlPreview::itFollowsItsContainer()
{
    PreviewScene scene(*m_window, {400, 400});
    QVERIFY(scene.show());
    scene.send(colourBars(160, 90));
    scene.paint();
    QCOMPARE(scene.preview->size(), QSize(400, 225));
    scene.preview->setFixedSize(200, 100); // same shapes: nobody touches this
    scene.send(colourBars(320, 180));
    scene.paint();
    QCOMPARE(scene.preview->size(), QSize(200, 100));
    scene.container.resize(400, 90);
    scene.send(colourBars(320, 180));
    scene.paint();
    QCOMPARE(scene.preview->size(), QSize(160, 90));
    scene.container.resize(600, 450);
    scene.send(colourBars(320, 240));
    scene.paint();
    QCOMPARE(scene.preview->size(), QSize(600, 450));
    scene.container.resize(0, 450); // nothing fits in there
    scene.send(colourBars(320, 180));
    scene.paint();
    QCOMPARE(scene.preview->size(), QSize(600, 450));
}

void TestVideoGlPreview::withoutAContainerItKeepsItsSize()
{
    VideoGlPreview preview;
    preview.resize(300, 300);
    preview.setSource(0);
    const BarPicture picture = colourBars(160, 90);
    preview.setFrame(0, 0, 160, 90, picture.makeFrame());
    QCOMPARE(preview.size(), QSize(300, 300));
    QCOMPARE(preview.maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
    QVERIFY(showOnScreen(preview));
    QCOMPARE(differenceFrom(picture, preview.grabFramebuffer(), tolerance), QString());
}

void TestVideoGlPreview::thePictureIsRight_data()
{
    QTest::addColumn<QSize>("container");
    QTest::addColumn<QSize>("frame");
    QTest::newRow("1080p made small") << QSize(400, 225) << QSize(1920, 1080);
    QTest::newRow("2160p made small") << QSize(400, 225) << QSize(3840, 2160);
    QTest::newRow("720p in a square") << QSize(401, 401) << QSize(1280, 720);
    QTest::newRow("as it is") << QSize(320, 180) << QSize(320, 180);
    QTest::newRow("made large") << QSize(512, 288) << QSize(128, 72);
    QTest::newRow("odd widget height") << QSize(400, 301) << QSize(400, 301);
    QTest::newRow("odd widget width") << QSize(333, 250) << QSize(666, 500);
    QTest::newRow("upright") << QSize(400, 400) << QSize(720, 1280);
    QTest::newRow("odd frame") << QSize(400, 300) << QSize(641, 481);
    QTest::newRow("odd all over") << QSize(331, 201) << QSize(993, 603);
}

void TestVideoGlPreview::thePictureIsRight()
{
    QFETCH(QSize, container);
    QFETCH(QSize, frame);
    PreviewScene scene(*m_window, container);
    QVERIFY(scene.show());
    QVERIFY(scene.preview->canDraw());
    const BarPicture picture = colourBars(frame.width(), frame.height());
    scene.send(picture);
    const QImage image = scene.paint();
    QCOMPARE(image.size(), scene.preview->size());
    const QString difference = differenceFrom(picture, image, tolerance);
    if (!difference.isEmpty())
        image.save(QStringLiteral("videoglpreview-failed.png"));
    QCOMPARE(difference, QString());
    // A paint without a frame leaves the last picture.
    QCOMPARE(differenceFrom(picture, scene.paint(), tolerance), QString());
}

void TestVideoGlPreview::thePictureReachesTheScreen()
{
    PreviewScene scene(*m_window, {400, 400});
    QVERIFY(scene.show());
    const BarPicture picture = colourBars(1920, 1080);
    scene.send(picture);
    scene.preview->update();
    const QPoint place = scene.preview->mapTo(m_window.get(), QPoint(0, 0));
    const QRect part(place, scene.preview->size());
    QImage image;
    const auto difference = [&] {
        image = m_window->screen()
                    ->grabWindow(m_window->winId(), part.x(), part.y(), part.width(), part.height())
                    .toImage();
        return differenceFrom(picture, image, tolerance);
    };
    QTRY_COMPARE(difference(), QString());
    QCOMPARE(image.size(), QSize(400, 225));
    // To look at: the file that this variable names.
    const QString keep = qEnvironmentVariable("VEXA_PREVIEW_PICTURE");
    if (!keep.isEmpty())
        m_window->screen()->grabWindow(m_window->winId()).save(keep);
}

void TestVideoGlPreview::theFirstRowIsOnTop()
{
    PreviewScene scene(*m_window, {320, 180});
    QVERIFY(scene.show());
    BarPicture picture = plainPicture(320, 180, blue);
    picture.stripe = red;
    scene.send(picture);
    const QImage image = scene.paint();
    // Textures repeat: the outermost rows mix with the colours of the other side, but not with its brightness.
    QVERIFY(image.pixelColor(160, 0).red() > image.pixelColor(160, 0).blue());
    QVERIFY(image.pixelColor(160, 179).blue() > image.pixelColor(160, 179).red());
    QVERIFY(isClose(image.pixelColor(160, 2), shownColour(red)));
    QVERIFY(isClose(image.pixelColor(160, 177), shownColour(blue)));
}

void TestVideoGlPreview::everyPaintIsSignalled()
{
    PreviewScene scene(*m_window, {320, 180});
    QVERIFY(scene.show());
    QSignalSpy paints(scene.preview.get(), &VideoGlPreview::finishedToRenderPixmap);
    const QImage before = scene.paint();
    QCOMPARE(paints.count(), 1);
    QVERIFY(isClose(middleOf(before), grey));
    scene.send(plainPicture(320, 180, red));
    const int painted = paints.count(); // a new shape may have painted already
    scene.paint();
    QCOMPARE(paints.count(), painted + 1);
    scene.preview->update();
    QTRY_COMPARE(paints.count(), painted + 2);
}

void TestVideoGlPreview::aNarrowOrFlatWidgetDrawsNothing_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("draws");
    QTest::newRow("ten pixels wide") << QSize(10, 100) << false;
    QTest::newRow("eleven pixels wide") << QSize(11, 100) << true;
    QTest::newRow("one pixel high") << QSize(100, 1) << false;
    QTest::newRow("two pixels high") << QSize(100, 2) << true;
}

void TestVideoGlPreview::aNarrowOrFlatWidgetDrawsNothing()
{
    QFETCH(QSize, size);
    QFETCH(bool, draws);
    PreviewScene scene(*m_window, {400, 225});
    scene.preview->setFixedSize(size);
    QVERIFY(scene.show());
    scene.container.resize(size); // the frame's shape, so that the size stays
    QSignalSpy paints(scene.preview.get(), &VideoGlPreview::finishedToRenderPixmap);
    scene.send(plainPicture(size.width() * 4, size.height() * 4, red));
    const QImage image = scene.paint();
    QCOMPARE(image.size(), size);
    QVERIFY(isClose(middleOf(image), draws ? shownColour(red) : grey));
    QCOMPARE(framesAlive(), 0);
    QCOMPARE(paints.count(), 1);
}

void TestVideoGlPreview::framesWithoutASizeAreReleased_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("no width") << QSize(0, 1080);
    QTest::newRow("no height") << QSize(1920, 0);
    QTest::newRow("nothing") << QSize(0, 0);
    QTest::newRow("negative") << QSize(-1920, -1080);
}

void TestVideoGlPreview::framesWithoutASizeAreReleased()
{
    QFETCH(QSize, size);
    PreviewScene scene(*m_window, {320, 180});
    QVERIFY(scene.show());
    scene.send(plainPicture(320, 180, red));
    scene.paint();
    QSignalSpy paints(scene.preview.get(), &VideoGlPreview::finishedToRenderPixmap);
    scene.preview->setFrame(0, 0, size.width(), size.height(), plainPicture(1, 1, blue).makeFrame());
    QCOMPARE(framesAlive(), 1);
    QCOMPARE(scene.preview->size(), QSize(320, 180));
    QVERIFY(isClose(middleOf(scene.paint()), shownColour(red)));
    QCOMPARE(framesAlive(), 0);
    QCOMPARE(paints.count(), 1);
}

void TestVideoGlPreview::theSourceMayChangeInMidRun()
{
    PreviewScene scene(*m_window, {320, 180});
    QVERIFY(scene.show());
    scene.send(plainPicture(320, 180, red));
    scene.paint();
    scene.preview->setSource(3);
    QCOMPARE(scene.preview->source(), 3);
    scene.send(plainPicture(320, 180, red), 0);
    scene.send(plainPicture(320, 180, blue), 3);
    QCOMPARE(framesAlive(), 1);
    QVERIFY(isClose(middleOf(scene.paint()), shownColour(blue)));
    // Deselected while a frame waits: released and not drawn, the last picture stays.
    scene.send(plainPicture(320, 180, red), 3);
    scene.preview->setSource(-1);
    QCOMPARE(framesAlive(), 1);
    QVERIFY(isClose(middleOf(scene.paint()), shownColour(blue)));
    QCOMPARE(framesAlive(), 0);
}

void TestVideoGlPreview::aFrameThatWaitsIsReleasedAtTheEnd()
{
    PreviewScene scene(*m_window, {320, 180});
    QVERIFY(scene.show());
    scene.send(plainPicture(320, 180, red));
    scene.paint();
    scene.send(plainPicture(320, 180, red));
    QCOMPARE(framesAlive(), 1);
    scene.preview.reset();
    QCOMPARE(framesAlive(), 0);
}

void TestVideoGlPreview::aContextWithoutTheOldFunctionsDrawsNothing_data()
{
    QTest::addColumn<int>("renderableType");
    QTest::addColumn<int>("major");
    QTest::newRow("core profile") << int(QSurfaceFormat::OpenGL) << 3;
    QTest::newRow("OpenGL ES") << int(QSurfaceFormat::OpenGLES) << 2;
}

void TestVideoGlPreview::aContextWithoutTheOldFunctionsDrawsNothing()
{
    QFETCH(int, renderableType);
    QFETCH(int, major);
    const QSurfaceFormat before = QSurfaceFormat::defaultFormat();
    QSurfaceFormat format = before;
    format.setRenderableType(QSurfaceFormat::RenderableType(renderableType));
    format.setVersion(major, major == 3 ? 2 : 0);
    format.setProfile(major == 3 ? QSurfaceFormat::CoreProfile : QSurfaceFormat::NoProfile);
    if (format.renderableType() == QSurfaceFormat::OpenGLES && !hasOpenGlEs(format))
        QSKIP("there is no OpenGL ES");
    QSurfaceFormat::setDefaultFormat(format);
    {
        QWidget window;
        window.resize(640, 480);
        PreviewScene scene(window, {320, 180}, format);
        QSurfaceFormat::setDefaultFormat(before);
        QVERIFY(showOnScreen(window));
        QVERIFY(scene.preview->context());
        const QOpenGLContext &context = *scene.preview->context();
        QVERIFY(context.isOpenGLES() || context.format().profile() == QSurfaceFormat::CoreProfile);
        QVERIFY(!scene.preview->canDraw());
        QSignalSpy paints(scene.preview.get(), &VideoGlPreview::finishedToRenderPixmap);
        for (int i = 1; i <= 3; ++i) {
            const int painted = paints.count();
            scene.send(plainPicture(320, 180, red));
            const QImage image = scene.paint();
            QVERIFY(!isClose(middleOf(image), shownColour(red)));
            QCOMPARE(framesAlive(), 0);
            QVERIFY(paints.count() > painted);
        }
        scene.preview->setFixedSize(200, 100);
        scene.send(plainPicture(320, 180, red));
    }
    QCOMPARE(framesAlive(), 0);
}

void TestVideoGlPreview::anotherWindowAnotherContext()
{
    QWidget other;
    PreviewScene scene(*m_window, {320, 180});
    QVERIFY(scene.show());
    scene.send(plainPicture(320, 180, red));
    QVERIFY(isClose(middleOf(scene.paint()), shownColour(red)));

    other.resize(500, 400);
    scene.preview->setParent(&other);
    scene.preview->show();
    QVERIFY(showOnScreen(other));
    const BarPicture picture = colourBars(320, 180);
    scene.send(picture);
    QCOMPARE(differenceFrom(picture, scene.paint(), tolerance), QString());
    scene.preview.reset();
}

void TestVideoGlPreview::goesAwayOutsideAnyWindow()
{
    PreviewScene scene(*m_window, {320, 180});
    QVERIFY(scene.show());
    scene.send(plainPicture(320, 180, red));
    scene.paint();
    scene.preview->setParent(nullptr);
    QVERIFY(!scene.preview->canDraw());
    scene.send(plainPicture(320, 180, red));
    scene.preview.reset();
}

void TestVideoGlPreview::manySizesOneAfterAnother()
{
    PreviewScene scene(*m_window, {400, 225});
    QVERIFY(scene.show());
    for (int i = 0; i < 40; ++i) {
        scene.container.resize(20 + i * 67 % 380, 12 + i * 41 % 290);
        const BarPicture picture = plainPicture(16 + i * 97 % 600, 2 + i * 53 % 400, i % 2 == 0 ? red : blue);
        scene.send(picture);
        const QImage image = scene.paint();
        if (image.width() >= 11 && image.height() >= 2)
            QVERIFY(isClose(middleOf(image), shownColour(picture.stripe)));
        QCOMPARE(framesAlive(), 0);
    }
}

void TestVideoGlPreview::noFrameIsLeft()
{
    QCOMPARE(framesAlive(), 0);
}

QTEST_MAIN(TestVideoGlPreview)
#include "tst_videoglpreview.moc"
