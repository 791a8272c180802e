#include "mainwindow/customheader.h"
#include "resources/vexaresources.h"
#include "tests/support/testbase.h"

#include <QIcon>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QtTest>

namespace {

/// Counts the presses that reach it: those that its children did not want.
class Parent final : public QWidget {
public:
    int presses = 0;

protected:
    void mousePressEvent(QMouseEvent *) override { ++presses; }
};

/// A header of three sections of 30 pixels in a parent.
struct Scene {
    Scene()
    {
        model.setHorizontalHeaderLabels({QString(), QStringLiteral("No"), QStringLiteral("Source Name")});
        header.setModel(&model);
        header.setDefaultSectionSize(30);
        header.setSectionResizeMode(QHeaderView::Fixed);
        header.setSectionsClickable(true); // so that the base class tells of presses
        header.setGeometry(0, 0, 200, CustomHeader::headerHeight);
        parent.resize(200, 100);
        parent.show();
    }

    void press(const QPoint &place) { QTest::mousePress(header.viewport(), Qt::LeftButton, {}, place); }

    Parent parent;
    QStandardItemModel model;
    CustomHeader header{Qt::Horizontal, &parent};
};

QImage picture(const QString &name)
{
    return QIcon(QStringLiteral(":/images/%1.png").arg(name)).pixmap(12, 12).toImage();
}

/// Whether the header shows this picture there: every pixel that is solid in it has about its colour.
bool shows(CustomHeader *header, int left, const QImage &box)
{
    const QImage shown = header->grab().toImage().copy(QRect(left, 10, 12, 12));
    int solid = 0;
    int different = 0;
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 12; ++x) {
            const QColor wanted = box.pixelColor(x, y);
            if (wanted.alpha() < 200)
                continue;
            ++solid;
            const QColor there = shown.pixelColor(x, y);
            const int distance = qAbs(there.red() - wanted.red()) + qAbs(there.green() - wanted.green())
                                 + qAbs(there.blue() - wanted.blue());
            different += distance > 90 ? 1 : 0;
        }
    }
    return solid >= 8 && different == 0;
}

} // namespace

class TestCustomHeader final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initVexaResources();
        QVERIFY(!picture(QStringLiteral("selected")).isNull());
        QVERIFY(picture(QStringLiteral("selected")) != picture(QStringLiteral("unselected")));
    }

    void startsUnchecked()
    {
        const Scene scene;
        QVERIFY(!scene.header.isAllChecked());
        QCOMPARE(scene.header.height(), 32);
    }

    void press_data()
    {
        QTest::addColumn<QPoint>("place");
        QTest::addColumn<bool>("onBox");
        QTest::newRow("middle of the box") << QPoint(11, 16) << true;
        QTest::newRow("its first pixel") << QPoint(5, 10) << true;
        QTest::newRow("its last pixel") << QPoint(16, 21) << true;
        QTest::newRow("left of it") << QPoint(4, 16) << false;
        QTest::newRow("right of it") << QPoint(17, 16) << false;
        QTest::newRow("above it") << QPoint(11, 9) << false;
        QTest::newRow("below it") << QPoint(11, 22) << false;
        QTest::newRow("another section") << QPoint(45, 16) << false;
    }

    void press()
    {
        QFETCH(QPoint, place);
        QFETCH(bool, onBox);
        Scene scene;
        const QSignalSpy changes(&scene.header, &CustomHeader::changed);
        const QSignalSpy basePresses(&scene.header, &QHeaderView::sectionPressed);
        scene.press(place);
        QCOMPARE(scene.header.isAllChecked(), onBox);
        QCOMPARE(changes.count(), onBox ? 1 : 0);
        QCOMPARE(basePresses.count(), onBox ? 1 : 0);
        QCOMPARE(scene.parent.presses, 0);
        scene.press(place);
        QVERIFY(!scene.header.isAllChecked());
        QCOMPARE(changes.count(), onBox ? 2 : 0);
        if (onBox) {
            QCOMPARE(changes.at(0), QVariantList{true});
            QCOMPARE(changes.at(1), QVariantList{false});
        }
    }

    void markIsSetBeforeTheSignal()
    {
        Scene scene;
        bool seen = false;
        connect(&scene.header, &CustomHeader::changed, &scene.header, [&] { seen = scene.header.isAllChecked(); });
        scene.press({6, 11});
        QVERIFY(seen);
    }

    void setAllCheckedIsSilent()
    {
        Scene scene;
        const QSignalSpy changes(&scene.header, &CustomHeader::changed);
        scene.header.setAllChecked(true);
        QVERIFY(scene.header.isAllChecked());
        QCOMPARE(changes.count(), 0);
        scene.header.toggle();
        QVERIFY(!scene.header.isAllChecked());
        QCOMPARE(changes.count(), 1);
    }

    void drawsTheBoxInTheFirstSectionOnly()
    {
        Scene scene;
        const QImage checked = picture(QStringLiteral("selected"));
        const QImage unchecked = picture(QStringLiteral("unselected"));
        QVERIFY(shows(&scene.header, 5, unchecked));
        QVERIFY(!shows(&scene.header, 5, checked));
        scene.header.setAllChecked(true);
        QVERIFY(shows(&scene.header, 5, checked));
        for (const QImage &box : {checked, unchecked}) {
            QVERIFY(!shows(&scene.header, 35, box));
            QVERIFY(!shows(&scene.header, 65, box));
        }
    }
};

QTEST_MAIN(TestCustomHeader)
#include "tst_customheader.moc"
