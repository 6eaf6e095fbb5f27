#pragma once

#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkRequest>
#include <QSslConfiguration>

namespace tidemark {

/// A session that trusts one authority.
class TrustingSession final : public QNetworkAccessManager {
public:
    explicit TrustingSession(const QSslConfiguration& configuration)
        : m_configuration(configuration)
    {
        // A proxy of the machine's leads away from here.
        setProxy(QNetworkProxy::NoProxy);
    }

protected:
    QNetworkReply* createRequest(
        Operation operation, const QNetworkRequest& request, QIODevice* data) override
    {
        QNetworkRequest trusting{request};
        trusting.setSslConfiguration(m_configuration);
        return QNetworkAccessManager::createRequest(operation, trusting, data);
    }

private:
    QSslConfiguration m_configuration;
};

}  // namespace tidemark
