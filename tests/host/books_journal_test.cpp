#include "books_fixture.h"
#include "tnv5/common/messages.h"
#include "tnv5/host/books/books_journal.h"

#include <QScopeGuard>
#include <ctime>

namespace tnv5::host {
namespace {

class TBooksJournalTest : public TBooksFixture
{
protected:
    TBooksJournalTest() { anna = books.addMember({.name = kAnna, .cards = {QStringLiteral("7")}}); }

    PPass pass(const QString& card, const char* gate, TRefusal refusal, TEnding ending)
    {
        auto made = std::make_shared<TPass>();
        made->began = platform::Now();
        made->card = card;
        made->gate = QString::fromLatin1(gate);
        made->member = card == QStringLiteral("7") ? anna : 0;
        made->refusal = refusal;
        made->ending = ending;
        made->ended = ending == TEnding::None ? 0 : platform::Now();
        club.writePasses({made});
        clock.advance(3'600'000);
        return made;
    }

    /// Five passes, an hour apart from noon: passed, refused, opened by hand, timed out, open.
    void fill()
    {
        pass(QStringLiteral("7"), "01A", TRefusal::None, TEnding::Passed);
        pass(QStringLiteral("8"), "02A", TRefusal::UnknownCard, TEnding::None);
        desk();
        pass(QStringLiteral("7"), "01A", TRefusal::None, TEnding::TimedOut);
        open = pass(common::kCardButton, "77A", TRefusal::None, TEnding::None);
    }
    void desk()
    {
        auto made = std::make_shared<TPass>();
        made->began = platform::Now();
        made->card = common::kCardManual;
        made->gate = QStringLiteral("03D");
        made->ending = TEnding::Passed;
        made->ended = platform::Now();
        made->who = QStringLiteral("boris");
        made->note = QStringLiteral("a pram");
        club.writePasses({made});
        clock.advance(3'600'000);
    }

    QStringList idsOf(const TJournalQuery& query)
    {
        TJournalReader journal(club, query);
        QStringList ids;
        for (;;) {
            const auto rows = journal.next(2); // in pieces
            if (rows.isEmpty()) {
                return ids;
            }
            for (const QVariantList& row : rows) {
                ids.append(row[0].toString());
            }
        }
    }

    qint64 anna = 0;
    PPass open;
};

TEST_F(TBooksJournalTest, EveryColumn)
{
    fill();
    TJournalReader journal(club, {});
    const QStringList lines = linesOf({TJournalReader::columns(), journal.next(100)});
    const QString zone = timeForPrograms(platform::Now()).mid(23);
    ASSERT_EQ(lines.size(), 6);
    EXPECT_EQ(
        lines[0],
        QStringLiteral("id,began,ended,gate,zone,direction,card,member,name,opened,reason,ending,who,note"));
    EXPECT_EQ(lines[1],
              QStringLiteral("1,2026-01-05T12:00:00.000%1,2026-01-05T12:00:00.000%1,01A,hall,in,7,1,Anna "
                             "Berg,yes,,passed,,")
                  .arg(zone));
    EXPECT_EQ(lines[2],
              QStringLiteral("2,2026-01-05T13:00:00.000%1,,02A,hall,out,8,0,,no,unknown card,,,").arg(zone));
    EXPECT_EQ(
        lines[3],
        QStringLiteral("3,2026-01-05T14:00:00.000%1,2026-01-05T14:00:00.000%1,03D,hall,inner,-1-1-1-1-1,0,,"
                       "yes,,passed,boris,a pram")
            .arg(zone));
    EXPECT_EQ(lines[5], QStringLiteral("5,2026-01-05T16:00:00.000%1,,77A,,,-2-2-2-2-2,0,,yes,,,,").arg(zone));
}

TEST_F(TBooksJournalTest, ForPeople)
{
    fill();
    TJournalReader journal(club, {});
    TBookTable table = {TJournalReader::columnsForPeople(), {}};
    for (const QVariantList& row : journal.next(100)) {
        table.rows.append(TJournalReader::forPeople(row));
    }
    QStringList lines;
    for (const QString& line : linesOf(table)) {
        lines.append(line.section(u',', 1));
    }
    EXPECT_EQ(
        lines,
        QStringList({QStringLiteral("gate,what,card,who"), QStringLiteral("01A,passed,7,Anna Berg"),
                     QStringLiteral("02A,refused: unknown card,8,"),
                     QStringLiteral("03D,passed,,by hand: boris (a pram)"),
                     QStringLiteral("01A,timed out,7,Anna Berg"), QStringLiteral("77A,open,,exit button")}));
}

TEST_F(TBooksJournalTest, Questions)
{
    fill();
    const auto ids = [this](const TJournalQuery& query) { return idsOf(query).join(u' '); };
    const auto at = [](const char* text) {
        return toDateTime(QStringLiteral("2026-01-05 ") + QLatin1String(text));
    };
    EXPECT_EQ(ids({}), QStringLiteral("1 2 3 4 5"));
    EXPECT_EQ(ids({.since = at("13:00:00.000")}), QStringLiteral("2 3 4 5"));
    EXPECT_EQ(ids({.since = at("13:00:00.001")}), QStringLiteral("3 4 5"));
    EXPECT_EQ(ids({.until = at("13:00:00.000")}), QStringLiteral("1 2"));
    EXPECT_EQ(ids({.since = at("13:30:00.000"), .until = at("14:30:00.000")}), QStringLiteral("3"));
    EXPECT_EQ(ids({.since = at("23:00:00.000")}), QString());
    EXPECT_EQ(ids({.member = anna}), QStringLiteral("1 4"));
    EXPECT_EQ(ids({.gate = QStringLiteral("01A")}), QStringLiteral("1 4"));
    EXPECT_EQ(ids({.ending = QStringLiteral("passed")}), QStringLiteral("1 3"));
    EXPECT_EQ(ids({.ending = QStringLiteral("timed-out")}), QStringLiteral("4"));
    EXPECT_EQ(ids({.ending = QStringLiteral("timed out")}), QStringLiteral("4"));
    EXPECT_EQ(ids({.ending = QStringLiteral("refused")}), QStringLiteral("2"));
    EXPECT_EQ(ids({.ending = QStringLiteral("open")}), QStringLiteral("5"));
    EXPECT_EQ(ids({.member = anna, .ending = QStringLiteral("passed")}), QStringLiteral("1"));
    EXPECT_EQ(refusal([&] { ids({.ending = QStringLiteral("lost")}); }),
              QStringLiteral(
                  "\"lost\" is no ending; there are passed, timed out, unanswered, interrupted, abandoned, "
                  "refused, open"));
}

TEST_F(TBooksJournalTest, Following)
{
    fill();
    TJournalReader journal(club, {});
    EXPECT_EQ(journal.next(100).size(), 5);
    EXPECT_TRUE(journal.next(100).isEmpty());
    EXPECT_TRUE(journal.ended().isEmpty());
    open->ending = TEnding::Unanswered;
    club.writePasses({open});
    const auto ended = journal.ended();
    ASSERT_EQ(ended.size(), 1);
    EXPECT_EQ(ended[0][0].toLongLong(), 5);
    EXPECT_EQ(ended[0][11].toString(), QStringLiteral("unanswered"));
    EXPECT_TRUE(journal.ended().isEmpty());
    pass(QStringLiteral("7"), "01A", TRefusal::None, TEnding::Passed);
    EXPECT_EQ(journal.next(100).size(), 1);
}

TEST_F(TBooksJournalTest, FollowingWithAnEndingMissesNothing)
{
    TJournalReader journal(club, {.ending = QStringLiteral("passed")});
    const PPass first = pass(QStringLiteral("7"), "01A", TRefusal::None, TEnding::None);
    const PPass other = pass(QStringLiteral("7"), "01A", TRefusal::None, TEnding::None);
    pass(QStringLiteral("7"), "02A", TRefusal::None, TEnding::Passed); // a later row
    ASSERT_EQ(journal.next(100).size(), 1);
    first->ending = TEnding::Passed;
    other->ending = TEnding::TimedOut;
    club.writePasses({first, other});
    const auto ended = journal.ended();
    ASSERT_EQ(ended.size(), 1) << "the other one did not end so";
    EXPECT_EQ(ended[0][0].toLongLong(), first->id);
    EXPECT_TRUE(journal.ended().isEmpty());
    EXPECT_TRUE(journal.next(100).isEmpty());
}

TEST_F(TBooksJournalTest, FollowingWhatIsOpenShowsItsEnd)
{
    TJournalReader journal(club, {.ending = QStringLiteral("open")});
    const PPass first = pass(QStringLiteral("7"), "01A", TRefusal::None, TEnding::None);
    ASSERT_EQ(journal.next(100).size(), 1);
    first->ending = TEnding::Passed;
    club.writePasses({first});
    ASSERT_EQ(journal.ended().size(), 1);
}

TEST_F(TBooksJournalTest, FollowingLooksAtARowOnce)
{
    fill();
    TJournalReader journal(club, {.gate = QStringLiteral("no such gate")});
    EXPECT_TRUE(journal.next(1).isEmpty());
    elsewhere(QStringLiteral("UPDATE pass SET gate = 'no such gate'"));
    EXPECT_TRUE(journal.next(1).isEmpty()) << "rows that were not wanted are not looked at again";
    pass(QStringLiteral("7"), "no such gate", TRefusal::None, TEnding::Passed);
    EXPECT_EQ(journal.next(1).size(), 1);
}

TEST_F(TBooksJournalTest, FollowingSinceATimeToCome)
{
    fill();
    TJournalReader journal(club, {.since = toDateTime(QStringLiteral("2026-01-05 17:30:00.000"))});
    EXPECT_TRUE(journal.next(100).isEmpty());
    pass(QStringLiteral("7"), "01A", TRefusal::None, TEnding::Passed); // 17:00
    pass(QStringLiteral("7"), "01A", TRefusal::None, TEnding::Passed); // 18:00
    const auto rows = journal.next(100);
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows[0][0].toLongLong(), 7);
}

TEST_F(TBooksJournalTest, Outages)
{
    const auto outage = std::make_shared<TOutage>();
    outage->line = QStringLiteral("north");
    outage->began = platform::Now();
    outage->why = QStringLiteral("unplugged");
    club.writeOutages({outage});
    const QStringList lines = linesOf(outages(club));
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0], QStringLiteral("id,line,began,ended,why"));
    EXPECT_EQ(lines[1], QStringLiteral("1,north,%1,,unplugged").arg(timeForPrograms(outage->began)));
}

TEST(BooksMoments, AreRead)
{
    const testkit::TManualClock clock; // 2026-01-05 12:00
    const auto read = [](const char* text, bool end = false) {
        return toText(readMoment(QString::fromLatin1(text), end));
    };
    EXPECT_EQ(read("2026-01-31"), QStringLiteral("2026-01-31 00:00:00.000"));
    EXPECT_EQ(read("2026-01-31", true), QStringLiteral("2026-01-31 23:59:59.999"));
    EXPECT_EQ(read("2026-01-31 12:30"), QStringLiteral("2026-01-31 12:30:00.000"));
    EXPECT_EQ(read("2026-01-31T12:30", true), QStringLiteral("2026-01-31 12:30:59.999"));
    EXPECT_EQ(read("2026-01-31T12:30:15.250", true), QStringLiteral("2026-01-31 12:30:15.250"));
    EXPECT_EQ(readMoment(QStringLiteral("2026-01-31T12:30:00+05:00"), false),
              readMoment(QStringLiteral("2026-01-31T07:30:00Z"), false));
    EXPECT_EQ(read("today"), QStringLiteral("2026-01-05 00:00:00.000"));
    EXPECT_EQ(read("yesterday", true), QStringLiteral("2026-01-04 23:59:59.999"));
    EXPECT_EQ(read("90m"), QStringLiteral("2026-01-05 10:30:00.000"));
    EXPECT_EQ(read("24h"), QStringLiteral("2026-01-04 12:00:00.000"));
    EXPECT_EQ(read("7d"), QStringLiteral("2025-12-29 12:00:00.000"));
    EXPECT_EQ(read("2w"), QStringLiteral("2025-12-22 12:00:00.000"));
    for (const char* text :
         {"", "2026-02-30", "2026-01-31 25:00", "12:00", "-7d", "7", "7y", "tomorrow", "2026-01-31+01:00"}) {
        EXPECT_THROW(readMoment(QString::fromLatin1(text), false), EBooks) << text;
    }
}

// Where summer time begins at midnight, that day begins at one.
TEST(BooksMoments, ADayWithoutMidnight)
{
    const QByteArray zone = qgetenv("TZ");
    const bool was = qEnvironmentVariableIsSet("TZ");
    const auto back = qScopeGuard([&] {
        was ? qputenv("TZ", zone) : qunsetenv("TZ");
        tzset();
    });
    qputenv("TZ", "Asia/Beirut");
    tzset();
    EXPECT_EQ(toText(readMoment(QStringLiteral("2025-03-30"), false)),
              QStringLiteral("2025-03-30 01:00:00.000"));
    EXPECT_EQ(toText(readMoment(QStringLiteral("2025-03-30"), true)),
              QStringLiteral("2025-03-30 23:59:59.999"));
    EXPECT_THROW(readMoment(QStringLiteral("2025-03-30 00:30"), false), EBooks) << "there is no such time";
}

TEST(BooksMoments, Ages)
{
    const testkit::TManualClock clock;
    const auto read = [](const char* text) { return toText(readAge(QString::fromLatin1(text))); };
    EXPECT_EQ(read("3y"), QStringLiteral("2023-01-05 12:00:00.000"));
    EXPECT_EQ(read("18m"), QStringLiteral("2024-07-05 12:00:00.000"));
    EXPECT_EQ(read("8w"), QStringLiteral("2025-11-10 12:00:00.000"));
    EXPECT_EQ(read("90d"), QStringLiteral("2025-10-07 12:00:00.000"));
    for (const char* text : {"", "0d", "y", "3", "-3y", "3h", "99999d"}) {
        EXPECT_THROW(readAge(QString::fromLatin1(text)), EBooks) << text;
    }
}

} // namespace
} // namespace tnv5::host
