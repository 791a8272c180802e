#include "loopback/itemmaker.h"

#include <cmath>
#include <utility>

namespace loopback {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr std::int64_t kTonePeriod = 48; ///< samples: 1 kHz at 48 kHz
constexpr float kToneLevel = 0.1F;

} // namespace

std::optional<QueueItem> ItemMaker::make(const Step &step, bool moving, std::int64_t wall100ns)
{
    QueueItem item;
    item.number = step.frame;
    switch (step.kind) {
    case StepKind::skip:
        return std::nullopt;
    case StepKind::video:
        item.type = NDIlib_frame_type_video;
        item.video = makeVideo(step, moving, wall100ns);
        if (!item.video)
            return std::nullopt;
        break;
    case StepKind::audio:
        item.type = NDIlib_frame_type_audio;
        item.audio = makeAudio(step, wall100ns);
        break;
    case StepKind::metadata:
        item.type = NDIlib_frame_type_metadata;
        item.metadata.length = static_cast<std::int32_t>(step.text->size() + 1); // counts the NUL
        item.metadata.timecode = step.timecode100ns;
        item.metadata.p_data = const_cast<char *>(step.text->c_str()); // the interface has no const
        break;
    case StepKind::error:
        item.type = NDIlib_frame_type_error;
        break;
    case StepKind::status:
        item.type = NDIlib_frame_type_status_change;
        break;
    case StepKind::unknown:
        item.type = step.value;
        break;
    }
    return item;
}

std::shared_ptr<VideoFrame> ItemMaker::makeVideo(const Step &step, bool moving, std::int64_t wall100ns)
{
    const VideoFormat &format = step.format;
    const PictureLayout layout = layoutOf(format);
    std::shared_ptr<VideoFrame> frame = m_pool.take(layout);
    if (!frame)
        return nullptr;
    frame->number = step.frame;
    if (frame->own)
        drawFrame(layout, frame->pixels(), step.frame, moving, frame->drawn);
    NDIlib_video_frame_v2_t &header = frame->header;
    header.xres = format.width;
    header.yres = format.height;
    header.FourCC = static_cast<NDIlib_FourCC_video_type_e>(format.fourCC);
    header.frame_rate_N = format.declaredRate.n;
    header.frame_rate_D = format.declaredRate.d;
    header.picture_aspect_ratio = format.aspect;
    header.frame_format_type = static_cast<NDIlib_frame_format_type_e>(format.frameFormat);
    header.timecode = step.timecode100ns;
    header.p_data = frame->pixels();
    header.line_stride_in_bytes = static_cast<std::int32_t>(layout.strideBytes);
    header.p_metadata = m_spec.frameMetadata.empty() ? nullptr : m_spec.frameMetadata.c_str();
    header.timestamp = timestamp(wall100ns);
    return frame;
}

NDIlib_audio_frame_v2_t ItemMaker::makeAudio(const Step &step, std::int64_t wall100ns)
{
    const AudioSpec &spec = m_spec.audio;
    NDIlib_audio_frame_v2_t audio;
    audio.sample_rate = spec.sampleRate;
    audio.no_channels = spec.channels;
    audio.no_samples = step.samples;
    audio.timecode = step.timecode100ns;
    audio.timestamp = timestamp(wall100ns);

    const std::lock_guard<std::mutex> lock(m_toneMutex);
    const std::int64_t needed = step.samples + kTonePeriod;
    if (m_tones.empty() || m_toneSamples < needed) { // older tones stay: blocks may point into them
        auto tone = std::make_unique<float[]>(static_cast<std::size_t>(needed * spec.channels));
        for (std::int64_t i = 0; i < needed * spec.channels; ++i) {
            const double phase = 2.0 * kPi * static_cast<double>(i % needed % kTonePeriod) / kTonePeriod;
            tone[static_cast<std::size_t>(i)] = kToneLevel * static_cast<float>(std::sin(phase));
        }
        m_tones.push_back(std::move(tone));
        m_toneSamples = needed;
    }
    audio.channel_stride_in_bytes = static_cast<std::int32_t>(m_toneSamples * std::int64_t{sizeof(float)});
    audio.p_data = m_tones.back().get() + step.firstSample % kTonePeriod; // the tone goes on unbroken
    return audio;
}

} // namespace loopback
