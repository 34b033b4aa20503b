// Commands to the boards.

#include "switch_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Relay = TSwitchTest;

TEST_F(Relay, IsCommandedAndThenLogged)
{
    EXPECT_TRUE(device->p_hw_relay("0.0.0.0", "012A", "4"));
    trace.expect({commanded("RL0.0.0.0:012B2"), loggedSend("RL0.0.0.0:012B2")});
}

TEST_F(Relay, ThatIsNoneSendsAnEmptyCommand)
{
    EXPECT_TRUE(device->p_hw_relay("0.0.0.0", "012A", "6"));
    trace.expect({commanded(""), loggedSend("")});
}

TEST_F(Relay, IsLoggedWithoutAConnector)
{
    device->SetConnector(nullptr);
    EXPECT_TRUE(device->p_hw_relay("0.0.0.0", "012A", "1"));
    trace.expect({loggedSend("RL0.0.0.0:012A1")});
}

TEST_F(Relay, DoesNotAskWhetherTheLinkIsOpen)
{
    link->Up = false;
    device->p_hw_relay("0.0.0.0", "012A", "1");
    device->SetOnLog({});
    device->p_hw_relay("0.0.0.0", "012A", "2");
    trace.expect({commanded("RL0.0.0.0:012A1"), loggedSend("RL0.0.0.0:012A1"), commanded("RL0.0.0.0:012A2")});
    EXPECT_EQ(link->Reads, 0);
}

TEST_F(Relay, AFailingConnectorIsTheCallersMatter)
{
    link->Failures = {{"RL", "cut"}};
    EXPECT_THROW(device->p_hw_relay("0.0.0.0", "012A", "1"), platform::EComPort);
    trace.expect({commanded("RL0.0.0.0:012A1")});
}

TEST_F(Relay, ACommandOfTheHostsGoesThrough)
{
    device->SendCommandToConnector("GO0.0.0.0:000A");
    device->SendCommandToConnector("");
    trace.expect({commanded("GO0.0.0.0:000A"), commanded("")});
    device->SetConnector(nullptr);
    device->SendCommandToConnector("GO0.0.0.0:000A");
    trace.expect({});
}

TEST_F(Relay, ComCommandDoesNothing)
{
    for (const int yesnot : {0, 1, 7}) {
        EXPECT_TRUE(device->p_hw_SendComCommand(yesnot));
    }
    trace.expect({});
}

class Poll : public TSwitchTest
{
protected:
    Poll()
    {
        device->DevicePing("0.0.0.0", "000A", "T");
        device->DevicePing("1.1.1.1", "001B", "T");
        device->DevicePing("0.0.0.0", "000A", "T"); // no second entry
        trace.take();
    }

    const QStringList kRequests{commanded("HW0.0.0.0:000A"), commanded("HW1.1.1.1:001B")};
};

TEST_F(Poll, AsksEveryBoardInOrder)
{
    EXPECT_TRUE(device->p_hw_CheckStatusAll());
    trace.expect(kRequests);
    EXPECT_EQ(link->Reads, 1);
    device->OnCheckTimer(nullptr);
    trace.expect(kRequests);
}

TEST_F(Poll, NeedsAnOpenLink)
{
    link->Up = false;
    EXPECT_TRUE(device->p_hw_CheckStatusAll());
    device->SetConnector(nullptr);
    EXPECT_TRUE(device->p_hw_CheckStatusAll());
    trace.expect({});
}

TEST_F(Poll, RunsEveryTwoSecondsFromTheBeginning)
{
    device->SetOnCheckStatus({});
    clock.advance(1'999);
    trace.expect({});
    clock.advance(1);
    trace.expect(kRequests);
    clock.advance(2'000);
    trace.expect(kRequests);
}

TEST_F(Poll, TheTimersTickInTheirOrder)
{
    inject("x"); // starts the sweeps, at the same moment as the others
    makeJob("000A!1!OFF!OFF");
    trace.take();
    clock.advance(6'000);
    const QStringList lines = trace.take();
    const auto last = [&](const QString& beginning) {
        return lines.lastIndexOf(lines.filter(beginning).last());
    };
    EXPECT_LT(last("status XXXSTACK"), last("status STACK!001B!!NOPING"));
    EXPECT_LT(last("status STACK!001B!!NOPING"), last("send HW"));
}

TEST(Connector, HasOneConsumerTheLastOneAttached)
{
    TSwitchFixture fixture;
    TSwitchDevice other;
    other.SetConnector(fixture.link.get());
    fixture.inject("x");
    fixture.trace.expect({});
    fixture.device->SetConnector(fixture.link.get());
    fixture.inject("x");
    fixture.trace.expect({read("x")});
}

TEST(Connector, IsLeftAloneByAnotherOneAndClearedByNoneAndTheEnd)
{
    TSwitchFixture fixture;
    TTestLink other(fixture.trace);
    fixture.device->SetConnector(&other);
    EXPECT_TRUE(fixture.link->OnGetData());
    EXPECT_TRUE(other.OnGetData());
    fixture.device->SetConnector(nullptr);
    EXPECT_FALSE(other.OnGetData());
    fixture.device->SetConnector(&other);
    fixture.device.reset();
    EXPECT_FALSE(other.OnGetData());
    fixture.inject("x"); // the first one still calls, nobody is there
    fixture.trace.expect({});
}

} // namespace
