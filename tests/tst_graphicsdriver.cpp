#include "probes/loadtrack.h"
#include "tests/load/fakegraphicsdriver.h"
#include "tests/support/testbase.h"

#include <QLibrary>
#include <QtTest>

/// A library that is loaded already is found under its bare name, so the fake one stands in for the
/// driver's.
class TestGraphicsDriver final : public TestBase {
    Q_OBJECT

private slots:
    void isInitialisedOnceAndLeftAlone();
};

void TestGraphicsDriver::isInitialisedOnceAndLeftAlone()
{
    QLibrary driver(QStringLiteral(VEXA_FAKE_DRIVER));
    QVERIFY2(driver.load(), qPrintable(driver.errorString()));
    const auto counts = reinterpret_cast<FakeDriverCountsFunction>(driver.resolve("fakeDriverCounts"));
    QVERIFY(counts);
    QCOMPARE(counts()->initialised, 0);
    {
        const LoadTrack first;
        const LoadTrack second;
    }
#ifdef Q_OS_WIN // the driver interfaces differ
    const int expected = qEnvironmentVariableIsSet("VEXA_FAKE_DRIVER_IS_INCOMPLETE") ? 0 : 1;
    QCOMPARE(counts()->queries, 3);
    QCOMPARE(counts()->firstQueries[0], 0x0150E828U);
    QCOMPARE(counts()->firstQueries[1], 0xE5AC921FU);
    QCOMPARE(counts()->firstQueries[2], 0x189A1FDFU);
#else
    const int expected = 1;
    QCOMPARE(counts()->queries, 0);
#endif
    QCOMPARE(counts()->initialised, expected);
    QCOMPARE(counts()->otherCalls, 0);
}

QTEST_GUILESS_MAIN(TestGraphicsDriver)
#include "tst_graphicsdriver.moc"
