#pragma once

#include "tnv5/platform/sockets.h"

#include <QAbstractSocket>
#include <QHostAddress>

namespace tnv5::platform {

/// The highest port there is.
inline constexpr int kMaxPort = 65'535;

/// What a socket says, with the operating system's number.
TSocketFailure socketFailure(QAbstractSocket::SocketError error, const QString& text);

/// A link that nobody can use any more is noticed without traffic: its end is asked after a minute of
/// silence.
void watchLink(QAbstractSocket& socket);

/// An IPv4 address as such, also where it came in the form that IPv6 sockets have for it.
QHostAddress PlainAddress(const QHostAddress& address);

/// Why a peer that sends faster than it is heard was dropped.
TSocketFailure tooMuchUnread();

} // namespace tnv5::platform
