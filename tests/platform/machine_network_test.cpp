// The machine's own sockets, on loopback and on ports that the system chooses.

#include "support/wait.h"
#include "tnv5/platform/server_worker.h"
#include "tnv5/platform/sockets.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <algorithm>
#include <cerrno>
#include <gtest/gtest.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

namespace tnv5::tests {

using platform::ESocketError;
using platform::kMaxSocketQueue;
using platform::TClientSocket;
using platform::TNetwork;
using platform::TPeerRule;
using platform::TServerAccess;
using platform::TServerConnection;
using platform::TServerSocket;
using platform::TSocketFailure;

namespace {

const QString kHere = QStringLiteral("127.0.0.1");

// A server socket whose events are counted and kept.
struct TServer
{
    TServer()
    {
        socket->OnClientConnect = [this](TServerConnection& client) {
            events << "+" + client.RemoteAddress();
        };
        socket->OnClientDisconnect = [this](TServerConnection&) { events << "-"; };
        socket->OnClientRead = [this](TServerConnection&, const QByteArray& bytes) { read += bytes; };
        socket->OnClientError = [this](TServerConnection&, TSocketFailure& failure) {
            events << QString::number(std::exchange(failure.code, 0));
        };
        socket->OnSendFailure = [this](TServerConnection&, const QString& text) { events << text; };
        socket->OnRefused = [this](const QString& address, const QString& reason) {
            events << address + ": " + reason;
        };
    }

    int port() const { return socket->ListeningPort(); }

    std::unique_ptr<TServerSocket> socket = TNetwork::current().makeServer();
    QStringList events;
    QByteArray read;
};

struct TClient
{
    explicit TClient(int port = 0, const QString& host = kHere)
    {
        socket->SetServer(host, port, false);
        socket->OnConnect = [this] { events << "+"; };
        socket->OnDisconnect = [this] { events << "-"; };
        socket->OnRead = [this](const QByteArray& bytes) { read += bytes; };
        socket->OnError = [this](TSocketFailure& failure) {
            events << QString::number(std::exchange(failure.code, 0));
        };
        if (port > 0) {
            socket->Open();
        }
    }

    bool connects() const
    {
        return eventually([this] { return socket->Active(); });
    }

    std::unique_ptr<TClientSocket> socket = TNetwork::current().makeClient();
    QStringList events;
    QByteArray read;
};

class MachineNetwork : public ::testing::Test
{
protected:
    bool joined(int clients = 1)
    {
        return eventually([this, clients] { return server.socket->Connections().size() == clients; });
    }

    TServer server;
};

TEST_F(MachineNetwork, BothWays)
{
    server.socket->Open();
    EXPECT_TRUE(server.socket->Active());
    EXPECT_GT(server.port(), 0);
    server.socket->Open(); // an open one stays as it is
    TClient first(server.port());
    TClient second(server.port());
    ASSERT_TRUE(joined(2));
    EXPECT_EQ(server.events, (QStringList{"+127.0.0.1", "+127.0.0.1"}));

    ASSERT_TRUE(first.connects() && second.connects());
    server.socket->SendToAll("to all ", false);
    server.socket->SendToAll("of you", true);
    EXPECT_TRUE(eventually([&] { return first.read == "to all of you" && second.read == first.read; }));

    first.socket->Send("hello");
    EXPECT_TRUE(eventually([&] { return server.read == "hello"; }));
    first.socket->Close();
    EXPECT_TRUE(joined(1));
    EXPECT_EQ(server.events.last(), QStringLiteral("-"));
    EXPECT_EQ(first.events, QStringList{"+"}); // closing fires nothing

    server.socket->Close();
    EXPECT_FALSE(server.socket->Active());
    EXPECT_EQ(server.port(), 0);
    EXPECT_TRUE(server.socket->Connections().isEmpty());
    EXPECT_TRUE(eventually([&] { return !second.socket->Active(); }));
    EXPECT_EQ(second.events, (QStringList{"+", "-"})); // an orderly end is no error
    EXPECT_EQ(server.events.count("-"), 1);            // nor is there an event at the server
}

TEST_F(MachineNetwork, WhatIsSentBeforeClosingArrives)
{
    server.socket->Open();
    TClient client(server.port());
    ASSERT_TRUE(joined() && client.connects());
    client.socket->Send("last words");
    client.socket->Close();
    EXPECT_TRUE(eventually([&] { return server.read == "last words"; }));
}

// What a peer can read by now; nothing is done for the sockets of this thread meanwhile.
QByteArray arrived(const QTcpSocket& peer)
{
    constexpr int kLongMs = 60'000; // passes only when nothing comes
    const int descriptor = static_cast<int>(peer.socketDescriptor());
    pollfd entry{descriptor, POLLIN, 0};
    char bytes[256];
    const auto size = ::poll(&entry, 1, kLongMs) == 1 ? ::recv(descriptor, bytes, sizeof bytes, 0) : 0;
    return {bytes, std::max(static_cast<qsizetype>(size), qsizetype(0))};
}

TEST_F(MachineNetwork, ATextThatArrivesWhileAHandlerPumpsIsNotHeldBack)
{
    server.socket->Open();
    TClient client(server.port());
    ASSERT_TRUE(client.connects() && joined());
    client.socket->OnRead = [&](const QByteArray& bytes) {
        client.read += bytes;
        if (bytes == "one") {
            server.socket->SendToAll("two", true);
            EXPECT_TRUE(eventually([&] { return client.read == "onetwo"; })) << "inside the pump";
        }
    };
    server.socket->SendToAll("one", true);
    EXPECT_TRUE(eventually([&] { return client.read == "onetwo"; }));
}

TEST_F(MachineNetwork, ATextThatArrivesBeforeTheEndWhileAHandlerPumpsIsNotLost)
{
    server.socket->Open();
    TClient client(server.port());
    ASSERT_TRUE(client.connects() && joined());
    client.socket->OnRead = [&](const QByteArray& bytes) {
        client.events << bytes;
        if (bytes == "one") {
            server.socket->SendToAll("two", true);
            server.socket->Close();
            EXPECT_TRUE(eventually([&] { return !client.socket->Active(); }));
        }
    };
    server.socket->SendToAll("one", true);
    EXPECT_TRUE(eventually([&] { return client.events.size() == 4; }));
    EXPECT_EQ(client.events, (QStringList{"+", "one", "two", "-"}));
}

TEST_F(MachineNetwork, EachLineOfAClientLeavesAtOnce)
{
    QTcpServer listener;
    ASSERT_TRUE(listener.listen(QHostAddress::LocalHost));
    TClient client(listener.serverPort());
    ASSERT_TRUE(client.connects() && eventually([&] { return listener.hasPendingConnections(); }));
    const std::unique_ptr<QTcpSocket> peer(listener.nextPendingConnection());
    client.socket->Send("$01AR111");
    EXPECT_EQ(arrived(*peer), "$01AR111");
    client.socket->Send("$02AR222");
    EXPECT_EQ(arrived(*peer), "$02AR222");
}

// The peer has gone, and the loop has not told yet.
TEST_F(MachineNetwork, ALineForNobodyIsNotTakenForSent)
{
    QTcpServer listener;
    ASSERT_TRUE(listener.listen(QHostAddress::LocalHost));
    TClient client(listener.serverPort());
    ASSERT_TRUE(client.connects() && eventually([&] { return listener.hasPendingConnections(); }));
    std::unique_ptr<QTcpSocket> peer(listener.nextPendingConnection());
    const linger atOnce{1, 0};
    ASSERT_EQ(::setsockopt(static_cast<int>(peer->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce,
                           sizeof atOnce),
              0);
    peer.reset();
    QElapsedTimer since;
    since.start();
    QString told;
    while (told.isEmpty() && since.elapsed() < 60'000) {
        try {
            client.socket->Send("$01AR111");
        } catch (const ESocketError& error) {
            told = error.message();
        }
    }
    EXPECT_EQ(told, "The connection has ended");
    EXPECT_FALSE(client.socket->Active());
    EXPECT_EQ(client.events, (QStringList{"+", "-"}));
    EXPECT_THROW(client.socket->Send("x"), ESocketError);
}

TEST_F(MachineNetwork, AClientMayBeDestroyedWhenItsLinkIsFoundBroken)
{
    QTcpServer listener;
    ASSERT_TRUE(listener.listen(QHostAddress::LocalHost));
    TClient client(listener.serverPort());
    ASSERT_TRUE(client.connects() && eventually([&] { return listener.hasPendingConnections(); }));
    std::unique_ptr<QTcpSocket> peer(listener.nextPendingConnection());
    client.socket->OnDisconnect = [&] { client.socket.reset(); };
    peer->abort();
    while (client.socket) {
        try {
            client.socket->Send("$01AR111");
        } catch (const ESocketError&) {
            EXPECT_EQ(client.socket, nullptr);
        }
    }
}

TEST_F(MachineNetwork, LongTextsArriveWhole)
{
    server.socket->Open();
    TClient client(server.port());
    ASSERT_TRUE(joined() && client.connects());
    QByteArray text(kMaxSocketQueue - 1, ' ');
    for (qsizetype i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char>(i % 251);
    }
    client.socket->Send(text);
    EXPECT_TRUE(eventually([&] { return server.read == text; }));
    server.socket->SendToAll(text, false);
    EXPECT_TRUE(eventually([&] { return client.read == text; }));
}

// Clients that do not read, each with an address of its own, are dropped in the order in which they are
// served.
TEST_F(MachineNetwork, ServesInTheOrderAskedFor)
{
    const QByteArray text(7 * kMaxSocketQueue, 'x'); // more than the system takes at once
    for (const bool newestFirst : {false, true}) {
        QStringList served;
        server.socket->OnSendFailure = [&](TServerConnection& client, const QString&) {
            served << client.RemoteAddress();
        };
        server.socket->Open();
        QTcpSocket deaf[5];
        QStringList expected;
        for (int i = 0; i < 5; ++i) {
            const QString address = QStringLiteral("127.0.0.%1").arg(10 + i);
            ASSERT_TRUE(deaf[i].bind(QHostAddress(address)));
            deaf[i].setReadBufferSize(1);
            deaf[i].connectToHost(QHostAddress::LocalHost, static_cast<quint16>(server.port()));
            ASSERT_TRUE(joined(i + 1));
            expected.insert(newestFirst ? 0 : i, address);
        }
        server.socket->SendToAll(text, newestFirst);
        EXPECT_TRUE(joined(0));
        EXPECT_EQ(served, expected);
        server.socket->Close();
    }
}

// Two texts that wait for the sockets' thread do not leave as one.
TEST(ServerWorker, SendsEachTextByItself)
{
    platform::PServerLink link;
    platform::TServerWorker::TEvents events{.joined = [&](const auto& joined) { link = joined; },
                                            .hasRead = [](auto&&...) {},
                                            .failed = [](auto&&...) {},
                                            .notSent = [](auto&&...) {},
                                            .left = [](auto&&...) {},
                                            .refused = [](auto&&...) {}};
    platform::TServerWorker worker(events, {}, {});
    ASSERT_TRUE(worker.listen(QHostAddress::LocalHost));
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, worker.serverPort());
    ASSERT_TRUE(eventually([&] { return link && client.state() == QAbstractSocket::ConnectedState; }));
    worker.post("STATUS!COME!01A!123!NEW!NEW&", false);
    worker.post("LOG!Come in&", false);
    EXPECT_TRUE(eventually([&] { return client.peek(100) == "STATUS!COME!01A!123!NEW!NEW&LOG!Come in&"; }));
    tcp_info info{};
    socklen_t size = sizeof info;
    ASSERT_EQ(::getsockopt(static_cast<int>(client.socketDescriptor()), IPPROTO_TCP, TCP_INFO, &info, &size),
              0);
    EXPECT_GE(info.tcpi_data_segs_in, 2U);
}

TEST_F(MachineNetwork, ServerOpensAgain)
{
    server.socket->Open();
    const int port = server.port();
    TClient client(port);
    ASSERT_TRUE(joined());
    server.socket->Close();
    server.socket->SetPort(port);
    server.socket->Open(); // at once, on the same port
    EXPECT_EQ(server.port(), port);
    ASSERT_TRUE(eventually([&] { return !client.socket->Active(); }));
    client.socket->Open();
    EXPECT_TRUE(joined());
}

TEST_F(MachineNetwork, PortInUse)
{
    server.socket->Open();
    TServer other;
    other.socket->SetPort(server.port());
    EXPECT_THROW(other.socket->Open(), ESocketError);
    EXPECT_FALSE(other.socket->Active());
    other.socket->SetPort(-1);
    EXPECT_THROW(other.socket->Open(), ESocketError);
    other.socket->SetPort(65'536);
    EXPECT_THROW(other.socket->Open(), ESocketError);
}

TEST_F(MachineNetwork, ListensOnLoopbackUnlessTold)
{
    server.socket->Open();
    EXPECT_EQ(server.socket->Access().listenAddress, kHere);
    TServerAccess access;
    access.listenAddress = QStringLiteral("127.0.0.2");
    server.socket->Close();
    server.socket->SetAccess(access);
    server.socket->Open();
    TClient there(server.port(), QStringLiteral("127.0.0.2"));
    EXPECT_TRUE(there.connects());
    TClient here(server.port());
    EXPECT_TRUE(eventually([&] { return here.events == QStringList{QString::number(ECONNREFUSED)}; }));
}

TEST_F(MachineNetwork, NobodyListens)
{
    QTcpServer taken; // keeps the port from others
    ASSERT_TRUE(taken.listen(QHostAddress::LocalHost));
    const int port = taken.serverPort();
    taken.close();
    TClient client(port);
    EXPECT_FALSE(client.socket->Active());
    EXPECT_TRUE(eventually([&] { return !client.events.isEmpty(); }));
    EXPECT_EQ(client.events, QStringList{QString::number(ECONNREFUSED)});
    EXPECT_THROW(client.socket->Send("x"), ESocketError);
}

TEST(MachineClient, WhatIsKnownAtOnce)
{
    TClient client;
    const auto fails = [&client](const QString& host, int port, bool resolve) {
        client.socket->SetServer(host, port, resolve);
        try {
            client.socket->Open();
        } catch (const ESocketError& error) {
            return error.message();
        }
        client.socket->Close();
        return QString();
    };
    EXPECT_EQ(fails("", 1, true), QStringLiteral("No server is set"));
    EXPECT_EQ(fails("desk", 1, false), QStringLiteral("'desk' is not an address"));
    EXPECT_EQ(fails("desk", 0, true), QStringLiteral("0 is not a port"));
    EXPECT_EQ(fails("10.0.0.1", 65'536, true), QStringLiteral("65536 is not a port"));
    EXPECT_EQ(fails("127.0.0.1", 1, false), QString());
}

TEST_F(MachineNetwork, NamesAreResolvedOnRequest)
{
    server.socket->Open();
    TClient client;
    client.socket->SetServer(QStringLiteral("localhost"), server.port(), true);
    client.socket->Open();
    EXPECT_FALSE(client.socket->Active());
    EXPECT_TRUE(joined() && client.connects());
}

TEST_F(MachineNetwork, AddressOutsideTheList)
{
    TServerAccess access;
    access.peers = QList<TPeerRule>{{"10.0.0.0/8", true}};
    server.socket->SetAccess(access);
    server.socket->Open();
    TClient client(server.port());
    EXPECT_TRUE(eventually([&] { return client.events.contains("-"); }));
    EXPECT_TRUE(eventually([&] { return !server.events.isEmpty(); }));
    EXPECT_EQ(server.events, QStringList{"127.0.0.1: it is not on the list of peers"});
    EXPECT_TRUE(server.socket->Connections().isEmpty());
}

TEST_F(MachineNetwork, WatcherThatFeeds)
{
    TServerAccess access;
    access.peers = QList<TPeerRule>{{"127.0.0.0/8", false}};
    server.socket->SetAccess(access);
    server.socket->Open();
    TClient client(server.port());
    ASSERT_TRUE(joined() && client.connects());
    client.socket->Send("$01AP");
    EXPECT_TRUE(eventually([&] { return server.events.size() == 2; }));
    EXPECT_EQ(server.events.last(), QStringLiteral("127.0.0.1: it only watches and tried to send lines"));
    EXPECT_TRUE(server.read.isEmpty());
    server.socket->SendToAll("news", false);
    EXPECT_TRUE(eventually([&] { return client.read == "news"; }));
}

// A client that does not read is dropped and told of once; the others do not notice.
TEST_F(MachineNetwork, ClientThatDoesNotRead)
{
    server.socket->Open();
    QTcpSocket deaf;
    deaf.setReadBufferSize(1);
    deaf.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(server.port()));
    TClient good(server.port());
    ASSERT_TRUE(joined(2) && good.connects());

    const QByteArray text(64 * 1024, 'x');
    qsizetype sent = 0;
    while (server.socket->Connections().size() == 2 && sent < 1024 * text.size()) {
        server.socket->SendToAll(text, false);
        sent += text.size();
        ASSERT_TRUE(eventually([&] { return good.read.size() == sent; }));
    }
    EXPECT_EQ(server.socket->Connections().size(), 1);
    EXPECT_EQ(server.events.count("The client does not read"), 1);
    EXPECT_EQ(server.events.count("-"), 1);
}

// A peer that sends faster than it is heard.
TEST_F(MachineNetwork, PeerWithTooMuchUnread)
{
    server.socket->Open();
    TClient good(server.port());
    ASSERT_TRUE(joined() && good.connects());
    QTcpSocket raw;
    raw.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(server.port()));
    ASSERT_TRUE(raw.waitForConnected(-1));
    const QByteArray bytes(8 * kMaxSocketQueue, 'y');
    raw.write(bytes);
    while (raw.state() == QAbstractSocket::ConnectedState && raw.bytesToWrite() > 0) {
        if (!raw.waitForBytesWritten(-1)) { // this thread handles no events meanwhile
            break;
        }
    }
    EXPECT_TRUE(eventually([&] { return server.events.contains(QString::number(EMSGSIZE)); }));
    good.socket->Send("still here");
    EXPECT_TRUE(eventually([&] { return server.read.endsWith("still here"); }));
}

// The other end says nothing any more and closes only its direction of sending.
TEST_F(MachineNetwork, HalfOpenPeer)
{
    server.socket->Open();
    QTcpSocket raw;
    raw.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(server.port()));
    ASSERT_TRUE(raw.waitForConnected(-1));
    ASSERT_TRUE(joined());
    ::shutdown(static_cast<int>(raw.socketDescriptor()), SHUT_WR);
    EXPECT_TRUE(joined(0));
    EXPECT_EQ(server.events, (QStringList{"+127.0.0.1", "-"}));
}

TEST_F(MachineNetwork, MayBeDestroyedInAnEvent)
{
    server.socket->Open();
    server.socket->OnClientRead = [this](TServerConnection&, const QByteArray&) { server.socket.reset(); };
    TClient client(server.port());
    ASSERT_TRUE(joined() && client.connects());
    client.socket->OnDisconnect = [&client] { client.socket.reset(); };
    client.socket->Send("x");
    EXPECT_TRUE(eventually([&] { return client.socket == nullptr; }));
    EXPECT_EQ(server.socket, nullptr);
}

TEST_F(MachineNetwork, ManyWatchers)
{
    constexpr int kWatchers = 400; // of the descriptors that a program usually may have
    server.socket->Open();
    std::vector<std::unique_ptr<TClient>> clients;
    for (int i = 0; i < kWatchers; ++i) {
        clients.push_back(std::make_unique<TClient>(server.port()));
    }
    ASSERT_TRUE(joined(kWatchers));
    for (int i = 0; i < 10; ++i) {
        server.socket->SendToAll(QByteArray::number(i), false);
    }
    for (const auto& client : clients) {
        EXPECT_TRUE(eventually([&] { return client->read == "0123456789"; }));
    }
}

} // namespace

} // namespace tnv5::tests
