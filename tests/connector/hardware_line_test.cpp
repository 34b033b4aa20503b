// "#" lines with "HW": the display's width and the state of the relays.

#include "connector_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using platform::EConvertError;

class HardwareLine : public TConnectorTest
{
protected:
    int widthAfter(const QString& gx, const QString& address = QStringLiteral("000A"))
    {
        hear(u'#' + address + "HWGX=" + gx + "/GR=NN/");
        return board(address, "10.0.0.7")->DisplayLine;
    }

    void expectRaise(const QString& line)
    {
        giveDisplay("000A", 16, "10.0.0.7");
        clock.advance(1'000);
        EXPECT_THROW(hear(line), EConvertError) << line.toStdString();
        trace.expect({}); // no relay, not the line itself
        EXPECT_EQ(board("000A", "10.0.0.7")->DisplayLine, 16) << line.toStdString();
        EXPECT_DOUBLE_EQ(board("000A", "10.0.0.7")->LastPing, platform::Now());
    }
};

TEST_F(HardwareLine, SideAHasRelaysOneAndTwo)
{
    hear("#000AHWGX=N/GR=NY/");
    trace.expect(routedChecked("#10.0.0.7:000ARELAY1N") + routedChecked("#10.0.0.7:000ARELAY2Y") +
                 routed("#10.0.0.7:000AHWGX=N/GR=NY/"));
    inject("#000AHWGX=N/GR=NN/");
    const QStringList lines = trace.take();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines.front(), "route #0.0.0.0:000ARELAY1N19");
}

TEST_F(HardwareLine, SideBHasRelaysThreeToFive)
{
    hear("#000BHWGX=N/GR=YNY/");
    trace.expect(routedChecked("#10.0.0.7:000BRELAY3Y") + routedChecked("#10.0.0.7:000BRELAY4N") +
                 routedChecked("#10.0.0.7:000BRELAY5Y") + routed("#10.0.0.7:000BHWGX=N/GR=YNY/"));
    hear("#000BHWGX=N/GR=NYN/");
    trace.expect(routedChecked("#10.0.0.7:000BRELAY3N") + routedChecked("#10.0.0.7:000BRELAY4Y") +
                 routedChecked("#10.0.0.7:000BRELAY5N") + routed("#10.0.0.7:000BHWGX=N/GR=NYN/"));
}

TEST_F(HardwareLine, OtherSidesHaveNoRelays)
{
    for (const char* side : {"C", "a", "b", "0", "D", "N"}) {
        hear(QStringLiteral("#000%1HWGX=G16x2/GR=NNN/").arg(side));
        trace.expect(routed(QStringLiteral("#10.0.0.7:000%1HWGX=G16x2/GR=NNN/").arg(side)));
        EXPECT_EQ(board(QStringLiteral("000%1").arg(side), "10.0.0.7")->DisplayLine, 16);
    }
}

TEST_F(HardwareLine, OnlyACapitalNIsOff)
{
    hear("#000AHWGX=N/GR=n0/");
    trace.expect(routedChecked("#10.0.0.7:000ARELAY1Y") + routedChecked("#10.0.0.7:000ARELAY2Y") +
                 routed("#10.0.0.7:000AHWGX=N/GR=n0/"));
    hear("#000BHWGX=N/GR= ?N/");
    trace.expect(routedChecked("#10.0.0.7:000BRELAY3Y") + routedChecked("#10.0.0.7:000BRELAY4Y") +
                 routedChecked("#10.0.0.7:000BRELAY5N") + routed("#10.0.0.7:000BHWGX=N/GR= ?N/"));
}

TEST_F(HardwareLine, MissingRelaysAreOn)
{
    hear("#000AHWGX=N/GR=N/");
    trace.expect(routedChecked("#10.0.0.7:000ARELAY1N") + routedChecked("#10.0.0.7:000ARELAY2Y") +
                 routed("#10.0.0.7:000AHWGX=N/GR=N/"));
    for (const char* reply : {"GX=N/GR=/", "GX=N/", "GX=N/GR=NNN"}) { // the last one is not closed
        hear(QStringLiteral("#000BHW%1").arg(reply));
        trace.expect(routedChecked("#10.0.0.7:000BRELAY3Y") + routedChecked("#10.0.0.7:000BRELAY4Y") +
                     routedChecked("#10.0.0.7:000BRELAY5Y") +
                     routed(QStringLiteral("#10.0.0.7:000BHW%1").arg(reply)));
    }
}

TEST_F(HardwareLine, MoreRelaysThanABoardHasAreLeftOut)
{
    hear("#000AHWGX=N/GR=NNYYYY/");
    trace.expect(routedChecked("#10.0.0.7:000ARELAY1N") + routedChecked("#10.0.0.7:000ARELAY2N") +
                 routed("#10.0.0.7:000AHWGX=N/GR=NNYYYY/"));
    hear("#000BHWGX=N/GR=NNNYYY/");
    EXPECT_EQ(trace.take().size(), 4);
}

TEST_F(HardwareLine, RelaysWithoutAnEqualsSignAreReadFromTheKeyOn)
{
    hear("#000AHWGX=N/GRNN/"); // the value is "GRNN"
    trace.expect(routedChecked("#10.0.0.7:000ARELAY1Y") + routedChecked("#10.0.0.7:000ARELAY2Y") +
                 routed("#10.0.0.7:000AHWGX=N/GRNN/"));
}

TEST_F(HardwareLine, TheOrderOfTheKeysIsFree)
{
    hear("#000Axx/GR=YN/yy/GX=G20x4/HW");
    trace.expect(routedChecked("#10.0.0.7:000ARELAY1Y") + routedChecked("#10.0.0.7:000ARELAY2N") +
                 routed("#10.0.0.7:000Axx/GR=YN/yy/GX=G20x4/HW"));
    EXPECT_EQ(board("000A", "10.0.0.7")->DisplayLine, 20);
}

TEST_F(HardwareLine, WidthIsKnownBeforeTheFirstRelay)
{
    trace.once("route ", [this] { EXPECT_EQ(board("000A", "10.0.0.7")->DisplayLine, 20); });
    EXPECT_EQ(widthAfter("G20x4"), 20);
}

TEST_F(HardwareLine, WidthIsCharactersTwoToFourBeforeTheX)
{
    EXPECT_EQ(widthAfter("G20x4"), 20);
    EXPECT_EQ(widthAfter("G8x2"), 8);
    EXPECT_EQ(widthAfter("G123x2"), 123);
    EXPECT_EQ(widthAfter("G1234x2"), 123); // the fourth digit is left out
    EXPECT_EQ(widthAfter("116x2"), 16);    // whatever the first character is
    EXPECT_EQ(widthAfter("N20x4"), 20);
    EXPECT_EQ(widthAfter("G016x"), 16);
    EXPECT_EQ(widthAfter("G16x2x3"), 16); // the first "x"
}

TEST_F(HardwareLine, WidthMayBeAnyNumber)
{
    EXPECT_EQ(widthAfter("G0x0"), 0);
    EXPECT_EQ(widthAfter("G+20x4"), 20);
    EXPECT_EQ(widthAfter("G 20x4"), 20);
    EXPECT_EQ(widthAfter("G-5x4"), -5);
    EXPECT_EQ(widthAfter("G-1x4"), -1); // as if it were not known
}

TEST_F(HardwareLine, NMeansNoDisplay)
{
    EXPECT_EQ(widthAfter("G20x4"), 20);
    EXPECT_EQ(widthAfter("N"), 0);
    EXPECT_EQ(widthAfter("G16x2"), 16); // and is learnt anew each time
}

TEST_F(HardwareLine, MissingWidthRaises)
{
    expectRaise("#000AHW");
    expectRaise("#000AHWGR=NN/");
    expectRaise("#000AHWGX=/GR=NN/");
    expectRaise("#000AHWGX=G20x4"); // not closed
    expectRaise("#000AHWGX=N");
    expectRaise("#000AHWgx=G20x4/");
}

TEST_F(HardwareLine, WidthWithoutXRaises)
{
    expectRaise("#000AHWGX=G20/GR=NN/");
    expectRaise("#000AHWGX=G20X4/GR=NN/");
    expectRaise("#000AHWGX=20/GR=NN/");
}

TEST_F(HardwareLine, WhatIsNotExactlyNIsAWidth)
{
    expectRaise("#000AHWGX=n/GR=NN/");
    expectRaise("#000AHWGX=N /GR=NN/");
    expectRaise("#000AHWGX= N/GR=NN/");
    expectRaise("#000AHWGX=NN/GR=NN/");
    expectRaise("#000AHWGXN/GR=NN/"); // the value is "GXN"
    expectRaise("#000AHWGX=Nx/GR=NN/");
}

TEST_F(HardwareLine, NonNumericWidthRaises)
{
    expectRaise("#000AHWGX=Gabx4/GR=NN/");
    expectRaise("#000AHWGX=G2ox4/GR=NN/");
    expectRaise("#000AHWGX=x4/GR=NN/");
    expectRaise("#000AHWGX=Gx4/GR=NN/");
    expectRaise("#000AHWGX=2x4/GR=NN/");
    expectRaise("#000AHWGX=G20 x4/GR=NN/"); // "20 "
    expectRaise("#000AHWGX=G--5x4/GR=NN/");
    expectRaise("#000AHWGX=G- 5x4/GR=NN/");
    expectRaise("#000AHWGX=G$1x4/GR=NN/");
}

TEST_F(HardwareLine, TheFirstKeyInTheLineCountsEvenInTheAddress)
{
    hear("#GX0AHWGX=G20x4/GR=NN/");
    EXPECT_EQ(board("GX0A", "10.0.0.7")->DisplayLine, 20);
    EXPECT_THROW(hear("#GX=AHWGX=G20x4/"), EConvertError); // its value is "AHWGX=G20x4"
    EXPECT_EQ(board("GX=A", "10.0.0.7")->DisplayLine, -1);
}

TEST_F(HardwareLine, FromTheLineARaiseGoesToTheExceptionHandlerAndTheNextLineIsServed)
{
    port->feed("#000AHWGX=Gabx4/GR=NN/\r#000AGO\r");
    const QStringList lines = trace.take();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines[0].startsWith("raised ")) << lines[0].toStdString();
    EXPECT_EQ(lines[1], "route " + checked("#0.0.0.0:000ACROSS"));
    EXPECT_EQ(board("000A")->DisplayLine, -1);
}

TEST_F(HardwareLine, EndsTheHardwareRequests)
{
    inject("$000APING");
    inject("#000AHWGX=G20x4/GR=NN/");
    trace.take();
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING"));
    inject("$000BPING"); // its partner has not answered yet
    trace.expect(sent("$000BECHO") + routedChecked("#0.0.0.0:000BPING") + sent("$000BHW") + sent("$000AHW"));
    inject("#000BHWGX=N/GR=NNN/");
    trace.take();
    inject("$000BPING");
    trace.expect(sent("$000BECHO") + routedChecked("#0.0.0.0:000BPING"));
}

TEST_F(HardwareLine, AWidthOfMinusOneKeepsTheHardwareRequests)
{
    inject("#000AHWGX=G-1x4/GR=NN/");
    trace.take();
    inject("$000APING");
    EXPECT_EQ(trace.take().size(), 7);
}

} // namespace
