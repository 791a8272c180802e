// Runs a test in the window, as a user would, on the loopback runtime, and tells how late the window's thread
// was and what the process cost. Needs a screen: xvfb-run -a build/release/bench/window_bench [SECONDS]
#include "charts/customplot.h"
#include "mainwindow/ndiwindow.h"
#include "mainwindow/qtcustomtablewidget.h"
#include "resources/fonts.h"
#include "resources/vexaresources.h"
#include "tests/support/heartbeat.h"
#include "tests/support/testhome.h"
#include "ui_ndiwindow.h"
#include "widgets/darkstyle.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QTimer>
#include <QToolButton>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

double processSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void waitFor(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    QTimer wake;
    wake.start(20);
    while (clock.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
}

void runTest(const NDIWindow &window, const char *name, bool preview, bool raw, int seconds)
{
    const Ui::NDIWindow &ui = window.form();
    ui.fpsPlot->rawToggle()->setChecked(raw);
    ui.pingPlot->rawToggle()->setChecked(raw);
    ui.btn_test->click();
    if (!preview)
        ui.cmbPreviewSources->setCurrentIndex(0);
    waitFor(1000);
    const double before = processSeconds();
    Heartbeat heartbeat;
    waitFor(seconds * 1000);
    const std::vector<double> late = heartbeat.takeSorted();
    const double share = (processSeconds() - before) / seconds * 100.0;
    std::printf("| %s | %.1f | %.1f | %.1f | %.0f %% |\n", name, lateAt(late, 0.5), lateAt(late, 0.99), late.back(),
                share);
    std::fflush(stdout);
    ui.btn_test->click();
    while (ui.btn_test->text() != QStringLiteral("TEST"))
        waitFor(50);
}

} // namespace

int main(int argc, char **argv)
{
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    qputenv("NDI_RUNTIME_DIR_V6", VEXA_LOOPBACK_DIR);
    const TestHome home;
    home.use();
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    QApplication application(argc, argv);
    QApplication::setStyle(new DarkStyle);
    initVexaResources();
    loadFonts();
    NDIWindow window;
    window.show();
    window.warmUpPreview();
    while (window.form().sourceList->count() == 0)
        waitFor(100);
    waitFor(3000); // the search, the probes

    const int hd60 = window.form().sourceList->findText(QStringLiteral("LOOPBACK (1080p59.94)"));
    window.form().sourceList->setCurrentIndex(std::max(0, hd60));
    window.form().threadCount->setCurrentIndex(7);
    std::printf("| eight receivers of 1080p59.94, %d s | median late [ms] | 99 %% [ms] | most [ms] | process |\n"
                "|---|---:|---:|---:|---:|\n",
                seconds);
    runTest(window, "smooth charts", false, false, seconds);
    runTest(window, "smooth and raw charts", false, true, seconds);
    runTest(window, "smooth charts and preview", true, false, seconds);

    const int sources = 2000;
    std::vector<std::string> names;
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
    QElapsedTimer clock;
    clock.start();
    window.getNDISource(list.data(), sources);
    std::printf("\nfilling %d sources: %lld ms\n", sources, static_cast<long long>(clock.restart()));
    QCoreApplication::processEvents();
    std::printf("drawing them: %lld ms\n", static_cast<long long>(clock.restart()));
    QMetaObject::invokeMethod(window.form().sourceTable->horizontalHeader(), "changed", Q_ARG(bool, true));
    std::printf("checking all of them: %lld ms\n", static_cast<long long>(clock.restart()));
    clock.restart();
    window.getNDISource(list.data(), sources);
    std::printf("filling them anew: %lld ms\n", static_cast<long long>(clock.restart()));
    window.requestClose();
    return 0;
}
