#include "tests/screens/stage.h"

#include "ndi/ndilib.h"
#include "probes/analysisworker.h"
#include "probes/benchmarktool.h"
#include "probes/machinefactsreader.h"
#include "tests/standin_analysis/standincontrol.h"
#include "ui_ndiwindow.h"

#include <QApplication>
#include <QCursor>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QtTest>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int waitMs = 120000;
constexpr int pollMs = 10;
constexpr int sources = 7;

const char *const scenario = R"json({"discoveryMs": 0, "discoveryBatch": 100, "sources": [
  {"name": "STUDIO-1 (CAM 1)", "url": "10.20.1.11:5961", "rateN": 60000, "rateD": 1001},
  {"name": "STUDIO-1 (CAM 2)", "url": "10.20.1.12:5961", "rateN": 60000, "rateD": 1001},
  {"name": "STUDIO-1 (CAM 3)", "url": "10.20.1.13:5961", "rateN": 50, "rateD": 1},
  {"name": "STUDIO-2 (CAM 1)", "url": "10.20.2.11:5961", "width": 1280, "height": 720, "rateN": 50, "rateD": 1,
   "jitter": {"kind": "gaussian", "sigmaMs": 4, "seed": 7}},
  {"name": "GRAPHICS (Lower thirds)", "url": "10.20.3.5:5961", "fourCC": "BGRA", "rateN": 25, "rateD": 1},
  {"name": "PLAYOUT (Channel A)", "url": "10.20.3.20:5961", "rateN": 30000, "rateD": 1001},
  {"name": "PLAYOUT (Channel B)", "url": "10.20.3.20:5962", "rateN": 25, "rateD": 1}]})json";

const char *const benchmarkOutput = "NDI Benchmark\nPreparing : 16 CPU cores detected.\n\n"
                                    "**** Results : 38.5 Streams of 1080p ****\nDone.\n";

[[noreturn]] void fail(const char *why)
{
    std::fprintf(stderr, "vexa_screens: %s\n", why);
    std::_Exit(1); // nothing that still runs is worth a tidy end
}

bool write(const QString &path, const char *text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) > 0;
}

NDIWindowParts parts()
{
    NDIWindowParts parts;
    parts.analysisToolThere = [] { return true; };
    parts.makeAnalysisWorker = [] {
        return std::make_unique<AnalysisWorker>(StandinControl::toolPath(), StandinControl::relayPath());
    };
    parts.adapterProbes = [] {
        AdapterProbes probes;
        probes.adapters = [](const std::atomic<bool> &) {
            NetworkAdapterInfo media;
            media.name = QStringLiteral("Media network");
            media.description = QStringLiteral("Gigabit Ethernet Adapter");
            media.autoConfiguration = QStringLiteral("Enabled");
            media.dhcp = QStringLiteral("Disabled");
            media.ipv4Address = QStringLiteral("10.20.0.40(Preferred)");
            media.subnetMask = QStringLiteral("255.255.0.0");
            media.defaultGateway = QStringLiteral("10.20.0.1");
            return NetworkAdapters{media};
        };
        probes.linkSpeed = [](const NetworkAdapterInfo &, const std::atomic<bool> &) {
            return QStringLiteral("1000/1000Mbps");
        };
        return probes;
    };
    return parts;
}

} // namespace

Stage::Stage(const QString &pictures) : m_pictures(pictures) {}

Stage::~Stage()
{
    delete m_frame.data();
}

bool Stage::setUp()
{
    const QString tools = filePath("tools");
    const QString tool = QDir(tools).filePath(benchmarkToolName());
    const bool works = m_folder.isValid() && QDir::setCurrent(m_folder.path()) && QDir().mkpath(tools)
                       && write(filePath("scenario.json"), scenario) && write(filePath("benchmark"), benchmarkOutput)
                       && QFile::copy(QStringLiteral(VEXA_STANDIN_BENCHMARK), tool);
    qputenv("HOME", m_folder.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", m_folder.path().toUtf8());
    qputenv("PATH", tools.toUtf8() + ':' + qgetenv("PATH"));
    qputenv("VEXA_STANDIN_OUTPUT", filePath("benchmark").toUtf8());
    qputenv("VEXA_LOOPBACK_SCENARIO", filePath("scenario.json").toUtf8());
    qputenv("NDI_RUNTIME_DIR_V6", VEXA_LOOPBACK_DIR);
    return works && NDIlib_initialize();
}

void Stage::openWindow()
{
    delete m_frame.data();
    m_frame = new FramelessWindow;
    m_frame->setWindowTitle(QStringLiteral("Tessaly NDI VEXA"));
    m_window = new NDIWindow(parts());
    m_frame->setContent(m_window);
    QObject::connect(m_frame, &FramelessWindow::requestClose, m_window, &NDIWindow::requestClose);
    m_frame->setGeometry(QGuiApplication::primaryScreen()->geometry());
    m_frame->show();
    QCursor::setPos(0, 0);
    await("the window", [this] { return QTest::qWaitForWindowExposed(m_frame); });
    await("the list of sources", [this] { return ui().sourceList->count() == sources; });
    await("the formats of all sources", [this] {
        for (int row = 0; row < sources; ++row) {
            const QTableWidgetItem *height = ui().detailTable->item(row, ui().detailTable->columnCount() - 1);
            if (!height || height->text().isEmpty())
                return false;
        }
        return true;
    });
    await("the adapters", [this] { return ui().cmbNetworkAdapters->count() == 1; });
    await("the end of the search", [this] { return ui().label_source->text() == QStringLiteral("NDI SOURCES"); });
    showFacts();
}

const Ui::NDIWindow &Stage::ui() const
{
    return m_window->form();
}

void Stage::showFacts()
{
    ui().label_cpu_val->setText(QStringLiteral("8-Core Processor @ 3.60GHz"));
    ui().label_cores_val->setText(QStringLiteral("8"));
    ui().label_logical_val->setText(QStringLiteral("16"));
    ui().label_memory_val->setText(QStringLiteral("32 GB"));
    ui().label_gpu_val->setText(QStringLiteral("Graphics Adapter 8 GB"));
    ui().label_gpu_driver_val->setText(QStringLiteral("VEXA-TEST-1"));
    ui().label_display_val->setText(QStringLiteral("1920 x 1080, 32 bit, 60 Hz"));
}

void Stage::choose(QRadioButton *option)
{
    option->click();
}

void Stage::await(const char *what, const std::function<bool()> &isSo)
{
    if (!QTest::qWaitFor(isSo, waitMs))
        fail(what);
}

void Stage::awaitProgress(double percent)
{
    await("the progress of the test", [this, percent] { return ui().progress_viewer->value() >= percent; });
}

void Stage::awaitIdle()
{
    await("the end of the test",
          [this] { return ui().btn_test->text() == QStringLiteral("TEST") && ui().timeList->isEnabled(); });
}

void Stage::whenDialogComes(const std::function<void(QDialog *)> &act, const QDialog *after)
{
    auto *poll = new QTimer(QCoreApplication::instance());
    QObject::connect(poll, &QTimer::timeout, poll, [poll, act, after, polls = 0]() mutable {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (dialog && dialog != after && dialog->isVisible()) {
            poll->stop();
            poll->deleteLater();
            act(dialog);
        } else if (++polls > waitMs / pollMs) {
            fail("no dialog came");
        }
    });
    poll->start(pollMs);
}

void Stage::withDialog(const std::function<void()> &open, const std::function<void(QDialog *)> &act)
{
    bool isDone = false;
    whenDialogComes([&](QDialog *dialog) {
        act(dialog);
        isDone = true;
    });
    open();
    await("a dialog", [&] { return isDone; });
}

void Stage::save(const char *name)
{
    // The widgets' own pictures, not the screen's: there is no window system here that would put together
    // windows with transparent borders.
    QCoreApplication::processEvents(); // new children show themselves by an event
    QPixmap picture = m_frame->grab();
    if (auto *dialog = QApplication::activeModalWidget()) {
        QPainter painter(&picture);
        const QPixmap over = dialog->grab();
        painter.drawPixmap(picture.rect().center() - over.rect().center(), over);
    }
    const QString path = QDir(m_pictures).filePath(QLatin1String(name) + QStringLiteral(".png"));
    if (!picture.save(path, "PNG", 0))
        fail(qPrintable(QStringLiteral("cannot write ") + path));
}
