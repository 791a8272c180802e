#include "mainwindow/previewwarmup.h"
#include "tests/support/previewframes.h"
#include "tests/support/previewscene.h"
#include "tests/support/previewscreen.h"
#include "tests/support/testbase.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QTimer>
#include <QWindow>
#include <QtTest>

#include <memory>

namespace {

constexpr int tolerance = 3; ///< of 255
const YuvColour red{65, 100, 212};
const QColor grey(32, 32, 32);

bool isClose(const QColor &left, const QColor &right)
{
    return std::abs(left.red() - right.red()) <= tolerance && std::abs(left.green() - right.green()) <= tolerance
           && std::abs(left.blue() - right.blue()) <= tolerance;
}

QColor middleOf(const QImage &image)
{
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

/// Ends an event loop when a widget gets a child.
class ChildWatch final : public QObject {
public:
    explicit ChildWatch(QWidget *parent) { parent->installEventFilter(this); }

    bool wait()
    {
        QTimer::singleShot(10000, &m_loop, [this] { m_loop.exit(1); });
        return m_loop.exec() == 0;
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::ChildAdded)
            m_loop.exit(0);
        return QObject::eventFilter(watched, event);
    }

private:
    QEventLoop m_loop;
};

} // namespace

class TestPreviewWarmUp final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void openGlIsReadyAndNothingIsSeen();
    void theFirstFrameIsAsEver();
    void aShownPreviewIsLeftAlone();
    void aTestEndsIt();
    void aWindowThatComesLateIsWaitedFor();
    void mayGoInMidRun();
    void noFrameIsLeft() { QCOMPARE(framesAlive(), 0); }
    void cleanupTestCase() { m_window.reset(); }

private:
    std::unique_ptr<QWidget> m_window;
};

void TestPreviewWarmUp::initTestCase()
{
    QVERIFY2(QGuiApplication::platformName() != QLatin1String("offscreen"), "this test needs a screen");
    m_window = std::make_unique<OpenGlWindow>();
    QVERIFY(showOnScreen(*m_window));
}

void TestPreviewWarmUp::openGlIsReadyAndNothingIsSeen()
{
    PreviewScene scene(*m_window, {320, 180});
    QSignalSpy paints(scene.preview.get(), &VideoGlPreview::finishedToRenderPixmap);
    const int widgets = m_window->findChildren<QOpenGLWidget *>().size();
    const auto onScreen = [this] { return m_window->screen()->grabWindow(m_window->winId()).toImage(); };
    const QImage before = onScreen();
    PreviewWarmUp warmUp(scene.preview.get(), [] { return false; });
    QSignalSpy finished(&warmUp, &PreviewWarmUp::finished);
    warmUp.start();
    QVERIFY(!scene.preview->canDraw()); // it is not for the start of the window
    while (finished.isEmpty()) {
        QTest::qWait(10);
        QCOMPARE(onScreen(), before);
    }
    QCOMPARE(finished.takeFirst(), QVariantList{true});
    QVERIFY(scene.preview->canDraw());
    QVERIFY(!scene.preview->isVisible());
    QCOMPARE(scene.preview->source(), 0);
    QCOMPARE(scene.preview->size(), QSize(320, 180));
    QCOMPARE(m_window->findChildren<QOpenGLWidget *>().size(), widgets);
    const QList<QWidget *> children = m_window->findChildren<QWidget *>();
    for (const QWidget *child : children)
        QVERIFY(!child->internalWinId() || child == scene.preview.get());
}

void TestPreviewWarmUp::theFirstFrameIsAsEver()
{
    PreviewScene scene(*m_window, {320, 180});
    scene.preview->warmUp();
    QVERIFY(scene.preview->canDraw());
    scene.preview->warmUp();
    QVERIFY(scene.show());
    QVERIFY(isClose(middleOf(scene.paint()), grey));
    scene.send(plainPicture(640, 360, red));
    QVERIFY(isClose(middleOf(scene.paint()), shownColour(red)));
}

void TestPreviewWarmUp::aShownPreviewIsLeftAlone()
{
    PreviewScene scene(*m_window, {320, 180});
    QVERIFY(scene.show());
    scene.send(plainPicture(640, 360, red));
    QVERIFY(isClose(middleOf(scene.paint()), shownColour(red)));
    scene.preview->warmUp();
    QVERIFY(isClose(middleOf(scene.paint()), shownColour(red)));
}

void TestPreviewWarmUp::aTestEndsIt()
{
    PreviewScene scene(*m_window, {320, 180});
    PreviewWarmUp warmUp(scene.preview.get(), [] { return true; });
    QSignalSpy finished(&warmUp, &PreviewWarmUp::finished);
    warmUp.start();
    QVERIFY(finished.wait());
    QCOMPARE(finished.takeFirst(), QVariantList{false});
    QVERIFY(!scene.preview->canDraw());
}

void TestPreviewWarmUp::aWindowThatComesLateIsWaitedFor()
{
    PreviewScene scene(*m_window, {320, 180});
    m_window->hide();
    PreviewWarmUp warmUp(scene.preview.get(), [] { return false; });
    QSignalSpy finished(&warmUp, &PreviewWarmUp::finished);
    warmUp.start();
    QVERIFY(!finished.wait(1000));
    QVERIFY(!scene.preview->canDraw());
    QVERIFY(showOnScreen(*m_window));
    QVERIFY(finished.wait());
    QCOMPARE(finished.takeFirst(), QVariantList{true});
}

void TestPreviewWarmUp::mayGoInMidRun()
{
    PreviewScene scene(*m_window, {320, 180});
    const int widgets = m_window->findChildren<QOpenGLWidget *>().size();
    auto warmUp = std::make_unique<PreviewWarmUp>(scene.preview.get(), [] { return false; });
    QSignalSpy finished(warmUp.get(), &PreviewWarmUp::finished);
    ChildWatch patch(m_window.get());
    warmUp->start();
    QVERIFY(patch.wait());
    QVERIFY(finished.isEmpty());
    QCOMPARE(m_window->findChildren<QOpenGLWidget *>().size(), widgets + 1);
    warmUp.reset();
    QCOMPARE(m_window->findChildren<QOpenGLWidget *>().size(), widgets);
}

QTEST_MAIN(TestPreviewWarmUp)
#include "tst_previewwarmup.moc"
