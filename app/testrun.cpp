#include "app/testrun.h"

#include "ndi/receivercontroller.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QMetaMethod>

TestRun::TestRun(QObject *parent)
    : QObject(parent),
      m_copyBudget(std::make_shared<FrameCopyBudget>(maxCopiesInFlight, FrameCopyBudget::Pace::OnRequest))
{
}

TestRun::~TestRun()
{
    // Each controller sees its receivers off and needs an event loop for it.
    QEventLoop ending;
    int left = controllers.size();
    for (ReceiverController *controller : qAsConst(controllers)) {
        controller->disconnect(this);
        if (controller->receivers.isEmpty()) { // it has reported its end to somebody who did not listen any more
            --left;
            controller->deleteLater();
            continue;
        }
        connect(controller, &ReceiverController::sourceReceiverFinished, &ending, [&ending, &left, controller] {
            controller->deleteLater();
            if (--left == 0)
                ending.quit();
        });
        controller->stopReceivers();
    }
    if (left == 0)
        return;
    // With glib, what came into the queue together with the event that brought us here does not wake a loop inside.
    QCoreApplication::sendPostedEvents();
    if (left > 0)
        ending.exec(QEventLoop::ExcludeUserInputEvents);
}

void TestRun::begin(const QStringList &names)
{
    m_recorder.begin(names);
}

void TestRun::startSource(const NdiSource &source, int sourceIndex, int receivers, int graph)
{
    auto *const controller = new ReceiverController;
    controllers.append(controller);
    connect(controller, &ReceiverController::sourceFrameReceived, this, &TestRun::frameReceived);
    connect(controller, &ReceiverController::sourceReceiverFinished, this, &TestRun::sourceFinished);
    if (isSignalConnected(QMetaMethod::fromSignal(&TestRun::frameData))) // else no pixels are copied
        connect(controller, &ReceiverController::frameData, this, &TestRun::frameData);
    controller->setMeasurementSink(m_recorder.sink());
    controller->setCopyBudget(m_copyBudget);
    controller->startReceivers(source.view(), sourceIndex, receivers, graph);
}

void TestRun::stopReceivers()
{
    for (ReceiverController *controller : qAsConst(controllers))
        controller->stopReceivers();
    // After the request, so that a thread that cannot keep up with its receivers gets to the end of the queue.
    for (ReceiverController *controller : qAsConst(controllers))
        controller->deliverMeasurements();
}

void TestRun::addRow(double fps, int timeMs, double defaultFps, int width, int height, int intervalMs, int sourceIndex,
                     int graph)
{
    m_recorder.add({fps, defaultFps, timeMs, width, height, intervalMs, sourceIndex, graph});
}

bool TestRun::writeRecordIfAny()
{
    if (hasRows())
        return writeRecord();
    clearRows();
    return true;
}

bool TestRun::writeRecord()
{
    return m_recorder.write();
}

void TestRun::forget(int sourceIndex)
{
    for (int i = controllers.size() - 1; i >= 0; --i) {
        if (controllers.at(i)->sourceIndex == sourceIndex) {
            controllers.takeAt(i)->deleteLater(); // it is still inside its signal
            return;
        }
    }
}
