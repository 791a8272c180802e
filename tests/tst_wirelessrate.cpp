#include "probes/wirelessrate.h"
#include "tests/support/testbase.h"

#include <QtTest>

namespace {

template <typename Number>
QByteArray bytes(Number number)
{
    return QByteArray(reinterpret_cast<const char *>(&number), sizeof(number));
}

/// One attribute, filled up to a multiple of four.
QByteArray attribute(quint16 type, const QByteArray &content)
{
    QByteArray whole = bytes(static_cast<quint16>(content.size() + 4)) + bytes(type) + content;
    while (whole.size() % 4 != 0)
        whole.append('\0');
    return whole;
}

constexpr quint16 nested = 0x8000;

/// A station message as the kernel sends it: interface, address, generation, then the station's facts,
/// with the receive rate (14) in front of the send rate (8).
QByteArray station(const QByteArray &sendRate)
{
    const QByteArray receiveRate = attribute(5, bytes<quint32>(60)) + attribute(1, bytes<quint16>(60));
    return attribute(3, bytes<quint32>(3)) + attribute(6, QByteArray("\x34\x31\xc4\x5a\x1b\x2c"))
           + attribute(46, bytes<quint32>(7))
           + attribute(21 | nested, attribute(7, QByteArray("\xc8")) + attribute(14 | nested, receiveRate)
                                        + attribute(8 | nested, sendRate));
}

} // namespace

class TestWirelessRate final : public TestBase {
    Q_OBJECT

private slots:
    void rate_data();
    void rate();
    void everyCutMessage();
};

void TestWirelessRate::rate_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<int>("megabits"); // 0: unknown
    QTest::newRow("802.11n: both forms") << station(attribute(1, bytes<quint16>(1733))
                                                    + attribute(5, bytes<quint32>(1733)))
                                         << 173;
    QTest::newRow("802.11ax: only the long form fits") << station(attribute(5, bytes<quint32>(96078))) << 9607;
    QTest::newRow("old kernel: only the short form") << station(attribute(1, bytes<quint16>(540))) << 54;
    QTest::newRow("the slowest") << station(attribute(5, bytes<quint32>(10))) << 1;
    QTest::newRow("less than a megabit") << station(attribute(5, bytes<quint32>(9))) << 0;
    QTest::newRow("no rate in it") << station(attribute(2, QByteArray("\x07"))) << 0;
    QTest::newRow("rate too short") << station(attribute(5, QByteArray("ab"))) << 0;
    QTest::newRow("empty rate") << station(QByteArray()) << 0;
    QByteArray tooLong = attribute(21, attribute(8, attribute(5, bytes<quint32>(540))));
    QTest::newRow("as long as it says") << tooLong << 54;
    tooLong[0] = static_cast<char>(tooLong.size() + 1);
    QTest::newRow("a station that says it is longer") << tooLong << 0;
    QTest::newRow("not a station") << attribute(3, bytes<quint32>(3)) << 0;
    QTest::newRow("empty message") << QByteArray() << 0;
    QTest::newRow("an attribute of no length") << QByteArray(8, '\0') << 0;
    QTest::newRow("an attribute longer than the message") << QByteArray("\xff\x00\x15\x00\x00\x00\x00\x00", 8) << 0;
}

void TestWirelessRate::rate()
{
    QFETCH(QByteArray, message);
    QTEST(stationRateMbps(message).value_or(0), "megabits");
}

// Wherever it ends, nothing behind the end is read (the address sanitizer watches) and nothing is made up.
void TestWirelessRate::everyCutMessage()
{
    const QByteArray whole = station(attribute(5, bytes<quint32>(8667)));
    QCOMPARE(stationRateMbps(whole).value_or(0), 866);
    for (int size = 0; size < whole.size(); ++size)
        QVERIFY2(!stationRateMbps(whole.left(size)), qPrintable(QString::number(size)));
}

QTEST_APPLESS_MAIN(TestWirelessRate)
#include "tst_wirelessrate.moc"
