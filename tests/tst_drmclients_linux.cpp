#include "probes/drmclients_linux.h"

#include "tests/load/faketree.h"
#include "tests/support/testbase.h"

namespace {

constexpr qint64 secondNs = 1'000'000'000;
const char renderNode[] = "/dev/dri/renderD128";

QByteArray usageText(int client, qint64 renderNs, qint64 videoNs = 0)
{
    return "pos:\t0\ndrm-driver:\ti915\ndrm-pdev:\t0000:00:02.0\ndrm-client-id:\t" + QByteArray::number(client)
           + "\ndrm-engine-render:\t" + QByteArray::number(renderNs) + " ns\ndrm-engine-video:\t"
           + QByteArray::number(videoNs) + " ns\n";
}

} // namespace

class TestDrmClients final : public TestBase {
    Q_OBJECT

private slots:
    void loadSinceThePreviousCall();
    void sumsUsersAndEngines();
    void descriptorsOfOneUserCountOnce();
    void endedUsersAreForgotten();
    void anotherUserUnderTheSameNumberStartsAnew();
    void otherDevicesAreNotRead();
    void eachCallDoesABoundedAmountOfWork();
    void missingFolder();

private:
    static QByteArray procOf(const FakeTree &tree) { return QFile::encodeName(tree.path("proc")); }
};

void TestDrmClients::loadSinceThePreviousCall()
{
    FakeTree tree;
    tree.writeDescriptor(123, 5, renderNode, usageText(7, 9 * secondNs));
    DrmClients clients(procOf(tree));
    QCOMPARE(clients.busyPercent(0), 0.0);
    QCOMPARE(clients.clientCount(), 1);
    tree.write("proc/123/fdinfo/5", usageText(7, 9 * secondNs + secondNs / 2));
    QCOMPARE(clients.busyPercent(2 * secondNs), 25.0);
    QCOMPARE(clients.busyPercent(3 * secondNs), 0.0);
    tree.write("proc/123/fdinfo/5", usageText(7, 10 * secondNs));
    QCOMPARE(clients.busyPercent(4 * secondNs), 50.0);
}

void TestDrmClients::sumsUsersAndEngines()
{
    FakeTree tree;
    tree.writeDescriptor(123, 5, renderNode, usageText(7, 0));
    tree.writeDescriptor(124, 9, "/dev/dri/card0", usageText(8, 0));
    DrmClients clients(procOf(tree));
    clients.busyPercent(0);
    QCOMPARE(clients.clientCount(), 2);
    tree.write("proc/123/fdinfo/5", usageText(7, secondNs / 2, secondNs / 4));
    tree.write("proc/124/fdinfo/9", usageText(8, secondNs / 2));
    QCOMPARE(clients.busyPercent(secondNs), 125.0);
}

void TestDrmClients::descriptorsOfOneUserCountOnce()
{
    FakeTree tree;
    tree.writeDescriptor(123, 5, renderNode, usageText(7, 0));
    tree.writeDescriptor(123, 6, renderNode, usageText(7, 0));
    tree.writeDescriptor(200, 3, renderNode, usageText(7, 0));
    DrmClients clients(procOf(tree));
    clients.busyPercent(0);
    clients.busyPercent(secondNs);
    QCOMPARE(clients.clientCount(), 1);
}

void TestDrmClients::endedUsersAreForgotten()
{
    FakeTree tree;
    tree.writeDescriptor(123, 5, renderNode, usageText(7, 0));
    DrmClients clients(procOf(tree));
    clients.busyPercent(0);
    QCOMPARE(clients.clientCount(), 1);
    tree.remove(QStringLiteral("proc/123"));
    QCOMPARE(clients.busyPercent(secondNs), 0.0);
    QCOMPARE(clients.clientCount(), 0);
}

void TestDrmClients::anotherUserUnderTheSameNumberStartsAnew()
{
    FakeTree tree;
    tree.writeDescriptor(123, 5, renderNode, usageText(7, 0));
    DrmClients clients(procOf(tree));
    clients.busyPercent(0);
    tree.write("proc/123/fdinfo/5", usageText(8, secondNs));
    QCOMPARE(clients.busyPercent(secondNs), 0.0);
    QCOMPARE(clients.clientCount(), 1);
    tree.write("proc/123/fdinfo/5", usageText(8, secondNs + secondNs / 5));
    QCOMPARE(clients.busyPercent(2 * secondNs), 20.0);
}

void TestDrmClients::otherDevicesAreNotRead()
{
    FakeTree tree;
    tree.writeDescriptor(123, 5, "/dev/driver", usageText(7, 0));
    tree.writeDescriptor(123, 6, "/dev/null", usageText(8, 0));
    tree.writeDescriptor(123, 7, "socket:[12]", usageText(9, 0));
    tree.write("proc/self/fdinfo/5", usageText(10, 0));
    DrmClients clients(procOf(tree));
    clients.busyPercent(0);
    QCOMPARE(clients.clientCount(), 0);
}

void TestDrmClients::eachCallDoesABoundedAmountOfWork()
{
    FakeTree tree;
    constexpr int count = 2 * DrmClients::looksPerCycle;
    for (int i = 0; i < count; ++i)
        tree.writeDescriptor(1, i, i % 8 == 0 ? renderNode : "/dev/null", usageText(i, 0));
    DrmClients clients(procOf(tree));
    clients.busyPercent(0);
    QVERIFY(clients.clientCount() < count / 8);
    clients.busyPercent(1);
    clients.busyPercent(2);
    QCOMPARE(clients.clientCount(), count / 8); // found where the call before left off
    for (int i = 0; i < count; ++i)
        tree.writeDescriptor(2, i, renderNode, usageText(1000 + i, 0));
    for (int call = 0; call < 8; ++call)
        clients.busyPercent(3 + call);
    QCOMPARE(clients.clientCount(), DrmClients::mostClients);
}

void TestDrmClients::missingFolder()
{
    DrmClients clients("/nowhere/at/all");
    QCOMPARE(clients.busyPercent(0), 0.0);
    QCOMPARE(clients.busyPercent(secondNs), 0.0);
}

QTEST_GUILESS_MAIN(TestDrmClients)
#include "tst_drmclients_linux.moc"
