#include "charts/previewgeometry.h"
#include "tests/support/testbase.h"

#include <QtTest>

class TestPreviewGeometry final : public TestBase {
    Q_OBJECT

private slots:
    void fits_data();
    void fits();
    void staysInsideTheContainer();
};

void TestPreviewGeometry::fits_data()
{
    QTest::addColumn<QSize>("frame");
    QTest::addColumn<QSize>("container");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("wide picture in a square") << QSize(1920, 1080) << QSize(400, 400) << QSize(400, 225);
    QTest::newRow("tall picture in a square") << QSize(720, 1280) << QSize(400, 400) << QSize(225, 400);
    QTest::newRow("the same shape fills it") << QSize(3840, 2160) << QSize(400, 225) << QSize(400, 225);
    QTest::newRow("the container's own size") << QSize(313, 177) << QSize(313, 177) << QSize(313, 177);
    QTest::newRow("wide picture in a wider room") << QSize(1920, 1080) << QSize(800, 225) << QSize(400, 225);
    QTest::newRow("height is cut, not rounded") << QSize(1920, 1080) << QSize(401, 401) << QSize(401, 225);
    QTest::newRow("width is cut, not rounded") << QSize(1920, 1080) << QSize(1000, 301) << QSize(535, 301);
    QTest::newRow("4:3") << QSize(720, 540) << QSize(400, 225) << QSize(300, 225);
    QTest::newRow("a line across") << QSize(10000, 1) << QSize(400, 225) << QSize(400, 1);
    QTest::newRow("a line down") << QSize(1, 10000) << QSize(400, 225) << QSize(1, 225);
    QTest::newRow("enlarged") << QSize(16, 9) << QSize(1600, 1600) << QSize(1600, 900);
    QTest::newRow("products beyond 32 bits") << QSize(200000, 100000) << QSize(100000, 100000) << QSize(100000, 50000);
    QTest::newRow("one pixel") << QSize(1, 1) << QSize(1, 1) << QSize(1, 1);
}

void TestPreviewGeometry::fits()
{
    QFETCH(QSize, frame);
    QFETCH(QSize, container);
    QFETCH(QSize, expected);
    QCOMPARE(fittedPreviewSize(frame.width(), frame.height(), container.width(), container.height()), expected);
}

void TestPreviewGeometry::staysInsideTheContainer()
{
    for (int width = 1; width <= 60; ++width) {
        for (int height = 1; height <= 60; ++height) {
            const QSize room(97, 61);
            const QSize fitted = fittedPreviewSize(width, height, room.width(), room.height());
            QVERIFY(fitted.width() >= 1 && fitted.height() >= 1);
            QVERIFY(fitted.width() <= room.width() && fitted.height() <= room.height());
            QVERIFY(fitted.width() == room.width() || fitted.height() == room.height());
        }
    }
}

QTEST_GUILESS_MAIN(TestPreviewGeometry)
#include "tst_previewgeometry.moc"
