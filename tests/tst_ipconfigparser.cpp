#include "probes/ipconfigparser.h"
#include "tests/support/testbase.h"

#include <QtTest>

namespace {

/// All fields of each record, in their order, one record a text.
QStringList lines(const NetworkAdapters &adapters)
{
    QStringList texts;
    for (const NetworkAdapterInfo &adapter : adapters)
        texts.append(QStringList{adapter.name, adapter.description, adapter.autoConfiguration, adapter.dhcp,
                                 adapter.ipv4Address, adapter.subnetMask, adapter.defaultGateway, adapter.linkSpeed}
                         .join(QLatin1Char('|')));
    return texts;
}

QStringList texts(std::initializer_list<const char *> parts)
{
    QStringList list;
    for (const char *part : parts)
        list.append(QString::fromUtf8(part));
    return list;
}

} // namespace

class TestIpconfigParser final : public TestBase {
    Q_OBJECT

private slots:
    void file_data();
    void file();
    void rule_data();
    void rule();
    void everyCutText();
};

void TestIpconfigParser::file_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, std::initializer_list<const char *> expected) {
        QTest::newRow(name) << QString::fromLatin1(name) << texts(expected);
    };
    constexpr const char *ethernet = "Ethernet|Intel(R) Ethernet Connection (2) I219-V|Enabled|Enabled|192.168.1.23("
                                     "Preferred)|255.255.255.0|192.168.1.1|";
    row("ethernet.txt", {ethernet});
    row("ethernet-lf.txt", {ethernet});
    row("ethernet-double-cr.txt", {ethernet});
    // The gateway is the first one, though it is of IPv6; the Wi-Fi Direct adapter has keys, so it stays.
    row("wifi.txt", {"Local Area Connection* 1|Microsoft Wi-Fi Direct Virtual Adapter|Enabled|Enabled||||",
                     "Wi-Fi|Intel(R) Wi-Fi 6 AX200 160MHz|Enabled|Enabled|192.168.178.42(Preferred)|255.255.255.0|"
                     "fe80::3631:c4ff:fe5a:1b2c%9|"});
    row("vpn-and-tunnels.txt",
        {"Unknown adapter Corporate VPN|TAP-Windows Adapter V9|Enabled|Disabled|10.8.0.6(Preferred)|255.255.255.252||",
         "PPP adapter Office|Office|Enabled|Disabled|172.16.5.9(Preferred)|255.255.255.255|0.0.0.0|", ethernet,
         "Tunnel adapter isatap.lan|Microsoft ISATAP Adapter|Enabled|Disabled||||",
         "Tunnel adapter Teredo Tunneling Pseudo-Interface|Teredo Tunneling Pseudo-Interface|Enabled|Disabled||||"});
    // A key that comes twice has its last value.
    row("several-gateways.txt",
        {"Ethernet 3|Mellanox ConnectX-4 Lx Ethernet Adapter #2|Disabled|Disabled|10.30.0.11(Preferred)|255.255.255.0|"
         "10.20.0.1|"});
    row("ipv6-only.txt", {"vEthernet (NDI)|Hyper-V Virtual Ethernet Adapter|Enabled|Disabled|||fe80::1%21|"});
    // It writes its keys in other letters; only the description is the same.
    row("wine-8.txt", {"lo|lo||||||", "ifb0|ifb0||||||", "ifb1|ifb1||||||", "eth0|eth0||||||"});
    // In other languages no key is known: of all sections the last one is left.
    row("german.txt", {"Drahtlos-LAN-Adapter WLAN|||||||"});
    row("nothing-known.txt", {"Windows IP Configuration|||||||"});
}

void TestIpconfigParser::file()
{
    QFETCH(QString, name);
    QFile file(QStringLiteral(VEXA_IPCONFIG_TEXTS "/") + name);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromLatin1(file.readAll());
    QVERIFY(!text.isEmpty());
    QTEST(lines(parseIpconfig(text)), "expected");
}

void TestIpconfigParser::rule_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *title, const char *text, std::initializer_list<const char *> expected) {
        QTest::newRow(title) << QString::fromUtf8(text) << texts(expected);
    };
    row("empty", "", {});
    row("line ends alone", "\r\n\n\r\r\n", {});
    row("keys before any section", "   Description : X\n", {});
    row("a section without a line end", "Ethernet adapter A:", {"A|||||||"});
    row("a section without keys goes when the next one comes", "Global\nEthernet adapter A:\n Description: X\nB\n",
        {"A|X||||||", "B|||||||"});
    row("a section without keys between two others", "A\n Description: X\nB\nC\n Subnet Mask: 1\n",
        {"A|X||||||", "C|||||1||"});
    row("unknown keys do not keep a section", "A\n Media State : x\nB\n Subnet Mask : 1\n", {"B|||||1||"});
    row("each of the keys keeps its section",
        "a\n Description :\nb\n Autoconfiguration Enabled :\nc\n DHCP Enabled :\nd\n IPv4 Address :\ne\n Subnet Mask "
        ":\n"
        "f\n Default Gateway :\ng\n",
        {"a|||||||", "b||Disabled|||||", "c|||Disabled||||", "d|||||||", "e|||||||", "f|||||||", "g|||||||"});
    row("a name loses every colon", "Ethernet adapter a:b::\n", {"ab|||||||"});
    row("colons alone are no section", "A\n Description: X\n::\n Subnet Mask: 1\n", {"A|X||||1||"});
    row("wireless", "Wireless LAN adapter Wi-Fi:\n", {"Wi-Fi|||||||"});
    row("one phrase behind the other", "Ethernet adapter Wireless LAN adapter X:\n", {"X|||||||"});
    row("the other way round only the first", "Wireless LAN adapter Ethernet adapter X:\n",
        {"Ethernet adapter X|||||||"});
    row("other kinds keep their text", "Tunnel adapter isatap.{AB-CD}:\n", {"Tunnel adapter isatap.{AB-CD}|||||||"});
    row("a phrase in the middle stays", "My Ethernet adapter X:\n", {"My Ethernet adapter X|||||||"});
    row("other letter case of a phrase", "ethernet adapter X:\n", {"ethernet adapter X|||||||"});
    row("a phrase alone is no section", "A\n Description: X\nEthernet adapter:\n Subnet Mask: 1\n", {"A|X||||1||"});
    row("a name keeps its accents", "Ethernet adapter Büro:\n", {"Büro|||||||"});
    row("keys in other letters", "A\n description: X\n IPV4 Address: 1\n DHCP enabled: Yes\nB\n", {"B|||||||"});
    row("dots anywhere in the key", "A\n D.e.scription. . . : X\n", {"A|X||||||"});
    row("blanks inside the key count", "A\n Subnet  Mask: X\nB\n", {"B|||||||"});
    row("colons in the value stay", "A\n Description: a:b: c\n", {"A|a:b: c||||||"});
    row("only Yes is enabled", "A\n DHCP Enabled: yes\n Autoconfiguration Enabled:   Yes  \n",
        {"A||Enabled|Disabled||||"});
    row("Yes with more behind it", "A\n DHCP Enabled: Yes!\n", {"A|||Disabled||||"});
    row("the last value stays", "A\n IPv4 Address: 1\n IPv4 Address: 2\n", {"A||||2|||"});
    row("a key line without a colon", "A\n Description X\nB\n", {"B|||||||"});
    row("a key of nothing", "A\n : X\nB\n", {"B|||||||"});
    row("a section begins at any other sign", "A\n Description: X\n\tSubnet Mask: 1\n",
        {"A|X||||||", "\tSubnet Mask 1|||||||"});
    row("a second line of a value", "A\n Default Gateway: fe80::1%5\n                  192.168.1.1\n",
        {"A||||||fe80::1%5|"});
    row("a second line with colons", "A\n Default Gateway: 10.0.0.1\n                  fe80::1%5\n",
        {"A||||||10.0.0.1|"});
    row("the two come in order", "B\n Description: 2\nA\n Description: 1\n", {"B|2||||||", "A|1||||||"});
}

void TestIpconfigParser::rule()
{
    QFETCH(QString, text);
    QTEST(lines(parseIpconfig(text)), "expected");
    text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    QTEST(lines(parseIpconfig(text)), "expected");
}

// A tool that is killed stops anywhere: the records of the sections before stay what they are.
void TestIpconfigParser::everyCutText()
{
    QFile file(QStringLiteral(VEXA_IPCONFIG_TEXTS "/vpn-and-tunnels.txt"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromLatin1(file.readAll());
    const QStringList whole = lines(parseIpconfig(text));
    QCOMPARE(whole.size(), 5);
    for (int size = 0; size <= text.size(); ++size) {
        const QStringList part = lines(parseIpconfig(text.left(size)));
        QVERIFY(part.size() <= whole.size());
        for (int index = 0; index + 1 < part.size(); ++index)
            QCOMPARE(part.at(index), whole.at(index));
    }
}

QTEST_APPLESS_MAIN(TestIpconfigParser)
#include "tst_ipconfigparser.moc"
