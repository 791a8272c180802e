#pragma once

#include "ndi/nditypes.h"

/// The runtime's functions as they stand in the library: C calling convention, null where absent.
/// The last is optional, the others are required.
struct NdiFunctions {
    bool (*initialize)() = nullptr;
    void (*destroy)() = nullptr;
    NDIlib_find_instance_t (*findCreate)(const NDIlib_find_create_t *) = nullptr;
    bool (*findWaitForSources)(NDIlib_find_instance_t, std::uint32_t) = nullptr;
    const NDIlib_source_t *(*findGetCurrentSources)(NDIlib_find_instance_t, std::uint32_t *) = nullptr;
    void (*findDestroy)(NDIlib_find_instance_t) = nullptr;
    NDIlib_recv_instance_t (*recvCreate)(const NDIlib_recv_create_v3_t *) = nullptr;
    NDIlib_frame_type_e (*recvCapture)(NDIlib_recv_instance_t, NDIlib_video_frame_v2_t *, NDIlib_audio_frame_v2_t *,
                                       NDIlib_metadata_frame_t *, std::uint32_t) = nullptr;
    void (*recvFreeVideo)(NDIlib_recv_instance_t, const NDIlib_video_frame_v2_t *) = nullptr;
    void (*recvFreeAudio)(NDIlib_recv_instance_t, const NDIlib_audio_frame_v2_t *) = nullptr;
    void (*recvDestroy)(NDIlib_recv_instance_t) = nullptr;
    void (*recvGetPerformance)(NDIlib_recv_instance_t, NDIlib_recv_performance_t *,
                               NDIlib_recv_performance_t *) = nullptr;
};

/// Puts another set of functions in the library's place; null goes back to the library. The set is
/// not owned and must outlive every call. For tests and benchmarks, while no call is under way.
void overrideNdiFunctions(const NdiFunctions *functions);
