// What comes over the sockets: lines of clients to a server, texts of the server to a client, errors and
// visitors.

#include "controller/remote_fixture.h"

#include <cerrno>

namespace tnv5::tests {

using platform::TPeerRule;
using platform::TServerAccess;

namespace {

const QString kRead = QStringLiteral("%Считано с порта% ");
const QString kRead2 = QStringLiteral("%Считано с порта*% ");

TEST(ServerRead, IsOneLine)
{
    TClassic classic;
    classic.device->SetDeviceList({"01A"});
    classic.serve();
    classic.sayToServer("$01AR123");
    classic.trace.expect({logged(kRead + "$01AR123"), "img 01A", "status CHECK!01A!123!R!NEW",
                          "status COME!01A!123!NEW!NEW", "status STACK!01A!123!NEW!NEW"});

    TD24 gates;
    gates.serve();
    gates.trace.take();
    gates.sayToServer("$10.0.0.5:001TRQ1234500");
    gates.trace.expect(
        {logged(kRead2 + "$10.0.0.5:001TRQ1234500"), "img 001T", "status CHECK!10.0.0.5!001T!T!12345!RQ!NEW",
         "status COME!10.0.0.5!001T!T!12345!NEW!NEW", "status STACK!10.0.0.5!001T!T!12345!NEW!NEW"});

    TRelays relays;
    relays.serve();
    relays.sayToServer("#0.0.0.0:000APING00");
    relays.trace.expect({logged(kRead2 + "#0.0.0.0:000APING00"), "status STACK!000A!!PING!PING!"});
}

// What the network has joined is one line; the carriage return is not taken off.
TEST(ServerRead, IsNotCut)
{
    TClassic classic;
    classic.device->SetDeviceList({"01A"});
    classic.serve();
    classic.sayToServer("$01AR12$01AR34\r");
    EXPECT_EQ(classic.trace.take().first(), logged(kRead + "$01AR12$01AR34\r"));
    EXPECT_EQ(classic.device->StackItem(0)->CardNumber, QStringLiteral("12$01AR34\r"));

    TRelays relays;
    relays.serve();
    relays.sayToServer("");
    relays.trace.expect({logged(kRead2)});
}

TEST(ServerRead, IsEightBitText)
{
    TClassic classic;
    classic.serve();
    classic.network.server(0).feed(0, "\xe0\xff");
    EXPECT_EQ(classic.trace.take(), QStringList{logged(kRead + QStringLiteral("ая"))});
}

// What a server hears of its clients goes back to all of them.
TEST(ServerRead, IsEchoed)
{
    TClassic classic;
    testkit::TMemoryPort port;
    port.Open();
    classic.device->SetComport(&port);
    classic.serve();
    classic.sayToServer("noise");
    EXPECT_EQ(classic.network.server(0).takeSent(0),
              QByteArrayList{platform::toWire("LOG!" + kRead + "noise&")});
}

TEST(ClientRead, Classic)
{
    TClassic classic;
    classic.follow();
    classic.sayToClient("LOG!abc&STATUS!COME!01A!123!NEW!NEW&");
    classic.trace.expect({logged("abc"), "status COME!01A!123!NEW!NEW"});
    classic.sayToClient("ERROR![04] x&"); // a log, not an error, and with its "&"
    classic.trace.expect({logged("[04] x&")});
    classic.network.client(0).feed("LOG!\xe0&");
    classic.trace.expect({logged("а")});
    classic.sayToClient("LOG!ab"); // the rest comes too late
    classic.sayToClient("c&");
    classic.trace.expect({});
    EXPECT_EQ(classic.device->StackItemsCount(), 0);
}

TEST(ClientRead, D24)
{
    TD24 gates;
    gates.follow();
    gates.sayToClient("STATUS!COME!10.0.0.5!001T!T!12345678!NEW!NEW&");
    gates.trace.expect({"status COME!10.0.0.5!001T!T!12345678!NEW!NEW"});
    gates.sayToClient("ERROR!x&");
    gates.trace.expect({logged("x&")});
}

TEST(ClientRead, SwitchDropsStatus)
{
    TRelays relays;
    relays.follow();
    relays.sayToClient("LOG!a&STATUS!STACK!000A!1!ON!ON&ERROR!b&LOG!c&");
    relays.trace.expect({logged("a"), logged("b"), logged("c")});
}

TEST(ClientRead, WithoutHandlers)
{
    TClassic classic;
    classic.follow();
    classic.device->SetOnLog(nullptr);
    classic.device->SetOnCheckStatus(nullptr);
    classic.sayToClient("LOG!abc&STATUS!COME!01A!123!NEW!NEW&");
    classic.trace.expect({});
}

// What the host raises at a log ends the reading; at a status it is an error of the component.
TEST(ClientRead, RaisingHandlers)
{
    TClassic classic;
    classic.follow();
    classic.trace.raiseOnce("log");
    classic.sayToClient("LOG!a&LOG!b&");
    classic.trace.expect({logged("a"), raised("host trouble")});
    classic.trace.raiseOnce("status");
    classic.sayToClient("STATUS!COME!01A!123!NEW!NEW&LOG!c&STATUS!COME!01A!123!NEW!NEW&");
    EXPECT_EQ(classic.trace.countOf("status"), 2);
    EXPECT_EQ(classic.trace.countOf("error [07] host trouble"), 1);
}

TEST(ClientRead, MayEndTheComponent)
{
    TD24 gates;
    gates.follow();
    gates.trace.once("log", [&] { gates.device.reset(); });
    gates.sayToClient("LOG!a&LOG!b&");
    gates.trace.expect({logged("a")});
    EXPECT_EQ(gates.network.clientCount(), 0);
}

// The mode counts when the text is sent: a handler may have changed it while the server was not ready.
template <class Fixture>
class Sending : public ::testing::Test
{
};
using Forwarding = ::testing::Types<TD24, TRelays>;
TYPED_TEST_SUITE(Sending, Forwarding);

TYPED_TEST(Sending, ModeChangedWhileItWasNotReady)
{
    TypeParam fixture;
    fixture.network.server(0).OpenFailure = QStringLiteral("in use");
    fixture.device->SetRemoutDevice(podServer);
    fixture.trace.once("error [06] in use", [&] { fixture.device->SetRemoutDevice(PodClient); });
    fixture.device->p_hw_ProtocolIn(QStringLiteral("x"));
    EXPECT_EQ(fixture.network.client(0).takeSent(),
              (QByteArrayList{platform::toWire("LOG!" + kRead + "x&"), "x"}));
}

template <class Fixture>
class SocketErrors : public ::testing::Test
{
};
using Reporting = ::testing::Types<TClassic, TD24>;
TYPED_TEST_SUITE(SocketErrors, Reporting);

TYPED_TEST(SocketErrors, OfBothSockets)
{
    TypeParam fixture;
    fixture.serve();
    fixture.trace.take();
    fixture.network.server(0).raiseError(0, 104);
    fixture.trace.expect({"error [12] Client Error Code 104"});
    fixture.follow();
    fixture.network.client(0).raiseError(111);
    fixture.trace.expect({"error [12] Client Error Code 111"});
}

// Then it is the socket's own.
TYPED_TEST(SocketErrors, WithoutHandler)
{
    TypeParam fixture;
    fixture.follow();
    fixture.device->SetOnError(nullptr);
    fixture.network.client(0).raiseError(111, QStringLiteral("Connection refused"));
    fixture.trace.expect({raised("Connection refused")});
}

TYPED_TEST(SocketErrors, HandlerRaises)
{
    TypeParam fixture;
    fixture.follow();
    fixture.trace.raiseOnce("error");
    fixture.network.client(0).raiseError(111, QStringLiteral("Connection refused"));
    fixture.trace.expect({"error [12] Client Error Code 111", raised("host trouble")});
}

TYPED_TEST(SocketErrors, HandlerEndsTheComponent)
{
    TypeParam fixture;
    fixture.follow();
    fixture.trace.once("error", [&] { fixture.device.reset(); });
    fixture.network.client(0).raiseError(111);
    fixture.trace.expect({"error [12] Client Error Code 111"});
}

TYPED_TEST(SocketErrors, AnOrderlyEndIsNone)
{
    TypeParam fixture;
    fixture.follow();
    fixture.network.client(0).hangUp();
    fixture.trace.expect({});
}

TEST(SwitchSocketErrors, AreSilent)
{
    TRelays relays;
    relays.serve();
    relays.network.server(0).raiseError(0, 104);
    relays.follow();
    relays.network.client(0).raiseError(111);
    relays.trace.expect({});
    relays.device->SetOnError(nullptr);
    relays.device->Connected();
    relays.network.client(0).raiseError(111);
    relays.trace.expect({});
}

TEST(Visitors, AreLoggedByTheD24)
{
    TD24 gates;
    gates.serve();
    gates.network.server(0).leave(0);
    gates.trace.expect({logged("%Client Connected% 10.0.0.9"), logged("%Client Disconnected% 10.0.0.9")});
    gates.network.server(0).join(QStringLiteral("10.0.0.8"));
    gates.trace.expect({logged("%Client Connected% 10.0.0.8")});
    gates.device->SetPort(1); // closes without an event
    gates.trace.expect({});

    TClassic classic;
    classic.serve();
    classic.network.server(0).leave(0);
    classic.trace.expect({});
    TRelays relays;
    relays.serve();
    relays.network.server(0).leave(0);
    relays.trace.expect({});
}

TEST(Watchers, AreCounted)
{
    TRelays relays;
    EXPECT_EQ(relays.device->Watchers(), 0);
    relays.serve();
    EXPECT_EQ(relays.device->Watchers(), 1);
    relays.network.server(0).leave(0);
    EXPECT_EQ(relays.device->Watchers(), 0);
}

template <class Fixture>
class Access : public ::testing::Test
{
};
using Families = ::testing::Types<TClassic, TD24, TRelays>;
TYPED_TEST_SUITE(Access, Families);

TYPED_TEST(Access, IsOpenToThisMachineAtFirst)
{
    const TServerAccess access;
    EXPECT_EQ(access.listenAddress, QStringLiteral("127.0.0.1"));
    EXPECT_FALSE(access.peers);
    EXPECT_FALSE(access.tls);
}

TYPED_TEST(Access, OfWatchersAndFeeders)
{
    TypeParam fixture;
    TServerAccess access;
    access.peers = QList<TPeerRule>{{"10.0.0.9", false}, {"10.0.0.0/24", true}};
    fixture.device->SetServerAccess(access);
    fixture.serve(); // as 10.0.0.9
    auto& server = fixture.network.server(0);
    const int feeder = server.join(QStringLiteral("10.0.0.7"));
    fixture.trace.take();

    fixture.sayToServer("x");
    fixture.trace.expect({"error [14] Refused 10.0.0.9: it only watches and tried to send lines"});
    fixture.sayToServer("x"); // told once
    fixture.trace.expect({});
    server.feed(feeder, "x");
    EXPECT_EQ(fixture.trace.take().size(), 1); // a line is logged

    fixture.clock.advance(999);
    server.join(QStringLiteral("192.168.0.1"));
    server.join(QStringLiteral("192.168.0.2"));
    EXPECT_EQ(fixture.trace.countOf("error"), 0); // no more than one line in a second
    fixture.clock.advance(1);
    fixture.trace.take();
    server.join(QStringLiteral("192.168.0.3"));
    fixture.trace.expect({"error [14] Refused 192.168.0.3: it is not on the list of peers (2 more before)"});
    EXPECT_EQ(fixture.device->Watchers(), 2);
}

TYPED_TEST(Access, ChangedClosesTheServer)
{
    TypeParam fixture;
    fixture.serve();
    fixture.trace.take();
    fixture.device->SetServerAccess({});
    EXPECT_FALSE(fixture.network.server(0).Active());
    TServerAccess bad;
    bad.peers = QList<TPeerRule>{{"10.0.0", true}};
    EXPECT_THROW(fixture.device->SetServerAccess(bad), platform::EConvertError);
    bad.peers = std::nullopt;
    bad.listenAddress = QStringLiteral("here");
    EXPECT_THROW(fixture.device->SetServerAccess(bad), platform::EConvertError);
}

TYPED_TEST(Access, OfTheClient)
{
    TypeParam fixture;
    fixture.follow();
    const platform::TTlsFiles files = {"a", "b", "c"};
    fixture.device->SetClientTls(files);
    EXPECT_FALSE(fixture.network.client(0).Active());
    EXPECT_EQ(fixture.network.client(0).Tls(), files);
}

} // namespace

} // namespace tnv5::tests
