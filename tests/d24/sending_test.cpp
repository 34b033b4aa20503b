// The commands that answer a pass.

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Sending = TD24Test;

TEST_F(Sending, EveryTypeRefusesAndAllows)
{
    struct TRow
    {
        const char* type;
        int yesnot;
        const char* message;
        QStringList commands;
        const char* logged;
    };
    const TRow rows[] = {
        {"G", 0, "", {"SH1:001x", "PH1:001x"}, "PH1:001x"},
        {"G", 1, "", {"SH1:001x", "GO1:001x"}, "GO1:001x"},
        {"G", 1, "|m|", {"SH1:001x|m|", "GO1:001x|m|"}, "GO1:001x|m|"},
        {"I", 0, "", {"SH1:001x", ""}, ""},
        {"I", 1, "|m|", {"SH1:001x|m|", ""}, ""},
        {"T", 0, "", {"PH1:001x"}, "PH1:001x"},
        {"T", 1, "", {"GO1:001x"}, "GO1:001x"},
        {"T", 0, "|m|", {"SH1:001x|m|", "PH1:001x|m|"}, "PH1:001x|m|"},
        {"T", 1, "|m|", {"SH1:001x|m|", "GO1:001x|m|"}, "GO1:001x|m|"},
        {"D", 0, "|m|", {""}, ""},
        {"D", 1, "|m|", {""}, ""},
        {"", 1, "", {""}, ""},
    };
    for (const TRow& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.type << ' ' << row.yesnot << ' ' << row.message);
        TD24Fixture fixture;
        fixture.link->Checks = {{"GO", "7A"}, {"PH", "7B"}, {"SH", "7C"}, {"", "7D"}};
        fixture.clock.jumpTo(TManualClock::at(18, 0));
        const d24::PRFidInfo pass = fixture.makePass(QStringLiteral("1!001x!") + row.type, "77", "any");
        pass->InfoMess = row.message;
        pass->Finish = true;
        pass->Command = "before";
        EXPECT_TRUE(fixture.gate->p_hw_SendComCommand(0, row.yesnot));
        QStringList lines;
        for (const QString& command : row.commands) {
            lines << commanded(command);
        }
        fixture.trace.expect(lines << loggedSend(row.logged));
        EXPECT_EQ(pass->Command, row.logged);
        EXPECT_EQ(pass->CRC, *row.logged == '\0' ? "7D" : row.yesnot == 1 ? "7A" : "7B");
        EXPECT_FALSE(pass->Finish);
        EXPECT_DOUBLE_EQ(pass->CRCtime, 0.75); // the time of day
        EXPECT_EQ(pass->CommandAdd, "");
        EXPECT_EQ(pass->Status, "any");
    }
}

TEST_F(Sending, TheRecordIsReadyWhenTheMainCommandGoesOut)
{
    const d24::PRFidInfo pass = makePass(kG, "77");
    pass->Finish = true;
    pass->Command = "before";
    pass->CRC = "before";
    trace.OnLine = [&](const QString& line) {
        if (line.startsWith("send SH")) {
            EXPECT_EQ(pass->Command, "before");
            EXPECT_TRUE(pass->Finish);
        } else if (line.startsWith("send GO")) {
            EXPECT_EQ(pass->Command, "GO10.0.0.5:002G");
            EXPECT_FALSE(pass->Finish);
            EXPECT_EQ(pass->CRC, "before");
            EXPECT_EQ(pass->CRCtime, 0);
        } else if (line.startsWith("log")) {
            EXPECT_EQ(pass->CRC, "");
            EXPECT_DOUBLE_EQ(pass->CRCtime, 0.5);
        }
    };
    gate->p_hw_SendComCommand(0, 1);
    EXPECT_EQ(trace.take().size(), 3);
}

TEST_F(Sending, AnyOtherAnswerSendsNothing)
{
    const d24::PRFidInfo pass = makePass(kG, "77");
    pass->Command = "before";
    for (const int yesnot : {-1, 2, 100}) {
        EXPECT_TRUE(gate->p_hw_SendComCommand(0, yesnot));
        trace.expect({});
        EXPECT_EQ(pass->Command, "before");
        EXPECT_EQ(pass->CRCtime, 0);
    }
    link->Up = false;
    EXPECT_TRUE(gate->p_hw_SendComCommand(0, 2)); // the link is tested first
    trace.expect({kPortClosed});
}

TEST_F(Sending, WithoutLinkNothingIsSent)
{
    const d24::PRFidInfo pass = makePass(kG, "77");
    pass->Command = "before";
    pass->Finish = true;
    link->Up = false;
    for (const int yesnot : {0, 1}) {
        EXPECT_TRUE(gate->p_hw_SendComCommand(0, yesnot));
        trace.expect({kPortClosed});
    }
    gate->SetConnector(nullptr);
    EXPECT_TRUE(gate->p_hw_SendComCommand(0, 1));
    trace.expect({kPortClosed});
    EXPECT_EQ(pass->Command, "before");
    EXPECT_TRUE(pass->Finish);
    EXPECT_EQ(pass->CRCtime, 0);
}

TEST_F(Sending, AnIndexWithoutPassSendsNothing)
{
    for (const int index : {-1, 0, 5}) {
        EXPECT_TRUE(gate->p_hw_SendComCommand(index, 1));
        EXPECT_EQ(trace.countOf("send"), 0);
        EXPECT_EQ(trace.countOf("log"), 0);
    }
}

TEST_F(Sending, AFailingMainCommandIsReportedAndLogged)
{
    link->Failures = {{"PH", "torn"}, {"GO", "cut"}};
    link->Checks = {{"GO", "7A"}};
    const d24::PRFidInfo pass = makePass(kG, "77");
    pass->CRC = "before";
    pass->Finish = true;
    EXPECT_TRUE(gate->p_hw_SendComCommand(0, 0));
    trace.expect({commanded("SH10.0.0.5:002G"), commanded("PH10.0.0.5:002G"), "error [044] torn",
                  loggedSend("PH10.0.0.5:002G")});
    EXPECT_TRUE(gate->p_hw_SendComCommand(0, 1));
    trace.expect({commanded("SH10.0.0.5:002G"), commanded("GO10.0.0.5:002G"), "error [04] cut",
                  loggedSend("GO10.0.0.5:002G")});
    EXPECT_EQ(pass->Command, "GO10.0.0.5:002G");
    EXPECT_FALSE(pass->Finish);
    EXPECT_EQ(pass->CRC, "before");
    EXPECT_EQ(pass->CRCtime, 0);
}

TEST_F(Sending, AFailingDisplayKeepsTheMainCommandBack)
{
    link->Failures = {{"SH", "dark"}};
    const d24::PRFidInfo pass = makePass(kG, "77");
    pass->Command = "before";
    pass->Finish = true;
    EXPECT_TRUE(gate->p_hw_SendComCommand(0, 0));
    trace.expect({commanded("SH10.0.0.5:002G"), "error [044] dark", loggedSend("PH10.0.0.5:002G")});
    EXPECT_TRUE(gate->p_hw_SendComCommand(0, 1));
    trace.expect({commanded("SH10.0.0.5:002G"), "error [04] dark", loggedSend("GO10.0.0.5:002G")});
    EXPECT_EQ(pass->Command, "before");
    EXPECT_TRUE(pass->Finish);
}

TEST_F(Sending, AFailureDoesNotStopThePass)
{
    link->Failures = {{"GO", "cut"}};
    Answers = {{0, 1}};
    makePass(kT, "77");
    runPass();
    trace.expect({stack(kT, "77", "NEW"), check(kT, "77", "NEW", 0), commanded("GO10.0.0.5:001T"),
                  "error [04] cut", loggedSend("GO10.0.0.5:001T")});
    EXPECT_EQ(statusOf(0), "OPEN");
}

TEST_F(Sending, WithoutLinkThePassGoesOnAllTheSame)
{
    link->Up = false;
    Answers = {{0, 1}};
    makePass(kT, "77");
    Answers[0] = 1;
    runPass();
    EXPECT_EQ(statusOf(0), "OPEN");
    gate->StackItem(0)->Status = "NEW";
    Answers[0] = 0;
    runPass();
    EXPECT_EQ(statusOf(0), "CLOSE");
    EXPECT_EQ(trace.countOf(kPortClosed), 2);
    EXPECT_EQ(trace.countOf("send"), 0);
}

TEST_F(Sending, FailuresAreSilentWithoutHandler)
{
    gate->SetOnError({});
    link->Failures = {{"GO", "cut"}};
    makePass(kT, "77");
    gate->p_hw_SendComCommand(0, 1);
    trace.expect({commanded("GO10.0.0.5:001T"), loggedSend("GO10.0.0.5:001T")});
    link->Up = false;
    gate->p_hw_SendComCommand(0, 1);
    trace.expect({});
}

TEST_F(Sending, RelaysAndStatusOnlyTestTheLink)
{
    for (const int yesnot : {0, 1, 7}) {
        EXPECT_TRUE(gate->p_hw_relay("10.0.0.5", "001T", "1", yesnot));
    }
    EXPECT_TRUE(gate->p_hw_CheckStatusAll());
    trace.expect({});
    link->Up = false;
    EXPECT_TRUE(gate->p_hw_relay("10.0.0.5", "001T", "1", 1));
    EXPECT_TRUE(gate->p_hw_CheckStatusAll());
    gate->SetConnector(nullptr);
    EXPECT_TRUE(gate->p_hw_relay("10.0.0.5", "001T", "1", 1));
    EXPECT_TRUE(gate->p_hw_CheckStatusAll());
    trace.expect({kPortClosed, kPortClosed, kPortClosed, kPortClosed});
}

} // namespace
