#include "books_fixture.h"

namespace tnv5::host {
namespace {

using TBooksTest = TBooksFixture;

TEST(BooksReading, Days)
{
    EXPECT_EQ(readDay(QStringLiteral("2028-02-29")), QDate(2028, 2, 29));
    for (const char* text :
         {"2026-02-30", "2026-2-3", "31.12.2026", "", "2026-01-01 ", "2026-01-01T00:00:00", "today"}) {
        EXPECT_THROW(readDay(QString::fromLatin1(text)), EBooks) << text;
    }
}

TEST(BooksReading, Amounts)
{
    EXPECT_EQ(readAmount(QStringLiteral("12.50")), 1'250);
    EXPECT_EQ(readAmount(QStringLiteral("12,5")), 1'250);
    EXPECT_EQ(readAmount(QStringLiteral("-0.05")), -5);
    EXPECT_EQ(readAmount(QStringLiteral("0")), 0);
    EXPECT_EQ(readAmount(QStringLiteral("999999999.99")), 99'999'999'999);
    for (const char* text : {"", "1.234", "1e3", "+5", "--5", "5 EUR", ".5", "1000000000"}) {
        EXPECT_THROW(readAmount(QString::fromLatin1(text)), EBooks) << text;
    }
}

TEST(BooksReading, FlagsAndDirections)
{
    for (const char* text : {"yes", "true", "1"}) {
        EXPECT_TRUE(readFlag(QString::fromLatin1(text)));
    }
    for (const char* text : {"no", "false", "0"}) {
        EXPECT_FALSE(readFlag(QString::fromLatin1(text)));
    }
    EXPECT_THROW(readFlag(QStringLiteral("perhaps")), EBooks);
    EXPECT_EQ(readDirection(QStringLiteral("inner")), TDirection::Inner);
    EXPECT_THROW(readDirection(QStringLiteral("up")), EBooks);
}

TEST_F(TBooksTest, MembersFromComingToGoing)
{
    const qint64 anna = books.addMember({.name = QStringLiteral("  Anna Berg "), .balance = 1'250});
    const qint64 boris = books.addMember({.name = QStringLiteral("Boris"),
                                          .suspended = true,
                                          .cards = {QStringLiteral("8"), QStringLiteral("7")}});
    EXPECT_EQ(linesOf(books.members()),
              QStringList({QStringLiteral("number,name,suspended,inside,balance,cards"),
                           QStringLiteral("1,Anna Berg,no,no,12.50,"),
                           QStringLiteral("2,Boris,yes,no,0.00,\"7;8\"")}));
    EXPECT_EQ(books.memberOf(QStringLiteral("2")), boris);
    EXPECT_EQ(books.memberOf(kAnna), anna);
    books.changeMember(boris, {.name = QStringLiteral("Boris Klein"), .suspended = false});
    books.changeMember(anna, {.credit = -250});
    EXPECT_EQ(rowsOf(books.members()), QStringList({QStringLiteral("1,Anna Berg,no,no,10.00,"),
                                                    QStringLiteral("2,Boris Klein,no,no,0.00,\"7;8\"")}));
    books.changeMember(anna, {.inside = true, .balance = 0});
    EXPECT_EQ(rowsOf(books.members())[0], QStringLiteral("1,Anna Berg,no,yes,0.00,"));
    books.removeMember(boris, false);
    EXPECT_EQ(books.members().rows.size(), 1);
    EXPECT_TRUE(books.cards().rows.isEmpty());
}

TEST_F(TBooksTest, MembersThatCannotBe)
{
    const auto adding = [&](const QString& name) {
        return refusal([&] { books.addMember({.name = name}); });
    };
    EXPECT_EQ(adding(QString()), QStringLiteral("a member needs a name"));
    EXPECT_EQ(adding(QStringLiteral(" \t ")), QStringLiteral("a member needs a name"));
    EXPECT_EQ(adding(QStringLiteral("a\nb")), QStringLiteral("a name cannot hold control characters"));
    EXPECT_EQ(adding(QString(201, u'x')), QStringLiteral("a name has 200 characters at most"));
    EXPECT_EQ(adding(QString(200, u'x')), QString());
    EXPECT_EQ(refusal([&] { books.memberOf(QStringLiteral("Nobody")); }),
              QStringLiteral("there is no member \"Nobody\""));
    EXPECT_EQ(refusal([&] { books.memberOf(QStringLiteral("99")); }),
              QStringLiteral("there is no member 99"));
    EXPECT_EQ(refusal([&] { books.changeMember(99, {.inside = true}); }),
              QStringLiteral("there is no member 99"));
    EXPECT_EQ(refusal([&] { books.removeMember(99, true); }), QStringLiteral("there is no member 99"));
    EXPECT_EQ(refusal([&] { books.addMember({.name = kAnna, .number = 1}); }),
              QStringLiteral("member 1 is there already"));
    books.addMember({.name = kAnna});
    books.addMember({.name = kAnna});
    EXPECT_EQ(refusal([&] { books.memberOf(kAnna); }),
              QStringLiteral("there are 2 members \"Anna Berg\"; say which by number: 2, 3"));
}

TEST_F(TBooksTest, AMemberIsAddedAsAWhole)
{
    books.addMember({.name = kAnna, .cards = {QStringLiteral("7")}});
    EXPECT_EQ(refusal([&] {
                  books.addMember(
                      {.name = QStringLiteral("Boris"), .cards = {QStringLiteral("8"), QStringLiteral("7")}});
              }),
              QStringLiteral("card 7 is there already, it is Anna Berg (1)'s"));
    EXPECT_EQ(books.members().rows.size(), 1);
    EXPECT_EQ(books.cards().rows.size(), 1);
    books.addMember({.name = QStringLiteral("Boris")}); // the transaction before has ended
}

TEST_F(TBooksTest, RemovingAMemberWithCare)
{
    const qint64 anna = books.addMember({.name = kAnna, .inside = true, .balance = -5});
    EXPECT_EQ(refusal([&] { books.removeMember(anna, false); }),
              QStringLiteral(
                  "Anna Berg (1) is inside and could not get out; --force removes the member all the same"));
    books.changeMember(anna, {.inside = false});
    EXPECT_EQ(
        refusal([&] { books.removeMember(anna, false); }),
        QStringLiteral("Anna Berg (1) has a balance of -0.05; --force removes the member all the same"));
    books.changeMember(anna, {.inside = true});
    books.removeMember(anna, true);
    EXPECT_TRUE(books.members().rows.isEmpty());
}

TEST_F(TBooksTest, Cards)
{
    const qint64 anna = books.addMember({.name = kAnna});
    const qint64 boris = books.addMember({.name = QStringLiteral("Boris")});
    books.addCard(QStringLiteral("7"), anna);
    EXPECT_EQ(linesOf(books.cards()),
              QStringList({QStringLiteral("number,member,name"), QStringLiteral("7,1,Anna Berg")}));
    books.giveCard(QStringLiteral("7"), boris, false);
    books.renumberCard(QStringLiteral("7"), QStringLiteral("8"));
    EXPECT_EQ(rowsOf(books.cards()), QStringList({QStringLiteral("8,2,Boris")}));
    books.removeCard(QStringLiteral("8"), false);
    EXPECT_TRUE(books.cards().rows.isEmpty());

    for (const QString& bad : {QString(), QStringLiteral("a b"), QStringLiteral("1;2"),
                               QStringLiteral("ключ"), QString(65, u'1')}) {
        EXPECT_TRUE(refusal([&] { books.addCard(bad, anna); }).contains(QStringLiteral("is no card number")))
            << bad.toStdString();
    }
    const QString none = QStringLiteral("there is no card 8");
    EXPECT_EQ(refusal([&] { books.removeCard(QStringLiteral("8"), true); }), none);
    EXPECT_EQ(refusal([&] { books.giveCard(QStringLiteral("8"), anna, true); }), none);
    EXPECT_EQ(refusal([&] { books.renumberCard(QStringLiteral("8"), QStringLiteral("9")); }), none);
    EXPECT_EQ(refusal([&] { books.addCard(QStringLiteral("8"), 99); }),
              QStringLiteral("there is no member 99"));
}

TEST_F(TBooksTest, TheOnlyCardOfSomebodyInsideStays)
{
    const qint64 anna = books.addMember({.name = kAnna, .inside = true, .cards = {QStringLiteral("7")}});
    const qint64 boris = books.addMember({.name = QStringLiteral("Boris")});
    const QString why =
        QStringLiteral("7 is the only card of Anna Berg (1), who is inside and could not get out; --force "
                       "does it all the same");
    EXPECT_EQ(refusal([&] { books.removeCard(QStringLiteral("7"), false); }), why);
    EXPECT_EQ(refusal([&] { books.giveCard(QStringLiteral("7"), boris, false); }), why);
    EXPECT_EQ(refusal([&] { books.giveCard(QStringLiteral("7"), anna, false); }), QString());
    books.addCard(QStringLiteral("8"), anna);
    books.giveCard(QStringLiteral("8"), boris, false);
    books.removeCard(QStringLiteral("7"), true);
    EXPECT_EQ(rowsOf(books.cards()), QStringList({QStringLiteral("8,2,Boris")}));
}

// What is a number is taken for the member of that number.
TEST_F(TBooksTest, ANumberIsNoName)
{
    const qint64 anna = books.addMember({.name = kAnna});
    for (const char* name : {"2026", " 2026 ", "-1", "+7", "99999999999999999999"}) {
        const QString why = QStringLiteral("\"%1\" is a number; the name of a member is not one")
                                .arg(QString::fromLatin1(name).trimmed());
        EXPECT_EQ(refusal([&] { books.addMember({.name = QString::fromLatin1(name)}); }), why);
        EXPECT_EQ(refusal([&] { books.changeMember(anna, {.name = QString::fromLatin1(name)}); }), why);
    }
    EXPECT_EQ(books.memberOf(QString::number(books.addMember({.name = QStringLiteral("Anna 2")}))), 2);
}

TEST_F(TBooksTest, Memberships)
{
    const qint64 anna = books.addMember(
        {.name = kAnna,
         .membership = TMembership{kToday, kToday, {QStringLiteral("pool"), QStringLiteral("hall")}}});
    const qint64 second = books.addMembership(anna, {kToday, kToday.addDays(30), {QStringLiteral("pool")}});
    EXPECT_EQ(linesOf(books.memberships()),
              QStringList({QStringLiteral("number,member,name,from,to,zones"),
                           QStringLiteral("1,1,Anna Berg,2026-01-05,2026-01-05,\"hall;pool\""),
                           QStringLiteral("2,1,Anna Berg,2026-01-05,2026-02-04,pool")}));
    books.changeMembership(second, QDate(2026, 1, 1), {}, QStringList{QStringLiteral("hall")});
    books.changeMembership(1, {}, QDate(2026, 1, 9), {});
    EXPECT_EQ(rowsOf(books.memberships(anna)),
              QStringList({QStringLiteral("1,1,Anna Berg,2026-01-05,2026-01-09,\"hall;pool\""),
                           QStringLiteral("2,1,Anna Berg,2026-01-01,2026-02-04,hall")}));
    EXPECT_TRUE(books.memberships(99).rows.isEmpty());
    EXPECT_EQ(refusal([&] { books.changeMembership(1, QDate(2026, 2, 1), {}, {}); }),
              QStringLiteral("a membership cannot end on 2026-01-09 when it begins on 2026-02-01"));
    EXPECT_EQ(refusal([&] {
                  books.addMembership(anna, {kToday, kToday.addDays(-1), {}});
              }),
              QStringLiteral("a membership cannot end on 2026-01-04 when it begins on 2026-01-05"));
    EXPECT_EQ(refusal([&] {
                  books.addMembership(anna, {kToday, kToday, {QStringLiteral("hal")}});
              }),
              QStringLiteral("there is no zone \"hal\"; there are hall, pool"));
    EXPECT_EQ(refusal([&] {
                  books.addMembership(99, {kToday, kToday, {}});
              }),
              QStringLiteral("there is no member 99"));
    const QString noZone = QStringLiteral("a membership needs a zone that it opens");
    EXPECT_EQ(refusal([&] { books.addMembership(anna, {kToday, kToday, {}}); }), noZone);
    EXPECT_EQ(refusal([&] { books.changeMembership(1, {}, {}, QStringList()); }), noZone);
    EXPECT_EQ(books.memberships().rows.size(), 2) << "as a whole or not at all";
    books.removeMembership(1);
    EXPECT_EQ(refusal([&] { books.removeMembership(1); }), QStringLiteral("there is no membership 1"));
    EXPECT_EQ(refusal([&] { books.changeMembership(1, {}, {}, {}); }),
              QStringLiteral("there is no membership 1"));
}

TEST_F(TBooksTest, Zones)
{
    EXPECT_EQ(linesOf(books.zones()),
              QStringList({QStringLiteral("name"), QStringLiteral("hall"), QStringLiteral("pool")}));
    const qint64 anna =
        books.addMember({.name = kAnna, .membership = TMembership{kToday, kToday, {QStringLiteral("hall")}}});
    books.renameZone(QStringLiteral("hall"), QStringLiteral("gym"));
    EXPECT_EQ(rowsOf(books.zones()), QStringList({QStringLiteral("gym"), QStringLiteral("pool")}));
    EXPECT_EQ(club.gateAt(QStringLiteral("01A"))->zone, QStringLiteral("gym"));
    EXPECT_EQ(books.memberships(anna).rows[0][5], QVariant(QStringList{QStringLiteral("gym")}));
    EXPECT_EQ(refusal([&] { books.removeZone(QStringLiteral("gym")); }),
              QStringLiteral("zone \"gym\" is in use: gates 4, memberships 1"));
    books.renameZone(QStringLiteral("gym"), QStringLiteral("gym"));
    books.removeZone(QStringLiteral("pool"));
    EXPECT_EQ(refusal([&] { books.removeZone(QStringLiteral("pool")); }),
              QStringLiteral("there is no zone \"pool\"; there are gym"));
    EXPECT_EQ(refusal([&] { books.addZone(QStringLiteral("gym")); }),
              QStringLiteral("zone \"gym\" is there already"));
    EXPECT_EQ(refusal([&] { books.addZone(QStringLiteral(" ")); }), QStringLiteral("a zone needs a name"));
    for (const char* name : {"a:b", "a;b"}) {
        EXPECT_EQ(refusal([&] { books.addZone(QString::fromLatin1(name)); }),
                  QStringLiteral("the name of a zone cannot hold \":\" or \";\""));
    }
}

TEST_F(TBooksTest, Gates)
{
    books.addGate({QStringLiteral("101T"), QStringLiteral("pool"), TDirection::Out});
    books.changeGate(QStringLiteral("01A"), QStringLiteral("pool"), TDirection::Inner);
    books.removeGate(QStringLiteral("02A"));
    EXPECT_EQ(linesOf(books.gates()),
              QStringList({QStringLiteral("address,zone,direction"), QStringLiteral("01A,pool,inner"),
                           QStringLiteral("03D,hall,inner"), QStringLiteral("04A,hall,in"),
                           QStringLiteral("101T,pool,out")}));
    EXPECT_EQ(refusal([&] {
                  books.addGate({QStringLiteral("01A"), QStringLiteral("hall"), TDirection::In});
              }),
              QStringLiteral("gate 01A is there already"));
    EXPECT_EQ(refusal([&] {
                  books.addGate({QStringLiteral("05A"), QStringLiteral("hal"), TDirection::In});
              }),
              QStringLiteral("there is no zone \"hal\"; there are hall, pool"));
    for (const char* address :
         {"", "1A", "A01", "01A/", "0101T", "01 ", "01a", "101t", "a01T", "101I", "01A\n"}) {
        EXPECT_TRUE(refusal([&] {
                        books.addGate({QString::fromLatin1(address), QStringLiteral("hall"), TDirection::In});
                    }).contains(QStringLiteral("is no gate's address")))
            << address;
    }
    const QString none = QStringLiteral("there is no gate 02A");
    EXPECT_EQ(refusal([&] { books.changeGate(QStringLiteral("02A"), {}, TDirection::In); }), none);
    EXPECT_EQ(refusal([&] { books.removeGate(QStringLiteral("02A")); }), none);
}

TEST_F(TBooksTest, Products)
{
    books.addProduct(QStringLiteral("tea"), 320);
    books.addProduct(QStringLiteral("nuts"), 1'250);
    books.changeProduct(QStringLiteral("tea"), {}, 300);
    books.changeProduct(QStringLiteral("nuts"), QStringLiteral("almonds"), {});
    EXPECT_EQ(linesOf(books.products()),
              QStringList({QStringLiteral("name,price"), QStringLiteral("almonds,12.50"),
                           QStringLiteral("tea,3.00")}));
    EXPECT_EQ(refusal([&] { books.addProduct(QStringLiteral("tea"), 1); }),
              QStringLiteral("product \"tea\" is there already"));
    EXPECT_EQ(refusal([&] { books.changeProduct(QStringLiteral("tea"), QStringLiteral("almonds"), {}); }),
              QStringLiteral("product \"almonds\" is there already"));
    EXPECT_EQ(refusal([&] { books.addProduct(QString(), 1); }), QStringLiteral("a product needs a name"));
    const QString price = QStringLiteral("a price is 0 to 10000000.00 a kilogram");
    EXPECT_EQ(refusal([&] { books.addProduct(QStringLiteral("x"), -1); }), price);
    EXPECT_EQ(refusal([&] { books.changeProduct(QStringLiteral("tea"), {}, 1'000'000'001); }), price);
    books.removeProduct(QStringLiteral("tea"));
    EXPECT_EQ(refusal([&] { books.removeProduct(QStringLiteral("tea")); }),
              QStringLiteral("there is no product \"tea\""));
    EXPECT_EQ(refusal([&] { books.changeProduct(QStringLiteral("tea"), {}, 1); }),
              QStringLiteral("there is no product \"tea\""));
}

TEST_F(TBooksTest, WhoIsInside)
{
    const qint64 anna = books.addMember({.name = kAnna});
    const auto pass = [&](const char* gate, TDirection direction, TEnding ending) {
        auto made = std::make_shared<TPass>();
        made->began = platform::Now();
        clock.advance(1'000);
        made->ended = platform::Now();
        made->gate = QString::fromLatin1(gate);
        made->member = anna;
        made->direction = direction;
        made->ending = ending;
        club.writePasses({made});
    };
    pass("01A", TDirection::In, TEnding::Passed);
    const QString since = timeForPrograms(platform::Now());
    pass("03D", TDirection::Inner, TEnding::Passed);
    pass("04A", TDirection::In, TEnding::TimedOut);
    books.addMember({.name = QStringLiteral("Boris"), .inside = true}); // nobody knows how
    books.addMember({.name = QStringLiteral("Clara")});
    EXPECT_EQ(linesOf(books.inside()), QStringList({QStringLiteral("member,name,since,gate,zone"),
                                                    QStringLiteral("1,Anna Berg,%1,01A,hall").arg(since),
                                                    QStringLiteral("2,Boris,,,")}));
    pass("02A", TDirection::Out, TEnding::Passed);
    EXPECT_EQ(rowsOf(books.inside()), QStringList({QStringLiteral("2,Boris,,,")}));
}

} // namespace
} // namespace tnv5::host
