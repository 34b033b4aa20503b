#include "tnv5/testing/wire.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::testkit;

class WireTest : public testing::Test
{
protected:
    WireTest() { port.Open(); }

    TMemoryPort port;
    TWire wire{port};
};

TEST_F(WireTest, ExpectsInOrderAndLeavesTheRest)
{
    port.Write("$01A");
    port.Write("10366\r$02");
    wire.expect("$01A10366\r");
    wire.expect("$02");
    wire.expectNothing();
}

TEST_F(WireTest, SaysWhatWasExpectedAndWhatCame)
{
    port.Write("$01A00064\r");
    try {
        wire.expect("$01A10366\r");
        FAIL() << "accepted";
    } catch (const EExpectation& error) {
        EXPECT_EQ(error.message(),
                  QStringLiteral("expected on the wire: $01A10366<13>\n     but written: $01A00064<13>"));
    }
    EXPECT_THROW(wire.expectNothing(), EExpectation);
    wire.expect("$01A00064\r"); // nothing was lost
    EXPECT_THROW(wire.expect("x"), EExpectation);
}

TEST(Readable, ShowsEveryByte)
{
    EXPECT_EQ(readable(QByteArray("\0a~\x7f\xff", 5)), QStringLiteral("<0>a~<127><255>"));
    EXPECT_EQ(readable(""), QStringLiteral("(nothing)"));
}

} // namespace
