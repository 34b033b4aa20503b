// What each family does in its remote roles: whom it serves first, what its setters close, what it hands to
// its sockets.

#include "controller/remote_fixture.h"

namespace tnv5::tests {

namespace {

template <class Fixture>
struct TServing : Fixture
{
    TServing()
    {
        line.attach(*this->device);
        this->serve();
        server().join();
        server().join();
        server().OnSent = [this](int client, const QByteArray&) { served << client; };
        this->trace.take();
    }
    ~TServing() { this->device.reset(); } // before its line
    testkit::TMemoryServer& server() { return this->network.server(0); }

    TOpenLine line;
    QList<int> served;
};

template <class Fixture>
QList<int> order()
{
    TServing<Fixture> fixture;
    fixture.device->p_hw_ProtocolIn(QString());
    return fixture.served;
}

TEST(Roles, OrderOfServing)
{
    EXPECT_EQ(order<TClassic>(), (QList<int>{2, 1, 0}));
    EXPECT_EQ(order<TD24>(), (QList<int>{0, 1, 2}));
    EXPECT_EQ(order<TRelays>(), (QList<int>{0, 1, 2}));
}

// A handler makes a client of the server while a text goes out: the same text goes to its server, too.
TEST(Roles, TheModeIsAskedForAgainBehindTheClients)
{
    TServing<TD24> gates;
    gates.server().failSends(1, QStringLiteral("broken"));
    gates.device->SetOnError([&](auto&&...) { gates.device->SetRemoutDevice(PodClient); });
    gates.device->SendToMonitor("LOG!a&");
    EXPECT_EQ(gates.network.client(0).takeSent(), QByteArrayList{"LOG!a&"});
}

// Visitors are in the server's log, not in the stream.
TEST(Roles, VisitorsAreNotRepeated)
{
    TServing<TD24> gates;
    gates.server().join(QStringLiteral("10.0.0.7"));
    gates.server().leave(3);
    gates.trace.expect({logged("%Client Connected% 10.0.0.7"), logged("%Client Disconnected% 10.0.0.7")});
    EXPECT_EQ(gates.served, QList<int>());
}

TEST(Roles, NamesAndAddresses)
{
    TClassic classic;
    classic.follow();
    EXPECT_FALSE(classic.network.client(0).ResolvesNames());
    TD24 gates;
    gates.follow();
    EXPECT_TRUE(gates.network.client(0).ResolvesNames());
    TRelays relays;
    relays.follow();
    EXPECT_TRUE(relays.network.client(0).ResolvesNames());
}

// The link of relay boards outlives the role, and is heard.
TEST(Roles, RelaysHearAServerInAnyMode)
{
    TRelays relays;
    relays.follow();
    relays.device->SetRemoutDevice(podNone);
    relays.sayToClient("LOG!abc&");
    relays.trace.expect({logged("abc")});
}

template <class Fixture>
class OfEveryFamily : public ::testing::Test
{
};
using Families = ::testing::Types<TClassic, TD24, TRelays>;
TYPED_TEST_SUITE(OfEveryFamily, Families);

TYPED_TEST(OfEveryFamily, OneClientFails)
{
    TServing<TypeParam> fixture;
    fixture.server().failSends(1, QStringLiteral("broken"));
    fixture.device->p_hw_ProtocolIn(QString());
    EXPECT_EQ(fixture.trace.countOf("error [07] broken"), 1);
    EXPECT_EQ(fixture.served.size(), 2);
}

TYPED_TEST(OfEveryFamily, SocketsGetServerAndPort)
{
    TypeParam fixture;
    fixture.device->SetPort(5000);
    fixture.serve();
    EXPECT_EQ(fixture.network.server(0).Port(), 5000);
    fixture.follow();
    EXPECT_EQ(fixture.network.client(0).Host(), QStringLiteral("10.0.0.1"));
    EXPECT_EQ(fixture.network.client(0).Port(), 5000);
}

template <class Fixture>
class Closing : public ::testing::Test
{
protected:
    TControllerDevice& device() { return *fixture.device; }
    bool serves() { return fixture.network.server(0).Active(); }
    bool follows() { return fixture.network.client(0).Active(); }
    /// What is left of a server, and of a client, after a change.
    bool servesAfter(const std::function<void()>& change)
    {
        fixture.serve();
        change();
        return serves();
    }
    bool followsAfter(const std::function<void()>& change)
    {
        fixture.follow();
        change();
        return follows();
    }

    Fixture fixture;
};
using ClosedBySetters = ::testing::Types<TClassic, TD24>;
TYPED_TEST_SUITE(Closing, ClosedBySetters);

// Also with the value that is there.
TYPED_TEST(Closing, BySetters)
{
    const auto port = [&] { this->device().SetPort(this->device().Port()); };
    const auto address = [&] { this->device().SetServer(this->device().Server()); };
    const auto mode = [this](controller::TConState value) {
        return [this, value] { this->device().SetRemoutDevice(value); };
    };
    EXPECT_FALSE(this->servesAfter(port));
    EXPECT_TRUE(this->servesAfter(address));
    EXPECT_FALSE(this->servesAfter(mode(podNone)));
    EXPECT_FALSE(this->servesAfter(mode(PodClient)));
    EXPECT_TRUE(this->servesAfter(mode(podServer)));

    EXPECT_FALSE(this->followsAfter(port));
    EXPECT_FALSE(this->followsAfter(address));
    EXPECT_FALSE(this->followsAfter(mode(podNone)));
    EXPECT_FALSE(this->followsAfter(mode(podServer)));
    EXPECT_TRUE(this->followsAfter(mode(PodClient)));
}

} // namespace

} // namespace tnv5::tests
