// The texts of the monitor stream, beside the events that they repeat, and client mode.

#include "switch_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class Monitor : public TSwitchTest
{
protected:
    Monitor()
    {
        inject("x");
        serve();
        trace.take();
    }
};

TEST_F(Monitor, ALineIsRepeatedWithoutTheAsterisk)
{
    inject("#0.0.0.0:000ARELAY1Y4F");
    trace.expect({read("#0.0.0.0:000ARELAY1Y4F"), monitor("LOG!%Считано с порта% #0.0.0.0:000ARELAY1Y4F&")});
}

TEST_F(Monitor, APingHasSevenFieldsTheFourthOneEmpty)
{
    inject("#0.0.0.0:000APING5A");
    trace.expect({read("#0.0.0.0:000APING5A"), monitor("LOG!%Считано с порта% #0.0.0.0:000APING5A&"),
                  report("STACK", "000A!!PING!PING"), monitor("STATUS!STACK!0.0.0.0!000A!T!!PING!PING&")});
    device->DevicePingTime(nullptr);
    trace.expect(
        {report("STACK", "000A!!NOPING!NOPING"), monitor("STATUS!STACK!0.0.0.0!000A!T!!NOPING!NOPING&")});
}

TEST_F(Monitor, SettingTheWantedStateIsCheck)
{
    device->p_hw_CheckStatus(kLink, kBoard, "1", "ON", 1);
    trace.expect(
        {report("CHECK OLD", "000A!1!ON!NONE"), monitor("STATUS!CHECK!000A!1!ON!NONE&"), "log 0 000A NONE"});
}

TEST_F(Monitor, ReportsOfTheSweepAreRepeatedButNotThatItComesToAJob)
{
    makeJob("000A!1!ON!OFF", -1);
    sweep();
    trace.expect({reached("000A!1!ON!OFF"), stack("000A!1!ON!OFF"), monitor("STATUS!STACK!000A!1!ON!OFF&"),
                  check("000A!1!ON!OFF", 0), commanded("RL0.0.0.0:000A1"), loggedSend("RL0.0.0.0:000A1"),
                  stack("000A!1!ON!ON"), monitor("STATUS!STACK!000A!1!ON!ON&"),
                  "log $$ 30.12.1899 12:00:00 30.12.1899 11:59:59 0"}); // logs of commands stay here
}

TEST_F(Monitor, ABoardThatIsGivenUpIsAnErrorWithoutACode)
{
    makeJob("000A!1!ON!NOTINLINE");
    sweep();
    trace.expect({reached("000A!1!ON!NOTINLINE"), stack("000A!1!ON!NOTINLINE"),
                  monitor("STATUS!STACK!000A!1!ON!NOTINLINE&"), check("000A!1!ON!NOTINLINE", 3),
                  stack("000A!1!OFF!XXX"), monitor("STATUS!STACK!000A!1!OFF!XXX&"),
                  "error Device 000A does not working", monitor("ERROR!Device 000A does not working&")});
}

TEST_F(Monitor, GetsEverythingAlsoWithoutHandlers)
{
    device->SetOnLog({});
    device->SetOnError({});
    device->SetOnCheckStatus({});
    makeJob("000A!1!OFF!NONE");
    sweep();
    sweep();
    trace.expect({monitor("LOG!%Считано с порта% $0.0.0.0:000A900&"),
                  monitor("STATUS!STACK!000A!1!OFF!NOTINLINE&"),
                  monitor("STATUS!STACK!000A!1!OFF!NOTINLINE&"), check("000A!1!OFF!NOTINLINE", 3),
                  monitor("STATUS!STACK!000A!1!OFF!XXX&"), monitor("ERROR!Device 000A does not working&")});
}

TEST_F(Monitor, ItsTextReadsTheJobAnew)
{
    const auto job = makeJob("000A!1!OFF!ON");
    trace.once("status STACK", [&] { job->Status = "odd"; });
    sweep();
    EXPECT_EQ(trace.take().mid(1, 2),
              QStringList({stack("000A!1!OFF!ON"), monitor("STATUS!STACK!000A!1!odd!ON&")}));
}

TEST_F(Monitor, ShowingAStatusIsNotAReport)
{
    device->ShowinternalStatus(device.get(), "N", "1", "2", "3", "4");
    trace.expect({"status N!1!2!3!4!"});
}

TEST_F(Monitor, NeedsAnOpenLink)
{
    link->Up = false;
    inject("x");
    trace.expect({read("x")});
}

TEST(StandAlone, OpensNoSocket)
{
    TSwitchFixture fixture;
    fixture.inject("#0.0.0.0:000APING5A");
    fixture.makeJob("000A!1!ON!OFF");
    fixture.sweep();
    fixture.device->SendToMonitor("x");
    EXPECT_FALSE(fixture.network.server(0).Active());
    EXPECT_EQ(fixture.network.client(0).Attempts, 0);
}

class Client : public TSwitchTest
{
protected:
    Client() { follow(); }
};

TEST_F(Client, ALineIsOnlyLoggedAndForwarded)
{
    makeJob("000A!1!OFF!OFF");
    for (const QString line :
         {"#0.0.0.0:000ARELAY1Y4F", "#0.0.0.0:000APING5A", "$0.0.0.0:000A90000", "x", ""}) {
        inject(line);
        trace.expect({read(line), monitor(line)});
    }
    clock.advance(10'000); // no line of a client's starts the sweeps
    trace.expect({});
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
    EXPECT_EQ(device->DeviceList().size(), 0);
}

TEST_F(Client, WithoutALinkALineIsLost)
{
    network.client(0).OpenFailure = "no such server";
    inject("#0.0.0.0:000ARELAY1Y4F");
    trace.expect({read("#0.0.0.0:000ARELAY1Y4F"), "error [01] no such server"});
    EXPECT_EQ(device->StackItemsCount(), 0);
}

TEST_F(Client, ReportsOfItsOwnGoToTheServer)
{
    device->DevicePing(kLink, kBoard, "T");
    trace.expect({report("STACK", "000A!!PING!PING"), monitor("STATUS!STACK!0.0.0.0!000A!T!!PING!PING&")});
}

TEST_F(Client, AFailingSendIsReported)
{
    network.client(0).SendFailure = "torn";
    inject("x");
    trace.expect({read("x"), "error [01] torn"});
}

TEST(Setters, OnlyStore)
{
    TSwitchFixture fixture;
    fixture.device->SetServer("club");
    fixture.device->SetPort(4000);
    fixture.serve();
    EXPECT_EQ(fixture.network.server(0).Port(), 4000);
    fixture.device->SetPort(5000);
    fixture.device->SetServer("other");
    fixture.device->SetRemoutDevice(switching::podNone);
    EXPECT_TRUE(fixture.network.server(0).Active()); // open sockets survive
    EXPECT_EQ(fixture.network.server(0).Port(), 4000);
    fixture.device->SetRemoutDevice(switching::PodClient);
    EXPECT_TRUE(fixture.device->Connected());
    EXPECT_EQ(fixture.network.client(0).Host(), "other");
    EXPECT_EQ(fixture.network.client(0).Port(), 5000);
    EXPECT_TRUE(fixture.network.client(0).ResolvesNames());
}

} // namespace
