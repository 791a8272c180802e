#include "tests/standin_analysis/standincontrol.h"

#include <QDir>
#include <QTcpSocket>
#include <QtTest>

#include <algorithm>

namespace {

constexpr int waitMs = 30000;

} // namespace

StandinControl::StandinControl()
{
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { accept(); });
    if (!m_server.listen(QHostAddress::LocalHost))
        qWarning("no port to listen on");
    qputenv("STANDIN_ANALYSIS_PORT", QByteArray::number(m_server.serverPort()));
}

StandinControl::~StandinControl()
{
    for (const Tool &tool : qAsConst(m_tools))
        tool.socket->disconnect(&m_server);
    qunsetenv("STANDIN_ANALYSIS_PORT");
}

QString StandinControl::toolPath()
{
    return QDir::toNativeSeparators(
        QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(QLatin1String(VEXA_STANDIN)));
}

QString StandinControl::relayPath()
{
    return QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(QLatin1String(VEXA_RELAY));
}

QByteArray StandinControl::commandFile(const QByteArray &source)
{
    return '"' + toolPath().toUtf8() + "\" /source:\"" + source + "\" /time:70";
}

bool StandinControl::waitForTools(int count)
{
    return QTest::qWaitFor(
        [this, count] {
            return std::count_if(m_tools.cbegin(), m_tools.cend(),
                                 [](const Tool &tool) { return !tool.greeting.isEmpty(); })
                   == count;
        },
        waitMs);
}

QByteArrayList StandinControl::arguments() const
{
    QByteArrayList arguments;
    for (const QByteArray &word : m_tools.constFirst().greeting.mid(1))
        arguments.append(QByteArray::fromHex(word));
    return arguments;
}

bool StandinControl::hasTerminal() const
{
    return m_tools.constFirst().greeting.constFirst() == "terminal";
}

void StandinControl::tell(const QByteArray &order, int index)
{
    Tool &tool = m_tools[index];
    tool.socket->write(order + '\n');
    ++tool.orders;
}

bool StandinControl::isDone() const
{
    return m_tools.constFirst().answers == m_tools.constFirst().orders;
}

bool StandinControl::waitUntilDone()
{
    return QTest::qWaitFor([this] { return isDone(); }, waitMs);
}

bool StandinControl::waitUntilGone()
{
    return QTest::qWaitFor(
        [this] {
            return std::all_of(m_tools.cbegin(), m_tools.cend(), [](const Tool &tool) {
                return tool.socket->state() == QAbstractSocket::UnconnectedState;
            });
        },
        waitMs);
}

void StandinControl::accept()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        Tool tool;
        tool.socket = socket;
        m_tools.append(tool);
        QObject::connect(socket, &QTcpSocket::readyRead, &m_server, [this, socket] { read(socket); });
        read(socket);
    }
}

void StandinControl::read(QTcpSocket *socket)
{
    const auto isIts = [socket](const Tool &tool) { return tool.socket == socket; };
    Tool &tool = *std::find_if(m_tools.begin(), m_tools.end(), isIts);
    while (socket->canReadLine()) {
        const QByteArray line = socket->readLine().trimmed();
        if (tool.greeting.isEmpty())
            tool.greeting = line.split(' ');
        else
            ++tool.answers;
    }
}
