// Who raises OnWeight, when, and what guards it.

#include "wire_samples.h"

#include <limits>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

TEST(Notified, AreFamilies1And2)
{
    for (const TSample& sample : samples()) {
        EXPECT_EQ(isTold(sample), sample.type <= 2) << sample.type;
    }
}

TEST_P(TEveryFamily, OnWeightIsRaisedOrNot)
{
    prepare();
    feed(sample().bytes);
    EXPECT_EQ(trace.countOf("weight"), isTold(sample()) ? 1 : 0);
    EXPECT_EQ(scales->LastWeight(), sample().weight);
}

using Notify = TScalesTest;

TEST_F(Notify, SettingANewWeightRaises)
{
    scales->SetLastWeight(1);
    trace.expect({weighed(1)});
    scales->SetLastWeight(2); // no hysteresis here
    trace.expect({weighed(2)});
    scales->SetLastWeight(std::numeric_limits<int>::max());
    trace.expect({weighed(std::numeric_limits<int>::max())});
}

TEST_F(Notify, SettingTheSameWeightDoesNot)
{
    scales->SetLastWeight(5);
    trace.take();
    scales->SetLastWeight(5);
    trace.expect({});
}

TEST_F(Notify, WeightsBelowOneAreStoredOnly)
{
    scales->SetLastWeight(5);
    trace.take();
    for (const int weight : {0, -1, std::numeric_limits<int>::min()}) {
        scales->SetLastWeight(weight);
        EXPECT_EQ(scales->LastWeight(), weight);
    }
    trace.expect({});
}

TEST_F(Notify, WithoutAHandlerItIsStored)
{
    scales->SetOnWeight({});
    scales->SetLastWeight(5);
    EXPECT_EQ(scales->LastWeight(), 5);
}

TEST_F(Notify, InsideItsOwnHandlerItIsNotRaisedAndTheOuterWeightStays)
{
    trace.once("weight", [&] {
        scales->SetLastWeight(50);
        EXPECT_EQ(scales->LastWeight(), 50);
        scales->SetLastWeight(60);
        EXPECT_EQ(scales->LastWeight(), 60);
    });
    scales->SetLastWeight(5);
    trace.expect({weighed(5)});
    EXPECT_EQ(scales->LastWeight(), 5);
    scales->SetLastWeight(6);
    trace.expect({weighed(6)});
}

TEST_F(Notify, PacketsInsideTheHandlerAreDecodedQuietly)
{
    use(1);
    ask();
    feed("\x80\x00"_b);
    trace.take();
    trace.once("weight", [&] { feed("\x64\x00"_b); });
    feed("\x39\x30"_b);
    EXPECT_EQ(trace.countOf("weight"), 1);
    EXPECT_EQ(trace.countOf("log [03]"), 2);
    trace.take();
    feed("\xC8\x00"_b);
    EXPECT_EQ(trace.countOf(weighed(200)), 1);
}

TEST_F(Notify, AHandlerThatRaisesIsCalledAgainNextTime)
{
    trace.raiseOnce("weight");
    EXPECT_THROW(scales->SetLastWeight(5), std::runtime_error);
    trace.expect({weighed(5)});
    EXPECT_EQ(scales->LastWeight(), 5);
    scales->SetLastWeight(6);
    trace.expect({weighed(6)});
}

TEST_F(Notify, AHandlerThatRaisesLosesItsPacketOnly)
{
    use(2);
    ask();
    feed("\x06");
    trace.take();
    trace.raiseOnce("weight");
    feed("\x01\x02S 000100kg\x04");
    trace.expect(received("\x01\x02S 000100kg\x04") + QStringList{weighed(100), raised("host trouble")});
    feed("\x01\x02S 000200kg\x04");
    trace.expect(received("\x01\x02S 000200kg\x04") + QStringList{weighed(200)});
}

TEST_F(Notify, AskingResetsTheWeightWithoutAnEvent)
{
    use(3);
    scales->SetLastWeight(5);
    trace.take();
    scales->GetWeight(true);
    EXPECT_EQ(scales->LastWeight(), 0);
    trace.expect(sent("\x00\x00\x03"_b));
}

TEST_F(Notify, SameWeightIsRaisedAgainAfterAnotherRequest)
{
    use(2);
    for (int i = 0; i < 3; ++i) {
        ask();
        feed("\x06");
        feed("\x01\x02S 000100kg\x04");
        EXPECT_EQ(trace.countOf("weight"), 1) << i;
    }
}

} // namespace
