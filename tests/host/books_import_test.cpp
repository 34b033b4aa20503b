#include "books_fixture.h"
#include "tnv5/host/books/books_import.h"

namespace tnv5::host {
namespace {

class TBooksImportTest : public TBooksFixture
{
protected:
    int take(TBookKind kind, const QByteArray& text)
    {
        return importCsv(books, kind, text, QStringLiteral("in.csv"));
    }
    QString refused(TBookKind kind, const QByteArray& text)
    {
        return refusal([&] { take(kind, text); });
    }
};

TEST_F(TBooksImportTest, MembersWithAllThatComesWithThem)
{
    EXPECT_EQ(take(TBookKind::Members, "name,cards,from,to,zones,balance,suspended,inside,number\n"
                                       "\"Berg, Anna\",7;8,2026-01-01,2026-12-31,hall;pool,12.50,no,yes,40\n"
                                       "Boris Klein,,,,,,,,\n"),
              2);
    EXPECT_EQ(rowsOf(books.members()), QStringList({QStringLiteral("40,\"Berg, Anna\",no,yes,12.50,\"7;8\""),
                                                    QStringLiteral("41,Boris Klein,no,no,0.00,")}));
    EXPECT_EQ(rowsOf(books.memberships()),
              QStringList({QStringLiteral("1,40,\"Berg, Anna\",2026-01-01,2026-12-31,\"hall;pool\"")}));
}

TEST_F(TBooksImportTest, OnlyWhatIsNeeded)
{
    EXPECT_EQ(take(TBookKind::Members, "\xEF\xBB\xBFName\r\n  Anna Berg \r\n"), 1);
    EXPECT_EQ(take(TBookKind::Cards, "member,number\nAnna Berg,7\n1,8\n"), 2);
    EXPECT_EQ(take(TBookKind::Memberships, "member,from,to,zones\n1,2026-01-01,2026-01-31,hall\n"), 1);
    EXPECT_EQ(take(TBookKind::Zones, "name\ngym\n"), 1);
    EXPECT_EQ(take(TBookKind::Gates, "address,zone,direction\n101T,gym,out\n"), 1);
    EXPECT_EQ(take(TBookKind::Products, "name;price\ntea;3,20\n"), 1);
    EXPECT_EQ(rowsOf(books.cards()),
              QStringList({QStringLiteral("7,1,Anna Berg"), QStringLiteral("8,1,Anna Berg")}));
    EXPECT_EQ(rowsOf(books.products()), QStringList({QStringLiteral("tea,3.20")}));
    EXPECT_EQ(club.gateAt(QStringLiteral("101T"))->direction, TDirection::Out);
}

TEST_F(TBooksImportTest, WhatIsListedIsReadBack)
{
    books.addMember({.name = QStringLiteral("Berg, \"Anna\""),
                     .balance = -5,
                     .cards = {QStringLiteral("7"), QStringLiteral("8")}});
    books.addMembership(1, {kToday, kToday, {QStringLiteral("hall"), QStringLiteral("pool")}});
    books.addProduct(QStringLiteral("tea"), 320);
    TDatabase other(QStringLiteral(":memory:"));
    TBooks copy(other);
    const auto carry = [&](TBookKind kind, TBookTable (*list)(TBooks&)) {
        const QByteArray text = linesOf(list(books)).join(u'\n').toUtf8();
        importCsv(copy, kind, text, QStringLiteral("copy.csv"));
        EXPECT_EQ(linesOf(list(copy)), linesOf(list(books)));
    };
    carry(TBookKind::Zones, [](TBooks& from) { return from.zones(); });
    carry(TBookKind::Gates, [](TBooks& from) { return from.gates(); });
    carry(TBookKind::Products, [](TBooks& from) { return from.products(); });
    carry(TBookKind::Members, [](TBooks& from) { return from.members(); });
    carry(TBookKind::Memberships, [](TBooks& from) { return from.memberships(); });
    EXPECT_EQ(linesOf(copy.cards()), linesOf(books.cards()));
    EXPECT_EQ(refusal([&] {
                  importCsv(copy, TBookKind::Cards, linesOf(books.cards()).join(u'\n').toUtf8(),
                            QStringLiteral("x"));
              }),
              QStringLiteral("x:2:1: card 7 is there already, it is Berg, \"Anna\" (1)'s"));
}

TEST_F(TBooksImportTest, ErrorsSayWhere)
{
    books.addMember({.name = kAnna, .cards = {QStringLiteral("5")}});
    struct TCase
    {
        TBookKind kind;
        const char* text;
        const char* why;
    };
    const TCase cases[] = {
        {TBookKind::Members, "name,age\nx,5\n",
         "in.csv:1:6: \"age\" is no column here; there are name, number, suspended, inside, balance, cards, "
         "from, to, "
         "zones"},
        {TBookKind::Members, "name,name\nx,y\n", "in.csv:1:6: column \"name\" is there twice"},
        {TBookKind::Members, "number\n5\n", "in.csv:1:1: column \"name\" is missing"},
        {TBookKind::Members, "number,name\n5,x\n6,\n", "in.csv:3:3: a member needs a name"},
        {TBookKind::Members, "name,number\nx,1\n", "in.csv:2:1: member 1 is there already"},
        {TBookKind::Members, "name,number\nx,0\n", "in.csv:2:3: \"0\" is no number of a member"},
        {TBookKind::Members, "name,number\nx,1000000000000\n",
         "in.csv:2:3: \"1000000000000\" is no number of a member"},
        {TBookKind::Members, "name,balance\nx,much\n",
         "in.csv:2:3: \"much\" is no amount; write it like 12.50"},
        {TBookKind::Members, "name,suspended\nx,maybe\n", "in.csv:2:3: \"maybe\" is neither yes nor no"},
        {TBookKind::Members, "name,inside\nx,maybe\n", "in.csv:2:3: \"maybe\" is neither yes nor no"},
        {TBookKind::Members, "name,cards\nx,9\ny,8;9\n",
         "in.csv:3:3: card 9 is there already, it is x (2)'s"},
        {TBookKind::Members, "name,from,to,zones\nx,2026-01-01,2026-02-30,hall\n",
         "in.csv:2:14: \"2026-02-30\" is no day; write it like 2026-01-31"},
        {TBookKind::Members, "name,from,to,zones\nx,2026-01-01,,\n",
         "in.csv:2:14: \"\" is no day; write it like 2026-01-31"},
        {TBookKind::Members, "name,from,to,zones\nx,2026-01-01,2026-01-31,hall;hal\n",
         "in.csv:2:25: there is no zone \"hal\"; there are hall, pool"},
        {TBookKind::Members, "name,from,to,zones\nx,2026-02-01,2026-01-31,hall\n",
         "in.csv:2:3: a membership cannot end on 2026-01-31 when it begins on 2026-02-01"},
        {TBookKind::Members, "name,from,to\nx,2026-01-01,2026-01-31\n",
         "in.csv:2:1: a membership needs a zone that it opens"},
        {TBookKind::Members, "name\n2026\n",
         "in.csv:2:1: \"2026\" is a number; the name of a member is not one"},
        {TBookKind::Memberships, "member,from,to,zones\n1,2026-01-01,2026-01-31,;\n",
         "in.csv:2:25: a membership needs a zone that it opens"},
        {TBookKind::Gates, "address,zone,direction\n05a,hall,in\n",
         "in.csv:2:1: \"05a\" is no gate's address: two digits and a capital letter such as 01A, or four "
         "digits "
         "or capital letters such as 101T, and no I at the end (a display)"},
        {TBookKind::Cards, "number,member\n9,Nobody\n", "in.csv:2:3: there is no member \"Nobody\""},
        {TBookKind::Cards, "number,member\n5,1\n",
         "in.csv:2:1: card 5 is there already, it is Anna Berg (1)'s"},
        {TBookKind::Memberships, "member,from,to,zones\n9,2026-01-01,2026-01-01,hall\n",
         "in.csv:2:1: there is no member 9"},
        {TBookKind::Memberships, "member,from,to\n1,2026-01-01,2026-01-31\n",
         "in.csv:1:1: column \"zones\" is missing"},
        {TBookKind::Zones, "name\npool\n", "in.csv:2:1: zone \"pool\" is there already"},
        {TBookKind::Gates, "address,zone,direction\n05A,hall,up\n",
         "in.csv:2:10: \"up\" is no direction: in, out or inner (a door inside the club)"},
        {TBookKind::Gates, "address,zone,direction\n01A,hall,in\n", "in.csv:2:1: gate 01A is there already"},
        {TBookKind::Products, "name,price\ntea,x\n", "in.csv:2:5: \"x\" is no amount; write it like 12.50"},
        {TBookKind::Products, "name,price\n\"two\nlines\",1\n",
         "in.csv:2:1: a name cannot hold control characters"},
    };
    for (const TCase& each : cases) {
        EXPECT_EQ(refused(each.kind, each.text), QString::fromUtf8(each.why)) << each.text;
    }
}

TEST_F(TBooksImportTest, NothingIsImportedWhenOneLineIsWrong)
{
    EXPECT_NE(refused(TBookKind::Members, "name,cards\nAnna,1\nBoris,2\nClara,1\n"), QString());
    EXPECT_TRUE(books.members().rows.isEmpty());
    EXPECT_TRUE(books.cards().rows.isEmpty());
    EXPECT_EQ(take(TBookKind::Members, "name,cards\nAnna,1\nBoris,2\nClara,3\n"), 3);
}

TEST_F(TBooksImportTest, ALockedDatabaseIsToldAndLeavesNothing)
{
    club.setBusyTimeout(10);
    whileLocked([&] { EXPECT_THROW(take(TBookKind::Zones, "name\ngym\n"), EDatabase); });
    EXPECT_EQ(take(TBookKind::Zones, "name\ngym\n"), 1);
}

} // namespace
} // namespace tnv5::host
