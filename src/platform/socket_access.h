#pragma once

#include <QList>
#include <QString>
#include <optional>

/// Who may connect to a server socket, and how a link is protected.
namespace tnv5::platform {

/// Files of one end of a protected link, all of them PEM; `tnv5 cert` makes them.
struct TTlsFiles
{
    QString certificate; ///< this end's, and those between it and the authority's
    QString key;         ///< its key, without a passphrase
    QString authority;   ///< certificate that the other end's must come from

    bool operator==(const TTlsFiles&) const = default;
};

/// Peers that a server lets in.
struct TPeerRule
{
    QString network;      ///< "192.168.1.20", "192.168.1.0/24", "fe80::/64"
    bool mayFeed = false; ///< may send lines, and so open gates; else it only watches

    bool operator==(const TPeerRule&) const = default;
};

/// Whom a server socket lets in. As it is: every program of this machine, which may also feed.
struct TServerAccess
{
    /// Address to listen on: of this machine alone, unless another one is named. "0.0.0.0" is all of IPv4,
    /// "::" all there are.
    QString listenAddress = QStringLiteral("127.0.0.1");
    /// Whom it lets in; the first rule that fits holds, nobody else comes in. Without a list all that reach
    /// the address come in and may feed.
    std::optional<QList<TPeerRule>> peers;
    /// With them only clients come in whose certificate comes from the authority, and the link is encrypted.
    std::optional<TTlsFiles> tls;
    /// Milliseconds that a client has for the beginning of an encrypted link, before it is dropped; 1 or
    /// more.
    int handshakeMs = 10'000;

    bool operator==(const TServerAccess&) const = default;
};

/// Why someone is not let in whom no rule fits.
inline const QString kNotOnList = QStringLiteral("it is not on the list of peers");

enum class TAdmission { Refused, Watches, Feeds };

/// What the rules say of an address. @throws EConvertError for a network that is none
TAdmission admission(const TServerAccess& access, const QString& address);

/// @throws EConvertError when a network of the list is none, the listening address is no address, or the
/// limit none
void check(const TServerAccess& access);

} // namespace tnv5::platform
