#include "ndi/streamreceiver.h"
#include "tests/support/fakendi.h"
#include "tests/support/testbase.h"

#include <QSignalSpy>
#include <QThread>
#include <QtTest>

#include <memory>

namespace {

/// Owns a receiver and the thread that it runs on, as a controller does.
class Run final {
public:
    Run() { receiver.setSource(NDIlib_source_t{"CAMERA (1)", "10.0.0.1:5961"}); }
    ~Run()
    {
        receiver.requestStop();
        m_thread.quit();
        m_thread.wait();
    }
    Q_DISABLE_COPY_MOVE(Run)

    void start()
    {
        receiver.moveToThread(&m_thread);
        QObject::connect(&m_thread, &QThread::started, &receiver, &StreamReceiver::start);
        QObject::connect(&receiver, &StreamReceiver::finished, &m_thread, &QThread::quit, Qt::DirectConnection);
        m_thread.start();
    }
    bool wait() { return m_thread.wait(20000); }

    StreamReceiver receiver;

private:
    QThread m_thread;
};

const FakeFrame audioBlock = FakeFrame::ofType(NDIlib_frame_type_audio);
const FakeFrame statusChange = FakeFrame::ofType(NDIlib_frame_type_status_change);
const FakeFrame errorFrame = FakeFrame::ofType(NDIlib_frame_type_error);
const FakeFrame nothing = FakeFrame::ofType(NDIlib_frame_type_none);
const FakeFrame unknownFrame = FakeFrame::ofType(4711);
const FakeFrame hd5994 = FakeFrame::ofVideo(1920, 1080, 60000, 1001);

} // namespace

class TestStreamReceiver final : public TestBase {
    Q_OBJECT

private slots:
    void asksForWhatItNeeds();
    void informationIsTheFirstVideoFrame();
    void informationOfAnErrorIsZero();
    void informationCanBeStopped();
    void getInfoIgnoresTheMode();
    void everyVideoFrameIsOneMeasurement();
    void measurementTellsWhatTheFrameSays();
    void aZeroDenominatorIsNoCrash();
    void errorFrameEndsTheTest();
    void stopBeforeTheStartIsNotLost();
    void stopByTheRunningFlag();
    void noHandleWaitsForTheStop_data();
    void noHandleWaitsForTheStop();
    void pixelsAreCopied();
    void pixelsAreNotPublished_data();
    void pixelsAreNotPublished();
    void shortLinesAreFilledWithZero();
    void budgetHoldsCopiesBack();
    void sourceTextsAreItsOwn();
};

void TestStreamReceiver::asksForWhatItNeeds()
{
    FakeNdi ndi;
    ndi.setScript({errorFrame});
    Run run;
    run.start();
    QVERIFY(run.wait());
    const NDIlib_recv_create_v3_t settings = ndi.lastSettings();
    QCOMPARE(int(settings.color_format), 1);
    QCOMPARE(int(settings.bandwidth), 100);
    QCOMPARE(settings.allow_video_fields, true);
    QCOMPARE(ndi.lastReceiverName(), QByteArray("Example Multichannel Receiver"));
    QCOMPARE(ndi.lastSourceName(), QByteArray("CAMERA (1)"));
}

void TestStreamReceiver::informationIsTheFirstVideoFrame()
{
    FakeNdi ndi;
    ndi.setScript({statusChange, audioBlock, nothing, unknownFrame, hd5994, hd5994});
    Run run;
    run.receiver.mode = StreamReceiver::InformationMode;
    QSignalSpy infos(&run.receiver, &StreamReceiver::streamInfo);
    QSignalSpy measurements(&run.receiver, &StreamReceiver::frameReceived);
    QSignalSpy ends(&run.receiver, &StreamReceiver::finished);
    run.start();
    QVERIFY(run.wait());
    QCOMPARE(infos.count(), 1);
    QCOMPARE(infos.first(), (QVariantList{59.0, int(NDIlib_FourCC_video_type_UYVY), 1920, 1080}));
    QCOMPARE(measurements.count(), 0);
    QCOMPARE(ends.count(), 1);
    const FakeNdi::Counts counts = ndi.counts();
    QCOMPARE(counts.captures, 5);
    QCOMPARE(counts.videoFreed, 1);
    QCOMPARE(counts.audioFreed, 1);
    QCOMPARE(counts.destroyed, 1);
    QCOMPARE(counts.misuses, 0);
}

void TestStreamReceiver::informationOfAnErrorIsZero()
{
    FakeNdi ndi;
    ndi.setScript({errorFrame, hd5994});
    Run run;
    run.receiver.mode = StreamReceiver::InformationMode;
    QSignalSpy infos(&run.receiver, &StreamReceiver::streamInfo);
    QSignalSpy ends(&run.receiver, &StreamReceiver::finished);
    run.start();
    QVERIFY(run.wait());
    QCOMPARE(infos.count(), 1);
    QCOMPARE(infos.first(), (QVariantList{0.0, 0, 0, 0}));
    QCOMPARE(ends.count(), 1);
    QCOMPARE(ndi.counts().captures, 1);
    QCOMPARE(ndi.counts().destroyed, 1);
    QCOMPARE(ndi.counts().misuses, 0);
}

void TestStreamReceiver::informationCanBeStopped()
{
    FakeNdi ndi; // a source that sends nothing
    Run run;
    run.receiver.mode = StreamReceiver::InformationMode;
    QSignalSpy infos(&run.receiver, &StreamReceiver::streamInfo);
    QSignalSpy ends(&run.receiver, &StreamReceiver::finished);
    run.start();
    QTRY_VERIFY(ndi.counts().captures > 3);
    run.receiver.requestStop();
    QVERIFY(run.wait());
    QCOMPARE(infos.count(), 0);
    QCOMPARE(ends.count(), 1);
    QCOMPARE(ndi.counts().destroyed, 1);
}

void TestStreamReceiver::getInfoIgnoresTheMode()
{
    FakeNdi ndi;
    ndi.setScript({hd5994});
    StreamReceiver receiver;
    QSignalSpy infos(&receiver, &StreamReceiver::streamInfo);
    receiver.getInfo();
    QCOMPARE(infos.count(), 1);
}

void TestStreamReceiver::everyVideoFrameIsOneMeasurement()
{
    FakeNdi ndi;
    std::vector<FakeFrame> script;
    for (int i = 0; i < 100; ++i) {
        script.push_back(hd5994);
        if (i % 3 == 0)
            script.push_back(audioBlock);
        if (i % 10 == 0)
            script.push_back(statusChange);
        if (i % 25 == 0)
            script.push_back(unknownFrame);
    }
    script.push_back(errorFrame);
    const int captures = int(script.size());
    ndi.setScript(script);
    Run run;
    run.receiver.graphNum = 7;
    QSignalSpy measurements(&run.receiver, &StreamReceiver::frameReceived);
    run.start();
    QVERIFY(run.wait());
    QCOMPARE(measurements.count(), 100);
    QCOMPARE(ndi.counts().captures, captures);
    QCOMPARE(ndi.counts().videoFreed, 100);
    QCOMPARE(ndi.counts().audioFreed, 34);
    QCOMPARE(ndi.counts().misuses, 0);
    int previousMs = 0;
    for (const QVariantList &measurement : measurements) {
        const int timeMs = measurement.at(1).toInt();
        QCOMPARE(measurement.at(7).toInt(), previousMs == 0 ? 0 : timeMs - previousMs);
        QCOMPARE(measurement.at(8).toInt(), 7);
        previousMs = timeMs;
    }
}

void TestStreamReceiver::measurementTellsWhatTheFrameSays()
{
    FakeNdi ndi;
    FakeFrame frame = FakeFrame::ofVideo(1280, 720, 30000, 1001);
    frame.video.FourCC = NDIlib_FourCC_video_type_BGRA;
    ndi.setScript({frame, errorFrame});
    Run run;
    QSignalSpy measurements(&run.receiver, &StreamReceiver::frameReceived);
    run.start();
    QVERIFY(run.wait());
    QCOMPARE(measurements.count(), 1);
    const QVariantList measurement = measurements.first();
    QCOMPARE(measurement.at(2).toInt(), int(NDIlib_FourCC_video_type_BGRA));
    QCOMPARE(measurement.at(3).toDouble(), 29.0);
    QCOMPARE(measurement.at(4).toInt(), 1280);
    QCOMPARE(measurement.at(5).toInt(), 720);
    QCOMPARE(measurement.at(6).toInt(), 0);
    QCOMPARE(measurement.at(7).toInt(), 0);
}

void TestStreamReceiver::aZeroDenominatorIsNoCrash()
{
    FakeNdi ndi;
    const FakeFrame broken = FakeFrame::ofVideo(640, 480, 25, 0);
    ndi.setScript({broken, broken, errorFrame});
    Run run;
    QSignalSpy measurements(&run.receiver, &StreamReceiver::frameReceived);
    run.start();
    QVERIFY(run.wait());
    QCOMPARE(measurements.count(), 2);
    QCOMPARE(measurements.last().at(0).toDouble(), 0.0);
    QCOMPARE(measurements.last().at(3).toDouble(), 0.0);
}

void TestStreamReceiver::errorFrameEndsTheTest()
{
    FakeNdi ndi;
    ndi.setScript({hd5994, errorFrame, hd5994, hd5994});
    Run run;
    QSignalSpy measurements(&run.receiver, &StreamReceiver::frameReceived);
    QSignalSpy ends(&run.receiver, &StreamReceiver::finished);
    run.start();
    QVERIFY(run.wait());
    QCOMPARE(measurements.count(), 1);
    QCOMPARE(ends.count(), 1);
    QCOMPARE(ndi.counts().captures, 2);
    QCOMPARE(ndi.counts().destroyed, 1);
    QCOMPARE(ndi.counts().misuses, 0);
    QVERIFY(!run.receiver.recvInstance);
}

void TestStreamReceiver::stopBeforeTheStartIsNotLost()
{
    FakeNdi ndi;
    ndi.setScript({hd5994, hd5994, hd5994});
    Run run;
    QSignalSpy measurements(&run.receiver, &StreamReceiver::frameReceived);
    QSignalSpy ends(&run.receiver, &StreamReceiver::finished);
    run.receiver.requestStop();
    run.start();
    QVERIFY(run.wait());
    QCOMPARE(measurements.count(), 1); // one capture always happens
    QCOMPARE(ends.count(), 1);
    QCOMPARE(ndi.counts().destroyed, 1);
}

void TestStreamReceiver::stopByTheRunningFlag()
{
    FakeNdi ndi;
    Run run;
    QSignalSpy ends(&run.receiver, &StreamReceiver::finished);
    run.start();
    QTRY_COMPARE(int(run.receiver.running), 1);
    run.receiver.running = 0;
    QVERIFY(run.wait());
    QCOMPARE(ends.count(), 1);
}

void TestStreamReceiver::noHandleWaitsForTheStop_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("information") << int(StreamReceiver::InformationMode);
    QTest::newRow("test") << int(StreamReceiver::TestMode);
    QTest::newRow("any other number is test") << 0;
}

void TestStreamReceiver::noHandleWaitsForTheStop()
{
    QFETCH(int, mode);
    FakeNdi ndi;
    ndi.setReceiverFails(true);
    Run run;
    run.receiver.mode = mode;
    QSignalSpy infos(&run.receiver, &StreamReceiver::streamInfo);
    QSignalSpy ends(&run.receiver, &StreamReceiver::finished);
    run.start();
    QTRY_COMPARE(ndi.counts().created, 1);
    QElapsedTimer clock;
    clock.start();
    run.receiver.requestStop();
    QVERIFY(run.wait());
    QVERIFY2(clock.elapsed() < 1000, "a stop must not take a whole capture");
    QCOMPARE(infos.count(), 0);
    QCOMPARE(ends.count(), 1);
    QCOMPARE(ndi.counts().captures, 0);
    QCOMPARE(ndi.counts().destroyed, 0);
}

void TestStreamReceiver::pixelsAreCopied()
{
    FakeNdi ndi;
    std::vector<uint8_t> pixels(16 * 4 * 2);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = uint8_t(i * 7 + 1);
    FakeFrame frame = FakeFrame::ofVideo(16, 4, 25, 1);
    frame.video.p_data = pixels.data();
    frame.video.line_stride_in_bytes = 32;
    ndi.setScript({frame, errorFrame});
    Run run;
    QByteArray copy;
    QVector<int> facts;
    QObject listener;
    QObject::connect(&run.receiver, &StreamReceiver::frameData, &listener,
                     [&](int type, int width, int height, uint8_t *pData) {
                         facts = {type, width, height};
                         copy = QByteArray(reinterpret_cast<const char *>(pData), width * height * 2);
                         delete[] pData;
                     });
    run.start();
    QVERIFY(run.wait());
    QTRY_COMPARE(facts, (QVector<int>{NDIlib_FourCC_video_type_UYVY, 16, 4}));
    QCOMPARE(copy, QByteArray(reinterpret_cast<const char *>(pixels.data()), int(pixels.size())));
}

void TestStreamReceiver::pixelsAreNotPublished_data()
{
    QTest::addColumn<int>("receiverIndex");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("hasData");
    QTest::addColumn<int>("strideBytes");
    QTest::newRow("second receiver") << 1 << 16 << 4 << true << 0;
    QTest::newRow("no pixels") << 0 << 16 << 4 << false << 0;
    QTest::newRow("no width") << 0 << 0 << 4 << true << 0;
    QTest::newRow("negative height") << 0 << 16 << -4 << true << 0;
    QTest::newRow("beyond 1 GiB") << 0 << 40000 << 40000 << true << 0;
    QTest::newRow("lines upwards from the first") << 0 << 16 << 4 << true << -32;
}

void TestStreamReceiver::pixelsAreNotPublished()
{
    QFETCH(int, receiverIndex);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(bool, hasData);
    QFETCH(int, strideBytes);
    FakeNdi ndi;
    uint8_t pixels[128] = {};
    FakeFrame frame = FakeFrame::ofVideo(width, height, 25, 1);
    frame.video.p_data = hasData ? pixels : nullptr;
    frame.video.line_stride_in_bytes = strideBytes;
    ndi.setScript({frame, errorFrame});
    Run run;
    run.receiver.receiverIndex = receiverIndex;
    QSignalSpy copies(&run.receiver, &StreamReceiver::frameData);
    QSignalSpy measurements(&run.receiver, &StreamReceiver::frameReceived);
    run.start();
    QVERIFY(run.wait());
    QCOMPARE(measurements.count(), 1);
    QCOMPARE(copies.count(), 0);
}

void TestStreamReceiver::shortLinesAreFilledWithZero()
{
    FakeNdi ndi;
    const std::unique_ptr<uint8_t[]> pixels(new uint8_t[64]); // 4 lines of 16 bytes, half of what 16 pixels take
    std::fill_n(pixels.get(), 64, uint8_t(0xAB));
    FakeFrame frame = FakeFrame::ofVideo(16, 4, 25, 1);
    frame.video.p_data = pixels.get();
    frame.video.line_stride_in_bytes = 16;
    ndi.setScript({frame, errorFrame});
    Run run;
    QByteArray copy;
    QObject listener;
    QObject::connect(&run.receiver, &StreamReceiver::frameData, &listener, [&](int, int, int, uint8_t *pData) {
        copy = QByteArray(reinterpret_cast<const char *>(pData), 128);
        delete[] pData;
    });
    run.start();
    QVERIFY(run.wait());
    QTRY_COMPARE(copy, QByteArray(64, char(0xAB)) + QByteArray(64, '\0'));
}

void TestStreamReceiver::budgetHoldsCopiesBack()
{
    FakeNdi ndi;
    uint8_t pixels[128] = {};
    FakeFrame frame = FakeFrame::ofVideo(16, 4, 25, 1);
    frame.video.p_data = pixels;
    ndi.setScript({frame, frame, frame, frame, frame, frame, errorFrame});
    Run run;
    constexpr int mostCopies = 3;
    const auto budget = std::make_shared<FrameCopyBudget>(mostCopies, FrameCopyBudget::Pace::EveryFrame);
    run.receiver.setCopyBudget(budget, 0);
    int copies = 0;
    QObject listener;
    QObject::connect(&run.receiver, &StreamReceiver::frameData, &listener, [&](int, int, int, uint8_t *pData) {
        delete[] pData;
        ++copies;
    });
    QSignalSpy measurements(&run.receiver, &StreamReceiver::frameReceived);
    run.start();
    QVERIFY(run.wait());
    QTRY_COMPARE(copies, mostCopies);
    QCOMPARE(budget->inFlight(), mostCopies);
    QCOMPARE(measurements.count(), 6); // the measurement never suffers
}

void TestStreamReceiver::sourceTextsAreItsOwn()
{
    FakeNdi ndi;
    ndi.setScript({errorFrame});
    QByteArray name("STUDIO (Camera ü)");
    StreamReceiver receiver;
    receiver.setSource(NDIlib_source_t{name.data(), nullptr});
    name.fill('#');
    receiver.start();
    QCOMPARE(ndi.lastSourceName(), QByteArray("STUDIO (Camera ü)"));
    QVERIFY(!receiver.source.p_url_address);
}

QTEST_GUILESS_MAIN(TestStreamReceiver)
#include "tst_streamreceiver.moc"
