#include "HttpsServer.h"

#include <stdexcept>

/// OpenSSL frees what it keeps for a thread at that thread's end, and Qt's threads may end only after the
/// sanitizer has looked for leaks.
extern "C" const char* __lsan_default_suppressions();  // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions()  // NOLINT(bugprone-reserved-identifier)
{
    return "leak:libcrypto.so\n";
}

namespace tidemark {

HttpsServer::HttpsServer(const TestAuthority& authority, const QHostAddress& address)
{
    m_server.setSslConfiguration(authority.serverConfiguration());
    QObject::connect(
        &m_server, &QTcpServer::pendingConnectionAvailable, this, [this] { accept(); });
    if (!m_server.listen(address))
        throw std::runtime_error{m_server.errorString().toStdString()};
}

HttpsServer::~HttpsServer()
{
    // Its sockets end with it and would tell of that.
    for (QSslSocket* socket : m_server.findChildren<QSslSocket*>())
        socket->disconnect(this);
}

QUrl HttpsServer::url(const QString& path) const
{
    return QUrl{QStringLiteral("https://%1:%2%3")
                    .arg(m_server.serverAddress().toString())
                    .arg(m_server.serverPort())
                    .arg(path)};
}

void HttpsServer::serve(const QString& path, Handler handler)
{
    m_handlers[path] = std::move(handler);
}

HttpsServer::Handler HttpsServer::answer(
    int status, const QByteArray& body, const QByteArray& headers)
{
    return bytes("HTTP/1.1 " + QByteArray::number(status) + " Status\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\nConnection: close\r\n" + headers + "\r\n" + body);
}

HttpsServer::Handler HttpsServer::bytes(const QByteArray& bytes)
{
    return [bytes](QSslSocket& socket) {
        socket.write(bytes);
        socket.disconnectFromHost();
    };
}

HttpsServer::Handler HttpsServer::redirect(const QByteArray& location)
{
    return answer(302, {}, "Location: " + location + "\r\n");
}

void HttpsServer::accept()
{
    while (auto* socket = qobject_cast<QSslSocket*>(m_server.nextPendingConnection())) {
        ++m_connections;
        QObject::connect(socket, &QSslSocket::disconnected, this, [this, socket] {
            --m_connections;
            socket->deleteLater();
        });
        QObject::connect(socket, &QSslSocket::readyRead, this, [this, socket] { read(*socket); });
        read(*socket);
    }
}

void HttpsServer::read(QSslSocket& socket)
{
    const QByteArray head = socket.peek(socket.bytesAvailable());
    if (!head.contains("\r\n\r\n"))
        return;
    socket.readAll();
    m_requests.push_back(head.toStdString());
    const QString path = QString::fromUtf8(head.split(' ').value(1));
    const auto handler = m_handlers.find(path);
    (handler == m_handlers.end() ? answer(404, {}) : handler->second)(socket);
}

}  // namespace tidemark
