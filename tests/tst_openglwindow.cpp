#include "charts/openglwindow.h"
#include "tests/support/previewscreen.h"
#include "tests/support/testbase.h"

#include <QGuiApplication>
#include <QLabel>
#include <QOpenGLWidget>
#include <QSignalSpy>
#include <QWindow>
#include <QtTest>

namespace {

/// Counts its paints.
class Figure final : public QLabel {
public:
    using QLabel::QLabel;
    int paints = 0;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        ++paints;
        QLabel::paintEvent(event);
    }
};

/// A window with a figure and, in a container, a widget with OpenGL.
struct Scene {
    Scene()
    {
        window.setGeometry(50, 50, 600, 400);
        figure.setGeometry(10, 10, 200, 30);
        container.setGeometry(100, 100, 400, 250);
        openGl.setGeometry(0, 0, 400, 250);
    }
    /// On the screen, with all that it paints at first.
    bool show()
    {
        QSignalSpy swaps(&openGl, &QOpenGLWidget::frameSwapped);
        if (!showOnScreen(window) || (swaps.isEmpty() && !swaps.wait()))
            return false;
        while (swaps.wait(100)) {
        }
        return true;
    }

    QWidget window;
    Figure figure{&window};
    QWidget container{&window};
    QOpenGLWidget openGl{&container};
};

bool hasWindowsInWindows()
{
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

} // namespace

class TestOpenGlWindow final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void onlyTheWidgetHasIt();
    void figuresAreDrawnWithoutOpenGl();
    void aWindowIsLeftAsItIs();
};

void TestOpenGlWindow::initTestCase()
{
    QVERIFY2(QGuiApplication::platformName() != QLatin1String("offscreen"), "this test needs a screen");
}

void TestOpenGlWindow::onlyTheWidgetHasIt()
{
    Scene scene;
    QCOMPARE(giveOwnWindow(&scene.openGl), hasWindowsInWindows());
    QVERIFY(scene.show());
    QCOMPARE(scene.openGl.internalWinId() != 0, hasWindowsInWindows());
    QVERIFY(!scene.container.internalWinId() && !scene.figure.internalWinId());
    if (!hasWindowsInWindows())
        return;
    const QWindow &own = *scene.openGl.windowHandle();
    QCOMPARE(own.parent(), scene.window.windowHandle());
    QCOMPARE(own.geometry(), QRect(100, 100, 400, 250));
    QVERIFY(own.flags().testFlag(Qt::WindowTransparentForInput));
}

void TestOpenGlWindow::figuresAreDrawnWithoutOpenGl()
{
    if (!hasWindowsInWindows())
        QSKIP("this screen has no windows in windows");
    for (const bool isOwn : {false, true}) {
        Scene scene;
        QCOMPARE(isOwn && giveOwnWindow(&scene.openGl), isOwn);
        QVERIFY(scene.show());
        QSignalSpy swaps(&scene.openGl, &QOpenGLWidget::frameSwapped);
        for (int i = 1; i <= 5; ++i) {
            const int before = scene.figure.paints;
            scene.figure.setText(QString::number(i));
            QTRY_VERIFY(scene.figure.paints > before);
        }
        QCOMPARE(swaps.isEmpty(), isOwn);
        scene.openGl.update();
        QVERIFY(!swaps.isEmpty() || swaps.wait());
    }
}

void TestOpenGlWindow::aWindowIsLeftAsItIs()
{
    QOpenGLWidget alone;
    QVERIFY(!giveOwnWindow(&alone));
    QVERIFY(!alone.testAttribute(Qt::WA_NativeWindow));
}

QTEST_MAIN(TestOpenGlWindow)
#include "tst_openglwindow.moc"
