#include "charts/previewthread.h"

#include "charts/videoglpreview.h"

#include <QCoreApplication>

namespace {

constexpr unsigned long grainMs = 10;

} // namespace

PreviewThread::PreviewThread(QObject *parent) : QThread(parent)
{
    setObjectName(QStringLiteral("preview"));
    setTerminationEnabled(true);
}

PreviewThread::~PreviewThread()
{
    finish();
}

void PreviewThread::setWidget(VideoGlPreview *newPreview)
{
    if (preview == newPreview)
        return;
    if (preview)
        preview->disconnect(this);
    preview = newPreview;
    if (preview)
        connect(preview, &VideoGlPreview::finishedToRenderPixmap, this, [this] { waitingForPaint = false; });
    waitingForPaint = false; // the paint of the former one is not waited for
}

void PreviewThread::start()
{
    stopRequested = false;
    QThread::start();
}

void PreviewThread::stop()
{
    stopRequested = true;
}

void PreviewThread::finish()
{
    stop();
    wait();
}

void PreviewThread::run()
{
    while (!stopRequested) {
        waitingForPaint = true;
        // Through the GUI thread's queue, and to this object: the widget may be going.
        QMetaObject::invokeMethod(this, &PreviewThread::askForRepaint, Qt::QueuedConnection);
        while (waitingForPaint && !stopRequested) {
            QCoreApplication::processEvents();
            msleep(grainMs);
        }
    }
}

void PreviewThread::askForRepaint()
{
    if (preview)
        preview->update();
}
