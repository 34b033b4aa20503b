#include "tnv5/tools/certificates.h"

#include "support/text_printers.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

namespace tnv5::tools {

namespace {

using PCertificate = std::shared_ptr<X509>;

QByteArray read(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

class Certificates : public ::testing::Test
{
protected:
    QString path(const QString& name) const { return directory.filePath(name); }

    TCertificateOrder order(const QStringList& serverNames, const QStringList& clients = {}) const
    {
        return {directory.path(), serverNames, clients, 30};
    }

    QStringList names() const { return QDir(directory.path()).entryList(QDir::Files, QDir::Name); }

    PCertificate certificate(const QString& name) const
    {
        const QByteArray pem = read(path(name + QStringLiteral(".crt")));
        BIO* const buffer = BIO_new_mem_buf(pem.constData(), static_cast<int>(pem.size()));
        PCertificate found(PEM_read_bio_X509(buffer, nullptr, nullptr, nullptr), &X509_free);
        BIO_free(buffer);
        EXPECT_TRUE(found);
        return found;
    }

    // As a TLS library judges it. @return 0, or why not
    int verify(const QString& name, int purpose, const QString& authority = QStringLiteral("authority")) const
    {
        X509_STORE* const store = X509_STORE_new();
        X509_STORE_add_cert(store, certificate(authority).get());
        X509_STORE_CTX* const context = X509_STORE_CTX_new();
        const PCertificate checked = certificate(name);
        X509_STORE_CTX_init(context, store, checked.get(), nullptr);
        X509_STORE_CTX_set_purpose(context, purpose);
        X509_VERIFY_PARAM_set_flags(X509_STORE_CTX_get0_param(context), X509_V_FLAG_X509_STRICT);
        X509_verify_cert(context);
        const int error = X509_STORE_CTX_get_error(context);
        X509_STORE_CTX_free(context);
        X509_STORE_free(store);
        return error;
    }

    QString refusal(const TCertificateOrder& wanted) const
    {
        try {
            makeCertificates(wanted);
        } catch (const ECertificate& error) {
            return error.message();
        }
        return {};
    }

    QTemporaryDir directory;
};

TEST_F(Certificates, AreGoodForTheirUseAlone)
{
    const auto made = makeCertificates(order({"desk.club", "192.168.1.5", "fe80::5"}, {"bar", "door-2"}));
    ASSERT_EQ(made.size(), 4);
    EXPECT_EQ(made[0].name, QStringLiteral("authority"));
    EXPECT_EQ(made[1].name, QStringLiteral("server"));
    EXPECT_EQ(made[2].name, QStringLiteral("bar"));
    EXPECT_EQ(made[3].name, QStringLiteral("door-2"));
    for (const TMadeCertificate& each : made) {
        EXPECT_TRUE(each.isNew);
    }
    EXPECT_EQ(names(), (QStringList{"authority.crt", "authority.key", "bar.crt", "bar.key", "door-2.crt",
                                    "door-2.key", "server.crt", "server.key"}));

    EXPECT_EQ(verify("server", X509_PURPOSE_SSL_SERVER), X509_V_OK);
    EXPECT_EQ(verify("server", X509_PURPOSE_SSL_CLIENT), X509_V_ERR_INVALID_PURPOSE);
    EXPECT_EQ(verify("bar", X509_PURPOSE_SSL_CLIENT), X509_V_OK);
    EXPECT_EQ(verify("bar", X509_PURPOSE_SSL_SERVER), X509_V_ERR_INVALID_PURPOSE);
    EXPECT_EQ(verify("door-2", X509_PURPOSE_SSL_CLIENT), X509_V_OK);

    const PCertificate server = certificate("server");
    EXPECT_EQ(X509_get_version(server.get()), 2); // that is version 3
    EXPECT_NE(X509_check_ca(certificate("authority").get()), 0);
    EXPECT_EQ(X509_check_ca(server.get()), 0);
}

TEST_F(Certificates, ServerIsForItsNamesAlone)
{
    makeCertificates(order({"desk.club", "192.168.1.5", "fe80::5"}));
    const PCertificate server = certificate("server");
    const auto isHost = [&](const char* name) { return X509_check_host(server.get(), name, 0, 0, nullptr); };
    const auto isAddress = [&](const char* text) { return X509_check_ip_asc(server.get(), text, 0); };
    EXPECT_EQ(isHost("desk.club"), 1);
    EXPECT_EQ(isHost("DESK.club"), 1);
    EXPECT_EQ(isHost("bar.club"), 0);
    EXPECT_EQ(isAddress("192.168.1.5"), 1);
    EXPECT_EQ(isAddress("fe80::5"), 1);
    EXPECT_EQ(isAddress("192.168.1.6"), 0);
}

TEST_F(Certificates, KeysAreTheOwnersAndFit)
{
    makeCertificates(order({"desk"}, {"bar"}));
    const QFileDevice::Permissions others = QFileDevice::ReadGroup | QFileDevice::WriteGroup |
                                            QFileDevice::ReadOther | QFileDevice::WriteOther |
                                            QFileDevice::ExeOwner;
    for (const char* name : {"authority", "server", "bar"}) {
        const QString key = path(QString::fromLatin1(name) + ".key");
        EXPECT_FALSE(QFile::permissions(key) & others) << name;
        const QByteArray pem = read(key);
        BIO* const buffer = BIO_new_mem_buf(pem.constData(), static_cast<int>(pem.size()));
        EVP_PKEY* const found = PEM_read_bio_PrivateKey(buffer, nullptr, nullptr, nullptr);
        BIO_free(buffer);
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(EVP_PKEY_get_bits(found), 256);
        EXPECT_EQ(X509_check_private_key(certificate(QString::fromLatin1(name)).get(), found), 1);
        EVP_PKEY_free(found);
    }
}

TEST_F(Certificates, AreGoodAsLongAsAsked)
{
    const auto made = makeCertificates(order({"desk"}));
    const QDateTime now = QDateTime::currentDateTimeUtc();
    EXPECT_EQ(made[0].end.date(), now.addDays(60).date());
    EXPECT_EQ(made[1].end.date(), now.addDays(30).date());
    EXPECT_GT(X509_cmp_current_time(X509_get0_notAfter(certificate("server").get())), 0);
    EXPECT_LT(X509_cmp_current_time(X509_get0_notBefore(certificate("server").get())), 0);

    TCertificateOrder longer = order({}, {"bar"});
    longer.days = 1'000; // no longer than the authority
    EXPECT_EQ(makeCertificates(longer).last().end, made[0].end);
}

TEST_F(Certificates, AreAddedAndNeverOverwritten)
{
    makeCertificates(order({"desk"}, {"bar"}));
    std::map<QString, QByteArray> before;
    for (const QString& name : names()) {
        before[name] = read(path(name));
    }
    const auto made = makeCertificates(order({"desk"}, {"bar", "door"}));
    ASSERT_EQ(made.size(), 4);
    EXPECT_FALSE(made[0].isNew || made[1].isNew || made[2].isNew);
    EXPECT_TRUE(made[3].isNew);
    for (const auto& [name, bytes] : before) {
        EXPECT_EQ(read(path(name)), bytes) << name.toStdString();
    }
    EXPECT_EQ(verify("door", X509_PURPOSE_SSL_CLIENT), X509_V_OK);
    const auto serial = [this](const char* name) {
        return QByteArray(reinterpret_cast<const char*>(
                              ASN1_STRING_get0_data(X509_get_serialNumber(certificate(name).get()))),
                          16);
    };
    EXPECT_NE(serial("door"), serial("bar"));

    // a server of other names is another certificate
    EXPECT_EQ(refusal(order({"desk", "desk.club"})),
              path("server.crt") + " is there already and is not for 'desk.club'; move it and its key away "
                                   "to have them made anew");
}

// What was interrupted between key and certificate goes on with that key.
TEST_F(Certificates, AKeyWithoutACertificateGetsOne)
{
    makeCertificates(order({"desk"}, {"bar"}));
    const QByteArray key = read(path("bar.key"));
    QFile::remove(path("bar.crt"));
    EXPECT_TRUE(makeCertificates(order({}, {"bar"})).last().isNew);
    EXPECT_EQ(read(path("bar.key")), key);
    EXPECT_EQ(verify("bar", X509_PURPOSE_SSL_CLIENT), X509_V_OK);
}

// The authority's key is needed only to sign; a workstation's may have gone to the workstation.
TEST_F(Certificates, KeysMayBeElsewhere)
{
    makeCertificates(order({"desk"}, {"bar"}));
    QFile::remove(path("bar.key"));
    QFile::rename(path("authority.key"), path("elsewhere"));
    EXPECT_FALSE(makeCertificates(order({"desk"}, {"bar"})).last().isNew);
    EXPECT_EQ(refusal(order({}, {"door"})), path("authority.key") + ": No such file or directory");
    EXPECT_FALSE(QFile::exists(path("door.key"))); // nothing half made
}

TEST_F(Certificates, WhatDoesNotFitTogetherIsRefused)
{
    const QTemporaryDir elsewhere;
    TCertificateOrder other = order({"desk"}, {"bar", "door"});
    other.directory = elsewhere.path();
    makeCertificates(other);
    makeCertificates(order({}, {}));

    QFile::copy(elsewhere.filePath("bar.crt"), path("bar.crt"));
    EXPECT_EQ(refusal(order({}, {"bar"})), path("bar.crt") + " is not from " + path("authority.crt"));

    QFile::remove(path("authority.key"));
    QFile::copy(elsewhere.filePath("authority.key"), path("authority.key"));
    EXPECT_EQ(refusal(order({}, {"door"})),
              path("authority.key") + " is not the key of " + path("authority.crt"));

    QFile broken(path("broken.crt"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("nothing");
    broken.close();
    EXPECT_EQ(refusal(order({}, {"broken"})), path("broken.crt") + ": there is no certificate in it");
    QFile::remove(path("broken.crt"));
    QFile::remove(path("authority.key"));
    QFile::copy(elsewhere.filePath("authority.crt"), path("authority.key"));
    EXPECT_EQ(refusal(order({}, {"door"})),
              path("authority.key") + ": there is no key in it that can be used");
}

TEST_F(Certificates, NamesThatAreNone)
{
    for (const char* name : {"", "-x", "a b", "a,b", "1.2.3", "300.1.1.1", "desk..club", "desk.", "déjà"}) {
        EXPECT_EQ(refusal(order({QString::fromUtf8(name)})),
                  u'\'' + QString::fromUtf8(name) + "' is neither a host name nor an address");
    }
    for (const QString& name : {QString(), QStringLiteral("../x"), QStringLiteral(".x"),
                                QStringLiteral("a/b"), QStringLiteral("a b"), QString(64, u'x')}) {
        EXPECT_EQ(refusal(order({}, {name})),
                  u'\'' + name +
                      "' is no name for a workstation: up to 63 letters, digits, '.', '-' and '_'");
    }
    EXPECT_EQ(refusal(order({}, {"Server"})), QStringLiteral("'Server' cannot be the name of a workstation"));
    EXPECT_EQ(refusal(order({}, {"authority"})),
              QStringLiteral("'authority' cannot be the name of a workstation"));
    TCertificateOrder never = order({"desk"});
    never.days = 0;
    EXPECT_EQ(refusal(never), QStringLiteral("0 days are not between 1 and 36500"));
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(Certificates, DirectoryIsMade)
{
    TCertificateOrder deep = order({"desk"});
    deep.directory = path("a/b");
    makeCertificates(deep);
    EXPECT_TRUE(QFile::exists(path("a/b/server.crt")));
    EXPECT_EQ(
        tlsFiles(deep.directory, "server"),
        (platform::TTlsFiles{path("a/b/server.crt"), path("a/b/server.key"), path("a/b/authority.crt")}));
    QFile file(path("file"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    deep.directory = path("file/x");
    EXPECT_EQ(refusal(deep), path("file/x") + ": the directory cannot be made");
}

} // namespace

} // namespace tnv5::tools
