#include "club_fixture.h"
#include "tnv5/host/books/schema.h"

namespace tnv5::host {
namespace {

class TSchemaTest : public ::testing::Test
{
protected:
    TSchemaTest()
    {
        database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("schema"));
        database.setDatabaseName(QStringLiteral(":memory:"));
        database.open();
    }
    ~TSchemaTest() override
    {
        database = {};
        QSqlDatabase::removeDatabase(QStringLiteral("schema"));
    }

    int version()
    {
        TStatement statement(database, QStringLiteral("PRAGMA user_version"));
        TRows rows = statement.run();
        return rows.next() ? rows.value(0).toInt() : -1;
    }

    qint64 number(const QByteArray& sql)
    {
        TStatement statement(database, QString::fromLatin1(sql));
        return statement.run().number();
    }

    QSqlDatabase database;
};

TEST_F(TSchemaTest, StepsAreTakenFromTheVersionOfTheFile)
{
    const QStringList first = {QStringLiteral("CREATE TABLE a (x)")};
    const QStringList second = {QStringLiteral("ALTER TABLE a ADD COLUMN y"),
                                QStringLiteral("INSERT INTO a VALUES (1, 2)")};
    migrate(database, {first});
    EXPECT_EQ(version(), 1);
    migrate(database, {first, second});
    EXPECT_EQ(version(), 2);
    migrate(database, {first, second});
    TStatement count(database, QStringLiteral("SELECT count(*) FROM a"));
    TRows rows = count.run();
    ASSERT_TRUE(rows.next());
    EXPECT_EQ(rows.value(0).toInt(), 1) << "each step once";
}

TEST_F(TSchemaTest, MembersOfAnOlderFileHaveABalance)
{
    migrate(database, {schemaSteps().first()});
    execute(database, QStringLiteral("INSERT INTO member (name) VALUES ('Anna Berg')"));
    migrate(database, schemaSteps());
    EXPECT_EQ(version(), schemaSteps().size());
    TStatement balance(database, QStringLiteral("SELECT balance FROM member"));
    TRows rows = balance.run();
    ASSERT_TRUE(rows.next());
    EXPECT_EQ(rows.value(0).toInt(), 0);
}

TEST_F(TSchemaTest, OlderFilesGetPayments)
{
    migrate(database, schemaSteps().first(3));
    migrate(database, schemaSteps());
    execute(database, QStringLiteral("INSERT INTO payment (began, cents) VALUES ('x', 5)"));
    EXPECT_NE(failureOf([&] {
                  execute(database, QStringLiteral("INSERT INTO payment (began, cents, outcome)"
                                                   " VALUES ('x', 5, 'perhaps')"));
              }),
              QString());
    EXPECT_NE(failureOf([&] {
                  execute(database, QStringLiteral("INSERT INTO payment (began, cents) VALUES ('x', 0)"));
              }),
              QString());
}

TEST_F(TSchemaTest, AFailedStepChangesNothing)
{
    const QStringList first = {QStringLiteral("CREATE TABLE a (x)")};
    const QStringList broken = {QStringLiteral("CREATE TABLE b (x)"), QStringLiteral("nonsense")};
    EXPECT_NE(failureOf([&] { migrate(database, {first, broken}); }), QString());
    EXPECT_EQ(version(), 0);
    migrate(database, {first}); // the table is not there yet
    EXPECT_EQ(version(), 1);
}

TEST_F(TSchemaTest, PassesOfAnOlderFileStay)
{
    migrate(database, schemaSteps().first(5));
    execute(database, QStringLiteral("INSERT INTO zone VALUES ('hall')"));
    execute(database, QStringLiteral("INSERT INTO member (name) VALUES ('Anna Berg'), ('')"));
    execute(database, QStringLiteral("INSERT INTO membership (member, valid_from, valid_to)"
                                     " VALUES (1, '2026-01-01', '2026-12-31')"));
    execute(database,
            QStringLiteral("INSERT INTO pass (began, card, member, gate, result, ending)"
                           " VALUES ('2026-01-05 12:00:00.000', '1', 1, '01A', 'opened', 'passed')"));
    migrate(database, schemaSteps());
    EXPECT_EQ(version(), 6);
    EXPECT_EQ(number("SELECT count(*) FROM pass WHERE who = '' AND note = '' AND host = 0 AND member = 1"),
              1);
    EXPECT_EQ(number("SELECT count(*) FROM outage"), 0);
    EXPECT_EQ(number("SELECT count(*) FROM member"), 2) << "what is there already is not judged";
}

/// A club as other programs see it: nobody has asked for foreign keys.
class TSchemaGuardTest : public TSchemaTest
{
protected:
    TSchemaGuardTest()
    {
        migrate(database, schemaSteps());
        execute(database, QStringLiteral("PRAGMA foreign_keys = OFF"));
        for (const char* sql :
             {"INSERT INTO zone VALUES ('hall'), ('pool')", "INSERT INTO gate VALUES ('01A', 'hall', 'in')",
              "INSERT INTO member (id, name) VALUES (1, 'Anna Berg')", "INSERT INTO card VALUES ('77', 1)",
              "INSERT INTO membership VALUES (1, 1, '2026-01-01', '2026-12-31')",
              "INSERT INTO membership_zone VALUES (1, 'hall')", "INSERT INTO product VALUES ('tea', 100)",
              "INSERT INTO pass (began, card, member, gate, result) VALUES ('x', '77', 1, '01A', 'opened')",
              "INSERT INTO sale VALUES (1, 'x', '77', 1, 'tea', 100, 10, 1)",
              "INSERT INTO lamp_time (ordered, lamp, card, member, minutes, cents)"
              " VALUES ('x', 'Sun', '77', 1, 1, 1)"}) {
            execute(database, QString::fromLatin1(sql));
        }
    }
};

struct TForbidden
{
    const char* sql;
    const char* why;
};

class TSchemaForbids : public TSchemaGuardTest, public ::testing::WithParamInterface<TForbidden>
{
};

TEST_P(TSchemaForbids, WhateverProgramWrites)
{
    EXPECT_EQ(failureOf([&] { execute(database, QString::fromLatin1(GetParam().sql)); }),
              QString::fromLatin1(GetParam().why));
}

constexpr TForbidden kForbidden[] = {
    {"INSERT INTO gate VALUES ('02A', 'hal', 'in')", "there is no such zone"},
    {"UPDATE gate SET zone = 'hal'", "there is no such zone"},
    {"INSERT INTO membership_zone VALUES (1, 'hal')", "there is no such zone"},
    {"UPDATE membership_zone SET zone = 'hal'", "there is no such zone"},
    {"INSERT INTO membership_zone VALUES (9, 'hall')", "there is no such membership"},
    {"UPDATE membership_zone SET membership = 9", "there is no such membership"},
    {"INSERT INTO card VALUES ('78', 9)", "there is no such member"},
    {"UPDATE card SET member = 9", "there is no such member"},
    {"INSERT INTO membership VALUES (2, 9, '2026-01-01', '2026-12-31')", "there is no such member"},
    {"UPDATE membership SET member = 9", "there is no such member"},
    {"INSERT INTO pass (began, card, member, gate, result) VALUES ('x', '77', 9, '01A', 'opened')",
     "there is no such member"},
    {"UPDATE pass SET member = 9", "there is no such member"},
    {"INSERT INTO sale VALUES (2, 'x', '77', 9, 'tea', 100, 10, 1)", "there is no such member"},
    {"UPDATE sale SET member = 9", "there is no such member"},
    {"INSERT INTO lamp_time (ordered, lamp, card, member, minutes, cents) VALUES ('x', 'S', '7', 9, 1, 1)",
     "there is no such member"},
    {"UPDATE lamp_time SET member = 9", "there is no such member"},
    {"DELETE FROM zone WHERE name = 'hall'", "the zone is in use"},
    {"UPDATE zone SET name = 'saal' WHERE name = 'hall'", "the zone is in use"},
    {"UPDATE member SET id = 2", "a member keeps its number"},
    {"UPDATE membership SET id = 2", "a membership keeps its number"},
    {"INSERT INTO member (name) VALUES ('')", "a member has a name"},
    {"INSERT INTO member (name) VALUES (' \t\n')", "a member has a name"},
    {"UPDATE member SET name = ''", "a member has a name"},
    {"INSERT INTO zone VALUES ('')", "a zone has a name"},
    {"UPDATE zone SET name = ' ' WHERE name = 'pool'", "a zone has a name"},
    {"INSERT INTO product VALUES ('', 1)", "a product has a name"},
    {"UPDATE product SET name = ''", "a product has a name"},
    {"INSERT INTO card VALUES ('', 1)", "a card has a number"},
    {"UPDATE card SET number = ''", "a card has a number"},
    {"INSERT INTO gate VALUES ('', 'hall', 'in')", "a gate has an address"},
    {"UPDATE gate SET address = ''", "a gate has an address"},
    {"INSERT INTO membership VALUES (2, 1, '2026-02-30', '2026-12-31')",
     "valid_from is no date such as 2026-01-31"},
    {"INSERT INTO membership VALUES (2, 1, '2026-01-01', '31.12.2026')",
     "valid_to is no date such as 2026-01-31"},
    {"INSERT INTO membership VALUES (2, 1, '2026-1-1', '2026-12-31')",
     "valid_from is no date such as 2026-01-31"},
    {"UPDATE membership SET valid_from = 'now'", "valid_from is no date such as 2026-01-31"},
    {"UPDATE membership SET valid_to = '2026-11-31'", "valid_to is no date such as 2026-01-31"},
};

INSTANTIATE_TEST_SUITE_P(Rows, TSchemaForbids, ::testing::ValuesIn(kForbidden));

TEST_F(TSchemaGuardTest, WhatIsRightMayBeWritten)
{
    for (const char* sql :
         {"UPDATE zone SET name = 'baths' WHERE name = 'pool'", "UPDATE gate SET zone = 'baths'",
          "DELETE FROM membership_zone", "DELETE FROM zone WHERE name = 'hall'",
          "UPDATE member SET name = 'Anna Klein', balance = 5", "UPDATE pass SET member = NULL",
          "UPDATE card SET number = '78'", "UPDATE membership SET valid_to = '2028-02-29'"}) {
        EXPECT_EQ(failureOf([&] { execute(database, QString::fromLatin1(sql)); }), QString()) << sql;
    }
}

TEST_F(TSchemaGuardTest, AMemberGoesWithItsCardsAndStaysOutOfTheBooks)
{
    execute(database, QStringLiteral("DELETE FROM member"));
    EXPECT_EQ(number("SELECT count(*) FROM card"), 0);
    EXPECT_EQ(number("SELECT count(*) FROM membership"), 0);
    EXPECT_EQ(number("SELECT count(*) FROM membership_zone"), 0);
    for (const char* table : {"pass", "sale", "lamp_time"}) {
        EXPECT_EQ(number(QByteArray("SELECT count(*) FROM ") + table + " WHERE member IS NULL"), 1) << table;
    }
}

} // namespace
} // namespace tnv5::host
