#include "classic_fixture.h"

namespace tnv5::sim {
namespace {

using ClassicPeople = TClassicFixture;

TEST_F(ClassicPeople, OneWhoGivesUpIsReportedWhileTheGateIsOpen)
{
    const quint64 id = line->readCard(kTurnstile, kCard, TBehaviour::GivesUp);
    stream.takeWrites();
    command(kOpenTurnstile);
    EXPECT_EQ(heardIn(line->Delays.GiveUpMs), "$01AF\r");
    EXPECT_EQ(heardIn(60'000), "");
    EXPECT_EQ(fate(id), TFate::Opened);
    EXPECT_FALSE(line->reading(id).Passed);
    EXPECT_EQ(line->counts(kTurnstile).GaveUp, 1);
    EXPECT_EQ(diary, (QStringList{"opened 01A", "gave up 01A", "closed 01A"}));
}

TEST_F(ClassicPeople, GivingUpIsReportedAtTheLatestWhenTheGateCloses)
{
    line->Delays.GiveUpMs = 100'000;
    line->readCard(kTurnstile, kCard, TBehaviour::GivesUp);
    stream.takeWrites();
    command(kOpenTurnstile);
    EXPECT_EQ(heardIn(2'999), "");
    EXPECT_EQ(heardIn(1), "$01AF\r");
}

TEST_F(ClassicPeople, OneWhoWalksAwayIsNotReported)
{
    const quint64 id = line->readCard(kTurnstile, kCard, TBehaviour::WalksAway);
    stream.takeWrites();
    command(kOpenTurnstile);
    EXPECT_EQ(heardIn(60'000), "");
    EXPECT_EQ(fate(id), TFate::Opened);
    EXPECT_EQ(diary, (QStringList{"opened 01A", "closed 01A"}));
}

TEST_F(ClassicPeople, OneWhoIsTooSlowFindsTheGateClosed)
{
    line->Delays.ProgressMs = 5'000;
    line->readCard(kTurnstile, kCard);
    stream.takeWrites();
    command(kOpenTurnstile);
    EXPECT_EQ(heardIn(60'000), "$01AF\r");
    EXPECT_EQ(line->counts(kTurnstile).Passed, 0);
}

TEST_F(ClassicPeople, OneInFrontOfWhomTheGateIsClosedGivesUp)
{
    line->readCard(kTurnstile, kCard);
    stream.takeWrites();
    command(kOpenTurnstile);
    command(kRefuseTurnstile);
    EXPECT_EQ(heardIn(60'000), "$01AF\r");
    EXPECT_EQ(line->counts(kTurnstile).Passed, 0);
}

TEST_F(ClassicPeople, OneWhoGetsNoCommandDoesNotWaitForEver)
{
    std::vector<TReading> fates;
    line->OnFate = [&](const TReading& reading) { fates.push_back(reading); };
    const double noon = platform::Now();
    const quint64 id = line->readCard(kTurnstile, kCard);
    clock.advance(line->Delays.AnswerLimitMs - 1);
    EXPECT_EQ(fate(id), TFate::Waiting);
    clock.advance(1);
    EXPECT_EQ(fate(id), TFate::NoCommand);
    EXPECT_EQ(line->counts(kTurnstile).NoCommand, 1);
    ASSERT_EQ(fates.size(), 1U);
    EXPECT_EQ(fates[0].Id, id);
    EXPECT_EQ(fates[0].Card, kCard);
    EXPECT_EQ(fates[0].Address, kTurnstile);
    EXPECT_EQ(fates[0].Asked, noon);
    EXPECT_EQ(fates[0].Answered, platform::Now());
}

TEST_F(ClassicPeople, ACommandIsForWhoeverHasWaitedLongest)
{
    const quint64 first = line->readCard(kTurnstile, kCard, TBehaviour::WalksAway);
    const quint64 second = line->readCard(kTurnstile, QStringLiteral("2"), TBehaviour::PassesThrough);
    const quint64 elsewhere = line->readCard(kDoor, QStringLiteral("3"));
    command(kOpenTurnstile);
    EXPECT_EQ(fate(first), TFate::Opened);
    EXPECT_EQ(fate(second), TFate::Waiting);
    command(kRefuseTurnstile);
    EXPECT_EQ(fate(second), TFate::Refused);
    EXPECT_EQ(fate(elsewhere), TFate::Waiting);
}

TEST_F(ClassicPeople, TheGateStaysOpenForTheNextWhoWasLetIn)
{
    const quint64 first = line->readCard(kTurnstile, kCard);
    command(kOpenTurnstile);
    clock.advance(line->Delays.ProgressMs + line->Delays.PassageMs / 2);
    const quint64 second = line->readCard(kTurnstile, QStringLiteral("2"));
    command(kOpenTurnstile);
    EXPECT_EQ(heardIn(60'000), "$01AG\r$01AP\r$01AG\r");
    EXPECT_TRUE(line->reading(first).Passed);
    EXPECT_TRUE(line->reading(second).Passed);
}

TEST_F(ClassicPeople, AGuestUsesAnOpeningThatNobodyAskedFor)
{
    EXPECT_EQ(command(kOpenTurnstile), "#01ARelay 1\r");
    EXPECT_EQ(heardIn(60'000), "$01AP\r$01AG\r");
    line->Guest = TBehaviour::WalksAway;
    EXPECT_EQ(command(kOpenTurnstile), "#01ARelay 1\r");
    EXPECT_EQ(heardIn(60'000), "");
    EXPECT_EQ(line->counts(kTurnstile).Passed, 1);
    EXPECT_EQ(line->counts(kTurnstile).Asked, 0);
}

TEST_F(ClassicPeople, OnlyCardsThatCanBeSentAreRead)
{
    for (const QString& wrong : {QString(), QStringLiteral("1\r2"), QStringLiteral("\u0410"),
                                 QString(65, QLatin1Char('1')), QString(QChar(0))}) {
        EXPECT_EQ(line->readCard(kTurnstile, wrong), 0U);
    }
    EXPECT_EQ(line->readCard(QStringLiteral("09A"), kCard), 0U);
    EXPECT_EQ(line->pressButton(QStringLiteral("09A")), 0U);
    EXPECT_EQ(line->inGate(QStringLiteral("09A")), 0U);
    EXPECT_TRUE(stream.takeWrites().isEmpty());
    EXPECT_EQ(line->totals().Asked, 0);
}

} // namespace
} // namespace tnv5::sim
