#include "charts/previewfeed.h"
#include "charts/previewthread.h"
#include "charts/videoglpreview.h"
#include "ndi/ndilib.h"
#include "ndi/receivercontroller.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>

// Previews a loopback source for a long time and watches the memory of the process. Linux.
// Usage: preview_soak SECONDS [steady|restless]
// restless: every second another source selection and another size of the window.
// In the first minute (or a sixth of the time) the main thread is held up now and then, so that as many frames are
// under way as there can ever be. Status 0: after that, memory stays within 5 MB, and frames are painted.

namespace {

constexpr double limitMb = 5.0;
constexpr int reportMs = 10000;
constexpr int restlessMs = 1000;
constexpr int holdUpMs = 400;

double residentMb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0.0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.simplified().split(' ').value(1).toDouble() / 1024.0;
    }
    return 0.0;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 0;
    const bool restless = argc > 2 && qstrcmp(argv[2], "restless") == 0;
    if (seconds < 1 || !NDIlib_initialize()) {
        std::fputs("usage: preview_soak SECONDS [steady|restless], with an NDI runtime\n", stderr);
        return 2;
    }

    QWidget window;
    window.resize(640, 480);
    QWidget container(&window);
    container.setGeometry(20, 20, 400, 225);
    VideoGlPreview preview(&container);
    preview.resize(container.size());
    preview.setSource(0);
    PreviewFeed feed(&preview);
    PreviewThread pacing;
    pacing.setWidget(&preview);
    window.show();

    ReceiverController controller;
    qint64 frames = 0;
    qint64 paints = 0;
    QObject::connect(&controller, &ReceiverController::frameData, &feed, &PreviewFeed::takeFrame);
    QObject::connect(&controller, &ReceiverController::frameData, &preview, [&frames] { ++frames; });
    QObject::connect(&preview, &VideoGlPreview::finishedToRenderPixmap, &window, [&paints] { ++paints; });
    QObject::connect(&controller, &ReceiverController::sourceReceiverFinished, &application, &QApplication::quit);
    controller.startReceivers({"LOOPBACK (1080p59.94)", nullptr}, 0, 1, 0);
    pacing.start();

    QElapsedTimer clock;
    clock.start();
    const qint64 warmUpMs = std::min(60000, seconds * 1000 / 6);
    double startMb = 0.0;
    double leastMb = 0.0;
    double mostMb = 0.0;
    const auto sample = [&] {
        const double nowMb = residentMb();
        if (clock.elapsed() >= warmUpMs) {
            if (startMb <= 0.0)
                startMb = leastMb = mostMb = nowMb;
            leastMb = std::min(leastMb, nowMb);
            mostMb = std::max(mostMb, nowMb);
        }
        std::printf("%5lld s  %8.2f MB resident  %7lld frames  %7lld paints\n", clock.elapsed() / 1000, nowMb, frames,
                    paints);
        std::fflush(stdout);
    };
    QTimer reports;
    QObject::connect(&reports, &QTimer::timeout, &window, sample);
    reports.start(std::min(reportMs, seconds * 100));
    QTimer holdUps;
    QObject::connect(&holdUps, &QTimer::timeout, &window, [&] {
        if (clock.elapsed() >= warmUpMs * 3 / 4)
            holdUps.stop();
        else
            QThread::msleep(holdUpMs);
    });
    holdUps.start(3 * holdUpMs);
    int step = 0;
    QTimer unrest;
    QObject::connect(&unrest, &QTimer::timeout, &window, [&] {
        ++step;
        preview.setSource(step % 3 == 0 ? -1 : 0);
        container.resize(200 + step * 37 % 400, 100 + step * 53 % 300);
    });
    if (restless)
        unrest.start(restlessMs);
    QTimer::singleShot(seconds * 1000, &window, [&controller] { controller.stopReceivers(); });
    QApplication::exec();

    pacing.finish();
    std::printf("resident memory after %lld s: %.2f MB, from then on %.2f to %.2f MB; after the run %.2f MB\n",
                warmUpMs / 1000, startMb, leastMb, mostMb, residentMb());
    return startMb > 0.0 && mostMb - leastMb <= limitMb && paints > seconds && frames > seconds ? 0 : 1;
}
