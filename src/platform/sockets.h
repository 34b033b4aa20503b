#pragma once

#include "tnv5/platform/errors.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>
#include <memory>

/// Stream sockets of the monitor stream. A component asks `TNetwork::current()` for its sockets, so that a
/// test can put a network in memory under it (`testkit::TMemoryNetwork`). Nothing blocks; events come on the
/// main thread, and what their handlers raise goes to the exception handler.
namespace tnv5::platform {

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
    /// Sends bytes, as they are, without waiting. @throws ESocketError
    virtual void Send(const QByteArray& bytes) = 0;
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

    virtual bool Active() const = 0;
    /// Listens; opening an open socket does nothing. @throws ESocketError
    void Open();
    /// Drops every connection, without an event, and listens no more.
    void Close();

    /// The active connections, in order of arrival.
    virtual QList<PServerConnection> Connections() const = 0;

    std::function<void(TServerConnection& Socket)> OnClientConnect;
    std::function<void(TServerConnection& Socket)> OnClientDisconnect;
    /// Everything that was there to read.
    std::function<void(TServerConnection& Socket, const QByteArray& bytes)> OnClientRead;
    std::function<void(TServerConnection& Socket, TSocketFailure& failure)> OnClientError;

protected:
    virtual void doOpen() = 0;
    virtual void doClose() = 0;

    /// For implementations: call the handlers; they may destroy the socket.
    static void fire(const std::function<void(TServerConnection&)>& event, TServerConnection& connection);
    void fireRead(TServerConnection& connection, const QByteArray& bytes);
    void fireError(TServerConnection& connection, TSocketFailure failure);

private:
    int FPort = 0;
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
