#include "model/kit/model_sockets.h"

#include "model/kit/model_world.h"

// Every program has them, so that no branch is counted here.

namespace tnv5::modelkit {

namespace {

/// A handler is told of an error; what it leaves is raised.
void tell(TModelWorld& world, const std::function<void(int& code)>& handler, int code, const QString& text)
{
    world.guarded([&] {
        handler(code);
        if (code != 0) {
            throw TFailure{text};
        }
    });
}

} // namespace

void TModelServer::Open()
{
    OnOpening();
    FActive = true;
    OnOpened();
}

void TModelServer::Close()
{
    FActive = false;
    for (TVisitor& visitor : FVisitors) {
        visitor.active = false;
    }
}

std::vector<int> TModelServer::Connections() const
{
    std::vector<int> numbers;
    for (int i = 0; i < int(FVisitors.size()); ++i) {
        if (isActive(i)) {
            numbers.push_back(i);
        }
    }
    return numbers;
}

void TModelServer::send(int client, const QByteArray& bytes)
{
    if (const auto failure = at(client).failure) {
        throw TFailure{*failure};
    }
    OnSent(client, bytes);
}

int TModelServer::join(const QString& address)
{
    const int number = int(FVisitors.size());
    FVisitors.push_back({address, true, std::nullopt});
    FWorld.guarded([&] { OnClientConnect(address); });
    return number;
}

void TModelServer::feed(int client, const QByteArray& bytes)
{
    if (isActive(client)) {
        FWorld.guarded([&] { OnClientRead(bytes); });
    }
}

void TModelServer::leave(int client)
{
    if (std::exchange(at(client).active, false)) {
        FWorld.guarded([&, address = at(client).address] { OnClientDisconnect(address); });
    }
}

void TModelServer::raiseError(int /*client*/, int code, const QString& text)
{
    tell(FWorld, OnClientError, code, text);
}

void TModelClient::SetServer(const QString& host, int port, bool resolve)
{
    FHost = host;
    FPort = port;
    FResolves = resolve;
}

void TModelClient::Open()
{
    if (!FActive && !FConnecting) {
        OnOpening();
        FConnecting = Slow;
        FActive = !Slow;
    }
}

void TModelClient::Close()
{
    FActive = false;
    FConnecting = false;
}

void TModelClient::Send(const QByteArray& bytes) const
{
    OnSent(bytes);
}

void TModelClient::feed(const QByteArray& bytes)
{
    if (FActive) {
        FWorld.guarded([&] { OnRead(bytes); });
    }
}

void TModelClient::accept()
{
    if (std::exchange(FConnecting, false)) {
        FActive = true;
    }
}

void TModelClient::raiseError(int code, const QString& text)
{
    Close();
    tell(FWorld, OnError, code, text);
}

} // namespace tnv5::modelkit
