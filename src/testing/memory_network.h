#pragma once

#include "tnv5/platform/sockets.h"

#include <QByteArrayList>
#include <optional>
#include <vector>

namespace tnv5::testkit {

class TMemoryNetwork;

/// A server socket in memory. Its clients are numbered from 0 in order of arrival.
///
///     TMemoryNetwork network;
///     TTurnStylerDevice gate;
///     gate.SetRemoutDevice(podServer);
///     gate.Connected();                            // opens the server
///     const int client = network.server(0).join();
///     ...
///     network.server(0).takeSent(client);          // "LOG!...&"
class TMemoryServer final : public platform::TServerSocket
{
public:
    explicit TMemoryServer(TMemoryNetwork& network);
    ~TMemoryServer() override;

    bool Active() const override { return FActive; }
    int ListeningPort() const override { return FActive ? Port() : 0; }
    QList<platform::PServerConnection> Connections() const override;
    void SendToAll(const QByteArray& bytes, bool newestFirst) override;

    /// A client connects. @return its number, also of one that is not let in
    int join(const QString& address = QStringLiteral("127.0.0.1"));
    /// A client sends bytes; they arrive as one read.
    void feed(int client, const QByteArray& bytes);
    /// The same in pieces of `size`.
    void feedInPieces(int client, const QByteArray& bytes, qsizetype size);
    /// A client leaves.
    void leave(int client);
    /// The system reports an error on a client's connection.
    void raiseError(int client, int code, const QString& text = QStringLiteral("Socket error"));

    /// What was sent to a client since the last call, one entry a send.
    QByteArrayList takeSent(int client);
    /// Makes every send to a client fail with a text; empty: no more.
    void failSends(int client, const std::optional<QString>& text);

    /// While set, opening raises `ESocketError` with the text.
    std::optional<QString> OpenFailure;
    /// Called inside opening, before it takes effect; what it raises leaves the operation.
    std::function<void()> OnOpening;
    /// Called when it has opened, for clients that are there at once.
    std::function<void()> OnOpened;
    /// Called inside each send that does not fail, with the client's number; what it raises leaves the send.
    /// It may destroy the component.
    std::function<void(int client, const QByteArray& bytes)> OnSent;

protected:
    void doOpen() override;
    void doClose() override;

private:
    class TConnection;
    std::shared_ptr<TConnection> at(int client) const;

    TMemoryNetwork* FNetwork;
    bool FActive = false;
    std::vector<std::shared_ptr<TConnection>> FClients;
    std::shared_ptr<bool> FAlive = std::make_shared<bool>(true);
};

/// A client socket in memory; the test plays the server.
class TMemoryClient final : public platform::TClientSocket
{
public:
    explicit TMemoryClient(TMemoryNetwork& network);
    ~TMemoryClient() override;

    bool Active() const override { return FActive; }
    void Send(const QByteArray& bytes) override;

    /// The server sends bytes; they arrive as one read.
    void feed(const QByteArray& bytes);
    void feedInPieces(const QByteArray& bytes, qsizetype size);
    /// An attempt to connect that was left open (`Slow`) succeeds.
    void accept();
    /// The system reports an error; an open attempt, or the connection, ends with it.
    void raiseError(int code, const QString& text = QStringLiteral("Socket error"));
    /// The server closes the connection in good order.
    void hangUp();

    /// What was sent since the last call, one entry a send.
    QByteArrayList takeSent();
    /// Attempts to connect so far.
    int Attempts = 0;

    /// Off: connected as soon as it is opened. On: `accept` or `raiseError` ends the attempt.
    bool Slow = false;
    /// While set, opening or sending raises `ESocketError` with the text.
    std::optional<QString> OpenFailure;
    std::optional<QString> SendFailure;
    /// Called inside opening, before it takes effect; what it raises leaves the operation.
    std::function<void()> OnOpening;
    /// Called inside each send that does not fail; what it raises leaves the send. It may destroy the
    /// component.
    std::function<void(const QByteArray& bytes)> OnSent;

protected:
    bool connecting() const override { return FConnecting; }
    void doOpen() override;
    void doClose() override;

private:
    TMemoryNetwork* FNetwork;
    bool FActive = false;
    bool FConnecting = false;
    QByteArrayList FSent;
};

/// Sockets in memory. While it lives, components get their sockets from it; it must outlive them.
class TMemoryNetwork final : public platform::TNetwork
{
public:
    TMemoryNetwork();
    ~TMemoryNetwork() override;
    TMemoryNetwork(const TMemoryNetwork&) = delete;
    TMemoryNetwork& operator=(const TMemoryNetwork&) = delete;

    std::unique_ptr<platform::TServerSocket> makeServer() override;
    std::unique_ptr<platform::TClientSocket> makeClient() override;

    /// The sockets that exist, in order of creation: those of the first component have index 0.
    /// @throws std::out_of_range
    TMemoryServer& server(int index) const { return *FServers.at(static_cast<std::size_t>(index)); }
    TMemoryClient& client(int index) const { return *FClients.at(static_cast<std::size_t>(index)); }
    int serverCount() const { return static_cast<int>(FServers.size()); }
    int clientCount() const { return static_cast<int>(FClients.size()); }

private:
    friend class TMemoryServer;
    friend class TMemoryClient;
    std::vector<TMemoryServer*> FServers;
    std::vector<TMemoryClient*> FClients;
    platform::TNetwork* FPrevious;
};

} // namespace tnv5::testkit
