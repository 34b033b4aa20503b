#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <memory>
#include <openssl/x509.h>

/// Keys and X.509 certificates, by libcrypto.
namespace tnv5::tools {

struct TX509Free
{
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
using TX509Ptr = std::unique_ptr<X509, TX509Free>;
using TKeyPtr = std::unique_ptr<EVP_PKEY, TX509Free>;

enum class TCertificateUse { Authority, Server, Client };

struct TCertificateContent
{
    QString name; ///< of its holder, at most 64 ASCII characters
    TCertificateUse use = TCertificateUse::Client;
    QStringList alternatives; ///< host names and addresses of its holder
    QDateTime end;
};

/// Whether a text is an address, IPv4 or IPv6.
bool isAddress(const QString& text);

/// A new EC key on the curve P-256. @throws ECertificate when libcrypto refuses; so do all below
TKeyPtr makeKey();
/// A certificate for `key`, good from yesterday (clocks differ), signed with `signer`.
/// @param authority that of `signer`; nullptr: it signs itself
TX509Ptr makeCertificate(const TCertificateContent& content, EVP_PKEY& key, X509* authority,
                         EVP_PKEY& signer);

/// PEM.
QByteArray keyText(EVP_PKEY& key);
QByteArray certificateText(X509& certificate);
/// None for what is no key, or one with a passphrase.
TKeyPtr parseKey(const QByteArray& pem);
/// The first one in the text; none when there is none.
TX509Ptr parseCertificate(const QByteArray& pem);

QDateTime endOf(const X509& certificate);
bool isKeyOf(X509& certificate, EVP_PKEY& key);
bool isSignedBy(X509& certificate, X509& authority);
/// Whether it is for a host name or an address.
bool isFor(X509& certificate, const QString& hostName);

} // namespace tnv5::tools
