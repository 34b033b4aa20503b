// GetWeight that waits: answered, timed out, extended, in which order it looks.

#include "wire_samples.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

/// Four whole seconds of silence, in passes of 10 ms.
void expectTimedOut(qint64 ms)
{
    EXPECT_GE(ms, 4'000);
    EXPECT_LE(ms, 4'010);
}

TEST_P(TEveryFamily, WaitIsAnswered)
{
    use(GetParam());
    if (!sample().answer.isEmpty()) {
        Waits.push_back(arrives(sample().answer, 1'000));
    }
    Waits.push_back(arrives(sample().bytes, 1'500));
    const int needed = int(Waits.size());
    EXPECT_EQ(scales->GetWeight(false), sample().weight);
    EXPECT_EQ(passes, needed); // at once, not a pass later
    EXPECT_EQ(scales->LastWeight(), sample().weight);
    QStringList expected = requested();
    if (!sample().answer.isEmpty()) {
        expected << received(sample().answer) << sent(sample().second);
    }
    trace.expect(expected + weighedAtOnce());
}

TEST_P(TEveryFamily, WaitTimesOut)
{
    use(GetParam());
    int weight = 55;
    expectTimedOut(timeOfWeighing(&weight));
    EXPECT_EQ(weight, sample().request.isEmpty() ? -1 : 0);
    EXPECT_EQ(scales->LastWeight(), 0);
    trace.expect(requested());
}

TEST_P(TEveryFamily, WaitIsExtendedByPackets)
{
    use(GetParam());
    if (!sample().answer.isEmpty()) {
        Waits.push_back(arrives(sample().answer, 3'900));
    }
    for (int i = 0; i < 5; ++i) {
        Waits.push_back(arrives(sample().blank, 3'900));
    }
    const qint64 quiet = qint64(Waits.size()) * 3'900;
    int weight = 55;
    expectTimedOut(timeOfWeighing(&weight) - quiet);
    EXPECT_EQ(weight, sample().request.isEmpty() ? -1 : 0);
}

TEST_P(TEveryFamily, WaitIsNotExtendedByNoise)
{
    if (anyByteBegins()) {
        return;
    }
    use(GetParam());
    Waits = {arrives("?", 2'000), arrives("?", 1'900)};
    expectTimedOut(timeOfWeighing());
}

TEST_P(TEveryFamily, WaitGoesOnOverAZeroWeight)
{
    if (GetParam() <= 2) {
        return;
    }
    QByteArray zero = sample().bytes;
    for (char& byte : zero) {
        byte = byte >= '1' && byte <= '9' ? '0' : byte;
    }
    use(GetParam());
    Waits = {arrives(zero, 2'000), arrives(zero, 2'000), arrives(sample().bytes, 2'000)};
    int weight = 0;
    EXPECT_EQ(timeOfWeighing(&weight), 6'000);
    EXPECT_EQ(weight, sample().weight);
}

TEST_P(TEveryFamily, WaitSurvivesAPortThatCloses)
{
    use(GetParam());
    Waits = {[&] { port->Close(); }};
    expectTimedOut(timeOfWeighing());
}

TEST_P(TEveryFamily, WaitSurvivesAPortThatIsDestroyed)
{
    use(GetParam());
    Waits = {[&] { port.reset(); }};
    expectTimedOut(timeOfWeighing());
    EXPECT_EQ(scales->GetWeight(false), -1);
}

TEST_P(TEveryFamily, WaitSurvivesTheEndOfTheComponent)
{
    use(GetParam());
    Waits = {[&] { scales.reset(); }};
    EXPECT_EQ(scales->GetWeight(false), -1);
    EXPECT_EQ(passes, 1);
}

TEST_P(TEveryFamily, WaitIsExtendedByAReset)
{
    use(GetParam());
    Waits = {[&] {
        clock.advance(3'000);
        scales->Reset();
    }};
    expectTimedOut(timeOfWeighing() - 3'000);
}

TEST_P(TEveryFamily, WaitInsideAWaitIsServed)
{
    use(GetParam());
    int inner = 0;
    Waits = {[&] { inner = scales->GetWeight(false); }};
    if (!sample().answer.isEmpty()) {
        Waits.push_back(arrives(sample().answer));
    }
    Waits.push_back(arrives(sample().bytes));
    EXPECT_EQ(scales->GetWeight(false), sample().weight);
    EXPECT_EQ(inner, sample().weight);
}

using Wait = TScalesTest;

TEST_F(Wait, RunsTheMessageLoopBeforeItLooksAtTheWeight)
{
    use(3);
    port->OnWritten = [&](const QByteArray&) { feed(sampleOf(3).bytes); };
    EXPECT_EQ(scales->GetWeight(false), 1500); // known before the wait
    EXPECT_EQ(passes, 1);
}

TEST_F(Wait, LooksAtTheTimeOncePerPass)
{
    use(3);
    Waits = {[&] {
        clock.advance(60'000); // the loop was long away, but the weight came
        feed(sampleOf(3).bytes);
    }};
    EXPECT_EQ(scales->GetWeight(false), 1500);
    EXPECT_EQ(passes, 1);
}

TEST_F(Wait, TimeThatIsLongOverEndsIt)
{
    use(3);
    Waits = {[&] { clock.advance(60'000); }};
    EXPECT_EQ(scales->GetWeight(false), 0);
    EXPECT_EQ(passes, 1);
}

TEST_F(Wait, NegativeWeightIsReturnedAtTheEndOnly)
{
    use(5);
    Waits = {arrives("<xx-0012>", 1'000)};
    int weight = 0;
    expectTimedOut(timeOfWeighing(&weight) - 1'000);
    EXPECT_EQ(weight, -12);
}

TEST_F(Wait, NegativeWeightOfAContinuousFamilyIsNoValueAtTheEnd)
{
    use(7);
    Waits = {arrives("\x02ST+ -0012 g  US\r\n", 1'000)};
    int weight = 0;
    timeOfWeighing(&weight);
    EXPECT_EQ(weight, -1);
}

TEST_F(Wait, SmallWeightsOfTheFirstTwoAreNone)
{
    use(1);
    Waits = {arrives("\x80\x00"_b), arrives("\x02\x00"_b), arrives("\x03\x00"_b)};
    EXPECT_EQ(scales->GetWeight(false), 3);
    use(2);
    Waits = {arrives("\x06"), arrives("\x01\x02S 000002kg\x04"), arrives("\x01\x02S 000003kg\x04")};
    EXPECT_EQ(scales->GetWeight(false), 3);
}

TEST_F(Wait, GoesOnAfterRefusals)
{
    use(2);
    Waits = {arrives("\x06"),
             arrives("\x01\x02"
                     "F 000000kg\x04"),
             arrives("\x01\x02S-000500kg\x04"), arrives("\x01\x02S 000500kg\x04")};
    EXPECT_EQ(scales->GetWeight(false), 500);
    EXPECT_EQ(trace.take().filter("error"), (QStringList{kOverload, kNegative}));
}

TEST_F(Wait, GoesOnAfterAFieldThatIsNoNumber)
{
    use(5);
    Waits = {arrives("<xxERROR>"), arrives("<xx00100>")};
    EXPECT_EQ(scales->GetWeight(false), 100);
}

TEST_F(Wait, WhatTheMessageLoopRaisesLeaves)
{
    use(3);
    Waits = {[] { throw std::runtime_error("loop trouble"); }};
    EXPECT_THROW(scales->GetWeight(false), std::runtime_error);
    Waits = {arrives(sampleOf(3).bytes)};
    EXPECT_EQ(scales->GetWeight(false), 1500);
}

TEST_F(Wait, TicksOfPollingInsideItDoNoHarm)
{
    use(3);
    scales->SetSendInterval(1'000);
    Waits = {[&] { clock.advance(1'000); }, [&] { clock.advance(1'000); }, arrives(sampleOf(3).bytes)};
    EXPECT_EQ(scales->GetWeight(false), 1500);
    EXPECT_EQ(port->takeWrites().size(), 3);
}

} // namespace
