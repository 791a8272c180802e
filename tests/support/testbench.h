#pragma once

#include "loopback/platform.h"
#include "loopback/runtime.h"
#include "loopback/truthreader.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

/// What the tests of the loopback itself share.
namespace loopback {

constexpr std::uint32_t kLongMs = 10000; ///< a wait that is meant to be ended by what it waits for

/// The name of a file in the folder for temporary files, removed at the end.
class TemporaryFile final {
public:
    TemporaryFile() = default;
    ~TemporaryFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    std::string path() const { return m_path.u8string(); }

private:
    const std::filesystem::path m_path =
        std::filesystem::temp_directory_path() / ("loopback-truth-" + std::to_string(steadyNowNs()));
};

/// A runtime on a scenario of its own, with a truth file.
class TestBench final {
public:
    explicit TestBench(const std::string &json) : m_path(m_file.path())
    {
        ScenarioResult result = parseScenario(json);
        std::string error = result.error;
        if (!result.scenario || !m_truth.open(m_path, 100000, error))
            throw std::runtime_error(error);
        runtime = std::make_unique<Runtime>(std::make_unique<const Scenario>(std::move(*result.scenario)), m_truth);
    }

    NDIlib_recv_instance_t connect(const char *name, NDIlib_recv_bandwidth_e bandwidth = NDIlib_recv_bandwidth_highest)
    {
        NDIlib_recv_create_v3_t settings;
        settings.source_to_connect_to.p_ndi_name = name;
        settings.bandwidth = bandwidth;
        return runtime->createReceiver(&settings);
    }

    /// Captures whatever comes.
    NDIlib_frame_type_e capture(NDIlib_recv_instance_t receiver, std::uint32_t timeoutMs = kLongMs)
    {
        return runtime->capture(receiver, &video, &audio, &metadata, timeoutMs);
    }

    std::int64_t number() const { return readFrameNumber(layoutOf(format()), video.p_data).value_or(-1); }

    VideoFormat format() const
    {
        VideoFormat format;
        format.width = video.xres;
        format.height = video.yres;
        format.fourCC = static_cast<std::uint32_t>(video.FourCC);
        format.stride = video.line_stride_in_bytes;
        return format;
    }

    std::vector<TruthRecord> truth() const { return readTruth(m_path); }

    std::vector<std::string> names(NDIlib_find_instance_t finder)
    {
        std::uint32_t count = 0;
        const NDIlib_source_t *list = runtime->currentSources(finder, &count);
        std::vector<std::string> result;
        for (std::uint32_t i = 0; i < count; ++i)
            result.emplace_back(list[i].p_ndi_name);
        return result;
    }

    NDIlib_video_frame_v2_t video;
    NDIlib_audio_frame_v2_t audio;
    NDIlib_metadata_frame_t metadata;

private:
    TemporaryFile m_file; ///< goes after the log that is mapped onto it
    std::string m_path;
    TruthLog m_truth;

public:
    std::unique_ptr<Runtime> runtime; ///< goes before the truth it writes
};

/// A scenario of one small source "x" with 100 frames per second and these further members.
inline std::string sources(const std::string &members)
{
    return R"({"connectMs": 5, "queueFrames": 1000, "discoveryMs": 10, "discoveryStepMs": 1, "sources": [{"name": "x", "width": 320, )"
           R"("height": 240, "rateN": 100, )"
           + members + "}]}";
}

inline double millisecondsOf(const std::function<void()> &work)
{
    const std::int64_t fromNs = steadyNowNs();
    work();
    return static_cast<double>(steadyNowNs() - fromNs) / 1e6;
}

} // namespace loopback
