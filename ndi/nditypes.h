#pragma once

#include <cstddef>
#include <cstdint>

/// The few types of the NDI runtime's C interface that this program uses. Names, order, sizes and
/// offsets are the runtime's binary interface on every 64-bit platform; the assertions below hold
/// them fast. The header needs nothing but the C++ library, so the loopback runtime shares it.

struct NDIlib_find_instance_type;
struct NDIlib_recv_instance_type;
using NDIlib_find_instance_t = NDIlib_find_instance_type *;
using NDIlib_recv_instance_t = NDIlib_recv_instance_type *;

constexpr std::int64_t NDIlib_send_timecode_synthesize = INT64_MAX;

/// What a capture returned. Newer runtimes add values above 100: an unknown value means "nothing".
enum NDIlib_frame_type_e : std::int32_t {
    NDIlib_frame_type_none = 0,
    NDIlib_frame_type_video = 1,
    NDIlib_frame_type_audio = 2,
    NDIlib_frame_type_metadata = 3,
    NDIlib_frame_type_error = 4,
    NDIlib_frame_type_status_change = 100,
};

enum NDIlib_recv_bandwidth_e : std::int32_t {
    NDIlib_recv_bandwidth_metadata_only = -10,
    NDIlib_recv_bandwidth_audio_only = 10,
    NDIlib_recv_bandwidth_lowest = 0,
    NDIlib_recv_bandwidth_highest = 100,
};

enum NDIlib_recv_color_format_e : std::int32_t {
    NDIlib_recv_color_format_BGRX_BGRA = 0,
    NDIlib_recv_color_format_UYVY_BGRA = 1,
    NDIlib_recv_color_format_RGBX_RGBA = 2,
    NDIlib_recv_color_format_UYVY_RGBA = 3,
    NDIlib_recv_color_format_fastest = 100,
    NDIlib_recv_color_format_best = 101,
};

enum NDIlib_frame_format_type_e : std::int32_t {
    NDIlib_frame_format_type_interleaved = 0,
    NDIlib_frame_format_type_progressive = 1,
    NDIlib_frame_format_type_field_0 = 2,
    NDIlib_frame_format_type_field_1 = 3,
};

/// Four ASCII characters, the first one in the lowest byte.
enum NDIlib_FourCC_video_type_e : std::int32_t {
    NDIlib_FourCC_video_type_UYVY = 0x59565955,
    NDIlib_FourCC_video_type_UYVA = 0x41565955,
    NDIlib_FourCC_video_type_P216 = 0x36313250,
    NDIlib_FourCC_video_type_PA16 = 0x36314150,
    NDIlib_FourCC_video_type_YV12 = 0x32315659,
    NDIlib_FourCC_video_type_I420 = 0x30323449,
    NDIlib_FourCC_video_type_NV12 = 0x3231564E,
    NDIlib_FourCC_video_type_BGRA = 0x41524742,
    NDIlib_FourCC_video_type_BGRX = 0x58524742,
    NDIlib_FourCC_video_type_RGBA = 0x41424752,
    NDIlib_FourCC_video_type_RGBX = 0x58424752,
};

/// A source on the network; both strings are UTF-8 and belong to whoever made the structure.
struct NDIlib_source_t {
    const char *p_ndi_name = nullptr;
    const char *p_url_address = nullptr; ///< IP address and port in older runtimes
};

struct NDIlib_find_create_t {
    bool show_local_sources = true;
    const char *p_groups = nullptr;
    const char *p_extra_ips = nullptr;
};

struct NDIlib_recv_create_v3_t {
    NDIlib_source_t source_to_connect_to;
    NDIlib_recv_color_format_e color_format = NDIlib_recv_color_format_UYVY_BGRA;
    NDIlib_recv_bandwidth_e bandwidth = NDIlib_recv_bandwidth_highest;
    bool allow_video_fields = true;
    const char *p_ndi_recv_name = nullptr;
};

/// The defaults are the runtime's own; a frame that never arrives leaves them in place.
struct NDIlib_video_frame_v2_t {
    std::int32_t xres = 0;
    std::int32_t yres = 0;
    NDIlib_FourCC_video_type_e FourCC = NDIlib_FourCC_video_type_UYVY;
    std::int32_t frame_rate_N = 30000;
    std::int32_t frame_rate_D = 1001;
    float picture_aspect_ratio = 0.0F;
    NDIlib_frame_format_type_e frame_format_type = NDIlib_frame_format_type_progressive;
    std::int64_t timecode = NDIlib_send_timecode_synthesize;
    std::uint8_t *p_data = nullptr;
    std::int32_t line_stride_in_bytes = 0;
    const char *p_metadata = nullptr;
    std::int64_t timestamp = 0; ///< units of 100 ns
};

struct NDIlib_audio_frame_v2_t {
    std::int32_t sample_rate = 48000;
    std::int32_t no_channels = 2;
    std::int32_t no_samples = 0;
    std::int64_t timecode = NDIlib_send_timecode_synthesize;
    float *p_data = nullptr;
    std::int32_t channel_stride_in_bytes = 0;
    const char *p_metadata = nullptr;
    std::int64_t timestamp = 0; ///< units of 100 ns
};

struct NDIlib_metadata_frame_t {
    std::int32_t length = 0;
    std::int64_t timecode = NDIlib_send_timecode_synthesize;
    char *p_data = nullptr;
};

/// Frame counts of a receiver, in total or dropped.
struct NDIlib_recv_performance_t {
    std::int64_t video_frames = 0;
    std::int64_t audio_frames = 0;
    std::int64_t metadata_frames = 0;
};

static_assert(sizeof(void *) == 8, "the NDI runtime is used on 64-bit platforms only");

static_assert(sizeof(NDIlib_source_t) == 16);
static_assert(offsetof(NDIlib_source_t, p_ndi_name) == 0);
static_assert(offsetof(NDIlib_source_t, p_url_address) == 8);

static_assert(sizeof(NDIlib_find_create_t) == 24);
static_assert(offsetof(NDIlib_find_create_t, show_local_sources) == 0);
static_assert(offsetof(NDIlib_find_create_t, p_groups) == 8);
static_assert(offsetof(NDIlib_find_create_t, p_extra_ips) == 16);

static_assert(sizeof(NDIlib_recv_create_v3_t) == 40);
static_assert(offsetof(NDIlib_recv_create_v3_t, source_to_connect_to) == 0);
static_assert(offsetof(NDIlib_recv_create_v3_t, color_format) == 16);
static_assert(offsetof(NDIlib_recv_create_v3_t, bandwidth) == 20);
static_assert(offsetof(NDIlib_recv_create_v3_t, allow_video_fields) == 24);
static_assert(offsetof(NDIlib_recv_create_v3_t, p_ndi_recv_name) == 32);

static_assert(sizeof(NDIlib_video_frame_v2_t) == 72);
static_assert(offsetof(NDIlib_video_frame_v2_t, xres) == 0);
static_assert(offsetof(NDIlib_video_frame_v2_t, yres) == 4);
static_assert(offsetof(NDIlib_video_frame_v2_t, FourCC) == 8);
static_assert(offsetof(NDIlib_video_frame_v2_t, frame_rate_N) == 12);
static_assert(offsetof(NDIlib_video_frame_v2_t, frame_rate_D) == 16);
static_assert(offsetof(NDIlib_video_frame_v2_t, picture_aspect_ratio) == 20);
static_assert(offsetof(NDIlib_video_frame_v2_t, frame_format_type) == 24);
static_assert(offsetof(NDIlib_video_frame_v2_t, timecode) == 32);
static_assert(offsetof(NDIlib_video_frame_v2_t, p_data) == 40);
static_assert(offsetof(NDIlib_video_frame_v2_t, line_stride_in_bytes) == 48);
static_assert(offsetof(NDIlib_video_frame_v2_t, p_metadata) == 56);
static_assert(offsetof(NDIlib_video_frame_v2_t, timestamp) == 64);

static_assert(sizeof(NDIlib_audio_frame_v2_t) == 56);
static_assert(offsetof(NDIlib_audio_frame_v2_t, sample_rate) == 0);
static_assert(offsetof(NDIlib_audio_frame_v2_t, no_channels) == 4);
static_assert(offsetof(NDIlib_audio_frame_v2_t, no_samples) == 8);
static_assert(offsetof(NDIlib_audio_frame_v2_t, timecode) == 16);
static_assert(offsetof(NDIlib_audio_frame_v2_t, p_data) == 24);
static_assert(offsetof(NDIlib_audio_frame_v2_t, channel_stride_in_bytes) == 32);
static_assert(offsetof(NDIlib_audio_frame_v2_t, p_metadata) == 40);
static_assert(offsetof(NDIlib_audio_frame_v2_t, timestamp) == 48);

static_assert(sizeof(NDIlib_metadata_frame_t) == 24);
static_assert(offsetof(NDIlib_metadata_frame_t, length) == 0);
static_assert(offsetof(NDIlib_metadata_frame_t, timecode) == 8);
static_assert(offsetof(NDIlib_metadata_frame_t, p_data) == 16);

static_assert(sizeof(NDIlib_recv_performance_t) == 24);
