#include "tnv5/tools/x509.h"

#include "tnv5/tools/certificates.h"

#include <array>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

namespace tnv5::tools {

namespace {

constexpr long kVersion3 = 2;
constexpr int kSerialBytes = 16;
constexpr qint64 kEarlierS = 86'400;

struct TFree
{
    void operator()(BIO* buffer) const { BIO_free(buffer); }
    void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
    void operator()(GENERAL_NAMES* names) const { GENERAL_NAMES_free(names); }
    void operator()(ASN1_OCTET_STRING* text) const { ASN1_OCTET_STRING_free(text); }
};
template <class Object>
using TPtr = std::unique_ptr<Object, TFree>;

void require(bool done)
{
    if (!done) {
        std::array<char, 256> text{};
        ERR_error_string_n(ERR_get_error(), text.data(), text.size());
        ERR_clear_error();
        throw ECertificate(QStringLiteral("A certificate cannot be made: ") +
                           QString::fromLatin1(text.data()));
    }
}

TPtr<ASN1_OCTET_STRING> address(const QString& text)
{
    TPtr<ASN1_OCTET_STRING> bytes(a2i_IPADDRESS(text.toLatin1().constData()));
    ERR_clear_error(); // what is none is no error here
    return bytes;
}

void addExtension(X509& certificate, X509* authority, int kind, const char* value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, authority != nullptr ? authority : &certificate, &certificate, nullptr, nullptr,
                   0);
    const TPtr<X509_EXTENSION> extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value));
    require(extension && X509_add_ext(&certificate, extension.get(), -1) == 1);
}

void addAlternatives(X509& certificate, const QStringList& alternatives)
{
    const TPtr<GENERAL_NAMES> names(GENERAL_NAMES_new());
    require(names != nullptr);
    for (const QString& alternative : alternatives) {
        GENERAL_NAME* const name = GENERAL_NAME_new();
        require(name != nullptr && sk_GENERAL_NAME_push(names.get(), name) > 0);
        if (TPtr<ASN1_OCTET_STRING> bytes = address(alternative)) {
            GENERAL_NAME_set0_value(name, GEN_IPADD, bytes.release());
        } else {
            ASN1_IA5STRING* const text = ASN1_IA5STRING_new();
            require(text != nullptr);
            GENERAL_NAME_set0_value(name, GEN_DNS, text);
            require(ASN1_STRING_set(text, alternative.toLatin1().constData(), -1) == 1);
        }
    }
    require(X509_add1_ext_i2d(&certificate, NID_subject_alt_name, names.get(), 0, X509V3_ADD_DEFAULT) == 1);
}

void addUse(X509& certificate, X509* authority, TCertificateUse use)
{
    const bool isAuthority = use == TCertificateUse::Authority;
    const auto add = [&](int kind, const char* value) { addExtension(certificate, authority, kind, value); };
    add(NID_basic_constraints, isAuthority ? "critical,CA:TRUE,pathlen:0" : "critical,CA:FALSE");
    add(NID_key_usage, isAuthority ? "critical,keyCertSign,cRLSign" : "critical,digitalSignature");
    if (!isAuthority) {
        add(NID_ext_key_usage, use == TCertificateUse::Server ? "serverAuth" : "clientAuth");
    }
    add(NID_subject_key_identifier, "hash");
    add(NID_authority_key_identifier, "keyid:always");
}

void setSerial(X509& certificate)
{
    std::array<unsigned char, kSerialBytes> bytes{};
    require(RAND_bytes(bytes.data(), kSerialBytes) == 1);
    bytes[0] = static_cast<unsigned char>((bytes[0] & 0x3f) | 0x40); // positive, and none of them short
    BIGNUM* const number = BN_bin2bn(bytes.data(), kSerialBytes, nullptr);
    require(number != nullptr);
    const bool done = BN_to_ASN1_INTEGER(number, X509_get_serialNumber(&certificate)) != nullptr;
    BN_free(number);
    require(done);
}

void setName(X509& certificate, const QString& name)
{
    require(X509_NAME_add_entry_by_txt(X509_get_subject_name(&certificate), "CN", MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>(name.toUtf8().constData()), -1,
                                       -1, 0) == 1);
}

void setTimes(X509& certificate, const QDateTime& end)
{
    const qint64 begin = QDateTime::currentSecsSinceEpoch() - kEarlierS;
    require(ASN1_TIME_set(X509_getm_notBefore(&certificate), begin) != nullptr);
    require(ASN1_TIME_set(X509_getm_notAfter(&certificate), end.toSecsSinceEpoch()) != nullptr);
}

/// What a function writes into a buffer.
template <class Write>
QByteArray written(Write write)
{
    const TPtr<BIO> buffer(BIO_new(BIO_s_mem()));
    require(buffer && write(buffer.get()) == 1);
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(buffer.get(), &bytes);
    return {bytes, static_cast<qsizetype>(size)};
}

TPtr<BIO> reader(const QByteArray& bytes)
{
    TPtr<BIO> buffer(BIO_new_mem_buf(bytes.constData(), static_cast<int>(bytes.size())));
    require(buffer != nullptr);
    return buffer;
}

/// No passphrase, and nobody is asked for one.
int noPassphrase(char* /*text*/, int /*size*/, int /*writing*/, void* /*data*/)
{
    return -1;
}

} // namespace

bool isAddress(const QString& text)
{
    return address(text) != nullptr;
}

TKeyPtr makeKey()
{
    TKeyPtr key(EVP_EC_gen("P-256"));
    require(key != nullptr);
    return key;
}

TX509Ptr makeCertificate(const TCertificateContent& content, EVP_PKEY& key, X509* authority, EVP_PKEY& signer)
{
    TX509Ptr certificate(X509_new());
    require(certificate && X509_set_version(certificate.get(), kVersion3) == 1);
    X509& made = *certificate;
    setSerial(made);
    setName(made, content.name);
    const X509* const issuer = authority != nullptr ? authority : &made;
    require(X509_set_issuer_name(&made, X509_get_subject_name(issuer)) == 1);
    setTimes(made, content.end);
    require(X509_set_pubkey(&made, &key) == 1);
    addUse(made, authority, content.use);
    if (!content.alternatives.isEmpty()) {
        addAlternatives(made, content.alternatives);
    }
    require(X509_sign(&made, &signer, EVP_sha256()) > 0);
    return certificate;
}

QByteArray keyText(EVP_PKEY& key)
{
    return written([&](BIO* to) {
        return PEM_write_bio_PKCS8PrivateKey(to, &key, nullptr, nullptr, 0, nullptr, nullptr);
    });
}

QByteArray certificateText(X509& certificate)
{
    return written([&](BIO* to) { return PEM_write_bio_X509(to, &certificate); });
}

TKeyPtr parseKey(const QByteArray& pem)
{
    TKeyPtr key(PEM_read_bio_PrivateKey(reader(pem).get(), nullptr, &noPassphrase, nullptr));
    ERR_clear_error();
    return key;
}

TX509Ptr parseCertificate(const QByteArray& pem)
{
    TX509Ptr certificate(PEM_read_bio_X509(reader(pem).get(), nullptr, &noPassphrase, nullptr));
    ERR_clear_error();
    return certificate;
}

QDateTime endOf(const X509& certificate)
{
    tm parts{};
    require(ASN1_TIME_to_tm(X509_get0_notAfter(&certificate), &parts) == 1);
    return QDateTime::fromSecsSinceEpoch(timegm(&parts), Qt::UTC);
}

bool isKeyOf(X509& certificate, EVP_PKEY& key)
{
    const bool same = X509_check_private_key(&certificate, &key) == 1;
    ERR_clear_error();
    return same;
}

bool isSignedBy(X509& certificate, X509& authority)
{
    const bool same =
        X509_NAME_cmp(X509_get_issuer_name(&certificate), X509_get_subject_name(&authority)) == 0 &&
        X509_verify(&certificate, X509_get0_pubkey(&authority)) == 1;
    ERR_clear_error();
    return same;
}

bool isFor(X509& certificate, const QString& hostName)
{
    const QByteArray text = hostName.toLatin1();
    return isAddress(hostName) ? X509_check_ip_asc(&certificate, text.constData(), 0) == 1
                               : X509_check_host(&certificate, text.constData(), 0, 0, nullptr) == 1;
}

} // namespace tnv5::tools
