// GetWeight that does not wait: what is sent, and what comes back.

#include "wire_samples.h"

#include <limits>
#include <utility>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

/// Answers each write of the component inside the write, as a very quick scale does.
void answerAtOnce(TScalesFixture& fixture, const TSample& sample)
{
    fixture.port->OnWritten = [&fixture, sample](const QByteArray& bytes) {
        fixture.trace.note(wrote(bytes));
        if (bytes == sample.request && !sample.answer.isEmpty()) {
            fixture.feed(sample.answer);
        } else {
            fixture.feed(sample.bytes);
        }
    };
}

TEST_P(TEveryFamily, RequestIsOneWriteOfItsBytes)
{
    use(GetParam());
    EXPECT_EQ(scales->GetWeight(true), 0);
    const QByteArrayList writes = port->takeWrites();
    if (sample().request.isEmpty()) {
        EXPECT_TRUE(writes.isEmpty());
    } else {
        EXPECT_EQ(writes, QByteArrayList{sample().request});
    }
    trace.expect(requested());
}

TEST_P(TEveryFamily, RequestsInTimeAreAllAlike)
{
    use(GetParam());
    for (int i = 0; i < 10; ++i) {
        scales->GetWeight(true);
        trace.expect(requested());
        clock.advance(3'900);
    }
}

TEST_P(TEveryFamily, SafeNeverWaits)
{
    use(GetParam());
    const qint64 before = clock.nowMs();
    EXPECT_EQ(scales->GetWeight(true), 0);
    EXPECT_EQ(passes, 0);
    EXPECT_EQ(clock.nowMs(), before);
}

TEST_P(TEveryFamily, SafeForgetsTheWeightBefore)
{
    prepare();
    feed(sample().bytes);
    EXPECT_EQ(scales->LastWeight(), sample().weight);
    EXPECT_EQ(scales->GetWeight(true), 0);
    EXPECT_EQ(scales->LastWeight(), 0);
}

TEST_P(TEveryFamily, NotConnectedThereIsNoValue)
{
    use(GetParam());
    scales->SetLastWeight(55);
    trace.take();
    port->Close();
    for (const bool safe : {true, false}) {
        EXPECT_EQ(scales->GetWeight(safe), -1);
        EXPECT_EQ(scales->LastWeight(), 0);
    }
    scales->SetComport(nullptr);
    for (const bool safe : {true, false}) {
        EXPECT_EQ(scales->GetWeight(safe), -1);
    }
    EXPECT_EQ(passes, 0);
    trace.expect({});
}

TEST_P(TEveryFamily, RequestBeginsWithTheFirstStep)
{
    prepare();
    feed(sample().bytes); // the dialogue stands at the weight
    ask();
    scales->SetScalesType(1);
    scales->SetComport(port.get());
    const bool continuous = sample().request.isEmpty();
    feed("\x05\x01"_b);
    EXPECT_EQ(scales->LastWeight(), continuous ? 0x105 : 0); // families that are not asked keep the step
}

TEST_P(TEveryFamily, RefusedRequestDoesNotCountAsOne)
{
    if (sample().request.isEmpty()) {
        return;
    }
    use(GetParam());
    port->Close();
    clock.advance(3'000);
    EXPECT_EQ(scales->GetWeight(true), -1);
    clock.advance(1'100);
    port->Open();
    scales->GetWeight(true);
    EXPECT_EQ(trace.countOf("log [07]"), 1); // silent since it was created
}

using Request = TScalesTest;

TEST_F(Request, WithoutAFamilyThereIsNoValue)
{
    for (const int type : noFamilies()) {
        use(type);
        scales->SetLastWeight(55);
        trace.take();
        EXPECT_EQ(scales->GetWeight(true), -1) << type;
        EXPECT_EQ(scales->LastWeight(), 0) << type;
        EXPECT_EQ(scales->GetWeight(false), -1) << type;
        clock.advance(5'000);
        EXPECT_EQ(scales->GetWeight(true), -1) << type;
        trace.expect({});
    }
    EXPECT_EQ(passes, 0);
}

TEST_F(Request, AWeightThatCameMeanwhileIsReturned)
{
    for (const int type : {3, 4, 5, 6}) {
        use(type);
        answerAtOnce(*this, sampleOf(type));
        EXPECT_EQ(scales->GetWeight(true), sampleOf(type).weight);
    }
}

TEST_F(Request, AWholeDialogueInsideTheWritesOfCas)
{
    use(2);
    answerAtOnce(*this, sampleOf(2));
    EXPECT_EQ(scales->GetWeight(true), 1234);
    EXPECT_EQ(trace.countOf("weight"), 1);
}

TEST_F(Request, MassaKTakesTheTimeBetweenTheResetAndTheRequest)
{
    use(1);
    scales->GetWeight(true);
    clock.advance(4'100);
    int resets = 0;
    scales->SetOnLog([&](platform::TComponent*, const QString& text) {
        if (text.startsWith("[07] ")) {
            ++resets;
            clock.advance(5'000);
        }
    });
    bool asked = false;
    port->OnWritten = [&](const QByteArray&) {
        if (!std::exchange(asked, true)) {
            scales->GetWeight(true); // the reset has just ended: nothing has been silent
        }
    };
    scales->GetWeight(true);
    EXPECT_TRUE(asked);
    EXPECT_EQ(resets, 1);
}

TEST_F(Request, TakesTheTimeAfterItWrote)
{
    use(3);
    port->OnWritten = [&](const QByteArray&) { clock.advance(2'000); };
    scales->GetWeight(true);
    port->OnWritten = {};
    clock.advance(3'500);
    trace.take();
    scales->GetWeight(true);
    EXPECT_EQ(trace.countOf("log [07]"), 0);
}

TEST_F(Request, OfAContinuousFamilyCountsAsARequest)
{
    for (const int type : {7, 8}) {
        use(type);
        clock.advance(60'000);
        EXPECT_EQ(scales->GetWeight(true), 0);
        trace.expect({}); // never a reset, never a report
        clock.advance(3'000);
        use(3);
        scales->GetWeight(true);
        EXPECT_EQ(trace.countOf("log [07]"), 0) << type;
        trace.take();
    }
}

} // namespace
