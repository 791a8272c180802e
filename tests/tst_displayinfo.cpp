#include "probes/displayinfo.h"
#include "tests/support/testbase.h"

#include <QtTest>

Q_DECLARE_METATYPE(QVector<DisplayDevice>)

class TestDisplayInfo final : public TestBase {
    Q_OBJECT

private slots:
    void modeText();
    void describe_data();
    void describe();
    void oldListsAreReplaced();
};

void TestDisplayInfo::modeText()
{
    QCOMPARE(displayModeText({1920, 1080, 32, 60}), QStringLiteral("1920x1080 (32bit) 60 Hz"));
    QCOMPARE(displayModeText({}), QStringLiteral("0x0 (0bit) 0 Hz"));
}

void TestDisplayInfo::describe_data()
{
    const QString card = QStringLiteral("NVIDIA GeForce RTX 3060");
    const QString second = QStringLiteral("Intel(R) UHD Graphics 770");
    const DisplayMode fullHd{1920, 1080, 32, 60};
    const DisplayMode large{3840, 2160, 32, 144};
    const auto text = [](const char *lines) { return QString::fromLatin1(lines); };
    QTest::addColumn<QVector<DisplayDevice>>("devices");
    QTest::addColumn<QString>("adapters"); // joined as they are shown
    QTest::addColumn<QString>("modes");
    QTest::newRow("none") << QVector<DisplayDevice>() << QString() << QString();
    QTest::newRow("one") << QVector<DisplayDevice>{{card, true, fullHd}} << card << text("1920x1080 (32bit) 60 Hz");
    QTest::newRow("two outputs of one adapter")
        << QVector<DisplayDevice>{{card, true, fullHd}, {card, true, large}, {card, false, large}} << card
        << text("1920x1080 (32bit) 60 Hz\n3840x2160 (32bit) 144 Hz");
    QTest::newRow("the same mode twice stays") << QVector<DisplayDevice>{{card, true, fullHd}, {card, true, fullHd}}
                                               << card << text("1920x1080 (32bit) 60 Hz\n1920x1080 (32bit) 60 Hz");
    QTest::newRow("two adapters, the first is named again")
        << QVector<DisplayDevice>{{second, true, fullHd}, {card, true, large}, {second, true, large}}
        << QString(second + QLatin1Char('\n') + card)
        << text("1920x1080 (32bit) 60 Hz\n3840x2160 (32bit) 144 Hz\n3840x2160 (32bit) 144 Hz");
    QTest::newRow("an adapter without a monitor")
        << QVector<DisplayDevice>{{second, false, std::nullopt}} << QString() << QString();
    QTest::newRow("first mode unknown") << QVector<DisplayDevice>{{card, true, std::nullopt}} << card
                                        << text("0x0 (0bit) 0 Hz");
    QTest::newRow("unknown mode: that of the attached output before it")
        << QVector<DisplayDevice>{{card, true, large}, {card, false, fullHd}, {second, true, std::nullopt}}
        << QString(card + QLatin1Char('\n') + second) << text("3840x2160 (32bit) 144 Hz\n3840x2160 (32bit) 144 Hz");
}

void TestDisplayInfo::describe()
{
    QFETCH(QVector<DisplayDevice>, devices);
    QStringList adapters;
    QStringList modes;
    describeDisplays(devices, adapters, modes);
    QTEST(adapters.join(QLatin1Char('\n')), "adapters");
    QTEST(modes.join(QLatin1Char('\n')), "modes");
}

void TestDisplayInfo::oldListsAreReplaced()
{
    QStringList adapters{QStringLiteral("old")};
    QStringList modes{QStringLiteral("old")};
    describeDisplays({}, adapters, modes);
    QVERIFY(adapters.isEmpty());
    QVERIFY(modes.isEmpty());
}

QTEST_APPLESS_MAIN(TestDisplayInfo)
#include "tst_displayinfo.moc"
