#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

namespace tnv5::modelkit {

class TModelWorld;

/// The in-memory server socket's twin; its names are the socket's.
class TModelServer
{
public:
    explicit TModelServer(TModelWorld& world) : FWorld(world) {}

    bool Active() const { return FActive; }
    int Port() const { return FPort; }
    void SetPort(int port) { FPort = port; }
    void Open();
    /// Drops its connections, without an event.
    void Close();
    /// Numbers of the connections that are active, in order of arrival.
    std::vector<int> Connections() const;
    bool isActive(int client) const { return at(client).active; }
    void send(int client, const QByteArray& bytes);

    int join(const QString& address = QStringLiteral("127.0.0.1"));
    void feed(int client, const QByteArray& bytes);
    void leave(int client);
    void raiseError(int client, int code, const QString& text);
    void failSends(int client, const std::optional<QString>& text) { at(client).failure = text; }

    std::function<void()> OnOpening, OnOpened;
    std::function<void(int client, const QByteArray& bytes)> OnSent;
    std::function<void(const QString&address)> OnClientConnect, OnClientDisconnect;
    std::function<void(const QByteArray& bytes)> OnClientRead;
    std::function<void(int& code)> OnClientError;

private:
    struct TVisitor
    {
        QString address;
        bool active = true;
        std::optional<QString> failure;
    };
    TVisitor& at(int client) { return FVisitors.at(std::size_t(client)); }
    const TVisitor& at(int client) const { return FVisitors.at(std::size_t(client)); }

    TModelWorld& FWorld;
    std::vector<TVisitor> FVisitors;
    bool FActive = false;
    int FPort = 0;
};

/// The in-memory client socket's twin.
class TModelClient
{
public:
    explicit TModelClient(TModelWorld& world) : FWorld(world) {}

    bool Active() const { return FActive; }
    QString Host() const { return FHost; }
    int Port() const { return FPort; }
    bool ResolvesNames() const { return FResolves; }
    void SetServer(const QString& host, int port, bool resolve);
    void Open();
    void Close();
    void Send(const QByteArray& bytes) const;

    void feed(const QByteArray& bytes);
    void accept();
    void raiseError(int code, const QString& text);
    void hangUp() { FActive = false; }

    bool Slow = false;
    std::function<void()> OnOpening;
    std::function<void(const QByteArray& bytes)> OnSent;
    std::function<void(const QByteArray& bytes)> OnRead;
    std::function<void(int& code)> OnError;

private:
    TModelWorld& FWorld;
    QString FHost;
    int FPort = 0;
    bool FResolves = false;
    bool FActive = false;
    bool FConnecting = false;
};

/// The other ends of a controller's sockets, in the host's hand. Each may raise.
struct TFarEnd
{
    std::function<void(const QString& port)> listen; ///< its server opens; one client is there at once
    std::function<bool(const QString& server)> dial; ///< its client opens; false: that takes longer
    std::function<void(int client, const QByteArray&)> toClient;
    std::function<void(const QByteArray&)> toServer;
    int clients = 0; ///< that have come so far

    /// Takes the place behind the sockets of the one controller of a world; in the form designer it has none.
    template <class World>
    void attach(World& world)
    {
        clients = 0;
        auto* const server = world.server();
        auto* const client = world.client();
        if (server == nullptr) {
            return;
        }
        server->OnOpening = [this, server] { listen(QString::number(server->Port())); };
        server->OnOpened = [this, server] {
            ++clients;
            server->join();
        };
        server->OnSent = [this](int number, const QByteArray& bytes) { toClient(number, bytes); };
        client->OnOpening = [this, client] {
            const QString where = client->Host() + u' ' + QString::number(client->Port());
            client->Slow = !dial(where + (client->ResolvesNames() ? " by name" : ""));
        };
        client->OnSent = [this](const QByteArray& bytes) { toServer(bytes); };
    }
};

} // namespace tnv5::modelkit
