// Lines that begin with "#": what is passed on, and which word wins.

#include "connector_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using HashLine = TConnectorTest;

TEST_F(HashLine, Button)
{
    hear("#000ABT");
    trace.expect(routedChecked("#10.0.0.7:000ABTPH"));
    inject("#000ABT");
    trace.expect({"route #0.0.0.0:000ABTPHA9"});
    hear("#000A whatever BT behind");
    trace.expect(routedChecked("#10.0.0.7:000ABTPH")); // nothing else of the line
}

TEST_F(HashLine, EventIsPassedOnWithADollarSign)
{
    hear("#000AET01234567");
    trace.expect(routed("$10.0.0.7:000AET01234567"));
    inject("#000BET");
    trace.expect(routed("$0.0.0.0:000BET"));
    hear("#000Aabc ET def");
    trace.expect(routed("$10.0.0.7:000Aabc ET def"));
}

TEST_F(HashLine, Passage)
{
    hear("#000AGO");
    trace.expect(routedChecked("#10.0.0.7:000ACROSS"));
    inject("#000AxGOy");
    trace.expect({"route #0.0.0.0:000ACROSSE2"});
}

TEST_F(HashLine, AnythingElseIsDroppedButHeard)
{
    for (const char* line : {"#000A", "#000APING", "#000APH", "#000AGx", "#000AB T", "#000ATE", "#", "#0"}) {
        hear(line);
    }
    trace.expect({});
    EXPECT_EQ(bus->DeviceCount(), 3); // 000A, an empty address and "0"
    EXPECT_EQ(bus->DeviceItem(0)->Device, "000A");
    EXPECT_EQ(bus->DeviceItem(1)->Device, "");
    EXPECT_EQ(bus->DeviceItem(2)->Device, "0");
    clock.advance(5'000);
    hear("#000A");
    EXPECT_DOUBLE_EQ(bus->DeviceItem(0)->LastPing, platform::Now());
}

TEST_F(HashLine, CaseCounts)
{
    for (const char* line : {"#000Abt", "#000AbT", "#000AEt", "#000Ahw", "#000Ago", "#000AGo"}) {
        hear(line);
    }
    trace.expect({});
}

TEST_F(HashLine, ButtonGoesBeforeEverything)
{
    for (const char* line :
         {"#000AETBT", "#000ABTET", "#000AHWBT", "#000AGOBT", "#000AGOETHWBT", "#000AHWGX=?/BT"}) {
        hear(line);
        trace.expect(routedChecked("#10.0.0.7:000ABTPH"));
    }
}

TEST_F(HashLine, EventGoesBeforeHardwareAndPassage)
{
    hear("#000AHWGX=N/ET");
    trace.expect(routed("$10.0.0.7:000AHWGX=N/ET"));
    EXPECT_EQ(board("000A", "10.0.0.7")->DisplayLine, -1);
    hear("#000AGOET");
    trace.expect(routed("$10.0.0.7:000AGOET"));
    hear("#000AHWGOET");
    trace.expect(routed("$10.0.0.7:000AHWGOET"));
}

TEST_F(HashLine, HardwareGoesBeforePassage)
{
    hear("#000XGOHWGX=N/");
    trace.expect(routed("#10.0.0.7:000XGOHWGX=N/"));
    hear("#000XHWGX=N/GO");
    trace.expect(routed("#10.0.0.7:000XHWGX=N/GO"));
}

TEST_F(HashLine, WordsInTheAddressCount)
{
    hear("#BT0A");
    trace.expect(routedChecked("#10.0.0.7:BT0ABTPH"));
    hear("#0ETA");
    trace.expect(routed("$10.0.0.7:0ETA"));
    hear("#00GO");
    trace.expect(routedChecked("#10.0.0.7:00GOCROSS"));
    hear("#0HWAGX=N/GR=/");
    trace.expect(routedChecked("#10.0.0.7:0HWARELAY1Y") + routedChecked("#10.0.0.7:0HWARELAY2Y") +
                 routed("#10.0.0.7:0HWAGX=N/GR=/"));
    hear("#BT0AET");
    trace.expect(routedChecked("#10.0.0.7:BT0ABTPH"));
}

TEST_F(HashLine, WordsAcrossTheEndOfTheAddressCount)
{
    hear("#00ABT");
    trace.expect(routedChecked("#10.0.0.7:00ABBTPH"));
    hear("#000ET");
    trace.expect(routed("$10.0.0.7:000ET"));
    hear("#000GO");
    trace.expect(routedChecked("#10.0.0.7:000GCROSS"));
}

TEST_F(HashLine, ShortLines)
{
    hear("#BT");
    trace.expect(routedChecked("#10.0.0.7:BTBTPH"));
    hear("#ET");
    trace.expect(routed("$10.0.0.7:ET"));
    hear("#GO");
    trace.expect(routedChecked("#10.0.0.7:GOCROSS"));
    EXPECT_EQ(bus->DeviceCount(), 3);
    EXPECT_EQ(bus->DeviceItem(0)->Device, "BT");
}

TEST_F(HashLine, TheBoardIsKnownBeforeTheConsumerHearsOfIt)
{
    trace.once("route ", [this] {
        EXPECT_EQ(bus->DeviceCount(), 1);
        EXPECT_DOUBLE_EQ(bus->DeviceItem(0)->LastPing, platform::Now());
    });
    hear("#000ABT");
    EXPECT_EQ(trace.take().size(), 1);
}

TEST_F(HashLine, NeverWrites)
{
    for (const char* line : {"#000ABT", "#000AET", "#000AHWGX=N/GR=N/", "#000AGO", "#000APING"}) {
        inject(line);
    }
    EXPECT_EQ(port->takeWritten(), "");
}

TEST_F(HashLine, TheLinkIsTakenAsItIs)
{
    bus->ProcessDataToDevice("", "#000ABT");
    trace.expect(routedChecked("#:000ABTPH"));
    bus->ProcessDataToDevice("a:b", "#000AET");
    trace.expect(routed("$a:b:000AET"));
}

TEST_F(HashLine, ChecksumsAreTakenOverTheBytesOfTheCodePage)
{
    inject("#ЖжЯAGO");
    trace.expect(routedChecked("#0.0.0.0:ЖжЯACROSS"));
    inject("#000AETПривет");
    trace.expect(routed("$0.0.0.0:000AETПривет"));
}

using OtherLine = TConnectorTest;

TEST_F(OtherLine, IsDroppedButHeard)
{
    int heardBoards = 0;
    for (const char* line : {"!000APING", "000APING#", " #000ABT", "%000AET", "x", "P"}) {
        clock.advance(1'000);
        hear(line);
        EXPECT_GE(bus->DeviceCount(), heardBoards);
        heardBoards = bus->DeviceCount();
    }
    trace.expect({});
    EXPECT_EQ(bus->DeviceItem(0)->Device, "000A"); // of "!000APING"
    EXPECT_EQ(bus->DeviceItem(1)->Device, "00AP"); // of "000APING#"
    EXPECT_EQ(bus->DeviceItem(2)->Device, "#000");
    EXPECT_EQ(port->takeWritten(), "");
}

TEST_F(OtherLine, MayBeEmpty)
{
    hear("");
    trace.expect({});
    ASSERT_EQ(bus->DeviceCount(), 1);
    EXPECT_EQ(bus->DeviceItem(0)->Device, "");
}

TEST_F(OtherLine, UpdatesTheTime)
{
    hear("$000AX");
    clock.advance(9'000);
    hear("!000A");
    EXPECT_DOUBLE_EQ(board("000A", "10.0.0.7")->LastPing, platform::Now());
}

} // namespace
