#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

struct SwsContext;

/// A picture in planar 4:2:0, rows without padding. The planes belong to the scaler that made them and
/// are good until its next scale().
struct PreviewPlanes {
    const std::uint8_t *y = nullptr;
    const std::uint8_t *u = nullptr;
    const std::uint8_t *v = nullptr;
    int width = 0;        ///< of the Y plane
    int height = 0;       ///< of the Y plane, even
    int chromaWidth = 0;  ///< of the U and V planes
    int chromaHeight = 0; ///< of the U and V planes
};

/// Scales UYVY frames and converts them to planar 4:2:0. Memory and the scaler's tables are kept from
/// one frame to the next and renewed only when a size changes. One thread at a time.
class PreviewScaler final {
public:
    PreviewScaler();
    ~PreviewScaler();
    PreviewScaler(const PreviewScaler &) = delete;
    PreviewScaler &operator=(const PreviewScaler &) = delete;

    /// What the scaler may read beyond the last row of a frame, in bytes.
    static constexpr int frameTailBytes = 64;

    /// Scales the whole frame, rows of frameWidth * 2 bytes, to width x height with the height rounded
    /// down to even. frameTailBytes more bytes behind the frame must be readable. Null when there is
    /// no picture of such sizes.
    const PreviewPlanes *scale(const std::uint8_t *uyvy, int frameWidth, int frameHeight, int width, int height);

    /// Bytes held for the picture.
    std::size_t bufferBytes() const { return m_buffer.capacity(); }

private:
    struct ContextDeleter {
        void operator()(SwsContext *context) const;
    };

    bool prepareContext(int frameWidth, int frameHeight, int width, int height);
    void layOutPlanes(int width, int height);

    std::unique_ptr<SwsContext, ContextDeleter> m_context;
    std::vector<std::uint8_t> m_buffer;
    PreviewPlanes m_planes;
};
