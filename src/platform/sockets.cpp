#include "tnv5/platform/sockets.h"

#include "tnv5/platform/machine_network.h"

#include <utility>

namespace tnv5::platform {

namespace {

const QString kOnlyWatches = QStringLiteral("it only watches and tried to send lines");

TNetwork* installedNetwork = nullptr;

// Runs a handler from the event loop; it may have destroyed whoever called it.
template <class Event, class... Args>
void callFromLoop(const Event& event, Args&... args)
{
    if (const Event handler = event) { // it may replace itself while it runs
        guarded([&] { handler(args...); });
    }
}

template <class Call>
void callWithFailure(TSocketFailure& failure, Call&& call)
{
    guarded([&] {
        call();
        if (failure.code != 0) {
            throw ESocketError(failure.text);
        }
    });
}

} // namespace

void TServerSocket::SetAccess(const TServerAccess& Value)
{
    check(Value);
    FAccess = Value;
}

void TServerSocket::Open()
{
    if (!Active()) {
        doOpen();
    }
}

void TServerSocket::Close()
{
    if (Active()) {
        doClose();
    }
}

void TServerSocket::fire(const std::function<void(TServerConnection&)>& event, TServerConnection& connection)
{
    callFromLoop(event, connection);
}

bool TServerSocket::admit(TServerConnection& connection)
{
    const TAdmission allowed = admission(FAccess, connection.RemoteAddress());
    connection.FMayFeed = allowed == TAdmission::Feeds;
    if (allowed == TAdmission::Refused) {
        fireRefused(connection.RemoteAddress(), kNotOnList);
    }
    return allowed != TAdmission::Refused;
}

void TServerSocket::fireSendFailure(TServerConnection& connection, const QString& message)
{
    callFromLoop(OnSendFailure, connection, message);
}

void TServerSocket::fireRefused(const QString& address, const QString& reason)
{
    callFromLoop(OnRefused, address, reason);
}

void TServerSocket::fireRead(TServerConnection& connection, const QByteArray& bytes)
{
    if (connection.MayFeed()) {
        callFromLoop(OnClientRead, connection, bytes);
    } else if (!std::exchange(connection.FToldOf, true)) {
        fireRefused(connection.RemoteAddress(), kOnlyWatches);
    }
}

void TServerSocket::fireError(TServerConnection& connection, TSocketFailure failure)
{
    callWithFailure(failure, [&, handler = OnClientError] {
        if (handler) {
            handler(connection, failure);
        }
    });
}

void TClientSocket::SetServer(const QString& Host, int Port, bool resolve)
{
    FHost = Host;
    FPort = Port;
    FResolve = resolve;
}

void TClientSocket::Open()
{
    if (!Active() && !connecting()) {
        doOpen();
    }
}

void TClientSocket::Close()
{
    if (Active() || connecting()) {
        doClose();
    }
}

void TClientSocket::fire(const std::function<void()>& event)
{
    callFromLoop(event);
}

void TClientSocket::fireRead(const QByteArray& bytes)
{
    callFromLoop(OnRead, bytes);
}

void TClientSocket::fireError(TSocketFailure failure)
{
    callWithFailure(failure, [&, handler = OnError] {
        if (handler) {
            handler(failure);
        }
    });
}

TNetwork& TNetwork::current()
{
    static TMachineNetwork own;
    return installedNetwork != nullptr ? *installedNetwork : own;
}

TNetwork* TNetwork::install(TNetwork* network)
{
    return std::exchange(installedNetwork, network);
}

} // namespace tnv5::platform
