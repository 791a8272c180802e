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

/// A window with a figure and, in a container with another widget, one with OpenGL.
struct Scene {
    Scene()
    {
        window.setGeometry(50, 50, 600, 400);
        figure.setGeometry(10, 10, 200, 30);
        container.setGeometry(100, 100, 420, 270);
        sibling.setGeometry(0, 0, 20, 20);
        openGl.setGeometry(20, 20, 400, 250);
    }
    bool show()
    {
        QSignalSpy swaps(&openGl, &QOpenGLWidget::frameSwapped);
        return showOnScreen(window) && (!swaps.isEmpty() || swaps.wait());
    }

    QWidget window;
    Figure figure{&window};
    QWidget container{&window};
    QWidget sibling{&container};
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
    void itIsWhereTheWidgetIs();
    void itGoesIntoAFrame();
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
    QVERIFY(!QCoreApplication::testAttribute(Qt::AA_DontCreateNativeWidgetSiblings));
    QVERIFY(scene.show());
    QCOMPARE(scene.openGl.internalWinId() != 0, hasWindowsInWindows());
    QVERIFY(!scene.container.internalWinId() && !scene.sibling.internalWinId() && !scene.figure.internalWinId());
    QLabel later(&scene.container);
    later.show();
    QVERIFY(!later.internalWinId());
    if (hasWindowsInWindows())
        QVERIFY(scene.openGl.windowHandle()->flags().testFlag(Qt::WindowTransparentForInput));
}

void TestOpenGlWindow::itIsWhereTheWidgetIs()
{
    if (!hasWindowsInWindows())
        QSKIP("this screen has no windows in windows");
    Scene scene;
    QVERIFY(giveOwnWindow(&scene.openGl));
    QVERIFY(scene.show());
    const QWindow &own = *scene.openGl.windowHandle();
    QCOMPARE(own.parent(), scene.window.windowHandle());
    QCOMPARE(own.geometry(), QRect(120, 120, 400, 250));
    QCOMPARE(own.mask(), QRegion());

    scene.container.move(70, 90);
    QCOMPARE(own.geometry(), QRect(90, 110, 400, 250));
    scene.container.resize(220, 120);
    QCOMPARE(own.mask(), QRegion(0, 0, 200, 100));
    scene.container.resize(20, 20);
    QVERIFY(!own.mask().isEmpty() && !own.mask().intersects(scene.openGl.rect()));
    scene.container.resize(500, 300);
    QCOMPARE(own.mask(), QRegion());
    scene.openGl.setGeometry(5, 6, 300, 200);
    QTRY_COMPARE(own.geometry(), QRect(75, 96, 300, 200));

    // The server's answers change nothing.
    QSignalSpy swaps(&scene.openGl, &QOpenGLWidget::frameSwapped);
    scene.openGl.update();
    QVERIFY(!swaps.isEmpty() || swaps.wait());
    QCOMPARE(scene.openGl.geometry(), QRect(5, 6, 300, 200));
    QCOMPARE(own.geometry(), QRect(75, 96, 300, 200));
}

void TestOpenGlWindow::itGoesIntoAFrame()
{
    if (!hasWindowsInWindows())
        QSKIP("this screen has no windows in windows");
    QWidget frame;
    QWidget room(&frame);
    frame.setGeometry(40, 40, 800, 600);
    room.setGeometry(30, 30, 700, 500);
    Scene scene;
    QVERIFY(giveOwnWindow(&scene.openGl));
    scene.window.setParent(&room);
    scene.window.move(1, 2);
    scene.window.show();
    QVERIFY(showOnScreen(frame));
    const QWindow *const own = scene.openGl.windowHandle();
    QVERIFY(own);
    QCOMPARE(own->parent(), frame.windowHandle());
    QCOMPARE(own->geometry(), QRect(151, 152, 400, 250));
    room.move(10, 10);
    QCOMPARE(own->geometry(), QRect(131, 132, 400, 250));
    QVERIFY(!room.internalWinId() && !scene.window.internalWinId());
}

void TestOpenGlWindow::figuresAreDrawnWithoutOpenGl()
{
    if (!hasWindowsInWindows())
        QSKIP("this screen has no windows in windows");
    constexpr int figures = 20; // more than what a window may still be composed for after it was shown
    for (const bool isOwn : {false, true}) {
        Scene scene;
        QCOMPARE(isOwn && giveOwnWindow(&scene.openGl), isOwn);
        QVERIFY(scene.show());
        QSignalSpy swaps(&scene.openGl, &QOpenGLWidget::frameSwapped);
        for (int i = 1; i <= figures; ++i) {
            const int before = scene.figure.paints;
            scene.figure.setText(QString::number(i));
            QTRY_VERIFY(scene.figure.paints > before);
        }
        QCOMPARE(swaps.size() < figures, isOwn);
        const int before = swaps.size();
        scene.openGl.update();
        QTRY_VERIFY(swaps.size() > before);
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
