#include "tnv5/platform/tls.h"

#include "tnv5/platform/errors.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslKey>

namespace tnv5::platform {

namespace {

QByteArray contents(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw ESocketError(path + QStringLiteral(": ") + file.errorString());
    }
    return file.readAll();
}

QList<QSslCertificate> certificates(const QString& path)
{
    const QList<QSslCertificate> found = QSslCertificate::fromData(contents(path), QSsl::Pem);
    if (found.isEmpty()) {
        throw ESocketError(path + QStringLiteral(": there is no certificate in it"));
    }
    return found;
}

// Whatever its kind: the file says it only in words that differ.
QSslKey privateKey(const QString& path)
{
    const QByteArray pem = contents(path);
    for (const QSsl::KeyAlgorithm kind : {QSsl::Ec, QSsl::Rsa}) {
        const QSslKey key(pem, kind, QSsl::Pem, QSsl::PrivateKey);
        if (!key.isNull()) {
            return key;
        }
    }
    throw ESocketError(path + QStringLiteral(": there is no key in it that can be used"));
}

} // namespace

QSslConfiguration tlsConfiguration(const TTlsFiles& files)
{
    QSslConfiguration configuration;
    configuration.setProtocol(QSsl::TlsV1_2OrLater);
    configuration.setLocalCertificateChain(certificates(files.certificate));
    configuration.setPrivateKey(privateKey(files.key));
    configuration.setCaCertificates(certificates(files.authority)); // and none of the system's
    configuration.setPeerVerifyMode(QSslSocket::VerifyPeer);        // of a client, too
    return configuration;
}

} // namespace tnv5::platform
