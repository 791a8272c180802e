#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QPair>
#include <QTcpServer>
#include <QUrl>

#include <memory>
#include <vector>

class QTcpSocket;

/// What a client sent, byte for byte.
struct HttpRequest {
    QByteArray line;                             ///< "POST /path HTTP/1.1"
    QList<QPair<QByteArray, QByteArray>> fields; ///< of the head, in their order
    QByteArray body;                             ///< what has come of it
    bool isWhole = false;                        ///< as long as Content-Length says

    /// The value of a field, upper and lower case alike; null when it is not there.
    QByteArray field(const QByteArray &name) const;
};

/// A small HTTP server on the loopback address, on the thread of the test. Every request gets the same answer.
class HttpServer final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HttpServer)

public:
    enum class When {
        wholeRequest, ///< answers when the body has come
        head,         ///< answers after the head, and goes on reading the body
        never         ///< says nothing; disconnectAll() ends it
    };

    HttpServer();
    ~HttpServer() override;

    QUrl url(const QString &path) const;
    void setAnswer(int status, const QByteArray &reason, const QByteArray &body);
    /// The bytes sent as the answer, whatever they mean.
    void setRawAnswer(const QByteArray &bytes) { m_answer = bytes; }
    void setWhen(When when) { m_when = when; }
    /// Closes the connection when so many bytes of a body have come, without an answer; -1: never.
    void setCutAfter(qint64 bodyBytes) { m_cutAfterBytes = bodyBytes; }
    /// Closes the connections without an answer.
    void disconnectAll();

    int requestCount() const { return int(m_requests.size()); }
    const HttpRequest &request(int i) const { return *m_requests.at(std::size_t(i)); }

    /// A place on the loopback address where nobody listens.
    static QUrl deafUrl();

signals:
    void bodyBytesReceived();
    void disconnected();

private:
    struct Connection {
        QByteArray waiting; ///< bytes of a head that is not whole
        HttpRequest *request = nullptr;
        bool isAnswered = false;
    };

    void accept();
    void read(QTcpSocket *socket, Connection &connection);
    void readHead(Connection &connection);
    void answer(QTcpSocket *socket, Connection &connection);

    QTcpServer m_listener;
    std::vector<std::unique_ptr<HttpRequest>> m_requests;
    QByteArray m_answer;
    When m_when = When::wholeRequest;
    qint64 m_cutAfterBytes = -1;
};
