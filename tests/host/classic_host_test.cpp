#include "tnv5/host/classic_host.h"

#include "club_fixture.h"
#include "support/fixture.h"

namespace tnv5::host {
namespace {

/// A line that answers for the gates 01A and 02A only, at a desk of its own. Card 1 may enter.
class TClassicHostTest : public TClubFixture, protected tests::TPortFixture
{
protected:
    TClassicHostTest()
    {
        addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
        line.SetComport(port.get());
        host.Keeping.Knows = [this](const QString& address) { return mine.contains(address); };
        host.Keeping.OnTrouble = [this](const QString& text) { told.append(text); };
        desk.OnTrouble = [this](const QString& text) { troubles.append(text); };
    }

    void settle() { clock.advance(200); }

    QStringList mine = {QStringLiteral("01A"), QStringLiteral("02A")};
    QStringList told;
    QStringList troubles;
    turnstile::TTurnStylerDevice line;
    TClubDesk desk{club};
    TClassicHost host{line, desk};
};

TEST_F(TClassicHostTest, AGateOfAnotherLineIsRefusedToldAndNotJournalled)
{
    inject("$04AR1");
    EXPECT_EQ(port->takeWritten(), "$04A00061\r");
    settle();
    EXPECT_EQ(journal().size(), 0);
    EXPECT_TRUE(told.contains(QStringLiteral("a card at 04A is refused: there is no such gate here")));
    EXPECT_EQ(troubles, QStringList());
    inject("$01AR1");
    EXPECT_EQ(port->takeWritten(), "$01A10366\r");
}

TEST_F(TClassicHostTest, TheExitButtonOpensEverywhere)
{
    inject("#04DBtn-Activ");
    EXPECT_TRUE(port->takeWritten().startsWith("$04D3"));
    settle();
    EXPECT_EQ(journal().size(), 1);
}

TEST_F(TClassicHostTest, APassThatHasBegunEndsAlsoWhenItsGateIsTakenAway)
{
    inject("$01AR1");
    EXPECT_TRUE(desk.hasPass(QStringLiteral("01A"), QStringLiteral("1")));
    EXPECT_EQ(desk.holderAt(QStringLiteral("01A")), "Anna Berg");
    EXPECT_EQ(desk.holderAt(QStringLiteral("01")), "");
    EXPECT_EQ(desk.holderAt(QStringLiteral("02A")), "");
    mine.clear();
    inject("#01ARelay 1");
    inject("$01AP");
    inject("$01AG");
    settle();
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);
    EXPECT_EQ(desk.holderAt(QStringLiteral("01A")), "");
}

TEST_F(TClassicHostTest, InterruptingAGateEndsWhatIsUnderWayThereAndNothingElse)
{
    inject("$01AR1");
    inject("$02AR1");
    clock.advance(5); // the sweep after the one that the first card has begun
    desk.interrupt(QStringLiteral("01A"));
    desk.interrupt(QStringLiteral("03D"));
    EXPECT_FALSE(desk.hasPass(QStringLiteral("01A"), QStringLiteral("1")));
    EXPECT_TRUE(desk.hasPass(QStringLiteral("02A"), QStringLiteral("1")));
    settle();
    ASSERT_EQ(journal().size(), 2);
    EXPECT_EQ(journal()[0].ending, TEnding::Interrupted);
    EXPECT_TRUE(journal()[1].underWay());
}

TEST_F(TClassicHostTest, WhatIsOpenedByHandIsExpectedUntilTheComponentAsks)
{
    desk.expectByHand(QStringLiteral("01A"), QStringLiteral("Olga"), QStringLiteral("a pram"));
    EXPECT_TRUE(desk.expectsByHand(QStringLiteral("01A")));
    inject("$01AR-1-1-1-1-1");
    EXPECT_FALSE(desk.expectsByHand(QStringLiteral("01A")));
    EXPECT_EQ(port->takeWritten(), "$01A10366\r");
    settle();
    EXPECT_EQ(journal()[0].who, "Olga");
}

TEST_F(TClassicHostTest, LostPassesAreCountedAndTold)
{
    QStringList lost;
    desk.OnLost = [&](const QString& text) { lost << text; };
    inject("$01AR1");
    {
        TDatabase other(FFile);
        const TWriteTransaction lock(other.connection());
        host.close();
        desk.close();
    }
    EXPECT_EQ(desk.lost(), 1);
    ASSERT_EQ(lost.size(), 1);
    EXPECT_TRUE(lost[0].startsWith(QStringLiteral("NOT IN THE JOURNAL: 2026-01-05")));
}

} // namespace
} // namespace tnv5::host
