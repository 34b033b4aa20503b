#include "club_fixture.h"
#include "tnv5/host/books/journal.h"
#include "tnv5/testing/manual_clock.h"

namespace tnv5::host {
namespace {

class TJournalTest : public TClubFixture
{
protected:
    TJournalTest() : passes(club)
    {
        passes.OnTrouble = [this](const QString& text) { troubles.append(text); };
        passes.OnLost = [this](const TPass& pass) { lost.append(pass.card); };
    }

    PPass somePass(const QString& card)
    {
        auto pass = std::make_shared<TPass>();
        pass->began = platform::Now();
        pass->card = card;
        pass->gate = QStringLiteral("01A");
        return pass;
    }

    testkit::TManualClock clock;
    TJournal passes;
    QStringList troubles;
    QStringList lost;
};

TEST_F(TJournalTest, WritesLaterAndTogether)
{
    passes.add(somePass(QStringLiteral("1")));
    passes.add(somePass(QStringLiteral("2")));
    EXPECT_EQ(journal().size(), 0);
    clock.advance(TJournal::kDelayMs);
    EXPECT_EQ(journal().size(), 2);
    EXPECT_EQ(passes.waiting(), 0);
}

TEST_F(TJournalTest, APassThatEndsWhileItWaitsIsOneRow)
{
    const PPass pass = somePass(QStringLiteral("1"));
    passes.add(pass);
    pass->ending = TEnding::Passed;
    passes.add(pass);
    EXPECT_EQ(passes.waiting(), 1);
    passes.flush();
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);

    pass->ending = TEnding::Interrupted;
    passes.add(pass);
    passes.flush();
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::Interrupted);
}

TEST_F(TJournalTest, KnowsWhoIsInsideBeforeTheDatabaseDoes)
{
    const qint64 anna = addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
    const PPass pass = somePass(QStringLiteral("1"));
    pass->member = anna;
    pass->direction = TDirection::In;
    pass->ending = TEnding::Passed;
    EXPECT_EQ(passes.insideOf(anna), std::nullopt);
    passes.add(pass);
    EXPECT_EQ(passes.insideOf(anna), true);
    passes.flush();
    EXPECT_EQ(passes.insideOf(anna), std::nullopt);
    EXPECT_TRUE(club.holderOf(QStringLiteral("1"))->member.inside);
}

TEST_F(TJournalTest, AFailedWriteIsTriedAgainAndToldOnce)
{
    passes.add(somePass(QStringLiteral("1")));
    whileLocked([&] { clock.advance(1'000); });
    EXPECT_EQ(journal().size(), 0);
    EXPECT_EQ(passes.waiting(), 1);
    ASSERT_EQ(troubles.size(), 1);
    EXPECT_TRUE(troubles[0].contains(QStringLiteral("cannot be written"))) << qPrintable(troubles[0]);

    clock.advance(TJournal::kLongestDelayMs);
    EXPECT_EQ(journal().size(), 1);
    ASSERT_EQ(troubles.size(), 2);
    EXPECT_TRUE(troubles[1].contains(QStringLiteral("written again"))) << qPrintable(troubles[1]);
}

TEST_F(TJournalTest, ManyAreWrittenInPieces)
{
    const qint64 anna = addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
    for (int count = 0; count < 1'201; ++count) {
        const PPass pass = somePass(QStringLiteral("1"));
        if (count == 0 || count == 1'200) { // she comes, and goes
            pass->member = anna;
            pass->direction = count == 0 ? TDirection::In : TDirection::Out;
            pass->ending = TEnding::Passed;
        }
        passes.add(pass);
    }
    clock.advance(TJournal::kDelayMs);
    EXPECT_EQ(club.lastPass(), 500);
    EXPECT_EQ(passes.waiting(), 701);
    EXPECT_EQ(passes.insideOf(anna), false) << "her going waits";
    clock.advance(2 * TJournal::kDelayMs);
    EXPECT_EQ(club.lastPass(), 1'201);
    EXPECT_EQ(passes.waiting(), 0);
    EXPECT_EQ(passes.insideOf(anna), std::nullopt);
}

TEST_F(TJournalTest, WhatIsWrittenIsNotWrittenAgain)
{
    elsewhere(QStringLiteral("CREATE TRIGGER full BEFORE INSERT ON pass WHEN NEW.card = '600'"
                             " BEGIN SELECT RAISE(ABORT, 'full'); END"));
    for (int count = 0; count < 1'201; ++count) {
        passes.add(somePass(QString::number(count)));
    }
    EXPECT_FALSE(passes.flush());
    EXPECT_EQ(club.lastPass(), 500) << "one piece was written, the next one was not";
    EXPECT_EQ(passes.waiting(), 701);
    elsewhere(QStringLiteral("DROP TRIGGER full"));
    EXPECT_TRUE(passes.flush());
    EXPECT_EQ(club.lastPass(), 1'201);
    EXPECT_EQ(passes.waiting(), 0);
    ASSERT_EQ(troubles.size(), 2);
    EXPECT_TRUE(troubles[1].contains(QStringLiteral("nothing is missing"))) << qPrintable(troubles[1]);
}

TEST_F(TJournalTest, WhatCannotBeWrittenAtTheEndIsTold)
{
    elsewhere(QStringLiteral("DROP TABLE pass"));
    passes.add(somePass(QStringLiteral("1")));
    passes.close();
    EXPECT_EQ(lost, QStringList({QStringLiteral("1")}));
    EXPECT_EQ(passes.waiting(), 0);
    clock.advance(60'000);
    EXPECT_EQ(lost.size(), 1);
}

TEST_F(TJournalTest, OutagesThatCannotBeWrittenAtTheEndAreTold)
{
    QStringList lines;
    passes.OnOutageLost = [&](const TOutage& outage) { lines.append(outage.line); };
    elsewhere(QStringLiteral("DROP TABLE outage"));
    passes.add(somePass(QStringLiteral("1")));
    passes.add(std::make_shared<TOutage>(
        TOutage{0, QStringLiteral("north"), platform::Now(), 0, QStringLiteral("unplugged")}));
    passes.close();
    EXPECT_EQ(lines, QStringList({QStringLiteral("north")}));
    EXPECT_EQ(lost, QStringList()) << "the pass is written";
    EXPECT_EQ(journal().size(), 1);
}

TEST_F(TJournalTest, TheOldestOfTooManyOutagesIsTold)
{
    QStringList lines;
    passes.OnOutageLost = [&](const TOutage& outage) { lines.append(outage.line); };
    for (qsizetype count = 0; count <= TJournal::kMaxOutages; ++count) {
        passes.add(std::make_shared<TOutage>(TOutage{0, QString::number(count), platform::Now(), 0, {}}));
    }
    EXPECT_EQ(lines, QStringList({QStringLiteral("0")}));
}

TEST_F(TJournalTest, WaitingIsBounded)
{
    elsewhere(QStringLiteral("DROP TABLE pass"));
    for (qsizetype count = 0; count < TJournal::kMaxWaiting + 2; ++count) {
        passes.add(somePass(QString::number(count)));
    }
    EXPECT_EQ(passes.waiting(), TJournal::kMaxWaiting);
    EXPECT_EQ(lost, QStringList({QStringLiteral("0"), QStringLiteral("1")}));
}

} // namespace
} // namespace tnv5::host
