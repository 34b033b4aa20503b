#include "sim/bank_terminal.h"

#include "sim/memory_stream.h"
#include "support/text_printers.h"
#include "tnv5/testing/manual_clock.h"

#include <gtest/gtest.h>

namespace tnv5::sim {
namespace {

const QByteArray kRequest = "\x02\x05\x03\x06";
const QByteArray kEnd = "\x02\x04\x03\x07";

class BankTerminal : public ::testing::Test
{
protected:
    BankTerminal() { terminal.BaudRate = 0; }

    QByteArray said() { return stream.takeWritten(); }
    QByteArray saidAfter(qint64 ms)
    {
        clock.advance(ms);
        return said();
    }
    void hear(const QByteArray& bytes) { stream.feed(bytes); }
    TBankFate fate() const { return terminal.book().back().Fate; }

    QByteArray cardFrame() const
    {
        return bankFrame("01=4111111111111111\x1C"
                         "02=CARD/TEST\x1C"
                         "03=1\x1C"
                         "04=VISA\x1C"
                         "10=7\x1C"
                         "40=0\x1C"
                         "41=CL");
    }
    QByteArray answerFrame(const QByteArray& code = "00") const
    {
        return bankFrame("01=4111111111111111\x1C"
                         "02=CARD/TEST\x1C"
                         "03=1\x1C"
                         "04=VISA\x1C"
                         "10=7\x1C"
                         "06=" +
                         code +
                         "\x1C"
                         "40=0\x1C"
                         "41=CL");
    }

    void toAmount(const TBankScenario& scenario = {})
    {
        EXPECT_TRUE(terminal.begin(scenario));
        EXPECT_EQ(said(), kRequest);
        hear("\x06" + bankFrame("05=000000001250"));
    }
    void toCard(const TBankScenario& scenario = {})
    {
        toAmount(scenario);
        EXPECT_EQ(saidAfter(300), cardFrame());
    }
    void toAnswer(const TBankScenario& scenario = {})
    {
        toCard(scenario);
        hear("\x06");
        EXPECT_EQ(saidAfter(300), answerFrame(scenario.Code));
    }
    void expectEnds(TBankFate expected)
    {
        EXPECT_EQ(said(), kEnd);
        clock.advance(60);
        EXPECT_EQ(said(), "");
        EXPECT_TRUE(terminal.idle());
        EXPECT_EQ(fate(), expected);
    }

    testkit::TManualClock clock;
    TMemoryStream stream;
    TSimulatedBankTerminal terminal{stream, 2};
};

TEST_F(BankTerminal, Approves)
{
    toAnswer();
    hear("\x06");
    expectEnds(TBankFate::Approved);
    EXPECT_TRUE(terminal.book().back().Confirmed);
    EXPECT_EQ(terminal.book().back().Amount.Amount, 1250);
    EXPECT_EQ(terminal.book().back().Code, "00");
}

TEST_F(BankTerminal, DeclinesWithAnyCode)
{
    TBankScenario scenario;
    scenario.BankApproves = false;
    scenario.Code = "51";
    toAnswer(scenario);
    hear("\x06");
    expectEnds(TBankFate::Declined);
}

TEST_F(BankTerminal, RefusedAtEachStep)
{
    terminal.begin({});
    said();
    hear("\x06!");
    expectEnds(TBankFate::NoAmount);
    toCard();
    hear("!");
    EXPECT_EQ(said(), cardFrame());
    hear("!");
    EXPECT_EQ(said(), cardFrame());
    hear("!");
    expectEnds(TBankFate::Cancelled);
    toAnswer();
    hear("!");
    hear("!");
    said();
    hear("!");
    expectEnds(TBankFate::Reversed);
}

TEST_F(BankTerminal, RepeatsWhatNobodyAcknowledges)
{
    terminal.begin({});
    EXPECT_EQ(said(), kRequest);
    EXPECT_EQ(saidAfter(1'000), kRequest);
    EXPECT_EQ(saidAfter(1'000), kRequest);
    EXPECT_EQ(saidAfter(1'000), kEnd);
    clock.advance(60);
    EXPECT_EQ(fate(), TBankFate::NoAmount);
    toAnswer();
    EXPECT_EQ(saidAfter(1'000), answerFrame());
    EXPECT_EQ(saidAfter(1'000), answerFrame());
    clock.advance(1'000);
    expectEnds(TBankFate::Approved);
    EXPECT_FALSE(terminal.book().back().Confirmed);
}

TEST_F(BankTerminal, ChecksTheAmountMessage)
{
    for (const QByteArray& bad :
         {QByteArray("\x02"
                     "05=000000001250\x03?"),
          bankFrame("05=1250"), bankFrame("06=000000001250"), bankFrame("05=00000000125x"),
          bankFrame("05=000000001250\x1C"
                    "40=000000000001"),
          bankFrame("05=0000000-1250"), bankFrame("")}) {
        EXPECT_TRUE(terminal.begin({}));
        said();
        hear("\x06" + bad);
        EXPECT_EQ(said(), kRequest) << bad.toPercentEncoding().toStdString();
        hear("\x06" + bankFrame("05=000000000007\x1C"
                                "41=000000000003"));
        EXPECT_EQ(terminal.stage(), TSimulatedBankTerminal::TStage::Card);
        EXPECT_EQ(terminal.book().back().Amount.Amount, 7);
        EXPECT_EQ(terminal.book().back().Amount.Discount, 3);
        terminal.restart();
    }
}

TEST_F(BankTerminal, GivesUpAfterThreeBadAmounts)
{
    TBankScenario scenario;
    scenario.DamagedAmounts = 3;
    toAmount(scenario);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(said(), kRequest);
        hear("\x06" + bankFrame("05=000000001250"));
    }
    expectEnds(TBankFate::NoAmount);
}

TEST_F(BankTerminal, DamagesItsFramesToOrder)
{
    TBankScenario scenario;
    scenario.DamagedRequests = scenario.DamagedCards = scenario.DamagedAnswers = scenario.DamagedEnds = 1;
    terminal.begin(scenario);
    EXPECT_EQ(said(), "\x02\x05\x03\x46");
    hear("!");
    EXPECT_EQ(said(), kRequest);
    hear("\x06" + bankFrame("05=000000001250"));
    EXPECT_EQ(saidAfter(300).chopped(1), cardFrame().chopped(1));
    hear("!");
    EXPECT_EQ(said(), cardFrame());
    hear("\x06");
    EXPECT_NE(saidAfter(300), answerFrame());
    hear("!");
    EXPECT_EQ(said(), answerFrame());
    hear("\x06");
    EXPECT_EQ(said(), "\x02\x04\x03\x47");
    hear("!");
    expectEnds(TBankFate::Approved);
}

TEST_F(BankTerminal, RepeatsWhenItDidNotHear)
{
    TBankScenario scenario;
    scenario.UnheardRequests = scenario.UnheardCards = scenario.UnheardAnswers = 1;
    toAmount(scenario); // neither ACK nor amount were heard
    EXPECT_EQ(saidAfter(1'000), kRequest);
    hear("\x06" + bankFrame("05=000000001250"));
    EXPECT_EQ(saidAfter(300), cardFrame());
    hear("\x06");
    EXPECT_EQ(saidAfter(1'000), cardFrame());
    hear("\x06");
    EXPECT_EQ(saidAfter(300), answerFrame());
    hear("\x06");
    EXPECT_EQ(saidAfter(1'000), answerFrame());
    hear("\x06");
    expectEnds(TBankFate::Approved);
}

TEST_F(BankTerminal, CustomersLeaveAndTerminalsDie)
{
    TBankScenario scenario;
    scenario.CustomerLeaves = true;
    toAmount(scenario);
    clock.advance(300);
    expectEnds(TBankFate::Cancelled);

    for (const bool atBank : {false, true}) {
        scenario = {};
        scenario.SilentAfterAmount = !atBank;
        scenario.NoAnswer = atBank;
        if (atBank) {
            toCard(scenario);
            hear("\x06");
        } else {
            toAmount(scenario);
        }
        EXPECT_EQ(saidAfter(100'000), "");
        EXPECT_FALSE(terminal.idle());
        EXPECT_FALSE(terminal.begin({}));
        terminal.restart();
        EXPECT_TRUE(terminal.idle());
        EXPECT_EQ(fate(), TBankFate::Cancelled);
    }
}

TEST_F(BankTerminal, DiscountTagsOfTheVersions)
{
    const QByteArray tags[] = {"",
                               "\x1C"
                               "40=3\x1C"
                               "41=CL",
                               "\x1C"
                               "41=3\x1C"
                               "42=CL"};
    for (const int version : {1, 2, 3}) {
        TMemoryStream line;
        TSimulatedBankTerminal other(line, version);
        other.BaudRate = 0;
        other.begin({});
        line.feed("\x06" + bankFrame("05=000000001250\x1C"
                                     "41=000000000003"));
        line.takeWritten();
        clock.advance(300);
        EXPECT_TRUE(line.takeWritten().chopped(2).endsWith("10=7" + tags[version - 1])) << version;
    }
}

TEST_F(BankTerminal, WritesAtTheSpeedOfTheLine)
{
    terminal.BaudRate = 9'600;
    terminal.begin({});
    EXPECT_EQ(saidAfter(4), "");
    EXPECT_EQ(saidAfter(1), kRequest); // 4.2 ms
    hear("\x06" + bankFrame("05=000000001250"));
    clock.advance(300);
    const QByteArray frame = cardFrame();
    qsizetype at = 0;
    for (; at + 8 <= frame.size(); at += 8) {
        EXPECT_EQ(saidAfter(8), "");
        EXPECT_EQ(saidAfter(1), frame.mid(at, 8));
    }
    EXPECT_EQ(saidAfter(9), frame.mid(at));
}

TEST_F(BankTerminal, HearsFramesInPiecesAndIgnoresNoise)
{
    terminal.begin({});
    said();
    hear("xyz");
    for (const char byte : "\x06" + bankFrame("05=000000001250")) {
        hear(QByteArray(1, byte));
    }
    EXPECT_EQ(terminal.stage(), TSimulatedBankTerminal::TStage::Card);
    hear("\x02" + QByteArray(10'000, 'x'));
    clock.advance(300);
    said();
    hear("\x06");
    EXPECT_EQ(terminal.stage(), TSimulatedBankTerminal::TStage::Bank);
}

} // namespace
} // namespace tnv5::sim
