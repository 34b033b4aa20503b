#include "scales_fixture.h"
#include "support/published_suite.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

struct TPublishedScales
{
    using Component = TScalesDevice;

    static TPublishedTable table()
    {
        return {
            {"LastWeight", 0},
            {"IDLang", 0},
            {"ScalesType", 0},
            {"ComPort", static_cast<platform::TComPort*>(nullptr)},
            {"SendInterval", -1},
            {"OnLog", platform::TLogEvent()},
            {"OnError", platform::TLogEvent()},
            {"OnWeight", scales::TWeightEvent()},
        };
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Scales, Published, TPublishedScales);

TEST(Properties, WorkThroughReflection)
{
    TScalesFixture fixture;
    TScalesDevice& device = *fixture.scales;
    EXPECT_TRUE(device.setProperty("IDLang", 1));
    EXPECT_TRUE(device.setProperty("ScalesType", 3));
    EXPECT_TRUE(device.setProperty("SendInterval", 500));
    EXPECT_EQ(device.IDLang(), 1);
    EXPECT_EQ(device.ScalesType(), 3);
    fixture.clock.advance(500);
    fixture.trace.expect(sent("\x00\x00\x03"_b));

    EXPECT_TRUE(device.setProperty("LastWeight", 7));
    fixture.trace.expect({weighed(7)});
    EXPECT_EQ(device.property("LastWeight").toInt(), 7);

    EXPECT_TRUE(device.setProperty("ComPort", QVariant::fromValue<platform::TComPort*>(nullptr)));
    EXPECT_FALSE(device.IsConnected());

    int weight = 0;
    EXPECT_TRUE(device.setProperty(
        "OnWeight", QVariant::fromValue(scales::TWeightEvent([&](TComponent*, int w) { weight = w; }))));
    device.SetLastWeight(55);
    EXPECT_EQ(weight, 55);
}

TEST(Properties, OutOfRangeTypesAreStored)
{
    TScalesDevice device;
    for (const int type : {9, -1, 2'000'000'000, 0, 8}) {
        device.SetScalesType(type);
        EXPECT_EQ(device.ScalesType(), type);
    }
}

} // namespace
