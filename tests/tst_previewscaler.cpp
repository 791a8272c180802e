#include "charts/previewscaler.h"
#include "tests/support/testbase.h"

#include <QtTest>

#include <array>
#include <climits>
#include <cmath>
#include <random>
#include <vector>

extern "C" {
#include <libswscale/swscale.h>
}

namespace {

using Bytes = std::vector<std::uint8_t>;

/// With colour(column, row, sample) for sample 0 U or V, 1 Y.
template <typename Sample>
Bytes makeFrame(int width, int height, Sample sample)
{
    Bytes frame(std::size_t(width) * std::size_t(height) * 2 + PreviewScaler::frameTailBytes, 0xEE);
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const std::size_t at = (std::size_t(row) * std::size_t(width) + std::size_t(column)) * 2;
            frame.at(at) = static_cast<std::uint8_t>(sample(column, row, 0));
            frame.at(at + 1) = static_cast<std::uint8_t>(sample(column, row, 1));
        }
    }
    return frame;
}

Bytes noise(int width, int height)
{
    static std::mt19937 generator(1); // NOLINT: the same frames in every run
    return makeFrame(width, height, [](int, int, int) { return int(generator() & 0xFFU); });
}

/// The planes of a scaler made for one frame, with room around every row.
std::array<Bytes, 3> scaledAlone(const Bytes &frame, int frameWidth, int frameHeight, int width, int height)
{
    const int stride = (width + 127) / 64 * 64;
    std::array<Bytes, 3> planes;
    for (Bytes &plane : planes)
        plane.resize(std::size_t(stride) * std::size_t(height + 2));
    SwsContext *const context = sws_getContext(frameWidth, frameHeight, AV_PIX_FMT_UYVY422, width, height,
                                               AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr);
    const std::array<const std::uint8_t *, 1> from{frame.data()};
    const std::array<int, 1> fromStride{frameWidth * 2};
    const std::array<std::uint8_t *, 3> to{planes[0].data(), planes[1].data(), planes[2].data()};
    const std::array<int, 3> toStride{stride, stride, stride};
    sws_scale(context, from.data(), fromStride.data(), 0, frameHeight, to.data(), toStride.data());
    sws_freeContext(context);
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const int columns = i == 0 ? width : width / 2;
        const int rows = i == 0 ? height : height / 2;
        Bytes packed;
        for (int row = 0; row < rows; ++row) {
            const auto line = planes.at(i).cbegin() + std::ptrdiff_t(row) * stride;
            packed.insert(packed.end(), line, line + columns);
        }
        planes.at(i) = packed;
    }
    return planes;
}

std::array<Bytes, 3> copied(const PreviewPlanes &planes)
{
    const std::size_t luma = std::size_t(planes.width) * std::size_t(planes.height);
    const std::size_t chroma = std::size_t(planes.chromaWidth) * std::size_t(planes.chromaHeight);
    return {Bytes(planes.y, planes.y + luma), Bytes(planes.u, planes.u + chroma), Bytes(planes.v, planes.v + chroma)};
}

} // namespace

class TestPreviewScaler final : public TestBase {
    Q_OBJECT

private slots:
    void sizesOfThePlanes_data();
    void sizesOfThePlanes();
    void planesFollowEachOther();
    void oneColourStaysThatColour();
    void keepsTheShapeOfAPicture();
    void sameAsAScalerForEveryFrame();
    void memoryIsReused();
    void noPictureOfSuchSizes_data();
    void noPictureOfSuchSizes();
    void worksAgainAfterAFailure();
};

void TestPreviewScaler::sizesOfThePlanes_data()
{
    QTest::addColumn<QSize>("wanted");
    QTest::addColumn<QSize>("luma");
    QTest::addColumn<QSize>("chroma");
    QTest::newRow("even") << QSize(400, 224) << QSize(400, 224) << QSize(200, 112);
    QTest::newRow("odd height") << QSize(400, 301) << QSize(400, 300) << QSize(200, 150);
    QTest::newRow("odd width") << QSize(401, 224) << QSize(401, 224) << QSize(200, 112);
    QTest::newRow("least width") << QSize(11, 3) << QSize(11, 2) << QSize(5, 1);
}

void TestPreviewScaler::sizesOfThePlanes()
{
    QFETCH(QSize, wanted);
    QFETCH(QSize, luma);
    QFETCH(QSize, chroma);
    PreviewScaler scaler;
    const Bytes frame = noise(640, 360);
    const PreviewPlanes *const planes = scaler.scale(frame.data(), 640, 360, wanted.width(), wanted.height());
    QVERIFY(planes);
    QCOMPARE(QSize(planes->width, planes->height), luma);
    QCOMPARE(QSize(planes->chromaWidth, planes->chromaHeight), chroma);
}

void TestPreviewScaler::planesFollowEachOther()
{
    PreviewScaler scaler;
    const Bytes frame = noise(64, 36);
    const PreviewPlanes *const planes = scaler.scale(frame.data(), 64, 36, 333, 301);
    QVERIFY(planes);
    QCOMPARE(planes->u - planes->y, std::ptrdiff_t(300 * 333));
    QCOMPARE(planes->v - planes->y, std::ptrdiff_t(300 * 333 + 300 * 333 / 4));
}

void TestPreviewScaler::oneColourStaysThatColour()
{
    PreviewScaler scaler;
    for (const int width : {11, 12, 13, 31, 33, 250, 400, 401}) {
        for (const int height : {2, 3, 35, 225}) {
            const Bytes frame = makeFrame(642, 361, [](int column, int, int sample) {
                return sample == 1 ? 91 : column % 2 == 0 ? 54 : 201;
            });
            const PreviewPlanes *const planes = scaler.scale(frame.data(), 642, 361, width, height);
            QVERIFY(planes);
            const std::array<Bytes, 3> values = copied(*planes);
            const std::array<int, 3> expected{91, 54, 201};
            for (std::size_t i = 0; i < values.size(); ++i) {
                for (const std::uint8_t value : values.at(i))
                    QVERIFY2(std::abs(value - expected.at(i)) <= 1, qPrintable(QString::number(value)));
            }
        }
    }
}

/// Brightness rises to the right, U downwards: each sample is where it was in the frame.
void TestPreviewScaler::keepsTheShapeOfAPicture()
{
    const int frameWidth = 1920;
    const int frameHeight = 1080;
    const Bytes frame = makeFrame(frameWidth, frameHeight, [](int column, int row, int sample) {
        if (sample == 1)
            return 20 + column * 200 / frameWidth;
        return column % 2 == 0 ? 20 + row * 200 / frameHeight : 220 - row * 200 / frameHeight;
    });
    PreviewScaler scaler;
    const PreviewPlanes *const planes = scaler.scale(frame.data(), frameWidth, frameHeight, 400, 225);
    QVERIFY(planes);
    const std::array<Bytes, 3> values = copied(*planes);
    for (int row = 0; row < 224; ++row) {
        for (int column = 0; column < 400; ++column) {
            const double expected = 20.0 + (column + 0.5) / 400.0 * 200.0;
            QVERIFY(std::abs(values[0].at(std::size_t(row) * 400 + std::size_t(column)) - expected) <= 2.0);
        }
    }
    for (int row = 0; row < 112; ++row) {
        for (int column = 0; column < 200; ++column) {
            const double expected = 20.0 + (row + 0.5) / 112.0 * 200.0;
            QVERIFY(std::abs(values[1].at(std::size_t(row) * 200 + std::size_t(column)) - expected) <= 2.0);
            QVERIFY(std::abs(values[2].at(std::size_t(row) * 200 + std::size_t(column)) - (240.0 - expected)) <= 2.0);
        }
    }
}

void TestPreviewScaler::sameAsAScalerForEveryFrame()
{
    PreviewScaler scaler;
    for (const QSize &size : {QSize(640, 360), QSize(64, 36), QSize(101, 77), QSize(5, 5), QSize(640, 360)}) {
        const Bytes frame = noise(size.width(), size.height());
        for (const int width : {400, 11, 12, 13, 15, 17, 33, 333, 400, 400}) {
            for (const int height : {226, 2, 37}) {
                const PreviewPlanes *const planes =
                    scaler.scale(frame.data(), size.width(), size.height(), width, height);
                QVERIFY(planes);
                const auto alone = scaledAlone(frame, size.width(), size.height(), width, height - height % 2);
                QVERIFY2(copied(*planes) == alone, qPrintable(QStringLiteral("%1 x %2 to %3 x %4")
                                                                  .arg(size.width())
                                                                  .arg(size.height())
                                                                  .arg(width)
                                                                  .arg(height)));
            }
        }
    }
}

void TestPreviewScaler::memoryIsReused()
{
    PreviewScaler scaler;
    const Bytes frame = noise(640, 360);
    const PreviewPlanes *planes = scaler.scale(frame.data(), 640, 360, 400, 225);
    QVERIFY(planes);
    const std::uint8_t *const place = planes->y;
    const std::size_t bytes = scaler.bufferBytes();
    QVERIFY(bytes >= 400 * 225 * 3 / 2);
    for (const int width : {400, 11, 200, 399, 400}) {
        planes = scaler.scale(frame.data(), 640, 360, width, 225);
        QVERIFY(planes);
        QCOMPARE(planes->y, place);
    }
    QCOMPARE(scaler.bufferBytes(), bytes);
}

void TestPreviewScaler::noPictureOfSuchSizes_data()
{
    QTest::addColumn<QSize>("frame");
    QTest::addColumn<QSize>("wanted");
    QTest::newRow("frame of no width") << QSize(0, 100) << QSize(400, 225);
    QTest::newRow("frame of no height") << QSize(100, 0) << QSize(400, 225);
    QTest::newRow("frame of negative size") << QSize(-1920, -1080) << QSize(400, 225);
    QTest::newRow("frame too wide to count its bytes") << QSize(INT_MAX / 2 + 1, 1) << QSize(400, 225);
    QTest::newRow("no width") << QSize(64, 36) << QSize(0, 225);
    QTest::newRow("one row") << QSize(64, 36) << QSize(400, 1);
    QTest::newRow("no row") << QSize(64, 36) << QSize(400, 0);
}

void TestPreviewScaler::noPictureOfSuchSizes()
{
    QFETCH(QSize, frame);
    QFETCH(QSize, wanted);
    PreviewScaler scaler; // must not read a byte
    QVERIFY(!scaler.scale(nullptr, frame.width(), frame.height(), wanted.width(), wanted.height()));
}

void TestPreviewScaler::worksAgainAfterAFailure()
{
    PreviewScaler scaler;
    const Bytes frame = noise(64, 36);
    QVERIFY(scaler.scale(frame.data(), 64, 36, 40, 20));
    QVERIFY(!scaler.scale(frame.data(), INT_MAX / 2, 36, 40, 20)); // beyond what the library scales
    const PreviewPlanes *const planes = scaler.scale(frame.data(), 64, 36, 40, 20);
    QVERIFY(planes);
    QVERIFY(copied(*planes) == scaledAlone(frame, 64, 36, 40, 20));
}

QTEST_GUILESS_MAIN(TestPreviewScaler)
#include "tst_previewscaler.moc"
