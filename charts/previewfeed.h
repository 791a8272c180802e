#pragma once

#include <QObject>
#include <QPointer>

#include <cstdint>

class VideoGlPreview;

/// Stands between the receivers and the preview. Owner rule: a frame that comes in belongs to the feed.
/// While a source is selected it goes on to the preview, which then owns it; while none is, or when the
/// preview is gone, the feed frees it. GUI thread.
class PreviewFeed final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PreviewFeed)

public:
    /// preview is not owned.
    explicit PreviewFeed(VideoGlPreview *preview, QObject *parent = nullptr);

public slots:
    /// For ReceiverController::frameData(): pData came from new[].
    void takeFrame(int sourceIndex, int type, int width, int height, uint8_t *pData);

private:
    QPointer<VideoGlPreview> m_preview;
};
