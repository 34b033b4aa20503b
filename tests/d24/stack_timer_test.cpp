// When passes over the table run, over what, and that they do not run inside each other.

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class StackTimer : public TD24Test
{
protected:
    /// Whether the timer ticks: a line of an unknown kind runs a pass at once only when it does not.
    bool running()
    {
        const QStringList before = trace.take();
        const d24::PRFidInfo probe = makePass("probe!999T!T", "probe", "OPEN");
        inject("probe");
        const bool ranAtOnce = trace.take().contains(stack("probe!999T!T", "probe", "OPEN"));
        probe->Status = "HOLD";
        return !ranAtOnce;
    }
};

TEST_F(StackTimer, IsOffAtFirst)
{
    makePass(kT, "77", "OPEN");
    clock.advance(1'000);
    trace.expect({});
    EXPECT_FALSE(running());
}

TEST_F(StackTimer, TicksEveryTenMilliseconds)
{
    makePass(kT, "77", "OPEN");
    inject("x");
    trace.expect({read("x"), stack(kT, "77", "OPEN")});
    clock.advance(9);
    trace.expect({});
    clock.advance(1);
    trace.expect({stack(kT, "77", "OPEN")});
    clock.advance(10);
    trace.expect({stack(kT, "77", "OPEN")});
}

TEST_F(StackTimer, AnEmptyPassStopsIt)
{
    inject("x"); // the pass at once finds nothing and stops the timer again
    EXPECT_FALSE(running());
}

TEST_F(StackTimer, ARemovalLeavesItToTheNextTick)
{
    makePass(kT, "77", "CLOSE");
    inject("x");
    EXPECT_EQ(gate->StackItemsCount(), 0);
    EXPECT_TRUE(running());
}

TEST_F(StackTimer, TheTickAfterTheLastRemovalStopsIt)
{
    makePass(kT, "77", "CLOSE");
    inject("x");
    clock.advance(10);
    EXPECT_FALSE(running());
}

TEST_F(StackTimer, APassThatIsLeftKeepsItRunning)
{
    makePass(kT, "77", "HOLD");
    inject("x");
    clock.advance(60'000);
    EXPECT_TRUE(running());
}

TEST_F(StackTimer, ADirectPassOverAnEmptyTableStopsIt)
{
    makePass(kT, "77", "CLOSE");
    inject("x");
    runPass();
    EXPECT_FALSE(running());
}

TEST_F(StackTimer, ALookupDoesNotStartIt)
{
    gate->p_hw_CheckStatus("1", "001T", "T", "77", "RQ");
    trace.take();
    clock.advance(1'000);
    trace.expect({});
}

TEST_F(StackTimer, AtMostOneRecordIsRemovedByAPass)
{
    makePass(kT, "77", "CLOSE");
    makePass(kG, "77", "CLOSE");
    makePass(kI, "77", "HOLD");
    runPass();
    trace.expect({stack(kT, "77", "CLOSE")}); // the pass ends there
    runPass();
    trace.expect({stack(kG, "77", "CLOSE")});
    EXPECT_EQ(gate->StackItemsCount(), 1);
}

TEST_F(StackTimer, TheRecordsBeforeARemovalAreServed)
{
    makePass(kT, "77", "OPEN");
    makePass(kG, "77", "OPEN");
    makePass(kI, "77", "CLOSE");
    makePass("10.0.0.5!004T!T", "77", "OPEN");
    runPass();
    trace.expect({stack(kT, "77", "OPEN"), stack(kG, "77", "OPEN"), stack(kI, "77", "CLOSE")});
    EXPECT_EQ(gate->StackItemsCount(), 3);
    EXPECT_EQ(gate->StackItem(2)->Device, "004T");
    EXPECT_EQ(statusOf(1), "NOANSWER");
}

TEST_F(StackTimer, ARecordMadeDuringAPassWaitsForTheNext)
{
    makePass(kT, "77", "OPEN");
    trace.OnLine = [this](const QString& line) {
        if (line == stack(kT, "77", "OPEN")) {
            trace.OnLine = {};
            gate->p_hw_CheckStatus("10.0.0.5", "002G", "G", "78", "RQ");
        }
    };
    runPass();
    trace.expect({stack(kT, "77", "OPEN"), "img 002G", looked(kG, "78", "NEW")});
    runPass();
    trace.expect({stack(kT, "77", "OPEN"), stack(kG, "78", "NEW"), check(kG, "78", "NEW", 0)});
}

TEST_F(StackTimer, APassInsideAPassDoesNothing)
{
    makePass(kT, "77", "NEW");
    makePass(kG, "77", "OPEN");
    trace.OnLine = [this](const QString& line) {
        if (line.startsWith("status") || line.startsWith("check") || line.startsWith("send")) {
            const auto hook = std::exchange(trace.OnLine, {});
            runPass();
            clock.advance(50);
            trace.OnLine = hook;
        }
    };
    Answers = {{0, 1}};
    inject("x");
    trace.expect({read("x"), stack(kT, "77", "NEW"), check(kT, "77", "NEW", 0), commanded("GO10.0.0.5:001T"),
                  loggedSend("GO10.0.0.5:001T"), stack(kG, "77", "OPEN")});
    trace.OnLine = {};
    runPass(); // and it is not stuck
    EXPECT_EQ(trace.countOf("status"), 2);
}

TEST_F(StackTimer, ALineInsideAPassIsHandledWithoutAPass)
{
    makePass(kT, "77", "NEW");
    trace.once("check", [this] { inject("$10.0.0.5:001TGR77AB"); });
    Answers = {{0, 2}};
    runPass();
    trace.expect({stack(kT, "77", "NEW"), check(kT, "77", "NEW", 0), read("$10.0.0.5:001TGR77AB"),
                  come(kT, "77", "FINISH")});
    EXPECT_EQ(statusOf(0), "FINISH");
}

TEST_F(StackTimer, ACommandRepeatedFirstMayRunAWholePass)
{
    // the first repetition of a pass comes before the pass is busy
    gate->SetCheckET(true);
    const d24::PRFidInfo first = makePass(kT, "77", "CLOSE");
    first->Command = "GO1";
    makePass(kG, "77", "OPEN");
    clock.jumpTo(clock.nowMs() + 2'000);
    trace.OnLine = [this](const QString& line) {
        if (line == commanded("GO1")) {
            trace.OnLine = {};
            runPass();
        }
    };
    runPass();
    const QStringList lines = trace.take();
    EXPECT_EQ(lines.mid(0, 3), QStringList({commanded("GO1"), commanded("GO1"), stack(kT, "77", "CLOSE")}));
    ASSERT_EQ(gate->StackItemsCount(), 1); // removed once, by the inner pass
    EXPECT_EQ(gate->StackItem(0)->Device, "002G");
    trace.take();
    runPass(); // and it is not stuck
    EXPECT_GE(trace.countOf("status"), 1);
}

TEST_F(StackTimer, RepeatedCommandsMayEachRunWholePasses)
{
    gate->SetCheckET(true);
    for (const char* status : {"CLOSE", "NEW", "HOLD"}) {
        for (int passes = 1; passes < 6; ++passes) {
            TD24Fixture fixture;
            fixture.gate->SetCheckET(true);
            for (int i = 0; i < 4; ++i) {
                const QString who = QStringLiteral("1!00%1T!T").arg(i);
                fixture.makePass(who, "77", i % 2 == 0 ? "CLOSE" : status)->Command =
                    "GO" + QString::number(i);
            }
            fixture.clock.jumpTo(fixture.clock.nowMs() + 2'000);
            int depth = 0;
            fixture.trace.OnLine = [&](const QString& line) {
                if (line.startsWith("send") && depth < 2) {
                    ++depth;
                    for (int i = 0; i < passes; ++i) {
                        fixture.runPass();
                    }
                    --depth;
                }
            };
            fixture.runPass();
            fixture.trace.OnLine = {};
            fixture.trace.take();
            fixture.gate->SetCheckET(false);
            fixture.makePass("9!999T!T", "1", "OPEN");
            for (int i = 0; i < 8; ++i) {
                fixture.runPass();
            }
            EXPECT_GE(fixture.trace.countOf("status STACK!9!999T"), 1); // not stuck
        }
    }
}

// The interval

TEST_F(StackTimer, TheIntervalMayChangeWhileItRuns)
{
    makePass(kT, "77", "OPEN");
    inject("x");
    trace.take();
    clock.advance(5);
    gate->SetTimerInterval(100);
    clock.advance(99);
    trace.expect({});
    clock.advance(1); // anew from the change
    trace.expect({stack(kT, "77", "OPEN")});
    clock.advance(300);
    EXPECT_EQ(trace.take().size(), 3);
}

TEST_F(StackTimer, TheSameIntervalAgainStartsItAnewToo)
{
    makePass(kT, "77", "OPEN");
    inject("x");
    trace.take();
    clock.advance(5);
    gate->SetTimerInterval(10);
    clock.advance(9);
    trace.expect({});
    clock.advance(1);
    trace.expect({stack(kT, "77", "OPEN")});
}

TEST_F(StackTimer, TheIntervalMayChangeWhileItIsOff)
{
    makePass(kT, "77", "OPEN");
    gate->SetTimerInterval(100);
    clock.advance(1'000);
    trace.expect({});
    inject("x");
    trace.take();
    clock.advance(99);
    trace.expect({});
    clock.advance(1);
    trace.expect({stack(kT, "77", "OPEN")});
}

TEST_F(StackTimer, WithIntervalZeroNothingTicks)
{
    makePass(kT, "77", "OPEN");
    inject("x");
    gate->SetTimerInterval(0);
    trace.take();
    clock.advance(60'000);
    trace.expect({});
    EXPECT_TRUE(running()); // on, all the same
    trace.take();
    runPass();
    EXPECT_EQ(trace.countOf("status"), 1);
    gate->SetTimerInterval(10);
    trace.take();
    clock.advance(10);
    EXPECT_EQ(trace.countOf("status"), 1);
}

TEST_F(StackTimer, WithIntervalZeroTheFirstLineRunsAPass)
{
    gate->SetTimerInterval(0);
    makePass(kT, "77", "OPEN");
    inject("x");
    trace.expect({read("x"), stack(kT, "77", "OPEN")});
    inject("x");
    trace.expect({read("x")});
    clock.advance(60'000);
    trace.expect({});
}

TEST_F(StackTimer, TheIntervalDoesNotConcernThePings)
{
    gate->SetTimerInterval(0);
    gate->DevicePing("10.0.0.5", "001T", "T");
    trace.take();
    clock.advance(2'000);
    trace.expect({noted(kT, "NOPING")});
}

TEST_F(StackTimer, ANegativeIntervalDoesNotTick)
{
    makePass(kT, "77", "OPEN");
    gate->SetTimerInterval(-5);
    inject("x");
    trace.take();
    clock.advance(1'000);
    trace.expect({});
}

} // namespace
