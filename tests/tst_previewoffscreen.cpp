#include "charts/previewthread.h"
#include "charts/videoglpreview.h"
#include "tests/support/previewframes.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QtTest>

/// The preview where there is no OpenGL, or none that can be relied on.
class TestPreviewOffscreen final : public TestBase {
    Q_OBJECT

private slots:
    void holdsOneFrameAtMost();
    void pacingStopsSoon();
};

namespace {

/// What Qt says about a platform without OpenGL.
void expectNoOpenGl()
{
    TestBase::expectWarning(QStringLiteral("QOpenGLWidget"));
    TestBase::expectWarning(QStringLiteral("composeAndFlush"));
    TestBase::expectWarning(QStringLiteral("This plugin does not support"));
}

} // namespace

void TestPreviewOffscreen::holdsOneFrameAtMost()
{
    expectNoOpenGl();
    {
        QWidget window;
        window.resize(400, 400);
        VideoGlPreview preview(&window);
        preview.resize(400, 400);
        preview.setSource(0);
        window.show();
        for (int i = 0; i < 10; ++i) {
            const BarPicture picture = colourBars(160 + 16 * (i % 2), 90);
            preview.setFrame(0, 0, picture.width, picture.height, picture.makeFrame());
            preview.update();
            QCoreApplication::processEvents();
            QVERIFY(framesAlive() <= 1);
        }
        preview.setFrame(0, 0, 0, 0, plainPicture(1, 1, {}).makeFrame());
        QVERIFY(framesAlive() <= 1);
    }
    QCOMPARE(framesAlive(), 0);
}

void TestPreviewOffscreen::pacingStopsSoon()
{
    expectNoOpenGl();
    VideoGlPreview preview;
    preview.show();
    PreviewThread pacing;
    pacing.setWidget(&preview);
    pacing.start();
    QTest::qWait(50);
    QElapsedTimer clock;
    clock.start();
    pacing.stop();
    QVERIFY(pacing.wait(20000));
    QVERIFY2(clock.elapsed() <= 100, qPrintable(QString::number(clock.elapsed())));
}

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    TestPreviewOffscreen test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_previewoffscreen.moc"
