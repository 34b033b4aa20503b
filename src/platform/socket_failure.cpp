#include "tnv5/platform/socket_failure.h"

#include <QVariant>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace tnv5::platform {

namespace {

constexpr int kIdleS = 60;
constexpr int kAskAgainS = 10;
constexpr int kAskedInVain = 3;

int systemNumber(QAbstractSocket::SocketError error)
{
    switch (error) {
    case QAbstractSocket::ConnectionRefusedError:
        return ECONNREFUSED;
    case QAbstractSocket::RemoteHostClosedError:
        return ECONNRESET;
    case QAbstractSocket::HostNotFoundError:
        return EHOSTUNREACH;
    case QAbstractSocket::SocketAccessError:
        return EACCES;
    case QAbstractSocket::SocketResourceError:
        return EMFILE;
    case QAbstractSocket::SocketTimeoutError:
        return ETIMEDOUT;
    case QAbstractSocket::NetworkError:
        return ENETUNREACH;
    case QAbstractSocket::AddressInUseError:
        return EADDRINUSE;
    case QAbstractSocket::SocketAddressNotAvailableError:
        return EADDRNOTAVAIL;
    case QAbstractSocket::SslHandshakeFailedError:
    case QAbstractSocket::SslInternalError:
    case QAbstractSocket::SslInvalidUserDataError:
        return EPROTO;
    default:
        return EIO;
    }
}

} // namespace

TSocketFailure socketFailure(QAbstractSocket::SocketError error, const QString& text)
{
    return {systemNumber(error), text};
}

void watchLink(QAbstractSocket& socket)
{
    socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket.setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    const int descriptor = static_cast<int>(socket.socketDescriptor());
    const auto set = [descriptor](int option, int value) {
        ::setsockopt(descriptor, IPPROTO_TCP, option, &value, sizeof value);
    };
    set(TCP_KEEPIDLE, kIdleS);
    set(TCP_KEEPINTVL, kAskAgainS);
    set(TCP_KEEPCNT, kAskedInVain);
}

QHostAddress PlainAddress(const QHostAddress& address)
{
    bool isIPv4 = false;
    const quint32 number = address.toIPv4Address(&isIPv4);
    return isIPv4 ? QHostAddress(number) : address;
}

TSocketFailure tooMuchUnread()
{
    return {EMSGSIZE, QStringLiteral("More came than could be handled")};
}

} // namespace tnv5::platform
