// Confirmation mode: commands are repeated until the controller confirms them.

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const QString kConfirm = QStringLiteral("$10.0.0.5:001TETAB");

class Confirmation : public TD24Test
{
protected:
    Confirmation() { gate->SetCheckET(true); }

    d24::PRFidInfo waiting(const QString& status = "WAIT")
    {
        const d24::PRFidInfo pass = makePass(kT, "77", status);
        pass->Command = "GO10.0.0.5:001T";
        pass->CRCtime = 0.25;
        return pass;
    }

    void later(qint64 ms) { clock.jumpTo(clock.nowMs() + ms); }
};

TEST_F(Confirmation, ACommandIsRepeatedWhenMoreThanASecondHasPassed)
{
    waiting();
    for (const int ms : {0, 1'000, 999}) {
        later(ms);
        runPass();
        trace.expect({});
    }
    later(1); // two seconds
    for (int i = 0; i < 3; ++i) {
        runPass();
        trace.expect({commanded("GO10.0.0.5:001T")});
    }
}

TEST_F(Confirmation, TheSecondsCountFromTheCard)
{
    const d24::PRFidInfo pass = waiting();
    later(2'000);
    pass->CRCtime = platform::TimeOfDay(); // not from the last command
    runPass();
    trace.expect({commanded("GO10.0.0.5:001T")});
}

TEST_F(Confirmation, ARepetitionOnlySends)
{
    const d24::PRFidInfo pass = waiting();
    link->Checks = {{"GO", "7A"}};
    later(2'000);
    runPass();
    trace.expect({commanded("GO10.0.0.5:001T")});
    EXPECT_EQ(pass->Command, "GO10.0.0.5:001T");
    EXPECT_EQ(pass->CRC, "");
    EXPECT_EQ(pass->CRCtime, 0.25);
    EXPECT_FALSE(pass->Finish);
}

TEST_F(Confirmation, ARepetitionComesBeforeTheReport)
{
    for (const char* status : {"OPEN", "PROGRESS", "CLOSE"}) {
        TD24Fixture fixture;
        fixture.gate->SetCheckET(true);
        fixture.makePass(kT, "77", status)->Command = "PH1";
        fixture.clock.jumpTo(fixture.clock.nowMs() + 2'000);
        fixture.runPass();
        fixture.trace.expect({commanded("PH1"), stack(kT, "77", status)});
    }
}

TEST_F(Confirmation, NothingIsRepeatedOtherwise)
{
    const d24::PRFidInfo pass = waiting();
    later(60'000);
    gate->SetCheckET(false);
    runPass();
    gate->SetCheckET(true);
    pass->Finish = true;
    runPass();
    pass->Finish = false;
    pass->Command = "";
    runPass();
    pass->Command = "GO1";
    gate->SetConnector(nullptr);
    runPass();
    trace.expect({});
    gate->SetConnector(link.get());
    link->Up = false; // a link that is set is enough
    runPass();
    trace.expect({commanded("GO1")});
}

TEST_F(Confirmation, EveryPassIsRepeatedInTheOrderOfTheTable)
{
    waiting();
    makePass(kG, "77", "OPEN")->Command = "GO2";
    makePass(kI, "77", "WAIT")->Command = "GO3";
    later(2'000);
    runPass();
    trace.expect({commanded("GO10.0.0.5:001T"), commanded("GO2"), stack(kG, "77", "OPEN"), commanded("GO3")});
}

TEST_F(Confirmation, NothingIsRepeatedAfterARemoval)
{
    makePass(kG, "77", "CLOSE");
    waiting();
    later(2'000);
    runPass();
    trace.expect({stack(kG, "77", "CLOSE")});
}

// The controller's "ET"

TEST_F(Confirmation, AConfirmationEndsTheRepetition)
{
    const d24::PRFidInfo pass = waiting();
    later(2'000);
    inject(kConfirm);
    trace.expect({read(kConfirm)}); // no report; and the pass at once repeats nothing
    EXPECT_EQ(pass->Command, "");
    EXPECT_TRUE(pass->Finish);
    EXPECT_EQ(pass->Status, "WAIT");
    EXPECT_EQ(pass->CRCtime, 0.25);
}

TEST_F(Confirmation, AConfirmationCountsWhateverTheLinkAndTheRest)
{
    for (const char* line : {"$elsewhere:001TETAB", "$10.0.0.5:001TET12345AB"}) {
        const d24::PRFidInfo pass = waiting();
        pass->Finish = false;
        inject(line);
        EXPECT_TRUE(pass->Finish) << line;
    }
}

TEST_F(Confirmation, ACommandWithAnAnswerOfTheConnectorIsNotConfirmed)
{
    const d24::PRFidInfo pass = waiting();
    pass->CRC = "7A";
    for (const char* line : {"$10.0.0.5:001TETAB", "$10.0.0.5:001TET7AAB", "$10.0.0.5:001TET7A"}) {
        inject(line);
        EXPECT_EQ(pass->Command, "GO10.0.0.5:001T");
        EXPECT_FALSE(pass->Finish);
    }
}

TEST_F(Confirmation, WithoutTheModeNothingIsConfirmed)
{
    const d24::PRFidInfo pass = waiting();
    gate->SetCheckET(false);
    inject(kConfirm);
    trace.expect({read(kConfirm)});
    EXPECT_EQ(pass->Command, "GO10.0.0.5:001T");
    EXPECT_FALSE(pass->Finish);
}

TEST_F(Confirmation, OtherControllersAndLettersConfirmNothing)
{
    const d24::PRFidInfo pass = waiting();
    for (const char* line :
         {"$10.0.0.5:002TETAB", "$10.0.0.5:001TetAB", "#10.0.0.5:001TET00", "$10.0.0.5:001TEAB"}) {
        inject(line);
        EXPECT_FALSE(pass->Finish) << line;
    }
    EXPECT_EQ(gate->StackItemsCount(), 1);
}

TEST_F(Confirmation, OnlyTheFirstPassOfTheControllerIsConfirmed)
{
    const d24::PRFidInfo first = waiting();
    const d24::PRFidInfo second = makePass(kT, "78", "WAIT");
    inject(kConfirm);
    EXPECT_TRUE(first->Finish);
    EXPECT_FALSE(second->Finish);
}

// Whole passes

TEST_F(Confirmation, AGateThatNeverConfirms)
{
    Answers = {{0, 1}};
    inject("$10.0.0.5:002GRQ77AB");
    trace.take();
    clock.advance(1'990);
    EXPECT_EQ(trace.countOf("send"), 0);
    clock.advance(1'000); // repeated on every tick from the second second on
    EXPECT_EQ(trace.countOf("send GO10.0.0.5:002G"), 100);
    EXPECT_EQ(trace.countOf("send"), 100); // without the display
    trace.take();
    clock.advance(30);
    trace.expect({commanded("GO10.0.0.5:002G"), stack(kG, "77", "OPEN"), commanded("GO10.0.0.5:002G"),
                  stack(kG, "77", "NOANSWER"), check(kG, "77", "NOANSWER", 3)});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Confirmation, AGateThatConfirms)
{
    Answers = {{0, 1}};
    inject("$10.0.0.5:002GRQ77AB");
    clock.advance(500);
    inject("$10.0.0.5:002GETAB");
    trace.take();
    clock.advance(20);
    trace.expect({stack(kG, "77", "OPEN"), stack(kG, "77", "NOANSWER"), check(kG, "77", "NOANSWER", 3)});
}

TEST_F(Confirmation, ASecondCommandMustBeConfirmedAnew)
{
    const d24::PRFidInfo pass = waiting("NEW");
    inject(kConfirm);
    EXPECT_TRUE(pass->Finish);
    gate->p_hw_SendComCommand(0, 0);
    EXPECT_FALSE(pass->Finish);
    EXPECT_EQ(pass->Command, "PH10.0.0.5:001T");
}

} // namespace
