#include "club_fixture.h"
#include "support/text_printers.h"
#include "tnv5/host/books/lamp_books.h"

namespace tnv5::host {
namespace {

const platform::TDateTime kNow = 46'027.5; // noon
constexpr platform::TDateTime kMinute = 1.0 / 1440;

TLamp lampOf(const char* name, const char* board, const char* relay, qint64 cents = 50)
{
    return {QString::fromLatin1(name), QString::fromLatin1(board), QString::fromLatin1(relay), cents};
}

class TLampBooksTest : public TClubFixture
{
protected:
    TLampBooksTest() : anna(addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"))) {}

    TLampTime order(const char* lamp = "Sun 1")
    {
        TLampTime time;
        time.ordered = kNow;
        time.lamp = QString::fromLatin1(lamp);
        time.card = QStringLiteral("1");
        time.member = anna;
        time.minutes = 5;
        time.cents = 250;
        books.order(time);
        return time;
    }

    qint64 balance() { return club.holderOf(QStringLiteral("1"))->member.balance; }

    qint64 anna;
    TLampBooks books{club};
};

TEST_F(TLampBooksTest, LampsAreAddedAndChanged)
{
    books.setLamp(lampOf("Sun 2", "100B", "5"));
    books.setLamp(lampOf("Sun 1", "100A", "2"));
    books.setLamp(lampOf("Sun 2", "100B", "4", 80));
    const QList<TLamp> lamps = books.lamps();
    ASSERT_EQ(lamps.size(), 2);
    EXPECT_EQ(lamps[0].name, QStringLiteral("Sun 1"));
    EXPECT_EQ(lamps[0].board, QStringLiteral("100A"));
    EXPECT_EQ(lamps[0].relay, QStringLiteral("2"));
    EXPECT_EQ(lamps[0].centsPerMinute, 50);
    EXPECT_EQ(lamps[1].relay, QStringLiteral("4"));
    EXPECT_EQ(lamps[1].centsPerMinute, 80);
}

TEST_F(TLampBooksTest, EveryRelayOfAPairAndNoOther)
{
    for (const QString& place : {QStringLiteral("100A1"), QStringLiteral("100A2"), QStringLiteral("100B3"),
                                 QStringLiteral("100B4"), QStringLiteral("100B5")}) {
        books.setLamp({place, place.left(4), place.mid(4), 1});
    }
    for (const QString& place :
         {QStringLiteral("200A3"), QStringLiteral("200A0"), QStringLiteral("200B1"), QStringLiteral("200B2"),
          QStringLiteral("200B6"), QStringLiteral("200T1"), QStringLiteral("200A"), QStringLiteral("20A1")}) {
        EXPECT_THROW(books.setLamp({place, place.left(4), place.mid(4), 1}), EDatabase) << qPrintable(place);
    }
    EXPECT_THROW(books.setLamp(lampOf("other", "100A", "1")), EDatabase) << "taken";
    EXPECT_THROW(books.setLamp(lampOf("", "300A", "1")), EDatabase);
    EXPECT_THROW(books.setLamp(lampOf("dear", "300A", "1", 1'000'001)), EDatabase);
    EXPECT_THROW(books.setLamp(lampOf("odd", "300A", "1", -1)), EDatabase);
    EXPECT_EQ(books.lamps().size(), 5);
}

TEST_F(TLampBooksTest, FromOrderToEnd)
{
    TLampTime time = order();
    EXPECT_EQ(time.id, 1);
    EXPECT_TRUE(books.open()[0].waiting());
    EXPECT_EQ(balance(), 0) << "an order costs nothing";
    EXPECT_TRUE(books.begin(time, kNow, kNow + 5 * kMinute));
    EXPECT_EQ(balance(), -250);
    const TLampTime begun = books.open().value(0);
    EXPECT_EQ(begun.name, QStringLiteral("Anna Berg"));
    EXPECT_EQ(begun.minutes, 5);
    EXPECT_FALSE(begun.waiting());
    EXPECT_TRUE(begun.running(kNow + 4.99 * kMinute));
    EXPECT_FALSE(begun.running(kNow + 5 * kMinute));
    books.end(time, kNow + 5 * kMinute, TLampEnding::Over);
    EXPECT_TRUE(books.open().isEmpty());
    const TLampTime ended = books.timesAfter(0, 10).value(0);
    EXPECT_EQ(ended.ending, TLampEnding::Over);
    EXPECT_EQ(toText(ended.ended), QStringLiteral("2026-01-05 12:05:00.000"));
    EXPECT_FALSE(ended.running(kNow));
    EXPECT_TRUE(books.timesAfter(1, 10).isEmpty());
}

TEST_F(TLampBooksTest, TimeBeginsAndEndsOnce)
{
    TLampTime time = order();
    EXPECT_TRUE(books.begin(time, kNow, kNow + 1));
    TLampTime again = time;
    EXPECT_FALSE(books.begin(again, kNow, kNow + 1));
    EXPECT_EQ(balance(), -250);
    books.end(time, kNow, TLampEnding::Stopped);
    books.end(again, kNow, TLampEnding::Over);
    EXPECT_EQ(books.timesAfter(0, 1)[0].ending, TLampEnding::Stopped);
    TLampTime ended = order();
    TLampTime copy = ended;
    books.end(ended, kNow, TLampEnding::Unanswered);
    EXPECT_FALSE(books.begin(copy, kNow, kNow + 1));
    EXPECT_EQ(balance(), -250);
}

TEST_F(TLampBooksTest, NoTimeForWhoIsSuspendedOrGone)
{
    TLampTime time = order();
    club.setSuspended(anna, true);
    EXPECT_FALSE(books.begin(time, kNow, kNow + 1));
    club.setSuspended(anna, false);
    elsewhere(QStringLiteral("PRAGMA foreign_keys = OFF"));
    elsewhere(QStringLiteral("UPDATE lamp_time SET member = NULL"));
    EXPECT_FALSE(books.begin(time, kNow, kNow + 1));
    EXPECT_EQ(books.open().value(0).name, QString());
}

TEST_F(TLampBooksTest, AnOrderThatCannotBe)
{
    TLampTime time;
    time.ordered = kNow;
    time.lamp = QStringLiteral("Sun 1");
    time.card = QStringLiteral("1");
    time.member = anna;
    for (const int minutes : {0, -1, TLampBooks::kMaxMinutes + 1}) {
        time.minutes = minutes;
        EXPECT_THROW(books.order(time), EDatabase) << minutes;
    }
    EXPECT_EQ(time.id, 0);
    time.minutes = TLampBooks::kMaxMinutes;
    books.order(time);
    EXPECT_EQ(time.id, 1);
}

TEST_F(TLampBooksTest, NothingIsChargedThatIsNotWritten)
{
    TLampTime time = order();
    elsewhere(QStringLiteral("CREATE TRIGGER no BEFORE UPDATE OF balance ON member BEGIN"
                             " SELECT RAISE(ABORT, 'no'); END"));
    EXPECT_THROW(books.begin(time, kNow, kNow + 1), EDatabase);
    EXPECT_TRUE(time.waiting());
    EXPECT_TRUE(books.open()[0].waiting());
}

TEST(LampTexts, Endings)
{
    for (const auto& [ending, word] :
         {std::pair(TLampEnding::None, ""), std::pair(TLampEnding::Over, "over"),
          std::pair(TLampEnding::Stopped, "stopped"), std::pair(TLampEnding::Refused, "refused"),
          std::pair(TLampEnding::Unanswered, "unanswered")}) {
        EXPECT_EQ(toText(ending), QString::fromLatin1(word));
        EXPECT_EQ(toLampEnding(QString::fromLatin1(word)), ending);
    }
    EXPECT_EQ(toLampEnding(u"lost"), std::nullopt);
}

TEST(LampTexts, TimeLeft)
{
    EXPECT_EQ(timeLeftText(0), QStringLiteral("0:00"));
    EXPECT_EQ(timeLeftText(299), QStringLiteral("4:59"));
    EXPECT_EQ(timeLeftText(3'599), QStringLiteral("59:59"));
    EXPECT_EQ(timeLeftText(3'899), QStringLiteral("1:04:59"));
    EXPECT_EQ(secondsBetween(kNow, kNow + kMinute), 60);
    EXPECT_EQ(secondsBetween(kNow, kNow + kMinute + 0.001 / 86'400), 61);
    EXPECT_EQ(secondsBetween(kNow + kMinute, kNow), 0);
}

TEST(LampTexts, LogLine)
{
    TLampTime time;
    time.ordered = kNow;
    time.lamp = QStringLiteral("Sun 1");
    time.card = QStringLiteral("10000001");
    time.name = QStringLiteral("Anna Berg");
    time.minutes = 5;
    time.cents = 250;
    EXPECT_EQ(logLine(time),
              QStringLiteral("12:00:00.000  Sun 1  Anna Berg (10000001)  5 min for 2.50, ordered"));
    time.began = kNow + kMinute;
    time.until = kNow + 6 * kMinute;
    EXPECT_EQ(logLine(time),
              QStringLiteral("12:01:00.000  Sun 1  Anna Berg (10000001)  5 min for 2.50, until 12:06:00"));
    time.ended = time.until;
    time.ending = TLampEnding::Over;
    EXPECT_EQ(logLine(time),
              QStringLiteral("12:06:00.000  Sun 1  Anna Berg (10000001)  5 min for 2.50, over"));
}

} // namespace
} // namespace tnv5::host
