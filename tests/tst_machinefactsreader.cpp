#include "probes/ipconfigparser.h"
#include "probes/machinefactsreader.h"
#include "probes/networkadapters.h"
#include "probes/tooloutput.h"
#include "tests/support/testbase.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

namespace {

constexpr qint64 promptMs = 600; // 200 ms, and room for a busy machine

NetworkAdapters adaptersNamed(std::initializer_list<const char *> names)
{
    NetworkAdapters adapters;
    for (const char *name : names) {
        NetworkAdapterInfo adapter;
        adapter.name = QString::fromLatin1(name);
        adapters.append(adapter);
    }
    return adapters;
}

QString noSpeed(const NetworkAdapterInfo &, const std::atomic<bool> &)
{
    return {};
}

/// What a reader has sent, in its order.
class Received final : public QObject {
public:
    explicit Received(MachineFactsReader &reader)
    {
        connect(&reader, &MachineFactsReader::adaptersRead, this, [this](const NetworkAdapters &adapters) {
            QString line = QStringLiteral("adapters");
            for (const NetworkAdapterInfo &adapter : adapters)
                line += QLatin1Char(' ') + adapter.name + adapter.linkSpeed;
            append(line);
        });
        connect(&reader, &MachineFactsReader::linkSpeedRead, this, [this](int index, const QString &speed) {
            append(QStringLiteral("speed %1 %2").arg(QString::number(index), speed));
        });
        connect(&reader, &MachineFactsReader::finished, this, [this] { append(QStringLiteral("finished")); });
    }

    QStringList lines;
    bool isOnOneThread = true;

private:
    void append(const QString &line)
    {
        isOnOneThread = isOnOneThread && QThread::currentThread() == thread();
        lines.append(line);
    }
};

} // namespace

class TestMachineFactsReader final : public TestBase {
    Q_OBJECT

private slots:
    void signalsInOrder();
    void noAdapters();
    void startedAgain();
    void restartForgetsTheRunBefore();
    void neverStarted();
    void toolThatHangs();
    void speedThatHangs();
    void callThatNothingEnds();
    void thisMachine();
};

void TestMachineFactsReader::signalsInOrder()
{
    std::atomic<QThread *> workThread{nullptr};
    MachineFactsReader reader({[&workThread](const std::atomic<bool> &) {
                                   workThread = QThread::currentThread();
                                   return adaptersNamed({"a", "b", "c"});
                               },
                               [](const NetworkAdapterInfo &adapter, const std::atomic<bool> &) {
                                   return adapter.name == QLatin1String("b") ? QString()
                                                                             : adapter.name + QStringLiteral("/Mbps");
                               }});
    const Received received(reader);
    reader.start();
    QVERIFY(received.lines.isEmpty());
    QTRY_COMPARE(received.lines.join(QLatin1Char(';')),
                 QStringLiteral("adapters a b c;speed 0 a/Mbps;speed 2 c/Mbps;finished"));
    QVERIFY(received.isOnOneThread);
    QVERIFY(workThread != nullptr);
    QVERIFY(workThread != QThread::currentThread());
}

void TestMachineFactsReader::noAdapters()
{
    MachineFactsReader reader({[](const std::atomic<bool> &) { return NetworkAdapters(); }, noSpeed});
    const Received received(reader);
    reader.start();
    QTRY_COMPARE(received.lines.join(QLatin1Char(';')), QStringLiteral("adapters;finished"));
}

void TestMachineFactsReader::startedAgain()
{
    MachineFactsReader reader({[](const std::atomic<bool> &) { return adaptersNamed({"a"}); }, noSpeed});
    const Received received(reader);
    reader.start();
    QTRY_COMPARE(received.lines.size(), 2);
    reader.start();
    QTRY_COMPARE(received.lines.join(QLatin1Char(';')), QStringLiteral("adapters a;finished;adapters a;finished"));
}

void TestMachineFactsReader::restartForgetsTheRunBefore()
{
    std::atomic<int> runs{0};
    QSemaphore speedAsked;
    MachineFactsReader reader(
        {[&runs](const std::atomic<bool> &) { return ++runs == 1 ? adaptersNamed({"old"}) : adaptersNamed({"new"}); },
         [&speedAsked](const NetworkAdapterInfo &adapter, const std::atomic<bool> &) {
             if (adapter.name == QLatin1String("old"))
                 speedAsked.release();
             return QStringLiteral("1/1Mbps");
         }});
    const Received received(reader);
    reader.start();
    // The first run has sent its list by now, but this thread has not looked for it yet.
    QVERIFY(speedAsked.tryAcquire(1, 30000));
    reader.start();
    QTRY_COMPARE(received.lines.join(QLatin1Char(';')), QStringLiteral("adapters new;speed 0 1/1Mbps;finished"));
}

void TestMachineFactsReader::neverStarted()
{
    const MachineFactsReader reader;
}

void TestMachineFactsReader::toolThatHangs()
{
    const QTemporaryDir folder;
    const QString marker = folder.filePath(QStringLiteral("marker"));
    const ToolCommand command{QStringLiteral(VEXA_STANDIN_TOOL),
                              {QStringLiteral("hang"), QStringLiteral(VEXA_IPCONFIG_TEXTS "/ethernet.txt"), marker}};
    auto reader = std::make_unique<MachineFactsReader>(
        AdapterProbes{[command](const std::atomic<bool> &abort) {
                          return parseIpconfig(QString::fromLatin1(toolOutput(command, abort)));
                      },
                      noSpeed});
    const Received received(*reader);
    QElapsedTimer timer;
    timer.start();
    reader->start();
    QVERIFY2(timer.elapsed() < promptMs, qPrintable(QString::number(timer.elapsed())));
    // Meanwhile this thread goes on with its events.
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(marker), 30000);
    timer.start();
    reader.reset();
    QVERIFY2(timer.elapsed() < promptMs, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(received.lines, QStringList());
}

void TestMachineFactsReader::speedThatHangs()
{
    MachineFactsReader reader({[](const std::atomic<bool> &) {
                                   return adaptersNamed({"a", "b"});
                               },
                               [](const NetworkAdapterInfo &, const std::atomic<bool> &abort) {
                                   while (!abort)
                                       QThread::msleep(5);
                                   return QStringLiteral("1/1Mbps");
                               }});
    const Received received(reader);
    reader.start();
    // The list does not wait for the speeds.
    QTRY_COMPARE(received.lines, QStringList{QStringLiteral("adapters a b")});
}

void TestMachineFactsReader::callThatNothingEnds()
{
    const auto gate = std::make_shared<QSemaphore>();
    QSemaphore entered;
    auto reader = std::make_unique<MachineFactsReader>(AdapterProbes{[gate, &entered](const std::atomic<bool> &) {
                                                                         entered.release();
                                                                         gate->acquire();
                                                                         return adaptersNamed({"late"});
                                                                     },
                                                                     noSpeed});
    const Received received(*reader);
    reader->start();
    QVERIFY(entered.tryAcquire(1, 30000));
    QElapsedTimer timer;
    timer.start();
    reader.reset();
    QVERIFY2(timer.elapsed() < promptMs, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(gate.use_count() > 1);
    // Should it return after all, its thread clears up and nobody hears of it.
    gate->release();
    QTRY_COMPARE(gate.use_count(), 1L);
    QCOMPARE(received.lines, QStringList());
}

void TestMachineFactsReader::thisMachine()
{
    MachineFactsReader reader;
    const Received received(reader);
    NetworkAdapters adapters;
    connect(&reader, &MachineFactsReader::adaptersRead, this,
            [&adapters](const NetworkAdapters &read) { adapters = read; });
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(received.lines.contains(QStringLiteral("finished")), 50000);
    const std::atomic<bool> abort{false};
    const NetworkAdapters expected = readNetworkAdapters(abort);
    QCOMPARE(adapters.size(), expected.size());
    for (int index = 0; index < adapters.size(); ++index) {
        QCOMPARE(adapters.at(index).name, expected.at(index).name);
        QCOMPARE(adapters.at(index).ipv4Address, expected.at(index).ipv4Address);
    }
    QVERIFY(!adapters.isEmpty());
}

QTEST_GUILESS_MAIN(TestMachineFactsReader)
#include "tst_machinefactsreader.moc"
