// What time does to a pass. All times count from its beginning, in whole seconds of the time of day.

#include "d24_fixture.h"

#include <limits>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class PassTime : public TD24Test
{
protected:
    QString who(const QString& type) const { return "10.0.0.5!001x!" + type; }

    /// State after one pass, `ms` after the pass began in `status`.
    QString after(qint64 ms, const QString& type, const QString& status)
    {
        const d24::PRFidInfo pass = makePass(who(type), "77", status);
        pass->Starttime = platform::TimeOfDay();
        clock.jumpTo(clock.nowMs() + ms);
        runPass();
        return pass->Status;
    }
};

TEST_F(PassTime, AnOpenTurnstileTimesOut)
{
    EXPECT_EQ(after(7'000, "T", "OPEN"), "OPEN");
    EXPECT_EQ(after(7'999, "T", "OPEN"), "OPEN");
    EXPECT_EQ(after(8'000, "T", "OPEN"), "TIMEOUT");
    gate->SetTimeOut(20);
    EXPECT_EQ(after(22'999, "T", "OPEN"), "OPEN");
    EXPECT_EQ(after(23'000, "T", "OPEN"), "TIMEOUT");
    gate->SetTimeOut(0);
    EXPECT_EQ(after(2'999, "T", "OPEN"), "OPEN");
    EXPECT_EQ(after(3'000, "T", "OPEN"), "TIMEOUT");
    gate->SetTimeOut(-2);
    EXPECT_EQ(after(999, "T", "OPEN"), "OPEN");
    EXPECT_EQ(after(1'000, "T", "OPEN"), "TIMEOUT");
    gate->SetTimeOut(-3);
    EXPECT_EQ(after(0, "T", "OPEN"), "TIMEOUT");
}

TEST_F(PassTime, ATurnstileTimesOutInConfirmationModeToo)
{
    gate->SetCheckET(true);
    EXPECT_EQ(after(7'999, "T", "OPEN"), "OPEN");
    EXPECT_EQ(after(8'000, "T", "OPEN"), "TIMEOUT");
}

TEST_F(PassTime, AnOpenDoorTimesOutAfterThreeSeconds)
{
    for (const int timeOut : {0, 5, 100}) {
        gate->SetTimeOut(timeOut);
        EXPECT_EQ(after(3'000, "D", "OPEN"), "OPEN");
        EXPECT_EQ(after(3'999, "D", "OPEN"), "OPEN");
        EXPECT_EQ(after(4'000, "D", "OPEN"), "TIMEOUT");
    }
}

TEST_F(PassTime, AnyOtherTypeStaysOpen)
{
    EXPECT_EQ(after(3'600'000, "X", "OPEN"), "OPEN");
    EXPECT_EQ(after(3'600'000, "", "OPEN"), "OPEN");
    EXPECT_EQ(after(3'600'000, "t", "OPEN"), "OPEN");
}

TEST_F(PassTime, AnUnconfirmedGateOrDisplayIsNotAnsweredAfterTwoSeconds)
{
    gate->SetCheckET(true);
    for (const char* type : {"G", "I"}) {
        EXPECT_EQ(after(0, type, "OPEN"), "OPEN");
        EXPECT_EQ(after(2'999, type, "OPEN"), "OPEN");
        EXPECT_EQ(after(3'000, type, "OPEN"), "NOANSWER");
    }
}

TEST_F(PassTime, AConfirmedGateOrDisplayIsNotAnsweredAtOnce)
{
    for (const char* type : {"G", "I", "T", "D", "X"}) {
        TD24Fixture fixture;
        fixture.gate->SetCheckET(true);
        fixture.makePass(who(type), "77", "OPEN")->Finish = true;
        fixture.runPass();
        EXPECT_EQ(fixture.statusOf(0), QString("GI").contains(type) ? "NOANSWER" : "OPEN") << type;
    }
}

TEST_F(PassTime, ProgressOfATurnstileTimesOut)
{
    EXPECT_EQ(after(15'999, "T", "PROGRESS"), "PROGRESS");
    EXPECT_EQ(after(16'000, "T", "PROGRESS"), "TIMEOUT");
    gate->SetTimeOut(20);
    EXPECT_EQ(after(30'999, "T", "PROGRESS"), "PROGRESS");
    EXPECT_EQ(after(31'000, "T", "PROGRESS"), "TIMEOUT");
}

TEST_F(PassTime, ProgressOfAnyOtherTypeStays)
{
    for (const char* type : {"G", "I", "D", "X"}) {
        EXPECT_EQ(after(3'600'000, type, "PROGRESS"), "PROGRESS") << type;
    }
}

TEST_F(PassTime, ALateBeginningIsAskedAsTimedOutAndStillProgresses)
{
    for (const char* type : {"T", "G", "I", "D", "X"}) {
        for (const int ms : {15'999, 16'000}) {
            TD24Fixture fixture;
            const d24::PRFidInfo pass = fixture.makePass(who(type), "77", "PROGRESSSTART");
            fixture.clock.jumpTo(fixture.clock.nowMs() + ms);
            fixture.runPass();
            const bool late = ms == 16'000 && QString(type) == "T";
            fixture.trace.expect({stack(who(type), "77", "PROGRESSSTART"),
                                  check(who(type), "77", late ? "TIMEOUT" : "PROGRESSSTART", 5)});
            EXPECT_EQ(pass->Status, "PROGRESS");
        }
    }
}

TEST_F(PassTime, OtherStatesDoNotTimeOut)
{
    Answers = {{0, 2}, {1, 0}, {3, 0}};
    for (const char* status : {"NEW", "NOANSWER", "TIMEOUT"}) {
        EXPECT_EQ(after(3'600'000, "T", status), status);
    }
}

TEST_F(PassTime, ALargeTimeOutNeverComes)
{
    gate->SetTimeOut(std::numeric_limits<int>::max());
    EXPECT_EQ(after(10 * 3'600'000, "T", "OPEN"), "OPEN");
    EXPECT_EQ(after(10 * 3'600'000, "T", "PROGRESS"), "PROGRESS");
}

TEST_F(PassTime, APassOverMidnightTimesOutAtOnce)
{
    clock.jumpTo(TManualClock::at(23, 59, 59, 900));
    const d24::PRFidInfo pass = makePass(who("T"), "77", "OPEN");
    runPass();
    EXPECT_EQ(pass->Status, "OPEN");
    clock.advance(100);
    runPass();
    EXPECT_EQ(pass->Status, "TIMEOUT");
}

TEST_F(PassTime, AResendComesAtMidnightToo)
{
    gate->SetCheckET(true);
    clock.jumpTo(TManualClock::at(23, 59, 59, 900));
    makePass(who("T"), "77", "WAIT")->Command = "GO1";
    runPass();
    trace.expect({});
    clock.advance(100);
    runPass();
    trace.expect({commanded("GO1")});
}

TEST_F(PassTime, SecondsAreWholeAndWithoutSign)
{
    const double noon = 46'027.5;
    const auto later = [&](double seconds) { return noon + seconds / 86'400; };
    EXPECT_FALSE(gate->p_hw_checktimeout(noon, noon, 0));
    EXPECT_TRUE(gate->p_hw_checktimeout(noon, noon, -1));
    EXPECT_FALSE(gate->p_hw_checktimeout(noon, later(2.99), 2));
    EXPECT_TRUE(gate->p_hw_checktimeout(noon, later(3.01), 2));
    EXPECT_TRUE(gate->p_hw_checktimeout(later(3.01), noon, 2));
    EXPECT_FALSE(gate->p_hw_checktimeout(later(2.99), noon, 2));
    EXPECT_TRUE(gate->p_hw_checktimeout(noon, 0.5, std::numeric_limits<int>::max())); // a date more
}

TEST_F(PassTime, AnOpenPassIsRetiredByTicks)
{
    Answers = {{0, 1}, {1, 1}};
    inject("$10.0.0.5:001TRQ77AB");
    trace.take();
    clock.advance(7'990);
    EXPECT_EQ(trace.take().size(), 799);
    EXPECT_EQ(statusOf(0), "OPEN");
    clock.advance(20);
    trace.expect({stack(kT, "77", "OPEN"), stack(kT, "77", "TIMEOUT"), check(kT, "77", "TIMEOUT", 1)});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

} // namespace
