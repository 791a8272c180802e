#include "ndi/streamreceiver.h"

#include "ndi/ndilib.h"
#include "ndi/overflowstack.h"

#include <QMetaMethod>
#include <QThread>

#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr int captureTimeoutMs = 1000;
constexpr int idleSliceMs = 100;          // how soon a receiver without a handle notices a stop
constexpr std::size_t copyTailBytes = 64; // picture code may read a little past the last pixel

} // namespace

StreamReceiver::StreamReceiver(QObject *parent) : QObject(parent)
{
    registerNdiMetaTypes();
}

StreamReceiver::~StreamReceiver() = default;

void StreamReceiver::setSource(const NDIlib_source_t &newSource)
{
    m_sourceCopy = NdiSource(newSource);
    source = m_sourceCopy.view();
}

void StreamReceiver::setCopyBudget(std::shared_ptr<FrameCopyBudget> budget, int sourceIndex)
{
    m_copyBudget = std::move(budget);
    m_sourceIndex = sourceIndex;
}

void StreamReceiver::setMeasurementSink(std::shared_ptr<MeasurementSink> sink, int sourceIndex)
{
    m_sink = std::move(sink);
    m_sourceIndex = sourceIndex;
}

void StreamReceiver::requestStop() noexcept
{
    m_stopAsked = true;
    running = 0;
}

void StreamReceiver::start()
{
    if (mode == InformationMode)
        getInfo();
    else
        runTest();
}

void StreamReceiver::getInfo()
{
    const OverflowStack overflowStack;
    createReceiver();
    NDIlib_video_frame_v2_t video;
    NDIlib_audio_frame_v2_t audio;
    while (!m_stopAsked) {
        const NDIlib_frame_type_e type = capture(&video, &audio);
        if (type == NDIlib_frame_type_video) {
            emit streamInfo(nominalRate(video.frame_rate_N, video.frame_rate_D), video.FourCC, video.xres, video.yres);
            NDIlib_recv_free_video_v2(recvInstance, &video);
            break;
        }
        if (type == NDIlib_frame_type_audio)
            NDIlib_recv_free_audio_v2(recvInstance, &audio);
        if (type == NDIlib_frame_type_error) {
            emit streamInfo(0.0, 0, 0, 0);
            break;
        }
    }
    destroyReceiver();
    emit finished();
}

void StreamReceiver::runTest()
{
    const OverflowStack overflowStack;
    createReceiver();
    frameTimes.restart();
    QElapsedTimer clock;
    clock.start();
    running = 1;
    NDIlib_video_frame_v2_t video;
    NDIlib_audio_frame_v2_t audio;
    do {
        const NDIlib_frame_type_e type = capture(&video, &audio);
        const qint64 elapsedMs = clock.elapsed(); // nothing may come between the capture and this line
        if (type == NDIlib_frame_type_video) {
            measure(video, int(elapsedMs));
            publishPixels(video);
            NDIlib_recv_free_video_v2(recvInstance, &video);
        } else if (type == NDIlib_frame_type_audio) {
            NDIlib_recv_free_audio_v2(recvInstance, &audio);
        } else if (type == NDIlib_frame_type_error) {
            break; // the handle is of no more use
        }
    } while (shouldGoOn());
    running = 0;
    emit finished();
    destroyReceiver();
}

bool StreamReceiver::shouldGoOn() const noexcept
{
    return running != 0 && !m_stopAsked;
}

void StreamReceiver::createReceiver()
{
    NDIlib_recv_create_v3_t settings;
    settings.source_to_connect_to = source;
    settings.color_format = NDIlib_recv_color_format_UYVY_BGRA;
    settings.bandwidth = NDIlib_recv_bandwidth_highest;
    settings.allow_video_fields = true;
    settings.p_ndi_recv_name = "Example Multichannel Receiver";
    recvInstance = NDIlib_recv_create_v3(&settings);
}

void StreamReceiver::destroyReceiver()
{
    if (recvInstance)
        NDIlib_recv_destroy(recvInstance);
    recvInstance = nullptr;
}

NDIlib_frame_type_e StreamReceiver::capture(NDIlib_video_frame_v2_t *video, NDIlib_audio_frame_v2_t *audio)
{
    *video = NDIlib_video_frame_v2_t();
    *audio = NDIlib_audio_frame_v2_t();
    if (recvInstance)
        return NDIlib_recv_capture_v2(recvInstance, video, audio, nullptr, captureTimeoutMs);
    for (int waitedMs = 0; waitedMs < captureTimeoutMs && !m_stopAsked; waitedMs += idleSliceMs)
        QThread::msleep(idleSliceMs);
    return NDIlib_frame_type_none;
}

void StreamReceiver::measure(const NDIlib_video_frame_v2_t &video, int nowMs)
{
    const int nominal = nominalRate(video.frame_rate_N, video.frame_rate_D);
    const FrameFigures figures = frameTimes.add(nowMs, nominal);
    if (m_sink)
        m_sink->add({figures.framesPerSecond, double(nominal), nowMs, video.xres, video.yres, figures.intervalMs,
                     m_sourceIndex, graphNum});
    emit frameReceived(figures.framesPerSecond, nowMs, video.FourCC, nominal, video.xres, video.yres, 0,
                       figures.intervalMs, graphNum);
}

void StreamReceiver::publishPixels(const NDIlib_video_frame_v2_t &video)
{
    // Lines that go upwards in memory (a negative stride) lie before p_data: nothing of ours is to be read after it.
    if (receiverIndex != 0 || !m_pixelsWanted || !video.p_data || video.line_stride_in_bytes < 0)
        return;
    const std::size_t bytes = frameCopyBytes(video.xres, video.yres);
    static const QMetaMethod frameDataSignal = QMetaMethod::fromSignal(&StreamReceiver::frameData);
    if (bytes == 0 || !isSignalConnected(frameDataSignal))
        return;
    if (m_copyBudget && !m_copyBudget->tryAcquire(m_sourceIndex))
        return;
    uint8_t *const copy = new (std::nothrow) uint8_t[bytes + copyTailBytes];
    if (!copy) {
        if (m_copyBudget)
            m_copyBudget->release();
        return;
    }
    // A frame whose lines are shorter than two bytes per pixel has fewer bytes to give.
    std::size_t available = bytes;
    if (video.line_stride_in_bytes > 0)
        available = qMin(bytes, std::size_t(video.line_stride_in_bytes) * std::size_t(video.yres));
    std::memcpy(copy, video.p_data, available);
    std::memset(copy + available, 0, bytes + copyTailBytes - available);
    emit frameData(video.FourCC, video.xres, video.yres, copy);
}
