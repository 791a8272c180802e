#include "ndi/receivercontroller.h"

#include "ndi/streamreceiver.h"

#include <QMetaMethod>
#include <QThread>

namespace {

QMetaMethod frameDataSignal()
{
    return QMetaMethod::fromSignal(&ReceiverController::frameData);
}

} // namespace

ReceiverController::ReceiverController()
    : m_copyBudget(std::make_shared<FrameCopyBudget>(maxCopiesInFlight, FrameCopyBudget::Pace::EveryFrame))
{
    registerNdiMetaTypes();
}

ReceiverController::~ReceiverController()
{
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
    connect(receiver, &StreamReceiver::frameReceived, this, &ReceiverController::onReceiverFrame);
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
