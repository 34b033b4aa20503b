// The table of the controllers that ping, and who is silent.

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const QString kPing = QStringLiteral("#10.0.0.5:001TPING00");
const QString kSilent = noted(kT, "NOPING");

class Liveness : public TD24Test
{
protected:
    /// A controller that has spoken twice, the second time now.
    void makeAlive()
    {
        inject(kPing);
        inject("$10.0.0.5:001T");
        trace.take();
    }

    double pingtime(int index = 0) const { return gate->DeviceList().at(index)->Pingtime; }
};

TEST_F(Liveness, TheFirstPingKeepsTheDate)
{
    inject(kPing);
    ASSERT_EQ(gate->DeviceList().size(), 1);
    const connector::RDeviceList entry = gate->DeviceList().at(0);
    EXPECT_EQ(entry->IP, "10.0.0.5");
    EXPECT_EQ(entry->Device, "001T");
    EXPECT_EQ(entry->DeviceType, "T");
    EXPECT_DOUBLE_EQ(entry->Pingtime, 46'027.5);
}

TEST_F(Liveness, AControllerIsSilentFromItsFirstPingToItsNextLine)
{
    inject(kPing);
    trace.take();
    clock.advance(6'000);
    trace.expect({kSilent, kSilent, kSilent});
    inject(kPing);
    trace.take();
    EXPECT_DOUBLE_EQ(pingtime(), 0.5 + 6.0 / 86'400);
    clock.advance(6'000);
    trace.expect({});
}

TEST_F(Liveness, ASilentControllerIsReportedOnEveryTick)
{
    makeAlive();
    clock.advance(15'999);
    trace.expect({}); // 15 whole seconds are not more than 15
    clock.advance(1);
    trace.expect({kSilent});
    clock.advance(1'999);
    trace.expect({});
    clock.advance(1);
    trace.expect({kSilent});
    clock.advance(20'000);
    EXPECT_EQ(trace.countOf(kSilent), 10);
    EXPECT_EQ(gate->DeviceList().size(), 1);
}

TEST_F(Liveness, TheDelayIsMoreThanTheSecondsSet)
{
    makeAlive();
    for (const int delay : {0, 1, 3, 100}) {
        gate->Setpingdelay(delay);
        makeAlive();
        clock.jumpTo(clock.nowMs() + delay * 1'000 + 999);
        gate->DevicePingTime(nullptr);
        trace.expect({});
        clock.jumpTo(clock.nowMs() + 1);
        gate->DevicePingTime(gate.get());
        trace.expect({kSilent});
    }
    gate->Setpingdelay(-1);
    makeAlive();
    gate->DevicePingTime(nullptr);
    trace.expect({kSilent});
}

TEST_F(Liveness, AnyLineOfTheControllerRefreshes)
{
    makeAlive();
    for (const char* line : {"$10.0.0.5:001T", "$10.0.0.5:001TXX7AB", "$10.0.0.5:001TRQ7AB", "#10.0.0.5:001T",
                             "#10.0.0.5:001Tx00", "#10.0.0.5:001TCROSS00", "#10.0.0.5:001TPING00"}) {
        clock.jumpTo(clock.nowMs() + 60'000);
        inject(line);
        EXPECT_DOUBLE_EQ(pingtime(), platform::TimeOfDay()) << line;
    }
}

TEST_F(Liveness, OtherLinesDoNotRefresh)
{
    makeAlive();
    clock.jumpTo(clock.nowMs() + 60'000);
    for (const char* line : {"$10.0.0.6:001T", "$10.0.0.5:002T", "$10.0.0.5:001t", "$10.0.0.5:001",
                             "x10.0.0.5:001TPING00", "10.0.0.5:001TPING00", ""}) {
        inject(line);
        EXPECT_DOUBLE_EQ(pingtime(), 0.5) << line;
    }
}

TEST_F(Liveness, OnlyAPingAddsAController)
{
    for (const char* line :
         {"$10.0.0.5:001TPING00", "#10.0.0.5:001TDC00", "$10.0.0.5:001TRQ7AB", "#10.0.0.5:001TCROSS00"}) {
        inject(line);
    }
    gate->UpdatePing("10.0.0.5", "001T");
    EXPECT_EQ(gate->DeviceList().size(), 0);
    EXPECT_EQ(gate->DevicePingFind("10.0.0.5", "001T"), -1);
}

TEST_F(Liveness, LinkAndControllerMakeAnEntry)
{
    inject("#1:001TPING00");
    inject("#2:001TPING00");
    inject("#1:002TPING00");
    inject("#1:001TPING00");
    EXPECT_EQ(gate->DeviceList().size(), 3);
    EXPECT_EQ(gate->DevicePingFind("1", "001T"), 0);
    EXPECT_EQ(gate->DevicePingFind("2", "001T"), 1);
    EXPECT_EQ(gate->DevicePingFind("1", "002T"), 2);
    EXPECT_EQ(gate->DevicePingFind("2", "002T"), -1);
    trace.take();
    clock.advance(2'000);
    trace.expect({noted("2!001T!T", "NOPING"), noted("1!002T!T", "NOPING")});
}

TEST_F(Liveness, APingReportsTheEntrysType)
{
    gate->DevicePing("10.0.0.5", "001T", "G");
    trace.expect({noted("10.0.0.5!001T!G", "PING")});
    gate->DevicePing("10.0.0.5", "001T", "I");
    trace.expect({noted("10.0.0.5!001T!G", "PING")});
    EXPECT_DOUBLE_EQ(pingtime(), 0.5);
    inject(kPing);
    trace.expect({read(kPing), noted("10.0.0.5!001T!G", "PING"), heard(kT, "PING")});
}

TEST_F(Liveness, ADirectUpdateRefreshes)
{
    gate->DevicePing("10.0.0.5", "001T", "T");
    trace.take();
    clock.jumpTo(TManualClock::at(18, 0));
    gate->UpdatePing("10.0.0.5", "001T");
    EXPECT_DOUBLE_EQ(pingtime(), 0.75);
    trace.expect({});
}

TEST_F(Liveness, TheLastMatchCounts)
{
    gate->DevicePing("1", "001T", "T");
    gate->DevicePing("2", "001T", "T");
    gate->DeviceList().at(1)->IP = "1"; // by the host
    EXPECT_EQ(gate->DevicePingFind("1", "001T"), 1);
    gate->UpdatePing("1", "001T");
    EXPECT_DOUBLE_EQ(pingtime(0), 46'027.5);
    EXPECT_DOUBLE_EQ(pingtime(1), 0.5);
}

TEST_F(Liveness, MidnightMakesEveryControllerSilentUntilItsNextLine)
{
    clock.jumpTo(TManualClock::at(23, 59, 58));
    makeAlive();
    clock.advance(1'999);
    trace.expect({});
    clock.advance(2'001); // 00:00:02
    trace.expect({kSilent, kSilent});
    inject(kPing);
    trace.take();
    clock.advance(14'000);
    trace.expect({});
}

TEST_F(Liveness, TimeThatGoesBackCountsToo)
{
    clock.jumpTo(TManualClock::at(15, 0));
    makeAlive();
    clock.jumpTo(TManualClock::at(14, 59, 45));
    gate->DevicePingTime(nullptr);
    trace.expect({});
    clock.jumpTo(TManualClock::at(14, 59, 44));
    gate->DevicePingTime(nullptr);
    trace.expect({kSilent});
}

TEST_F(Liveness, TheTicksComeFromTheBeginningEveryTwoSeconds)
{
    gate->DevicePing("10.0.0.5", "001T", "T");
    trace.take();
    clock.advance(1'999);
    trace.expect({});
    clock.advance(1);
    trace.expect({kSilent});
    clock.advance(2'000);
    trace.expect({kSilent});
}

TEST_F(Liveness, AHandlerMayAddControllersDuringTheTick)
{
    inject(kPing);
    trace.take();
    trace.OnLine = [this](const QString& line) {
        if (line == kSilent && gate->DeviceList().size() < 5) {
            gate->DevicePing(QString::number(gate->DeviceList().size()), "001T", "T");
        }
    };
    for (int i = 0; i < 10; ++i) {
        clock.advance(2'000);
    }
    EXPECT_EQ(gate->DeviceList().size(), 5);
}

TEST_F(Liveness, AHandlerMayRefreshDuringTheTick)
{
    inject("#1:001TPING00");
    inject("#2:002TPING00");
    trace.take();
    trace.OnLine = [this](const QString& line) {
        if (line == noted("1!001T!T", "NOPING")) {
            gate->UpdatePing("2", "002T");
        }
    };
    clock.advance(2'000);
    trace.expect({noted("1!001T!T", "NOPING")});
}

TEST_F(Liveness, ASilentControllerDoesNotStopThePasses)
{
    makePass(kT, "77", "OPEN");
    inject(kPing);
    trace.take();
    clock.advance(2'000);
    EXPECT_EQ(trace.countOf(kSilent), 1);
    EXPECT_EQ(trace.countOf(stack(kT, "77", "OPEN")), 200);
}

} // namespace
