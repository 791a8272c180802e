#include "tests/support/framecase.h"
#include "widgets/frameshadow.h"

#include <QAction>
#include <QGraphicsDropShadowEffect>
#include <QLayout>
#include <QToolButton>

namespace {

constexpr QRect place = FrameCase::place;
constexpr QRect largeScreen(40, 20, 2560, 1440);

/// Counts how often a widget is drawn.
class PaintCounter final : public QObject {
public:
    int drawn = 0;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        drawn += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }
};

bool isUnderAnEffect(const QWidget *widget)
{
    for (; widget; widget = widget->parentWidget()) {
        if (widget->graphicsEffect())
            return true;
    }
    return false;
}

bool showsRestore(const FrameCase &frame)
{
    return !frame.part("restoreButton")->isHidden() && frame.part("maximizeButton")->isHidden();
}

bool showsMaximize(const FrameCase &frame)
{
    return frame.part("restoreButton")->isHidden() && !frame.part("maximizeButton")->isHidden();
}

bool systemHasMaximized(const FrameCase &frame)
{
    return frame.window->windowHandle()->windowStates().testFlag(Qt::WindowMaximized);
}

void doubleClick(const FrameCase &frame)
{
    QTest::mouseDClick(frame.part("windowTitlebar"), Qt::LeftButton, {}, QPoint(300, 30));
}

void maximizeBy(const QString &way, FrameCase &frame)
{
    if (way == QStringLiteral("button"))
        QTest::mouseClick(frame.part("maximizeButton"), Qt::LeftButton);
    else if (way == QStringLiteral("start"))
        frame.window->maximizeOrCenter();
    else
        doubleClick(frame);
}

} // namespace

class TestFrameStates final : public TestBase {
    Q_OBJECT

private slots:
    void maximizes_data();
    void maximizes();
    void centresOnALargeScreen_data();
    void centresOnALargeScreen();
    void theCompositorChoosesTheSize();
    void bordersRestWhileMaximized();
    void aMaximizedWindowCanBeDragged();
    void minimizes();
    void minimizedWindowsComeBackMaximized_data();
    void minimizedWindowsComeBackMaximized();
    void applicationStateAppliesTheMaximumAgain();
    void applicationStateLeavesOtherWindows();
    void applicationStateDoesNotReenter();
    void stateChangesFromOutside();
    void shadows();
    void shadowsFollowTheActivation();
    void noEffectIsOverTheContent();
    void theContentDrawsNoShadow();
};

void TestFrameStates::maximizes_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("button") << QStringLiteral("button");
    QTest::newRow("double click") << QStringLiteral("double click");
    QTest::newRow("start") << QStringLiteral("start");
}

void TestFrameStates::maximizes()
{
    QFETCH(QString, way);
    FrameCase frame(systemOnScreen(QRect(0, 0, 1920, 1080)));
    QVERIFY(frame.isThere);
    maximizeBy(way, frame);
    QVERIFY(frame.window->isMaximized());
    QVERIFY(systemHasMaximized(frame));
    QVERIFY(showsRestore(frame));
    QCOMPARE(frame.window->layout()->contentsMargins(), QMargins());
    QCoreApplication::processEvents();
    QVERIFY(frame.window->isMaximized());

    if (way == QStringLiteral("button"))
        QTest::mouseClick(frame.part("restoreButton"), Qt::LeftButton);
    else
        doubleClick(frame);
    QVERIFY(!frame.window->isMaximized());
    QVERIFY(!systemHasMaximized(frame));
    QVERIFY(showsMaximize(frame));
    QVERIFY(frame.window->isVisible());
    QTRY_COMPARE(frame.window->geometry(), place);
}

void TestFrameStates::centresOnALargeScreen_data()
{
    maximizes_data();
}

void TestFrameStates::centresOnALargeScreen()
{
#ifdef Q_OS_WIN
    QSKIP("Windows keeps windows as small as the screen, which is 1280 x 1024 here");
#endif
    QFETCH(QString, way);
    FrameCase frame(systemOnScreen(largeScreen));
    QVERIFY(frame.isThere);
    maximizeBy(way, frame);
    for (int turn = 0; turn < 3; ++turn) {
        QCOMPARE(frame.window->geometry(), QRect(360, 200, 1920, 1080));
        QVERIFY(frame.window->isMaximized());
        QVERIFY(showsRestore(frame));
        QCOMPARE(frame.window->layout()->contentsMargins(), QMargins());
        QTest::qWait(20); // what the window system has to say
    }
    frame.window->on_maximizeButton_clicked(); // once more: the way back stays known
    if (way == QStringLiteral("button"))
        QTest::mouseClick(frame.part("restoreButton"), Qt::LeftButton);
    else
        doubleClick(frame);
    QVERIFY(!frame.window->isMaximized());
    QVERIFY(showsMaximize(frame));
    QTRY_COMPARE(frame.window->geometry(), place);
}

/// Where the program cannot place its windows.
void TestFrameStates::theCompositorChoosesTheSize()
{
    WindowSystem system = systemOnScreen(largeScreen);
    system.placesOwnWindows = false;
    FrameCase frame(system);
    QVERIFY(frame.isThere);
    frame.window->maximizeOrCenter();
    QVERIFY(frame.window->isMaximized());
    QVERIFY(systemHasMaximized(frame));
    frame.window->on_restoreButton_clicked();
    QVERIFY(!frame.window->isMaximized());
    QVERIFY(!systemHasMaximized(frame));
}

void TestFrameStates::bordersRestWhileMaximized()
{
    FrameCase frame(systemOnScreen(QRect(0, 0, 1920, 1080)));
    QVERIFY(frame.isThere);
    frame.window->maximizeOrCenter();
    QCoreApplication::processEvents();
    const QRect maximized = frame.window->geometry();
    const QPoint inBorder = maximized.bottomLeft() + QPoint(5, -100);
    frame.hover(inBorder);
    QCOMPARE(frame.cursor(), Qt::ArrowCursor);
    frame.press(inBorder);
    QCOMPARE(frame.cursor(), Qt::ArrowCursor);
    frame.drag(inBorder + QPoint(50, 0));
    frame.release(inBorder + QPoint(50, 0));
    QCOMPARE(frame.window->geometry(), maximized);
    QVERIFY(frame.window->isMaximized());
}

void TestFrameStates::aMaximizedWindowCanBeDragged()
{
#ifdef Q_OS_WIN
    QSKIP("Windows keeps windows as small as the screen, which is 1280 x 1024 here");
#endif
    FrameCase frame(systemOnScreen(largeScreen));
    QVERIFY(frame.isThere);
    frame.window->maximizeOrCenter();
    QCoreApplication::processEvents();
    const QRect maximized(360, 200, 1920, 1080);
    const QPoint onBar = maximized.topLeft() + QPoint(500, 5); // a border, were it not maximised
    frame.press(onBar);
    frame.drag(onBar + QPoint(-100, 60));
    QTRY_COMPARE(frame.window->geometry(), maximized.translated(-100, 60));
    frame.drag(onBar + QPoint(-120, 60));
    frame.release(onBar + QPoint(-120, 60));
    QTRY_COMPARE(frame.window->geometry(), maximized.translated(-120, 60));
    QVERIFY(frame.window->isMaximized());
    QVERIFY(showsRestore(frame));
    doubleClick(frame);
    QTRY_COMPARE(frame.window->geometry(), place);
}

void TestFrameStates::minimizes()
{
    FrameCase frame;
    QVERIFY(frame.isThere);
    QTest::mouseClick(frame.part("minimizeButton"), Qt::LeftButton);
    QVERIFY(frame.window->isMinimized());
    QVERIFY(frame.window->windowHandle()->windowStates().testFlag(Qt::WindowMinimized));
    frame.window->setWindowState(Qt::WindowNoState);
    QCoreApplication::processEvents();
    QVERIFY(!frame.window->isMinimized());
    QVERIFY(!frame.window->isMaximized());
    QVERIFY(showsMaximize(frame));
}

void TestFrameStates::minimizedWindowsComeBackMaximized_data()
{
    QTest::addColumn<QRect>("screen");
    QTest::newRow("on a small screen") << QRect(0, 0, 1920, 1080);
#ifndef Q_OS_WIN
    QTest::newRow("on a large screen") << largeScreen;
#endif
}

void TestFrameStates::minimizedWindowsComeBackMaximized()
{
    QFETCH(QRect, screen);
    FrameCase frame(systemOnScreen(screen));
    QVERIFY(frame.isThere);
    frame.window->maximizeOrCenter();
    QCoreApplication::processEvents();
    const QRect maximized = frame.window->geometry();
    QTest::mouseClick(frame.part("minimizeButton"), Qt::LeftButton);
    QCOMPARE(frame.window->windowState() & ~Qt::WindowStates(Qt::WindowActive), Qt::WindowStates(Qt::WindowMinimized));
    QCoreApplication::processEvents();
    frame.window->on_applicationStateChanged(Qt::ApplicationInactive); // must not bring it back
    QVERIFY(frame.window->isMinimized());
    frame.window->setWindowState(Qt::WindowNoState);
    QTRY_VERIFY(frame.window->isMaximized());
    QTRY_COMPARE(frame.window->geometry(), maximized);
    QVERIFY(showsRestore(frame));
    doubleClick(frame);
    QTRY_COMPARE(frame.window->geometry(), place);
}

void TestFrameStates::applicationStateAppliesTheMaximumAgain()
{
#ifdef Q_OS_WIN
    QSKIP("Windows keeps windows as small as the screen, which is 1280 x 1024 here");
#endif
    QRect screen(0, 0, 1920, 1080);
    WindowSystem system = systemOnScreen();
    system.pointerScreen = [&screen] { return screen; };
    FrameCase frame(system);
    QVERIFY(frame.isThere);
    frame.window->maximizeOrCenter();
    QVERIFY(systemHasMaximized(frame));
    screen = largeScreen; // the pointer is on another one now
    emit qGuiApp->applicationStateChanged(Qt::ApplicationActive);
    QCOMPARE(frame.window->geometry(), QRect(360, 200, 1920, 1080));
    QVERIFY(frame.window->isMaximized());
    QVERIFY(showsRestore(frame));
    screen = QRect(0, 0, 1920, 1080);
    emit qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
    QVERIFY(systemHasMaximized(frame));
    QVERIFY(frame.window->isMaximized());
    QVERIFY(showsRestore(frame));

    screen = largeScreen;
    frame.window->showFullScreen();
    frame.window->on_applicationStateChanged(Qt::ApplicationActive);
    QVERIFY(!frame.window->isFullScreen());
    QVERIFY(frame.window->isMaximized());
    QTRY_COMPARE(frame.window->geometry(), QRect(360, 200, 1920, 1080));
}

void TestFrameStates::applicationStateLeavesOtherWindows()
{
    FrameCase frame(systemOnScreen(largeScreen));
    QVERIFY(frame.isThere);
    frame.window->on_applicationStateChanged(Qt::ApplicationActive); // neither maximised nor full screen
    QVERIFY(!frame.window->isMaximized());
    QCOMPARE(frame.window->geometry(), place);
    frame.window->maximizeOrCenter();
    frame.window->hide();
    for (const Qt::ApplicationState state : {Qt::ApplicationInactive, Qt::ApplicationActive})
        frame.window->on_applicationStateChanged(state);
    QVERIFY(!frame.window->isVisible());
}

void TestFrameStates::applicationStateDoesNotReenter()
{
    FramelessWindow *window = nullptr;
    int asked = 0;
    WindowSystem system = systemOnScreen();
    system.pointerScreen = [&] {
        if (window && ++asked < 5) {
            window->on_applicationStateChanged(Qt::ApplicationActive);
            window->on_maximizeButton_clicked();
        }
        return QRect(0, 0, 1920, 1080);
    };
    FrameCase frame(system);
    QVERIFY(frame.isThere);
    window = frame.window;
    window->maximizeOrCenter();
    QCOMPARE(asked, 1);
    window->on_applicationStateChanged(Qt::ApplicationActive);
    QCOMPARE(asked, 2);
}

void TestFrameStates::stateChangesFromOutside()
{
    FrameCase frame;
    QVERIFY(frame.isThere);
    frame.window->setWindowState(Qt::WindowMaximized); // as by a shortcut of the window manager
    QVERIFY(showsRestore(frame));
    frame.window->setWindowState(Qt::WindowNoState);
    QVERIFY(showsMaximize(frame));
}

void TestFrameStates::shadows()
{
    QPalette palette;
    palette.setColor(QPalette::Highlight, QColor(21, 207, 187));
    const QPalette before = QApplication::palette();
    QApplication::setPalette(palette);
    const FramelessWindow window;
    QApplication::setPalette(before);
    const auto effectOf = [&window](const char *name) {
        const auto *const shadow = window.findChild<FrameShadow *>(QLatin1String(name));
        return shadow ? &shadow->effect() : nullptr;
    };
    const auto *const inactive = effectOf("inactiveShadow");
    const auto *const active = effectOf("activeShadow");
    QVERIFY(inactive && active);
    QCOMPARE(inactive->offset(), QPointF(0, 0));
    QCOMPARE(inactive->blurRadius(), 4.0);
    QCOMPARE(inactive->color(), QColor(0, 0, 0, 255));
    QCOMPARE(active->offset(), QPointF(0, 0));
    QCOMPARE(active->blurRadius(), 9.0);
    QCOMPARE(active->color(), QColor(21, 207, 187));
}

void TestFrameStates::shadowsFollowTheActivation()
{
    FrameCase frame;
    QVERIFY(frame.isThere);
    const QWidget *const active = frame.part("activeShadow");
    const QWidget *const inactive = frame.part("inactiveShadow");
    frame.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(frame.window));
    QTRY_VERIFY(active->isVisible());
    QVERIFY(!inactive->isVisible());
    QCOMPARE(active->geometry(), QRect(0, 0, 600, 400));
    QCOMPARE(frame.part("windowFrame")->geometry(), QRect(10, 10, 580, 380));
    QVERIFY(frame.window->testAttribute(Qt::WA_TranslucentBackground));
    QImage shown(frame.window->size(), QImage::Format_ARGB32_Premultiplied);
    shown.fill(Qt::transparent);
    frame.window->render(&shown, QPoint(), QRegion(), QWidget::DrawChildren);
    // It fades away from the frame, the same on each side, and covers all around it.
    for (const QPoint &outwards : {QPoint(-1, 0), QPoint(1, 0), QPoint(0, -1), QPoint(0, 1)}) {
        const QPoint edge =
            outwards.x() ? QPoint(outwards.x() < 0 ? 10 : 589, 200) : QPoint(300, outwards.y() < 0 ? 10 : 389);
        QCOMPARE(shown.pixelColor(edge).alpha(), 255);
        int last = 256;
        for (int step = 1; step <= 10; ++step) {
            const int alpha = shown.pixelColor(edge + step * outwards).alpha();
            QVERIFY(alpha <= last);
            last = alpha;
        }
        QVERIFY(shown.pixelColor(edge + outwards).alpha() > 20);
        QVERIFY(last < 10);
    }

    QWidget other;
    other.setGeometry(800, 600, 200, 100);
    expectWarning(QStringLiteral("XCB error: 8 (BadMatch)"));
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QTRY_VERIFY(inactive->isVisible());
    QVERIFY(!active->isVisible());
    QCOMPARE(inactive->geometry(), QRect(0, 0, 600, 400));

    frame.window->resize(500, 300);
    QTRY_COMPARE(inactive->geometry(), QRect(0, 0, 500, 300));
    frame.window->maximizeOrCenter();
    QVERIFY(!active->isVisible());
    QVERIFY(!inactive->isVisible());
}

void TestFrameStates::noEffectIsOverTheContent()
{
    auto *const content = new QWidget;
    FrameCase frame(systemOnScreen(), content);
    QVERIFY(frame.isThere);
    QVERIFY(!isUnderAnEffect(content));
    QVERIFY(!isUnderAnEffect(frame.part("windowTitlebar")));
    // The shadows are below the frame.
    const QObjectList parts = frame.window->children();
    for (const char *shadow : {"activeShadow", "inactiveShadow"})
        QVERIFY(parts.indexOf(frame.part(shadow)) < parts.indexOf(frame.part("windowFrame")));
}

void TestFrameStates::theContentDrawsNoShadow()
{
    auto *const content = new QWidget;
    FrameCase frame(systemOnScreen(), content);
    QVERIFY(frame.isThere);
    PaintCounter counter;
    for (const char *shadow : {"activeShadow", "inactiveShadow"})
        frame.part(shadow)->installEventFilter(&counter);
    const auto drawn = [&counter] { return counter.drawn; };
    frame.window->update();
    QTRY_VERIFY(drawn() > 0);
    QCoreApplication::processEvents();
    const int before = drawn();
    for (int i = 0; i < 20; ++i) {
        content->update();
        frame.part("windowTitlebar")->update();
        frame.part("windowFrame")->update();
        QTest::qWait(1);
    }
    QCOMPARE(drawn(), before);
    frame.window->resize(620, 420);
    QTRY_VERIFY(drawn() > before);
}

QTEST_MAIN(TestFrameStates)
#include "tst_framestates.moc"
