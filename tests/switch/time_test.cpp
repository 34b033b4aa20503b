// Comparisons of times, and midnight.

#include "switch_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Time = TSwitchTest;

constexpr double kDay = 46'027;

double clockTime(int hour, int minute = 0, int second = 0, int ms = 0)
{
    return (((hour * 60 + minute) * 60 + second) * 1000.0 + ms) / 86'400'000;
}

TEST_F(Time, OnlyTheTimesOfDayAreCompared)
{
    EXPECT_EQ(device->p_hw_checktimeout(kDay + clockTime(10), clockTime(11)), -1);
    EXPECT_EQ(device->p_hw_checktimeout(kDay + clockTime(11), kDay + 7 + clockTime(11)), 0);
    EXPECT_EQ(device->p_hw_checktimeout(clockTime(11, 30), kDay + clockTime(11)), 1);
    trace.expect({"log $$ 30.12.1899 10:00:00 30.12.1899 11:00:00 60",
                  "log $$ 30.12.1899 11:00:00 30.12.1899 11:00:00 0",
                  "log $$ 30.12.1899 11:30:00 30.12.1899 11:00:00 30"});
}

TEST_F(Time, InWholeMilliseconds)
{
    EXPECT_EQ(device->p_hw_checktimeout(clockTime(12, 5), kDay + clockTime(12, 5)), 0);
    EXPECT_EQ(device->p_hw_checktimeout(clockTime(12, 5) + 4e-9, clockTime(12, 5)), 0); // a third of one
    EXPECT_EQ(device->p_hw_checktimeout(clockTime(12, 4, 59, 999), clockTime(12, 5)), -1);
    EXPECT_EQ(device->p_hw_checktimeout(clockTime(12, 5, 0, 1), clockTime(12, 5)), 1);
    trace.expect({"log $$ 30.12.1899 12:05:00 30.12.1899 12:05:00 0",
                  "log $$ 30.12.1899 12:05:00 30.12.1899 12:05:00 0",
                  "log $$ 30.12.1899 12:04:59 30.12.1899 12:05:00 0",
                  "log $$ 30.12.1899 12:05:00 30.12.1899 12:05:00 0"});
}

TEST_F(Time, MinutesAreWholeAndWithoutSign)
{
    device->p_hw_checktimeout(clockTime(0), clockTime(0, 0, 59, 999));
    device->p_hw_checktimeout(clockTime(0, 1), clockTime(0));
    device->p_hw_checktimeout(clockTime(23, 59, 59), clockTime(0));
    trace.expect({"log $$ 30.12.1899 00:00:00 30.12.1899 00:00:59 0",
                  "log $$ 30.12.1899 00:01:00 30.12.1899 00:00:00 1",
                  "log $$ 30.12.1899 23:59:59 30.12.1899 00:00:00 1439"});
}

TEST_F(Time, WithoutALogHandlerTheyAreComparedAllTheSame)
{
    device->SetOnLog({});
    EXPECT_EQ(device->p_hw_checktimeout(0.25, 0.5), -1);
    trace.expect({});
}

TEST_F(Time, BetweenIsMoreThanWholeSeconds)
{
    EXPECT_FALSE(device->p_hw_checktimebetween(clockTime(12), clockTime(12, 0, 2, 999), 2));
    EXPECT_TRUE(device->p_hw_checktimebetween(clockTime(12), clockTime(12, 0, 3), 2));
    EXPECT_TRUE(device->p_hw_checktimebetween(clockTime(12, 0, 3), clockTime(12), 2)); // without sign
    EXPECT_FALSE(device->p_hw_checktimebetween(kDay, kDay, 0));
}

TEST_F(Time, BetweenTakesManyYears)
{
    const qint64 seconds = 46'027LL * 86'400; // does not fit 32 bits
    EXPECT_TRUE(device->p_hw_checktimebetween(kDay, 0, seconds - 1));
    EXPECT_FALSE(device->p_hw_checktimebetween(kDay, 0, seconds));
    EXPECT_FALSE(device->p_hw_checktimebetween(kDay, 0, seconds + 1));
}

class Midnight : public TSwitchTest
{
protected:
    Midnight() { clock.jumpTo(TManualClock::at(23, 59, 50)); }
};

TEST_F(Midnight, AJobThatRunsBeyondItCountsAsOverUntilThen)
{
    makeJob("000A!1!ON!ON", 60); // until 00:00:50: as a time of day that is long gone
    Answers = {{2, 0}};
    sweep();
    trace.expect({reached("000A!1!ON!ON"), stack("000A!1!ON!ON"),
                  "log $$ 30.12.1899 23:59:50 30.12.1899 00:00:50 1439"});
    clock.jumpTo(clock.nowMs() + 20'000);
    sweep(); // 00:00:10
    trace.expect({reached("000A!1!ON!ON"), stack("000A!1!ON!ON"),
                  "log $$ 30.12.1899 00:00:10 30.12.1899 00:00:50 0", check("000A!1!ON!ON", 2)});
}

TEST_F(Midnight, AJobThatEndedBeforeItRunsAgainAfterIt)
{
    makeJob("000A!1!ON!ON", 0);
    clock.jumpTo(clock.nowMs() + 20'000);
    Answers = {{2, 0}};
    sweep();
    EXPECT_EQ(trace.countOf("check"), 1);
}

} // namespace
