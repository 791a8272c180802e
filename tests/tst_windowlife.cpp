#include "tests/support/programrun.h"
#include "tests/support/testbase.h"
#include "tests/support/windowdriver.h"

#include <QtTest>

#include <optional>

using windowdriver::Key;
using windowdriver::OtherWindow;

namespace {

const QString mainTitle = QStringLiteral("Tessaly NDI VEXA");
constexpr int openMs = 30000; // Wine takes its time

/// The program with its window, as a user starts it.
class WindowRun : public ProgramRun {
public:
    WindowRun() : ProgramRun(QStringList()) {}

    /// Waits for a window of this title; of any when none is given.
    std::optional<OtherWindow> window(const QString &title = QString())
    {
        std::optional<OtherWindow> found;
        const bool inTime = QTest::qWaitFor(
            [&] {
                const QVector<OtherWindow> all = windowdriver::windowsOf(process().processId());
                for (const OtherWindow &window : all) {
                    if (title.isEmpty() || window.title == title)
                        found = window;
                }
                return found || process().state() == QProcess::NotRunning;
            },
            openMs);
        return inTime ? found : std::nullopt;
    }
    /// Presses a key until the window is gone: what was sent before it had the keyboard may be lost.
    bool answer(const OtherWindow &window, Key key)
    {
        return QTest::qWaitFor(
            [&] {
                const QVector<OtherWindow> all = windowdriver::windowsOf(process().processId());
                for (const OtherWindow &one : all) {
                    if (one.handle == window.handle) {
                        windowdriver::pressKey(window, key);
                        QTest::qWait(50);
                        return false;
                    }
                }
                return true;
            },
            openMs);
    }
    QStringList calls() const
    {
        QFile truth(truthPath());
        return truth.open(QIODevice::ReadOnly) ? QString::fromUtf8(truth.readAll()).split(QLatin1Char('\n'))
                                               : QStringList();
    }
};

} // namespace

/// The program started without arguments: what it checks, what it says, how it ends.
class TestWindowLife final : public TestBase {
    Q_OBJECT

private slots:
    void opensItsWindowAndEndsWithIt();
    void endsOnATerminationRequest();
    void withoutOpenGlItSaysSo_data();
    void withoutOpenGlItSaysSo();
    void aRefusedProcessorEndsItOnOk();
    void aRefusalClosedOtherwiseGoesOn();
    void withoutRuntimeItOffersReports();
    void withoutRuntimeItMayBeLeft();
    void anUnusableRuntimeIsNamed();
    void withoutDisplayItSaysSo();
    void aKilledTestIsRecovered();
    void wrongNumberOfSourcesIsReported();
    void plantedLibrariesAreNotLoaded_data();
    void plantedLibrariesAreNotLoaded();
};

void TestWindowLife::opensItsWindowAndEndsWithIt()
{
    WindowRun run;
    run.start();
    const auto window = run.window(mainTitle);
    QVERIFY2(window, run.account());
    QVERIFY(window->place.width() >= 1200);
    windowdriver::close(*window);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(0), run.account());
}

void TestWindowLife::endsOnATerminationRequest()
{
#ifdef Q_OS_WIN
    QSKIP("Windows has no such request for a program with windows");
#endif
    WindowRun run;
    run.start();
    QVERIFY2(run.window(mainTitle), run.account());
    run.interrupt(ProgramRun::Interrupt::Terminate);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(0), run.account());
}

void TestWindowLife::withoutOpenGlItSaysSo_data()
{
    QTest::addColumn<Key>("key");
    QTest::newRow("confirmed") << Key::Return;
    QTest::newRow("closed") << Key::Escape;
}

void TestWindowLife::withoutOpenGlItSaysSo()
{
#ifdef Q_OS_WIN
    QSKIP("OpenGL cannot be taken away from a Windows program");
#endif
    QFETCH(Key, key);
    WindowRun run;
    run.setVariable(QStringLiteral("QT_XCB_GL_INTEGRATION"), QStringLiteral("none"));
    run.start();
    QVERIFY2(run.waitForError("This machine doesn't support OpenGL.\n"), run.account());
    const auto box = run.window();
    QVERIFY2(box, run.account());
    QVERIFY(run.answer(*box, key));
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(0), run.account());
    QVERIFY2(!run.standardError().contains("loopback"), run.account()); // the runtime was not even opened
}

void TestWindowLife::aRefusedProcessorEndsItOnOk()
{
    WindowRun run;
    run.setScenario(R"({"initialize": false})");
    run.start();
    QVERIFY2(run.waitForError("This computer can't test NDI performance because the CPU is not sufficient."),
             run.account());
    const auto box = run.window();
    QVERIFY2(box, run.account());
    QVERIFY(run.answer(*box, Key::Return));
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(0), run.account());
}

void TestWindowLife::aRefusalClosedOtherwiseGoesOn()
{
    WindowRun run;
    run.setScenario(R"({"initialize": false})");
    run.start();
    const auto box = run.window();
    QVERIFY2(box, run.account());
    QVERIFY(run.answer(*box, Key::Escape));
    // The window finds out for itself, says so and ends the program.
    const auto error = run.window(QStringLiteral("Error"));
    QVERIFY2(error, run.account());
    QVERIFY(run.answer(*error, Key::Return));
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(0), run.account());
}

void TestWindowLife::withoutRuntimeItOffersReports()
{
    WindowRun run;
    run.setRuntimeFolder(QString());
    run.start();
    QVERIFY2(run.waitForError("No usable NDI runtime was found"), run.account());
    const auto box = run.window(QStringLiteral("NDI RUNTIME"));
    QVERIFY2(box, run.account());
    QVERIFY(run.answer(*box, Key::Return));
    const auto window = run.window(mainTitle);
    QVERIFY2(window, run.account());
    windowdriver::close(*window);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(0), run.account());
    QVERIFY2(!run.standardError().contains("CPU"), run.account());
}

void TestWindowLife::withoutRuntimeItMayBeLeft()
{
    WindowRun run;
    run.setRuntimeFolder(QString());
    run.start();
    const auto box = run.window(QStringLiteral("NDI RUNTIME"));
    QVERIFY2(box, run.account());
    QVERIFY(run.answer(*box, Key::Escape));
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(0), run.account());
}

void TestWindowLife::anUnusableRuntimeIsNamed()
{
    const QTemporaryDir folder;
#ifdef Q_OS_WIN // each platform has its own names
    QFile library(folder.filePath(QStringLiteral("Processing.NDI.Lib.x64.dll")));
#else
    QFile library(folder.filePath(QStringLiteral("libndi.so.6")));
#endif
    QVERIFY(library.open(QIODevice::WriteOnly));
    library.write("this is no library");
    library.close();
    WindowRun run;
    run.setRuntimeFolder(folder.path());
    run.start();
    QVERIFY2(run.waitForError("(not a library)"), run.account());
    const auto box = run.window(QStringLiteral("NDI RUNTIME"));
    QVERIFY2(box, run.account());
    QVERIFY(run.answer(*box, Key::Escape));
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(0), run.account());
}

void TestWindowLife::withoutDisplayItSaysSo()
{
#ifdef Q_OS_WIN
    QSKIP("Windows always has a display");
#endif
    WindowRun run;
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        run.setVariable(QString::fromLatin1(name), QString());
    run.start();
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(1), run.account());
    const QByteArray said = run.standardError();
    QVERIFY2(said.startsWith("There is no display for the window") && said.count('\n') == 1, run.account());
}

void TestWindowLife::aKilledTestIsRecovered()
{
    ProgramRun killed({QStringLiteral("-test"), QStringLiteral("LOOPBACK (720p50)")});
    killed.start();
    QVERIFY2(killed.waitForDots(100), killed.account());
    killed.process().kill();
    QVERIFY(killed.waitForFinished());

    WindowRun run;
    run.setVariable(QStringLiteral("HOME"), killed.home());
    run.setVariable(QStringLiteral("XDG_CONFIG_HOME"), killed.home() + QLatin1String("/.config"));
    run.setVariable(QStringLiteral("VEXA_JOURNAL_FOLDER"), killed.home() + QLatin1String("/journal"));
    run.start();
    // The box blocks nothing: the window can be closed beside it.
    QVERIFY2(run.window(QStringLiteral("EARLIER TEST")), run.account());
    QVERIFY2(run.waitForError("Recovered the record of an interrupted test"), run.account());
    const auto window = run.window(mainTitle);
    QVERIFY2(window, run.account());
    windowdriver::close(*window);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(0), run.account());
}

void TestWindowLife::wrongNumberOfSourcesIsReported()
{
    WindowRun run;
    run.setScenario(R"({"claimedSources": 4294967295})");
    run.start();
    QVERIFY2(run.waitForError("vexa.ndi: The NDI runtime reports 4294967295 sources;"), run.account());
    const auto window = run.window(mainTitle);
    QVERIFY2(window, run.account());
    windowdriver::close(*window);
    QVERIFY2(run.waitForFinished(), run.account());
    QVERIFY2(run.endedWith(0), run.account());
}

/// A library in the working folder, under a name that the program or Qt opens without a path.
void TestWindowLife::plantedLibrariesAreNotLoaded_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isOpenGl");
#ifdef Q_OS_WIN // each platform has its own names
    QTest::newRow("driver") << QStringLiteral("nvapi.dll") << false;
    QTest::newRow("OpenGL") << QStringLiteral("opengl32sw.dll") << true;
#else
    QTest::newRow("driver") << QStringLiteral("libnvidia-ml.so.1") << false;
#endif
}

void TestWindowLife::plantedLibrariesAreNotLoaded()
{
    QFETCH(QString, name);
    QFETCH(bool, isOpenGl);
    WindowRun run;
    QVERIFY(QFile::copy(QStringLiteral(VEXA_FAKE_DRIVER), run.folder() + QLatin1Char('/') + name));
    const QString mark = run.folder() + QLatin1String("/loaded");
    run.setVariable(QStringLiteral("VEXA_FAKE_DRIVER_MARK"), mark);
    if (isOpenGl)
        run.setVariable(QStringLiteral("QT_OPENGL_DLL"), name);
    run.start();
    QVERIFY2(run.window(isOpenGl ? QString() : mainTitle), run.account()); // a box tells that there is no OpenGL
    QVERIFY2(!QFile::exists(mark), run.account());
}

QTEST_GUILESS_MAIN(TestWindowLife)

#include "tst_windowlife.moc"
