#include "tnv5/host/books/database_parts.h"
#include "tnv5/host/books/file_header.h"
#include "tnv5/host/books/schema.h"

#include <QFile>
#include <QFileInfo>
#include <sys/stat.h>

namespace tnv5::host {

namespace {

QString isoDay(QDate day)
{
    return day.toString(Qt::ISODate);
}

QDate toDay(const QVariant& value)
{
    return QDate::fromString(value.toString(), Qt::ISODate);
}

TGate gateFrom(const TRows& row)
{
    return {row.value(0).toString(), row.value(1).toString(),
            toDirection(row.value(2).toString()).value_or(TDirection::In)};
}

/// Files that are made while it lives can be read by their owner only.
class TOwnFiles
{
public:
    TOwnFiles() : FBefore(umask(S_IRWXG | S_IRWXO)) {}
    ~TOwnFiles() { umask(FBefore); }
    TOwnFiles(const TOwnFiles&) = delete;
    TOwnFiles& operator=(const TOwnFiles&) = delete;

private:
    mode_t FBefore;
};

} // namespace

TFileIdentity identityOf(const QString& file)
{
    struct stat info = {};
    if (stat(QFile::encodeName(file).constData(), &info) != 0) {
        return std::nullopt;
    }
    return std::pair(quint64{info.st_dev}, quint64{info.st_ino});
}

TDatabase::TDatabase(const QString& file, TOpening opening) : F(std::make_unique<TParts>(file, opening))
{
    setBusyTimeout(kBusyMs);
}

TDatabase::~TDatabase() = default;

qint64 TDatabase::addMember(const QString& name)
{
    return F->addMember.run({notNull(name)}).insertedId();
}

void TDatabase::setSuspended(qint64 member, bool suspended)
{
    F->setSuspended.run({int(suspended), member});
}

void TDatabase::setInside(qint64 member, bool inside)
{
    F->setInside.run({int(inside), member});
}

void TDatabase::setBalance(qint64 member, qint64 cents)
{
    F->setBalance.run({cents, member});
}

void TDatabase::addCard(const QString& card, qint64 member)
{
    F->addCard.run({notNull(card), member});
}

void TDatabase::addMembership(qint64 member, const TMembership& membership)
{
    TWriteTransaction transaction(F->connection.database());
    const qint64 id =
        F->addMembership.run({member, isoDay(membership.from), isoDay(membership.to)}).insertedId();
    for (const QString& zone : membership.zones) {
        F->addZone.run({notNull(zone)});
        F->addMembershipZone.run({id, notNull(zone)});
    }
    transaction.commit();
}

void TDatabase::setGate(const TGate& gate)
{
    TWriteTransaction transaction(F->connection.database());
    F->addZone.run({notNull(gate.zone)});
    F->setGate.run({notNull(gate.address), notNull(gate.zone), toText(gate.direction)});
    transaction.commit();
}

std::optional<THolder> TDatabase::holderOf(const QString& card)
{
    THolder holder;
    {
        TRows rows = F->holder.run({card});
        if (!rows.next()) {
            return std::nullopt;
        }
        holder.member = {rows.value(0).toLongLong(), rows.value(1).toString(), rows.value(2).toBool(),
                         rows.value(3).toBool(), rows.value(4).toLongLong()};
    }
    TRows rows = F->memberships.run({holder.member.id});
    qint64 last = 0;
    while (rows.next()) { // one row a zone
        const qint64 id = rows.value(0).toLongLong();
        if (id != last) {
            holder.memberships.append({toDay(rows.value(1)), toDay(rows.value(2)), {}});
            last = id;
        }
        if (!rows.value(3).isNull()) {
            holder.memberships.back().zones.append(rows.value(3).toString());
        }
    }
    return holder;
}

std::optional<TGate> TDatabase::gateAt(const QString& address)
{
    TRows rows = F->gate.run({address});
    return rows.next() ? std::optional(gateFrom(rows)) : std::nullopt;
}

QList<TGate> TDatabase::gates()
{
    return F->gates.run().all(gateFrom);
}

QString TDatabase::fileName() const
{
    return F->file;
}

QString TDatabase::misplaced() const
{
    if (!F->identity) { // in memory
        return {};
    }
    const TFileIdentity now = identityOf(F->file);
    QString what;
    if (!now) {
        what = QStringLiteral("deleted");
    } else if (now != F->identity) {
        what = QStringLiteral("replaced");
    } else if (F->overwritten()) {
        what = QStringLiteral("overwritten");
    } else {
        return {};
    }
    return QStringLiteral(
               "the database %1 was %2 while the program runs: what is written now is lost with the old "
               "file; stop the program and put it back")
        .arg(F->file, what);
}

QString TDatabase::rescue()
{
    QString copy = F->file + QStringLiteral(".rescued");
    for (int number = 2; QFileInfo::exists(copy) || QFileInfo(copy).isSymLink(); ++number) {
        copy = QStringLiteral("%1.rescued-%2").arg(F->file).arg(number);
    }
    const TOwnFiles own; // the rights of the old file are gone with it
    F->statement(u"VACUUM INTO ?").run({copy});
    return copy;
}

// A page that every earlier copy of the file has otherwise, and in the file at once, as far as others let it.
void TDatabase::markFile()
{
    if (!F->identity) {
        return;
    }
    execute(F->connection.database(), QStringLiteral("PRAGMA user_version = %1") // binds no values
                                          .arg(versionOf(F->connection.database())));
    execute(F->connection.database(), QStringLiteral("PRAGMA wal_checkpoint(PASSIVE)"));
    F->mark = {identityOf(F->file + QStringLiteral("-wal")), changesOf(F->file), false};
}

bool TDatabase::TParts::overwritten()
{
    if (mark.log && !mark.overwritten) {
        const std::optional<quint32> changes = changesOf(file);
        mark.overwritten = changes && changes < mark.changes; // what cannot be read proves nothing
        mark.overwritten |= identityOf(file + QStringLiteral("-wal")) != mark.log;
        mark.changes = changes ? changes : mark.changes;
    }
    return mark.overwritten;
}

const QSqlDatabase& TDatabase::connection() const
{
    return F->connection.database();
}

void TDatabase::setBusyTimeout(int ms)
{
    execute(F->connection.database(), QStringLiteral("PRAGMA busy_timeout = %1").arg(ms)); // binds no values
}

} // namespace tnv5::host
