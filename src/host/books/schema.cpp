#include "tnv5/host/books/schema.h"

#include "tnv5/host/books/statement.h"

namespace tnv5::host {

namespace {

const QStringList kVersion1 = {
    QStringLiteral("CREATE TABLE zone (name TEXT PRIMARY KEY) WITHOUT ROWID"),
    QStringLiteral("CREATE TABLE gate ("
                   " address TEXT PRIMARY KEY,"
                   " zone TEXT NOT NULL REFERENCES zone(name),"
                   " direction TEXT NOT NULL CHECK (direction IN ('in', 'out', 'inner'))"
                   ") WITHOUT ROWID"),
    QStringLiteral("CREATE TABLE member ("
                   " id INTEGER PRIMARY KEY,"
                   " name TEXT NOT NULL,"
                   " suspended INTEGER NOT NULL DEFAULT 0 CHECK (suspended IN (0, 1)),"
                   " inside INTEGER NOT NULL DEFAULT 0 CHECK (inside IN (0, 1)))"),
    QStringLiteral("CREATE TABLE card ("
                   " number TEXT PRIMARY KEY,"
                   " member INTEGER NOT NULL REFERENCES member(id) ON DELETE CASCADE"
                   ") WITHOUT ROWID"),
    QStringLiteral("CREATE INDEX card_member ON card(member)"),
    QStringLiteral("CREATE TABLE membership ("
                   " id INTEGER PRIMARY KEY,"
                   " member INTEGER NOT NULL REFERENCES member(id) ON DELETE CASCADE,"
                   " valid_from TEXT NOT NULL,"
                   " valid_to TEXT NOT NULL,"
                   " CHECK (valid_from <= valid_to))"),
    QStringLiteral("CREATE INDEX membership_member ON membership(member)"),
    QStringLiteral("CREATE TABLE membership_zone ("
                   " membership INTEGER NOT NULL REFERENCES membership(id) ON DELETE CASCADE,"
                   " zone TEXT NOT NULL REFERENCES zone(name),"
                   " PRIMARY KEY (membership, zone)"
                   ") WITHOUT ROWID"),
    // The gate is kept as it was read: a line may name one that nobody has entered.
    QStringLiteral("CREATE TABLE pass ("
                   " id INTEGER PRIMARY KEY,"
                   " began TEXT NOT NULL,"
                   " ended TEXT NOT NULL DEFAULT '',"
                   " card TEXT NOT NULL,"
                   " member INTEGER REFERENCES member(id) ON DELETE SET NULL,"
                   " gate TEXT NOT NULL,"
                   " result TEXT NOT NULL CHECK (result IN ('opened', 'refused')),"
                   " reason TEXT NOT NULL DEFAULT '',"
                   " ending TEXT NOT NULL DEFAULT '')"),
    QStringLiteral("CREATE INDEX pass_began ON pass(began)"),
    QStringLiteral("CREATE INDEX pass_member ON pass(member)"),
};

const QStringList kVersion2 = {
    QStringLiteral("ALTER TABLE member ADD COLUMN balance INTEGER NOT NULL DEFAULT 0"), // cents
};

const QStringList kVersion3 = {
    QStringLiteral("CREATE TABLE product ("
                   " name TEXT PRIMARY KEY,"
                   " cents_per_kg INTEGER NOT NULL CHECK (cents_per_kg BETWEEN 0 AND 1000000000)"
                   ") WITHOUT ROWID"),
    // Product and price are kept as they were when it was sold.
    QStringLiteral("CREATE TABLE sale ("
                   " id INTEGER PRIMARY KEY,"
                   " sold TEXT NOT NULL,"
                   " card TEXT NOT NULL,"
                   " member INTEGER REFERENCES member(id) ON DELETE SET NULL,"
                   " product TEXT NOT NULL,"
                   " cents_per_kg INTEGER NOT NULL,"
                   " grams INTEGER NOT NULL CHECK (grams > 0),"
                   " cents INTEGER NOT NULL)"),
    QStringLiteral("CREATE INDEX sale_member ON sale(member)"),
};

// The card is masked before it comes here.
const QStringList kVersion4 = {
    QStringLiteral("CREATE TABLE payment ("
                   " id INTEGER PRIMARY KEY,"
                   " began TEXT NOT NULL,"
                   " ended TEXT NOT NULL DEFAULT '',"
                   " cents INTEGER NOT NULL CHECK (cents > 0),"
                   " discount INTEGER NOT NULL DEFAULT 0 CHECK (discount >= 0),"
                   " card TEXT NOT NULL DEFAULT '',"
                   " card_type TEXT NOT NULL DEFAULT '',"
                   " answer TEXT NOT NULL DEFAULT '',"
                   " outcome TEXT NOT NULL DEFAULT ''"
                   "  CHECK (outcome IN ('', 'approved', 'declined', 'cancelled', 'unknown')),"
                   " reason TEXT NOT NULL DEFAULT '')"),
    QStringLiteral("CREATE INDEX payment_outcome ON payment(outcome)"),
};

const QStringList kVersion5 = {
    QStringLiteral("CREATE TABLE lamp ("
                   " name TEXT PRIMARY KEY CHECK (name <> ''),"
                   " board TEXT NOT NULL CHECK (length(board) = 4),"
                   " relay TEXT NOT NULL,"
                   " cents_per_minute INTEGER NOT NULL CHECK (cents_per_minute BETWEEN 0 AND 1000000),"
                   " UNIQUE (board, relay),"
                   " CHECK ((substr(board, 4) = 'A' AND relay IN ('1', '2'))"
                   " OR (substr(board, 4) = 'B' AND relay IN ('3', '4', '5')))"
                   ") WITHOUT ROWID"),
    // Lamp and price are kept as they were when it was sold.
    QStringLiteral("CREATE TABLE lamp_time ("
                   " id INTEGER PRIMARY KEY,"
                   " ordered TEXT NOT NULL,"
                   " lamp TEXT NOT NULL,"
                   " card TEXT NOT NULL,"
                   " member INTEGER REFERENCES member(id) ON DELETE SET NULL,"
                   " minutes INTEGER NOT NULL CHECK (minutes BETWEEN 1 AND 1440),"
                   " cents INTEGER NOT NULL,"
                   " began TEXT NOT NULL DEFAULT '',"
                   " until TEXT NOT NULL DEFAULT '',"
                   " ended TEXT NOT NULL DEFAULT '',"
                   " ending TEXT NOT NULL DEFAULT ''"
                   "  CHECK (ending IN ('', 'over', 'stopped', 'refused', 'unanswered')))"),
    QStringLiteral("CREATE INDEX lamp_time_open ON lamp_time(id) WHERE ending = ''"),
    QStringLiteral("CREATE INDEX lamp_time_member ON lamp_time(member)"),
};

/// A trigger that keeps a row out of a table. SQLite looks at foreign keys only on connections that ask for
/// it; what other programs write must be right, too.
QString refuse(const char* when, const char* table, const char* name, const char* condition, const char* why)
{
    return QStringLiteral("CREATE TRIGGER %2_%3 BEFORE %1 ON %2 WHEN %4"
                          " BEGIN SELECT raise(ABORT, '%5'); END")
        .arg(QLatin1String(when), QLatin1String(table), QLatin1String(name), QLatin1String(condition),
             QLatin1String(why));
}

/// The same for a new row and for a change of one of its columns.
QStringList refuseBoth(const char* table, const char* column, const char* name, const char* condition,
                       const char* why)
{
    return {refuse("INSERT", table, (QByteArray(name) + "_new").constData(), condition, why),
            refuse((QByteArray("UPDATE OF ") + column).constData(), table, name, condition, why)};
}

constexpr char kNoZone[] = "new.zone IS NOT NULL AND NOT EXISTS (SELECT 1 FROM zone WHERE name = new.zone)";
constexpr char kNoMember[] =
    "new.member IS NOT NULL AND NOT EXISTS (SELECT 1 FROM member WHERE id = new.member)";

QStringList version6()
{
    QStringList steps = {
        // Who keeps the journal: a number of each host that ever wrote a pass. Passes before had none.
        QStringLiteral("CREATE TABLE host ("
                       " id INTEGER PRIMARY KEY AUTOINCREMENT,"
                       " began TEXT NOT NULL,"
                       " pid INTEGER NOT NULL)"),
        QStringLiteral("ALTER TABLE pass ADD COLUMN who TEXT NOT NULL DEFAULT ''"),
        QStringLiteral("ALTER TABLE pass ADD COLUMN note TEXT NOT NULL DEFAULT ''"),
        QStringLiteral("ALTER TABLE pass ADD COLUMN host INTEGER NOT NULL DEFAULT 0"),
        QStringLiteral("CREATE INDEX pass_open ON pass(host) WHERE result = 'opened' AND ending = ''"),
        QStringLiteral("CREATE TABLE outage ("
                       " id INTEGER PRIMARY KEY,"
                       " line TEXT NOT NULL CHECK (line <> ''),"
                       " began TEXT NOT NULL,"
                       " ended TEXT NOT NULL DEFAULT '',"
                       " why TEXT NOT NULL DEFAULT '',"
                       " host INTEGER NOT NULL DEFAULT 0)"),
        QStringLiteral("CREATE INDEX outage_open ON outage(host) WHERE ended = ''"),
        // What goes with a member, and what stays without one.
        QStringLiteral("CREATE TRIGGER member_gone BEFORE DELETE ON member BEGIN"
                       " DELETE FROM card WHERE member = old.id;"
                       " DELETE FROM membership WHERE member = old.id;"
                       " UPDATE pass SET member = NULL WHERE member = old.id;"
                       " UPDATE sale SET member = NULL WHERE member = old.id;"
                       " UPDATE lamp_time SET member = NULL WHERE member = old.id;"
                       " END"),
        QStringLiteral("CREATE TRIGGER membership_gone BEFORE DELETE ON membership BEGIN"
                       " DELETE FROM membership_zone WHERE membership = old.id; END"),
        refuse("DELETE", "zone", "in_use",
               "EXISTS (SELECT 1 FROM gate WHERE zone = old.name)"
               " OR EXISTS (SELECT 1 FROM membership_zone WHERE zone = old.name)",
               "the zone is in use"),
        refuse("UPDATE OF name", "zone", "in_use_name",
               "new.name <> old.name AND (EXISTS (SELECT 1 FROM gate WHERE zone = old.name)"
               " OR EXISTS (SELECT 1 FROM membership_zone WHERE zone = old.name))",
               "the zone is in use"),
        refuse("UPDATE OF id", "member", "in_use", "new.id <> old.id", "a member keeps its number"),
        refuse("UPDATE OF id", "membership", "in_use", "new.id <> old.id", "a membership keeps its number"),
    };
    steps += refuseBoth("gate", "zone", "zone", kNoZone, "there is no such zone");
    steps += refuseBoth("membership_zone", "zone", "zone", kNoZone, "there is no such zone");
    steps += refuseBoth("membership_zone", "membership", "membership",
                        "NOT EXISTS (SELECT 1 FROM membership WHERE id = new.membership)",
                        "there is no such membership");
    for (const char* table : {"card", "membership", "pass", "sale", "lamp_time"}) {
        steps += refuseBoth(table, "member", "member", kNoMember, "there is no such member");
    }
    steps += refuseBoth("member", "name", "empty", "trim(new.name, char(9, 10, 13, 32, 160)) = ''",
                        "a member has a name");
    steps += refuseBoth("zone", "name", "empty", "trim(new.name, char(9, 10, 13, 32, 160)) = ''",
                        "a zone has a name");
    steps += refuseBoth("product", "name", "empty", "trim(new.name, char(9, 10, 13, 32, 160)) = ''",
                        "a product has a name");
    steps += refuseBoth("card", "number", "empty", "trim(new.number, char(9, 10, 13, 32, 160)) = ''",
                        "a card has a number");
    steps += refuseBoth("gate", "address", "empty", "trim(new.address, char(9, 10, 13, 32, 160)) = ''",
                        "a gate has an address");
    steps += refuseBoth("membership", "valid_from", "from",
                        "date(new.valid_from, '+0 days') IS NOT new.valid_from",
                        "valid_from is no date such as 2026-01-31");
    steps += refuseBoth("membership", "valid_to", "to", "date(new.valid_to, '+0 days') IS NOT new.valid_to",
                        "valid_to is no date such as 2026-01-31");
    return steps;
}

} // namespace

const QList<QStringList>& schemaSteps()
{
    static const QList<QStringList> steps = {kVersion1, kVersion2, kVersion3,
                                             kVersion4, kVersion5, version6()};
    return steps;
}

int versionOf(const QSqlDatabase& database)
{
    TStatement version(database, QStringLiteral("PRAGMA user_version"));
    return int(version.run().number());
}

void migrate(QSqlDatabase& database, const QList<QStringList>& steps)
{
    const auto target = static_cast<int>(steps.size());
    if (versionOf(database) == target) {
        return; // without a lock: the usual case must not wait for another host
    }
    TWriteTransaction transaction(database);
    const int version = versionOf(database); // again: another host may have been first
    if (version > target) {
        throw EDatabase(QStringLiteral("the database has version %1, this program knows version %2 at most")
                            .arg(version)
                            .arg(target));
    }
    for (int step = version; step < target; ++step) {
        for (const QString& statement : steps[step]) {
            execute(database, statement);
        }
    }
    execute(database, QStringLiteral("PRAGMA user_version = %1").arg(target)); // takes no bound values
    transaction.commit();
}

} // namespace tnv5::host
