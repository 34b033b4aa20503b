// Reset: what it does, in which order, and what it restores.

#include "wire_samples.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class Reset : public TScalesTest
{
protected:
    /// Two bytes that only a dialogue that expects a weight takes for one.
    bool expectsWeight()
    {
        scales->SetScalesType(1);
        scales->SetLastWeight(0);
        feed("\x05\x01"_b); // bit 7 clear: no handshake
        const bool decoded = scales->LastWeight() == 0x105;
        trace.take();
        return decoded;
    }
};

TEST_F(Reset, LogsThePortAtTheEnd)
{
    scales->Reset();
    trace.expect({kResetPort});
    EXPECT_TRUE(port->Connected());
}

TEST_F(Reset, OpensAClosedPort)
{
    port->Close();
    port->OnOpening = [&] { trace.note("opening"); };
    scales->Reset();
    trace.expect({"opening", kResetPort});
    EXPECT_TRUE(port->Connected());
}

TEST_F(Reset, WithoutAPortReportsThenLogs)
{
    scales->SetComport(nullptr);
    scales->Reset();
    trace.expect({kNoPort, "log [07] Reset port "});
}

TEST_F(Reset, ThatCannotOpenReportsThenLogs)
{
    port->Close();
    port->OpenFailure = QStringLiteral("COM7: busy");
    scales->Reset();
    trace.expect({"error COM7: busy", kResetPort});
    EXPECT_FALSE(port->Connected());
}

TEST_F(Reset, WithoutHandlersIsQuiet)
{
    scales->SetOnLog({});
    scales->SetOnError({});
    scales->Reset();
    scales->SetComport(nullptr);
    scales->Reset();
    trace.expect({});
}

TEST_F(Reset, BeginsThePacketAnew)
{
    use(3);
    feed("0051000000");
    scales->Reset();
    trace.take();
    feed("00000000");
    trace.expect({kStart, kStop});
}

TEST_F(Reset, BeginsTheDialogueAnew)
{
    use(1);
    ask();
    feed("\x80\x00"_b);
    ASSERT_TRUE(expectsWeight());
    scales->Reset();
    EXPECT_FALSE(expectsWeight());
}

TEST_F(Reset, KeepsTheWeightAndTheType)
{
    use(5);
    scales->SetLastWeight(123);
    scales->Reset();
    EXPECT_EQ(scales->LastWeight(), 123);
    EXPECT_EQ(scales->ScalesType(), 5);
}

TEST_F(Reset, CountsAsARequest)
{
    use(3);
    clock.advance(10'000);
    scales->Reset();
    clock.advance(3'900);
    trace.take();
    scales->GetWeight(true);
    trace.expect(sent("\x00\x00\x03"_b)); // in time: no other reset
}

TEST_F(Reset, TakesTheTimeBeforeItOpens)
{
    use(3);
    port->Close();
    port->OnOpening = [&] { clock.advance(2'000); };
    scales->Reset();
    trace.take();
    clock.advance(2'100);
    scales->GetWeight(true);
    trace.expect(sent("\x00\x00\x03"_b) + QStringList{kResetPort});
}

TEST_F(Reset, ListensAgainBeforeItOpens)
{
    use(8);
    port->Close();
    port->OnOpening = [&] { feed("W 00125kg"); };
    scales->Reset();
    trace.expect(received(" 00125") + QStringList{"log  00125 125%", kResetPort});
}

TEST_F(Reset, RestoresARunningTimerWithItsPeriodAnew)
{
    use(3);
    scales->SetSendInterval(1'000);
    clock.advance(900);
    scales->Reset();
    trace.take();
    clock.advance(999);
    trace.expect({});
    clock.advance(1);
    trace.expect(sent("\x00\x00\x03"_b));
}

TEST_F(Reset, RestoresTheTimerBeforeItLogs)
{
    use(3);
    scales->SetSendInterval(1'000);
    trace.once(kResetPort, [&] { clock.advance(1'000); });
    scales->Reset();
    trace.expect(QStringList{kResetPort} + sent("\x00\x00\x03"_b));
}

TEST_F(Reset, DoesNotStartATimerThatWasOff)
{
    use(3);
    scales->Reset();
    scales->SetSendInterval(500);
    scales->SetSendInterval(-1);
    scales->Reset();
    trace.take();
    clock.advance(10'000);
    trace.expect({});
}

TEST_F(Reset, ThatCannotOpenLeavesTheTimerOff)
{
    use(3);
    scales->SetSendInterval(1'000);
    port->Close();
    port->OpenFailure = QStringLiteral("COM7: busy");
    scales->Reset();
    port->OpenFailure.reset();
    port->Open();
    trace.take();
    clock.advance(10'000);
    trace.expect({});
    EXPECT_EQ(scales->SendInterval(), 1'000);
    scales->Reset(); // it was off
    trace.take();
    clock.advance(10'000);
    trace.expect({});
    scales->SetSendInterval(1'001);
    clock.advance(1'001);
    EXPECT_GT(trace.count(), 0);
}

TEST_F(Reset, WithoutAPortLeavesTheTimerOff)
{
    use(3);
    scales->SetSendInterval(1'000);
    scales->SetComport(nullptr);
    scales->Reset();
    scales->SetComport(port.get());
    trace.take();
    clock.advance(10'000);
    trace.expect({});
}

TEST_F(Reset, StopsTheTimerWhileItOpens)
{
    use(3);
    scales->SetSendInterval(1'000);
    port->Close();
    TMemoryPort spare; // open, so that a tick would be seen
    trace.attach(spare);
    spare.Open();
    port->OnOpening = [&] {
        scales->SetComport(&spare);
        clock.advance(3'000);
        scales->SetComport(port.get());
    };
    scales->Reset();
    trace.expect({kResetPort});
}

} // namespace
