#pragma once

#include "ndi/framecopybudget.h"
#include "ndi/measurementsink.h"
#include "ndi/ndimetatypes.h"
#include "ndi/ndisource.h"

#include <QList>
#include <QObject>

#include <memory>

class QThread;
class StreamReceiver;

/// Runs one test on one source with several receivers, each on a thread of its own, and reports when
/// the last of them is gone. Lives in its creator's thread, which needs an event loop; everything
/// but the receivers happens there. The creator deletes it with deleteLater() after
/// sourceReceiverFinished(). Deleted earlier, it asks its receivers to stop and they go by themselves.
class ReceiverController final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ReceiverController)

public:
    ReceiverController();
    ~ReceiverController() override;

    /// Before the start: where all receivers report to besides, from their own threads.
    void setMeasurementSink(std::shared_ptr<MeasurementSink> sink) { m_sink = std::move(sink); }
    /// Before the start: limits the copies for frameData() together with other controllers. Without it, the listeners
    /// get every picture as long as they keep up, with at most maxCopiesInFlight on their way.
    void setCopyBudget(std::shared_ptr<FrameCopyBudget> budget) { m_copyBudget = std::move(budget); }
    static constexpr int maxCopiesInFlight = 4;

    /// Copies the source and starts count receivers (1 to 8) that report as indexBase + 0, 1, ...
    /// Below 1 nothing is created and nothing will be signalled. Always true. Precondition: no receiver is left of an
    /// earlier start.
    bool startReceivers(const NDIlib_source_t &source, int sourceIndex, int count, int indexBase);

    /// Asks every receiver to stop and does not wait; each ends within 1000 ms. Always true. A frame
    /// captured meanwhile is still measured and reported.
    bool stopReceivers();
    /// Emits sourceFrameReceived() for what has been measured and still waits in this thread's event queue.
    void deliverMeasurements();

    NDIlib_source_t source;            ///< the source under test, in bytes of our own
    int sourceIndex = 0;               ///< the caller's index, carried in every signal
    int receiverCount = 0;             ///< as asked for
    QList<StreamReceiver *> receivers; ///< the live ones, in order of creation

signals:
    /// Pixels of the first receiver; the listener frees pData with delete[]. Nothing is copied while there is no
    /// listener. Connect from an object in this thread: a copy counts as handed on when the signal returns.
    void frameData(int sourceIndex, int type, int width, int height, uint8_t *pData);
    /// All receivers are gone; once for each start.
    void sourceReceiverFinished(int index);
    /// One measurement of any receiver; see StreamReceiver::frameReceived(). indexNum is its graphNum.
    void sourceFrameReceived(double fps, int time, int format, double defaultFPS, int width, int height, int dataRate,
                             int ping, int sourceIndex, int indexNum);

protected:
    void connectNotify(const QMetaMethod &signal) override;
    void customEvent(QEvent *event) override;

private slots:
    void onReceiverFrame(double fps, int time, int format, double defaultFPS, int width, int height, int dataRate,
                         int ping, int graphNum);

private:
    class Mailbox;

    void startReceiver(int position, int graphNum);
    void tearDown(QThread *thread, int position);
    void forwardFrameData(int type, int width, int height, uint8_t *pData);
    void updatePixelsWanted();

    const std::shared_ptr<Mailbox> m_mailbox; ///< shared with the receivers
    NdiSource m_sourceCopy;
    std::shared_ptr<FrameCopyBudget> m_copyBudget; ///< shared with the first receiver; never null
    std::shared_ptr<MeasurementSink> m_sink;
    bool m_reported = false;
};
