// Handlers that raise: nothing is caught here, the line or command ends, and the next one is served.

#include "connector_fixture.h"

#include <stdexcept>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using RaisingHandlers = TConnectorTest;

const QStringList kRaised{raised("host trouble")};

TEST_F(RaisingHandlers, ConsumerDuringAPing)
{
    trace.raiseOnce("route ");
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING") + kRaised); // no hardware request
    inject("$000APING");
    EXPECT_EQ(trace.take().size(), 7);
}

TEST_F(RaisingHandlers, ConsumerDuringAnEvent)
{
    trace.raiseOnce("route ");
    inject("$000AETx");
    trace.expect(routedChecked("#0.0.0.0:000APING") + kRaised);
}

TEST_F(RaisingHandlers, ConsumerDuringAReply)
{
    trace.raiseOnce("route ");
    inject("#000AHWGX=G20x4/GR=NN/");
    trace.expect(routedChecked("#0.0.0.0:000ARELAY1N") + kRaised);
    EXPECT_EQ(board("000A")->DisplayLine, 20); // learnt before
}

TEST_F(RaisingHandlers, ConsumerWithMoreLinesInTheSameRead)
{
    trace.raiseOnce("route ");
    port->feed("$000AX\r$001AX\r#002AGO\r");
    trace.expect(routed("$0.0.0.0:000AX") + kRaised + routed("$0.0.0.0:001AX") +
                 routedChecked("#0.0.0.0:002ACROSS"));
}

TEST_F(RaisingHandlers, SilentAbortOfTheConsumerTellsNobody)
{
    trace.once("route ", [] { throw platform::EAbort(); });
    port->feed("$000AX\r$001AX\r");
    trace.expect(routed("$0.0.0.0:000AX") + routed("$0.0.0.0:001AX"));
}

TEST_F(RaisingHandlers, ConsumerOfALineGivenDirectly)
{
    trace.raiseOnce("route ");
    EXPECT_THROW(hear("$000APING"), std::runtime_error);
    trace.expect(sent("$000AECHO") + routedChecked("#10.0.0.7:000APING"));
    trace.raiseOnce("route ");
    EXPECT_THROW(bus->GetCommand("x"), std::runtime_error);
    trace.expect(routed("x"));
    hear("$000AX");
    trace.expect(routed("$10.0.0.7:000AX"));
}

TEST_F(RaisingHandlers, LogOfACommand)
{
    trace.raiseOnce("log ");
    EXPECT_THROW(bus->SendCommand("GO0.0.0.0:000A"), std::runtime_error);
    trace.expect(sent("$000AGO")); // it is on the line
    trace.raiseOnce("log ");
    EXPECT_THROW(bus->SendDirectCommand("0.0.0.0", "$000AX"), std::runtime_error);
    trace.expect(sent("$000AX"));
    EXPECT_EQ(bus->SendCommand("GO0.0.0.0:000A"), "5A");
}

TEST_F(RaisingHandlers, LogOfADisplayCommand)
{
    giveDisplay("000A", 4);
    trace.raiseOnce("log " + checked("$000APSN1001four"));
    EXPECT_THROW(bus->SendCommand("SH0.0.0.0:000A|four|two|||L|"), std::runtime_error);
    trace.expect(sent("$000ACS") + sent("$000APSN1001four")); // neither the rest nor the closing log
    trace.raiseOnce("log Lines");
    EXPECT_THROW(bus->SendCommand("SH0.0.0.0:000A|||||L|"), std::runtime_error);
    trace.expect(sent("$000BFL1") + linesSent("$000BFL1"));
}

TEST_F(RaisingHandlers, LogOfTheAnswerToAPing)
{
    trace.raiseOnce("log ");
    inject("$000APING");
    trace.expect(sent("$000AECHO") + kRaised);
}

TEST_F(RaisingHandlers, ErrorOfAFailedOpening)
{
    port->Close();
    port->OpenFailure = "no";
    trace.raiseOnce("error ");
    EXPECT_THROW(bus->GetConnected(), std::runtime_error);
    trace.raiseOnce("error ");
    EXPECT_THROW(bus->SetConnected(true), std::runtime_error);
    trace.raiseOnce("error ");
    EXPECT_THROW(bus->SendCommand("GO0.0.0.0:000A"), std::runtime_error);
    trace.expect({"error [03] no", "error [03] no", "error [03] no"});
    EXPECT_FALSE(bus->GetConnected());
}

TEST_F(RaisingHandlers, ErrorOfAFailedClosing)
{
    port->CloseFailure = "no";
    trace.raiseOnce("error ");
    EXPECT_THROW(bus->SetConnected(false), std::runtime_error);
    trace.expect({"error [03] no"});
}

TEST_F(RaisingHandlers, ErrorInsideAnOpeningIsAFailureOfTheOpening)
{
    port->Close();
    port->OnOpening = [this] {
        port->raiseErrorInside(platform::TComExceptionKind::Open, "cannot", 5, "os");
    };
    trace.raiseOnce("error ");
    EXPECT_FALSE(bus->GetConnected());
    trace.expect({"error [08] cannot", "error [03] host trouble"});
}

TEST_F(RaisingHandlers, WhatIsNoExceptionAtAll)
{
    trace.once("route ", [] { throw 42; });
    port->feed("$000AX\r$001AX\r");
    const QStringList lines = trace.take();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_TRUE(lines[1].startsWith("raised "));
    port->Close();
    port->OnOpening = [] { throw 42; };
    EXPECT_FALSE(bus->GetConnected());
    EXPECT_EQ(trace.take().size(), 1);
}

} // namespace
