#include "tnv5/host/database.h"

#include "tnv5/host/schema.h"

#include <QSqlError>
#include <atomic>

namespace tnv5::host {

namespace {

constexpr int kOpenBusyMs = 2000; // another host may be creating the file

/// A connection of its own, taken out of Qt's list again at the end.
class TConnection
{
public:
    explicit TConnection(const QString& file) : FName(nextName())
    {
        try {
            open(file);
        } catch (const EDatabase& error) {
            close();
            throw EDatabase(QStringLiteral("Cannot open database %1: %2").arg(file, error.message()));
        }
    }
    ~TConnection() { close(); }
    TConnection(const TConnection&) = delete;
    TConnection& operator=(const TConnection&) = delete;

    const QSqlDatabase& database() const { return FDatabase; }

private:
    static QString nextName()
    {
        static std::atomic<int> count = 0;
        return QStringLiteral("tnv5-club-%1").arg(++count);
    }

    void open(const QString& file)
    {
        FDatabase = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), FName);
        if (!FDatabase.isValid()) {
            throw EDatabase(QStringLiteral("the SQLite driver of Qt is not installed (libqt6sql6-sqlite)"));
        }
        FDatabase.setDatabaseName(file);
        FDatabase.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(kOpenBusyMs));
        if (!FDatabase.open()) {
            throw EDatabase(FDatabase.lastError().databaseText());
        }
        execute(FDatabase, QStringLiteral("PRAGMA journal_mode = WAL"));
        execute(FDatabase, QStringLiteral("PRAGMA synchronous = NORMAL"));
        execute(FDatabase, QStringLiteral("PRAGMA foreign_keys = ON"));
        migrate(FDatabase, schemaSteps());
    }

    void close()
    {
        FDatabase.close();
        FDatabase = {};
        QSqlDatabase::removeDatabase(FName);
    }

    QString FName;
    QSqlDatabase FDatabase;
};

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

TPass passFrom(const TRows& row)
{
    TPass pass;
    pass.id = row.value(0).toLongLong();
    pass.began = toDateTime(row.value(1).toString());
    pass.ended = toDateTime(row.value(2).toString());
    pass.card = row.value(3).toString();
    pass.member = row.value(4).toLongLong();
    pass.gate = row.value(5).toString();
    pass.refusal = toRefusal(row.value(6).toString()).value_or(TRefusal::HostFault);
    pass.ending = toEnding(row.value(7).toString()).value_or(TEnding::None);
    return pass;
}

TSale saleFrom(const TRows& row)
{
    TSale sale;
    sale.id = row.value(0).toLongLong();
    sale.sold = toDateTime(row.value(1).toString());
    sale.card = row.value(2).toString();
    sale.member = row.value(3).toLongLong();
    sale.product = row.value(4).toString();
    sale.centsPerKg = row.value(5).toLongLong();
    sale.grams = row.value(6).toInt();
    sale.cents = row.value(7).toLongLong();
    return sale;
}

TPayment paymentFrom(const TRows& row)
{
    TPayment payment;
    payment.id = row.value(0).toLongLong();
    payment.began = toDateTime(row.value(1).toString());
    payment.ended = toDateTime(row.value(2).toString());
    payment.cents = row.value(3).toLongLong();
    payment.discount = row.value(4).toLongLong();
    payment.card = row.value(5).toString();
    payment.cardType = row.value(6).toString();
    payment.answer = row.value(7).toString();
    payment.outcome = toOutcome(row.value(8).toString()).value_or(TOutcome::Unknown);
    payment.reason = row.value(9).toString();
    return payment;
}

/// SQL knows no empty text that comes from a null QString: it would become NULL.
QString notNull(const QString& text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

} // namespace

struct TDatabase::TParts
{
    explicit TParts(const QString& file) : connection(file) {}

    TStatement statement(const char16_t* sql) const
    {
        return TStatement(connection.database(), QString::fromUtf16(sql));
    }

    TConnection connection;
    TStatement addMember = statement(u"INSERT INTO member (name) VALUES (?)");
    TStatement setSuspended = statement(u"UPDATE member SET suspended = ? WHERE id = ?");
    TStatement setInside = statement(u"UPDATE member SET inside = ? WHERE id = ?");
    TStatement setBalance = statement(u"UPDATE member SET balance = ? WHERE id = ?");
    TStatement addCard = statement(u"INSERT INTO card (number, member) VALUES (?, ?)");
    TStatement addZone = statement(u"INSERT INTO zone (name) VALUES (?) ON CONFLICT DO NOTHING");
    TStatement addMembership =
        statement(u"INSERT INTO membership (member, valid_from, valid_to) VALUES (?, ?, ?)");
    TStatement addMembershipZone =
        statement(u"INSERT INTO membership_zone (membership, zone) VALUES (?, ?) ON CONFLICT DO NOTHING");
    TStatement setGate = statement(
        u"INSERT INTO gate (address, zone, direction) VALUES (?, ?, ?)"
        u" ON CONFLICT (address) DO UPDATE SET zone = excluded.zone, direction = excluded.direction");
    TStatement holder = statement(u"SELECT member.id, name, suspended, inside, balance FROM card"
                                  u" JOIN member ON member.id = card.member WHERE number = ?");
    TStatement memberships =
        statement(u"SELECT id, valid_from, valid_to, zone FROM membership"
                  u" LEFT JOIN membership_zone ON membership = id WHERE member = ? ORDER BY id, zone");
    TStatement gate = statement(u"SELECT address, zone, direction FROM gate WHERE address = ?");
    TStatement gates = statement(u"SELECT address, zone, direction FROM gate ORDER BY address");
    // A member that was deleted meanwhile must not keep the pass out of the journal.
    TStatement addPass =
        statement(u"INSERT INTO pass (began, ended, card, member, gate, result, reason, ending)"
                  u" VALUES (?, ?, ?, (SELECT id FROM member WHERE id = ?), ?, ?, ?, ?)");
    TStatement endPass = statement(u"UPDATE pass SET ended = ?, ending = ? WHERE id = ?");
    TStatement passes = statement(u"SELECT id, began, ended, card, member, gate, reason, ending FROM pass"
                                  u" WHERE id > ? ORDER BY id LIMIT ?");
    TStatement setProduct =
        statement(u"INSERT INTO product (name, cents_per_kg) VALUES (?, ?)"
                  u" ON CONFLICT (name) DO UPDATE SET cents_per_kg = excluded.cents_per_kg");
    TStatement price = statement(u"SELECT cents_per_kg FROM product WHERE name = ?");
    TStatement addSale =
        statement(u"INSERT INTO sale (sold, card, member, product, cents_per_kg, grams, cents)"
                  u" VALUES (?, ?, ?, ?, ?, ?, ?)");
    TStatement charge = statement(u"UPDATE member SET balance = balance - ? WHERE id = ?");
    TStatement sales =
        statement(u"SELECT id, sold, card, member, product, cents_per_kg, grams, cents FROM sale"
                  u" WHERE id > ? ORDER BY id LIMIT ?");
    TStatement addPayment = statement(
        u"INSERT INTO payment (began, cents, discount, ended, card, card_type, answer, outcome, reason)"
        u" VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)");
    TStatement changePayment = statement(
        u"UPDATE payment SET ended = ?, card = ?, card_type = ?, answer = ?, outcome = ?, reason = ?"
        u" WHERE id = ?");
    TStatement payments = statement(
        u"SELECT id, began, ended, cents, discount, card, card_type, answer, outcome, reason FROM payment"
        u" WHERE id > ? ORDER BY id LIMIT ?");
    TStatement paymentsUnderWay = statement(
        u"SELECT id, began, ended, cents, discount, card, card_type, answer, outcome, reason FROM payment"
        u" WHERE outcome = '' ORDER BY id");
    TStatement lastPayment = statement(u"SELECT coalesce(max(id), 0) FROM payment");
    TStatement lastSale = statement(u"SELECT coalesce(max(id), 0) FROM sale");
    TStatement lastPass = statement(u"SELECT coalesce(max(id), 0) FROM pass");
};

TDatabase::TDatabase(const QString& file) : F(std::make_unique<TParts>(file))
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

void TDatabase::writePasses(const QList<PPass>& passes)
{
    QList<qint64> ids;
    TWriteTransaction transaction(F->connection.database());
    for (const PPass& pass : passes) {
        qint64 id = pass->id;
        writePass(*pass, id);
        ids.append(id);
    }
    transaction.commit();
    for (qsizetype index = 0; index < passes.size(); ++index) { // only now: they are in the journal
        passes[index]->id = ids[index];
    }
}

void TDatabase::writePass(const TPass& pass, qint64& id)
{
    const QString ended = notNull(toText(pass.ended));
    const QString ending = notNull(toText(pass.ending));
    if (id == 0) {
        const QString result = pass.opened() ? QStringLiteral("opened") : QStringLiteral("refused");
        id = F->addPass
                 .run({toText(pass.began), ended, notNull(pass.card), pass.member, notNull(pass.gate), result,
                       notNull(toText(pass.refusal)), ending})
                 .insertedId();
    } else {
        F->endPass.run({ended, ending, id});
    }
    if (pass.ending == TEnding::Passed && pass.member != 0 && pass.direction &&
        *pass.direction != TDirection::Inner) {
        F->setInside.run({int(*pass.direction == TDirection::In), pass.member});
    }
}

QList<TPass> TDatabase::passesAfter(qint64 id, int limit)
{
    return F->passes.run({id, limit}).all(passFrom);
}

qint64 TDatabase::lastPass()
{
    return F->lastPass.run().number();
}

void TDatabase::setProduct(const QString& name, qint64 centsPerKg)
{
    F->setProduct.run({notNull(name), centsPerKg});
}

std::optional<qint64> TDatabase::priceOf(const QString& product)
{
    TRows rows = F->price.run({notNull(product)});
    return rows.next() ? std::optional(rows.value(0).toLongLong()) : std::nullopt;
}

void TDatabase::sell(TSale& sale)
{
    TWriteTransaction transaction(F->connection.database());
    const qint64 id = F->addSale
                          .run({toText(sale.sold), notNull(sale.card), sale.member, notNull(sale.product),
                                sale.centsPerKg, sale.grams, sale.cents})
                          .insertedId();
    F->charge.run({sale.cents, sale.member});
    transaction.commit();
    sale.id = id;
}

QList<TSale> TDatabase::salesAfter(qint64 id, int limit)
{
    return F->sales.run({id, limit}).all(saleFrom);
}

qint64 TDatabase::lastSale()
{
    return F->lastSale.run().number();
}

void TDatabase::writePayment(TPayment& payment)
{
    const QVariantList state = {notNull(toText(payment.ended)), notNull(payment.card),
                                notNull(payment.cardType),      notNull(payment.answer),
                                toText(payment.outcome),        notNull(payment.reason)};
    if (payment.id == 0) {
        payment.id =
            F->addPayment.run(QVariantList{toText(payment.began), payment.cents, payment.discount} + state)
                .insertedId();
    } else {
        F->changePayment.run(state + QVariantList{payment.id});
    }
}

QList<TPayment> TDatabase::paymentsAfter(qint64 id, int limit)
{
    return F->payments.run({id, limit}).all(paymentFrom);
}

QList<TPayment> TDatabase::paymentsUnderWay()
{
    return F->paymentsUnderWay.run().all(paymentFrom);
}

qint64 TDatabase::lastPayment()
{
    return F->lastPayment.run().number();
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
