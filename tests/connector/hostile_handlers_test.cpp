// Handlers that destroy the connector or the port from inside the connector.

#include "connector_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using platform::TComExceptionKind;

class HostileHandlers : public TConnectorTest
{
protected:
    void destroyConnectorOnce(const QString& beginning)
    {
        trace.once(beginning, [this] { bus.reset(); });
    }
    void destroyPortOnce(const QString& beginning)
    {
        trace.once(beginning, [this] { port.reset(); });
    }
    void expectGone()
    {
        EXPECT_FALSE(bus);
        EXPECT_TRUE(port->Connected());
        EXPECT_FALSE(port->OnException);
        trace.take();
        inject("$000APING");
        trace.expect({}); // nobody listens any more
    }
};

TEST_F(HostileHandlers, ConsumerDestroysTheConnectorDuringAPing)
{
    destroyConnectorOnce("route ");
    port->feed("$000APING\r$001AX\r#002AGO\r");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING"));
    expectGone();
}

TEST_F(HostileHandlers, ConsumerDestroysTheConnectorDuringAReply)
{
    destroyConnectorOnce("route ");
    port->feed("#000BHWGX=N/GR=NNN/\r#002AGO\r");
    trace.expect(routedChecked("#0.0.0.0:000BRELAY3N"));
    expectGone();
}

TEST_F(HostileHandlers, ConsumerDestroysTheConnectorDuringAnEvent)
{
    destroyConnectorOnce("route ");
    inject("$000AETx");
    trace.expect(routedChecked("#0.0.0.0:000APING"));
    expectGone();
}

TEST_F(HostileHandlers, ConsumerDestroysTheConnectorDuringALineGivenDirectly)
{
    for (const char* line :
         {"$000APING", "$000AET", "$000AX", "#000ABT", "#000AET", "#000AHWGX=N/GR=NN/", "#000AGO"}) {
        makeBus();
        destroyConnectorOnce("route ");
        EXPECT_NO_THROW(hear(line));
        expectGone();
    }
}

TEST_F(HostileHandlers, ConsumerDestroysTheConnectorDuringGetCommand)
{
    destroyConnectorOnce("route ");
    EXPECT_NO_THROW(bus->GetCommand("x"));
    trace.expect(routed("x"));
    expectGone();
}

TEST_F(HostileHandlers, ConsumerDestroysTheConnectorAndRaises)
{
    trace.once("route ", [this] {
        bus.reset();
        throw platform::Exception(QStringLiteral("after the end"));
    });
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING") +
                 QStringList("raised after the end"));
    expectGone();
}

TEST_F(HostileHandlers, ConsumerDestroysTheConnectorFromANestedCommand)
{
    trace.once("route ", [this] {
        destroyConnectorOnce("log ");
        bus->SendCommand("GO0.0.0.0:000B");
    });
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING") + sent("$000BGO"));
    expectGone();
}

TEST_F(HostileHandlers, LogDestroysTheConnectorDuringACommand)
{
    destroyConnectorOnce("log ");
    EXPECT_NO_THROW(bus->SendCommand("GO0.0.0.0:000A"));
    trace.expect(sent("$000AGO"));
    expectGone();
}

TEST_F(HostileHandlers, LogDestroysTheConnectorDuringADirectCommand)
{
    destroyConnectorOnce("log ");
    EXPECT_NO_THROW(bus->SendDirectCommand("0.0.0.0", "$000AX"));
    trace.expect(sent("$000AX"));
    expectGone();
}

TEST_F(HostileHandlers, LogDestroysTheConnectorDuringADisplayCommand)
{
    giveDisplay("000A", 4);
    destroyConnectorOnce("log ");
    EXPECT_NO_THROW(EXPECT_EQ(bus->SendCommand("SH0.0.0.0:000A|four|two|||LS|"), ""));
    trace.expect(sent("$000ACS"));
    expectGone();
}

TEST_F(HostileHandlers, LogDestroysTheConnectorInTheClosingLog)
{
    destroyConnectorOnce("log ");
    EXPECT_NO_THROW(EXPECT_EQ(bus->SendCommand("SH0.0.0.0:000A|four|two|||LS|"), ""));
    trace.expect(kNoLinesSent);
    expectGone();
}

TEST_F(HostileHandlers, LogDestroysTheConnectorDuringAPing)
{
    destroyConnectorOnce("log ");
    inject("$000APING");
    trace.expect(sent("$000AECHO"));
    expectGone();
}

TEST_F(HostileHandlers, ErrorDestroysTheConnectorDuringAFailedOpening)
{
    for (const int way : {0, 1, 2}) {
        makeBus();
        port->Close();
        port->OpenFailure = "no";
        destroyConnectorOnce("error ");
        if (way == 0) {
            EXPECT_FALSE(bus->GetConnected());
        } else if (way == 1) {
            EXPECT_NO_THROW(bus->SetConnected(true));
        } else {
            EXPECT_NO_THROW(bus->SendCommand("GO0.0.0.0:000A"));
        }
        trace.expect({"error [03] no"});
        port->OpenFailure.reset();
        port->Open();
        expectGone();
    }
}

TEST_F(HostileHandlers, ErrorDestroysTheConnectorDuringAFailedClosing)
{
    port->CloseFailure = "no";
    destroyConnectorOnce("error ");
    EXPECT_NO_THROW(bus->SetConnected(false));
    trace.expect({"error [03] no"});
    expectGone();
}

TEST_F(HostileHandlers, ErrorDestroysTheConnectorInAPortError)
{
    destroyConnectorOnce("error ");
    port->raiseError(TComExceptionKind::Resource, "gone", 5, "");
    trace.expect({"error [08] gone"});
    expectGone();
}

TEST_F(HostileHandlers, ErrorDestroysTheConnectorInAPortErrorInsideAnOpening)
{
    port->Close();
    port->OnOpening = [this] { port->raiseErrorInside(TComExceptionKind::Open, "gone", 5, ""); };
    destroyConnectorOnce("error ");
    EXPECT_FALSE(bus->GetConnected());
    trace.expect({"error [08] gone"});
    EXPECT_FALSE(bus);
}

TEST_F(HostileHandlers, ErrorDestroysTheConnectorInAPortErrorInsideAWrite)
{
    port->OnWriting = [this] { port->raiseErrorInside(TComExceptionKind::Write, "gone", 5, ""); };
    destroyConnectorOnce("error ");
    EXPECT_NO_THROW(bus->SendCommand("GO0.0.0.0:000A"));
    trace.expect({"error [08] gone"});
    expectGone();
}

TEST_F(HostileHandlers, ConnectorIsDestroyedWhileThePortOpensClosesAndWrites)
{
    port->Close();
    port->OnOpening = [this] { bus.reset(); };
    EXPECT_FALSE(bus->GetConnected());
    expectGone();

    makeBus();
    port->OnOpening = {};
    port->OnWriting = [this] { bus.reset(); };
    EXPECT_NO_THROW(bus->SendCommand("GO0.0.0.0:000A"));
    trace.expect({"write $000AGO4A"}); // no log of nobody's
    expectGone();

    makeBus();
    port->OnWriting = {};
    port->OnClosing = [this] { bus.reset(); };
    EXPECT_NO_THROW(bus->SetConnected(false));
    EXPECT_FALSE(bus);
}

TEST_F(HostileHandlers, PortIsTakenAwayWhileItOpens)
{
    port->Close();
    port->OnOpening = [this] { bus->SetComport(nullptr); };
    EXPECT_EQ(bus->SendCommand("GO0.0.0.0:000A"), "5A");
    trace.expect({}); // nothing to write to any more
    EXPECT_EQ(port->takeWritten(), "");
}

TEST_F(HostileHandlers, ConsumerDestroysThePortDuringAPing)
{
    destroyPortOnce("route ");
    port->feed("$000APING\r$001AX\r#002AGO\r");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING"));
    EXPECT_EQ(bus->ComPort(), nullptr);
    EXPECT_FALSE(bus->GetConnected());
}

TEST_F(HostileHandlers, ConsumerDestroysThePortDuringALineGivenDirectly)
{
    destroyPortOnce("route ");
    hear("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#10.0.0.7:000APING"));
}

TEST_F(HostileHandlers, LogDestroysThePort)
{
    giveDisplay("000A", 4);
    destroyPortOnce("log ");
    EXPECT_EQ(bus->SendCommand("SH0.0.0.0:000A|four||||L|"), "");
    trace.expect(sent("$000ACS") + linesSent("$000BFL1"));
    EXPECT_EQ(bus->SendCommand("GO0.0.0.0:000A"), "5A");
    trace.expect({});
}

TEST_F(HostileHandlers, ErrorDestroysThePortDuringAFailedOpening)
{
    port->Close();
    port->OpenFailure = "no";
    destroyPortOnce("error ");
    EXPECT_FALSE(bus->GetConnected());
    EXPECT_EQ(bus->SendCommand("GO0.0.0.0:000A"), "5A");
    trace.expect({"error [03] no"});
}

TEST_F(HostileHandlers, ErrorDestroysThePortDuringAFailedClosing)
{
    port->CloseFailure = "no";
    destroyPortOnce("error ");
    bus->SetConnected(false);
    trace.expect({"error [03] no"});
    EXPECT_EQ(bus->ComPort(), nullptr);
}

TEST_F(HostileHandlers, ErrorDestroysThePortInAPortError)
{
    destroyPortOnce("error ");
    port->raiseError(TComExceptionKind::Resource, "gone", 5, "");
    trace.expect({"error [08] gone"});
    EXPECT_EQ(bus->ComPort(), nullptr);
}

TEST_F(HostileHandlers, ConsumerDestroysBoth)
{
    trace.once("route ", [this] {
        port.reset();
        bus.reset();
    });
    port->feed("$000APING\r$001AX\r#002AGO\r");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING"));
}

} // namespace
