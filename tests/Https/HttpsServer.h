#pragma once

#include "TestAuthority.h"

#include <QByteArray>
#include <QHostAddress>
#include <QSslServer>
#include <QSslSocket>
#include <QUrl>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tidemark {

/// A web server on a port of this machine, in this thread's event loop. It closes after every answer.
class HttpsServer : public QObject {
public:
    /// Answers one request on a socket that is its own.
    using Handler = std::function<void(QSslSocket& socket)>;

    explicit HttpsServer(const TestAuthority& authority,
        const QHostAddress& address = QHostAddress{QHostAddress::LocalHost});
    ~HttpsServer() override;

    QUrl url(const QString& path) const;

    /// How `path` is answered from now on; the others are answered by 404 without a body.
    void serve(const QString& path, Handler handler);

    /// An answer with the body's length.
    static Handler answer(int status, const QByteArray& body, const QByteArray& headers = {});

    /// These bytes, whatever they are; then the connection is closed.
    static Handler bytes(const QByteArray& bytes);

    static Handler redirect(const QByteArray& location);

    /// The heads of all requests so far.
    const std::vector<std::string>& requests() const { return m_requests; }

    /// How many connections are open.
    int connections() const { return m_connections; }

private:
    void accept();
    void read(QSslSocket& socket);

    QSslServer m_server;
    std::map<QString, Handler> m_handlers;
    std::vector<std::string> m_requests;
    int m_connections = 0;
};

}  // namespace tidemark
