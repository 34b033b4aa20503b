#include "tnv5/tools/certificates.h"

#include "tnv5/common/read_up_to.h"
#include "tnv5/tools/x509.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSaveFile>
#include <algorithm>
#include <optional>

namespace tnv5::tools {

namespace {

constexpr qsizetype kLongestName = 63; // of a part of a host name; a certificate's own limit is 64
constexpr qint64 kLongestFile = 1'048'576;
constexpr QFileDevice::Permissions kOwnerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

const QString kAuthority = QStringLiteral("authority");
const QString kServer = QStringLiteral("server");

/// Host names as they stand in certificates; the last part of one is no number, that would be an address.
bool isHostName(const QString& text)
{
    static const QRegularExpression form(
        QStringLiteral(R"(\A(?=.{1,253}\z)([A-Za-z0-9_]([A-Za-z0-9_-]{0,61}[A-Za-z0-9_])?\.)*)"
                       R"((?![0-9]+\z)[A-Za-z0-9_]([A-Za-z0-9_-]{0,61}[A-Za-z0-9_])?\z)"));
    return form.match(text).hasMatch();
}

void checkNames(const TCertificateOrder& order)
{
    for (const QString& name : order.serverNames) {
        if (!isAddress(name) && !isHostName(name)) {
            throw ECertificate(u'\'' + name + QStringLiteral("' is neither a host name nor an address"));
        }
    }
    static const QRegularExpression form(QStringLiteral(R"(\A[A-Za-z0-9_][A-Za-z0-9._-]*\z)"));
    for (const QString& name : order.clients) {
        if (name.size() > kLongestName || !form.match(name).hasMatch()) {
            throw ECertificate(
                u'\'' + name +
                QStringLiteral("' is no name for a workstation: up to 63 letters, digits, '.', '-' and '_'"));
        }
        if (name.compare(kAuthority, Qt::CaseInsensitive) == 0 ||
            name.compare(kServer, Qt::CaseInsensitive) == 0) {
            throw ECertificate(u'\'' + name + QStringLiteral("' cannot be the name of a workstation"));
        }
    }
    if (order.days < 1 || order.days > TCertificateOrder::kMaxDays) {
        throw ECertificate(QStringLiteral("%1 days are not between 1 and %2")
                               .arg(order.days)
                               .arg(TCertificateOrder::kMaxDays));
    }
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw ECertificate(path + QStringLiteral(": ") + file.errorString());
    }
    return common::ReadUpTo(file, kLongestFile);
}

/// Writes a file that is not there yet, whole or not at all.
void write(const QString& path, const QByteArray& bytes, bool secret)
{
    QSaveFile file(path);
    const bool done = file.open(QIODevice::WriteOnly) &&
                      (!secret || file.setPermissions(kOwnerOnly)) && // before there is anything to read
                      file.write(bytes) == bytes.size() && file.commit();
    if (!done) {
        throw ECertificate(path + QStringLiteral(": ") + file.errorString());
    }
}

/// The certificates of one directory.
class TClub
{
public:
    explicit TClub(const TCertificateOrder& order) : FOrder(order), FDirectory(order.directory)
    {
        if (!FDirectory.exists() && !(QDir().mkpath(order.directory) &&
                                      QFile::setPermissions(order.directory, kOwnerOnly | QFile::ExeOwner))) {
            throw ECertificate(order.directory + QStringLiteral(": the directory cannot be made"));
        }
    }

    QList<TMadeCertificate> make()
    {
        FMade.append(authority());
        if (!FOrder.serverNames.isEmpty()) {
            FMade.append(server());
        }
        for (const QString& name : FOrder.clients) {
            TCertificateContent content;
            content.name = name;
            content.use = TCertificateUse::Client;
            if (isHostName(name)) {
                content.alternatives << name;
            }
            FMade.append(signedByAuthority(name, content));
        }
        return std::move(FMade);
    }

private:
    QString path(const QString& name, const char* ending) const
    {
        return FDirectory.filePath(name + QLatin1String(ending));
    }
    QString certificatePath(const QString& name) const { return path(name, ".crt"); }
    QString keyPath(const QString& name) const { return path(name, ".key"); }

    TKeyPtr readKey(const QString& name) const
    {
        if (TKeyPtr key = parseKey(contents(keyPath(name)))) {
            return key;
        }
        throw ECertificate(keyPath(name) + QStringLiteral(": there is no key in it that can be used"));
    }

    TX509Ptr readCertificate(const QString& name) const
    {
        if (TX509Ptr certificate = parseCertificate(contents(certificatePath(name)))) {
            return certificate;
        }
        throw ECertificate(certificatePath(name) + QStringLiteral(": there is no certificate in it"));
    }

    bool has(const QString& name) const { return QFile::exists(certificatePath(name)); }

    /// A key that is there is used: what was interrupted goes on.
    TKeyPtr someKey(const QString& name) const
    {
        if (QFile::exists(keyPath(name))) {
            return readKey(name);
        }
        TKeyPtr key = makeKey();
        write(keyPath(name), keyText(*key), true);
        return key;
    }

    TMadeCertificate authority()
    {
        if (has(kAuthority)) {
            FAuthority = readCertificate(kAuthority);
            return {kAuthority, false, endOf(*FAuthority)};
        }
        FAuthorityKey = someKey(kAuthority);
        TCertificateContent content;
        content.name = QStringLiteral("Authority of the club's stations");
        content.use = TCertificateUse::Authority;
        content.end = QDateTime::currentDateTimeUtc().addDays(2LL * FOrder.days);
        FAuthority = makeCertificate(content, *FAuthorityKey, nullptr, *FAuthorityKey);
        write(certificatePath(kAuthority), certificateText(*FAuthority), false);
        return {kAuthority, true, endOf(*FAuthority)};
    }

    TMadeCertificate server()
    {
        if (has(kServer)) {
            expectNames(*readCertificate(kServer));
        }
        TCertificateContent content;
        content.name = FOrder.serverNames.first().left(kLongestName);
        content.use = TCertificateUse::Server;
        content.alternatives = FOrder.serverNames;
        return signedByAuthority(kServer, content);
    }

    void expectNames(X509& certificate) const
    {
        for (const QString& name : FOrder.serverNames) {
            if (!isFor(certificate, name)) {
                throw ECertificate(
                    QStringLiteral("%1 is there already and is not for '%2'; move it and its key away to "
                                   "have them made anew")
                        .arg(certificatePath(kServer), name));
            }
        }
    }

    TMadeCertificate signedByAuthority(const QString& name, TCertificateContent content)
    {
        if (has(name)) {
            const TX509Ptr certificate = readCertificate(name);
            if (!isSignedBy(*certificate, *FAuthority)) {
                throw ECertificate(QStringLiteral("%1 is not from %2")
                                       .arg(certificatePath(name), certificatePath(kAuthority)));
            }
            return {name, false, endOf(*certificate)};
        }
        const QDateTime now = QDateTime::currentDateTimeUtc();
        content.end = std::min(now.addDays(FOrder.days), endOf(*FAuthority));
        if (content.end <= now) {
            throw ECertificate(certificatePath(kAuthority) + QStringLiteral(" is good no more"));
        }
        EVP_PKEY& signer = authorityKey();
        const TKeyPtr key = someKey(name);
        const TX509Ptr certificate = makeCertificate(content, *key, FAuthority.get(), signer);
        write(certificatePath(name), certificateText(*certificate), false);
        return {name, true, endOf(*certificate)};
    }

    /// Needed only when something is to be signed: it may be kept elsewhere.
    EVP_PKEY& authorityKey()
    {
        if (!FAuthorityKey) {
            FAuthorityKey = readKey(kAuthority);
            if (!isKeyOf(*FAuthority, *FAuthorityKey)) {
                throw ECertificate(QStringLiteral("%1 is not the key of %2")
                                       .arg(keyPath(kAuthority), certificatePath(kAuthority)));
            }
        }
        return *FAuthorityKey;
    }

    const TCertificateOrder& FOrder;
    const QDir FDirectory;
    TX509Ptr FAuthority;
    TKeyPtr FAuthorityKey;
    QList<TMadeCertificate> FMade;
};

} // namespace

QList<TMadeCertificate> makeCertificates(const TCertificateOrder& order)
{
    checkNames(order);
    return TClub(order).make();
}

platform::TTlsFiles tlsFiles(const QString& directory, const QString& name)
{
    const QDir folder(directory);
    return {folder.filePath(name + QStringLiteral(".crt")), folder.filePath(name + QStringLiteral(".key")),
            folder.filePath(kAuthority + QStringLiteral(".crt"))};
}

} // namespace tnv5::tools
