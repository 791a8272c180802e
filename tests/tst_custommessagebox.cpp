#include "tests/support/testbase.h"
#include "widgets/custommessagebox.h"

#include <QGuiApplication>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QToolButton>
#include <QtTest>

#include <functional>

namespace {

QLabel *labelOf(const QDialog &box, const char *name)
{
    return box.findChild<QLabel *>(QLatin1String(name));
}

QAbstractButton *buttonOf(const QDialog &box, const char *name)
{
    return box.findChild<QAbstractButton *>(QLatin1String(name));
}

QString words(int count)
{
    return QStringLiteral("several words ").repeated(count).trimmed();
}

/// Runs the box, does something to it once it is there, and returns how it ended.
int resultOf(CustomMessageBox &box, const std::function<void()> &action)
{
    QTimer::singleShot(0, &box, action);
    return box.exec();
}

QPoint middleOf(const QWidget &window)
{
    return window.geometry().center();
}

/// Centres of rectangles with odd and even sides are half a pixel apart.
bool isNear(const QPoint &left, const QPoint &right)
{
    return (left - right).manhattanLength() <= 2;
}

} // namespace

class TestCustomMessageBox final : public TestBase {
    Q_OBJECT

private slots:
    void position_data();
    void position();
    void width_data();
    void width();
    void isMadeAsDescribed();
    void textsGoToTheirLabels();
    void emptyTextsTakeNoRoom();
    void errorStyle();
    void keys_data();
    void keys();
    void mouse_data();
    void mouse();
    void tabGoesRound();
    void theFocusIsSeen_data();
    void theFocusIsSeen();
    void standsInTheMiddleOfItsParent();
    void standsInTheMiddleOfTheScreen();
    void staysOnTheScreen();
    void longTextsWrap();
    void fitsItselfToANewText();
    void textsAreNotMarkup();
    void canBeReadOut();
    void colours();
    void parentsStyleDoesNotShineThrough();
};

void TestCustomMessageBox::position_data()
{
    const QRect screen(0, 0, 1000, 800);
    QTest::addColumn<QSize>("window");
    QTest::addColumn<QRect>("anchor");
    QTest::addColumn<QRect>("screen");
    QTest::addColumn<QPoint>("expected");
    QTest::newRow("in the middle of the screen") << QSize(400, 200) << screen << screen << QPoint(300, 300);
    QTest::newRow("in the middle of a window")
        << QSize(400, 200) << QRect(100, 50, 600, 400) << screen << QPoint(200, 150);
    QTest::newRow("on the second screen")
        << QSize(400, 200) << QRect(1000, 0, 1000, 800) << QRect(1000, 0, 1000, 800) << QPoint(1300, 300);
    QTest::newRow("larger than its parent")
        << QSize(400, 200) << QRect(450, 390, 100, 20) << screen << QPoint(300, 300);
    QTest::newRow("just at the left edge") << QSize(400, 200) << QRect(0, 300, 400, 200) << screen << QPoint(0, 300);
    QTest::newRow("not beyond the left") << QSize(400, 200) << QRect(-2, 300, 400, 200) << screen << QPoint(0, 300);
    QTest::newRow("not beyond the top") << QSize(400, 200) << QRect(300, -2, 400, 200) << screen << QPoint(300, 0);
    QTest::newRow("just at the right edge")
        << QSize(400, 200) << QRect(600, 300, 400, 200) << screen << QPoint(600, 300);
    QTest::newRow("not beyond the right") << QSize(400, 200) << QRect(602, 300, 400, 200) << screen << QPoint(600, 300);
    QTest::newRow("not beyond the bottom")
        << QSize(400, 200) << QRect(300, 602, 400, 200) << screen << QPoint(300, 600);
    QTest::newRow("larger than the screen") << QSize(1200, 900) << screen << screen << QPoint(0, 0);
    QTest::newRow("a bar at the top of the screen")
        << QSize(400, 900) << screen << QRect(0, 30, 1000, 770) << QPoint(300, 30);
}

void TestCustomMessageBox::position()
{
    QFETCH(QSize, window);
    QFETCH(QRect, anchor);
    QFETCH(QRect, screen);
    QTEST(centeredPosition(window, anchor, screen), "expected");
}

void TestCustomMessageBox::width_data()
{
    QTest::addColumn<int>("textWidth");
    QTest::addColumn<int>("wordWidth");
    QTest::addColumn<int>("screenWidth");
    QTest::addColumn<int>("expected");
    QTest::newRow("nothing") << 0 << 0 << 1000 << 400;
    QTest::newRow("short") << 344 << 100 << 1000 << 400;
    QTest::newRow("a little longer") << 345 << 100 << 1000 << 401;
    QTest::newRow("the longest single line") << 584 << 100 << 1000 << 640;
    QTest::newRow("two lines of one length") << 720 << 100 << 1000 << 452;
    QTest::newRow("two full lines") << 1168 << 100 << 1000 << 640;
    QTest::newRow("many lines") << 20000 << 100 << 1000 << 640;
    QTest::newRow("a word that just fits") << 20000 << 584 << 1000 << 640;
    QTest::newRow("a longer word") << 20000 << 585 << 1000 << 641;
    QTest::newRow("a word as wide as the screen") << 20000 << 944 << 1000 << 1000;
    QTest::newRow("a word wider than the screen") << 20000 << 945 << 1000 << 1000;
    QTest::newRow("a narrow screen") << 0 << 0 << 320 << 320;
}

void TestCustomMessageBox::width()
{
    QFETCH(int, textWidth);
    QFETCH(int, wordWidth);
    QFETCH(int, screenWidth);
    QTEST(messageBoxWidth(textWidth, wordWidth, screenWidth), "expected");
}

void TestCustomMessageBox::isMadeAsDescribed()
{
    const CustomMessageBox box;
    QVERIFY(box.windowFlags().testFlag(Qt::FramelessWindowHint));
    QCOMPARE(box.windowFlags() & Qt::WindowType_Mask, Qt::WindowFlags(Qt::Dialog));
    QCOMPARE(box.styleSheet(), QStringLiteral("QDialog{\n\tbackground-color: transparent;\n}"));
    const auto *bar = box.findChild<QWidget *>(QStringLiteral("widTitleBar"));
    QVERIFY(bar);
    QCOMPARE(bar->styleSheet(),
             QStringLiteral("QWidget{\n\tbackground-color : #15cfbb;\n\tborder-top-left-radius: 5px; "
                            "border-top-right-radius: 5px;\n}"));
    for (const char *name : {"lblTitle", "btnClose"})
        QVERIFY2(bar->findChild<QWidget *>(QLatin1String(name)), name);
    const auto *body = box.findChild<QWidget *>(QStringLiteral("widBodyWrapper"));
    QVERIFY(body);
    for (const char *name : {"btnMsgLogo", "lblText", "lblText0_1", "lblText1_0", "lblText1_1"})
        QVERIFY2(body->findChild<QWidget *>(QLatin1String(name)), name);
    const auto *bottom = box.findChild<QWidget *>(QStringLiteral("widBottom"));
    QVERIFY(bottom);
    QVERIFY(bottom->findChild<QPushButton *>(QStringLiteral("btnOk")));
    QCOMPARE(buttonOf(box, "btnMsgLogo")->size(), QSize(200, 50));
    QCOMPARE(buttonOf(box, "btnMsgLogo")->iconSize(), QSize(200, 50));
    const QString ok = buttonOf(box, "btnOk")->styleSheet();
    for (const char *part :
         {"background-color: #15cfbb", "color: white", "border-radius: 15px", "600 12pt \"Kumbh Sans\""})
        QVERIFY2(ok.contains(QLatin1String(part)), part);
}

void TestCustomMessageBox::textsGoToTheirLabels()
{
    CustomMessageBox box;
    box.setTitle(QStringLiteral("the title"));
    box.setMessage(QStringLiteral("main"), QStringLiteral("first right"), QStringLiteral("second left"),
                   QStringLiteral("second right"));
    box.setButtonText(QStringLiteral("LOAD FILE"));
    QCOMPARE(labelOf(box, "lblTitle")->text(), QStringLiteral("the title"));
    QCOMPARE(labelOf(box, "lblText")->text(), QStringLiteral("main"));
    QCOMPARE(labelOf(box, "lblText0_1")->text(), QStringLiteral("first right"));
    QCOMPARE(labelOf(box, "lblText1_0")->text(), QStringLiteral("second left"));
    QCOMPARE(labelOf(box, "lblText1_1")->text(), QStringLiteral("second right"));
    QCOMPARE(buttonOf(box, "btnOk")->text(), QStringLiteral("LOAD FILE"));
    box.show();
    const QRect main = labelOf(box, "lblText")->geometry();
    const QRect firstRight = labelOf(box, "lblText0_1")->geometry();
    const QRect secondLeft = labelOf(box, "lblText1_0")->geometry();
    const QRect secondRight = labelOf(box, "lblText1_1")->geometry();
    QVERIFY(main.right() < firstRight.left());
    QVERIFY(secondLeft.right() < secondRight.left());
    QVERIFY(qMax(main.bottom(), firstRight.bottom()) < qMin(secondLeft.top(), secondRight.top()));
}

void TestCustomMessageBox::emptyTextsTakeNoRoom()
{
    CustomMessageBox box;
    box.setMessage(QStringLiteral("main"), QString(), QString(), words(3));
    box.show();
    QVERIFY(labelOf(box, "lblText")->isVisible());
    QVERIFY(!labelOf(box, "lblText0_1")->isVisible());
    QVERIFY(!labelOf(box, "lblText1_0")->isVisible());
    QVERIFY(labelOf(box, "lblText1_1")->isVisible());
    const int middle = box.width() / 2;
    QVERIFY(std::abs(labelOf(box, "lblText")->geometry().center().x() - middle) <= 1);
    QVERIFY(std::abs(labelOf(box, "lblText1_1")->geometry().center().x() - middle) <= 1);
    const int height = box.height();
    box.setMessage(QStringLiteral("main"), QString(), QString(), QString());
    QVERIFY(!labelOf(box, "lblText1_1")->isVisible());
    QVERIFY(box.height() < height);
}

void TestCustomMessageBox::errorStyle()
{
    CustomMessageBox box;
    box.setMessage(QStringLiteral("FAIL"), QString(), QString(), QStringLiteral("This machine is too old."));
    box.setErrorStyle();
    bool looksRight = false;
    const int result = resultOf(box, [&box, &looksRight] {
        const QLabel *main = labelOf(box, "lblText");
        looksRight = main->isVisible() && main->font().pointSize() == 20
                     && main->styleSheet() == QStringLiteral("QLabel { color : red; }")
                     && main->palette().color(QPalette::WindowText) == QColor(Qt::red)
                     && !buttonOf(box, "btnMsgLogo")->isVisible();
        QTest::keyClick(&box, Qt::Key_Return);
    });
    QCOMPARE(result, int(QDialog::Accepted));
    QVERIFY(looksRight);
}

void TestCustomMessageBox::keys_data()
{
    QTest::addColumn<QByteArray>("focus");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("expected");
    QTest::newRow("Return") << QByteArray("btnOk") << int(Qt::Key_Return) << int(QDialog::Accepted);
    QTest::newRow("Enter of the number block") << QByteArray("btnOk") << int(Qt::Key_Enter) << int(QDialog::Accepted);
    QTest::newRow("Space on the button") << QByteArray("btnOk") << int(Qt::Key_Space) << int(QDialog::Accepted);
    QTest::newRow("Escape") << QByteArray("btnOk") << int(Qt::Key_Escape) << int(QDialog::Rejected);
    QTest::newRow("Space on the close button")
        << QByteArray("btnClose") << int(Qt::Key_Space) << int(QDialog::Rejected);
    QTest::newRow("Return on the close button")
        << QByteArray("btnClose") << int(Qt::Key_Return) << int(QDialog::Accepted);
    QTest::newRow("Escape on the close button")
        << QByteArray("btnClose") << int(Qt::Key_Escape) << int(QDialog::Rejected);
}

void TestCustomMessageBox::keys()
{
    QFETCH(QByteArray, focus);
    QFETCH(int, key);
    CustomMessageBox box;
    const int result = resultOf(box, [&box, &focus, key] {
        QAbstractButton *button = buttonOf(box, focus.constData());
        button->setFocus();
        QTest::keyClick(button, Qt::Key(key));
    });
    QTEST(result, "expected");
}

void TestCustomMessageBox::mouse_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<int>("expected");
    QTest::newRow("the button") << QByteArray("btnOk") << int(QDialog::Accepted);
    QTest::newRow("the close button") << QByteArray("btnClose") << int(QDialog::Rejected);
}

void TestCustomMessageBox::mouse()
{
    QFETCH(QByteArray, button);
    CustomMessageBox box;
    bool waitsForTheRelease = false;
    const int result = resultOf(box, [&box, &button, &waitsForTheRelease] {
        QTest::mouseClick(buttonOf(box, "btnMsgLogo"), Qt::LeftButton); // a picture does nothing
        QTest::mousePress(buttonOf(box, button.constData()), Qt::LeftButton);
        waitsForTheRelease = box.isVisible();
        QTest::mouseRelease(buttonOf(box, button.constData()), Qt::LeftButton);
    });
    QVERIFY(waitsForTheRelease);
    QTEST(result, "expected");
}

void TestCustomMessageBox::tabGoesRound()
{
    CustomMessageBox box;
    box.show();
    box.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&box));
    QCOMPARE(box.focusWidget(), buttonOf(box, "btnOk"));
    QTest::keyClick(box.focusWidget(), Qt::Key_Tab);
    QCOMPARE(box.focusWidget(), buttonOf(box, "btnClose"));
    QTest::keyClick(box.focusWidget(), Qt::Key_Tab);
    QCOMPARE(box.focusWidget(), buttonOf(box, "btnOk"));
}

void TestCustomMessageBox::theFocusIsSeen_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::newRow("the button") << QByteArray("btnOk");
    QTest::newRow("the close button") << QByteArray("btnClose");
}

void TestCustomMessageBox::theFocusIsSeen()
{
    QFETCH(QByteArray, button);
    CustomMessageBox box;
    box.show();
    box.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&box));
    QAbstractButton *watched = buttonOf(box, button.constData());
    const auto borderColor = [watched] {
        const QImage image = watched->grab().toImage();
        return image.pixelColor(image.width() / 2, 0); // of the upper border
    };
    watched->setFocus();
    QCOMPARE(borderColor(), QColor(Qt::white));
    watched->clearFocus();
    QVERIFY(borderColor() != QColor(Qt::white));
}

void TestCustomMessageBox::standsInTheMiddleOfItsParent()
{
    QWidget parent;
    parent.setGeometry(40, 30, 700, 500);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    auto *child = new QWidget(&parent); // the window counts, not the part of it
    child->setGeometry(0, 0, 10, 10);
    CustomMessageBox box(child);
    box.setMessage(QStringLiteral("main"), QString(), QString(), words(2));
    box.show();
    QVERIFY(isNear(middleOf(box), parent.frameGeometry().center()));
    box.hide();
    parent.move(90, 60);
    QTRY_COMPARE(parent.pos(), QPoint(90, 60));
    box.show(); // each time anew
    QVERIFY(isNear(middleOf(box), parent.frameGeometry().center()));
}

void TestCustomMessageBox::standsInTheMiddleOfTheScreen()
{
    const QPoint middle = QGuiApplication::primaryScreen()->availableGeometry().center();
    CustomMessageBox box;
    box.setMessage(QStringLiteral("main"), QString(), QString(), words(2));
    box.show();
    QVERIFY(isNear(middleOf(box), middle));
    QWidget hidden;
    hidden.setGeometry(0, 0, 50, 50);
    CustomMessageBox second(&hidden);
    second.show();
    QVERIFY(isNear(middleOf(second), middle));
}

void TestCustomMessageBox::staysOnTheScreen()
{
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    QWidget parent;
    parent.setGeometry(0, 0, 60, 40);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    CustomMessageBox box(&parent);
    box.setMessage(words(3), QString(), QString(), words(3000));
    box.show();
    QVERIFY(room.contains(box.geometry()));
    QVERIFY(box.rect().contains(QRect(buttonOf(box, "btnOk")->mapTo(&box, QPoint()), buttonOf(box, "btnOk")->size())));
}

void TestCustomMessageBox::longTextsWrap()
{
    CustomMessageBox box;
    box.setMessage(words(8), QString(), words(20), words(20));
    box.show();
    QVERIFY(box.width() <= 640);
    for (const char *name : {"lblText", "lblText1_0", "lblText1_1"}) {
        const QLabel *label = labelOf(box, name);
        QVERIFY2(label->height() >= label->heightForWidth(label->width()), name);
        QVERIFY2(2 * label->height() > 3 * label->fontMetrics().height(), name); // more than one line
    }
}

void TestCustomMessageBox::fitsItselfToANewText()
{
    CustomMessageBox box;
    box.setMessage(QStringLiteral("main"), QString(), QString(), words(1));
    box.show();
    const QSize before = box.size();
    box.setMessage(QStringLiteral("main"), QString(), QString(), words(40));
    QVERIFY(box.height() > before.height());
    QVERIFY(isNear(middleOf(box), QGuiApplication::primaryScreen()->availableGeometry().center()));
    box.setMessage(QStringLiteral("main"), QString(), QString(), words(1));
    QCOMPARE(box.size(), before);
    box.setErrorStyle();
    QVERIFY(box.height() < before.height()); // the logo has gone
}

void TestCustomMessageBox::textsAreNotMarkup()
{
    CustomMessageBox box;
    box.setTitle(QStringLiteral("<h1>title</h1>"));
    const QString text = QStringLiteral("<b>bold</b>");
    box.setMessage(text, text, text, text);
    for (const char *name : {"lblTitle", "lblText", "lblText0_1", "lblText1_0", "lblText1_1"})
        QCOMPARE(labelOf(box, name)->textFormat(), Qt::PlainText);
}

void TestCustomMessageBox::canBeReadOut()
{
    CustomMessageBox box;
    box.setTitle(QStringLiteral("FAIL"));
    box.setMessage(QStringLiteral("main"), QString(), QString(), QStringLiteral("what is wrong"));
    QCOMPARE(box.windowTitle(), QStringLiteral("FAIL"));
    QCOMPARE(box.accessibleDescription(), QStringLiteral("main\nwhat is wrong"));
    QCOMPARE(buttonOf(box, "btnClose")->accessibleName(), QStringLiteral("Close"));
    QCOMPARE(buttonOf(box, "btnOk")->text(), QStringLiteral("OK"));
    QVERIFY(!buttonOf(box, "btnMsgLogo")->accessibleName().isEmpty());
}

void TestCustomMessageBox::colours()
{
    CustomMessageBox box;
    box.setMessage(QStringLiteral("main"), QString(), QString(), words(1));
    box.show();
    const QImage image = box.grab().toImage();
    const int right = image.width() - 1;
    const int bottom = image.height() - 1;
    QCOMPARE(image.pixelColor(image.width() / 2, 3), QColor(0x15, 0xcf, 0xbb));
    QCOMPARE(image.pixelColor(6, image.height() / 2), QColor(0x20, 0x20, 0x20));
    QCOMPARE(image.pixelColor(image.width() / 2, bottom - 3), QColor(0x20, 0x20, 0x20));
    for (const QPoint &corner : {QPoint(0, 0), QPoint(right, 0), QPoint(0, bottom), QPoint(right, bottom)})
        QVERIFY(image.pixelColor(corner).alpha() < 128); // they are rounded
}

void TestCustomMessageBox::parentsStyleDoesNotShineThrough()
{
    QWidget parent;
    parent.setStyleSheet(QStringLiteral("background-color: #ff00ff; color: #ff00ff;"));
    CustomMessageBox box(&parent);
    box.setTitle(QStringLiteral("title"));
    box.setMessage(QStringLiteral("main"), words(1), words(2), words(2));
    box.show();
    const QImage image = box.grab().toImage();
    int foreign = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            foreign += image.pixelColor(x, y) == QColor(0xff, 0, 0xff) ? 1 : 0;
    }
    QCOMPARE(foreign, 0);
}

QTEST_MAIN(TestCustomMessageBox)

#include "tst_custommessagebox.moc"
