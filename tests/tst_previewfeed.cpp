#include "charts/previewfeed.h"
#include "charts/previewthread.h"
#include "charts/videoglpreview.h"
#include "ndi/ndilib.h"
#include "ndi/receivercontroller.h"
#include "tests/support/previewframes.h"
#include "tests/support/previewscreen.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QtTest>

#include <array>
#include <memory>

namespace {

const YuvColour red{65, 100, 212};
const NDIlib_source_t source{"LOOPBACK (1080p59.94)", nullptr};

/// How many of the loopback's bars stand where they should, in a row a fifth of the way down: its lower half holds a
/// block that wanders and digits.
int barsSeen(const QImage &image)
{
    int seen = 0;
    for (std::size_t bar = 0; bar < barColours.size(); ++bar) {
        const int x = int((2 * bar + 1) * std::size_t(image.width()) / (2 * barColours.size()));
        const QColor shown = image.pixelColor(x, image.height() / 5);
        const QColor expected = shownColour(barColours.at(bar));
        const bool right = std::abs(shown.red() - expected.red()) <= 4
                           && std::abs(shown.green() - expected.green()) <= 4
                           && std::abs(shown.blue() - expected.blue()) <= 4;
        seen += right ? 1 : 0;
    }
    return seen;
}

QImage onScreen(const QWidget &window, const QWidget &widget)
{
    const QPoint place = widget.mapTo(&window, QPoint(0, 0));
    return window.screen()->grabWindow(window.winId(), place.x(), place.y(), widget.width(), widget.height()).toImage();
}

} // namespace

class TestPreviewFeed final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void withoutASelectionItFreesTheFrame();
    void withASelectionThePreviewOwnsTheFrame();
    void withoutAPreviewItFreesTheFrame();
    void framesOfALoopbackSourceReachTheScreen();
    void noneSelectedInMidRun();
};

void TestPreviewFeed::initTestCase()
{
    QVERIFY2(NDIlib_initialize(), qPrintable(ndiRuntimeProblem()));
}

void TestPreviewFeed::withoutASelectionItFreesTheFrame()
{
    VideoGlPreview preview;
    PreviewFeed feed(&preview);
    feed.takeFrame(0, 0, 64, 36, plainPicture(64, 36, red).makeFrame());
    QCOMPARE(framesAlive(), 0);
}

void TestPreviewFeed::withASelectionThePreviewOwnsTheFrame()
{
    auto preview = std::make_unique<VideoGlPreview>();
    PreviewFeed feed(preview.get());
    preview->setSource(2);
    feed.takeFrame(1, 0, 64, 36, plainPicture(64, 36, red).makeFrame());
    QCOMPARE(framesAlive(), 0);
    feed.takeFrame(2, 0, 64, 36, plainPicture(64, 36, red).makeFrame());
    QCOMPARE(framesAlive(), 1);
    preview.reset();
    QCOMPARE(framesAlive(), 0);
}

void TestPreviewFeed::withoutAPreviewItFreesTheFrame()
{
    auto preview = std::make_unique<VideoGlPreview>();
    preview->setSource(0);
    PreviewFeed feed(preview.get());
    preview.reset();
    feed.takeFrame(0, 0, 64, 36, plainPicture(64, 36, red).makeFrame());
    QCOMPARE(framesAlive(), 0);
}

void TestPreviewFeed::framesOfALoopbackSourceReachTheScreen()
{
    QWidget window;
    window.resize(640, 480);
    QWidget container(&window);
    container.setGeometry(20, 10, 480, 400);
    VideoGlPreview preview(&container);
    preview.resize(container.size());
    QVERIFY(showOnScreen(window));
    PreviewFeed feed(&preview);
    PreviewThread pacing;
    pacing.setWidget(&preview);
    preview.setSource(7);
    pacing.start();

    ReceiverController controller;
    QSignalSpy ends(&controller, &ReceiverController::sourceReceiverFinished);
    connect(&controller, &ReceiverController::frameData, &feed, &PreviewFeed::takeFrame);
    controller.startReceivers(source, 7, 1, 0);
    QTRY_COMPARE_WITH_TIMEOUT(barsSeen(onScreen(window, preview)), int(barColours.size()), 15000);
    QCOMPARE(preview.size(), QSize(480, 270));

    controller.stopReceivers();
    QTRY_COMPARE(ends.count(), 1);
    pacing.finish();
}

void TestPreviewFeed::noneSelectedInMidRun()
{
    VideoGlPreview preview;
    preview.resize(320, 180);
    QVERIFY(showOnScreen(preview));
    PreviewFeed feed(&preview);
    preview.setSource(0);
    ReceiverController controller;
    QSignalSpy ends(&controller, &ReceiverController::sourceReceiverFinished);
    QSignalSpy frames(&controller, &ReceiverController::frameData);
    connect(&controller, &ReceiverController::frameData, &feed, &PreviewFeed::takeFrame);
    controller.startReceivers(source, 0, 1, 0);
    QTRY_COMPARE_WITH_TIMEOUT(barsSeen(preview.grabFramebuffer()), int(barColours.size()), 15000);
    preview.setSource(-1);
    const int sent = frames.count();
    QTRY_VERIFY(frames.count() > sent + 20); // freed on the way: the sanitizers see to that
    QCOMPARE(barsSeen(preview.grabFramebuffer()), int(barColours.size()));
    preview.setSource(0);
    controller.stopReceivers();
    QTRY_COMPARE(ends.count(), 1);
}

int main(int argc, char *argv[])
{
    qputenv("NDI_RUNTIME_DIR_V6", VEXA_LOOPBACK_DIR);
    QApplication application(argc, argv);
    TestPreviewFeed test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_previewfeed.moc"
