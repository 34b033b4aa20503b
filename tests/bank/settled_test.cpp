// What handlers may change in the middle of a packet, and what it does.

#include "bank_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using InTheMiddle = TBankTest;

TEST_F(InTheMiddle, ACancelEventRevivesNothing)
{
    acceptAmount = acceptCard = acceptAnswer = false;
    OnApply = [](const QString& status, bool& apply) { apply = status.startsWith("CANCEL"); };
    feed(kAskAmount);
    trace.expect({packet(kAskAmount), bare("WAIT"), kLogRequest, kAck, "amount 0 0 apply=0", kNak, kLogCancel,
                  bare("CANCEL_1")});
    feed(framed(kCardBody));
    trace.expect({packet(framed(kCardBody)), told("START", kCardValues, false), kNak, kLogCancel,
                  told("CANCEL_3", kCardValues, false)});
    feed(framed(kAnswerBody));
    trace.expect({packet(framed(kAnswerBody)), told("GET", kAnswerValues, false), kNak, kLogCancel,
                  told("CANCEL_2", kAnswerValues, false)});
    clock.advance(10'000'000);
    trace.expect({});
}

TEST_F(InTheMiddle, ClearingApplyLaterStopsNothing)
{
    pos->SetCodeError("00;");
    OnApply = [](const QString& status, bool& apply) {
        if ((status == "WAIT" && apply) || status == "OK") {
            apply = false;
        }
    };
    feed(kAskAmount);
    EXPECT_EQ(trace.take().last(), kLogWaiting);
    feed(framed(kAnswerBody));
    trace.expect({packet(framed(kAnswerBody)), told("GET", kAnswerValues, false), kAck, kLogConfirmed,
                  told("OK", kAnswerValues, true), kLogError, told("ERROR", kAnswerValues, false)});
}

TEST_F(InTheMiddle, EachPacketBeginsWithoutApply)
{
    feed(framed(kCardBody));
    feed(framed(kCardBody));
    EXPECT_EQ(trace.take().filter(told("START", kCardValues, false)).size(), 2);
}

TEST_F(InTheMiddle, FieldsAreCutBeforeTheFirstEvent)
{
    const QByteArray frame = framed(fields({"01=1", "06=00", "40=a", "41=b", "42=c"}));
    const QStringList values = {"1", "", "", "", "00", "", "b", "a"};
    for (const int other : {3, 1, 0}) {
        for (const QString& at : {QStringLiteral("log Operation"), QStringLiteral("GET")}) {
            pos->SetPosType(2);
            trace.once(at, [&] { pos->SetPosType(other); });
            feed(frame);
            trace.expect(
                {packet(frame), told("GET", values, false), kAck, kLogConfirmed, told("OK", values, true)});
        }
    }
}

TEST_F(InTheMiddle, LanguageIsThatOfTheMoment)
{
    trace.once("GET", [&] { pos->SetIDLang(3); });
    feed(framed(kAnswerBody));
    EXPECT_EQ(trace.take()[3], "log ");
}

TEST_F(InTheMiddle, AClosedPortDropsTheRestSilently)
{
    trace.once("START", [&] { port->Close(); });
    feed(framed(kCardBody));
    trace.expect({packet(framed(kCardBody)), told("START", kCardValues, false)});
    port->Open();
    trace.once("amount", [&] { pos->SetConnection(false); });
    feed(kAskAmount);
    trace.expect({packet(kAskAmount), bare("WAIT"), kLogRequest, kAck, "amount 0 0 apply=0", kLogSent,
                  bare("WAIT", true), kLogWaiting});
}

TEST_F(InTheMiddle, APortTakenAwayDropsTheRestSilently)
{
    trace.once("GET", [&] { pos->SetComport(nullptr); });
    feed(framed(kAnswerBody));
    trace.expect({packet(framed(kAnswerBody)), told("GET", kAnswerValues, false), kLogConfirmed,
                  told("OK", kAnswerValues, true)});
}

TEST_F(InTheMiddle, AnotherPortGetsTheRest)
{
    TMemoryPort other;
    other.Open();
    trace.once("START", [&] { pos->SetComport(&other); });
    feed(framed(kCardBody));
    EXPECT_EQ(other.takeWritten(), "\x06");
    EXPECT_EQ(port->takeWritten(), "");
}

TEST_F(InTheMiddle, APacketInsideAnotherIsHandledAtOnce)
{
    trace.once("START", [&] { feed(kFinish); });
    feed(framed(kCardBody));
    trace.expect({packet(framed(kCardBody)), told("START", kCardValues, false), packet(kFinish),
                  bare("FINISH"), kAck});
}

TEST_F(InTheMiddle, AnAnswerInsideTheAmountIsOverwritten)
{
    trace.once("log [4]", [&] { feed(framed(kAnswerBody)); });
    feed(kAskAmount);
    trace.take();
    clock.advance(1'801'000); // the amount is awaited, as the outer packet goes on
    trace.expect({bare("TIMEOUT")});
}

TEST_F(InTheMiddle, ReplacedHandlersFinishTheirCall)
{
    trace.once("GET", [&] {
        pos->SetOnRequestOperation({});
        pos->SetOnLog({});
    });
    feed(framed(kAnswerBody));
    trace.expect({packet(framed(kAnswerBody)), told("GET", kAnswerValues, false), kAck});
}

} // namespace
