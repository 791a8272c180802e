#include "tests/support/framecase.h"
#include "widgets/windowdragger.h"

#include <QDialog>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QToolButton>

namespace {

constexpr QRect place = FrameCase::place; // columns 100 to 699, rows 100 to 499

/// Counts the mouse events that reach it.
class Listener final : public QWidget {
public:
    using QWidget::QWidget;
    int presses = 0;
    int moves = 0;
    int releases = 0;

protected:
    void mousePressEvent(QMouseEvent *) override { ++presses; }
    void mouseMoveEvent(QMouseEvent *) override { ++moves; }
    void mouseReleaseEvent(QMouseEvent *) override { ++releases; }
};

QString withoutSpace(QString text)
{
    return text.remove(QLatin1Char('\n')).remove(QLatin1Char('\t')).remove(QLatin1Char(' '));
}

/// How many pixels of a picture are not of the colour of its first one.
int drawnPixels(const QImage &picture, const QRect &part)
{
    int count = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x)
            count += picture.pixel(x, y) != picture.pixel(0, 0) ? 1 : 0;
    }
    return count;
}

} // namespace

class TestFramelessWindow final : public TestBase {
    Q_OBJECT

private slots:
    void signalsAndSlots();
    void flagsAndAttributes();
    void form_data();
    void form();
    void buttons_data();
    void buttons();
    void titleBar();
    void title();
    void contentFillsTheWindow();
    void borders_data();
    void borders();
    void theInsideIsNoBorder();
    void dragsGoOnOutside();
    void dragsFollowTheStart();
    void impossibleDragsLeaveTheWindow();
    void endOfTheDesktop();
    void eventsArePassedOn();
    void pressesElsewhereAreIgnored();
    void modalDialogsEndADrag();
    void hiddenWindowsIgnoreTheMouse();
    void titleBarMoves();
    void titleBarWithoutAWindow();
    void titleBarLetsGoWhenBlocked();
    void theSystemResizes();
    void theSystemCannotResize();
    void theSystemMoves();
    void nothingIsSeenAfterTheEnd();
};

void TestFramelessWindow::signalsAndSlots()
{
    const QMetaObject &meta = FramelessWindow::staticMetaObject;
    QStringList found;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        found.append(QString::fromLatin1(meta.method(i).methodSignature()));
    QCOMPARE(found,
             (QStringList{QStringLiteral("requestClose()"), QStringLiteral("setWindowTitle(QString)"),
                          QStringLiteral("on_maximizeButton_clicked()"),
                          QStringLiteral("on_applicationStateChanged(Qt::ApplicationState)"),
                          QStringLiteral("onTitle_clicked()"), QStringLiteral("on_minimizeButton_clicked()"),
                          QStringLiteral("on_restoreButton_clicked()"), QStringLiteral("on_closeButton_clicked()"),
                          QStringLiteral("on_windowTitlebar_doubleClicked()")}));
    QCOMPARE(meta.method(meta.methodOffset()).methodType(), QMetaMethod::Signal);
    QVERIFY(WindowDragger::staticMetaObject.indexOfSignal("doubleClicked()") >= 0);
}

void TestFramelessWindow::flagsAndAttributes()
{
    const FrameCase frame;
    QVERIFY(frame.isThere);
    QCOMPARE(frame.window->windowFlags(),
             Qt::Window | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint);
    for (const Qt::WidgetAttribute attribute :
         {Qt::WA_NoSystemBackground, Qt::WA_TranslucentBackground, Qt::WA_DeleteOnClose})
        QVERIFY(frame.window->testAttribute(attribute));
    QCOMPARE(FramelessWindow().minimumSize(), QSize(1280, 720));
}

void TestFramelessWindow::form_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("part");
    QTest::newRow("frame") << QStringLiteral("windowFrame")
                           << QStringLiteral("#windowFrame{background-color:#101010;}");
    QTest::newRow("title bar") << QStringLiteral("windowTitlebar")
                               << QStringLiteral("#windowTitlebar{border:none;height:50px;background:#15cfbb}");
    QTest::newRow("content") << QStringLiteral("windowContent")
                             << QStringLiteral("#windowContent{border:0pxnone#ffffff;}");
    QTest::newRow("logo") << QStringLiteral(
        "btnLogo") << QStringLiteral("border:none;background:none;image:url(:/images/Tessaly-VEXA-new-logo.svg)");
    QTest::newRow("NDI logo") << QStringLiteral("lblLogo")
                              << QStringLiteral("border:none;background:none;image:url(:/images/NDI-logo.png)");
    const QVector<QPair<QString, QString>> pictures{
        {QStringLiteral("minimizeButton"), QStringLiteral("minimiseB")},
        {QStringLiteral("maximizeButton"), QStringLiteral("smaller-window")},
        {QStringLiteral("restoreButton"), QStringLiteral("restore-window")},
        {QStringLiteral("closeButton"), QStringLiteral("quit-vexa")}};
    for (const auto &[button, picture] : pictures) {
        QTest::newRow(qPrintable(button)) << button
                                          << QStringLiteral("border:none;background:none;padding:4px;"
                                                            "image:url(:/images/%1.png)")
                                                 .arg(picture);
        QTest::newRow(qPrintable(button + QStringLiteral(" pointed at")))
            << button << QStringLiteral(":hover{image:url(:/images/%1-hover.png)").arg(picture);
    }
}

void TestFramelessWindow::form()
{
    QFETCH(QString, name);
    QFETCH(QString, part);
    const FramelessWindow window;
    const auto *const widget = window.findChild<QWidget *>(name);
    QVERIFY(widget);
    QVERIFY2(withoutSpace(widget->styleSheet()).contains(part), qPrintable(widget->styleSheet()));
}

void TestFramelessWindow::buttons_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::newRow("minimise") << QStringLiteral("minimizeButton") << QStringLiteral("Minimise");
    QTest::newRow("maximise") << QStringLiteral("maximizeButton") << QStringLiteral("Maximise");
    QTest::newRow("restore") << QStringLiteral("restoreButton") << QStringLiteral("Restore");
    QTest::newRow("close") << QStringLiteral("closeButton") << QStringLiteral("Close");
}

void TestFramelessWindow::buttons()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    const FrameCase frame;
    QVERIFY(frame.isThere);
    auto *const button = frame.window->findChild<QToolButton *>(name);
    QVERIFY(button);
    QCOMPARE(button->toolTip(), text);
    QCOMPARE(button->accessibleName(), text);
    QCOMPARE(button->focusPolicy(), Qt::NoFocus);
    button->show(); // also the one that is hidden now
    QCoreApplication::processEvents();
    QCOMPARE(button->size(), QSize(26, 26));
    // The picture keeps to its 18 x 18 pixels, and is not empty.
    const QRect around = button->geometry();
    const QImage picture = button->parentWidget()->grab(around).toImage().convertToFormat(QImage::Format_RGB32);
    const int inside = drawnPixels(picture, QRect(4, 4, 18, 18));
    QVERIFY(inside > 10);
    QCOMPARE(drawnPixels(picture, picture.rect()), inside);
}

void TestFramelessWindow::titleBar()
{
    const FrameCase frame;
    QVERIFY(frame.isThere);
    const auto *const bar = frame.part<WindowDragger>("windowTitlebar");
    QVERIFY(bar);
    QCOMPARE(bar->height(), 50);
    QCOMPARE(bar->parentWidget()->objectName(), QStringLiteral("windowFrame"));
    QCOMPARE(bar->parentWidget()->parentWidget(), frame.window.data());
    const auto leftOf = [&frame](const char *name) { return frame.part(name)->x(); };
    QVERIFY(leftOf("btnLogo") < leftOf("lblLogo"));
    QVERIFY(leftOf("lblLogo") + 48 < leftOf("minimizeButton"));
    QVERIFY(leftOf("minimizeButton") < leftOf("maximizeButton"));
    QVERIFY(leftOf("maximizeButton") < leftOf("closeButton"));
    QVERIFY(frame.part("restoreButton")->isHidden());
    QVERIFY(!frame.part("maximizeButton")->isHidden());

    // Both logos are drawn.
    QWidget *const whole = frame.part("windowTitlebar");
    const QImage picture = whole->grab().toImage();
    QCOMPARE(picture.pixelColor(whole->width() / 2, 25), QColor(21, 207, 187));
    for (const char *logo : {"btnLogo", "lblLogo"}) {
        const QImage part = whole->grab(frame.part(logo)->geometry()).toImage();
        QVERIFY(drawnPixels(part, part.rect()) > 100);
    }
}

void TestFramelessWindow::title()
{
    FramelessWindow window;
    window.setWindowTitle(QStringLiteral("Tessaly"));
    QCOMPARE(static_cast<QWidget &>(window).windowTitle(), QStringLiteral("Tessaly"));
    window.onTitle_clicked();
    QCOMPARE(window.windowTitle(), QStringLiteral("Tessaly"));
}

void TestFramelessWindow::contentFillsTheWindow()
{
    auto *const content = new QWidget;
    content->resize(1400, 800);
    FramelessWindow window(systemOnScreen(QRect(0, 0, 4000, 3000)));
    window.setContent(content);
    QCOMPARE(content->parentWidget()->objectName(), QStringLiteral("windowContent"));
    QVERIFY(window.width() >= 1280 && window.width() <= 1430);
    window.setMinimumSize(300, 200);
    window.resize(1000, 700);
    expectWarning(QStringLiteral("EnableNonClientDpiScaling() failed")); // of Wine
    window.show();
    QVERIFY(content->isVisible());
    // No control of the content lies in the border.
    const QRect inside(content->mapTo(&window, QPoint(0, 0)), content->size());
    QCOMPARE(inside, QRect(15, 65, 970, 620));
}

void TestFramelessWindow::borders_data()
{
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<QRect>("expected"); // 40 to the right and 30 down
    const auto row = [](const char *name, QPoint from, Qt::CursorShape cursor, QRect expected) {
        QTest::newRow(name) << from << int(cursor) << expected;
    };
    row("top left", {105, 105}, Qt::SizeFDiagCursor, {145, 135, 555, 365});
    row("top left, last pixel", {114, 114}, Qt::SizeFDiagCursor, {154, 144, 546, 356});
    row("top right", {695, 104}, Qt::SizeBDiagCursor, {100, 134, 635, 366});
    row("bottom left", {103, 495}, Qt::SizeBDiagCursor, {143, 100, 557, 425});
    row("top", {400, 103}, Qt::SizeVerCursor, {100, 133, 600, 367});
    row("top, on the title bar", {400, 113}, Qt::SizeVerCursor, {100, 143, 600, 357});
    row("left", {103, 300}, Qt::SizeHorCursor, {143, 100, 557, 400});
    row("left, on the title bar", {112, 130}, Qt::SizeHorCursor, {152, 100, 548, 400});
    row("right", {695, 300}, Qt::SizeHorCursor, {100, 100, 635, 400});
    row("bottom", {400, 495}, Qt::SizeVerCursor, {100, 100, 600, 425});
    row("bottom right", {698, 498}, Qt::SizeHorCursor, {100, 100, 638, 400});
    row("inside the content", {400, 300}, Qt::ArrowCursor, place);
}

void TestFramelessWindow::borders()
{
    QFETCH(QPoint, from);
    QFETCH(int, cursor);
    QFETCH(QRect, expected);
    FrameCase frame;
    QVERIFY(frame.isThere);
    frame.hover(from);
    QCOMPARE(int(frame.cursor()), cursor);
    frame.hover(QPoint(400, 300));
    QCOMPARE(frame.cursor(), Qt::ArrowCursor);
    QCOMPARE(frame.window->geometry(), place);
    frame.press(from);
    QCOMPARE(int(frame.cursor()), cursor);
    frame.drag(from + QPoint(10, 10));
    frame.drag(from + QPoint(40, 30));
    QTRY_COMPARE(frame.window->geometry(), expected);
    QCOMPARE(int(frame.cursor()), cursor);
    frame.release(from + QPoint(40, 30));
    QCOMPARE(frame.cursor(), Qt::ArrowCursor);
    const QRect after = frame.window->geometry();
    frame.hover(QPoint(400, 300));
    QCOMPARE(frame.window->geometry(), after);
    QCOMPARE(frame.cursor(), Qt::ArrowCursor);
}

void TestFramelessWindow::theInsideIsNoBorder()
{
    FrameCase frame;
    QVERIFY(frame.isThere);
    frame.press(QPoint(400, 300));
    frame.drag(QPoint(103, 300)); // over the left edge: the press was elsewhere
    QCOMPARE(frame.cursor(), Qt::ArrowCursor);
    frame.drag(QPoint(50, 300));
    frame.release(QPoint(50, 300));
    QCOMPARE(frame.window->geometry(), place);
}

void TestFramelessWindow::dragsGoOnOutside()
{
    FrameCase frame;
    QVERIFY(frame.isThere);
    frame.press(QPoint(695, 300));
    frame.drag(QPoint(900, 800)); // the mouse is outside now, and its events still come to the window
    QTRY_COMPARE(frame.window->geometry(), QRect(100, 100, 800, 400));
    frame.drag(QPoint(600, -50));
    QTRY_COMPARE(frame.window->geometry(), QRect(100, 100, 500, 400));
    frame.release(QPoint(600, -50));
    frame.drag(QPoint(650, 300)); // released
    QCOMPARE(frame.window->geometry(), QRect(100, 100, 500, 400));
}

/// Each position of the mouse counts from where the drag began, not from the one before.
void TestFramelessWindow::dragsFollowTheStart()
{
    FrameCase frame;
    QVERIFY(frame.isThere);
    frame.press(QPoint(102, 498));
    frame.drag(QPoint(60, 550));
    frame.drag(QPoint(0, 480)); // refused
    frame.drag(QPoint(90, 520));
    QTRY_COMPARE(frame.window->geometry(), QRect(90, 100, 610, 420));
    frame.release(QPoint(90, 520));
    frame.press(QPoint(400, 102)); // the next drag begins with the new geometry
    frame.drag(QPoint(400, 80));
    frame.release(QPoint(400, 80));
    QTRY_COMPARE(frame.window->geometry(), QRect(90, 80, 610, 440));
}

void TestFramelessWindow::impossibleDragsLeaveTheWindow()
{
    FrameCase frame;
    QVERIFY(frame.isThere);
    const QVector<QPair<QPoint, QPoint>> drags{{{103, 300}, {401, 300}},  // narrower than the window may be
                                               {{103, 300}, {800, 300}},  // past the opposite edge
                                               {{103, 300}, {0, 300}},    // off the screen
                                               {{400, 103}, {400, 301}},  // lower than the window may be
                                               {{400, 103}, {400, 700}},  // past the opposite edge
                                               {{400, 103}, {400, 0}},    // off the screen
                                               {{695, 300}, {90, 300}},   // past the opposite edge
                                               {{400, 495}, {400, 290}},  // lower than the window may be
                                               {{105, 105}, {600, 600}},  // turned over
                                               {{105, 495}, {110, 90}},   // turned over
                                               {{695, 105}, {399, 105}}}; // narrower than the window may be
    for (const auto &[from, to] : drags) {
        frame.press(from);
        frame.drag(to);
        frame.release(to);
        QCOMPARE(frame.window->geometry(), place);
    }
}

void TestFramelessWindow::endOfTheDesktop()
{
    FrameCase frame(systemOnScreen(QRect(0, 0, 1280, 1024), QSize(450, 330)));
    QVERIFY(frame.isThere);
    frame.press(QPoint(400, 103));
    frame.drag(QPoint(400, 280));
    QTest::qWait(0);
    QCOMPARE(frame.window->geometry(), place);
    frame.drag(QPoint(400, 279));
    QTRY_COMPARE(frame.window->geometry(), QRect(100, 279, 600, 221));
    frame.release(QPoint(400, 279));
    frame.press(QPoint(103, 400));
    frame.drag(QPoint(400, 400));
    QCOMPARE(frame.window->geometry(), QRect(100, 279, 600, 221));
    frame.drag(QPoint(399, 400));
    QTRY_COMPARE(frame.window->geometry(), QRect(399, 279, 301, 221));
    frame.release(QPoint(399, 400));
}

void TestFramelessWindow::eventsArePassedOn()
{
    auto *const listener = new Listener;
    listener->setMouseTracking(true);
    FrameCase frame(systemOnScreen(), listener);
    QVERIFY(frame.isThere);
    frame.hover(QPoint(400, 300));
    frame.press(QPoint(400, 300));
    frame.drag(QPoint(410, 300));
    frame.release(QPoint(410, 300));
    QCOMPARE(listener->presses, 1);
    QCOMPARE(listener->moves, 2);
    QCOMPARE(listener->releases, 1);
    QCOMPARE(frame.window->geometry(), place);
}

void TestFramelessWindow::pressesElsewhereAreIgnored()
{
    FrameCase frame;
    QVERIFY(frame.isThere);
    QWidget other;
    other.setGeometry(50, 50, 200, 200);
    QDialog dialog(frame.window);
    dialog.setGeometry(80, 80, 200, 200);
    auto *const button = new QPushButton(&dialog);
    // Each lies over the corner of the window, and none is the window.
    for (QWidget *receiver : {&other, static_cast<QWidget *>(&dialog), static_cast<QWidget *>(button)}) {
        sendMouse(receiver, QEvent::MouseButtonPress, QPoint(103, 103));
        sendMouse(receiver, QEvent::MouseMove, QPoint(130, 130));
        sendMouse(receiver, QEvent::MouseButtonRelease, QPoint(130, 130));
        QCOMPARE(frame.window->geometry(), place);
    }
    // A widget of the window's own counts.
    sendMouse(frame.part("windowFrame"), QEvent::MouseButtonPress, QPoint(103, 300));
    sendMouse(frame.part("windowFrame"), QEvent::MouseMove, QPoint(130, 300));
    sendMouse(frame.part("windowFrame"), QEvent::MouseButtonRelease, QPoint(130, 300));
    QTRY_COMPARE(frame.window->geometry(), QRect(130, 100, 570, 400));
}

void TestFramelessWindow::modalDialogsEndADrag()
{
    expectWarning(QStringLiteral("XCB error: 8 (BadMatch)")); // a focus for a window that is not there yet
    FrameCase frame;
    QVERIFY(frame.isThere);
    frame.press(QPoint(695, 300));
    QCOMPARE(frame.cursor(), Qt::SizeHorCursor);
    QDialog dialog(frame.window);
    dialog.setModal(true);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(frame.cursor(), Qt::ArrowCursor);
    sendMouse(&dialog, QEvent::MouseMove, QPoint(800, 300)); // the dialog's mouse is no drag
    QCOMPARE(frame.window->geometry(), place);
    frame.press(QPoint(695, 300)); // blocked
    frame.drag(QPoint(800, 300));
    QCOMPARE(frame.window->geometry(), place);
    dialog.close();
    frame.press(QPoint(695, 300));
    frame.drag(QPoint(720, 300));
    QTRY_COMPARE(frame.window->geometry(), QRect(100, 100, 620, 400));
    frame.release(QPoint(720, 300));
}

void TestFramelessWindow::hiddenWindowsIgnoreTheMouse()
{
    FrameCase frame;
    QVERIFY(frame.isThere);
    frame.press(QPoint(695, 300));
    frame.window->hide();
    sendMouse(frame.window, QEvent::MouseMove, QPoint(800, 300));
    QCOMPARE(frame.window->geometry(), place);
    sendMouse(frame.window, QEvent::MouseButtonPress, QPoint(695, 300));
    QCOMPARE(frame.cursor(), Qt::ArrowCursor);
    sendMouse(frame.window, QEvent::MouseMove, QPoint(800, 300));
    QCOMPARE(frame.window->geometry(), place);
}

void TestFramelessWindow::titleBarMoves()
{
    FrameCase frame;
    QVERIFY(frame.isThere);
    // Between the parts of the bar, and on its logo.
    for (const QPoint &from : {QPoint(400, 130), QPoint(180, 130)}) {
        frame.press(from);
        frame.drag(from + QPoint(5, 5));
        frame.drag(from + QPoint(40, -30));
        QTRY_COMPARE(frame.window->geometry(), place.translated(40, -30));
        frame.drag(from);
        QTRY_COMPARE(frame.window->geometry(), place);
        frame.release(from);
        frame.hover(from + QPoint(20, 20));
        QCOMPARE(frame.window->geometry(), place);
    }
    // Between the buttons, too, but not on them.
    frame.press(frame.part("minimizeButton")->mapToGlobal(QPoint(13, 13)));
    frame.drag(QPoint(500, 200));
    frame.release(QPoint(500, 200));
    QCOMPARE(frame.window->geometry(), place);
    QVERIFY(!frame.window->isMinimized()); // released elsewhere
}

void TestFramelessWindow::titleBarWithoutAWindow()
{
    WindowDragger alone;
    QWidget parent;
    WindowDragger child(&parent);
    for (WindowDragger *bar : {&alone, &child}) {
        for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseMove, QEvent::MouseButtonRelease})
            sendMouse(bar, type, QPoint(10, 10));
        const QSignalSpy doubleClicks(bar, &WindowDragger::doubleClicked);
        sendMouse(bar, QEvent::MouseButtonDblClick, QPoint(10, 10));
        QCOMPARE(doubleClicks.count(), 1);
    }
    QCOMPARE(parent.pos(), QPoint(0, 0));
}

void TestFramelessWindow::titleBarLetsGoWhenBlocked()
{
    expectWarning(QStringLiteral("XCB error: 8 (BadMatch)"));
    FrameCase frame;
    QVERIFY(frame.isThere);
    frame.press(QPoint(400, 130));
    QDialog dialog(frame.window);
    dialog.setModal(true);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    sendMouse(frame.part("windowTitlebar"), QEvent::MouseMove, QPoint(450, 180));
    QCOMPARE(frame.window->geometry(), place);
}

void TestFramelessWindow::theSystemResizes()
{
    WindowSystem system = systemOnScreen();
    QVector<Qt::Edges> asked;
    const QWindow *askedWindow = nullptr;
    system.startResize = [&](QWindow &window, Qt::Edges edges) {
        askedWindow = &window;
        asked.append(edges);
        return true;
    };
    FrameCase frame(system);
    QVERIFY(frame.isThere);
    frame.press(QPoint(105, 105));
    QCOMPARE(asked, QVector<Qt::Edges>{Qt::TopEdge | Qt::LeftEdge});
    QCOMPARE(askedWindow, frame.window->windowHandle());
    frame.drag(QPoint(150, 150)); // the release went to the system
    QCOMPARE(frame.window->geometry(), place);
    frame.hover(QPoint(698, 498));
    QCOMPARE(frame.cursor(), Qt::SizeHorCursor);
    frame.press(QPoint(698, 498));
    QCOMPARE(asked.size(), 2);
    QCOMPARE(asked.last(), Qt::Edges(Qt::RightEdge));
    frame.hover(QPoint(400, 300));
    frame.press(QPoint(400, 300)); // no border
    frame.release(QPoint(400, 300));
    QCOMPARE(asked.size(), 2);
    QCOMPARE(frame.window->geometry(), place);
}

void TestFramelessWindow::theSystemCannotResize()
{
    WindowSystem system = systemOnScreen();
    system.startResize = [](QWindow &, Qt::Edges) { return false; };
    FrameCase frame(system);
    QVERIFY(frame.isThere);
    frame.press(QPoint(695, 300));
    frame.drag(QPoint(715, 300));
    QTRY_COMPARE(frame.window->geometry(), QRect(100, 100, 615, 400));
    frame.release(QPoint(715, 300));
}

void TestFramelessWindow::theSystemMoves()
{
    bool canMove = true;
    int asked = 0;
    WindowSystem system = systemOnScreen();
    system.startMove = [&](QWindow &) {
        ++asked;
        return canMove;
    };
    FrameCase frame(system);
    QVERIFY(frame.isThere);
    frame.press(QPoint(400, 130));
    QCOMPARE(asked, 0); // it may become a double click
    frame.drag(QPoint(410, 140));
    frame.drag(QPoint(420, 150));
    QCOMPARE(asked, 1);
    QCOMPARE(frame.window->geometry(), place);
    frame.release(QPoint(420, 150));

    canMove = false;
    frame.press(QPoint(400, 130));
    frame.drag(QPoint(410, 140));
    QTRY_COMPARE(frame.window->geometry(), place.translated(10, 10));
    frame.release(QPoint(410, 140));
}

/// The window sees the events of the whole program, but only as long as it is there.
void TestFramelessWindow::nothingIsSeenAfterTheEnd()
{
    QWidget other;
    auto frame = std::make_unique<FrameCase>();
    QVERIFY(frame->isThere);
    // A child that outlives the form and has mouse events while the window is being taken apart.
    auto *const child = new QWidget(frame->window);
    connect(child, &QObject::destroyed, &other, [&other] {
        for (const QEvent::Type type : {QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
            sendMouse(&other, type, QPoint(103, 103));
    });
    frame.reset();
    sendMouse(&other, QEvent::MouseMove, QPoint(103, 103));
    sendMouse(&other, QEvent::MouseButtonPress, QPoint(103, 103));
    QVERIFY(other.isHidden());
}

QTEST_MAIN(TestFramelessWindow)
#include "tst_framelesswindow.moc"
