#pragma once

#include "tnv5/platform/errors.h"
#include "tnv5/platform/socket_access.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>
#include <memory>

/// Stream sockets of the monitor stream. A component asks `TNetwork::current()` for its sockets, so that a
/// test can put a network in memory under it (`testkit::TMemoryNetwork`). Nothing blocks; events come on the
/// main thread, and what their handlers raise goes to the exception handler.
///
/// Limits of each connection: 1 MiB waiting to be sent, and 1 MiB waiting to be handed on. Beyond it is
/// dropped.
namespace tnv5::platform {

constexpr qint64 kMaxSocketQueue = 1'048'576;

/// One client of a server socket.
class TServerConnection
{
public:
    TServerConnection() = default;
    virtual ~TServerConnection() = default;
    TServerConnection(const TServerConnection&) = delete;
    TServerConnection& operator=(const TServerConnection&) = delete;

    /// Address of the client, such as "192.168.1.20".
    virtual QString RemoteAddress() const = 0;
    /// False once it has left or the server has closed.
    virtual bool Active() const = 0;

    /// Whether it may send lines, or only watches.
    bool MayFeed() const { return FMayFeed; }

private:
    friend class TServerSocket;
    bool FMayFeed = true;
    bool FToldOf = false; // it is only watching and tried to send
};

/// Shared, so that a connection stays valid for code that holds it while it closes.
using PServerConnection = std::shared_ptr<TServerConnection>;

/// What is wrong with a socket: the operating system's number, and a text. A handler that has dealt with it
/// sets the number to 0; else it is raised, into the exception handler.
struct TSocketFailure
{
    int code = 0;
    QString text;
};

/// A socket that listens on a port of this machine.
class TServerSocket
{
public:
    TServerSocket() = default;
    virtual ~TServerSocket() = default; ///< closes it; no event is fired any more
    TServerSocket(const TServerSocket&) = delete;
    TServerSocket& operator=(const TServerSocket&) = delete;

    /// Port to listen on; used when it is next opened.
    int Port() const { return FPort; }
    void SetPort(int Value) { FPort = Value; }

    /// Whom it lets in; used when it is next opened. @throws EConvertError for an address that is none
    const TServerAccess& Access() const { return FAccess; }
    void SetAccess(const TServerAccess& Value);

    virtual bool Active() const = 0;
    /// The port it listens on, which the system has chosen when `Port` is 0; 0 while it does not listen.
    virtual int ListeningPort() const = 0;
    /// Listens; opening an open socket does nothing. @throws ESocketError
    void Open();
    /// Drops every connection, without an event, and listens no more.
    void Close();

    /// The active connections, in order of arrival.
    virtual QList<PServerConnection> Connections() const = 0;

    /// Sends bytes, as they are, to every connection, without waiting. One that cannot take them is told of
    /// through `OnSendFailure`, at once or later, and does not keep the others from being served.
    /// @param newestFirst from the last connection to the first, else the other way round
    virtual void SendToAll(const QByteArray& bytes, bool newestFirst) = 0;

    std::function<void(TServerConnection& Socket)> OnClientConnect;
    std::function<void(TServerConnection& Socket)> OnClientDisconnect;
    /// Everything that was there to read.
    std::function<void(TServerConnection& Socket, const QByteArray& bytes)> OnClientRead;
    std::function<void(TServerConnection& Socket, TSocketFailure& failure)> OnClientError;
    /// Something was not sent to a client.
    std::function<void(TServerConnection& Socket, const QString& message)> OnSendFailure;
    /// Someone was not let in, or only watches and tried to feed; what it sent is dropped.
    std::function<void(const QString& address, const QString& reason)> OnRefused;

protected:
    virtual void doOpen() = 0;
    virtual void doClose() = 0;

    /// For implementations: a client is there. @return false when it must not come in, which has been told
    bool admit(TServerConnection& connection);

    /// For implementations: call the handlers; they may destroy the socket.
    static void fire(const std::function<void(TServerConnection&)>& event, TServerConnection& connection);
    void fireSendFailure(TServerConnection& connection, const QString& message);
    void fireRefused(const QString& address, const QString& reason);
    void fireRead(TServerConnection& connection, const QByteArray& bytes);
    void fireError(TServerConnection& connection, TSocketFailure failure);

private:
    int FPort = 0;
    TServerAccess FAccess;
};

/// A socket that connects to a server.
class TClientSocket
{
public:
    TClientSocket() = default;
    virtual ~TClientSocket() = default; ///< closes it; no event is fired any more
    TClientSocket(const TClientSocket&) = delete;
    TClientSocket& operator=(const TClientSocket&) = delete;

    /// Server and port to connect to; used when it is next opened.
    QString Host() const { return FHost; }
    int Port() const { return FPort; }
    /// @param resolve whether `Host` may be a name; else it is an address, taken as it is written
    void SetServer(const QString& Host, int Port, bool resolve);
    bool ResolvesNames() const { return FResolve; }
    /// Files of a protected link; used when it is next opened.
    const std::optional<TTlsFiles>& Tls() const { return FTls; }
    void SetTls(const std::optional<TTlsFiles>& Value) { FTls = Value; }

    /// Connected to the server; false while that is still under way.
    virtual bool Active() const = 0;
    /// Begins to connect, which may take its time; nothing happens when it is connected or about to be.
    /// @throws ESocketError for what is known at once
    void Open();
    /// Ends the connection, or the attempt. No event is fired.
    void Close();

    /// Sends bytes, as they are, without waiting. @throws ESocketError
    virtual void Send(const QByteArray& bytes) = 0;

    /// Everything that was there to read.
    std::function<void(const QByteArray& bytes)> OnRead;
    std::function<void(TSocketFailure& failure)> OnError;
    std::function<void()> OnConnect;
    std::function<void()> OnDisconnect;

protected:
    virtual bool connecting() const = 0;
    virtual void doOpen() = 0;
    virtual void doClose() = 0;

    /// For implementations: call the handlers; they may destroy the socket.
    static void fire(const std::function<void()>& event);
    void fireRead(const QByteArray& bytes);
    void fireError(TSocketFailure failure);

private:
    QString FHost;
    int FPort = 0;
    bool FResolve = false;
    std::optional<TTlsFiles> FTls;
};

/// Where sockets come from.
class TNetwork
{
public:
    virtual ~TNetwork() = default;
    virtual std::unique_ptr<TServerSocket> makeServer() = 0;
    virtual std::unique_ptr<TClientSocket> makeClient() = 0;

    /// The network in use: the machine's own unless another one is installed.
    static TNetwork& current();
    /// Installs another network (nullptr: the machine's own again) and returns the previous one. Sockets that
    /// exist stay what they are.
    static TNetwork* install(TNetwork* network);
};

} // namespace tnv5::platform
