// Scales that do not answer: what each cycle does, when it is reported, and midnight.

#include "wire_samples.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

/// The families that are asked, as a parameter.
class TNoAnswer : public TEveryFamily
{
protected:
    TNoAnswer() { use(GetParam()); }

    /// The lines of a cycle after one that was not answered.
    QStringList late() const
    {
        QStringList lines;
        if (GetParam() == 1) {
            lines << kResetPort << requested();
        } else {
            lines << requested() << kResetPort;
        }
        return lines;
    }

    /// A packet that is one and means nothing, after a request.
    void answerAnything()
    {
        if (GetParam() == 2) {
            feed("\x06");
        } else {
            feed(GetParam() == 1 ? QByteArray("xyz") : sample().bytes);
        }
        trace.take();
    }

    /// `count` cycles, none of them answered. Returns how often that was reported.
    qsizetype stayAway(int count)
    {
        for (int i = 0; i < count; ++i) {
            clock.advance(4'100);
            scales->GetWeight(true);
        }
        const qsizetype reports = trace.countOf(kNoAnswer);
        trace.take();
        return reports;
    }
};

std::vector<int> familiesThatAreAsked()
{
    std::vector<int> types;
    for (const TSample& sample : samples()) {
        if (!sample.request.isEmpty()) {
            types.push_back(sample.type);
        }
    }
    return types;
}

INSTANTIATE_TEST_SUITE_P(Families, TNoAnswer, ::testing::ValuesIn(familiesThatAreAsked()));

TEST_P(TNoAnswer, OrderOfRequestAndReset)
{
    ask();
    clock.advance(4'100);
    EXPECT_EQ(scales->GetWeight(true), 0);
    trace.expect(late());
}

TEST_P(TNoAnswer, OneReportEveryThirdCycle)
{
    ask();
    for (int cycle = 1; cycle <= 14; ++cycle) {
        clock.advance(4'100);
        scales->GetWeight(true);
        const bool reported = cycle == 4 || cycle == 7 || cycle == 10 || cycle == 13;
        QStringList expected;
        if (reported) {
            expected << kNoAnswer;
        }
        const ::testing::ScopedTrace where(__FILE__, __LINE__, cycle);
        trace.expect(expected + late());
    }
}

TEST_P(TNoAnswer, BlockingCyclesAreCountedAlike)
{
    for (int cycle = 0; cycle <= 8; ++cycle) {
        EXPECT_EQ(scales->GetWeight(false), 0);
        QStringList expected;
        if (cycle == 4 || cycle == 7) {
            expected << kNoAnswer;
        }
        const ::testing::ScopedTrace where(__FILE__, __LINE__, cycle);
        trace.expect(expected + (cycle == 0 ? requested() : late()));
    }
}

TEST_P(TNoAnswer, WithoutAHandlerTheCounterGoesOn)
{
    const platform::TLogEvent onError = scales->OnError();
    scales->SetOnError({});
    ask();
    stayAway(11);
    scales->SetOnError(onError);
    clock.advance(4'100);
    scales->GetWeight(true);
    trace.expect(QStringList{kNoAnswer} + late()); // at once: it was never reset
    stayAway(2);
    clock.advance(4'100);
    scales->GetWeight(true);
    trace.expect(QStringList{kNoAnswer} + late());
}

TEST_P(TNoAnswer, LimitIsThreeWholeSeconds)
{
    ask();
    clock.advance(3'990);
    scales->GetWeight(true);
    trace.expect(requested());
    clock.advance(4'010);
    scales->GetWeight(true);
    trace.expect(late());
}

TEST_P(TNoAnswer, CreationCountsAsARequest)
{
    clock.advance(4'100);
    scales->GetWeight(true);
    trace.expect(late());
}

TEST_P(TNoAnswer, AnyPacketRenewsTheTime)
{
    ask();
    clock.advance(3'000);
    answerAnything();
    clock.advance(3'900);
    scales->GetWeight(true);
    trace.expect(requested());
}

TEST_P(TNoAnswer, AnAnswerDoesNotClearTheCounter)
{
    ask();
    stayAway(3);
    answerAnything();
    clock.advance(4'100);
    scales->GetWeight(true);
    trace.expect(QStringList{kNoAnswer} + late());
}

TEST_P(TNoAnswer, ARequestInTimeClearsTheCounter)
{
    ask();
    stayAway(3);
    clock.advance(1'000);
    scales->GetWeight(true);
    trace.expect(requested());
    EXPECT_EQ(stayAway(3), 0);
    clock.advance(4'100);
    scales->GetWeight(true);
    trace.expect(QStringList{kNoAnswer} + late());
}

TEST_P(TNoAnswer, ACycleTakesTheTimeAtItsEnd)
{
    ask();
    clock.advance(4'100);
    port->OnWritten = [&](const QByteArray&) { clock.advance(2'000); };
    scales->GetWeight(true);
    port->OnWritten = {};
    clock.advance(3'500);
    trace.take();
    scales->GetWeight(true);
    EXPECT_EQ(trace.countOf("log [07]"), 0);
}

TEST_P(TNoAnswer, LanguageOfTheReport)
{
    scales->SetIDLang(0);
    ask();
    stayAway(3);
    clock.advance(4'100);
    scales->GetWeight(true);
    trace.expect(QStringList{QStringLiteral("error [4] Весы не отвечают!")} + late());
}

TEST_P(TNoAnswer, APacketThatWasBegunIsDropped)
{
    if (GetParam() <= 2) {
        return;
    }
    ask();
    feed(sample().bytes.first(2));
    clock.advance(4'100);
    scales->GetWeight(true);
    trace.take();
    feed(sample().bytes);
    trace.expect(weighedAtOnce());
}

TEST_P(TNoAnswer, AnswerAfterTheResetCounts)
{
    ask();
    stayAway(2);
    if (!sample().answer.isEmpty()) {
        feed(sample().answer);
    }
    feed(sample().bytes);
    EXPECT_EQ(scales->LastWeight(), sample().weight);
}

TEST_P(TNoAnswer, RestoresPollingAndWeighsOn)
{
    scales->SetSendInterval(5'000);
    for (int cycle = 1; cycle <= 8; ++cycle) {
        clock.advance(5'000);
        QStringList expected;
        if (cycle == 4 || cycle == 7) {
            expected << kNoAnswer;
        }
        const ::testing::ScopedTrace where(__FILE__, __LINE__, cycle);
        trace.expect(expected + late());
    }
}

TEST_P(TNoAnswer, MidnightLooksLikeSilence)
{
    clock.jumpTo(TManualClock::at(23, 59, 59));
    scales->Reset();
    trace.take();
    scales->GetWeight(true);
    trace.expect(requested());
    clock.advance(500);
    scales->GetWeight(true);
    trace.expect(requested());
    clock.advance(600); // 00:00:00.1
    scales->GetWeight(true);
    trace.expect(late());
    clock.advance(600);
    scales->GetWeight(true);
    trace.expect(requested());
}

TEST_P(TNoAnswer, AWholeDayLooksLikeNothing)
{
    ask();
    clock.jumpTo(clock.nowMs() + platform::kMsPerDay + 1'000);
    scales->GetWeight(true);
    trace.expect(requested());
}

TEST_P(TNoAnswer, ATimeSetBackLooksLikeSilence)
{
    ask();
    clock.jumpTo(clock.nowMs() - 3'900);
    scales->GetWeight(true);
    trace.expect(requested());
    clock.jumpTo(clock.nowMs() - 4'100);
    scales->GetWeight(true);
    trace.expect(late());
}

TEST_P(TNoAnswer, MidnightEndsAWait)
{
    clock.jumpTo(TManualClock::at(23, 59, 59));
    scales->Reset();
    trace.take();
    int weight = 55;
    const qint64 ms = timeOfWeighing(&weight);
    EXPECT_EQ(ms, 1'000);
    EXPECT_EQ(weight, 0);
}

TEST_P(TNoAnswer, APortThatClosesInTheCycleIsOpenedAgain)
{
    if (GetParam() == 1) {
        return; // writes after the reset
    }
    ask();
    port->OnWritten = [&](const QByteArray& bytes) {
        trace.note(wrote(bytes));
        port->OpenFailure = QStringLiteral("COM7: busy");
        port->Close();
    };
    clock.advance(4'100);
    EXPECT_EQ(scales->GetWeight(true), 0);
    trace.expect(requested() + QStringList{"error COM7: busy", kResetPort});
    clock.advance(4'100);
    EXPECT_EQ(scales->GetWeight(true), -1);
    trace.expect({});
}

TEST(ContinuousAtMidnight, EndsTheWait)
{
    for (const int type : {7, 8}) {
        TScalesFixture fixture(TManualClock::at(23, 59, 59));
        fixture.use(type);
        int weight = 55;
        EXPECT_EQ(fixture.timeOfWeighing(&weight), 1'000);
        EXPECT_EQ(weight, -1);
    }
}

TEST(ContinuousAtMidnight, APacketAfterItGoesOn)
{
    TScalesFixture fixture(TManualClock::at(23, 59, 59));
    fixture.use(8);
    fixture.Waits = {fixture.arrives("Wkg", 1'500), fixture.arrives("W 00125kg", 3'000)};
    EXPECT_EQ(fixture.scales->GetWeight(false), 125);
}

} // namespace
