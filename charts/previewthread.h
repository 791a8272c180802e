#pragma once

#include <QPointer>
#include <QThread>

#include <atomic>

class VideoGlPreview;

/// Paces the preview: asks it to repaint, waits until it has, and asks again. Made in the GUI thread,
/// where everything but run() happens. May be started again after it has ended.
class PreviewThread final : public QThread {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PreviewThread)

public:
    explicit PreviewThread(QObject *parent = nullptr);
    /// Ends the thread and waits for it.
    ~PreviewThread() override;

    /// The preview to pace, null for none. Not owned; it may go at any time.
    void setWidget(VideoGlPreview *newPreview);

    /// Starts the loop; while it runs this only takes back a stop() that it has not seen yet. A stop() from here on is
    /// never lost, which one before the thread's first line would be if the thread itself took an earlier one back.
    void start();

    /// Ends the loop within 20 ms, whether or not the preview is painted; does not wait. Any thread.
    void stop();

    /// Stops the thread and returns when it has ended, however short its life was.
    void finish();

protected:
    void run() override;

private:
    void askForRepaint();

    QPointer<VideoGlPreview> preview; ///< GUI thread only
    std::atomic<bool> stopRequested{true};
    std::atomic<bool> waitingForPaint{true};
};
