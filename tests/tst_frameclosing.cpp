#include "tests/support/framecase.h"

#include <QEventLoop>
#include <QSignalSpy>
#include <QTimer>
#include <QToolButton>

namespace {

/// Ends what it has under way in an event loop of its own, as the program's window does.
class Content final : public QWidget {
public:
    explicit Content(QStringList *log) : m_log(log) {}
    ~Content() override { m_log->append(QStringLiteral("content deleted")); }

    void end()
    {
        m_log->append(QStringLiteral("end begins"));
        QEventLoop loop;
        QTimer turns;
        int left = 20;
        // Deferred deletions of others are carried out meanwhile.
        connect(&turns, &QTimer::timeout, &loop, [&] {
            auto *const other = new QObject;
            connect(other, &QObject::destroyed, &loop, [&] {
                if (--left == 0)
                    loop.quit();
            });
            other->deleteLater();
            if (duringTheEnd)
                duringTheEnd();
        });
        turns.start(1);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        m_log->append(QStringLiteral("end done"));
        emit windowTitleChanged(QStringLiteral("done")); // a signal, for whoever ends the program
    }

    std::function<void()> duringTheEnd;

private:
    QStringList *m_log; ///< whose lines tell the order; not this widget's
};

const QStringList wholeEnd{QStringLiteral("end begins"), QStringLiteral("end done"), QStringLiteral("quit"),
                           QStringLiteral("content deleted")};

} // namespace

class TestFrameClosing final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void tellsOnce_data();
    void tellsOnce();
    void isHiddenAtOnce();
    void staysUntilTheContentHasEnded_data();
    void staysUntilTheContentHasEnded();
    void goesWithoutAnEventLoop();
    void receiversMayDeleteIt();
    void theLastWindowIsNotTheEnd();
    void isNotShownAgain();

private:
    /// Runs the program with such a window until its content has ended, and closes it in this way.
    QStringList lifeWith(const std::function<void(FrameCase &)> &closeIt,
                         const std::function<void(FrameCase &)> &during = {});
};

void TestFrameClosing::initTestCase()
{
    QGuiApplication::setQuitOnLastWindowClosed(false); // what the window asks for
}

void TestFrameClosing::tellsOnce_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"close button", "window system", "session", "button and window system", "close"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

void TestFrameClosing::tellsOnce()
{
    QFETCH(QString, way);
    FrameCase frame;
    QVERIFY(frame.isThere);
    const QSignalSpy asked(frame.window.data(), &FramelessWindow::requestClose);
    if (way.contains(QStringLiteral("button")))
        QTest::mouseClick(frame.part("closeButton"), Qt::LeftButton);
    if (way == QStringLiteral("session"))
        QApplication::closeAllWindows();
    if (way == QStringLiteral("close"))
        frame.window->close();
    if (way.contains(QStringLiteral("window system")) && frame.window->windowHandle())
        frame.window->windowHandle()->close();
    QVERIFY(frame.window); // deleted by the event loop
    QVERIFY(frame.window->isHidden());
    QCOMPARE(asked.count(), 1);
    frame.window->close();
    QCOMPARE(asked.count(), 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!frame.window);
}

void TestFrameClosing::isHiddenAtOnce()
{
    FrameCase frame;
    QVERIFY(frame.isThere);
    bool wasVisible = true;
    connect(frame.window, &FramelessWindow::requestClose, this,
            [&] { wasVisible = frame.window->isVisible() || frame.window->windowHandle()->isVisible(); });
    QTest::mouseClick(frame.part("closeButton"), Qt::LeftButton);
    QVERIFY(!wasVisible);
}

QStringList TestFrameClosing::lifeWith(const std::function<void(FrameCase &)> &closeIt,
                                       const std::function<void(FrameCase &)> &during)
{
    QStringList log;
    auto *const content = new Content(&log);
    FrameCase frame(systemOnScreen(), content);
    if (during)
        content->duringTheEnd = [&] { during(frame); };
    connect(frame.window, &FramelessWindow::requestClose, content, &Content::end);
    connect(content, &QWidget::windowTitleChanged, this, [&log] {
        log.append(QStringLiteral("quit"));
        QCoreApplication::quit();
    });
    QTimer::singleShot(0, this, [&] { closeIt(frame); });
    QTimer tooLong;
    connect(&tooLong, &QTimer::timeout, this, [&log] {
        log.append(QStringLiteral("too late"));
        QCoreApplication::quit();
    });
    tooLong.start(10000);
    QCoreApplication::exec();
    delete frame.window; // if it is still there, as at the end of the program
    return log;
}

void TestFrameClosing::staysUntilTheContentHasEnded_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"close button", "window system", "session", "close", "twice"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

void TestFrameClosing::staysUntilTheContentHasEnded()
{
    QFETCH(QString, way);
    const auto closeIt = [&way](FrameCase &frame) {
        if (way == QStringLiteral("session"))
            QApplication::closeAllWindows();
        else if (way == QStringLiteral("close"))
            frame.window->close();
        else if (way == QStringLiteral("window system"))
            frame.window->windowHandle()->close();
        else
            QTest::mouseClick(frame.part("closeButton"), Qt::LeftButton);
    };
    bool wasThere = true;
    const QStringList log = lifeWith(closeIt, [&](FrameCase &frame) {
        wasThere = wasThere && frame.window;
        if (wasThere && way == QStringLiteral("twice"))
            frame.window->close(); // once more, while the content is ending
    });
    QCOMPARE(log, wholeEnd);
    QVERIFY(wasThere);
}

/// Closed before the event loop began, or after it: whoever made it deletes it.
void TestFrameClosing::goesWithoutAnEventLoop()
{
    QStringList log;
    {
        auto *const content = new Content(&log);
        const QPointer<FramelessWindow> window(new FramelessWindow(systemOnScreen()));
        window->setContent(content);
        connect(window, &FramelessWindow::requestClose, content, &Content::end);
        window->close();
        QVERIFY(window);
        delete window;
    }
    QCOMPARE(log, (QStringList{QStringLiteral("end begins"), QStringLiteral("end done"),
                               QStringLiteral("content deleted")}));
}

void TestFrameClosing::receiversMayDeleteIt()
{
    auto *const content = new QWidget;
    FrameCase frame(systemOnScreen(), content);
    QVERIFY(frame.isThere);
    const QPointer<QWidget> contentAlive(content);
    connect(frame.window, &FramelessWindow::requestClose, this, [&] { delete frame.window; });
    frame.window->on_closeButton_clicked();
    QVERIFY(!frame.window);
    QVERIFY(!contentAlive);
}

/// Another window of the program goes while the content is still at work.
void TestFrameClosing::theLastWindowIsNotTheEnd()
{
    auto other = std::make_unique<QWidget>();
    other->setGeometry(800, 600, 100, 100);
    expectWarning(QStringLiteral("XCB error: 8 (BadMatch)"));
    expectWarning(QStringLiteral("EnableNonClientDpiScaling() failed")); // of Wine
    other->show();
    QVERIFY(QTest::qWaitForWindowExposed(other.get()));
    const QStringList log =
        lifeWith([](FrameCase &frame) { QTest::mouseClick(frame.part("closeButton"), Qt::LeftButton); },
                 [&](FrameCase &) {
                     if (other)
                         other->close();
                     other.reset();
                 });
    QCOMPARE(log, wholeEnd);
}

void TestFrameClosing::isNotShownAgain()
{
    bool wasShown = false;
    const QStringList log = lifeWith(
        [](FrameCase &frame) {
            frame.window->maximizeOrCenter();
            QTest::mouseClick(frame.part("closeButton"), Qt::LeftButton);
        },
        [&](FrameCase &frame) {
            emit qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
            wasShown = wasShown || frame.window->isVisible();
        });
    QVERIFY(!wasShown);
    QCOMPARE(log, wholeEnd);
}

QTEST_MAIN(TestFrameClosing)
#include "tst_frameclosing.moc"
