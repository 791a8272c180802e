#include "charts/previewfeed.h"

#include "charts/videoglpreview.h"

PreviewFeed::PreviewFeed(VideoGlPreview *preview, QObject *parent) : QObject(parent), m_preview(preview) {}

void PreviewFeed::takeFrame(int sourceIndex, int type, int width, int height, uint8_t *pData)
{
    if (!m_preview || m_preview->source() == -1) {
        delete[] pData;
        return;
    }
    m_preview->setFrame(sourceIndex, type, width, height, pData);
}
