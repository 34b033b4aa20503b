#include "tnv5/platform/sockets.h"

#include <utility>

namespace tnv5::platform {

namespace {

const QString kNoNetwork = QStringLiteral("This machine's sockets cannot be used yet");

class TNoServer final : public TServerSocket
{
public:
    bool Active() const override { return false; }
    QList<PServerConnection> Connections() const override { return {}; }

protected:
    void doOpen() override { throw ESocketError(kNoNetwork); }
    void doClose() override {}
};

class TNoClient final : public TClientSocket
{
public:
    bool Active() const override { return false; }
    void Send(const QByteArray& /*bytes*/) override { throw ESocketError(kNoNetwork); }

protected:
    bool connecting() const override { return false; }
    void doOpen() override { throw ESocketError(kNoNetwork); }
    void doClose() override {}
};

class TNoNetwork final : public TNetwork
{
public:
    std::unique_ptr<TServerSocket> makeServer() override { return std::make_unique<TNoServer>(); }
    std::unique_ptr<TClientSocket> makeClient() override { return std::make_unique<TNoClient>(); }
};

TNetwork* installed = nullptr;

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

void TServerSocket::fireRead(TServerConnection& connection, const QByteArray& bytes)
{
    callFromLoop(OnClientRead, connection, bytes);
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
    static TNoNetwork own;
    return installed != nullptr ? *installed : own;
}

TNetwork* TNetwork::install(TNetwork* network)
{
    return std::exchange(installed, network);
}

} // namespace tnv5::platform
