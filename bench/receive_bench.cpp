// What receiving costs in the window's process, beside a loop that only captures and frees on the same runtime in the
// same run. Needs a screen: tests/support/on-screen 1752x1018x24 build/release/bench/receive_bench [SECONDS]
//
// receive_bench --bare SOURCE RECEIVERS SECONDS is the bare loop alone, for scripts/console-cost.
#include "mainwindow/ndiwindow.h"
#include "mainwindow/qtcustomtablewidget.h"
#include "ndi/ndilib.h"
#include "resources/fonts.h"
#include "resources/vexaresources.h"
#include "tests/support/ownmemory.h"
#include "tests/support/testhome.h"
#include "ui_ndiwindow.h"
#include "widgets/darkstyle.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
#include <QProcess>
#include <QThread>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <vector>

namespace {

struct Case {
    const char *name;
    int sources;
    int width;
    int height;
    int rate; ///< frames per second
    bool preview;
    double longestRatio; ///< goal: receiver threads beside the bare loop; 0: none
    double mostMb;       ///< goal: memory beyond the idle window; 0: none
};

constexpr Case cases[] = {
    {"8 x 1080p60", 8, 1920, 1080, 60, false, 2.0, 40.0},
    {"16 x 2160p30", 16, 3840, 2160, 30, false, 2.0, 60.0},
    {"64 x 1080p30", 64, 1920, 1080, 30, false, 2.0, 150.0},
    {"8 x 1080p60, preview of the first", 8, 1920, 1080, 60, true, 0.0, 0.0},
};

void waitFor(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    QTimer wake;
    wake.start(20);
    while (clock.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Processor time in ns of this process' threads whose names begin so, by name.
std::map<QByteArray, qint64> threadTimesNs(const QByteArray &begin)
{
    std::map<QByteArray, qint64> times;
    const QString tasks = QStringLiteral("/proc/self/task/");
    for (const QString &task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QByteArray name = contents(tasks + task + QLatin1String("/comm")).trimmed();
        if (name.startsWith(begin))
            times[name] = contents(tasks + task + QLatin1String("/schedstat")).split(' ').constFirst().toLongLong();
    }
    return times;
}

/// Share of a core in percent that each of these threads takes within the next seconds.
std::map<QByteArray, double> threadShares(const QByteArray &begin, int seconds)
{
    const std::map<QByteArray, qint64> before = threadTimesNs(begin);
    QElapsedTimer clock;
    clock.start();
    waitFor(seconds * 1000);
    const auto lengthNs = static_cast<double>(clock.nsecsElapsed());
    std::map<QByteArray, double> shares;
    for (const auto &[name, time] : threadTimesNs(begin)) {
        const auto found = before.find(name);
        if (found != before.end())
            shares[name] = static_cast<double>(time - found->second) / lengthNs * 100.0;
    }
    return shares;
}

double sumOf(const std::map<QByteArray, double> &shares)
{
    double sum = 0.0;
    for (const auto &[name, share] : shares)
        sum += share;
    return sum;
}

/// Receivers that capture and free, and nothing else, while the object lives.
class BareLoop final {
public:
    explicit BareLoop(const std::vector<QByteArray> &sources)
    {
        for (const QByteArray &source : sources) {
            m_threads.emplace_back(QThread::create([this, source] { receive(source); }));
            m_threads.back()->setObjectName(QStringLiteral("bare %1").arg(m_threads.size()));
            m_threads.back()->start();
        }
    }
    ~BareLoop()
    {
        m_isOver = true;
        for (const auto &thread : m_threads)
            thread->wait();
    }
    BareLoop(const BareLoop &) = delete;
    BareLoop &operator=(const BareLoop &) = delete;

private:
    void receive(const QByteArray &source) const
    {
        NDIlib_recv_create_v3_t settings;
        settings.source_to_connect_to.p_ndi_name = source.constData();
        const NDIlib_recv_instance_t receiver = NDIlib_recv_create_v3(&settings);
        while (!m_isOver) {
            NDIlib_video_frame_v2_t video;
            NDIlib_audio_frame_v2_t audio;
            if (NDIlib_recv_capture_v2(receiver, &video, &audio, nullptr, 1000) == NDIlib_frame_type_video)
                NDIlib_recv_free_video_v2(receiver, &video);
        }
        NDIlib_recv_destroy(receiver);
    }

    std::atomic<bool> m_isOver{false};
    std::vector<std::unique_ptr<QThread>> m_threads;
};

void print(const Case &one, const std::map<QByteArray, double> &receivers, double bare, double testMb,
           double picturesMb)
{
    const double all = sumOf(receivers);
    std::printf("| %s | %.1f %% | %.1f %% | x %.2f%s | %.0f MB%s | %.0f MB |", one.name, bare, all, all / bare,
                one.longestRatio > 0 ? qPrintable(QStringLiteral(" (goal %1)").arg(one.longestRatio)) : "", testMb,
                one.mostMb > 0 ? qPrintable(QStringLiteral(" (goal %1)").arg(one.mostMb)) : "", picturesMb);
    if (one.preview) {
        double most = 0.0;
        for (const auto &[name, share] : receivers)
            most = std::max(most, share);
        const double others = (all - most) / static_cast<double>(receivers.size() - 1);
        std::printf(" %.1f %% (goal 8)", most - others);
    }
    std::printf(" |\n");
    std::fflush(stdout);
}

int runCase(const Case &one, int seconds, int argc, char **argv)
{
    const TestHome home;
    home.use();
    QFile scenario(home.filePath(QStringLiteral("scenario.json")));
    if (!scenario.open(QIODevice::WriteOnly))
        return 1;
    scenario.write(
        QString::asprintf(
            R"({"discoveryBatch": 100, "sources": [{"name": "CAM %%1", "repeat": %d, "width": %d, "height": %d, )"
            R"("rateN": %d, "rateD": 1}]})",
            one.sources, one.width, one.height, one.rate)
            .toUtf8());
    scenario.close();
    qputenv("VEXA_LOOPBACK_SCENARIO", scenario.fileName().toUtf8());
    qputenv("NDI_RUNTIME_DIR_V6", VEXA_LOOPBACK_DIR);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    QApplication application(argc, argv);
    QApplication::setStyle(new DarkStyle);
    initVexaResources();
    loadFonts();
    NDIWindow window;
    window.show();
    window.warmUpPreview();
    const Ui::NDIWindow &ui = window.form();
    while (ui.sourceList->count() < one.sources)
        waitFor(100);
    ui.multiOption->setChecked(true);
    emit ui.multiOption->clicked(true);
    QMetaObject::invokeMethod(ui.sourceTable->horizontalHeader(), "changed", Q_ARG(bool, true));
    waitFor(4000); // the search, the probes

    // First, so that the runtime's own pictures, which are in this process, count for the idle window.
    std::vector<QByteArray> names;
    for (int i = 0; i < one.sources; ++i)
        names.push_back(ui.sourceList->itemText(i).toUtf8());
    double picturesMb = -ownMemoryMb();
    double bare = 0.0;
    {
        const BareLoop loop(names);
        waitFor(2000);
        bare = sumOf(threadShares("bare ", seconds));
    }
    const double idleMb = ownMemoryMb();
    picturesMb += idleMb;

    ui.btn_test->click();
    if (!one.preview)
        ui.cmbPreviewSources->setCurrentIndex(0);
    waitFor(2000);
    const std::map<QByteArray, double> receivers = threadShares("receiver ", seconds);
    const double testMb = ownMemoryMb();
    ui.btn_test->click();
    while (ui.btn_test->text() != QStringLiteral("TEST"))
        waitFor(50);
    print(one, receivers, bare, testMb - idleMb, picturesMb);
    window.requestClose();
    return static_cast<int>(receivers.size()) == one.sources ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 5 && qstrcmp(argv[1], "--bare") == 0) {
        const BareLoop loop(std::vector<QByteArray>(static_cast<std::size_t>(std::atoi(argv[3])), argv[2]));
        QThread::sleep(static_cast<unsigned long>(std::atoi(argv[4])));
        return 0;
    }
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 15;
    if (argc > 2)
        return runCase(cases[std::atoi(argv[2])], seconds, argc, argv);

    std::printf(
        "| %d s in MULTIPLE | bare loop | receiver threads | ratio | memory beyond the idle window | pictures of "
        "the runtime before | copying thread beyond the others |\n|---|---:|---:|---:|---:|---:|---:|\n",
        seconds);
    std::fflush(stdout);
    int status = 0;
    for (std::size_t i = 0; i < std::size(cases); ++i) { // the runtime reads its scenario once in a process
        status |= QProcess::execute(QString::fromLocal8Bit(argv[0]),
                                    {QString::number(seconds), QString::number(static_cast<int>(i))});
    }
    return status;
}
