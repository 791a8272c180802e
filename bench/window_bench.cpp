// Runs tests in the window, as a user would, on the loopback runtime, and beside each the same test on the console.
// Prints how late the window's thread was and what both processes cost. Needs a screen:
// tests/support/on-screen 1752x1018x24 build/release/bench/window_bench [SECONDS [ROW]]
#include "charts/customplot.h"
#include "mainwindow/ndiwindow.h"
#include "mainwindow/qtcustomtablewidget.h"
#include "resources/fonts.h"
#include "resources/vexaresources.h"
#include "tests/support/heartbeat.h"
#include "tests/support/testhome.h"
#include "ui_ndiwindow.h"
#include "widgets/darkstyle.h"
#include "widgets/framelesswindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QHeaderView>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

const QString sourceName = QStringLiteral("LOOPBACK (1080p59.94)");
constexpr int receivers = 8;

double clockSeconds(clockid_t clock)
{
    timespec time{};
    if (clock_gettime(clock, &time) != 0)
        return 0.0;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Processor time of all threads of a process.
double processSeconds(pid_t process)
{
    clockid_t clock{};
    return clock_getcpuclockid(process, &clock) == 0 ? clockSeconds(clock) : 0.0;
}

/// Leaves the thread to the window, without a wake-up of its own.
void waitFor(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

/// The same test in the console program, with a home of its own. It writes a dot for each frame.
class ConsoleTest final {
public:
    ConsoleTest()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), m_home.path());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home.path());
        environment.insert(QStringLiteral("XDG_CACHE_HOME"), m_home.filePath(QStringLiteral(".cache")));
        m_process.setProcessEnvironment(environment);
        m_process.setStandardOutputFile(dotsPath());
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(QStringLiteral(VEXA_PROGRAM),
                        {QStringLiteral("-test"), sourceName, QStringLiteral("-time"), QStringLiteral("5"),
                         QStringLiteral("-receivers"), QString::number(receivers)});
        while (m_process.state() != QProcess::NotRunning && frames() == 0)
            waitFor(20);
    }
    ~ConsoleTest()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(ConsoleTest)

    double seconds() const { return processSeconds(static_cast<pid_t>(m_process.processId())); }
    double frames() const { return static_cast<double>(QFileInfo(dotsPath()).size()); }

private:
    QString dotsPath() const { return m_home.filePath(QStringLiteral("dots")); }

    const QTemporaryDir m_home;
    QProcess m_process;
};

double framesShown(const CustomPlot &chart)
{
    double frames = 0.0;
    for (int i = 0; i < chart.seriesCount(); ++i)
        frames += static_cast<double>(chart.plainPoints(i).size());
    return frames;
}

struct Cost {
    double seconds; ///< of processor time
    double frames;

    double sinceMs(const Cost &before) const { return (seconds - before.seconds) / (frames - before.frames) * 1e3; }
};

void runTest(const NDIWindow &window, const char *name, bool preview, bool raw, int seconds)
{
    const Ui::NDIWindow &ui = window.form();
    ui.fpsPlot->rawToggle()->setChecked(raw);
    ui.pingPlot->rawToggle()->setChecked(raw);
    const ConsoleTest console;
    ui.btn_test->click();
    if (!preview)
        ui.cmbPreviewSources->setCurrentIndex(0); // a test begins with its first source chosen
    waitFor(1000);
    const auto windowCost = [&ui] { return Cost{processSeconds(getpid()), framesShown(*ui.fpsPlot)}; };
    const auto consoleCost = [&console] { return Cost{console.seconds(), console.frames()}; };
    const Cost windowBefore = windowCost();
    const Cost consoleBefore = consoleCost();
    Heartbeat heartbeat;
    waitFor(seconds * 1000);
    const Cost windowAfter = windowCost();
    const Cost consoleAfter = consoleCost();
    const std::vector<double> late = heartbeat.takeSorted();
    const auto share = [seconds](const Cost &before, const Cost &after) {
        return (after.seconds - before.seconds) / seconds * 100.0;
    };
    std::printf("| %s | %.1f | %.1f | %.1f | %.1f %% | %.2f %% | %.1f |\n", name, lateAt(late, 0.5), lateAt(late, 0.99),
                late.back(), share(windowBefore, windowAfter), share(consoleBefore, consoleAfter),
                windowAfter.sinceMs(windowBefore) / consoleAfter.sinceMs(consoleBefore));
    std::fflush(stdout);
    ui.btn_test->click();
    while (ui.btn_test->text() != QStringLiteral("TEST"))
        waitFor(50);
}

} // namespace

int main(int argc, char **argv)
{
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 10;
    const int onlyRow = argc > 2 ? std::atoi(argv[2]) : 0;
    qputenv("NDI_RUNTIME_DIR_V6", VEXA_LOOPBACK_DIR);
    const TestHome home;
    home.use();
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    QApplication application(argc, argv);
    QApplication::setStyle(new DarkStyle);
    initVexaResources();
    loadFonts();
    auto *const frame = new FramelessWindow; // deletes itself when it is closed
    auto *const content = new NDIWindow;     // the frame's
    NDIWindow &window = *content;
    frame->setContent(content);
    frame->show();
    frame->maximizeOrCenter();
    window.warmUpPreview();
    while (window.form().sourceList->count() == 0)
        waitFor(100);
    waitFor(3000); // the search, the probes

    const int hd60 = window.form().sourceList->findText(sourceName);
    window.form().sourceList->setCurrentIndex(std::max(0, hd60));
    window.form().threadCount->setCurrentIndex(receivers - 1);
    std::printf("| eight receivers of 1080p59.94, %d s | median late [ms] | 99 %% [ms] | most [ms] | process | "
                "console | ratio for a frame |\n|---|---:|---:|---:|---:|---:|---:|\n",
                seconds);
    struct Row {
        const char *name;
        bool preview;
        bool raw;
    };
    const Row rows[] = {{"smooth charts", false, false},
                        {"smooth and raw charts", false, true},
                        {"smooth charts and preview", true, false}};
    int number = 0;
    for (const Row &row : rows) {
        if (++number == onlyRow || onlyRow == 0)
            runTest(window, row.name, row.preview, row.raw, seconds);
    }

    const int sources = 2000;
    std::vector<std::string> names;
    names.reserve(sources);
    std::vector<NDIlib_source_t> list;
    for (int i = 0; i < sources; ++i)
        names.push_back("MACHINE-" + std::to_string(i) + " (Camera " + std::to_string(i) + ")");
    for (const std::string &name : names) {
        NDIlib_source_t source;
        source.p_ndi_name = name.c_str();
        list.push_back(source);
    }
    emit window.form().multiOption->clicked(true);
    window.form().multiOption->setChecked(true);
    std::printf("\n| %d sources | time [ms] | processor time of the window's thread [ms] |\n|---|---:|---:|\n",
                sources);
    const auto timed = [](const char *name, const auto &step) {
        const double before = clockSeconds(CLOCK_THREAD_CPUTIME_ID);
        QElapsedTimer clock;
        clock.start();
        step();
        std::printf("| %s | %lld | %.0f |\n", name, static_cast<long long>(clock.elapsed()),
                    (clockSeconds(CLOCK_THREAD_CPUTIME_ID) - before) * 1e3);
    };
    timed("filling them", [&] { window.getNDISource(list.data(), sources); });
    timed("drawing them", [] { QCoreApplication::processEvents(); });
    timed("checking all of them", [&window] {
        QMetaObject::invokeMethod(window.form().sourceTable->horizontalHeader(), "changed", Q_ARG(bool, true));
    });
    timed("filling them anew", [&] { window.getNDISource(list.data(), sources); });
    frame->close();
    return 0;
}
