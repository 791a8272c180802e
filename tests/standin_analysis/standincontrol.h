#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QList>
#include <QString>
#include <QTcpServer>

class QTcpSocket;

/// The test's end of the connections to stand-in tools. Lives in the thread of the test, whose event loop must run.
class StandinControl final {
public:
    /// Listens, and tells what this process starts from now on where.
    StandinControl();
    ~StandinControl();
    StandinControl(const StandinControl &) = delete;
    StandinControl &operator=(const StandinControl &) = delete;

    static QString toolPath();
    static QString relayPath();
    /// The text that makes the relay start the stand-in.
    static QByteArray commandFile(const QByteArray &source);

    /// Waits until so many stand-ins have connected and greeted.
    bool waitForTools(int count = 1);
    /// What the first one got after its program name.
    QByteArrayList arguments() const;
    bool hasTerminal() const;

    /// To one of them, counted as they came; returns at once.
    void tell(const QByteArray &order, int index = 0);
    /// The same with bytes as its last word.
    void tell(const QByteArray &order, const QByteArray &bytes, int index = 0)
    {
        tell(order + ' ' + bytes.toHex(), index);
    }
    /// Whether the first one has carried out all orders.
    bool isDone() const;
    bool waitUntilDone();
    /// Waits until all of them have ended.
    bool waitUntilGone();

private:
    struct Tool {
        QTcpSocket *socket = nullptr; ///< the server's
        QByteArrayList greeting;
        int orders = 0;
        int answers = 0;
    };

    void accept();
    void read(QTcpSocket *socket);

    QTcpServer m_server;
    QList<Tool> m_tools;
};
