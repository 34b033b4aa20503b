#include "club_fixture.h"
#include "tnv5/common/messages.h"
#include "tnv5/host/club_desk.h"
#include "tnv5/testing/manual_clock.h"

namespace tnv5::host {
namespace {

class TClubDeskTest : public TClubFixture
{
protected:
    static const inline QString kGate = QStringLiteral("01A");

    TPass openByHand(const QString& gate = kGate) { return desk.decideNew(gate, common::kCardManual); }
    QStringList outages()
    {
        QStringList lines;
        for (const TOutage& outage : club.outagesAfter(0, 100)) {
            lines.append(outage.line + u' ' + toText(outage.began).mid(11) + u' ' +
                         toText(outage.ended).mid(11) + u' ' + outage.why);
        }
        return lines;
    }

    testkit::TManualClock clock;
    TClubDesk desk{club};
};

TEST_F(TClubDeskTest, AnOpeningByHandIsSigned)
{
    desk.expectByHand(kGate, QStringLiteral("anna"), QStringLiteral("a pram"));
    const TPass pass = openByHand();
    EXPECT_EQ(pass.who, QStringLiteral("anna"));
    EXPECT_EQ(pass.note, QStringLiteral("a pram"));
    EXPECT_TRUE(logLine(pass).endsWith(QStringLiteral("  01A  opened by hand by anna (a pram)  opened")))
        << qPrintable(logLine(pass));
    desk.endPass(kGate, common::kCardManual, TEnding::Passed);
    desk.close();
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].who, QStringLiteral("anna"));
    EXPECT_EQ(journal()[0].note, QStringLiteral("a pram"));
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);
}

TEST_F(TClubDeskTest, OnlyTheNextOneAtThatGate)
{
    desk.expectByHand(kGate, QStringLiteral("anna"), QStringLiteral("a pram"));
    EXPECT_EQ(openByHand(QStringLiteral("02A")).who, QString());
    EXPECT_EQ(desk.decideNew(kGate, common::kCardButton).who, QString());
    EXPECT_EQ(openByHand().who, QStringLiteral("anna"));
    EXPECT_EQ(openByHand().who, QString());
    EXPECT_TRUE(logLine(openByHand()).endsWith(QStringLiteral("  opened by hand  opened")));
}

TEST_F(TClubDeskTest, WhatWasAskedForLongAgoDoesNotCount)
{
    desk.expectByHand(kGate, QStringLiteral("anna"), QStringLiteral("a pram"));
    clock.advance(TClubDesk::kByHandMs);
    EXPECT_EQ(openByHand().who, QStringLiteral("anna"));
    desk.expectByHand(kGate, QStringLiteral("anna"), QStringLiteral("a pram"));
    clock.advance(TClubDesk::kByHandMs + 1);
    EXPECT_EQ(openByHand().who, QString());
}

TEST_F(TClubDeskTest, AnOpeningThatEndsWithoutAQuestionIsSigned)
{
    desk.expectByHand(kGate, QStringLiteral("anna"), QStringLiteral("a pram"));
    desk.endPass(kGate, common::kCardManual, TEnding::Unanswered);
    desk.close();
    EXPECT_EQ(journal()[0].who, QStringLiteral("anna"));
}

TEST_F(TClubDeskTest, OutagesOfALine)
{
    desk.lineBack(QStringLiteral("north"));
    desk.lineLost(QStringLiteral("north"), QStringLiteral("unplugged"));
    desk.lineLost(QStringLiteral("north"), QStringLiteral("still unplugged"));
    clock.advance(1'000);
    EXPECT_EQ(outages(), QStringList({QStringLiteral("north 12:00:00.000  unplugged")}));
    desk.lineBack(QStringLiteral("north"));
    desk.lineBack(QStringLiteral("north"));
    desk.lineLost(QStringLiteral("north"), QStringLiteral("again"));
    clock.advance(1'000);
    desk.close();
    EXPECT_EQ(outages(), QStringList({QStringLiteral("north 12:00:00.000 12:00:01.000 unplugged"),
                                      QStringLiteral("north 12:00:01.000 12:00:02.000 again")}));
}

TEST_F(TClubDeskTest, AnOutageWaitsForALockedDatabase)
{
    whileLocked([&] {
        desk.lineLost(QStringLiteral("north"), QStringLiteral("unplugged"));
        clock.advance(1'000);
    });
    EXPECT_TRUE(outages().isEmpty());
    clock.advance(10'000);
    EXPECT_EQ(outages(), QStringList({QStringLiteral("north 12:00:00.000  unplugged")}));
}

TEST_F(TClubDeskTest, ADatabaseThatGoesAwayIsToldOnce)
{
    QStringList troubles;
    desk.OnTrouble = [&](const QString& text) { troubles.append(text); };
    clock.advance(60'000);
    EXPECT_EQ(troubles, QStringList());
    const QString away = FFile + QStringLiteral(".away");
    ASSERT_TRUE(QFile::rename(FFile, away));
    clock.advance(TClubDesk::kFileMs + 10);
    ASSERT_EQ(troubles.size(), 1);
    EXPECT_TRUE(troubles[0].startsWith(QStringLiteral("the database %1 was deleted").arg(FFile)));
    clock.advance(60'000);
    EXPECT_EQ(troubles.size(), 1);
    ASSERT_TRUE(QFile::rename(away, FFile));
    clock.advance(TClubDesk::kFileMs + 10);
    ASSERT_EQ(troubles.size(), 2);
    EXPECT_EQ(troubles[1], QStringLiteral("the database %1 is in its place again").arg(FFile));
}

// A bad cable may bring hundreds of cards a second that nobody has.
TEST_F(TClubDeskTest, NoiseDoesNotFillTheJournal)
{
    addMember(QStringLiteral("Anna Berg"), QStringLiteral("7"));
    QStringList troubles;
    int told = 0;
    desk.OnTrouble = [&](const QString& text) { troubles.append(text); };
    desk.OnPass = [&](const TPass&) { ++told; };
    for (int count = 0; count < 1'000; ++count) {
        EXPECT_EQ(desk.decideNew(kGate, QStringLiteral("x%1").arg(count)).refusal, TRefusal::UnknownCard);
        clock.advance(20);
    }
    EXPECT_TRUE(desk.decideNew(kGate, QStringLiteral("7")).opened());
    desk.decideNew(QStringLiteral("04A"), QStringLiteral("x")); // another gate
    clock.advance(1'000);
    EXPECT_EQ(journal().size(), TNoiseLimit::kPerMinute + 2);
    EXPECT_EQ(told, TNoiseLimit::kPerMinute + 2);
    EXPECT_EQ(troubles, QStringList());
    clock.advance(TNoiseLimit::kMinuteMs);
    EXPECT_EQ(troubles,
              QStringList({QStringLiteral("940 more unknown cards at 01A within a minute are not in the "
                                          "journal: noise on the line?")}));
    desk.decideNew(kGate, QStringLiteral("x"));
    clock.advance(1'000);
    EXPECT_EQ(journal().size(), TNoiseLimit::kPerMinute + 3) << "a new minute";
}

// Noise invents addresses, too, each another one.
TEST_F(TClubDeskTest, CardsAtUnknownGatesAreNoiseTogether)
{
    QStringList troubles;
    desk.OnTrouble = [&](const QString& text) { troubles.append(text); };
    for (int count = 0; count < 100; ++count) {
        EXPECT_EQ(desk.decideNew(QStringLiteral("%1X").arg(count), QStringLiteral("7")).refusal,
                  TRefusal::UnknownGate);
    }
    desk.close();
    EXPECT_EQ(journal().size(), TNoiseLimit::kPerMinute);
    EXPECT_EQ(troubles,
              QStringList({QStringLiteral("40 more cards at gates that the club does not have within a "
                                          "minute are not in the journal: noise on the line?")}));
}

TEST_F(TClubDeskTest, NoiseIsToldAtTheEnd)
{
    QStringList troubles;
    desk.OnTrouble = [&](const QString& text) { troubles.append(text); };
    for (int count = 0; count < 61; ++count) {
        desk.decideNew(kGate, QStringLiteral("x"));
    }
    desk.close();
    EXPECT_EQ(troubles,
              QStringList({QStringLiteral("1 more unknown cards at 01A within a minute are not in the "
                                          "journal: noise on the line?")}));
}

TEST(NoiseLimit, AClockThatIsPutBackHoldsNothingUp)
{
    TNoiseLimit limit;
    for (int count = 0; count < TNoiseLimit::kPerMinute; ++count) {
        EXPECT_TRUE(limit.admits(QStringLiteral("01A"), 1'000'000));
    }
    EXPECT_FALSE(limit.admits(QStringLiteral("01A"), 1'000'000));
    EXPECT_EQ(limit.over(1'000'000 + TNoiseLimit::kMinuteMs - 1), QStringList());
    EXPECT_EQ(limit.over(500'000).size(), 1);
    EXPECT_TRUE(limit.admits(QStringLiteral("01A"), 500'000));
}

} // namespace
} // namespace tnv5::host
