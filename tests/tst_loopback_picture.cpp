#include "loopback/picture.h"
#include "loopback/receiverqueue.h"
#include "loopback/truthlog.h"
#include "loopback/truthreader.h"
#include "loopback/videoframe.h"
#include "ndi/nditypes.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <thread>
#include <vector>

using namespace loopback;

/// The parts under the loopback's sources: pictures, frames that are used again, the queue of a
/// receiver and the truth file.
class TestLoopbackPicture final : public QObject {
    Q_OBJECT

private slots:
    void numberIsReadBack_data();
    void numberIsReadBack();
    void redrawnEqualsDrawnAfresh_data();
    void redrawnEqualsDrawnAfresh();
    void pictureHasBarsBlockAndDigits();
    void pictureWithoutAStripHasNoNumber();
    void spoiltStripHasNoNumber();
    void absurdFormats_data();
    void absurdFormats();
    void framesAreUsedAgain();
    void formatChangeDropsOldFrames();
    void giantFramesShareTheirPixels();
    void unfreedFramesAreBounded();
    void fullQueueLosesTheOldestOfTheKind();
    void queueCountsEveryKind();
    void truthLinesAreOfFixedForm();
    void truthFileThatIsFull();
    void truthFromManyThreads();
    void truthReaderLeavesUnfinishedLinesOut();

private:
    QTemporaryDir m_folder;
};

namespace {

VideoFormat formatOf(int width, int height, std::uint32_t fourCC, int stride = 0)
{
    VideoFormat format;
    format.width = width;
    format.height = height;
    format.fourCC = fourCC;
    format.stride = stride;
    return format;
}

/// A picture with memory to the byte, so that a sanitizer sees every step outside.
struct Picture {
    explicit Picture(const VideoFormat &format)
        : layout(layoutOf(format)), memory(std::make_unique<std::uint8_t[]>(layout.sizeBytes))
    {
    }
    std::uint8_t *pixels() { return memory.get() + layout.originBytes; }
    void draw(std::int64_t frame) { drawFrame(layout, pixels(), frame, true, drawn); }
    bool operator==(const Picture &other) const
    {
        return std::equal(memory.get(), memory.get() + layout.sizeBytes, other.memory.get());
    }

    PictureLayout layout;
    std::unique_ptr<std::uint8_t[]> memory;
    DrawnState drawn;
};

void formatRows()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<uint>("fourCC");
    QTest::addColumn<int>("stride");
    QTest::newRow("UYVY") << 1920 << 1080 << 0x59565955U << 0;
    QTest::newRow("UYVY, lines longer than the picture") << 1280 << 720 << 0x59565955U << 3000;
    QTest::newRow("UYVY, lines upwards") << 1280 << 720 << 0x59565955U << -2560;
    QTest::newRow("UYVY, odd size") << 721 << 405 << 0x59565955U << 0;
    QTest::newRow("UYVY, narrowest with a strip") << 112 << 2 << 0x59565955U << 0;
    QTest::newRow("UYVA") << 640 << 480 << 0x41565955U << 0;
    QTest::newRow("P216") << 640 << 480 << 0x36313250U << 0;
    QTest::newRow("PA16") << 640 << 480 << 0x36314150U << 1400;
    QTest::newRow("YV12") << 640 << 480 << 0x32315659U << 0;
    QTest::newRow("I420, odd size") << 641 << 481 << 0x30323449U << 0;
    QTest::newRow("NV12, odd size, longer lines") << 641 << 481 << 0x3231564EU << 700;
    QTest::newRow("BGRA") << 640 << 480 << 0x41524742U << 0;
    QTest::newRow("BGRX, lines upwards") << 640 << 480 << 0x58524742U << -2560;
    QTest::newRow("RGBA") << 640 << 480 << 0x41424752U << 0;
    QTest::newRow("RGBX") << 640 << 480 << 0x58424752U << 0;
}

QueueItem itemOf(std::int32_t type, std::int64_t number)
{
    QueueItem item;
    item.type = type;
    item.number = number;
    return item;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

void TestLoopbackPicture::numberIsReadBack_data()
{
    formatRows();
}

void TestLoopbackPicture::numberIsReadBack()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(uint, fourCC);
    QFETCH(int, stride);
    Picture picture(formatOf(width, height, fourCC, stride));
    for (const std::int64_t frame :
         {0LL, 1LL, 2LL, 3LL, 99LL, 100LL, 65535LL, 99999999LL, 100000000LL, 1099511627775LL}) {
        picture.draw(frame);
        QCOMPARE(readFrameNumber(picture.layout, picture.pixels()).value_or(-1), frame);
    }
}

void TestLoopbackPicture::redrawnEqualsDrawnAfresh_data()
{
    formatRows();
}

/// Only what changes is drawn; the result must be the picture that a full drawing gives.
void TestLoopbackPicture::redrawnEqualsDrawnAfresh()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(uint, fourCC);
    QFETCH(int, stride);
    const VideoFormat format = formatOf(width, height, fourCC, stride);
    Picture again(format);
    for (const std::int64_t frame : {0LL, 1LL, 9LL, 10LL, 500LL, 123456LL})
        again.draw(frame);
    Picture fresh(format);
    fresh.draw(123456);
    QVERIFY(again == fresh);
    fresh.draw(123457);
    QVERIFY(!(again == fresh));
}

void TestLoopbackPicture::pictureHasBarsBlockAndDigits()
{
    Picture picture(formatOf(1920, 1080, 0x59565955));
    picture.draw(0);
    const auto luma = [&picture](int x, int y) { return int(picture.pixels()[y * 3840 + x * 2 + 1]); };
    QCOMPARE(luma(100, 200), 180); // the first bar
    QCOMPARE(luma(300, 200), 162); // the second
    QCOMPARE(luma(1900, 200), 16); // the last
    QCOMPARE(luma(10, 820), 235);  // the block at its start
    QCOMPARE(luma(816, 516), 16);  // round the digits it is black
    int white = 0;
    for (int x = 816; x < 1104; ++x)
        white += luma(x, 540) == 235 ? 1 : 0;
    QCOMPARE(white, 8 * 3 * 6); // eight zeros in their middle line: three dots of six pixels each
    picture.draw(1);
    QCOMPARE(luma(1, 820), 180); // the block has moved on and left its bar
}

void TestLoopbackPicture::pictureWithoutAStripHasNoNumber()
{
    for (const VideoFormat &format : {formatOf(110, 80, 0x59565955), formatOf(1, 1, 0x59565955),
                                      formatOf(640, 480, 0x31323334), formatOf(640, 480, 0x59565955, 100)}) {
        Picture picture(format);
        picture.draw(7);
        QVERIFY(!readFrameNumber(picture.layout, picture.pixels()).has_value());
    }
    QVERIFY(!readFrameNumber(layoutOf(formatOf(640, 480, 0x59565955)), nullptr).has_value());
}

void TestLoopbackPicture::spoiltStripHasNoNumber()
{
    Picture picture(formatOf(1120, 480, 0x59565955));
    picture.draw(7);
    const auto cell = std::ptrdiff_t{30}; // 16 pixels wide: a bit of the number
    std::uint8_t *middle = picture.pixels() + std::ptrdiff_t{4} * 2240 + cell * 32 + 16;
    std::transform(middle, middle + 4, middle, [](std::uint8_t value) { return std::uint8_t(255 - value); });
    QVERIFY(!readFrameNumber(picture.layout, picture.pixels()).has_value());
}

void TestLoopbackPicture::absurdFormats_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("stride");
    QTest::addColumn<qulonglong>("leastBytes");
    QTest::addColumn<qulonglong>("mostBytes");
    QTest::newRow("nothing") << 0 << 0 << 0 << 0ULL << 0ULL;
    QTest::newRow("negative") << -5 << -5 << 0 << 0ULL << 0ULL;
    QTest::newRow("no height") << 1920 << 0 << 0 << 0ULL << 0ULL;
    QTest::newRow("one pixel") << 1 << 1 << 0 << 4ULL << 200ULL;
    QTest::newRow("stride of one byte: room for whole lines") << 1000 << 1000 << 1 << 2000000ULL << 2100000ULL;
    QTest::newRow("stride longer than the line") << 16 << 16 << 10000 << 160000ULL << 200000ULL;
    QTest::newRow("negative stride: room to both sides") << 16 << 16 << -10000 << 320000ULL << 400000ULL;
    QTest::newRow("giant") << 16384 << 16384 << 0 << 536870912ULL << 537000000ULL;
    QTest::newRow("more than there can be") << INT32_MAX << INT32_MAX << 0 << 0ULL << 0ULL;
    QTest::newRow("the longest lines there are") << 1920 << 1080 << INT32_MIN << 0ULL << 0ULL;
}

void TestLoopbackPicture::absurdFormats()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(int, stride);
    QFETCH(qulonglong, leastBytes);
    QFETCH(qulonglong, mostBytes);
    const PictureLayout layout = layoutOf(formatOf(width, height, 0x59565955, stride));
    QVERIFY(layout.sizeBytes >= leastBytes);
    QVERIFY(layout.sizeBytes <= mostBytes);
    FramePool pool;
    const auto frame = pool.take(layout);
    QVERIFY(frame != nullptr);
    QCOMPARE(frame->pixels() != nullptr, leastBytes > 0);
    if (frame->pixels() != nullptr)
        drawFrame(layout, frame->pixels(), 5, true, frame->drawn);
}

void TestLoopbackPicture::framesAreUsedAgain()
{
    FramePool pool;
    const PictureLayout layout = layoutOf(formatOf(64, 64, 0x59565955));
    auto first = pool.take(layout);
    auto second = pool.take(layout);
    QVERIFY(first->pixels() != second->pixels());
    QCOMPARE(pool.size(), std::size_t{2});
    const std::uint8_t *pixels = first->pixels();
    auto holder = first;
    first.reset();
    QVERIFY(pool.take(layout)->pixels() != pixels); // still held by one
    holder.reset();
    QCOMPARE(static_cast<const std::uint8_t *>(pool.take(layout)->pixels()), pixels);
    QCOMPARE(pool.size(), std::size_t{3});
}

void TestLoopbackPicture::formatChangeDropsOldFrames()
{
    FramePool pool;
    const PictureLayout small = layoutOf(formatOf(64, 64, 0x59565955));
    const PictureLayout large = layoutOf(formatOf(128, 64, 0x59565955));
    auto held = pool.take(small);
    pool.take(small).reset();
    QCOMPARE(pool.size(), std::size_t{2});
    QCOMPARE(pool.take(large)->layout.width, 128);
    QCOMPARE(pool.size(), std::size_t{2}); // the idle small one went, the held one and the large one are there
    held.reset();
    QCOMPARE(pool.size(), std::size_t{1});
}

void TestLoopbackPicture::giantFramesShareTheirPixels()
{
    FramePool pool;
    const PictureLayout layout = layoutOf(formatOf(16384, 4096, 0x59565955));
    QVERIFY(layout.giant);
    const auto first = pool.take(layout);
    const auto second = pool.take(layout);
    QVERIFY(first->pixels() != nullptr);
    QCOMPARE(first->pixels(), second->pixels());
    QCOMPARE(readFrameNumber(layout, first->pixels()).value_or(-1), std::int64_t{0});
    const auto other = pool.take(layoutOf(formatOf(4096, 16384, 0x59565955)));
    QVERIFY(other->pixels() != first->pixels());
}

void TestLoopbackPicture::unfreedFramesAreBounded()
{
    FramePool pool;
    const PictureLayout layout = layoutOf(formatOf(3840, 2160, 0x59565955));
    std::vector<std::shared_ptr<VideoFrame>> leaked;
    while (auto frame = pool.take(layout))
        leaked.push_back(std::move(frame));
    QVERIFY(leaked.size() * layout.sizeBytes <= std::size_t{1} << 30);
    QVERIFY(leaked.size() * layout.sizeBytes > std::size_t{900} << 20);
    leaked.pop_back();
    QVERIFY(pool.take(layout) != nullptr);
}

void TestLoopbackPicture::fullQueueLosesTheOldestOfTheKind()
{
    ReceiverQueue queue({2, 1, 1});
    QVERIFY(!queue.push(itemOf(NDIlib_frame_type_audio, 100)).has_value());
    QVERIFY(!queue.push(itemOf(NDIlib_frame_type_video, 0)).has_value());
    QVERIFY(!queue.push(itemOf(NDIlib_frame_type_video, 1)).has_value());
    const std::optional<QueueItem> lost = queue.push(itemOf(NDIlib_frame_type_video, 2));
    QVERIFY(lost.has_value());
    QCOMPARE(lost->number, std::int64_t{0});
    QCOMPARE(queue.total().video_frames, std::int64_t{3});
    QCOMPARE(queue.dropped().video_frames, std::int64_t{1});
    QCOMPARE(queue.dropped().audio_frames, std::int64_t{0});
    QCOMPARE(queue.pop()->number, std::int64_t{100}); // audio before it was not touched
    QCOMPARE(queue.pop()->number, std::int64_t{1});
    QVERIFY(!queue.push(itemOf(NDIlib_frame_type_video, 3)).has_value()); // there is room again
    QCOMPARE(queue.pop()->number, std::int64_t{2});
    QCOMPARE(queue.pop()->number, std::int64_t{3});
    QVERIFY(!queue.pop().has_value());
}

void TestLoopbackPicture::queueCountsEveryKind()
{
    ReceiverQueue queue({1, 1, 1});
    const std::vector<std::int32_t> types = {NDIlib_frame_type_audio, NDIlib_frame_type_metadata,
                                             NDIlib_frame_type_error, NDIlib_frame_type_status_change, 105};
    for (const std::int32_t type : types)
        queue.push(itemOf(type, type));
    queue.push(itemOf(NDIlib_frame_type_metadata, 7));
    QCOMPARE(queue.dropped().metadata_frames, std::int64_t{1});
    QCOMPARE(queue.total().metadata_frames, std::int64_t{2});
    QCOMPARE(queue.total().audio_frames, std::int64_t{1});
    QCOMPARE(queue.pop()->type, std::int32_t{NDIlib_frame_type_audio});
    QCOMPARE(queue.pop()->type, 105); // messages that carry nothing have one limit together
    QCOMPARE(queue.pop()->number, std::int64_t{7});
    QVERIFY(queue.isEmpty());
}

void TestLoopbackPicture::truthLinesAreOfFixedForm()
{
    const QString path = m_folder.filePath(QString::fromUtf8("wahrheit ä.txt"));
    TruthLog truth;
    std::string error;
    QVERIFY2(truth.open(path.toStdString(), 100, error), error.c_str());
    const std::int64_t beforeNs = steadyNowNs();
    truth.write("create", 0, 3, "");
    truth.writeSize("video", 7, 123456789, 1920, 1080);
    truth.writeSize("video", 99999, 999999999999, INT32_MIN, INT32_MAX);
    truth.write("unknown", 1, INT32_MIN, "");
    truth.write("dead", -1, 6, "a note that is too long");
    const std::int64_t afterNs = steadyNowNs();

    const QByteArray content = contentOf(path);
    QCOMPARE(content.size(), 6400);
    QCOMPARE(content.indexOf('\0'), 5 * 64);
    for (int line = 0; line < 5; ++line)
        QCOMPARE(content.indexOf('\n', line * 64), line * 64 + 63);
    const std::vector<TruthRecord> records = readTruth(path.toStdString());
    QCOMPARE(records.size(), std::size_t{5});
    QCOMPARE(records[0].kind, std::string("create"));
    QCOMPARE(records[0].receiver, 0);
    QCOMPARE(records[0].number, std::int64_t{3});
    QVERIFY(records[0].timeNs >= beforeNs && records[4].timeNs <= afterNs);
    QVERIFY(records[0].timeNs <= records[1].timeNs);
    QCOMPARE(records[1].note, std::string("1920x1080"));
    QCOMPARE(records[1].number, std::int64_t{123456789});
    QCOMPARE(records[2].receiver, 99999);
    QCOMPARE(records[2].number, std::int64_t{999999999999});
    QCOMPARE(records[2].note, std::string("-999999x999999"));
    QCOMPARE(records[3].number, std::int64_t{INT32_MIN});
    QCOMPARE(records[4].receiver, -1);
    QCOMPARE(records[4].note, std::string("a note that is ").substr(0, 14));
}

void TestLoopbackPicture::truthFileThatIsFull()
{
    const QString path = m_folder.filePath(QStringLiteral("full.txt"));
    TruthLog truth;
    std::string error;
    QVERIFY2(truth.open(path.toStdString(), 4, error), error.c_str());
    for (int i = 0; i < 3; ++i)
        truth.write("free", 0, i, "");
    QCOMPARE(countTruth(readTruth(path.toStdString()), "full"), std::int64_t{0});
    for (int i = 3; i < 10; ++i)
        truth.write("free", 0, i, "");
    const std::vector<TruthRecord> records = readTruth(path.toStdString());
    QCOMPARE(records.size(), std::size_t{4});
    QCOMPARE(records[2].number, std::int64_t{2});
    QCOMPARE(records[3].kind, std::string("full"));
    QCOMPARE(records[3].number, std::int64_t{7}); // how many found no room
}

void TestLoopbackPicture::truthFromManyThreads()
{
    const QString path = m_folder.filePath(QStringLiteral("threads.txt"));
    TruthLog truth;
    std::string error;
    QVERIFY2(truth.open(path.toStdString(), 10000, error), error.c_str());
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int receiver = 0; receiver < 4; ++receiver)
        threads.emplace_back([&truth, receiver] {
            for (int i = 0; i < 2000; ++i)
                truth.write("free", receiver, i, "");
        });
    for (std::thread &thread : threads)
        thread.join();
    const std::vector<TruthRecord> records = readTruth(path.toStdString());
    QCOMPARE(records.size(), std::size_t{8000});
    std::vector<std::int64_t> next(4, 0);
    for (const TruthRecord &record : records)
        QCOMPARE(record.number, next[static_cast<std::size_t>(record.receiver)]++);
}

void TestLoopbackPicture::truthReaderLeavesUnfinishedLinesOut()
{
    const QString path = m_folder.filePath(QStringLiteral("whole.txt"));
    TruthLog truth;
    std::string error;
    QVERIFY2(truth.open(path.toStdString(), 10, error), error.c_str());
    for (int i = 0; i < 3; ++i)
        truth.write("free", 0, i, "");
    std::string bytes = contentOf(path).toStdString();
    QCOMPARE(parseTruth(bytes).size(), std::size_t{3});
    bytes[127] = '\0'; // the second line is not published yet
    const std::vector<TruthRecord> records = parseTruth(bytes);
    QCOMPARE(records.size(), std::size_t{2});
    QCOMPARE(records[1].number, std::int64_t{2});
    QCOMPARE(parseTruth(bytes.substr(0, 100)).size(), std::size_t{1});
    QVERIFY(parseTruth({}).empty());
    QVERIFY(readTruth(m_folder.filePath(QStringLiteral("missing")).toStdString()).empty());
}

QTEST_APPLESS_MAIN(TestLoopbackPicture)
#include "tst_loopback_picture.moc"
