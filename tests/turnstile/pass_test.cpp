// One pass over the table: what it does to an entry in each state, and in which order.

#include "turnstile_fixture.h"

namespace {

using namespace tnv5::tests;
using tnv5::turnstile::PRFidInfo;

using StackPass = TTurnstileTest;

TEST_F(StackPass, NothingToDo)
{
    gate->p_hw_CallStackArray();
    trace.expect({});
}

TEST_F(StackPass, NewPassIsOpened)
{
    makePass("01A", "77");
    Answers[0] = 1;
    gate->p_hw_CallStackArray();
    trace.expect({
        "status STACK 01A 77 NEW NEW",
        "check 01A 77 NEW mode 0 preset -1",
        "write $01A10366\\r",
        "log %Отправлено на порт% $01A103",
        "status STACK 01A 77 OPEN OPEN",
    });
    EXPECT_EQ(statusOf(0), "OPEN");
}

TEST_F(StackPass, NewPassIsRefusedAndRemovedInTheSamePass)
{
    makePass("01A", "77");
    Answers[0] = 0;
    gate->p_hw_CallStackArray();
    trace.expect({
        "status STACK 01A 77 NEW NEW",
        "check 01A 77 NEW mode 0 preset -1",
        "write $01A00064\\r",
        "log %Отправлено на порт% $01A000",
        "status STACK 01A 77 CLOSE CLOSE",
    });
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(StackPass, NewPassStaysAtAnyOtherAnswer)
{
    makePass("01A", "77");
    for (const int answer : {-1, 2, 3, -2, 100}) {
        Answers[0] = answer;
        gate->p_hw_CallStackArray();
        trace.expect({stack("01A", "77", "NEW"), check("01A", "77", "NEW", 0)});
        EXPECT_EQ(statusOf(0), "NEW");
    }
}

TEST_F(StackPass, NewPassIsAskedAgainOnEveryTick)
{
    inject("$01AR77");
    trace.take();
    clock.advance(300);
    trace.expect({stack("01A", "77", "NEW"), check("01A", "77", "NEW", 0), stack("01A", "77", "NEW"),
                  check("01A", "77", "NEW", 0), stack("01A", "77", "NEW"), check("01A", "77", "NEW", 0)});
    skip(3'600'000);
    EXPECT_EQ(statusOf(0), "NEW");
}

TEST_F(StackPass, NewPassWithoutACheckHandlerStaysForEver)
{
    gate->SetOnCheckSQL({});
    inject("$01AR77");
    skip(60'000);
    EXPECT_EQ(statusOf(0), "NEW");
    clock.advance(100);
    trace.expect({stack("01A", "77", "NEW")}); // and the timer keeps running
}

TEST_F(StackPass, StateChangesAfterTheCommand)
{
    for (const int answer : {0, 1}) {
        const PRFidInfo pass = makePass("01A", "77");
        Answers[0] = answer;
        QStringList states;
        trace.OnLine = [&](const QString& line) {
            if (line.startsWith("write") || line.startsWith("log")) {
                states << pass->Status;
            }
        };
        gate->p_hw_CallStackArray();
        EXPECT_EQ(states.join(u' '), "NEW NEW");
    }
}

TEST_F(StackPass, DoorIsOpenedByItsOwnRelay)
{
    makePass("01D", "77");
    Answers[0] = 1;
    gate->p_hw_CallStackArray();
    trace.expect({stack("01D", "77", "NEW"), check("01D", "77", "NEW", 0), "write $01D32363\\r",
                  loggedSend("$01D323"), stack("01D", "77", "OPEN")});
}

TEST_F(StackPass, PseudoCardIsOpenedByTheCheckItself)
{
    for (const QString& card : {kManualCard, kButtonCard}) {
        TTurnstileFixture fixture;
        const PRFidInfo pass = fixture.makePass("01A", card);
        fixture.Answers[0] = 1;
        QStringList states;
        fixture.trace.OnLine = [&](const QString&) { states << pass->Status; };
        fixture.gate->p_hw_CallStackArray();
        fixture.trace.expect({stack("01A", card, "NEW"), check("01A", card, "NEW", 0), wrote("$01A10366\r"),
                              loggedSend("$01A103"), stack("01A", card, "OPEN")});
        EXPECT_EQ(states.join(u' '), "NEW NEW OPEN OPEN OPEN");
    }
}

TEST_F(StackPass, OpenedPseudoCardIsNotSetASecondTime)
{
    for (const QString& card : {kManualCard, kButtonCard, QStringLiteral("77")}) {
        TTurnstileFixture fixture;
        const PRFidInfo pass = fixture.makePass("01A", card);
        fixture.Answers = {{0, 1}, {2, 0}};
        fixture.trace.each("log", [&] { pass->Status = "FINISH"; }); // between the command and the state
        fixture.gate->p_hw_CallStackArray();
        EXPECT_EQ(pass->Status, card == "77" ? "OPEN" : "FINISH");
    }
}

TEST_F(StackPass, RefusedPseudoCardIsClosedAllTheSame)
{
    for (const QString& card : {kManualCard, kButtonCard}) {
        makePass("01A", card);
        Answers[0] = 0;
        gate->p_hw_CallStackArray();
        trace.expect({stack("01A", card, "NEW"), check("01A", card, "NEW", 0), wrote("$01A00064\r"),
                      loggedSend("$01A000"), stack("01A", card, "CLOSE")});
        EXPECT_EQ(gate->StackItemsCount(), 0);
    }
}

TEST_F(StackPass, UnansweredPseudoCardIsOpenWithoutACommand)
{
    for (const int answer : {-1, 2}) {
        TTurnstileFixture fixture;
        fixture.Answers[0] = answer;
        fixture.makePass("01A", kManualCard);
        fixture.gate->p_hw_CallStackArray();
        fixture.trace.expect({stack("01A", kManualCard, "NEW"), check("01A", kManualCard, "NEW", 0),
                              stack("01A", kManualCard, "OPEN")});
        EXPECT_EQ(fixture.statusOf(0), "OPEN");
    }
}

TEST_F(StackPass, PseudoCardsAreExact)
{
    for (const QString card : {"-1-1-1-1", "-2-2-2-2-2 ", "-1-2-1-2-1", "-3-3-3-3-3"}) {
        TTurnstileFixture fixture;
        fixture.makePass("01A", card);
        fixture.gate->p_hw_CallStackArray();
        EXPECT_EQ(fixture.statusOf(0), "NEW");
    }
}

/// A state in which the host is asked whether the pass may be retired.
struct TOffered
{
    QString status;
    int mode;
};

class OfferedPass : public ::testing::TestWithParam<TOffered>
{
protected:
    TTurnstileFixture fixture;
    PRFidInfo pass = fixture.makePass("01A", "77", GetParam().status);
    QStringList offered{stack("01A", "77", GetParam().status),
                        check("01A", "77", GetParam().status, GetParam().mode)};
};

TEST_P(OfferedPass, IsRemovedWhenTheHostSaysYes)
{
    fixture.Answers[GetParam().mode] = 1;
    fixture.gate->p_hw_CallStackArray();
    fixture.trace.expect(offered);
    EXPECT_EQ(fixture.gate->StackItemsCount(), 0);
    EXPECT_EQ(pass.use_count(), 1); // the table has let go of it
}

TEST_P(OfferedPass, StaysAndIsOfferedAgainAtAnyOtherAnswer)
{
    for (const int answer : {-1, 0, 2, -2}) {
        fixture.Answers[GetParam().mode] = answer;
        fixture.gate->p_hw_CallStackArray();
        fixture.trace.expect(offered);
        EXPECT_EQ(fixture.statusOf(0), GetParam().status);
    }
}

TEST_P(OfferedPass, StaysWhenTheHandlerLeavesTheResult)
{
    fixture.gate->p_hw_CallStackArray();
    fixture.trace.expect(offered);
    EXPECT_EQ(fixture.statusOf(0), GetParam().status);
}

TEST_P(OfferedPass, IsRemovedWithoutAHandler)
{
    fixture.gate->SetOnCheckSQL({});
    fixture.gate->p_hw_CallStackArray();
    fixture.trace.expect({offered.front()});
    EXPECT_EQ(fixture.gate->StackItemsCount(), 0);
}

TEST_P(OfferedPass, AnswersOfOtherModesDoNotCount)
{
    for (int mode = 0; mode <= 4; ++mode) {
        fixture.Answers[mode] = mode == GetParam().mode ? 0 : 1;
    }
    fixture.gate->p_hw_CallStackArray();
    fixture.trace.expect(offered);
    EXPECT_EQ(fixture.gate->StackItemsCount(), 1);
}

INSTANTIATE_TEST_SUITE_P(States, OfferedPass,
                         ::testing::Values(TOffered{"NOANSWER", 3}, TOffered{"CRC-ERROR", 3},
                                           TOffered{"TIMEOUT", 1}, TOffered{"FINISH", 2}));

TEST_F(StackPass, ClosedPassIsRemovedUnasked)
{
    makePass("01A", "77", "CLOSE");
    gate->p_hw_CallStackArray();
    trace.expect({stack("01A", "77", "CLOSE")});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(StackPass, OpenAndProgressAreOnlyReported)
{
    makePass("01A", "77", "OPEN");
    makePass("02A", "78", "PROGRESS");
    gate->p_hw_CallStackArray();
    trace.expect({stack("01A", "77", "OPEN"), stack("02A", "78", "PROGRESS")});
}

TEST_F(StackPass, UnknownStatesAreLeftAlone)
{
    for (const QString status : {"", "new", "Open", "finish", "XYZ", "RELAY"}) {
        makePass("01A", "77")->Status = status;
        gate->p_hw_CallStackArray();
        trace.expect({});
        EXPECT_EQ(statusOf(0), status);
    }
}

TEST_F(StackPass, AStateSetByOneCheckIsSeenByTheNext)
{
    // The host walks one pass through all states that follow each other within a pass over the table.
    const PRFidInfo pass = makePass("01A", "77");
    Answers = {{0, 2}, {1, 0}, {2, 0}, {3, 0}};
    const std::map<QString, QString> next{
        {check("01A", "77", "NEW", 0), "OPEN"},           {stack("01A", "77", "OPEN"), "NOANSWER"},
        {check("01A", "77", "NOANSWER", 3), "CRC-ERROR"}, {check("01A", "77", "CRC-ERROR", 3), "TIMEOUT"},
        {check("01A", "77", "TIMEOUT", 1), "PROGRESS"},   {stack("01A", "77", "PROGRESS"), "FINISH"},
    };
    trace.OnLine = [&](const QString& line) {
        if (const auto found = next.find(line); found != next.end()) {
            pass->Status = found->second;
        }
    };
    gate->p_hw_CallStackArray();
    trace.expect({
        stack("01A", "77", "NEW"),
        check("01A", "77", "NEW", 0),
        stack("01A", "77", "OPEN"),
        stack("01A", "77", "NOANSWER"),
        check("01A", "77", "NOANSWER", 3),
        stack("01A", "77", "CRC-ERROR"),
        check("01A", "77", "CRC-ERROR", 3),
        stack("01A", "77", "TIMEOUT"),
        check("01A", "77", "TIMEOUT", 1),
        stack("01A", "77", "PROGRESS"),
        stack("01A", "77", "FINISH"),
        check("01A", "77", "FINISH", 2),
    });
}

TEST_F(StackPass, CloseStandsBetweenTimeoutAndProgress)
{
    const PRFidInfo pass = makePass("01A", "77", "TIMEOUT");
    Answers[1] = 0;
    trace.each("check", [&] { pass->Status = "CLOSE"; });
    gate->p_hw_CallStackArray();
    trace.expect(
        {stack("01A", "77", "TIMEOUT"), check("01A", "77", "TIMEOUT", 1), stack("01A", "77", "CLOSE")});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(StackPass, AnEarlierStateWaitsForTheNextPass)
{
    const PRFidInfo pass = makePass("01A", "77", "FINISH");
    for (const QString status : {"NEW", "OPEN", "NOANSWER", "CRC-ERROR", "TIMEOUT", "CLOSE", "PROGRESS"}) {
        Answers[2] = 0;
        trace.each("check", [&] { pass->Status = status; });
        pass->Status = "FINISH";
        gate->p_hw_CallStackArray();
        trace.expect({stack("01A", "77", "FINISH"), check("01A", "77", "FINISH", 2)});
        EXPECT_EQ(pass->Status, status);
    }
}

TEST_F(StackPass, GoesThroughTheWholeTableInOrder)
{
    makePass("02A", "1");
    makePass("01D", "2", "PROGRESS");
    makePass("01A", "3", "TIMEOUT");
    Answers = {{0, 1}, {1, 0}};
    gate->p_hw_CallStackArray();
    trace.expect({
        stack("02A", "1", "NEW"),
        check("02A", "1", "NEW", 0),
        wrote("$02A10365\r"),
        loggedSend("$02A103"),
        stack("02A", "1", "OPEN"),
        stack("01D", "2", "PROGRESS"),
        stack("01A", "3", "TIMEOUT"),
        check("01A", "3", "TIMEOUT", 1),
    });
}

TEST_F(StackPass, RemovesAtMostOneAndEndsThere)
{
    inject("#01AHello"); // nothing in the table: the timer stands still
    makePass("01A", "1", "OPEN");
    makePass("01B", "2", "FINISH");
    makePass("02A", "3", "CLOSE");
    makePass("03A", "4");
    trace.take();
    Answers[2] = 1;
    gate->p_hw_CallStackArray();
    trace.expect({stack("01A", "1", "OPEN"), stack("01B", "2", "FINISH"), check("01B", "2", "FINISH", 2)});
    gate->p_hw_CallStackArray();
    trace.expect({stack("01A", "1", "OPEN"), stack("02A", "3", "CLOSE")});
    gate->p_hw_CallStackArray();
    trace.expect({stack("01A", "1", "OPEN"), stack("03A", "4", "NEW"), check("03A", "4", "NEW", 0)});
    EXPECT_EQ(gate->StackItemsCount(), 2);
}

TEST_F(StackPass, EveryRemovingStateEndsThePass)
{
    for (const QString status : {"NOANSWER", "CRC-ERROR", "TIMEOUT", "CLOSE", "FINISH"}) {
        TTurnstileFixture fixture;
        fixture.makePass("01A", "1", status);
        fixture.makePass("02A", "2");
        fixture.Answers = {{1, 1}, {2, 1}, {3, 1}};
        fixture.gate->p_hw_CallStackArray();
        EXPECT_EQ(fixture.trace.countOf("status STACK 02A"), 0) << status.toStdString();
        EXPECT_EQ(fixture.gate->StackItemsCount(), 1);
    }
}

TEST_F(StackPass, EntriesMadeMeanwhileWaitForTheNextPass)
{
    makePass("01A", "1");
    trace.each("check", [&] { gate->p_hw_FindDeviceByRelay("02A", "2"); });
    gate->p_hw_CallStackArray();
    trace.expect({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0)});
    EXPECT_EQ(gate->StackItemsCount(), 2);
    gate->p_hw_CallStackArray();
    EXPECT_EQ(trace.countOf("check 02A"), 1);
}

TEST_F(StackPass, IsNotEnteredAgain)
{
    inject("$01AR1"); // the timer runs
    trace.take();
    trace.OnLine = [&](const QString& line) {
        if (!line.startsWith("log")) {
            gate->p_hw_CallStackArray();
            clock.advance(100);
        }
    };
    gate->p_hw_CallStackArray();
    trace.expect({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0)});
}

TEST_F(StackPass, ALineReadMeanwhileIsHandledAtOnce)
{
    makePass("01A", "1");
    trace.each("check 01A", [&] { gate->p_hw_ProtocolIn("$02AR2"); });
    gate->p_hw_CallStackArray();
    // the line finds the timer disabled and enables it, but its own pass has to wait
    trace.expect({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0), read("$02AR2"), "img 02A",
                  looked("02A", "2", "NEW"), come("02A", "2", "NEW")});
    trace.OnLine = {};
    clock.advance(100);
    trace.expect({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0), stack("02A", "2", "NEW"),
                  check("02A", "2", "NEW", 0)});
}

TEST_F(StackPass, TicksStopOnePassAfterTheLastRemoval)
{
    Answers[2] = 1;
    inject("$01AR1");
    inject("$01AG");
    skip(100); // removed
    EXPECT_EQ(gate->StackItemsCount(), 0);
    makePass("01A", "2");
    clock.advance(100); // the timer still runs
    trace.expect({stack("01A", "2", "NEW"), check("01A", "2", "NEW", 0)});
    gate->StackItem(0)->Status = "CLOSE";
    skip(100);
    skip(100); // now it stops
    makePass("01A", "3");
    clock.advance(1'000);
    trace.expect({});
}

TEST_F(StackPass, WithoutHandlersItOnlyCommands)
{
    gate->SetOnLog({});
    gate->SetOnError({});
    gate->SetOnCheckStatus({});
    gate->SetOnGetImg({});
    Answers = {{0, 1}, {2, 1}};
    inject("$01AR1");
    inject("$01AG");
    clock.advance(100);
    trace.expect({check("01A", "1", "NEW", 0), wrote("$01A10366\r"), check("01A", "1", "FINISH", 2)});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

} // namespace
