#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the loopback plays: sources, their frames and everything that goes wrong with them.
/// Plain values; docs/loopback.md describes the file they are read from.
namespace loopback {

constexpr std::int64_t kNsPerMs = 1'000'000;

/// Frames per second as a fraction. A rate that paces is positive; a declared one may be anything.
struct Rate {
    std::int32_t n = 30000;
    std::int32_t d = 1001;
};

/// What the frames of a source say about themselves. Absurd values are meant to be possible.
struct VideoFormat {
    std::int32_t width = 1920;
    std::int32_t height = 1080;
    std::uint32_t fourCC = 0x59565955; ///< UYVY
    std::int32_t stride = 0;           ///< bytes per line; 0: the natural line
    bool noData = false;               ///< the frame's data pointer is null
    Rate declaredRate{60000, 1001};
    float aspect = 0.0F;          ///< 0: square pixels, as the runtime declares it
    std::int32_t frameFormat = 1; ///< NDIlib_frame_format_type_e; 1: progressive
};

struct AudioSpec {
    std::int32_t blocksPerFrame = 0; ///< 0: no audio
    std::int32_t samples = 0;        ///< per block and channel; 0: what fills the frame's time
    std::int32_t sampleRate = 48000;
    std::int32_t channels = 2;
};

/// A block of metadata every so many frames.
struct MetadataSpec {
    std::int64_t everyFrames = 0; ///< 0: none
    std::string text;
};

enum class JitterKind { none, uniform, gaussian, burst };

struct JitterSpec {
    JitterKind kind = JitterKind::none;
    std::int64_t amplitudeNs = 0;  ///< uniform: to both sides; burst: how long frames are held back
    std::int64_t sigmaNs = 0;      ///< gaussian; cut off at four sigma
    std::int64_t everyFrames = 60; ///< burst: mean distance between two of them
    std::uint64_t seed = 1;
};

enum class EventKind { drop, stall, burst, error, status, unknown, metadata, size, rate, vanish, zeroSize };

/// Something that happens at a time or at a frame of the source's clock.
struct Event {
    EventKind kind = EventKind::status;
    std::optional<std::int64_t> atNs; ///< exactly one of atNs and atFrame is set
    std::optional<std::int64_t> atFrame;
    std::int64_t frames = 0;              ///< drop, burst, zeroSize
    std::int64_t durationNs = 0;          ///< stall, vanish
    std::int32_t value = 0;               ///< unknown: the frame type that a capture returns
    std::optional<std::int32_t> receiver; ///< error: only this receiver (order of creation)
    std::string text;                     ///< metadata
    std::int32_t width = 0;               ///< size
    std::int32_t height = 0;
    std::optional<std::uint32_t> fourCC;
    std::int32_t stride = 0;
    bool noData = false;
    Rate declaredRate; ///< rate
    Rate clockRate;
};

/// Comes and goes in the discovery list, on the finder's clock.
struct ChurnSpec {
    std::int64_t periodNs = 0; ///< 0: none; visible for one period, gone for the next
    std::int64_t fromNs = 0;
    std::int64_t untilNs = INT64_MAX;
};

struct SourceSpec {
    std::string name; ///< UTF-8
    std::string url;
    VideoFormat format;
    Rate clockRate{60000, 1001};          ///< paces the frames
    std::optional<std::int64_t> appearNs; ///< finder's clock; nullopt: by the discovery schedule
    std::optional<std::int64_t> disappearNs;
    ChurnSpec churn;
    std::int64_t startNs = 0;          ///< source's clock: frames flow from here ...
    std::optional<std::int64_t> endNs; ///< ... up to here
    bool timestamps = true;            ///< false: frames carry the runtime's "undefined"
    std::string frameMetadata;         ///< carried by every video frame; empty: null pointer
    AudioSpec audio;
    MetadataSpec metadata;
    JitterSpec jitter;
    std::vector<Event> events;
};

enum class CrashKind { nullWrite, abort, stackOverflow, pureVirtual };
enum class CrashCall { initialize, wait, capture };

/// A crash of the process within a call of the runtime.
struct CrashSpec {
    CrashKind kind = CrashKind::nullWrite;
    CrashCall call = CrashCall::initialize;
    std::int64_t number = 1; ///< in which of these calls, from 1
};

struct Scenario {
    bool initialize = true;
    bool finderFails = false;
    bool receiverFails = false;
    bool unpaced = false;
    std::int64_t connectNs = 30 * kNsPerMs;
    std::int64_t discoveryNs = 150 * kNsPerMs;
    std::int64_t discoveryStepNs = 50 * kNsPerMs;
    std::int64_t discoveryBatch = 0; ///< sources per step; 0: a tenth of them, at least one
    std::int32_t queueFrames = 16;
    std::optional<std::uint32_t> claimedSources; ///< reported as the number of sources instead of the true one
    std::optional<CrashSpec> crash;
    std::vector<SourceSpec> sources;

    /// When source `index` enters the list of a finder, in ns since the finder was made.
    std::int64_t appearNs(std::size_t index) const;
};

/// The four sources that are there without a scenario file.
Scenario defaultScenario();

struct ScenarioResult {
    std::optional<Scenario> scenario;
    std::string error; ///< place and reason when there is no scenario
};

/// Reads a scenario from JSON text. Pure; any thread.
ScenarioResult parseScenario(const std::string &json);

} // namespace loopback
