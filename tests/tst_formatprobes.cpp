#include "mainwindow/formatprobes.h"
#include "tests/support/fakendi.h"
#include "tests/support/testbase.h"

#include <QSignalSpy>
#include <QtTest>

#include <atomic>
#include <thread>

namespace {

constexpr int longPatienceMs = 60000;

QVector<NdiSource> sourcesOf(int count)
{
    QVector<NdiSource> sources;
    for (int i = 0; i < count; ++i) {
        const QByteArray name = "CAMERA " + QByteArray::number(i);
        sources.append(NdiSource(NDIlib_source_t{name.constData(), "10.0.0.1:5961"}));
    }
    return sources;
}

const FakeFrame hd60 = FakeFrame::ofVideo(1920, 1080, 60000, 1001);

} // namespace

class TestFormatProbes final : public TestBase {
    Q_OBJECT

private slots:
    void everySourceIsReportedOnce_data();
    void everySourceIsReportedOnce();
    void figuresAreThoseOfTheFirstFrame();
    void anErrorIsReportedAsZeros();
    void neverMoreThanEightAtOnce();
    void silentSourcesMakeRoomAndHaveAnotherTurn();
    void aNewListSilencesTheOldOne();
    void stoppingEndsAllReceivers();
    void deletedWhileTheyWait();
};

void TestFormatProbes::everySourceIsReportedOnce_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("none") << 0;
    QTest::newRow("one") << 1;
    QTest::newRow("as many as go at once") << 8;
    QTest::newRow("one more") << 9;
    QTest::newRow("many") << 60;
}

void TestFormatProbes::everySourceIsReportedOnce()
{
    QFETCH(int, count);
    FakeNdi ndi;
    ndi.setScript({hd60});
    FormatProbes probes(longPatienceMs);
    QSignalSpy found(&probes, &FormatProbes::formatFound);
    QSignalSpy idle(&probes, &FormatProbes::idle);
    probes.start(sourcesOf(count));
    QTRY_VERIFY(probes.isIdle());
    QCOMPARE(found.count(), count);
    QSet<int> indexes;
    for (const QVariantList &one : found)
        indexes.insert(one.at(0).toInt());
    QCOMPARE(indexes.size(), count);
    QCOMPARE(idle.count(), count > 0 ? 1 : 0);
    QCOMPARE(ndi.counts().created, count);
    QCOMPARE(ndi.counts().destroyed, count);
    QCOMPARE(ndi.counts().misuses, 0);
}

void TestFormatProbes::figuresAreThoseOfTheFirstFrame()
{
    FakeNdi ndi;
    ndi.setScript({FakeFrame::ofType(NDIlib_frame_type_none), hd60});
    FormatProbes probes(longPatienceMs);
    QSignalSpy found(&probes, &FormatProbes::formatFound);
    probes.start(sourcesOf(1));
    QTRY_COMPARE(found.count(), 1);
    QCOMPARE(found.at(0).at(1).toDouble(), 59.0);
    QCOMPARE(found.at(0).at(2).toInt(), int(NDIlib_FourCC_video_type_UYVY));
    QCOMPARE(found.at(0).at(3).toInt(), 1920);
    QCOMPARE(found.at(0).at(4).toInt(), 1080);
}

void TestFormatProbes::anErrorIsReportedAsZeros()
{
    FakeNdi ndi;
    ndi.setScript({FakeFrame::ofType(NDIlib_frame_type_error)});
    FormatProbes probes(longPatienceMs);
    QSignalSpy found(&probes, &FormatProbes::formatFound);
    probes.start(sourcesOf(1));
    QTRY_COMPARE(found.count(), 1);
    QCOMPARE(found.at(0).at(3).toInt(), 0);
}

void TestFormatProbes::neverMoreThanEightAtOnce()
{
    FakeNdi ndi;
    ndi.setScript({hd60});
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    ndi.setOnCapture([&](int) {
        const int now = ++inside;
        int before = most;
        while (now > before && !most.compare_exchange_weak(before, now)) {
        }
        std::this_thread::yield();
        --inside;
    });
    FormatProbes probes(longPatienceMs);
    probes.start(sourcesOf(100));
    QTRY_VERIFY(probes.isIdle());
    QVERIFY(most <= FormatProbes::atOnce);
    QCOMPARE(ndi.counts().created, 100);
}

void TestFormatProbes::silentSourcesMakeRoomAndHaveAnotherTurn()
{
    FakeNdi ndi; // no script: nothing ever comes
    FormatProbes probes(20);
    QSignalSpy found(&probes, &FormatProbes::formatFound);
    probes.start(sourcesOf(10));
    // More receivers than sources: some had a second turn.
    QTRY_VERIFY(ndi.counts().created > 12);
    QCOMPARE(found.count(), 0);
    QVERIFY(ndi.counts().created - ndi.counts().destroyed <= FormatProbes::atOnce);
    probes.stop();
    QTRY_VERIFY(probes.isIdle());
    QCOMPARE(ndi.counts().created, ndi.counts().destroyed);
}

void TestFormatProbes::aNewListSilencesTheOldOne()
{
    FakeNdi ndi;
    ndi.setScript({hd60});
    FormatProbes probes(longPatienceMs);
    QSignalSpy found(&probes, &FormatProbes::formatFound);
    probes.start(sourcesOf(5));
    probes.start(sourcesOf(2)); // before the event loop could deliver anything
    QTRY_VERIFY(probes.isIdle());
    QCOMPARE(found.count(), 2);
    QCOMPARE(ndi.counts().created, ndi.counts().destroyed);
}

void TestFormatProbes::stoppingEndsAllReceivers()
{
    FakeNdi ndi;
    FormatProbes probes(longPatienceMs);
    QSignalSpy idle(&probes, &FormatProbes::idle);
    probes.start(sourcesOf(8));
    QTRY_COMPARE(ndi.counts().created, 8);
    probes.stop();
    QTRY_COMPARE(idle.count(), 1);
    QCOMPARE(ndi.counts().destroyed, 8);
}

void TestFormatProbes::deletedWhileTheyWait()
{
    FakeNdi ndi;
    {
        FormatProbes probes(longPatienceMs);
        probes.start(sourcesOf(12));
        QTRY_VERIFY(ndi.counts().created > 0);
    }
    QCOMPARE(ndi.counts().created, ndi.counts().destroyed);
}

QTEST_GUILESS_MAIN(TestFormatProbes)
#include "tst_formatprobes.moc"
