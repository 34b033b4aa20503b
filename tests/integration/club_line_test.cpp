// The host on a real serial line, with each fault of the line and of the controllers switched on. In
// lock-step time but for one test.

#include "integration/station.h"
#include "support/text_printers.h"
#include "tnv5/common/messages.h"

namespace tnv5::integration {
namespace {

using host::TEnding;
using host::TRefusal;
using sim::TBehaviour;
using sim::TFate;

const QString kIn = QStringLiteral("01A");
const QString kIn2 = QStringLiteral("02A");
const QString kOut = QStringLiteral("03A");
const QString kDoor = QStringLiteral("04D");
const QString kAnna = QStringLiteral("M1");

using TClubLine = TStation;

TEST_F(TClubLine, CardsOnAGoodLine)
{
    EXPECT_TRUE(getsThrough(kIn, kAnna));
    EXPECT_EQ(visit(kIn2, kAnna).Fate, TFate::Refused);
    EXPECT_TRUE(getsThrough(kDoor, kAnna));
    EXPECT_TRUE(getsThrough(kOut, kAnna));
    EXPECT_EQ(visit(kIn, QStringLiteral("stranger")).Fate, TFate::Refused);
    EXPECT_EQ(visit(kIn, kAnna, TBehaviour::GivesUp).Fate, TFate::Opened);

    const auto rows = journal();
    ASSERT_EQ(rows.size(), 6);
    EXPECT_EQ(rows[0].ending, TEnding::Passed);
    EXPECT_EQ(rows[1].refusal, TRefusal::AlreadyInside);
    EXPECT_EQ(rows[2].ending, TEnding::Passed);
    EXPECT_EQ(rows[3].ending, TEnding::Passed);
    EXPECT_EQ(rows[4].refusal, TRefusal::UnknownCard);
    EXPECT_EQ(rows[5].ending, TEnding::TimedOut);
    EXPECT_EQ(gates.badCommands(), 0);
    EXPECT_EQ(troubles, QStringList());
}

TEST_F(TClubLine, ExitButtonAndInGate)
{
    gates.pressButton(kDoor);
    EXPECT_TRUE(until([&] { return gates.counts(kDoor).Passed == 1 && idle(kDoor); }));
    gates.inGate(kIn);
    EXPECT_TRUE(until([&] { return gates.counts(kIn).Passed == 1 && idle(kIn); }));
    const auto rows = journal();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[0].card, common::kCardButton);
    EXPECT_EQ(rows[1].card, common::kCardButton);
    EXPECT_EQ(rows[1].ending, TEnding::Passed);
}

TEST_F(TClubLine, NoiseBetweenLines)
{
    cable.NoisePercent = 100;
    for (int round = 0; round < 10; ++round) {
        EXPECT_TRUE(getsThrough(kIn, kAnna)) << round;
        EXPECT_EQ(visit(kIn, kAnna).Fate, TFate::Refused) << round;
        EXPECT_TRUE(getsThrough(kOut, kAnna)) << round;
    }
    EXPECT_GT(cable.noisyLines(), 0);
    EXPECT_EQ(journal().size(), 30);
}

TEST_F(TClubLine, NoiseThatSwallowsLines)
{
    cable.NoisePercent = 30;
    cable.NoiseAvoids.clear();
    gates.Delays.AnswerLimitMs = 200;
    int refused = 0;
    for (int round = 0; round < 30; ++round) {
        refused += visit(kIn, QStringLiteral("stranger")).Fate == TFate::Refused ? 1 : 0;
    }
    EXPECT_GT(refused, 0);
    cable.NoisePercent = 0;
    visit(kIn, QStringLiteral("stranger")); // may end what the noise has begun
    EXPECT_TRUE(getsThrough(kIn, kAnna));
}

TEST_F(TClubLine, LinesInPieces)
{
    cable.CutPercent = 100;
    cable.MaxPieces = 8;
    cable.PieceGapMs = 2;
    for (int round = 0; round < 5; ++round) {
        EXPECT_TRUE(getsThrough(kIn, kAnna)) << round;
        EXPECT_TRUE(getsThrough(kOut, kAnna)) << round;
    }
    EXPECT_GT(cable.cutLines(), 0);
    EXPECT_EQ(journal().size(), 10);
}

TEST_F(TClubLine, CoalescedLines)
{
    cable.CoalesceLines = 3;
    const quint64 first = gates.readCard(kIn, kAnna);
    const quint64 second = gates.readCard(kIn2, QStringLiteral("M2"));
    const quint64 third = gates.readCard(kDoor, QStringLiteral("stranger"));
    EXPECT_TRUE(until([&] { return gates.totals().Passed == 2 && idle(kIn) && idle(kIn2) && idle(kDoor); }));
    EXPECT_EQ(gates.reading(first).Fate, TFate::Opened);
    EXPECT_EQ(gates.reading(second).Fate, TFate::Opened);
    EXPECT_EQ(gates.reading(third).Fate, TFate::Refused);
    EXPECT_EQ(journal().size(), 3);
}

TEST_F(TClubLine, ASilentLineAndItsReturn)
{
    cable.setSilent(true);
    EXPECT_EQ(visit(kIn, kAnna).Fate, TFate::NoCommand);
    cable.setSilent(false);
    EXPECT_TRUE(getsThrough(kIn, kAnna));
    EXPECT_EQ(journal().size(), 1) << "what was never heard is not in the journal";
}

TEST_F(TClubLine, ASilentControllerIsUnanswered)
{
    gates.setFaults(kIn, {.Silent = true});
    EXPECT_EQ(visit(kIn, kAnna, TBehaviour::WalksAway).Fate, TFate::Opened);
    gates.setFaults(kIn, {});
    EXPECT_TRUE(getsThrough(kIn, kAnna)) << "who did not pass is not inside";
    const auto rows = journal();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[0].ending, TEnding::Unanswered);
    EXPECT_EQ(rows[1].ending, TEnding::Passed);
}

TEST_F(TClubLine, AControllerThatTakesEveryCommandForAWrongOne)
{
    line.SetTimeOut(0);
    gates.setFaults(kIn, {.HearsWrong = true});
    EXPECT_EQ(visit(kIn, kAnna).Fate, TFate::NoCommand);
    gates.setFaults(kIn, {});
    EXPECT_TRUE(getsThrough(kIn, kAnna));
    const auto rows = journal();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[0].ending, TEnding::TimedOut);
}

TEST_F(TClubLine, ADeadControllerAndItsReset)
{
    gates.setFaults(kIn, {.Dead = true});
    EXPECT_EQ(gates.readCard(kIn, kAnna), 0U);
    EXPECT_TRUE(getsThrough(kIn2, QStringLiteral("M2"))) << "the others go on";
    gates.setFaults(kIn, {});
    EXPECT_TRUE(gates.hardReset(kIn));
    EXPECT_TRUE(until([&] { return gates.readCard(kIn, kAnna) != 0; }));
    EXPECT_TRUE(until([&] { return gates.counts(kIn).Passed == 1 && idle(kIn); }));
}

TEST_F(TClubLine, UnpluggedAndBack)
{
    EXPECT_TRUE(getsThrough(kIn, kAnna));
    for (int round = 0; round < 2; ++round) {
        pty.unplug();
        EXPECT_TRUE(until([&] { return !port.Connected(); }));
        pty.plug();
        EXPECT_TRUE(until([&] { return port.Connected() && pty.opened(); }));
        EXPECT_TRUE(getsThrough(kOut, kAnna)) << "the gates open again without restarting anything";
        EXPECT_TRUE(getsThrough(kIn, kAnna));
    }
    EXPECT_EQ(keeper.openings(), 3);
    EXPECT_EQ(journal().size(), 5);
}

TEST_F(TClubLine, UnpluggedWhileSomebodyPasses)
{
    gates.Delays.ProgressMs = 60'000; // still in the gate
    gates.readCard(kIn, kAnna);
    EXPECT_TRUE(until([&] { return gates.gateOpen(kIn); }));
    pty.unplug();
    EXPECT_TRUE(until([&] { return !port.Connected(); }));
    line.SetTimeOut(0);
    EXPECT_TRUE(until([&] { return idle(kIn); }));
    pty.plug();
    EXPECT_TRUE(until([&] { return port.Connected() && pty.opened(); }));

    gates.Delays.ProgressMs = 20;
    EXPECT_TRUE(getsThrough(kIn2, QStringLiteral("M2")));
    const auto rows = journal();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[0].ending, TEnding::TimedOut);
    EXPECT_EQ(rows[1].ending, TEnding::Passed);
}

class TClubLineInRealTime : public TStation
{
protected:
    // nothing is given up for lack of time, and passages take none
    TClubLineInRealTime() : TStation(TTime::Real)
    {
        line.SetTimeOut(3'600);
        line.SetTimeDelayOpen(8); // the longest that a command can say
        gates.Delays.AnswerLimitMs = 3'600'000;
        gates.Delays.ProgressMs = 0;
        gates.Delays.PassageMs = 0;
    }
};

TEST_F(TClubLineInRealTime, CardsOnAGoodLine)
{
    EXPECT_TRUE(getsThrough(kIn, kAnna));
    EXPECT_EQ(visit(kIn2, kAnna).Fate, TFate::Refused);
    EXPECT_EQ(visit(kIn, QStringLiteral("stranger")).Fate, TFate::Refused);
    EXPECT_TRUE(getsThrough(kOut, kAnna));
    const auto rows = journal();
    ASSERT_EQ(rows.size(), 4);
    EXPECT_EQ(rows[0].ending, TEnding::Passed);
    EXPECT_EQ(rows[1].refusal, TRefusal::AlreadyInside);
    EXPECT_EQ(rows[2].refusal, TRefusal::UnknownCard);
    EXPECT_EQ(rows[3].ending, TEnding::Passed);
    EXPECT_EQ(gates.badCommands(), 0);
    EXPECT_EQ(troubles, QStringList());
}

} // namespace
} // namespace tnv5::integration
