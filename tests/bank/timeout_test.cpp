// The time-out, with the time in the test's hand.

#include "bank_fixture.h"

#include <limits>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

constexpr qint64 kSecond = 1000;
constexpr qint64 kUnit = 1800 * kSecond;

class TimeOut : public TBankTest
{
protected:
    TimeOut() { clock.jumpTo(TManualClock::at(9, 0)); }

    void expectTimeOut(TSourceLine where = TSourceLine::current()) { trace.expect({bare("TIMEOUT")}, where); }
    void expectSilence(TSourceLine where = TSourceLine::current()) { trace.expect({}, where); }
};

TEST_F(TimeOut, ComesWithTheTickAfterMoreThanTheLimit)
{
    for (const int units : {1, 2, 5}) {
        pos->SetTimeOut(units);
        sendAmount();
        clock.advance(units * kUnit + 999);
        expectSilence();
        clock.advance(1);
        expectTimeOut();
        clock.advance(2 * kUnit);
        expectSilence(); // once
    }
}

TEST_F(TimeOut, OfZeroComesAfterASecond)
{
    pos->SetTimeOut(0);
    sendAmount();
    clock.advance(999);
    expectSilence();
    clock.advance(1);
    expectTimeOut();
}

TEST_F(TimeOut, OfLessThanZeroComesAsSoon)
{
    for (const int units : {-1, std::numeric_limits<int>::min()}) {
        pos->SetTimeOut(units);
        sendAmount();
        clock.advance(1000);
        expectTimeOut();
    }
}

TEST_F(TimeOut, OfTheGreatestNumberNeverComes)
{
    pos->SetTimeOut(std::numeric_limits<int>::max()); // 64 bits
    sendAmount();
    clock.advance(20 * 3600 * kSecond);
    expectSilence();
}

TEST_F(TimeOut, LimitIsReadAtTheTick)
{
    pos->SetTimeOut(10);
    sendAmount();
    clock.advance(10 * kSecond);
    expectSilence();
    pos->SetTimeOut(0);
    clock.advance(kSecond);
    expectTimeOut();
}

TEST_F(TimeOut, CountsFromTheSendingOfTheAmount)
{
    trace.once("amount", [&] { clock.advance(600 * kSecond); }); // a host that takes its time
    sendAmount();
    clock.advance(kUnit);
    expectSilence();
    clock.advance(kSecond);
    expectTimeOut();
}

TEST_F(TimeOut, EveryPacketRenewsIt)
{
    for (const QByteArray& renewing :
         {framed(kCardBody), kFinish, framed("99=1"), QByteArray("\x02x\x03?")}) {
        sendAmount();
        clock.advance(kUnit);
        feed(renewing);
        trace.take();
        clock.advance(kUnit + 999);
        expectSilence();
        clock.advance(1);
        expectTimeOut();
    }
}

TEST_F(TimeOut, APacketWithoutAVersionIsNone)
{
    sendAmount();
    clock.advance(kUnit);
    pos->SetPosType(0);
    feed(framed(kCardBody));
    clock.advance(kSecond);
    expectTimeOut();
}

TEST_F(TimeOut, BytesThatAreNoPacketDoNotRenewIt)
{
    sendAmount();
    clock.advance(kUnit);
    feed("\x02"
         "01=");
    clock.advance(kSecond);
    expectTimeOut();
}

TEST_F(TimeOut, NothingIsAwaitedBeforeTheAmount)
{
    clock.advance(3 * kUnit);
    expectSilence();
    feed(framed(kCardBody));
    trace.take();
    clock.advance(3 * kUnit);
    expectSilence();
    acceptAmount = false;
    feed(kAskAmount);
    trace.take();
    clock.advance(3 * kUnit);
    expectSilence();
}

TEST_F(TimeOut, TheAnswerEndsTheWaiting)
{
    for (const bool accept : {true, false}) {
        acceptAnswer = accept;
        sendAmount();
        feed(framed(kAnswerBody));
        trace.take();
        clock.advance(3 * kUnit);
        expectSilence();
    }
}

TEST_F(TimeOut, ARefusedAmountLeavesTheWaitingAsItWas)
{
    sendAmount();
    acceptAmount = false;
    feed(kAskAmount);
    trace.take();
    clock.advance(kUnit + kSecond);
    expectTimeOut();
}

TEST_F(TimeOut, CardAndEndLeaveTheWaitingAsItWas)
{
    sendAmount();
    feed(framed(kCardBody));
    feed(kFinish);
    trace.take();
    clock.advance(kUnit + kSecond);
    expectTimeOut();
}

TEST_F(TimeOut, ASecondAmountDoesNotRestartTheTimer)
{
    pos->SetTimeOut(0);
    sendAmount();
    clock.advance(600);
    sendAmount();
    clock.advance(400); // the tick of the first: no second has passed since the second amount
    expectSilence();
    clock.advance(999);
    expectSilence();
    clock.advance(1);
    expectTimeOut();
}

TEST_F(TimeOut, IsHeldWhileThePortIsClosed)
{
    sendAmount();
    port->Close();
    clock.advance(2 * kUnit);
    expectSilence();
    port->Open();
    clock.advance(kSecond);
    expectTimeOut();
}

TEST_F(TimeOut, AnAnswerAfterItIsHandledAsAnyOther)
{
    sendAmount();
    clock.advance(kUnit + kSecond);
    expectTimeOut();
    feed(framed(kAnswerBody));
    trace.expect({packet(framed(kAnswerBody)), told("GET", kAnswerValues, false), kAck, kLogConfirmed,
                  told("OK", kAnswerValues, true)});
}

TEST_F(TimeOut, TheNextAmountStartsItAnew)
{
    sendAmount();
    clock.advance(kUnit + kSecond);
    expectTimeOut();
    sendAmount();
    clock.advance(kUnit);
    expectSilence();
    clock.advance(kSecond);
    expectTimeOut();
}

TEST_F(TimeOut, TheTimerIsStoppedInBetween)
{
    pos->SetTimeOut(0);
    for (const bool answered : {true, false}) {
        sendAmount();
        if (answered) {
            feed(framed(kAnswerBody));
        } else {
            clock.advance(1000);
        }
        trace.take();
        clock.advance(500);
        sendAmount(); // a timer that went on would tick 500 ms after it, and then too late
        clock.advance(999);
        expectSilence();
        clock.advance(1);
        expectTimeOut();
    }
}

TEST_F(TimeOut, NeedsNoHandler)
{
    pos->SetOnRequestOperation({});
    sendAmount();
    clock.advance(2 * kUnit);
    attach();
    clock.advance(2 * kUnit);
    expectSilence();
}

TEST_F(TimeOut, TakesOneNearMidnightForSilence)
{
    clock.jumpTo(TManualClock::at(23, 59, 50));
    pos->SetTimeOut(2);
    sendAmount();
    clock.advance(9 * kSecond);
    expectSilence();
    clock.advance(kSecond); // midnight: the time of day has fallen by a day
    expectTimeOut();
}

TEST_F(TimeOut, OfADayIsNotFooledByMidnight)
{
    clock.jumpTo(TManualClock::at(23, 59, 50));
    pos->SetTimeOut(48); // no two times of day are that far apart
    sendAmount();
    clock.advance(24 * 3600 * kSecond);
    expectSilence();
    pos->SetTimeOut(47);
    clock.jumpTo(TManualClock::at(23, 59, 50) + 2 * platform::kMsPerDay);
    sendAmount();
    clock.advance(10 * kSecond); // 86390 s by the time of day
    expectTimeOut();
}

TEST_F(TimeOut, APacketAfterMidnightRenewsIt)
{
    clock.jumpTo(TManualClock::at(23, 59, 59, 500));
    sendAmount();
    clock.advance(600);
    feed(framed(kCardBody));
    trace.take();
    clock.advance(kUnit);
    expectSilence();
    clock.advance(2 * kSecond);
    expectTimeOut();
}

TEST_F(TimeOut, HandlersOfItMayDoAnything)
{
    for (const int what : {0, 1, 2, 3}) {
        TBankFixture fixture;
        fixture.sendAmount();
        fixture.trace.once("TIMEOUT", [&, what] {
            if (what == 0) {
                fixture.pos.reset();
            } else if (what == 1) {
                fixture.feed(kAskAmount); // re-enters
            } else if (what == 2) {
                throw std::runtime_error("host trouble");
            } else {
                fixture.port.reset();
            }
        });
        fixture.clock.advance(kUnit + kSecond);
        const QStringList lines = fixture.trace.take();
        EXPECT_EQ(lines.first(), bare("TIMEOUT"));
        EXPECT_EQ(lines.size(), what == 1 ? 10 : what == 2 ? 2 : 1);
        fixture.clock.advance(kUnit + kSecond);
        fixture.trace.expect(what == 1 ? QStringList{bare("TIMEOUT")} : QStringList{});
    }
}

} // namespace
