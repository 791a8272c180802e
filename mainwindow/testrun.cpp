#include "mainwindow/testrun.h"

#include "app/recordfile.h"
#include "ndi/receivercontroller.h"

#include <QEventLoop>

#include <utility>

TestRun::TestRun(QObject *parent) : QObject(parent) {}

TestRun::~TestRun()
{
    // Each controller sees its receivers off and needs an event loop for it.
    QEventLoop ending;
    int left = controllers.size();
    for (ReceiverController *controller : qAsConst(controllers)) {
        controller->disconnect(this);
        connect(controller, &ReceiverController::sourceReceiverFinished, &ending, [&ending, &left, controller] {
            controller->deleteLater();
            if (--left == 0)
                ending.quit();
        });
        controller->stopReceivers();
    }
    if (left > 0)
        ending.exec(QEventLoop::ExcludeUserInputEvents);
}

void TestRun::begin(const QStringList &names)
{
    csvLines.clear();
    m_names = names;
}

void TestRun::startSource(const NdiSource &source, int sourceIndex, int receivers, int graph)
{
    auto *const controller = new ReceiverController;
    controllers.append(controller);
    connect(controller, &ReceiverController::sourceFrameReceived, this, &TestRun::frameReceived);
    connect(controller, &ReceiverController::sourceReceiverFinished, this, &TestRun::sourceFinished);
    connect(controller, &ReceiverController::frameData, this, &TestRun::frameData);
    controller->startReceivers(source.view(), sourceIndex, receivers, graph);
}

void TestRun::stopReceivers()
{
    for (ReceiverController *controller : qAsConst(controllers))
        controller->stopReceivers();
}

void TestRun::addRow(double fps, int timeMs, double defaultFps, int width, int height, int intervalMs, int sourceIndex,
                     int graph)
{
    csvLines.append(recordRow(m_names.value(sourceIndex), width, height, defaultFps, timeMs, graph, fps, intervalMs));
}

bool TestRun::writeRows()
{
    const QStringList rows = std::exchange(csvLines, {});
    return rows.isEmpty() || writeRecord(rows);
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
