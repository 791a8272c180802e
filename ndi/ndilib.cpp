#include "ndi/ndilib.h"

#include "ndi/ndifunctions.h"
#include "ndi/runtimeloader.h"

#include <atomic>

namespace {

std::atomic<const NdiFunctions *> overriding{nullptr};

/// Opened once and never closed: receivers may be inside the library until the process ends.
const LoadedRuntime &runtime()
{
    static const LoadedRuntime *const loaded = new LoadedRuntime(loadRuntime(runtimeCandidates()));
    return *loaded;
}

const NdiFunctions *functions()
{
    if (const NdiFunctions *other = overriding.load(std::memory_order_acquire))
        return other;
    return runtime().library ? &runtime().functions : nullptr;
}

} // namespace

void overrideNdiFunctions(const NdiFunctions *functions)
{
    overriding.store(functions, std::memory_order_release);
}

bool NDIlib_initialize()
{
    const NdiFunctions *ndi = functions();
    return ndi && ndi->initialize();
}

void NDIlib_destroy()
{
    if (const NdiFunctions *ndi = functions())
        ndi->destroy();
}

NDIlib_find_instance_t NDIlib_find_create_v2(const NDIlib_find_create_t *settings)
{
    const NdiFunctions *ndi = functions();
    return ndi ? ndi->findCreate(settings) : nullptr;
}

bool NDIlib_find_wait_for_sources(NDIlib_find_instance_t finder, std::uint32_t timeoutMs)
{
    const NdiFunctions *ndi = functions();
    return ndi && ndi->findWaitForSources(finder, timeoutMs);
}

const NDIlib_source_t *NDIlib_find_get_current_sources(NDIlib_find_instance_t finder, std::uint32_t *count)
{
    if (const NdiFunctions *ndi = functions())
        return ndi->findGetCurrentSources(finder, count);
    if (count)
        *count = 0;
    return nullptr;
}

void NDIlib_find_destroy(NDIlib_find_instance_t finder)
{
    if (const NdiFunctions *ndi = functions())
        ndi->findDestroy(finder);
}

NDIlib_recv_instance_t NDIlib_recv_create_v3(const NDIlib_recv_create_v3_t *settings)
{
    const NdiFunctions *ndi = functions();
    return ndi ? ndi->recvCreate(settings) : nullptr;
}

NDIlib_frame_type_e NDIlib_recv_capture_v2(NDIlib_recv_instance_t receiver, NDIlib_video_frame_v2_t *video,
                                           NDIlib_audio_frame_v2_t *audio, NDIlib_metadata_frame_t *metadata,
                                           std::uint32_t timeoutMs)
{
    const NdiFunctions *ndi = functions();
    return ndi ? ndi->recvCapture(receiver, video, audio, metadata, timeoutMs) : NDIlib_frame_type_none;
}

void NDIlib_recv_free_video_v2(NDIlib_recv_instance_t receiver, const NDIlib_video_frame_v2_t *video)
{
    if (const NdiFunctions *ndi = functions())
        ndi->recvFreeVideo(receiver, video);
}

void NDIlib_recv_free_audio_v2(NDIlib_recv_instance_t receiver, const NDIlib_audio_frame_v2_t *audio)
{
    if (const NdiFunctions *ndi = functions())
        ndi->recvFreeAudio(receiver, audio);
}

void NDIlib_recv_destroy(NDIlib_recv_instance_t receiver)
{
    if (const NdiFunctions *ndi = functions())
        ndi->recvDestroy(receiver);
}

bool NDIlib_recv_get_performance(NDIlib_recv_instance_t receiver, NDIlib_recv_performance_t *total,
                                 NDIlib_recv_performance_t *dropped)
{
    const NdiFunctions *ndi = functions();
    if (!ndi || !ndi->recvGetPerformance)
        return false;
    ndi->recvGetPerformance(receiver, total, dropped);
    return true;
}

QString ndiRuntimeProblem()
{
    if (overriding.load(std::memory_order_acquire))
        return {};
    return runtime().problem;
}

QStringList ndiRuntimeFaults()
{
    if (overriding.load(std::memory_order_acquire))
        return {};
    return runtime().faults;
}
