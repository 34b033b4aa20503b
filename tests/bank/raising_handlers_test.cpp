// Handlers that raise end the packet's handling there; nothing is acknowledged in their place.

#include "bank_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class Raising : public TBankTest
{
protected:
    /// The packet is handled up to and including the event of each line; then the exception, then nothing.
    void expectEndsAtEachEvent(const QByteArray& frame)
    {
        feed(frame);
        const QStringList whole = trace.take();
        for (qsizetype at = 0; at < whole.size(); ++at) {
            // the same line may come twice: count
            const qsizetype before = whole.first(at).count(whole[at]);
            qsizetype seen = 0;
            trace.OnLine = [&](const QString& line) {
                if (line == whole[at] && seen++ == before) {
                    throw std::runtime_error("host trouble");
                }
            };
            feed(frame);
            trace.OnLine = {};
            trace.expect(whole.first(at + 1) + QStringList{raised("host trouble")});
        }
        feed(frame);
        trace.expect(whole);
    }
};

TEST_F(Raising, InTheAmountRequest)
{
    expectEndsAtEachEvent(kAskAmount);
}

TEST_F(Raising, InTheRefusedAmount)
{
    acceptAmount = false;
    expectEndsAtEachEvent(kAskAmount);
}

TEST_F(Raising, InTheCard)
{
    expectEndsAtEachEvent(framed(kCardBody));
    acceptCard = false;
    expectEndsAtEachEvent(framed(kCardBody));
}

TEST_F(Raising, InTheAnswer)
{
    pos->SetCodeError("00;");
    expectEndsAtEachEvent(framed(kAnswerBody));
    acceptAnswer = false;
    expectEndsAtEachEvent(framed(kAnswerBody));
}

TEST_F(Raising, AtTheEnd)
{
    expectEndsAtEachEvent(kFinish);
}

TEST_F(Raising, BeforeTheWaitingBeginsItDoesNotBegin)
{
    trace.raiseOnce("log [4]");
    feed(kAskAmount);
    trace.take();
    clock.advance(10'000'000);
    trace.expect({});
    trace.raiseOnce("WAIT |||||||0 apply=1");
    feed(kAskAmount);
    trace.take();
    clock.advance(1'801'000);
    trace.expect({bare("TIMEOUT")});
}

TEST_F(Raising, AtGetTheTimerHasStopped)
{
    sendAmount();
    trace.raiseOnce("GET");
    feed(framed(kAnswerBody));
    trace.take();
    clock.advance(10'000'000);
    trace.expect({});
}

TEST_F(Raising, AnAbortIsSilent)
{
    trace.once("START", [] { throw platform::EAbort(); });
    feed(framed(kCardBody));
    trace.expect({packet(framed(kCardBody)), told("START", kCardValues, false)});
}

TEST_F(Raising, AFailingWriteLeavesThePacket)
{
    port->WriteFailure = QStringLiteral("line gone");
    feed(kAskAmount);
    trace.expect({packet(kAskAmount), bare("WAIT"), kLogRequest, raised("line gone")});
    feed(framed(kCardBody));
    trace.expect({packet(framed(kCardBody)), told("START", kCardValues, false), raised("line gone")});
    feed("\x02x\x03?");
    trace.expect({raised("line gone")});
    clock.advance(10'000'000);
    trace.expect({});
}

TEST_F(Raising, AFailingAmountIsNotAwaited)
{
    trace.once("amount", [&] { port->WriteFailure = QStringLiteral("line gone"); });
    feed(kAskAmount);
    EXPECT_EQ(trace.take().last(), raised("line gone"));
    port->WriteFailure.reset();
    clock.advance(10'000'000);
    trace.expect({});
}

TEST_F(Raising, InTheConnectionGoesToItsCaller)
{
    trace.raiseOnce("error [8]");
    EXPECT_THROW(pos->SetConnection(true), std::runtime_error);
    EXPECT_TRUE(port->Connected());
    EXPECT_TRUE(pos->SetConnection(true));
}

} // namespace
