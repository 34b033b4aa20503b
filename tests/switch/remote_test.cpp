// The remote roles: what is ready, and what is said when it is not.

#include "switch_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Remote = TSwitchTest;

TEST_F(Remote, StandAloneIsReadyWithItsLine)
{
    EXPECT_TRUE(device->Connected());
    link->Up = false;
    EXPECT_FALSE(device->Connected());
    device->SetConnector(nullptr);
    EXPECT_FALSE(device->Connected());
    trace.expect({});
}

TEST_F(Remote, AServerIsReadyWithItsLineAndItsSocket)
{
    device->SetRemoutDevice(switching::podServer);
    EXPECT_FALSE(network.server(0).Active()); // a setter opens nothing
    link->Up = false;
    EXPECT_FALSE(device->Connected());
    EXPECT_TRUE(network.server(0).Active()); // opened all the same
    device->SetConnector(nullptr);
    EXPECT_FALSE(device->Connected());
    device->SetConnector(link.get());
    link->Up = true;
    EXPECT_TRUE(device->Connected());
    trace.expect({});
}

TEST_F(Remote, AServerThatCannotListenSaysSoEachTime)
{
    device->SetRemoutDevice(switching::podServer);
    network.server(0).OpenFailure = "in use";
    EXPECT_FALSE(device->Connected());
    trace.expect({"error [06] in use"});
    device->SendToMonitor("x");
    trace.expect({"error [06] in use"});
    network.server(0).OpenFailure.reset();
    EXPECT_TRUE(device->Connected());
    trace.expect({});
}

TEST_F(Remote, AServersTextGoesToEveryClientAlsoWhenOneFails)
{
    serve();
    network.server(0).join();
    network.server(0).join();
    network.server(0).OnSent = [this](int client, const QByteArray& bytes) {
        trace.add(QString::number(client) + u' ' + bytes);
    };
    device->SendToMonitor("x");
    trace.expect({"0 x", "1 x", "2 x"}); // from the first to the last
    network.server(0).failSends(1, "torn");
    device->SendToMonitor("x");
    trace.expect({"0 x", "error [07] torn", "2 x"});
}

TEST_F(Remote, AClientIsReadyWithItsLinkOnly)
{
    device->SetRemoutDevice(switching::PodClient);
    EXPECT_EQ(network.client(0).Attempts, 0); // a setter opens nothing
    device->SetConnector(nullptr);
    network.client(0).Slow = true;
    EXPECT_FALSE(device->Connected());
    EXPECT_FALSE(device->Connected());
    EXPECT_EQ(network.client(0).Attempts, 1); // one is under way
    network.client(0).accept();
    EXPECT_TRUE(device->Connected());
    trace.expect({});
}

TEST_F(Remote, AClientThatCannotConnectSaysSoEachTime)
{
    device->SetRemoutDevice(switching::PodClient);
    network.client(0).OpenFailure = "no such server";
    EXPECT_FALSE(device->Connected());
    device->SendToMonitor("x");
    trace.expect({"error [01] no such server", "error [01] no such server"});
}

TEST_F(Remote, NothingIsReportedWithoutAHandler)
{
    device->SetOnError({});
    device->SetRemoutDevice(switching::podServer);
    network.server(0).OpenFailure = "in use";
    EXPECT_FALSE(device->Connected());
    device->SetRemoutDevice(switching::PodClient);
    network.client(0).OpenFailure = "no such server";
    EXPECT_FALSE(device->Connected());
    trace.expect({});
}

} // namespace
