#include "ndi/receivercontroller.h"

#include "ndi/streamreceiver.h"

#include <QCoreApplication>
#include <QMetaMethod>
#include <QThread>

#include <mutex>

namespace {

const QEvent::Type frameEventType = static_cast<QEvent::Type>(QEvent::registerEventType());

/// One measurement on its way to the controller's thread: one block of memory, where a queued call takes a dozen, and
/// many receivers share few arenas.
class FrameEvent final : public QEvent {
public:
    FrameEvent(double newFps, int newTime, int newFormat, double newDefaultFps, int newWidth, int newHeight,
               int newDataRate, int newPing, int newGraphNum)
        : QEvent(frameEventType), fps(newFps), defaultFps(newDefaultFps), time(newTime), format(newFormat),
          width(newWidth), height(newHeight), dataRate(newDataRate), ping(newPing), graphNum(newGraphNum)
    {
    }

    const double fps;
    const double defaultFps;
    const int time;
    const int format;
    const int width;
    const int height;
    const int dataRate;
    const int ping;
    const int graphNum;
};

QMetaMethod frameDataSignal()
{
    return QMetaMethod::fromSignal(&ReceiverController::frameData);
}

} // namespace

/// The controller's address for its receivers, which may outlive it.
class ReceiverController::Mailbox final {
public:
    explicit Mailbox(ReceiverController *controller) : m_controller(controller) {}
    void close()
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        m_controller = nullptr;
    }
    template <typename... Arguments>
    void post(Arguments... arguments)
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        if (m_controller)
            QCoreApplication::postEvent(m_controller, new FrameEvent(arguments...));
    }
    /// Before an event is read: a race checker does not see the lock of Qt's event queue, but this one.
    void synchronize() { const std::lock_guard<std::mutex> locker(m_mutex); }

private:
    std::mutex m_mutex;
    ReceiverController *m_controller; ///< guarded by m_mutex; null when it is gone
};

ReceiverController::ReceiverController()
    : m_mailbox(std::make_shared<Mailbox>(this)),
      m_copyBudget(std::make_shared<FrameCopyBudget>(maxCopiesInFlight, FrameCopyBudget::Pace::EveryFrame))
{
    registerNdiMetaTypes();
}

ReceiverController::~ReceiverController()
{
    m_mailbox->close();
    for (StreamReceiver *receiver : qAsConst(receivers)) {
        // What the receiver still sends has nobody to go to. Both objects go by themselves when the
        // thread ends: the receiver on it, the thread object on ours.
        QThread *const thread = receiver->thread();
        receiver->disconnect(this);
        thread->disconnect(this);
        if (thread->isFinished()) {
            thread->wait();
            delete receiver;
            delete thread;
            continue;
        }
        connect(thread, &QThread::finished, receiver, &QObject::deleteLater);
        connect(thread, &QThread::finished, thread, &QObject::deleteLater);
        receiver->requestStop();
    }
}

bool ReceiverController::startReceivers(const NDIlib_source_t &newSource, int newSourceIndex, int count, int indexBase)
{
    m_sourceCopy = NdiSource(newSource);
    source = m_sourceCopy.view();
    sourceIndex = newSourceIndex;
    receiverCount = count;
    m_reported = false;
    for (int position = 0; position < count; ++position)
        startReceiver(position, indexBase + position);
    return true;
}

void ReceiverController::startReceiver(int position, int graphNum)
{
    auto *const thread = new QThread;
    thread->setObjectName(QStringLiteral("receiver %1").arg(graphNum + 1));
    auto *const receiver = new StreamReceiver;
    connect(thread, &QThread::started, receiver, &StreamReceiver::start);
    // Direct: the thread must end even while this one is too busy to take events.
    connect(receiver, &StreamReceiver::finished, thread, &QThread::quit, Qt::DirectConnection);
    connect(thread, &QThread::finished, this, [this, thread, position] { tearDown(thread, position); });
    receiver->moveToThread(thread);
    connect(
        receiver, &StreamReceiver::frameReceived, receiver,
        [mailbox = m_mailbox](double fps, int time, int format, double defaultFPS, int width, int height, int dataRate,
                              int ping, int number) {
            mailbox->post(fps, time, format, defaultFPS, width, height, dataRate, ping, number);
        },
        Qt::DirectConnection);
    receiver->setSource(source);
    receiver->receiverIndex = position;
    receiver->graphNum = graphNum;
    receiver->setMeasurementSink(m_sink, sourceIndex);
    if (position == 0) {
        receiver->setCopyBudget(m_copyBudget, sourceIndex);
        receiver->setPixelsWanted(isSignalConnected(frameDataSignal()));
        connect(receiver, &StreamReceiver::frameData, this, &ReceiverController::forwardFrameData);
    }
    thread->start(QThread::InheritPriority);
    receivers.append(receiver);
}

bool ReceiverController::stopReceivers()
{
    for (StreamReceiver *receiver : qAsConst(receivers))
        receiver->requestStop();
    return true;
}

void ReceiverController::deliverMeasurements()
{
    QCoreApplication::sendPostedEvents(this, frameEventType);
}

void ReceiverController::customEvent(QEvent *event)
{
    m_mailbox->synchronize();
    if (event->type() != frameEventType)
        return;
    const auto &frame = *static_cast<FrameEvent *>(event);
    onReceiverFrame(frame.fps, frame.time, frame.format, frame.defaultFps, frame.width, frame.height, frame.dataRate,
                    frame.ping, frame.graphNum);
}

void ReceiverController::tearDown(QThread *thread, int position)
{
    thread->wait(); // its last lines may still run when finished() arrives
    delete thread;
    for (int i = receivers.size() - 1; i >= 0; --i) {
        if (receivers.at(i)->receiverIndex == position) {
            delete receivers.takeAt(i);
            break;
        }
    }
    if (receivers.isEmpty() && !m_reported) {
        m_reported = true;
        emit sourceReceiverFinished(sourceIndex); // the handler may have let go of this object: stay last
    }
}

void ReceiverController::onReceiverFrame(double fps, int time, int format, double defaultFPS, int width, int height,
                                         int dataRate, int ping, int graphNum)
{
    emit sourceFrameReceived(fps, time, format, defaultFPS, width, height, dataRate, ping, sourceIndex, graphNum);
}

void ReceiverController::forwardFrameData(int type, int width, int height, uint8_t *pData)
{
    if (isSignalConnected(frameDataSignal())) {
        emit frameData(sourceIndex, type, width, height, pData);
    } else {
        delete[] pData;
        updatePixelsWanted(); // the last listener has left since
    }
    m_copyBudget->release();
}

// There is no disconnectNotify() beside it: Qt calls that with a lock held when a listener is destroyed, and the
// question below takes the same lock where the two share one.
void ReceiverController::connectNotify(const QMetaMethod &signal)
{
    if (signal == frameDataSignal())
        updatePixelsWanted();
}

void ReceiverController::updatePixelsWanted()
{
    const bool isWanted = isSignalConnected(frameDataSignal());
    for (StreamReceiver *receiver : qAsConst(receivers))
        receiver->setPixelsWanted(isWanted);
}
