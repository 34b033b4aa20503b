// Time-outs at their exact second, midnight, and the timer of the stack.

#include "turnstile_fixture.h"

#include <limits>
#include <random>

namespace {

using namespace tnv5::tests;
using tnv5::turnstile::PRFidInfo;

class PassTime : public TTurnstileTest
{
protected:
    /// Milliseconds after its creation at which a pass changes its state; -1: not within the limit.
    /// The table is gone through by calls, so that any millisecond can be looked at.
    qint64 firstChange(const PRFidInfo& pass, qint64 limitMs)
    {
        const QString before = pass->Status;
        for (qint64 ms = 0; ms <= limitMs; ms += 1'000) {
            // only the last millisecond before a whole second and that second itself can make a difference
            for (const qint64 moment : {ms - 1, ms}) {
                if (moment < 0) {
                    continue;
                }
                clock.jumpTo(FStart + moment);
                gate->p_hw_CallStackArray();
                if (pass->Status != before) {
                    return moment;
                }
            }
        }
        return -1;
    }

    PRFidInfo startPass(const QString& device, const QString& status, const QString& hard)
    {
        FStart = clock.nowMs();
        const PRFidInfo pass = makePass(device, "77", status);
        pass->StatusHard = hard;
        return pass;
    }

    qint64 FStart = 0;
};

TEST_F(PassTime, OpenTurnstileTimesOutTwoSecondsAfterItsTimeOut)
{
    const PRFidInfo pass = startPass("01A", "OPEN", "RELAY");
    EXPECT_EQ(firstChange(pass, 20'000), 8'000);
    EXPECT_EQ(pass->Status, "TIMEOUT");
}

TEST_F(PassTime, OpenTurnstileFollowsTheTimeOut)
{
    for (const int timeOut : {0, 1, 30}) {
        gate->SetTimeOut(timeOut);
        const PRFidInfo pass = startPass("01A", "OPEN", "RELAY");
        EXPECT_EQ(firstChange(pass, 60'000), (timeOut + 3) * 1'000);
        pass->Status = "CLOSE";
        gate->p_hw_CallStackArray();
    }
}

TEST_F(PassTime, OpenDoorTimesOutAfterThreeSeconds)
{
    gate->SetTimeOut(50);
    const PRFidInfo pass = startPass("01D", "OPEN", "RELAY");
    EXPECT_EQ(firstChange(pass, 20'000), 4'000);
    EXPECT_EQ(pass->Status, "TIMEOUT");
}

TEST_F(PassTime, OpenPassOfAnyOtherChannelNeverTimesOut)
{
    EXPECT_EQ(firstChange(startPass("01B", "OPEN", "RELAY"), 100'000), -1);
}

TEST_F(PassTime, DoorsFollowTheDoorIndex)
{
    gate->SetDoorIndex("B");
    EXPECT_EQ(firstChange(startPass("01B", "OPEN", "RELAY"), 20'000), 4'000);
    EXPECT_EQ(firstChange(startPass("01D", "OPEN", "RELAY"), 100'000), -1);
}

TEST_F(PassTime, ATurnstileThatIsADoorTimesOutAtTheEarlier)
{
    gate->SetDoorIndex("A");
    EXPECT_EQ(firstChange(startPass("01A", "OPEN", "RELAY"), 20'000), 4'000);
    gate->SetTimeOut(0);
    EXPECT_EQ(firstChange(startPass("02A", "OPEN", "RELAY"), 20'000), 3'000);
}

TEST_F(PassTime, UnacknowledgedPassIsNotAnsweredAtTwoSeconds)
{
    for (const QString device : {"01A", "01B", "01D"}) {
        const PRFidInfo pass = startPass(device, "OPEN", "");
        EXPECT_EQ(firstChange(pass, 20'000), 2'000);
        EXPECT_EQ(pass->Status, "NOANSWER");
    }
}

TEST_F(PassTime, AnyReportOfTheControllerIsAnAnswer)
{
    for (const QString hard : {"RELAY", "CRC-ERROR", "GATEOPEN", "x"}) {
        EXPECT_EQ(firstChange(startPass("01A", "OPEN", hard), 20'000), 8'000) << hard.toStdString();
        gate->StackItem(0)->Status = "CLOSE";
        gate->p_hw_CallStackArray();
    }
}

TEST_F(PassTime, TimeOutIsTestedBeforeTheAnswer)
{
    gate->SetTimeOut(-1); // the same second for both
    const PRFidInfo pass = startPass("01A", "OPEN", "");
    EXPECT_EQ(firstChange(pass, 20'000), 2'000);
    EXPECT_EQ(pass->Status, "TIMEOUT");
}

TEST_F(PassTime, UnansweredPassIsOfferedInTheSamePass)
{
    inject("#01AHello");
    Answers[0] = 1;
    inject("$01AR1");
    skip(1'900);
    clock.advance(100);
    trace.expect(
        {stack("01A", "1", "OPEN"), stack("01A", "1", "NOANSWER"), check("01A", "1", "NOANSWER", 3)});
}

TEST_F(PassTime, TimedOutPassIsOfferedInTheSamePass)
{
    openPass("01A");
    skip(7'900);
    EXPECT_EQ(statusOf(0), "OPEN");
    clock.advance(100);
    trace.expect(
        {stack("01A", "77", "OPEN"), stack("01A", "77", "TIMEOUT"), check("01A", "77", "TIMEOUT", 1)});
}

TEST_F(PassTime, ProgressTimesOutTenSecondsAfterItsTimeOut)
{
    EXPECT_EQ(firstChange(startPass("01A", "PROGRESS", ""), 30'000), 16'000);
    EXPECT_EQ(statusOf(0), "TIMEOUT");
    gate->SetTimeOut(1);
    EXPECT_EQ(firstChange(startPass("02A", "PROGRESS", "RELAY"), 30'000), 12'000);
}

TEST_F(PassTime, ProgressOfAnyOtherChannelNeverTimesOut)
{
    EXPECT_EQ(firstChange(startPass("01D", "PROGRESS", ""), 100'000), -1);
    EXPECT_EQ(firstChange(startPass("01B", "PROGRESS", ""), 100'000), -1);
}

TEST_F(PassTime, TimedOutProgressIsOfferedOnTheNextPass)
{
    openPass("01A");
    inject("$01AP");
    Answers[1] = 1;
    skip(15'900);
    clock.advance(100);
    trace.expect({stack("01A", "77", "PROGRESS")});
    EXPECT_EQ(statusOf(0), "TIMEOUT");
    clock.advance(100);
    trace.expect({stack("01A", "77", "TIMEOUT"), check("01A", "77", "TIMEOUT", 1)});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(PassTime, OtherStatesNeverTimeOut)
{
    for (const QString status : {"NEW", "NOANSWER", "CRC-ERROR", "TIMEOUT", "FINISH"}) {
        EXPECT_EQ(firstChange(startPass("01A", status, ""), 40'000), -1) << status.toStdString();
        gate->StackItem(0)->Status = "CLOSE";
        gate->p_hw_CallStackArray();
    }
}

TEST_F(PassTime, TimeRunsFromTheCreationOfThePass)
{
    inject("$01AR1"); // no answer for five seconds, then let in
    skip(5'000);
    Answers[0] = 1;
    clock.advance(100);
    trace.expect({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0), wrote("$01A10366\r"),
                  loggedSend("$01A103"), stack("01A", "1", "OPEN"), stack("01A", "1", "NOANSWER"),
                  check("01A", "1", "NOANSWER", 3)});
}

TEST_F(PassTime, SecondsAreExactWheneverThePassStarted)
{
    std::mt19937 random(20'260'105);
    std::uniform_int_distribution<qint64> anyTime(0, 86'400'000 - 60'000);
    const qint64 midnight = TManualClock::at(0, 0);
    for (int i = 0; i < 2'000; ++i) {
        TTurnstileFixture fixture;
        const qint64 start = midnight + anyTime(random);
        fixture.clock.jumpTo(start);
        const PRFidInfo pass = fixture.makePass("01A", "77", "OPEN");
        pass->StatusHard = "RELAY";
        fixture.clock.jumpTo(start + 7'999);
        fixture.gate->p_hw_CallStackArray();
        ASSERT_EQ(pass->Status, "OPEN") << start;
        fixture.clock.jumpTo(start + 8'000);
        fixture.gate->p_hw_CallStackArray();
        ASSERT_EQ(pass->Status, "TIMEOUT") << start;
    }
}

TEST_F(PassTime, OddMillisecondsThroughTheTimer)
{
    clock.jumpTo(TManualClock::at(17, 3, 59, 337));
    Answers[0] = 1;
    inject("$01AR1");
    skip(1'999);
    EXPECT_EQ(statusOf(0), "OPEN");
    skip(1);
    EXPECT_EQ(statusOf(0), "NOANSWER");
}

TEST_F(PassTime, MidnightTimesATurnstileOutAtOnce)
{
    clock.jumpTo(TManualClock::at(23, 59, 59, 900));
    openPass("01A");
    clock.advance(100);
    trace.expect(
        {stack("01A", "77", "OPEN"), stack("01A", "77", "TIMEOUT"), check("01A", "77", "TIMEOUT", 1)});
}

TEST_F(PassTime, MidnightTimesADoorOutAtOnce)
{
    clock.jumpTo(TManualClock::at(23, 59, 59, 900));
    openPass("01D");
    clock.advance(100);
    trace.expect(
        {stack("01D", "77", "OPEN"), stack("01D", "77", "TIMEOUT"), check("01D", "77", "TIMEOUT", 1)});
}

TEST_F(PassTime, MidnightTimesAnUnansweredTurnstileOutToo)
{
    clock.jumpTo(TManualClock::at(23, 59, 59, 900));
    Answers[0] = 1;
    inject("$01AR1");
    trace.take();
    clock.advance(100); // the time-out comes first
    trace.expect({stack("01A", "1", "OPEN"), stack("01A", "1", "TIMEOUT"), check("01A", "1", "TIMEOUT", 1)});
}

TEST_F(PassTime, MidnightEndsAnUnansweredPassOfAnyOtherChannel)
{
    clock.jumpTo(TManualClock::at(23, 59, 59, 900));
    Answers[0] = 1;
    inject("$01BR1");
    trace.take();
    clock.advance(100);
    trace.expect(
        {stack("01B", "1", "OPEN"), stack("01B", "1", "NOANSWER"), check("01B", "1", "NOANSWER", 3)});
}

TEST_F(PassTime, MidnightTimesProgressOut)
{
    clock.jumpTo(TManualClock::at(23, 59, 59, 900));
    openPass("01A");
    inject("$01AP");
    trace.take();
    clock.advance(100);
    trace.expect({stack("01A", "77", "PROGRESS")});
    clock.advance(100);
    trace.expect({stack("01A", "77", "TIMEOUT"), check("01A", "77", "TIMEOUT", 1)});
}

TEST_F(PassTime, MidnightLeavesANewPassAlone)
{
    clock.jumpTo(TManualClock::at(23, 59, 59, 900));
    inject("$01AR1");
    skip(10'000);
    EXPECT_EQ(statusOf(0), "NEW");
}

TEST_F(PassTime, TheLargestTimeOutIsNoOverflow)
{
    gate->SetTimeOut(std::numeric_limits<int>::max());
    EXPECT_EQ(firstChange(startPass("01A", "OPEN", "RELAY"), 100'000), -1);
    EXPECT_EQ(firstChange(startPass("02A", "PROGRESS", "RELAY"), 100'000), -1);
}

TEST_F(PassTime, CheckTimeoutCountsWholeSecondsWithoutSign)
{
    const double second = 1.0 / 86'400;
    EXPECT_FALSE(gate->p_hw_checktimeout(0.5, 0.5, 0));
    EXPECT_TRUE(gate->p_hw_checktimeout(0.5, 0.5, -1));
    EXPECT_FALSE(gate->p_hw_checktimeout(0.5, 0.5 + 7.9 * second, 7));
    EXPECT_TRUE(gate->p_hw_checktimeout(0.5, 0.5 + 8.1 * second, 7));
    EXPECT_FALSE(gate->p_hw_checktimeout(0.5, 0.5 + 8.1 * second, 8));
    EXPECT_TRUE(gate->p_hw_checktimeout(0.5 + 8.1 * second, 0.5, 7));
    EXPECT_TRUE(gate->p_hw_checktimeout(0, 0.9999, 7));
    EXPECT_TRUE(gate->p_hw_checktimeout(46'027, 46'028, 86'399));
    EXPECT_FALSE(gate->p_hw_checktimeout(46'027, 46'028, 86'400));
}

TEST_F(PassTime, CheckTimeoutIsExactAtEverySecondOfADay)
{
    for (int seconds = 1; seconds < 86'400; ++seconds) {
        ASSERT_TRUE(gate->p_hw_checktimeout(0, seconds / 86'400.0, seconds - 1)) << seconds;
        ASSERT_FALSE(gate->p_hw_checktimeout(0, seconds / 86'400.0, seconds)) << seconds;
    }
}

class StackTimer : public TTurnstileTest
{
protected:
    StackTimer()
    {
        gate->SetOnCheckStatus({});
        inject("$01AR1");
        trace.take();
    }

    qsizetype ticksIn(qint64 ms)
    {
        clock.advance(ms);
        return trace.take().size();
    }
};

TEST_F(StackTimer, TicksEveryHundredMilliseconds)
{
    EXPECT_EQ(ticksIn(99), 0);
    EXPECT_EQ(ticksIn(1), 1);
    EXPECT_EQ(ticksIn(99), 0);
    EXPECT_EQ(ticksIn(1), 1);
    EXPECT_EQ(ticksIn(1'000), 10);
}

TEST_F(StackTimer, GetsAnotherIntervalWhileRunning)
{
    gate->SetTimerInterval(30);
    EXPECT_EQ(ticksIn(29), 0);
    EXPECT_EQ(ticksIn(1), 1);
    EXPECT_EQ(ticksIn(300), 10);
}

TEST_F(StackTimer, StartsAnewWithTheInterval)
{
    EXPECT_EQ(ticksIn(60), 0);
    gate->SetTimerInterval(100); // the same one: disabled and enabled all the same
    EXPECT_EQ(ticksIn(99), 0);
    EXPECT_EQ(ticksIn(1), 1);
}

TEST_F(StackTimer, StaysStoppedWhenItWas)
{
    gate->StackItem(0)->Status = "CLOSE";
    clock.advance(200);
    makePass("01A", "2");
    trace.take();
    gate->SetTimerInterval(10);
    EXPECT_EQ(ticksIn(1'000), 0);
    gate->p_hw_ProtocolIn("x");
    trace.take();
    EXPECT_EQ(ticksIn(100), 10);
}

TEST_F(StackTimer, DoesNotTickWithoutAnInterval)
{
    for (const int interval : {0, -1}) {
        gate->SetTimerInterval(interval);
        EXPECT_EQ(ticksIn(10'000), 0);
    }
    gate->SetTimerInterval(100);
    EXPECT_EQ(ticksIn(1'000), 10);
}

TEST_F(StackTimer, IntervalMayBeChangedFromAHandler)
{
    trace.OnLine = [&](const QString&) { gate->SetTimerInterval(50); };
    EXPECT_EQ(ticksIn(100), 1);
    trace.OnLine = {};
    EXPECT_EQ(ticksIn(49), 0);
    EXPECT_EQ(ticksIn(1), 1);
}

} // namespace
