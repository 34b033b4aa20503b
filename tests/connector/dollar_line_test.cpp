// Lines that begin with "$": pings and everything else.

#include "connector_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using DollarLine = TConnectorTest;

TEST_F(DollarLine, FirstPingOfSideA)
{
    inject("$000APING");
    trace.expect({"write $000AECHOB6", "log $000AECHOB6", "route #0.0.0.0:000APING22", "write $000AHW29",
                  "log $000AHW29", "write $000BHWE3", "log $000BHWE3"});
    EXPECT_EQ(port->takeWrites(), QByteArrayList({"$000AECHOB6", "$000AHW29", "$000BHWE3"}));
    EXPECT_EQ(bus->DeviceCount(), 1); // the partner has not spoken
}

TEST_F(DollarLine, FirstPingOfSideB)
{
    inject("$012BPING");
    trace.expect(sent("$012BECHO") + routedChecked("#0.0.0.0:012BPING") + sent("$012BHW") + sent("$012AHW"));
}

TEST_F(DollarLine, PingOfAnotherSideAsksNoPartner)
{
    for (const QString side : {"C", "a", "b", "0"}) {
        inject("$000" + side + "PING");
        trace.expect(sent("$000" + side + "ECHO") + routedChecked("#0.0.0.0:000" + side + "PING") +
                     sent("$000" + side + "HW"));
    }
}

TEST_F(DollarLine, EveryPingAsksUntilTheDisplayIsKnown)
{
    for (int i = 0; i < 3; ++i) {
        inject("$000APING");
        trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING") + sent("$000AHW") +
                     sent("$000BHW"));
    }
}

TEST_F(DollarLine, PingOfABoardWithKnownDisplay)
{
    for (const int width : {0, 1, 20, -5}) {
        giveDisplay("000A", width);
        inject("$000APING");
        trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING"));
    }
}

TEST_F(DollarLine, DisplayIsKnownByLinkAndAddress)
{
    giveDisplay("000A", 20, "10.0.0.7");
    giveDisplay("000B", 20);
    inject("$000APING");
    EXPECT_EQ(trace.take().size(), 7);
}

TEST_F(DollarLine, AHostThatTellsTheDisplayDuringThePingIsNotAsked)
{
    trace.once("route ", [this] { giveDisplay("000A", 20); });
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING"));
}

TEST_F(DollarLine, PingOfAnotherLinkIsRoutedWithItsAddress)
{
    hear("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#10.0.0.7:000APING") + sent("$000AHW") + sent("$000BHW"));
}

TEST_F(DollarLine, PingAnywhere)
{
    giveDisplay("000A", 0);
    inject("$000Axx PING yy");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING"));
    inject("$PINGA"); // the address itself
    trace.expect(sent("$PINGECHO") + routedChecked("#0.0.0.0:PINGPING") + sent("$PINGHW"));
    inject("$0APING"); // across its end; neither side
    trace.expect(sent("$0APIECHO") + routedChecked("#0.0.0.0:0APIPING") + sent("$0APIHW"));
}

TEST_F(DollarLine, CaseCounts)
{
    inject("$000APinG");
    trace.expect(routed("$0.0.0.0:000APinG"));
    inject("$000Aet");
    trace.expect(routed("$0.0.0.0:000Aet"));
}

TEST_F(DollarLine, EventCountsAsAPing)
{
    inject("$000AET0012345");
    trace.expect(routedChecked("#0.0.0.0:000APING") + routed("$0.0.0.0:000AET0012345"));
    EXPECT_EQ(port->takeWritten(), ""); // but is not answered
    inject("$ET0AX");
    trace.expect(routedChecked("#0.0.0.0:ET0APING") + routed("$0.0.0.0:ET0AX"));
    inject("$000ET");
    trace.expect(routedChecked("#0.0.0.0:000EPING") + routed("$0.0.0.0:000ET"));
}

TEST_F(DollarLine, PingGoesBeforeEvent)
{
    giveDisplay("000A", 0);
    for (const char* line : {"$000AETPING", "$000APINGET"}) {
        inject(line);
        trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING"));
    }
}

TEST_F(DollarLine, AnythingElseIsPassedOnAsItIs)
{
    for (const QString line : {"000AR12345", "000ABT", "000AHWGX=?/", "000AGO", "000A", "A", "000ATE",
                               "000Aж Ж", "000A  two  blanks", "000AEC"}) {
        inject(u'$' + line);
        trace.expect(routed("$0.0.0.0:" + line));
    }
    EXPECT_EQ(board("000A")->DisplayLine, -1);
    EXPECT_EQ(port->takeWritten(), "");
}

TEST_F(DollarLine, MayBeShort)
{
    hear("$");
    trace.expect(routed("$10.0.0.7:"));
    hear("$A");
    trace.expect(routed("$10.0.0.7:A"));
    hear("$ET");
    trace.expect(routedChecked("#10.0.0.7:ETPING") + routed("$10.0.0.7:ET"));
    EXPECT_EQ(bus->DeviceCount(), 3);
}

TEST_F(DollarLine, ReceivedChecksumsAreNotLookedAt)
{
    inject("$000AX00");
    inject("$000AXFF");
    trace.expect(routed("$0.0.0.0:000AX00") + routed("$0.0.0.0:000AXFF"));
}

TEST_F(DollarLine, WithoutTransportPingsAreRoutedAndNotAnswered)
{
    for (const auto type : {connector::podEmpty, connector::podNet}) {
        bus->SetConnectorType(type);
        inject("$000APING");
        trace.expect(routedChecked("#0.0.0.0:000APING"));
    }
}

TEST_F(DollarLine, WithoutAConsumerPingsAreAnswered)
{
    bus->SetOnGetData({});
    inject("$000APING");
    trace.expect(sent("$000AECHO") + sent("$000AHW") + sent("$000BHW"));
}

TEST_F(DollarLine, TheEchoIsSentBeforeTheConsumerIsAsked)
{
    trace.once("route ", [this] { EXPECT_EQ(port->takeWritten(), "$000AECHOB6"); });
    inject("$000APING");
    EXPECT_EQ(port->takeWrites(), QByteArrayList({"$000AHW29", "$000BHWE3"}));
}

} // namespace
