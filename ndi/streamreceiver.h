#pragma once

#include "ndi/framecopybudget.h"
#include "ndi/framemetrics.h"
#include "ndi/measurementsink.h"
#include "ndi/ndimetatypes.h"
#include "ndi/ndisource.h"

#include <QElapsedTimer>
#include <QObject>

#include <atomic>
#include <memory>

/// One NDI receiver on one source. In test mode every video frame becomes one measurement, until it
/// is told to stop; in information mode the first frame's format is reported and that is all.
///
/// Made by its owner, moved to a QThread of its own and started there once; start() and getInfo()
/// keep that thread busy until the run is over. The public members up to mode are set before the
/// thread starts and left alone after that, except running.
class StreamReceiver final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StreamReceiver)

public:
    enum Mode { InformationMode = 1, TestMode = 2 };

    explicit StreamReceiver(QObject *parent = nullptr);
    ~StreamReceiver() override;

    /// Copies name and address, so that the caller's strings may go, and points source at the copy.
    void setSource(const NDIlib_source_t &newSource);

    /// Before the run. Without a budget, every picture is copied while frameData() is connected. sourceIndex is the
    /// one that the budget knows this receiver's source by.
    void setCopyBudget(std::shared_ptr<FrameCopyBudget> budget, int sourceIndex);
    /// False: no picture is copied, whatever the budget allows. Any thread; true at first.
    void setPixelsWanted(bool wanted) noexcept { m_pixelsWanted = wanted; }

    /// Every measurement also goes here, from the capturing thread; sourceIndex goes with it. Shared, since
    /// the run may outlast whoever looks at the measurements.
    void setMeasurementSink(std::shared_ptr<MeasurementSink> sink, int sourceIndex);

    /// Ends the run after the capture under way, 1000 ms at most; one asked for before the run began
    /// is not lost. Any thread; returns at once.
    void requestStop() noexcept;

    NDIlib_source_t source;                        ///< what to connect to
    NDIlib_recv_instance_t recvInstance = nullptr; ///< only inside a run, own thread
    std::atomic<int> running{0};                   ///< 1 while measuring; any thread may set 0 to stop
    int receiverIndex = 0;                         ///< position within the controller; 0 publishes pixels
    int graphNum = 0;                              ///< reported with every measurement
    int mode = TestMode;                           ///< 1 information, anything else test
    FrameTimes frameTimes;                         ///< own thread

signals:
    /// The run is over; exactly once.
    void finished();
    /// Never emitted; part of the interface.
    void percentUpdated(int, int);
    /// A copy of a frame's pixels, width * height * 2 bytes; the receiver of the signal frees pData
    /// with delete[]. type is the FourCC. Only receiverIndex 0 sends it.
    void frameData(int type, int width, int height, uint8_t *pData);
    /// One measurement. fps: received frames per second over about the last second. time: ms since the
    /// run began. format: FourCC. defaultFPS: nominal rate, a whole number. width, height: pixels.
    /// dataRate: 0. ping: ms since the previous frame, 0 for the first.
    void frameReceived(double fps, int time, int format, double defaultFPS, int width, int height, int dataRate,
                       int ping, int graphNum);
    /// The first frame's nominal rate, FourCC and size; all 0 when the runtime reported an error.
    void streamInfo(double fps, int format, int width, int height);

public slots:
    /// Runs the mode's loop on the calling thread.
    void start();
    /// Runs the information loop whatever the mode.
    void getInfo();

private:
    void runTest();
    void createReceiver();
    void destroyReceiver();
    bool shouldGoOn() const noexcept;
    /// Waits for the next frame; *video and *audio are reset to the runtime's defaults first.
    NDIlib_frame_type_e capture(NDIlib_video_frame_v2_t *video, NDIlib_audio_frame_v2_t *audio);
    void measure(const NDIlib_video_frame_v2_t &video, int nowMs);
    void publishPixels(const NDIlib_video_frame_v2_t &video);

    NdiSource m_sourceCopy;
    std::shared_ptr<FrameCopyBudget> m_copyBudget;
    std::atomic<bool> m_pixelsWanted{true};
    std::shared_ptr<MeasurementSink> m_sink;
    int m_sourceIndex = 0; ///< for m_sink and m_copyBudget
    std::atomic<bool> m_stopAsked{false};
};
