// Handlers that raise: nothing is caught here, the line or command ends, and the next one is served.

#include "bus_bench.h"

#include "support/text_printers.h"

#include <stdexcept>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class RaisingHandlers : public TBusTest
{
protected:
    /// The handler of the first line that begins like this raises.
    void raiseOnce(const QString& beginning)
    {
        trace.once(beginning, [] { throw std::runtime_error("host"); });
    }

    const QStringList raised{"raised host"};
};

TEST_F(RaisingHandlers, ConsumerDuringAPing)
{
    raiseOnce("route ");
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING") + raised); // no hardware request
    inject("$000APING");
    EXPECT_EQ(trace.take().size(), 7);
}

TEST_F(RaisingHandlers, ConsumerDuringAnEvent)
{
    raiseOnce("route ");
    inject("$000AETx");
    trace.expect(routedChecked("#0.0.0.0:000APING") + raised);
}

TEST_F(RaisingHandlers, ConsumerDuringAReply)
{
    raiseOnce("route ");
    inject("#000AHWGX=G20x4/GR=NN/");
    trace.expect(routedChecked("#0.0.0.0:000ARELAY1N") + raised);
    EXPECT_EQ(board("000A")->DisplayLine, 20); // learnt before
}

TEST_F(RaisingHandlers, ConsumerWithMoreLinesInTheSameRead)
{
    raiseOnce("route ");
    port->feed("$000AX\r$001AX\r#002AGO\r");
    trace.expect(routed("$0.0.0.0:000AX") + raised + routed("$0.0.0.0:001AX") +
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
    raiseOnce("route ");
    EXPECT_THROW(hear("$000APING"), std::runtime_error);
    trace.expect(sent("$000AECHO") + routedChecked("#10.0.0.7:000APING"));
    raiseOnce("route ");
    EXPECT_THROW(bus->GetCommand("x"), std::runtime_error);
    trace.expect(routed("x"));
    hear("$000AX");
    trace.expect(routed("$10.0.0.7:000AX"));
}

TEST_F(RaisingHandlers, LogOfACommand)
{
    raiseOnce("log ");
    EXPECT_THROW(bus->SendCommand("GO0.0.0.0:000A"), std::runtime_error);
    trace.expect(sent("$000AGO")); // it is on the line
    raiseOnce("log ");
    EXPECT_THROW(bus->SendDirectCommand("0.0.0.0", "$000AX"), std::runtime_error);
    trace.expect(sent("$000AX"));
    EXPECT_EQ(bus->SendCommand("GO0.0.0.0:000A"), "5A");
}

TEST_F(RaisingHandlers, LogOfADisplayCommand)
{
    giveDisplay("000A", 4);
    raiseOnce("log " + checked("$000APSN1001four"));
    EXPECT_THROW(bus->SendCommand("SH0.0.0.0:000A|four|two|||L|"), std::runtime_error);
    trace.expect(sent("$000ACS") + sent("$000APSN1001four")); // neither the rest nor the closing log
    raiseOnce("log Lines");
    EXPECT_THROW(bus->SendCommand("SH0.0.0.0:000A|||||L|"), std::runtime_error);
    trace.expect(sent("$000BFL1") + linesSent("$000BFL1"));
}

TEST_F(RaisingHandlers, LogOfTheAnswerToAPing)
{
    raiseOnce("log ");
    inject("$000APING");
    trace.expect(sent("$000AECHO") + raised);
}

TEST_F(RaisingHandlers, ErrorOfAFailedOpening)
{
    port->Close();
    port->OpenFailure = "no";
    raiseOnce("error ");
    EXPECT_THROW(bus->GetConnected(), std::runtime_error);
    raiseOnce("error ");
    EXPECT_THROW(bus->SetConnected(true), std::runtime_error);
    raiseOnce("error ");
    EXPECT_THROW(bus->SendCommand("GO0.0.0.0:000A"), std::runtime_error);
    trace.expect({"error [03] no", "error [03] no", "error [03] no"});
    EXPECT_FALSE(bus->GetConnected());
}

TEST_F(RaisingHandlers, ErrorOfAFailedClosing)
{
    port->CloseFailure = "no";
    raiseOnce("error ");
    EXPECT_THROW(bus->SetConnected(false), std::runtime_error);
    trace.expect({"error [03] no"});
}

TEST_F(RaisingHandlers, ErrorInsideAnOpeningIsAFailureOfTheOpening)
{
    port->Close();
    port->OnOpening = [this] {
        port->raiseErrorInside(platform::TComExceptionKind::Open, "cannot", 5, "os");
    };
    raiseOnce("error ");
    EXPECT_FALSE(bus->GetConnected());
    trace.expect({"error [08] cannot", "error [03] host"});
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
