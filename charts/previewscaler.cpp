#include "charts/previewscaler.h"

#include <array>
#include <climits>

extern "C" {
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

namespace {

/// Chroma rows of an odd width are one byte longer than their stride, and rows are written in whole vectors.
constexpr std::size_t overrunBytes = 256;

} // namespace

void PreviewScaler::ContextDeleter::operator()(SwsContext *context) const
{
    sws_freeContext(context);
}

PreviewScaler::PreviewScaler()
{
    // It would write remarks on sizes and alignment to standard error.
    av_log_set_level(AV_LOG_QUIET);
}

PreviewScaler::~PreviewScaler() = default;

const PreviewPlanes *PreviewScaler::scale(const std::uint8_t *uyvy, int frameWidth, int frameHeight, int width,
                                          int height)
{
    const int evenHeight = height - height % 2;
    if (frameWidth < 1 || frameHeight < 1 || width < 1 || evenHeight < 1 || frameWidth > INT_MAX / 2)
        return nullptr;
    if (!prepareContext(frameWidth, frameHeight, width, evenHeight))
        return nullptr;
    layOutPlanes(width, height);

    const std::array<const std::uint8_t *, 1> source{uyvy};
    const std::array<int, 1> sourceStride{frameWidth * 2};
    std::uint8_t *const start = m_buffer.data();
    const std::array<std::uint8_t *, 3> planes{start, start + (m_planes.u - start), start + (m_planes.v - start)};
    const std::array<int, 3> strides{width, m_planes.chromaWidth, m_planes.chromaWidth};
    const int rows =
        sws_scale(m_context.get(), source.data(), sourceStride.data(), 0, frameHeight, planes.data(), strides.data());
    return rows == evenHeight ? &m_planes : nullptr;
}

bool PreviewScaler::prepareContext(int frameWidth, int frameHeight, int width, int height)
{
    m_context.reset(sws_getCachedContext(m_context.release(), frameWidth, frameHeight, AV_PIX_FMT_UYVY422, width,
                                         height, AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr));
    return m_context != nullptr;
}

void PreviewScaler::layOutPlanes(int width, int height)
{
    const int evenHeight = height - height % 2;
    const std::size_t lumaBytes = std::size_t(evenHeight) * std::size_t(width);
    const std::size_t needed = std::size_t(height) * std::size_t(width) * 3 / 2 + overrunBytes;
    if (m_buffer.size() < needed)
        m_buffer.resize(needed);
    m_planes.y = m_buffer.data();
    m_planes.u = m_planes.y + lumaBytes;
    m_planes.v = m_planes.u + lumaBytes / 4;
    m_planes.width = width;
    m_planes.height = evenHeight;
    m_planes.chromaWidth = width / 2;
    m_planes.chromaHeight = evenHeight / 2;
}
