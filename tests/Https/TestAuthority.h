#pragma once

#include "TemporaryFolder.h"

#include <QSslConfiguration>

namespace tidemark {

/// A certificate authority that nobody trusts by himself, made new by openssl(1), with one certificate for
/// "localhost" and 127.0.0.1. Throws runtime_error when that program fails.
class TestAuthority {
public:
    TestAuthority();

    /// For a server that has the certificate.
    QSslConfiguration serverConfiguration() const;

    /// For a client that trusts this authority and no other.
    QSslConfiguration clientConfiguration() const;

    /// The authority's own certificate in PEM.
    FileURL certificate() const { return m_folder.url("authority.pem"); }

private:
    void run(const QStringList& arguments) const;

    TemporaryFolder m_folder;
};

}  // namespace tidemark
