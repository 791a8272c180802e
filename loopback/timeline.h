#pragma once

#include "loopback/scenario.h"
#include "loopback/sourceclock.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace loopback {

enum class StepKind { video, audio, metadata, error, status, unknown, skip };

/// One thing a source does at one moment.
struct Step {
    StepKind kind = StepKind::video;
    std::int64_t dueNs = 0;               ///< source's clock
    std::int64_t frame = 0;               ///< video, skip: the frame's number; audio: the block's
    std::int64_t timecode100ns = 0;       ///< video: nominal time; audio, metadata: of the frame
    VideoFormat format;                   ///< video
    std::int32_t samples = 0;             ///< audio
    std::int64_t firstSample = 0;         ///< audio: first sample's number, to continue the tone
    std::int32_t value = 0;               ///< unknown
    std::optional<std::int32_t> receiver; ///< error
    const std::string *text = nullptr;    ///< metadata; owned by the SourceSpec
    std::uint64_t order = 0;              ///< decides between equal times
};

/// A stretch of the source's clock.
struct Window {
    std::int64_t fromNs = 0;
    std::int64_t untilNs = 0; ///< not part of it
};

/// Plays a SourceSpec: hands out what happens, in order of time, for ever or until the source ends.
/// Pure, not thread-safe. The source description must outlive it.
class Timeline final {
public:
    explicit Timeline(const SourceSpec &spec);

    /// The next step; nullopt when nothing will ever happen again.
    std::optional<Step> next();

    /// When the source is out of the discovery list through its own events.
    static std::vector<Window> vanishWindows(const SourceSpec &spec);

private:
    void advance();
    void apply(const Event &event, std::int64_t nowNs);
    void addVideo(std::int64_t frameNs);
    void addAudio(std::int64_t frameNs, std::int64_t intervalNs);
    void addMetadata(std::int64_t dueNs, const std::string &text);
    void add(Step step);
    bool eventsLeft() const { return m_nextTimed < m_timed.size(); }

    const SourceSpec &m_spec;
    SourceClock m_clock;
    Jitter m_jitter;
    VideoFormat m_format;
    std::vector<const Event *> m_timed;  ///< by atNs
    std::vector<const Event *> m_framed; ///< by atFrame
    std::size_t m_nextTimed = 0;
    std::size_t m_nextFramed = 0;
    std::vector<Step> m_ahead; ///< heap, earliest on top
    std::vector<Window> m_vanished;
    std::int64_t m_frame = 0; ///< next frame to look at
    std::uint64_t m_order = 0;
    bool m_framesOver = false;
    std::int64_t m_dropFrames = 0;
    std::int64_t m_zeroFrames = 0;
    std::int64_t m_heldFrames = 0;
    std::int64_t m_heldUntilNs = 0;
    std::int64_t m_quietUntilNs = INT64_MIN;
    std::int64_t m_lastVideoNs = 0;
    std::int64_t m_audioBlock = 0;
};

} // namespace loopback
