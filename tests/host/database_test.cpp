#include "club_fixture.h"

namespace tnv5::host {
namespace {

using TDatabaseTest = TClubFixture;

PPass somePass(const QString& card, qint64 member, TEnding ending, TDirection direction = TDirection::In)
{
    auto pass = std::make_shared<TPass>();
    pass->began = 46'027.5;
    pass->card = card;
    pass->member = member;
    pass->gate = QStringLiteral("01A");
    pass->direction = direction;
    pass->ending = ending;
    return pass;
}

TEST_F(TDatabaseTest, HolderWithMembershipsAndZones)
{
    const qint64 anna = addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
    club.addMembership(anna, {kToday, kToday.addDays(7), {QStringLiteral("pool"), QStringLiteral("gym")}});
    club.addMembership(anna, {kToday, kToday, {}});

    const auto holder = club.holderOf(QStringLiteral("1"));
    ASSERT_TRUE(holder);
    EXPECT_EQ(holder->member.id, anna);
    EXPECT_EQ(holder->member.name, QStringLiteral("Anna Berg"));
    EXPECT_FALSE(holder->member.suspended);
    ASSERT_EQ(holder->memberships.size(), 3);
    EXPECT_EQ(holder->memberships[1].from, kToday);
    EXPECT_EQ(holder->memberships[1].to, kToday.addDays(7));
    EXPECT_EQ(holder->memberships[1].zones, QStringList({QStringLiteral("gym"), QStringLiteral("pool")}));
    EXPECT_TRUE(holder->memberships[2].zones.isEmpty());
}

TEST_F(TDatabaseTest, BalanceInCents)
{
    const qint64 anna = addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
    EXPECT_EQ(club.holderOf(QStringLiteral("1"))->member.balance, 0);
    club.setBalance(anna, -1'250);
    EXPECT_EQ(club.holderOf(QStringLiteral("1"))->member.balance, -1'250);
}

TEST_F(TDatabaseTest, UnknownCardAndGate)
{
    EXPECT_FALSE(club.holderOf(QStringLiteral("1")));
    EXPECT_FALSE(club.gateAt(QStringLiteral("99A")));
}

TEST_F(TDatabaseTest, ValuesAreNeverPartOfAStatement)
{
    const QString card = QStringLiteral("1'; DROP TABLE member; --");
    addMember(QStringLiteral("O'Neil \"Bob\"; %1"), card);
    ASSERT_TRUE(club.holderOf(card));
    EXPECT_EQ(club.holderOf(card)->member.name, QStringLiteral("O'Neil \"Bob\"; %1"));
}

TEST_F(TDatabaseTest, GatesCanBeChanged)
{
    club.setGate({QStringLiteral("01A"), QStringLiteral("pool"), TDirection::Out});
    const auto gate = club.gateAt(QStringLiteral("01A"));
    ASSERT_TRUE(gate);
    EXPECT_EQ(gate->zone, QStringLiteral("pool"));
    EXPECT_EQ(gate->direction, TDirection::Out);
    EXPECT_EQ(club.gates().size(), 4);
}

TEST_F(TDatabaseTest, EverythingIsThereAfterReopening)
{
    const qint64 anna = addMember(QStringLiteral("Анна Берг"), QStringLiteral("1"));
    club.setSuspended(anna, true);
    club.setInside(anna, true);
    TDatabase again(FFile);
    const auto holder = again.holderOf(QStringLiteral("1"));
    ASSERT_TRUE(holder);
    EXPECT_EQ(holder->member.name, QStringLiteral("Анна Берг"));
    EXPECT_TRUE(holder->member.suspended);
    EXPECT_TRUE(holder->member.inside);
}

TEST_F(TDatabaseTest, ForeignKeysHold)
{
    EXPECT_NE(failureOf([&] { club.addCard(QStringLiteral("1"), 999); }), QString());
}

TEST_F(TDatabaseTest, ACardBelongsToOneMember)
{
    addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
    const qint64 boris = club.addMember(QStringLiteral("Boris Klein"));
    EXPECT_NE(failureOf([&] { club.addCard(QStringLiteral("1"), boris); }), QString());
}

TEST_F(TDatabaseTest, AFailedMembershipLeavesNothingBehind)
{
    const qint64 anna = addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
    EXPECT_NE(failureOf([&] { club.addMembership(anna, {kToday, kToday.addDays(-1), {}}); }), QString());
    club.addMembership(anna, {kToday, kToday, {}}); // the transaction before has ended
    EXPECT_EQ(club.holderOf(QStringLiteral("1"))->memberships.size(), 2);
}

TEST_F(TDatabaseTest, PassesAreAddedAndThenChanged)
{
    const qint64 anna = addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
    const PPass pass = somePass(QStringLiteral("1"), anna, TEnding::None);
    club.writePasses({pass});
    EXPECT_EQ(pass->id, club.lastPass());
    ASSERT_EQ(journal().size(), 1);
    EXPECT_TRUE(journal()[0].underWay());

    pass->ending = TEnding::Passed;
    pass->ended = 46'027.75;
    club.writePasses({pass});
    ASSERT_EQ(journal().size(), 1) << "one row a pass";
    const TPass row = journal()[0];
    EXPECT_EQ(row.card, QStringLiteral("1"));
    EXPECT_EQ(row.member, anna);
    EXPECT_EQ(row.gate, QStringLiteral("01A"));
    EXPECT_EQ(row.ending, TEnding::Passed);
    EXPECT_EQ(toText(row.began), QStringLiteral("2026-01-05 12:00:00.000"));
    EXPECT_EQ(toText(row.ended), QStringLiteral("2026-01-05 18:00:00.000"));
}

TEST_F(TDatabaseTest, PassingChangesWhoIsInside)
{
    const qint64 anna = addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
    const auto inside = [&] { return club.holderOf(QStringLiteral("1"))->member.inside; };

    club.writePasses({somePass(QStringLiteral("1"), anna, TEnding::TimedOut)});
    EXPECT_FALSE(inside());
    club.writePasses({somePass(QStringLiteral("1"), anna, TEnding::Passed)});
    EXPECT_TRUE(inside());
    club.writePasses({somePass(QStringLiteral("1"), anna, TEnding::Passed, TDirection::Inner)});
    EXPECT_TRUE(inside());
    club.writePasses({somePass(QStringLiteral("1"), anna, TEnding::Passed, TDirection::Out)});
    EXPECT_FALSE(inside());
}

TEST_F(TDatabaseTest, AMemberDeletedMeanwhileDoesNotKeepThePassOut)
{
    const PPass pass = somePass(QStringLiteral("1"), 999, TEnding::Passed);
    club.writePasses({pass});
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].member, 0);
}

TEST_F(TDatabaseTest, ReadingGoesOnWhileAnotherProgramWrites)
{
    addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
    whileLocked([&] {
        EXPECT_TRUE(club.holderOf(QStringLiteral("1")));
        const PPass pass = somePass(QStringLiteral("1"), 0, TEnding::None);
        EXPECT_NE(failureOf([&] { club.writePasses({pass}); }), QString());
        EXPECT_EQ(pass->id, 0);
    });
}

TEST_F(TDatabaseTest, AWriteThatFailsHalfWayIsUndone)
{
    elsewhere(QStringLiteral("CREATE TRIGGER fail BEFORE INSERT ON pass WHEN new.card = 'bad'"
                             " BEGIN SELECT raise(ABORT, 'disk full'); END"));
    const PPass good = somePass(QStringLiteral("1"), 0, TEnding::None);
    const PPass bad = somePass(QStringLiteral("bad"), 0, TEnding::None);
    EXPECT_EQ(failureOf([&] { club.writePasses({good, bad}); }), QStringLiteral("disk full"));
    EXPECT_EQ(journal().size(), 0);
    EXPECT_EQ(good->id, 0);
}

TEST(DatabaseFile, ADirectoryThatIsNotThere)
{
    const QString message = failureOf([] { TDatabase club(QStringLiteral("/no/such/place/club.sqlite")); });
    EXPECT_TRUE(message.startsWith(QStringLiteral("Cannot open database /no/such/place/club.sqlite: ")))
        << qPrintable(message);
}

TEST(DatabaseFile, AFileThatIsNoDatabase)
{
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("club.sqlite")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(4096, 'x'));
    file.close();
    EXPECT_NE(failureOf([&] { TDatabase club(file.fileName()); }), QString());
}

TEST(DatabaseFile, AFileOfANewerProgram)
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("club.sqlite"));
    {
        QSqlDatabase other = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("newer"));
        other.setDatabaseName(file);
        ASSERT_TRUE(other.open());
        execute(other, QStringLiteral("PRAGMA user_version = 99"));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("newer"));
    const QString message = failureOf([&] { TDatabase club(file); });
    EXPECT_TRUE(message.contains(QStringLiteral("version 99"))) << qPrintable(message);
}

TEST(DatabaseFile, OneThatMustBeThereIsNotMade)
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("club.sqlite"));
    EXPECT_EQ(failureOf([&] { TDatabase club(file, TOpening::Existing); }),
              QStringLiteral("The database %1 is not there; \"tnv5 init %1\" makes one").arg(file));
    EXPECT_FALSE(QFile::exists(file));

    QFile empty(file);
    ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
    EXPECT_EQ(failureOf([&] { TDatabase club(file, TOpening::Existing); }),
              QStringLiteral("Cannot open database %1: it is no club's database").arg(file));
    EXPECT_EQ(QFile(file).size(), 0);

    TDatabase made(file);
    EXPECT_EQ(failureOf([&] { TDatabase club(file, TOpening::Existing); }), QString());
}

TEST(DatabaseFile, InMemory)
{
    TDatabase club(QStringLiteral(":memory:"));
    EXPECT_EQ(club.gates().size(), 0);
}

} // namespace
} // namespace tnv5::host
