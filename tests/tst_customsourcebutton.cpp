#include "mainwindow/customsourcebutton.h"
#include "tests/support/testbase.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

const QColor purple(153, 0, 255);

QImage pictureOf(CustomSourceButton &button)
{
    button.resize(35, 25);
    QImage image(button.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    button.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

} // namespace

class TestCustomSourceButton final : public TestBase {
    Q_OBJECT

private slots:
    void isSetUpForItsSeries();
    void eachReleaseToggles();
    void releaseOutsideTogglesToo();
    void spaceToggles();
    void labelIsTextToo();
    void painting_data();
    void painting();
};

void TestCustomSourceButton::isSetUpForItsSeries()
{
    expectWarning(QStringLiteral("Could not parse stylesheet"));
    CustomSourceButton button(nullptr, 2, purple);
    QVERIFY(button.isShown());
    QCOMPARE(button.text(), QStringLiteral("3"));
    QCOMPARE(button.objectName(), QStringLiteral("con2"));
    QCOMPARE(button.styleSheet(), QStringLiteral("#con2{background-color:transparent;border:none;}"
                                                 "#con2:hover{background-color:##4a504a5c;}"
                                                 "#con2:pressed{background-color:#4f5e4f5c;}"));
    QCOMPARE(button.minimumWidth(), 35);
    QCOMPARE(button.maximumWidth(), 35);
}

void TestCustomSourceButton::eachReleaseToggles()
{
    expectWarning(QStringLiteral("Could not parse stylesheet"));
    CustomSourceButton button(nullptr, 0, purple);
    QSignalSpy changes(&button, &CustomSourceButton::stateChanged);
    QTest::mouseClick(&button, Qt::LeftButton);
    QCOMPARE(changes.takeFirst().constFirst().toBool(), false);
    QTest::mouseClick(&button, Qt::RightButton);
    QCOMPARE(changes.takeFirst().constFirst().toBool(), true);
    QVERIFY(changes.isEmpty());
}

void TestCustomSourceButton::releaseOutsideTogglesToo()
{
    expectWarning(QStringLiteral("Could not parse stylesheet"));
    CustomSourceButton button(nullptr, 0, purple);
    QSignalSpy changes(&button, &CustomSourceButton::stateChanged);
    QTest::mousePress(&button, Qt::LeftButton, {}, QPoint(5, 5));
    QVERIFY(changes.isEmpty());
    QTest::mouseRelease(&button, Qt::LeftButton, {}, QPoint(200, 200));
    QCOMPARE(changes.size(), 1);
    QVERIFY(!button.isShown());
}

void TestCustomSourceButton::spaceToggles()
{
    expectWarning(QStringLiteral("Could not parse stylesheet"));
    CustomSourceButton button(nullptr, 0, purple);
    QSignalSpy changes(&button, &CustomSourceButton::stateChanged);
    QTest::keyClick(&button, Qt::Key_Space);
    QCOMPARE(changes.size(), 1);
    QVERIFY(!button.isShown());
}

void TestCustomSourceButton::labelIsTextToo()
{
    expectWarning(QStringLiteral("Could not parse stylesheet"));
    CustomSourceButton button(nullptr, 0, purple);
    button.setLabel(QStringLiteral("7"));
    QCOMPARE(button.text(), QStringLiteral("7"));
    QVERIFY(button.accessibleName().contains(QLatin1Char('7')));
}

void TestCustomSourceButton::painting_data()
{
    QTest::addColumn<bool>("shown");
    QTest::addColumn<QColor>("outline");
    QTest::addColumn<int>("fillAlpha");
    QTest::newRow("shown: the series' colour") << true << purple << 120;
    QTest::newRow("hidden: grey") << false << QColor(120, 120, 120) << 255;
}

void TestCustomSourceButton::painting()
{
    QFETCH(bool, shown);
    QFETCH(QColor, outline);
    QFETCH(int, fillAlpha);
    expectWarning(QStringLiteral("Could not parse stylesheet"));
    CustomSourceButton button(nullptr, 0, purple);
    button.setLabel(QString());
    if (!shown)
        QTest::mouseClick(&button, Qt::LeftButton);
    const QImage image = pictureOf(button);

    // A circle of 17 in a button of 35 x 25, four pixels from the top.
    const QColor left = image.pixelColor(9, 12);
    QCOMPARE(left, outline);
    const QColor middle = image.pixelColor(13, 12);
    QCOMPARE(middle.alpha(), fillAlpha);
    QVERIFY(qAbs(middle.red() - outline.red()) <= 3 && qAbs(middle.blue() - outline.blue()) <= 3);
    QCOMPARE(image.pixelColor(17, 1).alpha(), 0);
    QCOMPARE(image.pixelColor(2, 12).alpha(), 0);

    button.setLabel(QStringLiteral("8"));
    const QImage labelled = pictureOf(button);
    int bright = 0;
    for (int y = 4; y < 21; ++y) {
        for (int x = 10; x < 25; ++x)
            bright += labelled.pixelColor(x, y).lightness() > 200 ? 1 : 0;
    }
    QVERIFY2(bright >= 4, qPrintable(QString::number(bright)));
}

QTEST_MAIN(TestCustomSourceButton)
#include "tst_customsourcebutton.moc"
