#include "host/club_fixture.h"
#include "support/text_printers.h"
#include "tnv5/host/club_host.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

namespace tnv5::host {
namespace {

/// A club's host on a line in memory, with time in hand. Cards: 1 and 2 may enter, 3 is unknown.
class TClubHostTest : public TClubFixture
{
protected:
    static constexpr char kOpen01A[] = "$01A10366\r";
    static constexpr char kRefuse01A[] = "$01A00064\r";

    TClubHostTest()
    {
        anna = addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
        boris = addMember(QStringLiteral("Boris Klein"), QStringLiteral("2"));
        line.SetComport(&port);
        port.Open();
        host = std::make_unique<TClubHost>(line, club);
        host->OnPass = [this](const TPass& pass) { news.append(logLine(pass).mid(14)); };
        host->OnTrouble = [this](const QString& text) { troubles.append(text); };
    }

    void feed(const char* text) { port.feed(QByteArray(text) + '\r'); }
    /// Lets queues empty and the journal be written.
    void settle() { clock.advance(200); }
    bool isInside(const char* card) { return club.holderOf(QString::fromLatin1(card))->member.inside; }

    testkit::TManualClock clock;
    testkit::TMemoryPort port;
    turnstile::TTurnStylerDevice line;
    qint64 anna = 0;
    qint64 boris = 0;
    QStringList news;
    QStringList troubles;
    std::unique_ptr<TClubHost> host; // last: closing it tells news
};

TEST_F(TClubHostTest, ACardFromReadingToPassage)
{
    feed("$01AR1");
    EXPECT_EQ(port.takeWritten(), kOpen01A);
    feed("#01ARelay 1");
    feed("$01AP");
    feed("$01AG");
    settle();
    EXPECT_EQ(news, QStringList({QStringLiteral("01A  Anna Berg (1)  opened"),
                                 QStringLiteral("01A  Anna Berg (1)  passed")}));
    ASSERT_EQ(journal().size(), 1);
    const TPass row = journal()[0];
    EXPECT_EQ(row.card, QStringLiteral("1"));
    EXPECT_EQ(row.member, anna);
    EXPECT_EQ(row.gate, QStringLiteral("01A"));
    EXPECT_TRUE(row.opened());
    EXPECT_EQ(row.ending, TEnding::Passed);
    EXPECT_EQ(toText(row.began), QStringLiteral("2026-01-05 12:00:00.000"));
    EXPECT_TRUE(isInside("1"));
    EXPECT_EQ(line.StackItemsCount(), 0);
    EXPECT_TRUE(troubles.isEmpty());
}

TEST_F(TClubHostTest, TheCommandGoesOutBeforeAnythingIsWrittenOrTold)
{
    port.OnWritten = [this](const QByteArray&) {
        EXPECT_TRUE(news.isEmpty());
        EXPECT_TRUE(journal().isEmpty());
    };
    feed("$01AR1");
    EXPECT_EQ(port.takeWritten(), kOpen01A);
    settle();
    EXPECT_EQ(news.size(), 1);
    EXPECT_EQ(journal().size(), 1) << "an opened gate is in the journal before anyone has passed";
    EXPECT_TRUE(journal()[0].underWay());
}

TEST_F(TClubHostTest, ARefusedCardWithItsReason)
{
    feed("$01AR3");
    EXPECT_EQ(port.takeWritten(), kRefuse01A);
    settle();
    EXPECT_EQ(news, QStringList({QStringLiteral("01A  card (3)  refused: unknown card")}));
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].refusal, TRefusal::UnknownCard);
    EXPECT_EQ(journal()[0].ending, TEnding::None);
}

TEST_F(TClubHostTest, AGateThatNobodyEntered)
{
    feed("$77AR1");
    EXPECT_EQ(port.takeWritten().left(7), "$77A000");
    settle();
    EXPECT_EQ(journal()[0].refusal, TRefusal::UnknownGate);
    EXPECT_EQ(troubles, QStringList({QStringLiteral("[02] Device not found 77A")}));
}

TEST_F(TClubHostTest, TheDayOfTheClockCounts)
{
    clock.jumpTo(testkit::TManualClock::at(0, 0) + 2 * platform::kMsPerDay);
    feed("$01AR1");
    EXPECT_EQ(port.takeWritten(), kRefuse01A);
    settle();
    EXPECT_EQ(journal()[0].refusal, TRefusal::Expired);
}

TEST_F(TClubHostTest, WhoIsInsideDoesNotGetInAgain)
{
    feed("$01AR1");
    feed("$01AG");
    clock.advance(20); // the journal is not written yet
    ASSERT_TRUE(journal().isEmpty());
    port.takeWritten();
    feed("$01AR1");
    EXPECT_EQ(port.takeWritten(), kRefuse01A);
    clock.advance(20);
    feed("$02AR1");
    feed("$02AG");
    clock.advance(20);
    port.takeWritten();
    feed("$01AR1");
    EXPECT_EQ(port.takeWritten(), kOpen01A) << "out again, in again";
    settle();
    EXPECT_EQ(journal()[1].refusal, TRefusal::AlreadyInside);
}

TEST_F(TClubHostTest, ACardHandedToTheNextGateIsRefused)
{
    feed("$01AR1");
    port.takeWritten();
    feed("$04AR1");
    settle();
    EXPECT_EQ(port.takeWritten().left(7), "$04A000");
    EXPECT_EQ(journal()[1].refusal, TRefusal::AlreadyInside);
}

TEST_F(TClubHostTest, WhoDoesNotPassIsNotInside)
{
    feed("$01AR1");
    feed("$01AF");
    settle();
    EXPECT_EQ(journal()[0].ending, TEnding::TimedOut);
    EXPECT_FALSE(isInside("1"));
    port.takeWritten();
    feed("$01AR1");
    EXPECT_EQ(port.takeWritten(), kOpen01A);
}

TEST_F(TClubHostTest, AControllerThatDoesNotAnswer)
{
    feed("$01AR1");
    clock.advance(2'500);
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::Unanswered);
    EXPECT_EQ(line.StackItemsCount(), 0);
}

TEST_F(TClubHostTest, AnInnerDoorLeavesPresenceAlone)
{
    feed("$03DR1");
    EXPECT_EQ(port.takeWritten().left(7), "$03D323");
    feed("#03DGate-Open");
    settle();
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);
    EXPECT_FALSE(isInside("1"));
}

TEST_F(TClubHostTest, TheExitButtonOpensAndIsJournaled)
{
    feed("#03DBtn-Activ");
    EXPECT_EQ(port.takeWritten().left(7), "$03D323");
    feed("#03DRelay 3");
    feed("#03DGate-Open");
    settle();
    EXPECT_EQ(news, QStringList({QStringLiteral("03D  exit button  opened"),
                                 QStringLiteral("03D  exit button  passed")}));
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].card, QStringLiteral("-2-2-2-2-2"));
    EXPECT_EQ(journal()[0].member, 0);
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);
}

TEST_F(TClubHostTest, AButtonThatOpensForAWaitingCardIsJournaledToo)
{
    feed("$04AR2"); // keeps the timer running
    feed("$01AR1"); // waits for its turn
    port.takeWritten();
    feed("#01AInG-Activ");
    EXPECT_EQ(port.takeWritten(), kOpen01A);
    feed("$01AG");
    settle();
    ASSERT_EQ(journal().size(), 2);
    EXPECT_EQ(journal()[1].card, QStringLiteral("1"));
    EXPECT_EQ(journal()[1].member, anna);
    EXPECT_EQ(journal()[1].ending, TEnding::Passed);
    EXPECT_TRUE(isInside("1"));
}

TEST_F(TClubHostTest, TheHoldersPictureIsDrawn)
{
    feed("$01AR1");
    ASSERT_EQ(line.StackItemsCount(), 1);
    EXPECT_FALSE(line.StackItem(0)->Img.isNull());
}

TEST_F(TClubHostTest, NoPictureWithoutAHolder)
{
    QImage seen(1, 1, QImage::Format_RGB32);
    line.SetOnCheckStatus([&](platform::TComponent*, const QVariant& name, const QVariant&, const QVariant&,
                              const QVariant&, const QVariant&) {
        if (name == QStringLiteral("CHECK")) {
            seen = line.StackItem(0)->Img;
        }
    });
    feed("$01AR3");
    EXPECT_TRUE(seen.isNull());
}

TEST_F(TClubHostTest, AFailingDatabaseRefusesTheCardAndSaysSo)
{
    elsewhere(QStringLiteral("ALTER TABLE card RENAME TO card_away"));
    feed("$01AR1");
    EXPECT_EQ(port.takeWritten(), kRefuse01A);
    settle();
    ASSERT_FALSE(troubles.isEmpty());
    EXPECT_TRUE(troubles.last().contains(QStringLiteral("card 1 at 01A cannot be decided about")))
        << qPrintable(troubles.last());
    EXPECT_EQ(journal()[0].refusal, TRefusal::HostFault);

    feed("#03DBtn-Activ");
    EXPECT_EQ(port.takeWritten().left(7), "$03D323") << "the way out stays open";
    feed("#03DGate-Open");
    settle();

    elsewhere(QStringLiteral("ALTER TABLE card_away RENAME TO card"));
    feed("$01AR1");
    EXPECT_EQ(port.takeWritten(), kOpen01A) << "work goes on";
}

TEST_F(TClubHostTest, AJournalThatFailsDoesNotStopTheGates)
{
    whileLocked([&] {
        feed("$01AR1");
        EXPECT_EQ(port.takeWritten(), kOpen01A);
        feed("$01AG");
        settle();
    });
    EXPECT_TRUE(journal().isEmpty());
    clock.advance(10'000);
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);
    EXPECT_TRUE(isInside("1"));
}

TEST_F(TClubHostTest, ClosingWritesEverything)
{
    feed("$01AR3");
    feed("$02AR1");
    clock.advance(20);
    host->close();
    ASSERT_EQ(journal().size(), 2);
    EXPECT_EQ(journal()[1].ending, TEnding::Interrupted);
    EXPECT_EQ(news.size(), 3);
    EXPECT_FALSE(line.OnCheckSQL());
}

TEST_F(TClubHostTest, WhatCannotBeJournaledAtTheEndIsTold)
{
    elsewhere(QStringLiteral("DROP TABLE pass"));
    feed("$01AR3");
    host->close();
    ASSERT_FALSE(troubles.isEmpty());
    EXPECT_TRUE(troubles.last().startsWith(QStringLiteral("NOT IN THE JOURNAL: 2026-01-05 12:00:00.000")))
        << qPrintable(troubles.last());
}

TEST_F(TClubHostTest, TheComponentMayGoFirst)
{
    TDatabase other(QStringLiteral(":memory:"));
    auto device = std::make_unique<turnstile::TTurnStylerDevice>();
    TClubHost second(*device, other);
    device.reset();
    second.close();
}

TEST_F(TClubHostTest, TheComponentKnowsTheGates)
{
    EXPECT_EQ(line.DeviceList(), QStringList({QStringLiteral("01A"), QStringLiteral("02A"),
                                              QStringLiteral("03D"), QStringLiteral("04A")}));
}

TEST_F(TClubHostTest, AHandlerThatRaisesHurtsNobodyElse)
{
    QStringList escaped;
    const auto previous = platform::setExceptionHandler(
        [&](const QString& message, const std::exception_ptr&) { escaped.append(message); });
    host->OnPass = [](const TPass&) { throw platform::Exception(QStringLiteral("no paper")); };
    feed("$01AR1");
    EXPECT_EQ(port.takeWritten(), kOpen01A);
    settle();
    EXPECT_EQ(escaped, QStringList({QStringLiteral("no paper")}));
    EXPECT_EQ(journal().size(), 1);
    host->OnPass = {};
    platform::setExceptionHandler(previous);
}

} // namespace
} // namespace tnv5::host
