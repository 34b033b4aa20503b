// Polling by the timer.

#include "wire_samples.h"

#include <limits>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class Polling : public TScalesTest
{
protected:
    Polling() { use(3); }

    const QStringList request = sent("\x00\x00\x03"_b);
};

TEST_F(Polling, IsOffAtFirst)
{
    clock.advance(60'000);
    trace.expect({});
}

TEST_F(Polling, AsksAtEachTick)
{
    scales->SetSendInterval(1'000);
    trace.expect({});
    for (int i = 0; i < 12; ++i) {
        clock.advance(999);
        trace.expect({});
        clock.advance(1);
        trace.expect(request); // in time: each request renews the time
    }
    EXPECT_EQ(passes, 0);
}

TEST_F(Polling, MinusOneStopsIt)
{
    scales->SetSendInterval(1'000);
    clock.advance(1'500);
    trace.take();
    scales->SetSendInterval(-1);
    EXPECT_EQ(scales->SendInterval(), -1);
    clock.advance(60'000);
    trace.expect({});
}

TEST_F(Polling, MinusOneAtFirstChangesNothing)
{
    scales->SetSendInterval(-1);
    clock.advance(60'000);
    trace.expect({});
}

TEST_F(Polling, IntervalsThatNeverTickAreStored)
{
    for (const int interval : {0, -2, std::numeric_limits<int>::min()}) {
        scales->SetSendInterval(interval);
        EXPECT_EQ(scales->SendInterval(), interval);
        clock.advance(10'000);
        trace.expect({});
    }
    scales->SetSendInterval(300);
    clock.advance(300);
    EXPECT_GT(trace.count(), 0);
    scales->SetSendInterval(0);
    trace.take();
    clock.advance(10'000);
    trace.expect({});
}

TEST_F(Polling, AnotherIntervalBeginsAnew)
{
    scales->SetSendInterval(1'000);
    clock.advance(900);
    scales->SetSendInterval(500);
    clock.advance(499);
    trace.expect({});
    clock.advance(1);
    trace.expect(request);
    clock.advance(500);
    trace.expect(request);
}

TEST_F(Polling, TheSameIntervalDoesNotDisturbIt)
{
    scales->SetSendInterval(1'000);
    clock.advance(900);
    scales->SetSendInterval(1'000);
    clock.advance(100);
    trace.expect(request);
}

TEST_F(Polling, AClosedPortIsNotAsked)
{
    scales->SetSendInterval(1'000);
    scales->SetLastWeight(55);
    trace.take();
    port->Close();
    clock.advance(10'000);
    trace.expect({});
    EXPECT_EQ(scales->LastWeight(), 55); // the weight was not asked for either
    port->Open();
    clock.advance(1'000);
    EXPECT_GT(trace.count(), 0);
}

TEST_F(Polling, WithoutAPortNothingHappens)
{
    scales->SetSendInterval(1'000);
    scales->SetComport(nullptr);
    clock.advance(10'000);
    trace.expect({});
}

TEST_F(Polling, WithoutAFamilyTheWeightIsReset)
{
    use(0);
    scales->SetSendInterval(1'000);
    scales->SetLastWeight(55);
    trace.take();
    clock.advance(1'000);
    trace.expect({});
    EXPECT_EQ(scales->LastWeight(), 0);
}

TEST_F(Polling, ContinuousFamiliesAreNotWaitedFor)
{
    use(8);
    scales->SetSendInterval(1'000);
    clock.advance(10'000);
    EXPECT_EQ(passes, 0);
    trace.expect({});
}

TEST_F(Polling, AFailingWriteGoesToTheExceptionHandlerAndPollingGoesOn)
{
    scales->SetSendInterval(1'000);
    port->WriteFailure = QStringLiteral("line gone");
    clock.advance(2'000);
    trace.expect({raised("line gone"), raised("line gone")});
    port->WriteFailure.reset();
    clock.advance(1'000);
    trace.expect(request);
}

TEST_F(Polling, AHandlerMayStopItInsideATick)
{
    scales->SetSendInterval(1'000);
    trace.once("log [05]", [&] { scales->SetSendInterval(-1); });
    clock.advance(10'000);
    trace.expect(request);
}

TEST_F(Polling, AHandlerMayDestroyTheComponentInsideATick)
{
    scales->SetSendInterval(1'000);
    trace.once("log [05]", [&] { scales.reset(); });
    clock.advance(10'000);
    trace.expect(request);
}

TEST_F(Polling, EndsWithTheComponent)
{
    scales->SetSendInterval(1'000);
    scales.reset();
    clock.advance(10'000);
    trace.expect({});
}

} // namespace
