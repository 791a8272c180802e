#pragma once

#include "ndi/nditypes.h"

#include <QString>
#include <QStringList>

/// The NDI runtime's functions under their own names. Each one forwards to the library that is
/// found at run time, on the first call from any thread, and kept for the life of the process.
/// They have C++ linkage, so that no symbol of ours can stand in for one inside that library.
///
/// Without a library NDIlib_initialize() is false, creators return null, captures and waits return
/// "nothing" at once, and ndiRuntimeProblem() tells why.

bool NDIlib_initialize();
void NDIlib_destroy();

NDIlib_find_instance_t NDIlib_find_create_v2(const NDIlib_find_create_t *settings = nullptr);
bool NDIlib_find_wait_for_sources(NDIlib_find_instance_t finder, std::uint32_t timeoutMs);
const NDIlib_source_t *NDIlib_find_get_current_sources(NDIlib_find_instance_t finder, std::uint32_t *count);
void NDIlib_find_destroy(NDIlib_find_instance_t finder);

NDIlib_recv_instance_t NDIlib_recv_create_v3(const NDIlib_recv_create_v3_t *settings = nullptr);
NDIlib_frame_type_e NDIlib_recv_capture_v2(NDIlib_recv_instance_t receiver, NDIlib_video_frame_v2_t *video,
                                           NDIlib_audio_frame_v2_t *audio, NDIlib_metadata_frame_t *metadata,
                                           std::uint32_t timeoutMs);
void NDIlib_recv_free_video_v2(NDIlib_recv_instance_t receiver, const NDIlib_video_frame_v2_t *video);
void NDIlib_recv_free_audio_v2(NDIlib_recv_instance_t receiver, const NDIlib_audio_frame_v2_t *audio);
void NDIlib_recv_destroy(NDIlib_recv_instance_t receiver);

/// Frames received and lost inside the runtime; false when the runtime cannot tell. Complete like the rest of the
/// interface: the program does not ask yet.
bool NDIlib_recv_get_performance(NDIlib_recv_instance_t receiver, NDIlib_recv_performance_t *total,
                                 NDIlib_recv_performance_t *dropped);

/// Why there is no runtime: one line that names every path tried and what was wrong with it.
/// Empty when a library is in use. Opens the library when nothing has done so yet; any thread.
QString ndiRuntimeProblem();

/// The libraries that were found but are of no use, each with its reason, one line each. Empty when a library is in
/// use and when none was found at all.
QStringList ndiRuntimeFaults();
