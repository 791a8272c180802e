#include "charts/previewthread.h"
#include "charts/videoglpreview.h"
#include "tests/support/previewframes.h"
#include "tests/support/previewscreen.h"
#include "tests/support/testbase.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {

constexpr qint64 longestStopMs = 100;

/// Counts the requests that reach an object through the event queue of its thread.
class CallCounter final : public QObject {
public:
    int calls = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        calls += event->type() == QEvent::MetaCall ? 1 : 0;
        return false;
    }
};

} // namespace

class TestPreviewThread final : public TestBase {
    Q_OBJECT

private slots:
    void paintsFollowEachOther();
    void framesArePaintedWithoutAnyOtherRequest();
    void stopsSoon_data();
    void stopsSoon();
    void stopsSoonWhenMinimised();
    void aStopBeforeTheFirstLineIsNotLost();
    void canBeStartedAgain();
    void goesOnWhenAHiddenWidgetIsShown();
    void oneRequestAtATime();
    void theWidgetMayGoFirst();
    void anotherWidgetTakesOver();
    void endsWithItsOwner();
};

void TestPreviewThread::paintsFollowEachOther()
{
    VideoGlPreview preview;
    QVERIFY(showOnScreen(preview));
    PreviewThread pacing;
    pacing.setWidget(&preview);
    pacing.setWidget(&preview);
    QSignalSpy paints(&preview, &VideoGlPreview::finishedToRenderPixmap);
    pacing.start();
    QTRY_VERIFY(paints.count() >= 20);
    pacing.finish();
    QVERIFY(pacing.isFinished());
    QCoreApplication::processEvents(); // the last request may still be there
    const int painted = paints.count();
    QTest::qWait(50);
    QVERIFY(paints.count() <= painted + 1);
}

void TestPreviewThread::framesArePaintedWithoutAnyOtherRequest()
{
    VideoGlPreview preview;
    preview.resize(320, 180);
    preview.setSource(0);
    QVERIFY(showOnScreen(preview));
    PreviewThread pacing;
    pacing.setWidget(&preview);
    pacing.start();
    for (int i = 0; i < 10; ++i) {
        preview.setFrame(0, 0, 320, 180, plainPicture(320, 180, {100, 128, 128}).makeFrame());
        QTRY_COMPARE(framesAlive(), 0);
    }
    pacing.finish();
}

void TestPreviewThread::stopsSoon_data()
{
    QTest::addColumn<bool>("visible");
    QTest::newRow("while it paints") << true;
    QTest::newRow("while it is hidden") << false;
}

void TestPreviewThread::stopsSoon()
{
    QFETCH(bool, visible);
    VideoGlPreview preview;
    if (visible) {
        QVERIFY(showOnScreen(preview));
    }
    PreviewThread pacing;
    pacing.setWidget(&preview);
    QSignalSpy paints(&preview, &VideoGlPreview::finishedToRenderPixmap);
    for (int i = 0; i < 5; ++i) {
        paints.clear();
        pacing.start();
        QVERIFY(!pacing.wait(30)); // it has begun to run
        QTRY_VERIFY(!visible || paints.count() > 2);
        QElapsedTimer clock;
        clock.start();
        pacing.stop();
        QVERIFY(pacing.wait(20000)); // this thread is busy, so nothing is painted meanwhile
        QVERIFY2(clock.elapsed() <= longestStopMs, qPrintable(QString::number(clock.elapsed())));
    }
    QCOMPARE(paints.isEmpty(), !visible);
}

void TestPreviewThread::stopsSoonWhenMinimised()
{
    VideoGlPreview preview;
    QVERIFY(showOnScreen(preview));
    PreviewThread pacing;
    pacing.setWidget(&preview);
    pacing.start();
    QSignalSpy paints(&preview, &VideoGlPreview::finishedToRenderPixmap);
    QTRY_VERIFY(paints.count() > 2);
    preview.showMinimized();
    QTest::qWait(50);
    QElapsedTimer clock;
    clock.start();
    pacing.stop();
    QVERIFY(pacing.wait(20000));
    QVERIFY2(clock.elapsed() <= longestStopMs, qPrintable(QString::number(clock.elapsed())));
}

void TestPreviewThread::aStopBeforeTheFirstLineIsNotLost()
{
    VideoGlPreview preview;
    PreviewThread pacing;
    pacing.setWidget(&preview);
    pacing.finish(); // never started
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 20; ++i) {
        pacing.start();
        pacing.stop();
        QVERIFY(pacing.wait(20000));
    }
    pacing.start();
    pacing.finish();
    QVERIFY(pacing.isFinished());
    QVERIFY2(clock.elapsed() <= 21 * longestStopMs, qPrintable(QString::number(clock.elapsed())));
}

void TestPreviewThread::canBeStartedAgain()
{
    VideoGlPreview preview;
    QVERIFY(showOnScreen(preview));
    PreviewThread pacing;
    pacing.setWidget(&preview);
    QSignalSpy paints(&preview, &VideoGlPreview::finishedToRenderPixmap);
    for (int i = 0; i < 3; ++i) {
        paints.clear();
        pacing.start();
        QTRY_VERIFY(paints.count() > 3);
        pacing.finish();
    }
}

void TestPreviewThread::goesOnWhenAHiddenWidgetIsShown()
{
    VideoGlPreview preview;
    PreviewThread pacing;
    pacing.setWidget(&preview);
    QSignalSpy paints(&preview, &VideoGlPreview::finishedToRenderPixmap);
    pacing.start();
    QTest::qWait(50);
    QCOMPARE(paints.count(), 0);
    QVERIFY(showOnScreen(preview));
    QTRY_VERIFY(paints.count() > 5);
    preview.hide();
    QTest::qWait(50);
    paints.clear();
    QVERIFY(showOnScreen(preview));
    QTRY_VERIFY(paints.count() > 5);
    pacing.finish();
}

void TestPreviewThread::oneRequestAtATime()
{
    VideoGlPreview preview;
    QVERIFY(showOnScreen(preview));
    PreviewThread pacing;
    pacing.setWidget(&preview);
    CallCounter counter;
    pacing.installEventFilter(&counter);
    pacing.start();
    QTRY_VERIFY(counter.calls > 2);
    counter.calls = 0;
    QThread::msleep(200); // the queue is not looked at
    QCoreApplication::sendPostedEvents(&pacing, QEvent::MetaCall);
    QVERIFY2(counter.calls <= 1, qPrintable(QString::number(counter.calls)));
    pacing.finish();
}

void TestPreviewThread::theWidgetMayGoFirst()
{
    PreviewThread pacing;
    for (int i = 0; i < 10; ++i) {
        auto preview = std::make_unique<VideoGlPreview>();
        pacing.setWidget(preview.get());
        if (!pacing.isRunning())
            pacing.start();
        QThread::msleep(5); // a request may be on its way
        preview.reset();
        QCoreApplication::processEvents();
    }
    pacing.setWidget(nullptr);
    pacing.finish();
    QVERIFY(pacing.isFinished());
}

void TestPreviewThread::anotherWidgetTakesOver()
{
    VideoGlPreview hidden; // whose paint never comes
    VideoGlPreview shown;
    QVERIFY(showOnScreen(shown));
    PreviewThread pacing;
    pacing.setWidget(&hidden);
    pacing.start();
    QTest::qWait(30);
    QSignalSpy paints(&shown, &VideoGlPreview::finishedToRenderPixmap);
    pacing.setWidget(&shown);
    QTRY_VERIFY(paints.count() > 5);
    pacing.finish();
}

void TestPreviewThread::endsWithItsOwner()
{
    VideoGlPreview preview;
    auto pacing = std::make_unique<PreviewThread>();
    pacing->setWidget(&preview);
    pacing->start();
    QElapsedTimer clock;
    clock.start();
    pacing.reset();
    QVERIFY2(clock.elapsed() <= longestStopMs, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(showOnScreen(preview)); // nobody is connected any more
}

QTEST_MAIN(TestPreviewThread)
#include "tst_previewthread.moc"
