#include "TestAuthority.h"

#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>

#include <stdexcept>

namespace tidemark {

namespace {

QByteArray content(const TemporaryFolder& folder, const char* name)
{
    return QByteArray::fromStdString(folder.read(name));
}

QStringList newKey(const QString& file)
{
    return {QStringLiteral("-newkey"), QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
        QStringLiteral("ec_paramgen_curve:P-256"), QStringLiteral("-nodes"),
        QStringLiteral("-keyout"), file};
}

}  // namespace

TestAuthority::TestAuthority()
{
    m_folder.write("authority.cnf",
        "[req]\ndistinguished_name = name\nx509_extensions = authority\nprompt = no\n"
        "[name]\nCN = Authority of the tests\n"
        "[authority]\nbasicConstraints = critical, CA:TRUE\nkeyUsage = critical, keyCertSign\n"
        "subjectKeyIdentifier = hash\n");
    m_folder.write("server.cnf",
        "[req]\ndistinguished_name = name\nprompt = no\n"
        "[name]\nCN = localhost\n"
        "[server]\nsubjectAltName = DNS:localhost, IP:127.0.0.1\nextendedKeyUsage = serverAuth\n"
        "subjectKeyIdentifier = hash\nauthorityKeyIdentifier = keyid\n");
    const QStringList days{QStringLiteral("-days"), QStringLiteral("2")};
    const auto with = [](const char* option, const char* value) {
        return QStringList{QString::fromLatin1(option), QString::fromLatin1(value)};
    };
    run(QStringList{QStringLiteral("req"), QStringLiteral("-x509")}
        + newKey(QStringLiteral("authority.key")) + with("-config", "authority.cnf")
        + with("-out", "authority.pem") + days);
    run(QStringList{QStringLiteral("req")} + newKey(QStringLiteral("server.key"))
        + with("-config", "server.cnf") + with("-out", "server.csr"));
    run(QStringList{QStringLiteral("x509"), QStringLiteral("-req")} + with("-in", "server.csr")
        + with("-CA", "authority.pem") + with("-CAkey", "authority.key") + with("-set_serial", "1")
        + with("-extfile", "server.cnf") + with("-extensions", "server")
        + with("-out", "server.pem") + days);
}

QSslConfiguration TestAuthority::serverConfiguration() const
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate{content(m_folder, "server.pem")});
    configuration.setPrivateKey(QSslKey{content(m_folder, "server.key"), QSsl::Ec});
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

QSslConfiguration TestAuthority::clientConfiguration() const
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates({QSslCertificate{content(m_folder, "authority.pem")}});
    return configuration;
}

void TestAuthority::run(const QStringList& arguments) const
{
    QProcess openssl;
    openssl.setWorkingDirectory(QString::fromStdString(m_folder.path()));
    openssl.start(QStringLiteral("openssl"), arguments);
    const bool hasEnded = openssl.waitForFinished();
    if (!hasEnded || openssl.exitStatus() != QProcess::NormalExit || openssl.exitCode() != 0)
        throw std::runtime_error{"openssl " + arguments.join(QLatin1Char{' '}).toStdString() + ": "
            + openssl.readAllStandardError().toStdString()};
}

}  // namespace tidemark
