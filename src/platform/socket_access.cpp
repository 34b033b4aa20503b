#include "tnv5/platform/socket_access.h"

#include "tnv5/platform/errors.h"
#include "tnv5/platform/socket_failure.h"

#include <QHostAddress>

namespace tnv5::platform {

namespace {

std::pair<QHostAddress, int> parseNetwork(const QString& text)
{
    const std::pair<QHostAddress, int> network = QHostAddress::parseSubnet(text);
    // parseSubnet takes "10" and "10.0.0." for networks, too
    const QString address = text.section(u'/', 0, 0);
    const bool whole = address.contains(u':') || address.count(u'.') == 3;
    if (network.second < 0 || !whole || QHostAddress(address).isNull()) {
        throw EConvertError(u'\'' + text + QStringLiteral("' is not an address or a network"));
    }
    return network;
}

} // namespace

TAdmission admission(const TServerAccess& access, const QString& address)
{
    if (!access.peers) {
        return TAdmission::Feeds;
    }
    const QHostAddress peer = PlainAddress(QHostAddress(address));
    for (const TPeerRule& rule : *access.peers) {
        const auto [network, bits] = parseNetwork(rule.network);
        if (peer.isInSubnet(network, bits)) {
            return rule.mayFeed ? TAdmission::Feeds : TAdmission::Watches;
        }
    }
    return TAdmission::Refused;
}

void check(const TServerAccess& access)
{
    if (QHostAddress(access.listenAddress).isNull()) {
        throw EConvertError(u'\'' + access.listenAddress + QStringLiteral("' is not an address"));
    }
    if (access.peers) {
        for (const TPeerRule& rule : *access.peers) {
            parseNetwork(rule.network);
        }
    }
    if (access.handshakeMs < 1) {
        throw EConvertError(QStringLiteral("%1 ms are no limit").arg(access.handshakeMs));
    }
}

} // namespace tnv5::platform
