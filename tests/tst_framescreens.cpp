#include "resources/vexaresources.h"
#include "tests/support/testbase.h"
#include "widgets/framelesswindow.h"

#include <QApplication>
#include <QPointer>
#include <QScreen>
#include <QWindow>
#include <QtTest>

/// The window on a screen of the size that is named in the environment, with the window system that is there.
class TestFrameScreens final : public TestBase {
    Q_OBJECT

private slots:
    void startsAndMaximizes();
};

void TestFrameScreens::startsAndMaximizes()
{
    const QStringList size = qEnvironmentVariable("VEXA_TEST_SCREEN").split(QLatin1Char('x'));
    QCOMPARE(size.size(), 2);
    const QSize screen(size.at(0).toInt(), size.at(1).toInt());
    QCOMPARE(QGuiApplication::primaryScreen()->size(), screen);
    const bool isLarge = screen == QSize(2560, 1440);
    QVERIFY(isLarge || screen == QSize(1920, 1080));

    initVexaResources();
    auto *const content = new QWidget;
    content->resize(1752, 968);
    const QPointer<FramelessWindow> window(new FramelessWindow);
    window->setContent(content);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window));
    const QRect normal = window->geometry();
    QCOMPARE(normal.size(), QSize(1752 + 30, 968 + 80)); // borders and title bar around the content
    QVERIFY(QRect(QPoint(0, 0), screen).contains(normal));

    window->maximizeOrCenter();
    QVERIFY(window->isMaximized());
    // In the middle it is the window's own affair; else the window system's, and there is no window manager here.
    QCOMPARE(window->windowHandle()->windowStates().testFlag(Qt::WindowMaximized), !isLarge);
    QTRY_COMPARE(window->geometry(), isLarge ? QRect(320, 180, 1920, 1080) : normal);
    QTest::mouseDClick(window->findChild<QWidget *>(QStringLiteral("windowTitlebar")), Qt::LeftButton, {},
                       QPoint(500, 25));
    QVERIFY(!window->isMaximized());
    QTRY_COMPARE(window->geometry(), normal);
    window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!window);
}

QTEST_MAIN(TestFrameScreens)
#include "tst_framescreens.moc"
