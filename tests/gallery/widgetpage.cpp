#include "tests/gallery/widgetpage.h"

#include "charts/cpugputrack.h"
#include "charts/previewthread.h"
#include "charts/videoglpreview.h"
#include "probes/benchmarkdlg.h"
#include "widgets/custommessagebox.h"
#include "widgets/qprogressindicator.h"
#include "widgets/qroundprogressbar.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QTimer>

#include <array>
#include <cstring>
#include <memory>

namespace {

const QColor accent(21, 207, 187);

void makePanel(QWidget &widget, const QColor &color)
{
    QPalette palette = widget.palette();
    palette.setColor(QPalette::Window, color);
    widget.setPalette(palette);
    widget.setAutoFillBackground(true);
}

QWidget *makeSpinners()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    for (const int side : {16, 20, 32, 33, 72, 120}) {
        auto *spinner = new QProgressIndicator(row);
        spinner->setFixedSize(side, side);
        spinner->setColor(accent);
        spinner->startAnimation();
        layout->addWidget(spinner);
    }
    return row;
}

QRoundProgressBar *makeBar(QWidget *parent, int side, double value)
{
    auto *bar = new QRoundProgressBar(parent);
    bar->setFixedSize(side, side);
    bar->setRange(0.0, 100.0);
    bar->setFormat(QStringLiteral("%p"));
    bar->setValue(value);
    return bar;
}

QWidget *makeBars()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    for (const double value : {0.0, 1.0, 12.0, 25.0, 50.0, 75.0, 99.5, 100.0})
        layout->addWidget(makeBar(row, 120, value));
    QRoundProgressBar *live = makeBar(row, 160, 0.0);
    auto *timer = new QTimer(live);
    QObject::connect(timer, &QTimer::timeout, live, [live, value = 0]() mutable {
        value = (value + 1) % 101;
        live->setValue(value);
    });
    timer->start(100);
    layout->addWidget(live);
    return row;
}

/// Seven bars of 75 % colour, in UYVY.
std::unique_ptr<uint8_t[]> colourBars(int width, int height)
{
    struct Uyv {
        uint8_t u;
        uint8_t y;
        uint8_t v;
    };
    constexpr std::array<Uyv, 7> bars{{{128, 180, 128},
                                       {44, 162, 142},
                                       {156, 131, 44},
                                       {72, 112, 58},
                                       {184, 84, 198},
                                       {100, 65, 212},
                                       {212, 35, 114}}};
    const auto bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 2;
    auto frame = std::make_unique<uint8_t[]>(bytes + VideoGlPreview::frameTailBytes);
    std::size_t at = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; x += 2) {
            const Uyv &bar = bars[static_cast<std::size_t>(x) * bars.size() / static_cast<std::size_t>(width)];
            for (const uint8_t byte : {bar.u, bar.y, bar.v, bar.y})
                frame[at++] = byte;
        }
    }
    return frame;
}

QWidget *makePreview()
{
    auto *container = new QWidget;
    makePanel(*container, QColor(0x20, 0x20, 0x20));
    container->setFixedSize(400, 240);
    auto *layout = new QGridLayout(container);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    auto *preview = new VideoGlPreview(container);
    layout->addWidget(preview, 0, 0, Qt::AlignCenter);
    preview->setSource(0);
    auto *pacing = new PreviewThread(container);
    pacing->setWidget(preview);
    pacing->start();
    auto *timer = new QTimer(container);
    QObject::connect(timer, &QTimer::timeout, preview,
                     [preview] { preview->setFrame(0, 0, 1280, 720, colourBars(1280, 720).release()); });
    timer->start(40);
    return container;
}

} // namespace

QWidget *makeWidgetPage()
{
    auto *page = new QWidget;
    makePanel(*page, QColor(0x20, 0x20, 0x20));
    auto *grid = new QGridLayout(page);
    grid->addWidget(makeSpinners(), 0, 0, 1, 2, Qt::AlignLeft);
    grid->addWidget(makeBars(), 1, 0, 1, 2, Qt::AlignLeft);
    auto *load = new CpuGpuTrack(page);
    makePanel(*load, QColor(0x15, 0x15, 0x15));
    load->setFixedSize(420, 240);
    for (int i = 0; i < 61; ++i)
        load->gpuCpuLoad(40 + i * 7 % 31, i * i % 97 + (i > 50 ? 25 : 0));
    grid->addWidget(load, 2, 0, Qt::AlignLeft);
    grid->addWidget(makePreview(), 2, 1, Qt::AlignLeft);
    grid->setRowStretch(3, 1);
    return page;
}

std::vector<std::pair<QString, QPixmap>> dialogStates()
{
    std::vector<std::pair<QString, QPixmap>> pictures;
    CustomMessageBox revision;
    revision.setTitle(QStringLiteral("REVISION MODE"));
    revision.setMessage(QStringLiteral("YOU HAVE ACTIVATED THE REVISION MODE"), {}, {},
                        QStringLiteral("Select a Vexa Report to visualize the graphs in Vexa."));
    revision.setButtonText(QStringLiteral("LOAD FILE"));
    revision.show();
    pictures.emplace_back(QStringLiteral("box-revision"), revision.grab());

    CustomMessageBox fail;
    fail.setMessage(QStringLiteral("FAIL"), {}, {}, QStringLiteral("This machine doesn't support OpenGL."));
    fail.setErrorStyle();
    fail.setButtonText(QStringLiteral("OK"));
    fail.show();
    pictures.emplace_back(QStringLiteral("box-fail"), fail.grab());

    BenchmarkDlg benchmark;
    benchmark.show();
    pictures.emplace_back(QStringLiteral("benchmark-start"), benchmark.grab());
    benchmark.findChild<QAbstractButton *>(QStringLiteral("btn_test"))->click();
    pictures.emplace_back(QStringLiteral("benchmark-working"), benchmark.grab());
    benchmark.startBenchmark();
    benchmark.setCpuCores(16);
    benchmark.setFPSValue(72);
    pictures.emplace_back(QStringLiteral("benchmark-results"), benchmark.grab());
    return pictures;
}
