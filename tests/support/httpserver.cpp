#include "tests/support/httpserver.h"

#include <QTcpSocket>

QByteArray HttpRequest::field(const QByteArray &name) const
{
    for (const auto &[key, value] : fields) {
        if (qstricmp(key.constData(), name.constData()) == 0)
            return value;
    }
    return {};
}

HttpServer::HttpServer()
{
    setAnswer(200, "OK", "");
    connect(&m_listener, &QTcpServer::newConnection, this, &HttpServer::accept);
    if (!m_listener.listen(QHostAddress::LocalHost))
        qFatal("no place to listen: %s", qUtf8Printable(m_listener.errorString()));
}

HttpServer::~HttpServer()
{
    // The sockets are the listener's, which dies after the rest of this object.
    for (QTcpSocket *const socket : m_listener.findChildren<QTcpSocket *>())
        socket->disconnect(this);
}

QUrl HttpServer::url(const QString &path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_listener.serverPort()).arg(path));
}

QUrl HttpServer::deafUrl()
{
    QTcpServer listener;
    if (!listener.listen(QHostAddress::LocalHost))
        qFatal("no place to listen: %s", qUtf8Printable(listener.errorString()));
    return QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(listener.serverPort()));
}

void HttpServer::setAnswer(int status, const QByteArray &reason, const QByteArray &body)
{
    m_answer = "HTTP/1.1 " + QByteArray::number(status) + ' ' + reason
               + "\r\nContent-Type: text/plain\r\nContent-Length: " + QByteArray::number(body.size())
               + "\r\nConnection: close\r\n\r\n" + body;
}

void HttpServer::disconnectAll()
{
    for (QTcpSocket *const socket : m_listener.findChildren<QTcpSocket *>())
        socket->abort();
}

void HttpServer::accept()
{
    while (QTcpSocket *const socket = m_listener.nextPendingConnection()) {
        const auto connection = std::make_shared<Connection>();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, connection] { read(socket, *connection); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::disconnected, this, &HttpServer::disconnected);
    }
}

void HttpServer::read(QTcpSocket *socket, Connection &connection)
{
    const QByteArray bytes = socket->readAll();
    if (connection.request) {
        connection.request->body += bytes;
    } else {
        connection.waiting += bytes;
        readHead(connection);
    }
    HttpRequest *const request = connection.request;
    if (!request)
        return;

    emit bodyBytesReceived();
    request->isWhole = request->body.size() == request->field("Content-Length").toLongLong();
    if (m_cutAfterBytes >= 0 && request->body.size() >= m_cutAfterBytes)
        socket->abort();
    else if (m_when == When::head || (m_when == When::wholeRequest && request->isWhole))
        answer(socket, connection);
    if (connection.isAnswered && request->isWhole)
        socket->disconnectFromHost();
}

void HttpServer::readHead(Connection &connection)
{
    const int end = connection.waiting.indexOf("\r\n\r\n");
    if (end < 0)
        return;
    const QList<QByteArray> lines = connection.waiting.left(end).split('\n');
    auto request = std::make_unique<HttpRequest>();
    request->line = lines.first().trimmed();
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines.at(i).indexOf(':');
        request->fields.append({lines.at(i).left(colon), lines.at(i).mid(colon + 1).trimmed()});
    }
    request->body = connection.waiting.mid(end + 4);
    connection.waiting.clear();
    connection.request = request.get();
    m_requests.push_back(std::move(request));
}

void HttpServer::answer(QTcpSocket *socket, Connection &connection)
{
    if (connection.isAnswered)
        return;
    connection.isAnswered = true;
    socket->write(m_answer);
}
