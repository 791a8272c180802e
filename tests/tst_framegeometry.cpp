#include "tests/support/testbase.h"
#include "widgets/framegeometry.h"
#include "widgets/windowsystem.h"

#include <QtTest>

Q_DECLARE_METATYPE(FrameZone)
Q_DECLARE_METATYPE(Qt::Edges)

namespace {

constexpr int border = 15;
constexpr QRect window(100, 200, 400, 300); // columns 100 to 499, rows 200 to 499
constexpr QSize desktop(1920, 1080);
constexpr QSize anySize(1, 1);
constexpr QRect unchanged; // what a refused drag gives here

QRect result(Qt::Edges edges, const QPoint &mouse, const QRect &start = window, const QSize &least = anySize)
{
    return draggedGeometry(edges, start, mouse, desktop, least).value_or(unchanged);
}

/// A window on the whole desktop and further, so that no edge meets the opposite one.
constexpr QRect large(100, 200, 4000, 3000);

} // namespace

class TestFrameGeometry final : public TestBase {
    Q_OBJECT

private slots:
    void zones_data();
    void zones();
    void zonesOfASmallWindow();
    void cursorsAndEdges_data();
    void cursorsAndEdges();
    void drags_data();
    void drags();
    void nothingDragged();
    void leastSize_data();
    void leastSize();
    void maximum_data();
    void maximum();
    void windowSystems_data();
    void windowSystems();
};

void TestFrameGeometry::zones_data()
{
    QTest::addColumn<QPoint>("position");
    QTest::addColumn<FrameZone>("zone");
    QTest::newRow("first pixel") << QPoint(100, 200) << FrameZone::topLeft;
    QTest::newRow("last pixel of the top left corner") << QPoint(114, 214) << FrameZone::topLeft;
    QTest::newRow("right of that corner") << QPoint(115, 214) << FrameZone::top;
    QTest::newRow("below that corner") << QPoint(114, 215) << FrameZone::left;
    QTest::newRow("inside that corner") << QPoint(115, 215) << FrameZone::none;
    QTest::newRow("left of the top right corner") << QPoint(484, 214) << FrameZone::top;
    QTest::newRow("first column of the top right corner") << QPoint(485, 214) << FrameZone::topRight;
    QTest::newRow("top right pixel") << QPoint(499, 200) << FrameZone::topRight;
    QTest::newRow("below the top right corner") << QPoint(499, 215) << FrameZone::right;
    QTest::newRow("above the bottom left corner") << QPoint(100, 484) << FrameZone::left;
    QTest::newRow("first row of the bottom left corner") << QPoint(114, 485) << FrameZone::bottomLeft;
    QTest::newRow("bottom left pixel") << QPoint(100, 499) << FrameZone::bottomLeft;
    QTest::newRow("right of the bottom left corner") << QPoint(115, 499) << FrameZone::bottom;
    QTest::newRow("last row of the top edge") << QPoint(300, 214) << FrameZone::top;
    QTest::newRow("below the top edge") << QPoint(300, 215) << FrameZone::none;
    QTest::newRow("last column of the left edge") << QPoint(114, 350) << FrameZone::left;
    QTest::newRow("right of the left edge") << QPoint(115, 350) << FrameZone::none;
    QTest::newRow("left of the right edge") << QPoint(484, 350) << FrameZone::none;
    QTest::newRow("first column of the right edge") << QPoint(485, 350) << FrameZone::right;
    QTest::newRow("last column of the right edge") << QPoint(499, 350) << FrameZone::right;
    QTest::newRow("above the bottom edge") << QPoint(300, 484) << FrameZone::none;
    QTest::newRow("first row of the bottom edge") << QPoint(300, 485) << FrameZone::bottom;
    QTest::newRow("last row of the bottom edge") << QPoint(300, 499) << FrameZone::bottom;
    QTest::newRow("the bottom right corner is the right edge's") << QPoint(499, 499) << FrameZone::right;
    QTest::newRow("so is its first pixel") << QPoint(485, 485) << FrameZone::right;
    QTest::newRow("left of that corner") << QPoint(484, 485) << FrameZone::bottom;
    QTest::newRow("middle") << QPoint(300, 350) << FrameZone::none;
    QTest::newRow("left of the window") << QPoint(99, 350) << FrameZone::none;
    QTest::newRow("right of the window") << QPoint(500, 350) << FrameZone::none;
    QTest::newRow("above the window") << QPoint(300, 199) << FrameZone::none;
    QTest::newRow("below the window") << QPoint(300, 500) << FrameZone::none;
}

void TestFrameGeometry::zones()
{
    QFETCH(QPoint, position);
    QFETCH(FrameZone, zone);
    QCOMPARE(zoneAt(position, window, border), zone);
    const QPoint elsewhere(-3000, -500);
    QCOMPARE(zoneAt(position + elsewhere, window.translated(elsewhere), border), zone);
}

void TestFrameGeometry::zonesOfASmallWindow()
{
    const QRect small(0, 0, 20, 20); // the zones overlap: the first one counts
    QCOMPARE(zoneAt(QPoint(10, 10), small, border), FrameZone::topLeft);
    QCOMPARE(zoneAt(QPoint(17, 10), small, border), FrameZone::topRight);
    QCOMPARE(zoneAt(QPoint(10, 17), small, border), FrameZone::bottomLeft);
    QCOMPARE(zoneAt(QPoint(17, 17), small, border), FrameZone::right);
    QCOMPARE(zoneAt(QPoint(0, 0), QRect(), border), FrameZone::none);
}

void TestFrameGeometry::cursorsAndEdges_data()
{
    QTest::addColumn<FrameZone>("zone");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<Qt::Edges>("edges");
    QTest::newRow("top left") << FrameZone::topLeft << int(Qt::SizeFDiagCursor) << (Qt::TopEdge | Qt::LeftEdge);
    QTest::newRow("top right") << FrameZone::topRight << int(Qt::SizeBDiagCursor) << (Qt::TopEdge | Qt::RightEdge);
    QTest::newRow("bottom left") << FrameZone::bottomLeft << int(Qt::SizeBDiagCursor)
                                 << (Qt::BottomEdge | Qt::LeftEdge);
    QTest::newRow("top") << FrameZone::top << int(Qt::SizeVerCursor) << Qt::Edges(Qt::TopEdge);
    QTest::newRow("left") << FrameZone::left << int(Qt::SizeHorCursor) << Qt::Edges(Qt::LeftEdge);
    QTest::newRow("right") << FrameZone::right << int(Qt::SizeHorCursor) << Qt::Edges(Qt::RightEdge);
    QTest::newRow("bottom") << FrameZone::bottom << int(Qt::SizeVerCursor) << Qt::Edges(Qt::BottomEdge);
    QTest::newRow("none") << FrameZone::none << int(Qt::ArrowCursor) << Qt::Edges();
}

void TestFrameGeometry::cursorsAndEdges()
{
    QFETCH(FrameZone, zone);
    QFETCH(Qt::Edges, edges);
    QTEST(int(cursorOf(zone)), "cursor");
    QCOMPARE(int(edgesOf(zone)), int(edges));
}

void TestFrameGeometry::drags_data()
{
    QTest::addColumn<Qt::Edges>("edges");
    QTest::addColumn<QRect>("start");
    QTest::addColumn<QPoint>("mouse");
    QTest::addColumn<QRect>("expected");
    const Qt::Edges topLeft = Qt::TopEdge | Qt::LeftEdge;
    const Qt::Edges topRight = Qt::TopEdge | Qt::RightEdge;
    const Qt::Edges bottomLeft = Qt::BottomEdge | Qt::LeftEdge;
    const Qt::Edges top = Qt::TopEdge;
    const Qt::Edges left = Qt::LeftEdge;
    const Qt::Edges right = Qt::RightEdge;
    const Qt::Edges bottom = Qt::BottomEdge;

    QTest::newRow("top left outwards") << topLeft << window << QPoint(80, 150) << QRect(80, 150, 420, 350);
    QTest::newRow("top left inwards") << topLeft << window << QPoint(150, 260) << QRect(150, 260, 350, 240);
    QTest::newRow("top left, first place") << topLeft << window << QPoint(1, 1) << QRect(1, 1, 499, 499);
    QTest::newRow("top left, before the first column") << topLeft << window << QPoint(0, 1) << unchanged;
    QTest::newRow("top left, before the first row") << topLeft << window << QPoint(1, 0) << unchanged;
    QTest::newRow("top left, far down is allowed")
        << topLeft << large << QPoint(1900, 1079) << QRect(1900, 1079, 2200, 2121);
    QTest::newRow("top left, on the last pixel") << topLeft << window << QPoint(499, 499) << QRect(499, 499, 1, 1);
    QTest::newRow("top left, past the right edge") << topLeft << window << QPoint(500, 300) << unchanged;
    QTest::newRow("top left, past the bottom edge") << topLeft << window << QPoint(300, 500) << unchanged;

    QTest::newRow("top right outwards") << topRight << window << QPoint(560, 150) << QRect(100, 150, 460, 350);
    QTest::newRow("top right, narrowest") << topRight << window << QPoint(101, 250) << QRect(100, 250, 1, 250);
    QTest::newRow("top right, without a width") << topRight << window << QPoint(100, 250) << unchanged;
    QTest::newRow("top right, first row") << topRight << window << QPoint(450, 1) << QRect(100, 1, 350, 499);
    QTest::newRow("top right, before the first row") << topRight << window << QPoint(450, 0) << unchanged;
    QTest::newRow("top right, last row") << topRight << large << QPoint(450, 1029) << QRect(100, 1029, 350, 2171);
    QTest::newRow("top right, past the last row") << topRight << large << QPoint(450, 1030) << unchanged;
    QTest::newRow("top right, past the bottom edge") << topRight << window << QPoint(450, 500) << unchanged;

    QTest::newRow("top outwards") << top << window << QPoint(777, 150) << QRect(100, 150, 400, 350);
    QTest::newRow("top, first row") << top << window << QPoint(300, 1) << QRect(100, 1, 400, 499);
    QTest::newRow("top, before the first row") << top << window << QPoint(300, 0) << unchanged;
    QTest::newRow("top, last row") << top << large << QPoint(300, 1029) << QRect(100, 1029, 4000, 2171);
    QTest::newRow("top, within 50 px of the end") << top << large << QPoint(300, 1030) << unchanged;
    QTest::newRow("top, on the bottom edge") << top << window << QPoint(300, 499) << QRect(100, 499, 400, 1);
    QTest::newRow("top, past the bottom edge") << top << window << QPoint(300, 500) << unchanged;

    QTest::newRow("left outwards") << left << window << QPoint(60, 777) << QRect(60, 200, 440, 300);
    QTest::newRow("left, first column") << left << window << QPoint(1, 300) << QRect(1, 200, 499, 300);
    QTest::newRow("left, before the first column") << left << window << QPoint(0, 300) << unchanged;
    QTest::newRow("left, last column") << left << large << QPoint(1869, 300) << QRect(1869, 200, 2231, 3000);
    QTest::newRow("left, within 50 px of the end") << left << large << QPoint(1870, 300) << unchanged;
    QTest::newRow("left, on the right edge") << left << window << QPoint(499, 300) << QRect(499, 200, 1, 300);
    QTest::newRow("left, past the right edge") << left << window << QPoint(500, 300) << unchanged;

    QTest::newRow("right outwards") << right << window << QPoint(900, 777) << QRect(100, 200, 800, 300);
    QTest::newRow("right, past the end of the desktop")
        << right << window << QPoint(2500, 300) << QRect(100, 200, 2400, 300);
    QTest::newRow("right, narrowest") << right << window << QPoint(101, 300) << QRect(100, 200, 1, 300);
    QTest::newRow("right, without a width") << right << window << QPoint(100, 300) << unchanged;

    QTest::newRow("bottom left outwards") << bottomLeft << window << QPoint(70, 650) << QRect(70, 200, 430, 450);
    QTest::newRow("bottom left, first column") << bottomLeft << window << QPoint(1, 400) << QRect(1, 200, 499, 200);
    QTest::newRow("bottom left, before the first column") << bottomLeft << window << QPoint(0, 400) << unchanged;
    QTest::newRow("bottom left, lowest") << bottomLeft << window << QPoint(70, 201) << QRect(70, 200, 430, 1);
    QTest::newRow("bottom left, without a height") << bottomLeft << window << QPoint(70, 200) << unchanged;
    QTest::newRow("bottom left, past the right edge") << bottomLeft << window << QPoint(500, 400) << unchanged;
    QTest::newRow("bottom left, far right is allowed")
        << bottomLeft << large << QPoint(1900, 400) << QRect(1900, 200, 2200, 200);

    QTest::newRow("bottom outwards") << bottom << window << QPoint(777, 900) << QRect(100, 200, 400, 700);
    QTest::newRow("bottom, lowest") << bottom << window << QPoint(300, 201) << QRect(100, 200, 400, 1);
    QTest::newRow("bottom, without a height") << bottom << window << QPoint(300, 200) << unchanged;
    QTest::newRow("bottom, past the end of the desktop")
        << bottom << window << QPoint(300, 2000) << QRect(100, 200, 400, 1800);
}

void TestFrameGeometry::drags()
{
    QFETCH(Qt::Edges, edges);
    QFETCH(QRect, start);
    QFETCH(QPoint, mouse);
    QTEST(result(edges, mouse, start), "expected");
}

void TestFrameGeometry::nothingDragged()
{
    QVERIFY(!draggedGeometry({}, window, QPoint(300, 300), desktop, anySize));
    QVERIFY(!draggedGeometry(Qt::BottomEdge | Qt::RightEdge, window, QPoint(600, 600), desktop, anySize));
}

void TestFrameGeometry::leastSize_data()
{
    QTest::addColumn<Qt::Edges>("edges");
    QTest::addColumn<QPoint>("lastAllowed");
    QTest::addColumn<QPoint>("refused");
    // At least 250 x 120: the last column is 499 and the last row 499.
    QTest::newRow("left") << Qt::Edges(Qt::LeftEdge) << QPoint(250, 300) << QPoint(251, 300);
    QTest::newRow("right") << Qt::Edges(Qt::RightEdge) << QPoint(350, 300) << QPoint(349, 300);
    QTest::newRow("top") << Qt::Edges(Qt::TopEdge) << QPoint(300, 380) << QPoint(300, 381);
    QTest::newRow("bottom") << Qt::Edges(Qt::BottomEdge) << QPoint(300, 320) << QPoint(300, 319);
    QTest::newRow("top left, width") << (Qt::TopEdge | Qt::LeftEdge) << QPoint(250, 380) << QPoint(251, 380);
    QTest::newRow("top left, height") << (Qt::TopEdge | Qt::LeftEdge) << QPoint(250, 380) << QPoint(250, 381);
    QTest::newRow("top right, width") << (Qt::TopEdge | Qt::RightEdge) << QPoint(350, 380) << QPoint(349, 380);
    QTest::newRow("top right, height") << (Qt::TopEdge | Qt::RightEdge) << QPoint(350, 380) << QPoint(350, 381);
    QTest::newRow("bottom left, width") << (Qt::BottomEdge | Qt::LeftEdge) << QPoint(250, 320) << QPoint(251, 320);
    QTest::newRow("bottom left, height") << (Qt::BottomEdge | Qt::LeftEdge) << QPoint(250, 320) << QPoint(250, 319);
}

void TestFrameGeometry::leastSize()
{
    QFETCH(Qt::Edges, edges);
    QFETCH(QPoint, lastAllowed);
    QFETCH(QPoint, refused);
    const QSize least(250, 120);
    const QRect allowed = result(edges, lastAllowed, window, least);
    QVERIFY(allowed.isValid());
    QVERIFY(allowed.width() == least.width() || allowed.height() == least.height());
    QCOMPARE(result(edges, refused, window, least), unchanged);
}

void TestFrameGeometry::maximum_data()
{
    QTest::addColumn<QRect>("screen");
    QTest::addColumn<QRect>("expected");
    QTest::newRow("2560 x 1440") << QRect(0, 0, 2560, 1440) << QRect(320, 180, 1920, 1080);
    QTest::newRow("to the right of another screen") << QRect(1920, -200, 2560, 1440) << QRect(2240, -20, 1920, 1080);
    QTest::newRow("3840 x 2160") << QRect(0, 0, 3840, 2160) << QRect(960, 540, 1920, 1080);
    QTest::newRow("a pixel more") << QRect(0, 0, 1921, 1081) << QRect(0, 0, 1920, 1080);
    QTest::newRow("as large") << QRect(0, 0, 1920, 1080) << QRect();
    QTest::newRow("only wider") << QRect(0, 0, 2560, 1080) << QRect();
    QTest::newRow("only taller") << QRect(0, 0, 1920, 1200) << QRect();
    QTest::newRow("smaller") << QRect(0, 0, 1366, 768) << QRect();
    QTest::newRow("none") << QRect() << QRect();
}

void TestFrameGeometry::maximum()
{
    QFETCH(QRect, screen);
    QTEST(centredMaximum(screen).value_or(QRect()), "expected");
}

void TestFrameGeometry::windowSystems_data()
{
    QTest::addColumn<QString>("platform");
    QTest::addColumn<bool>("byTheSystem");
    QTest::newRow("Wayland") << QStringLiteral("wayland") << true;
    QTest::newRow("Wayland with EGL") << QStringLiteral("wayland-egl") << true;
    QTest::newRow("X") << QStringLiteral("xcb") << false;
    QTest::newRow("Windows") << QStringLiteral("windows") << false;
    QTest::newRow("none") << QStringLiteral("offscreen") << false;
}

void TestFrameGeometry::windowSystems()
{
    QFETCH(QString, platform);
    QFETCH(bool, byTheSystem);
    const WindowSystem system = WindowSystem::of(platform);
    QCOMPARE(static_cast<bool>(system.startMove), byTheSystem);
    QCOMPARE(static_cast<bool>(system.startResize), byTheSystem);
    QCOMPARE(system.placesOwnWindows, !byTheSystem);
    QVERIFY(system.pointerScreen().isValid());
    QVERIFY(!system.desktop().isEmpty());
}

QTEST_MAIN(TestFrameGeometry)
#include "tst_framegeometry.moc"
