#include "probes/interfacerecords.h"
#include "tests/support/testbase.h"

#include <QtTest>

namespace {

const char routeHead[] = "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";

QByteArray routeTable(const char *lines)
{
    return QByteArray(routeHead) + lines;
}

/// Name, address, mask, gateway and the rest, as one text.
QString line(const NetworkAdapterInfo &adapter)
{
    return QStringList{adapter.name,        adapter.description, adapter.autoConfiguration, adapter.dhcp,
                       adapter.ipv4Address, adapter.subnetMask,  adapter.defaultGateway,    adapter.linkSpeed}
        .join(QLatin1Char('|'));
}

InterfaceFacts interfaceNamed(const char *name)
{
    InterfaceFacts facts;
    facts.name = QString::fromLatin1(name);
    return facts;
}

} // namespace

class TestInterfaceRecords final : public TestBase {
    Q_OBJECT

private slots:
    void routes_data();
    void routes();
    void fields();
    void nothingKnown();
    void loopbackIsLeftOut();
    void order();
};

void TestInterfaceRecords::routes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("expected"); // interface gateway metric
    const auto row = [](const char *title, const QByteArray &text, const char *expected) {
        QTest::newRow(title) << text << QString::fromLatin1(expected).split(QLatin1Char(';'), Qt::SkipEmptyParts);
    };
    // Recorded on a virtual machine.
    row("one route",
        routeTable(
            "eth0\t00000000\t010200C0\t0003\t0\t0\t0\t00000000\t0\t0\t0                                      \n"
            "eth0\t000200C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0                                      \n"),
        "eth0 192.0.2.1 0");
    row("the lower metric comes first",
        routeTable("wlan0\t00000000\t01B2A8C0\t0003\t0\t0\t600\t00000000\t0\t0\t0\n"
                   "eth0\t00000000\t0101A8C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n"
                   "eth0\t0001A8C0\t00000000\t0001\t0\t0\t100\t00FFFFFF\t0\t0\t0\n"),
        "eth0 192.168.1.1 100;wlan0 192.168.178.1 600");
    row("equal metrics keep their order",
        routeTable("b0\t00000000\t0100000A\t0003\t0\t0\t0\t00000000\t0\t0\t0\n"
                   "a0\t00000000\t0200000A\t0003\t0\t0\t0\t00000000\t0\t0\t0\n"),
        "b0 10.0.0.1 0;a0 10.0.0.2 0");
    row("a route that needs no gateway", routeTable("wg0\t00000000\t00000000\t0001\t0\t0\t50\t00000000\t0\t0\t0\n"),
        "wg0  50");
    row("one that is down", routeTable("eth0\t00000000\t010200C0\t0002\t0\t0\t0\t00000000\t0\t0\t0\n"), "");
    row("one that turns packets away", routeTable("*\t00000000\t00000000\t0201\t0\t0\t0\t00000000\t0\t0\t0\n"), "");
    row("half of all addresses", routeTable("tun0\t00000000\t0100080A\t0003\t0\t0\t0\t00000080\t0\t0\t0\n"), "");
    row("a cut line", routeTable("eth0\t00000000\t010200C0\t0003\t0"), "");
    row("letters that are no number", routeTable("eth0\t00000000\tGATEWAY\t0003\t0\t0\t0\t00000000\t0\t0\t0\n"), "");
    row("the head alone", routeTable(""), "");
    row("empty", QByteArray(), "");
}

void TestInterfaceRecords::routes()
{
    QFETCH(QByteArray, text);
    QStringList found;
    const QVector<DefaultRoute> routes = defaultRoutes(text);
    for (const DefaultRoute &route : routes)
        found.append(route.interfaceName + QLatin1Char(' ') + route.gateway + QLatin1Char(' ')
                     + QString::number(route.metric));
    QTEST(found, "expected");
}

void TestInterfaceRecords::fields()
{
    InterfaceFacts facts = interfaceNamed("eth0");
    facts.deviceName = QStringLiteral("Intel Corporation I219-V");
    facts.ipv4Address = QStringLiteral("192.168.1.23");
    facts.subnetMask = QStringLiteral("255.255.255.0");
    facts.isPermanent = false;
    facts.isAutoConfigurable = true;
    const QVector<DefaultRoute> routes{{QStringLiteral("eth0"), QStringLiteral("192.168.1.1"), 100},
                                       {QStringLiteral("eth0"), QStringLiteral("192.168.1.2"), 200}};
    const NetworkAdapters leased = interfaceRecords({facts}, routes);
    QCOMPARE(leased.size(), 1);
    QCOMPARE(line(leased.first()),
             QStringLiteral("eth0|Intel Corporation I219-V|Enabled|Enabled|192.168.1.23|255.255.255.0|192.168.1.1|"));

    facts.isPermanent = true;
    facts.isAutoConfigurable = false;
    QCOMPARE(line(interfaceRecords({facts}, {}).value(0)),
             QStringLiteral("eth0|Intel Corporation I219-V|Disabled|Disabled|192.168.1.23|255.255.255.0||"));
}

void TestInterfaceRecords::nothingKnown()
{
    const NetworkAdapters adapters = interfaceRecords({interfaceNamed("br0")}, {});
    QCOMPARE(adapters.size(), 1);
    QCOMPARE(line(adapters.first()), QStringLiteral("br0|||||||"));
    QVERIFY(interfaceRecords({}, {{QStringLiteral("eth0"), QString(), 0}}).isEmpty());
}

void TestInterfaceRecords::loopbackIsLeftOut()
{
    InterfaceFacts loopback = interfaceNamed("lo");
    loopback.isLoopback = true;
    const NetworkAdapters adapters = interfaceRecords({loopback, interfaceNamed("eth0")}, {});
    QCOMPARE(adapters.size(), 1);
    QCOMPARE(adapters.first().name, QStringLiteral("eth0"));
}

void TestInterfaceRecords::order()
{
    const NetworkAdapters adapters = interfaceRecords(
        {interfaceNamed("docker0"), interfaceNamed("wlan0"), interfaceNamed("eth1"), interfaceNamed("eth0")},
        {{QStringLiteral("eth0"), QStringLiteral("10.0.0.1"), 100}, {QStringLiteral("wlan0"), QString(), 600}});
    QStringList names;
    for (const NetworkAdapterInfo &adapter : adapters)
        names.append(adapter.name);
    QCOMPARE(names.join(QLatin1Char(' ')), QStringLiteral("eth0 wlan0 docker0 eth1"));
}

QTEST_APPLESS_MAIN(TestInterfaceRecords)
#include "tst_interfacerecords.moc"
