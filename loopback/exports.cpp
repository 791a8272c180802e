#include "loopback/platform.h"
#include "loopback/runtime.h"
#include "loopback/scenario.h"
#include "loopback/truthlog.h"
#include "ndi/nditypes.h"

#include <charconv>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

// The functions of the NDI runtime that this library stands in for: a thin layer over one Runtime.

#if defined(_WIN32)
#define LOOPBACK_EXPORT extern "C" __declspec(dllexport)
#else
#define LOOPBACK_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace loopback {
namespace {

void say(const std::string &line)
{
    std::fputs((line + '\n').c_str(), stderr);
    std::fflush(stderr);
}

/// The real runtime says whose it is when it loads; so does this one.
struct Greeting {
    Greeting() { say("Loopback NDI runtime: made-up sources for tests and demonstrations"); }
};
const Greeting greeting;

/// Null, with the reason on standard error, when the scenario cannot be read.
std::unique_ptr<const Scenario> loadScenario()
{
    const std::optional<std::string> path = environment("VEXA_LOOPBACK_SCENARIO");
    auto scenario = std::make_unique<Scenario>(defaultScenario());
    if (path) {
        std::string error;
        const std::optional<std::string> content = readFile(*path, error);
        ScenarioResult result;
        if (content)
            result = parseScenario(*content);
        else
            result.error = "cannot be read: " + error;
        if (!result.scenario) {
            say("Loopback NDI runtime: scenario " + *path + ": " + result.error);
            return nullptr;
        }
        *scenario = std::move(*result.scenario);
    }
    if (environment("VEXA_LOOPBACK_UNPACED").value_or("0") != "0")
        scenario->unpaced = true;
    return scenario;
}

void openTruth(TruthLog &truth)
{
    const std::optional<std::string> path = environment("VEXA_LOOPBACK_TRUTH");
    if (!path)
        return;
    std::size_t records = TruthLog::kDefaultRecords;
    if (const auto wanted = environment("VEXA_LOOPBACK_TRUTH_RECORDS"))
        std::from_chars(wanted->data(), wanted->data() + wanted->size(), records);
    std::string error;
    if (!truth.open(*path, records, error))
        say("Loopback NDI runtime: truth file " + *path + ": " + error);
}

/// Made with the first call and never destroyed: its threads may run until the process ends.
Runtime &runtime()
{
    static Runtime *const instance = [] {
        pinLibrary();
        auto truth = std::make_unique<TruthLog>();
        openTruth(*truth);
        return new Runtime(loadScenario(), *truth.release());
    }();
    return *instance;
}

} // namespace
} // namespace loopback

using loopback::runtime;

LOOPBACK_EXPORT bool NDIlib_initialize()
{
    return runtime().initialize();
}

LOOPBACK_EXPORT void NDIlib_destroy()
{
    runtime().shutDown();
}

LOOPBACK_EXPORT const char *NDIlib_version()
{
    return "Loopback NDI runtime 1.0";
}

LOOPBACK_EXPORT NDIlib_find_instance_t NDIlib_find_create_v2(const NDIlib_find_create_t *)
{
    return runtime().createFinder();
}

LOOPBACK_EXPORT bool NDIlib_find_wait_for_sources(NDIlib_find_instance_t finder, std::uint32_t timeoutMs)
{
    return runtime().waitForSources(finder, timeoutMs);
}

LOOPBACK_EXPORT const NDIlib_source_t *NDIlib_find_get_current_sources(NDIlib_find_instance_t finder,
                                                                       std::uint32_t *count)
{
    return runtime().currentSources(finder, count);
}

LOOPBACK_EXPORT void NDIlib_find_destroy(NDIlib_find_instance_t finder)
{
    runtime().destroyFinder(finder);
}

LOOPBACK_EXPORT NDIlib_recv_instance_t NDIlib_recv_create_v3(const NDIlib_recv_create_v3_t *settings)
{
    return runtime().createReceiver(settings);
}

LOOPBACK_EXPORT NDIlib_frame_type_e NDIlib_recv_capture_v2(NDIlib_recv_instance_t receiver,
                                                           NDIlib_video_frame_v2_t *video,
                                                           NDIlib_audio_frame_v2_t *audio,
                                                           NDIlib_metadata_frame_t *metadata, std::uint32_t timeoutMs)
{
    return runtime().capture(receiver, video, audio, metadata, timeoutMs);
}

LOOPBACK_EXPORT void NDIlib_recv_free_video_v2(NDIlib_recv_instance_t receiver, const NDIlib_video_frame_v2_t *frame)
{
    runtime().freeVideo(receiver, frame);
}

LOOPBACK_EXPORT void NDIlib_recv_free_audio_v2(NDIlib_recv_instance_t receiver, const NDIlib_audio_frame_v2_t *frame)
{
    runtime().freeAudio(receiver, frame);
}

LOOPBACK_EXPORT void NDIlib_recv_get_performance(NDIlib_recv_instance_t receiver, NDIlib_recv_performance_t *total,
                                                 NDIlib_recv_performance_t *dropped)
{
    runtime().performance(receiver, total, dropped);
}

LOOPBACK_EXPORT void NDIlib_recv_destroy(NDIlib_recv_instance_t receiver)
{
    runtime().destroyReceiver(receiver);
}
