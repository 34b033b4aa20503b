// The dialogue as transcripts of bytes and events: three versions, each refusal, each status word.

#include "bank_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Dialogue = TBankTest;

TEST_F(Dialogue, AWholePayment)
{
    feed(kAskAmount);
    trace.expect({packet(kAskAmount), bare("WAIT"), kLogRequest, kAck, "amount 0 0 apply=0",
                  wrote(kAmountMessage), kLogSent, bare("WAIT", true), kLogWaiting});
    feed(framed(kCardBody));
    trace.expect({packet(framed(kCardBody)), told("START", kCardValues, false), kAck});
    feed(framed(kAnswerBody));
    trace.expect({packet(framed(kAnswerBody)), told("GET", kAnswerValues, false), kAck, kLogConfirmed,
                  told("OK", kAnswerValues, true)});
    feed(kFinish);
    trace.expect({packet(kFinish), bare("FINISH")});
}

TEST_F(Dialogue, DiscountFieldsOfEachVersion)
{
    const QByteArray body = fields({"01=1", "06=00", "40=a", "41=b", "42=c"});
    const QStringList expected[] = {{"CT", "0"}, {"b", "a"}, {"c", "b"}};
    for (const int type : {1, 2, 3}) {
        pos->SetPosType(type);
        const QStringList values = QStringList{"1", "", "", "", "00", ""} + expected[type - 1];
        feed(framed(body));
        trace.expect({packet(framed(body)), told("GET", values, false), kAck, kLogConfirmed,
                      told("OK", values, true)});
        const QByteArray card = fields({"01=1", "03=", "10=", "40=a", "41=b", "42=c"});
        const QStringList cardValues = QStringList{"1", "", "", "", "", ""} + expected[type - 1];
        feed(framed(card));
        trace.expect({packet(framed(card)), told("START", cardValues, false), kAck});
    }
}

TEST_F(Dialogue, DiscountFieldsThatAreMissing)
{
    const QStringList expected[] = {{"CT", "0"}, {"", ""}, {"", ""}};
    for (const int type : {1, 2, 3}) {
        pos->SetPosType(type);
        feed(framed("01=1\x1C"
                    "06=77"));
        EXPECT_EQ(trace.take()[1],
                  told("GET", QStringList{"1", "", "", "", "77", ""} + expected[type - 1], false));
    }
}

TEST_F(Dialogue, DiscountIsSentUnderTheSameTagForAllVersions)
{
    discount = 100;
    for (const int type : {1, 2, 3}) {
        pos->SetPosType(type);
        feed(kAskAmount);
        EXPECT_EQ(trace.take()[5], wrote("\x02"
                                         "05=000000001250\x1C"
                                         "41=000000000100\x03\x18"));
    }
    for (const int none : {0, -7}) {
        discount = none;
        feed(kAskAmount);
        EXPECT_EQ(trace.take()[5], wrote(kAmountMessage));
    }
}

TEST_F(Dialogue, AmountsAsTheyAreSentAndLogged)
{
    const struct
    {
        int amount;
        QByteArray sent;
        QString logged;
    } table[] = {{5, "000000000005", "5"},
                 {0, "000000000000", "0"},
                 {-5, "0000000000-5", "-5"},
                 {2'147'483'647, "002147483647", "2147483647"}};
    for (const auto& row : table) {
        amount = row.amount;
        feed(kAskAmount);
        const QStringList lines = trace.take();
        EXPECT_EQ(lines[5], wrote(framed("05=" + row.sent)));
        EXPECT_EQ(lines[6], "log [4] Payment amount has been sent " + row.logged);
    }
}

TEST_F(Dialogue, RefusedAmount)
{
    acceptAmount = false;
    feed(kAskAmount);
    trace.expect({packet(kAskAmount), bare("WAIT"), kLogRequest, kAck, "amount 0 0 apply=0", kNak, kLogCancel,
                  bare("CANCEL_1")});
}

TEST_F(Dialogue, RefusedCard)
{
    acceptCard = false;
    feed(framed(kCardBody));
    trace.expect({packet(framed(kCardBody)), told("START", kCardValues, false), kNak, kLogCancel,
                  told("CANCEL_3", kCardValues, false)});
}

TEST_F(Dialogue, RefusedAnswer)
{
    acceptAnswer = false;
    feed(framed(kAnswerBody));
    trace.expect({packet(framed(kAnswerBody)), told("GET", kAnswerValues, false), kNak, kLogCancel,
                  told("CANCEL_2", kAnswerValues, false)});
}

TEST_F(Dialogue, AnswerCodes)
{
    pos->SetCodeOk("000;10;77;");
    pos->SetCodeError("05;51;77;");
    const struct
    {
        QByteArray code;
        QStringList ends;
    } table[] = {
        {"000", {"OK"}},   {"00", {"OK"}}, // "00;" is in "000;"
        {"0", {"OK"}},     {"10", {"OK"}},          {"05", {"ERROR"}},
        {"51", {"ERROR"}}, {"5", {"ERROR"}}, // "5;" is in "05;"
        {"1", {"ERROR"}},  {"77", {"OK", "ERROR"}}, {"99", {}},
        {"0;1", {}},       {"", {"OK", "ERROR"}}, // ";" is in both
        {"0000", {}},      {"10;77", {"OK"}},
    };
    for (const auto& row : table) {
        const QByteArray frame = framed("01=1\x1C"
                                        "06=" +
                                        row.code);
        const QStringList values = {"1", "", "", "", row.code, "", "", ""};
        QStringList expected = {packet(frame), told("GET", values, false), kAck};
        for (const QString& end : row.ends) {
            expected << (end == "OK" ? kLogConfirmed : kLogError) << told(end, values, true);
        }
        feed(frame);
        trace.expect(expected);
    }
}

TEST_F(Dialogue, AnEmptyListHasNoCode)
{
    pos->SetCodeOk({});
    pos->SetCodeError({});
    for (const QByteArray code : {"", "00"}) {
        feed(framed("01=1\x1C"
                    "06=" +
                    code));
        EXPECT_EQ(trace.take().size(), 3);
    }
}

TEST_F(Dialogue, ListsAreReadWhenTheyAreNeeded)
{
    OnApply = [&](const QString& status, bool&) {
        if (status == "GET") {
            pos->SetCodeOk("99;");
        } else if (status == "OK") {
            pos->SetCodeError("99;");
        }
    };
    feed(framed("01=1\x1C"
                "06=99"));
    const QStringList lines = trace.take();
    EXPECT_EQ(lines.filter("OK").size(), 1);
    EXPECT_EQ(lines.filter("ERROR").size(), 1);
}

TEST_F(Dialogue, BadCheckIsRefusedAndNothingElse)
{
    for (const QByteArray& body : {QByteArray("\x05"), kCardBody, kAnswerBody, QByteArray("\x04")}) {
        QByteArray frame = framed(body);
        frame.back() = char(frame.back() ^ 0x40);
        feed(frame);
        trace.expect({kNak});
    }
}

TEST_F(Dialogue, UnknownPacketsAreLoggedOnly)
{
    for (const QByteArray body : {"", "99=1", "01=1", "06=00",
                                  "03=1\x1C"
                                  "10=2"}) {
        feed(framed(body));
        trace.expect({packet(framed(body))});
    }
}

TEST_F(Dialogue, CardReadTurnsIntoAnAnswerByItsCode)
{
    feed(framed(kCardBody + "\x1C"
                            "06="));
    EXPECT_TRUE(trace.take()[1].startsWith("GET "));
}

TEST_F(Dialogue, EveryByteReachesTheHostAsItIs)
{
    QByteArray holder;
    for (int byte = 0; byte < 256; ++byte) {
        if (byte != 0x02 && byte != 0x03 && byte != 0x1C) {
            holder += char(byte);
        }
    }
    QString heard;
    pos->SetOnRequestOperation([&](TComponent*, const QString&, const QString&, const QString& CardHolder,
                                   const QString&, const QString&, const QString&, bool&, const QString&,
                                   const QString&, const QString&) { heard = CardHolder; });
    feed(framed("01=1\x1C"
                "06=1\x1C"
                "02=" +
                holder));
    EXPECT_EQ(heard, QString::fromLatin1(holder));
}

TEST_F(Dialogue, WithoutHandlersEverythingIsRefused)
{
    pos->SetOnLog({});
    pos->SetOnError({});
    pos->SetOnRequestAmount({});
    pos->SetOnRequestOperation({});
    feed(kAskAmount);
    trace.expect({kAck, kNak});
    feed(framed(kCardBody));
    trace.expect({kNak});
    feed(framed(kAnswerBody));
    trace.expect({kNak});
    feed(kFinish);
    feed(framed("99=1"));
    trace.expect({});
}

TEST_F(Dialogue, WithoutTheOperationHandlerTheAmountIsSent)
{
    pos->SetOnRequestOperation({});
    feed(kAskAmount);
    trace.expect({packet(kAskAmount), kLogRequest, kAck, "amount 0 0 apply=0", wrote(kAmountMessage),
                  kLogSent, kLogWaiting});
    feed(framed(kAnswerBody));
    trace.expect({packet(framed(kAnswerBody)), kNak, kLogCancel});
    feed(framed(kCardBody));
    trace.expect({packet(framed(kCardBody)), kNak, kLogCancel});
}

TEST_F(Dialogue, WithoutALogHandlerItIsTheSame)
{
    pos->SetOnLog({});
    feed(kAskAmount);
    trace.expect({bare("WAIT"), kAck, "amount 0 0 apply=0", wrote(kAmountMessage), bare("WAIT", true)});
    feed(framed(kAnswerBody));
    trace.expect({told("GET", kAnswerValues, false), kAck, told("OK", kAnswerValues, true)});
}

TEST_F(Dialogue, ApplySetAtTheFirstWaitSendsTheAmountZero)
{
    pos->SetOnRequestAmount({});
    OnApply = [](const QString&, bool& apply) { apply = true; };
    feed(kAskAmount);
    trace.expect({packet(kAskAmount), bare("WAIT"), kLogRequest, kAck, wrote(framed("05=000000000000")),
                  "log [4] Payment amount has been sent 0", bare("WAIT", true), kLogWaiting});
}

TEST_F(Dialogue, ApplySetAtTheFirstWaitReachesTheAmountHandler)
{
    acceptAmount = false;
    OnApply = [](const QString& status, bool& apply) { apply = apply || status == "WAIT"; };
    feed(kAskAmount);
    trace.expect({packet(kAskAmount), bare("WAIT"), kLogRequest, kAck, "amount 0 0 apply=1", kNak, kLogCancel,
                  bare("CANCEL_1")});
}

TEST_F(Dialogue, EveryVersionSpeaksTheSame)
{
    for (const int type : {1, 2, 3}) {
        pos->SetPosType(type);
        feed(kAskAmount);
        EXPECT_EQ(trace.take().size(), 9) << type;
        feed(kFinish);
        trace.expect({packet(kFinish), bare("FINISH")});
    }
}

TEST_F(Dialogue, WithoutAVersionNothingIsHeard)
{
    for (const int type : {0, 4, -1}) {
        pos->SetPosType(type);
        feed(kAskAmount);
        feed(framed(kAnswerBody));
        feed("\x02\x04\x03\x00"_b);
        trace.expect({});
    }
}

TEST_F(Dialogue, AVersionTakenAwayInsideAPacketEndsIt)
{
    feed("\x02\x05");
    pos->SetPosType(0);
    feed("\x03\x06");
    trace.expect({});
    pos->SetPosType(1);
    feed(kFinish); // the unfinished packet swallows it
    trace.expect({kNak});
    feed(kFinish);
    trace.expect({packet(kFinish), bare("FINISH")});
}

} // namespace
