#include "tnv5/testing/memory_network.h"

#include <algorithm>

namespace tnv5::testkit {

using platform::ESocketError;

namespace {

template <class Feed>
void inPieces(const QByteArray& bytes, qsizetype size, Feed feed)
{
    for (qsizetype at = 0; at < bytes.size(); at += size) {
        feed(bytes.mid(at, size));
    }
}

} // namespace

class TMemoryServer::TConnection final : public platform::TServerConnection
{
public:
    TConnection(TMemoryServer& server, int number, const QString& address)
        : FServer(&server), FNumber(number), FAddress(address)
    {
    }

    QString RemoteAddress() const override { return FAddress; }
    bool Active() const override { return active; }
    void send(const QByteArray& bytes)
    {
        if (failure) {
            throw ESocketError(*failure);
        }
        sent.append(bytes);
        if (const auto hook = FServer->OnSent) {
            hook(FNumber, bytes);
        }
    }

    bool active = true;
    std::optional<QString> failure;
    QByteArrayList sent;

private:
    TMemoryServer* FServer; // an active connection's server exists
    int FNumber;
    QString FAddress;
};

TMemoryServer::TMemoryServer(TMemoryNetwork& network) : FNetwork(&network)
{
    network.FServers.push_back(this);
}

TMemoryServer::~TMemoryServer()
{
    for (const auto& client : FClients) {
        client->active = false;
    }
    std::erase(FNetwork->FServers, this);
}

QList<platform::PServerConnection> TMemoryServer::Connections() const
{
    QList<platform::PServerConnection> active;
    for (const auto& client : FClients) {
        if (client->active) {
            active.append(client);
        }
    }
    return active;
}

// The hook and the handler may close the server, or destroy it.
void TMemoryServer::SendToAll(const QByteArray& bytes, bool newestFirst)
{
    auto clients = FClients;
    if (newestFirst) {
        std::reverse(clients.begin(), clients.end());
    }
    const std::weak_ptr<bool> alive = FAlive;
    for (const auto& client : clients) {
        if (!client->active) {
            continue;
        }
        try {
            client->send(bytes);
        } catch (...) {
            if (alive.expired()) {
                throw;
            }
            const auto handler = OnSendFailure;
            if (handler) {
                handler(*client, platform::exceptionMessage());
            }
        }
    }
}

std::shared_ptr<TMemoryServer::TConnection> TMemoryServer::at(int client) const
{
    return FClients.at(static_cast<std::size_t>(client));
}

int TMemoryServer::join(const QString& address)
{
    if (!FActive) {
        throw ESocketError(QStringLiteral("Nobody listens"));
    }
    const int number = static_cast<int>(FClients.size());
    const auto client = FClients.emplace_back(std::make_shared<TConnection>(*this, number, address));
    client->active = admit(*client);
    if (client->active) {
        fire(OnClientConnect, *client);
    }
    return number;
}

void TMemoryServer::feed(int client, const QByteArray& bytes)
{
    if (const auto connection = at(client); connection->active) {
        fireRead(*connection, bytes);
    }
}

void TMemoryServer::feedInPieces(int client, const QByteArray& bytes, qsizetype size)
{
    inPieces(bytes, size, [&](const QByteArray& piece) { feed(client, piece); });
}

void TMemoryServer::leave(int client)
{
    const auto connection = at(client);
    if (std::exchange(connection->active, false)) {
        fire(OnClientDisconnect, *connection);
    }
}

void TMemoryServer::raiseError(int client, int code, const QString& text)
{
    const auto connection = at(client);
    fireError(*connection, {code, text});
}

QByteArrayList TMemoryServer::takeSent(int client)
{
    return std::exchange(at(client)->sent, {});
}

void TMemoryServer::failSends(int client, const std::optional<QString>& text)
{
    at(client)->failure = text;
}

void TMemoryServer::doOpen()
{
    if (const auto before = OnOpening) {
        before();
    }
    if (OpenFailure) {
        throw ESocketError(*OpenFailure);
    }
    FActive = true;
    if (const auto after = OnOpened) {
        after();
    }
}

void TMemoryServer::doClose()
{
    FActive = false;
    for (const auto& client : FClients) {
        client->active = false;
    }
}

TMemoryClient::TMemoryClient(TMemoryNetwork& network) : FNetwork(&network)
{
    network.FClients.push_back(this);
}

TMemoryClient::~TMemoryClient()
{
    std::erase(FNetwork->FClients, this);
}

void TMemoryClient::Send(const QByteArray& bytes)
{
    if (!FActive) {
        throw ESocketError(QStringLiteral("Not connected"));
    }
    if (SendFailure) {
        throw ESocketError(*SendFailure);
    }
    FSent.append(bytes);
    if (const auto hook = OnSent) {
        hook(bytes);
    }
}

void TMemoryClient::feed(const QByteArray& bytes)
{
    if (FActive) {
        fireRead(bytes);
    }
}

void TMemoryClient::feedInPieces(const QByteArray& bytes, qsizetype size)
{
    inPieces(bytes, size, [this](const QByteArray& piece) { feed(piece); });
}

void TMemoryClient::accept()
{
    if (std::exchange(FConnecting, false)) {
        FActive = true;
        fire(OnConnect);
    }
}

void TMemoryClient::raiseError(int code, const QString& text)
{
    FConnecting = false;
    FActive = false;
    fireError({code, text});
}

void TMemoryClient::hangUp()
{
    if (std::exchange(FActive, false)) {
        fire(OnDisconnect);
    }
}

QByteArrayList TMemoryClient::takeSent()
{
    return std::exchange(FSent, {});
}

void TMemoryClient::doOpen()
{
    ++Attempts;
    if (const auto before = OnOpening) {
        before();
    }
    if (OpenFailure) {
        throw ESocketError(*OpenFailure);
    }
    FConnecting = Slow;
    FActive = !Slow;
}

void TMemoryClient::doClose()
{
    FConnecting = false;
    FActive = false;
}

TMemoryNetwork::TMemoryNetwork() : FPrevious(install(this)) {}

TMemoryNetwork::~TMemoryNetwork()
{
    install(FPrevious);
}

std::unique_ptr<platform::TServerSocket> TMemoryNetwork::makeServer()
{
    return std::make_unique<TMemoryServer>(*this);
}

std::unique_ptr<platform::TClientSocket> TMemoryNetwork::makeClient()
{
    return std::make_unique<TMemoryClient>(*this);
}

} // namespace tnv5::testkit
