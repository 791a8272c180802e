#include "ndi/receivercontroller.h"
#include "ndi/streamreceiver.h"
#include "tests/support/fakendi.h"
#include "tests/support/testbase.h"

#include <QPointer>
#include <QSemaphore>
#include <QSignalSpy>
#include <QThread>
#include <QtTest>

#include <atomic>

namespace {

const NDIlib_source_t camera{"CAMERA (1)", "10.0.0.1:5961"};
const FakeFrame errorFrame = FakeFrame::ofType(NDIlib_frame_type_error);
const FakeFrame hd25 = FakeFrame::ofVideo(1920, 1080, 25, 1);

} // namespace

class TestReceiverController final : public TestBase {
    Q_OBJECT

private slots:
    void measurementsCarryBothIndexes_data();
    void measurementsCarryBothIndexes();
    void endIsReportedOnceAfterTheLastReceiver();
    void secondStartReportsItsEndToo();
    void aSilentSourceEndsWithTheStop();
    void belowOneReceiverNothingHappens_data();
    void belowOneReceiverNothingHappens();
    void stopRightAfterTheStart();
    void onlyTheFirstReceiverForwardsPixels();
    void withoutAListenerNothingIsCopied();
    void listenersComeAndGo();
    void listenersAreDestroyedFirst();
    void aSlowListenerGetsFourCopiesAtMost();
    void sourceTextsAreItsOwn();
    void canBeDeletedInTheHandlerOfItsEnd();
    void deletedEarlyItLeavesNothingRunning();
};

void TestReceiverController::measurementsCarryBothIndexes_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("indexBase");
    QTest::newRow("one receiver") << 1 << 0;
    QTest::newRow("eight receivers") << 8 << 0;
    QTest::newRow("a base of its own") << 3 << 5;
}

void TestReceiverController::measurementsCarryBothIndexes()
{
    QFETCH(int, count);
    QFETCH(int, indexBase);
    FakeNdi ndi;
    ndi.setScript({hd25, hd25, errorFrame});
    ReceiverController controller;
    QSignalSpy measurements(&controller, &ReceiverController::sourceFrameReceived);
    QSignalSpy ends(&controller, &ReceiverController::sourceReceiverFinished);
    QVERIFY(controller.startReceivers(camera, 42, count, indexBase));
    QCOMPARE(controller.receiverCount, count);
    QTRY_COMPARE(ends.count(), 1);
    QCOMPARE(measurements.count(), 2 * count);
    QMap<int, int> framesOfIndex;
    for (const QVariantList &measurement : measurements) {
        QCOMPARE(measurement.size(), 10);
        QCOMPARE(measurement.at(2).toInt(), int(NDIlib_FourCC_video_type_UYVY));
        QCOMPARE(measurement.at(3).toDouble(), 25.0);
        QCOMPARE(measurement.at(4).toInt(), 1920);
        QCOMPARE(measurement.at(5).toInt(), 1080);
        QCOMPARE(measurement.at(6).toInt(), 0);
        QCOMPARE(measurement.at(8).toInt(), 42);
        ++framesOfIndex[measurement.at(9).toInt()];
    }
    QCOMPARE(framesOfIndex.size(), count);
    QCOMPARE(framesOfIndex.firstKey(), indexBase);
    QCOMPARE(framesOfIndex.lastKey(), indexBase + count - 1);
    for (const int frames : qAsConst(framesOfIndex))
        QCOMPARE(frames, 2);
}

void TestReceiverController::endIsReportedOnceAfterTheLastReceiver()
{
    FakeNdi ndi;
    ndi.setScript({hd25, errorFrame});
    ReceiverController controller;
    int leftAtEnd = -1;
    int ends = 0;
    connect(&controller, &ReceiverController::sourceReceiverFinished, this, [&](int index) {
        ++ends;
        QCOMPARE(index, 3);
        leftAtEnd = controller.receivers.size();
    });
    controller.startReceivers(camera, 3, 8, 0);
    QTRY_COMPARE(ends, 1);
    QCOMPARE(leftAtEnd, 0);
    QCOMPARE(ndi.counts().created, 8);
    QCOMPARE(ndi.counts().destroyed, 8);
    QCOMPARE(ndi.counts().misuses, 0);
}

void TestReceiverController::secondStartReportsItsEndToo()
{
    FakeNdi ndi;
    ndi.setScript({hd25, errorFrame});
    ReceiverController controller;
    QSignalSpy measurements(&controller, &ReceiverController::sourceFrameReceived);
    QSignalSpy ends(&controller, &ReceiverController::sourceReceiverFinished);
    for (int start = 1; start <= 2; ++start) {
        controller.startReceivers(camera, 0, 2, 0);
        QTRY_COMPARE(ends.count(), start);
        QCOMPARE(measurements.count(), 2 * start);
    }
}

void TestReceiverController::aSilentSourceEndsWithTheStop()
{
    FakeNdi ndi;
    ReceiverController controller;
    QSignalSpy ends(&controller, &ReceiverController::sourceReceiverFinished);
    controller.startReceivers(camera, 0, 4, 0);
    QTRY_COMPARE(ndi.counts().created, 4);
    QVERIFY(controller.stopReceivers());
    QTRY_COMPARE(ends.count(), 1);
    QCOMPARE(ndi.counts().destroyed, 4);
}

void TestReceiverController::belowOneReceiverNothingHappens_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("none") << 0;
    QTest::newRow("negative") << -1;
}

void TestReceiverController::belowOneReceiverNothingHappens()
{
    QFETCH(int, count);
    FakeNdi ndi;
    ReceiverController controller;
    QVERIFY(controller.startReceivers(camera, 0, count, 0));
    QVERIFY(controller.receivers.isEmpty());
    QVERIFY(controller.stopReceivers());
    QCOMPARE(ndi.counts().created, 0);
}

void TestReceiverController::stopRightAfterTheStart()
{
    for (int round = 0; round < 50; ++round) {
        FakeNdi ndi;
        ReceiverController controller;
        QSignalSpy ends(&controller, &ReceiverController::sourceReceiverFinished);
        controller.startReceivers(camera, 0, 4, 0);
        controller.stopReceivers();
        QTRY_COMPARE(ends.count(), 1);
    }
}

void TestReceiverController::onlyTheFirstReceiverForwardsPixels()
{
    FakeNdi ndi;
    uint8_t pixels[128] = {1, 2, 3};
    FakeFrame frame = FakeFrame::ofVideo(16, 4, 25, 1);
    frame.video.p_data = pixels;
    ndi.setScript({frame, frame, errorFrame});
    ReceiverController controller;
    QSignalSpy ends(&controller, &ReceiverController::sourceReceiverFinished);
    int copies = 0;
    connect(&controller, &ReceiverController::frameData, this,
            [&](int sourceIndex, int type, int width, int height, uint8_t *pData) {
                ++copies;
                QCOMPARE(sourceIndex, 9);
                QCOMPARE(type, int(NDIlib_FourCC_video_type_UYVY));
                QCOMPARE(width, 16);
                QCOMPARE(height, 4);
                QCOMPARE(int(pData[2]), 3);
                delete[] pData;
            });
    controller.startReceivers(camera, 9, 3, 0);
    QTRY_COMPARE(ends.count(), 1);
    QCOMPARE(copies, 2);
}

void TestReceiverController::withoutAListenerNothingIsCopied()
{
    // The pixels stand at an address that faults on the first read.
    FakeNdi ndi;
    FakeFrame frame = FakeFrame::ofVideo(1920, 1080, 25, 1);
    frame.video.p_data = reinterpret_cast<uint8_t *>(std::uintptr_t(16));
    ndi.setScript({frame, frame, frame, errorFrame});
    ReceiverController controller;
    QSignalSpy measurements(&controller, &ReceiverController::sourceFrameReceived);
    QSignalSpy ends(&controller, &ReceiverController::sourceReceiverFinished);
    controller.startReceivers(camera, 0, 1, 0);
    QTRY_COMPARE(ends.count(), 1);
    QCOMPARE(measurements.count(), 3);
}

void TestReceiverController::listenersComeAndGo()
{
    FakeNdi ndi;
    uint8_t pixels[128] = {};
    FakeFrame frame = FakeFrame::ofVideo(16, 4, 25, 1);
    frame.video.p_data = pixels;
    QSemaphore mayGoOn;
    ndi.setScript(std::vector<FakeFrame>(30, frame));
    ndi.setOnCapture([&](int number) {
        if (number == 10 || number == 20 || number == 30)
            mayGoOn.acquire();
    });
    ReceiverController controller;
    QSignalSpy measurements(&controller, &ReceiverController::sourceFrameReceived);
    QSignalSpy ends(&controller, &ReceiverController::sourceReceiverFinished);
    controller.startReceivers(camera, 0, 1, 0);
    QTRY_COMPARE(measurements.count(), 10);

    int copies = 0;
    const auto take = [&](int, int, int, int, uint8_t *pData) {
        delete[] pData;
        ++copies;
    };
    auto listener = std::make_unique<QObject>();
    connect(&controller, &ReceiverController::frameData, listener.get(), take);
    mayGoOn.release();
    QTRY_COMPARE(measurements.count(), 20);
    QTRY_VERIFY(copies > 0);
    QVERIFY(copies <= 10);

    // One that leaves by being destroyed.
    listener.reset();
    const int copiesBefore = copies;
    mayGoOn.release();
    QTRY_COMPARE(measurements.count(), 30);
    QCOMPARE(copies, copiesBefore);
    controller.stopReceivers();
    mayGoOn.release();
    QTRY_COMPARE(ends.count(), 1);
}

/// While an object is destroyed, Qt holds one of its few locks, which objects share by their addresses: with so many
/// listeners some share the controller's.
void TestReceiverController::listenersAreDestroyedFirst()
{
    ReceiverController controller;
    std::vector<std::unique_ptr<QObject>> listeners(2000);
    for (auto &listener : listeners) {
        listener = std::make_unique<QObject>();
        connect(&controller, &ReceiverController::frameData, listener.get(),
                [](int, int, int, int, uint8_t *pData) { delete[] pData; });
    }
    listeners.clear();
}

void TestReceiverController::aSlowListenerGetsFourCopiesAtMost()
{
    FakeNdi ndi;
    uint8_t pixels[128] = {};
    FakeFrame frame = FakeFrame::ofVideo(16, 4, 25, 1);
    frame.video.p_data = pixels;
    constexpr int frames = 200;
    QSemaphore allCaptured;
    ndi.setScript(std::vector<FakeFrame>(frames, frame));
    ndi.setOnCapture([&](int number) {
        if (number == frames)
            allCaptured.release();
    });
    ReceiverController controller;
    QSignalSpy measurements(&controller, &ReceiverController::sourceFrameReceived);
    QSignalSpy ends(&controller, &ReceiverController::sourceReceiverFinished);
    int copies = 0;
    connect(&controller, &ReceiverController::frameData, this, [&](int, int, int, int, uint8_t *pData) {
        delete[] pData;
        ++copies;
    });
    controller.startReceivers(camera, 0, 1, 0);
    allCaptured.acquire(); // this thread takes no events meanwhile
    QTRY_COMPARE(measurements.count(), frames);
    QCOMPARE(copies, int(ReceiverController::maxCopiesInFlight));
    controller.stopReceivers();
    QTRY_COMPARE(ends.count(), 1);
}

void TestReceiverController::sourceTextsAreItsOwn()
{
    FakeNdi ndi;
    ndi.setScript({errorFrame});
    QByteArray name("STUDIO (Camera 2)");
    ReceiverController controller;
    QSignalSpy ends(&controller, &ReceiverController::sourceReceiverFinished);
    NDIlib_source_t source;
    source.p_ndi_name = name.data();
    controller.startReceivers(source, 0, 2, 0);
    name.fill('#');
    QTRY_COMPARE(ends.count(), 1);
    QCOMPARE(ndi.lastSourceName(), QByteArray("STUDIO (Camera 2)"));
    QCOMPARE(QByteArray(controller.source.p_ndi_name), QByteArray("STUDIO (Camera 2)"));
}

void TestReceiverController::canBeDeletedInTheHandlerOfItsEnd()
{
    FakeNdi ndi;
    ndi.setScript({errorFrame});
    QPointer<ReceiverController> controller = new ReceiverController;
    connect(controller, &ReceiverController::sourceReceiverFinished, controller, &QObject::deleteLater);
    controller->startReceivers(camera, 0, 8, 0);
    QTRY_VERIFY(controller.isNull());
    QCOMPARE(ndi.counts().destroyed, 8);
}

void TestReceiverController::deletedEarlyItLeavesNothingRunning()
{
    FakeNdi ndi;
    QVector<QPointer<QThread>> threads;
    QVector<QPointer<StreamReceiver>> receivers;
    {
        ReceiverController controller;
        controller.startReceivers(camera, 0, 8, 0);
        for (StreamReceiver *receiver : qAsConst(controller.receivers)) {
            receivers.append(receiver);
            threads.append(receiver->thread());
        }
        QTRY_COMPARE(ndi.counts().created, 8);
    }
    QTRY_COMPARE(ndi.counts().destroyed, 8);
    for (const QPointer<QThread> &thread : qAsConst(threads))
        QTRY_VERIFY(thread.isNull());
    for (const QPointer<StreamReceiver> &receiver : qAsConst(receivers))
        QTRY_VERIFY(receiver.isNull());
    QCOMPARE(ndi.counts().misuses, 0);
}

QTEST_GUILESS_MAIN(TestReceiverController)
#include "tst_receivercontroller.moc"
