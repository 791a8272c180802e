#include "probes/tooloutput.h"
#include "tests/support/testbase.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <thread>

namespace {

ToolCommand standIn(const QStringList &arguments)
{
    return {QStringLiteral(VEXA_STANDIN_TOOL), arguments};
}

const QString textFile = QStringLiteral(VEXA_IPCONFIG_TEXTS "/ethernet.txt");

QByteArray content(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestToolOutput final : public TestBase {
    Q_OBJECT

private slots:
    void everyByte();
    void muchOutput();
    void bothChannels();
    void inputIsEmpty();
    void toolIsMissing();
    void timeLimit();
    void abortKeepsWhatCame();
    void abortedBefore();

private:
    std::atomic<bool> m_abort{false};
};

void TestToolOutput::everyByte()
{
    const QByteArray expected = content(textFile);
    QVERIFY(expected.contains("\r\n"));
    QCOMPARE(toolOutput(standIn({QStringLiteral("print"), textFile}), m_abort), expected);
}

// More than any pipe holds.
void TestToolOutput::muchOutput()
{
    const QByteArray output = toolOutput(standIn({QStringLiteral("flood"), QStringLiteral("50000")}), m_abort);
    QCOMPARE(output.count('\n'), 50000);
    QVERIFY(output.endsWith("line 49999\n"));
}

void TestToolOutput::bothChannels()
{
    const QByteArray output = toolOutput(standIn({QStringLiteral("both")}), m_abort);
    QVERIFY(output.startsWith("out\n"));
    QVERIFY(output.trimmed().endsWith("err"));
}

void TestToolOutput::inputIsEmpty()
{
    QCOMPARE(toolOutput(standIn({QStringLiteral("read")}), m_abort), QByteArray("0 bytes\n"));
}

void TestToolOutput::toolIsMissing()
{
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(toolOutput({QStringLiteral("/no/such/tool"), {}}, m_abort), QByteArray());
    QVERIFY(timer.elapsed() < 5000);
}

void TestToolOutput::timeLimit()
{
    const QTemporaryDir folder;
    ToolCommand command = standIn({QStringLiteral("hang"), textFile, folder.filePath(QStringLiteral("marker"))});
    command.limit = std::chrono::milliseconds(500);
    QElapsedTimer timer;
    timer.start();
    const QByteArray output = toolOutput(command, m_abort);
    QVERIFY(timer.elapsed() >= 500);
    QVERIFY(timer.elapsed() < 5000);
    QVERIFY(content(textFile).startsWith(output)); // a slow machine may not have started it yet
}

void TestToolOutput::abortKeepsWhatCame()
{
    const QTemporaryDir folder;
    const QString marker = folder.filePath(QStringLiteral("marker"));
    std::atomic<bool> abort{false};
    QByteArray output;
    std::thread reader([&] { output = toolOutput(standIn({QStringLiteral("hang"), textFile, marker}), abort); });
    const bool hasStarted = QTest::qWaitFor([&marker] { return QFile::exists(marker); }, 30000);
    QElapsedTimer timer;
    timer.start();
    abort = true;
    reader.join();
    QVERIFY(hasStarted);
    QVERIFY2(timer.elapsed() < 1500, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(output, content(textFile));
}

void TestToolOutput::abortedBefore()
{
    const std::atomic<bool> abort{true};
    QElapsedTimer timer;
    timer.start();
    toolOutput(standIn({QStringLiteral("flood"), QStringLiteral("1000000000")}), abort);
    QVERIFY(timer.elapsed() < 5000);
}

QTEST_GUILESS_MAIN(TestToolOutput)
#include "tst_tooloutput.moc"
