#include "tnv5/host/books/books.h"

#include "tnv5/host/books/books_query.h"
#include "tnv5/host/shown_text.h"

#include <QRegularExpression>
#include <algorithm>
#include <limits>

namespace tnv5::host {

namespace {

constexpr qsizetype kLongestName = 200;
constexpr qsizetype kLongestCard = 64;

QString nameOf(qint64 member, const QString& name)
{
    return QStringLiteral("%1 (%2)").arg(name).arg(member);
}

// A member is addressed by number or by name: what is a number cannot be a name, too.
QString readMemberName(const QString& text)
{
    static const QRegularExpression number(QStringLiteral("\\A[+-]?[0-9]+\\z"));
    QString name = readName(text, QStringLiteral("a member"));
    if (number.match(name).hasMatch()) {
        throw EBooks(quoted(name) + QStringLiteral(" is a number; the name of a member is not one"));
    }
    return name;
}

QString readCard(const QString& text)
{
    const QString card = text.trimmed();
    const bool good = std::all_of(card.begin(), card.end(), [](QChar c) {
        return c > u' ' && c < u'\x7f' && c != u';'; // which separates cards in a list
    });
    if (card.isEmpty() || !good || card.size() > kLongestCard) {
        throw EBooks(quoted(text) + QStringLiteral(" is no card number: 1 to 64 letters and digits"));
    }
    return card;
}

void needOrder(const TMembership& membership)
{
    if (membership.from > membership.to) {
        throw EBooks(QStringLiteral("a membership cannot end on %1 when it begins on %2")
                         .arg(membership.to.toString(Qt::ISODate), membership.from.toString(Qt::ISODate)));
    }
}

} // namespace

QDate readDay(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("\\A[0-9]{4}-[0-9]{2}-[0-9]{2}\\z"));
    const QDate day = QDate::fromString(text, Qt::ISODate);
    if (!form.match(text).hasMatch() || !day.isValid()) {
        throw EBooks(quoted(text) + QStringLiteral(" is no day; write it like 2026-01-31"));
    }
    return day;
}

qint64 readAmount(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("\\A(-?)([0-9]{1,9})(?:[.,]([0-9]{1,2}))?\\z"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch()) {
        throw EBooks(quoted(text) + QStringLiteral(" is no amount; write it like 12.50"));
    }
    const qint64 cents =
        match.captured(2).toLongLong() * 100 + match.captured(3).leftJustified(2, u'0').toLongLong();
    return match.captured(1).isEmpty() ? cents : -cents;
}

bool readFlag(const QString& text)
{
    for (const auto& [word, value] :
         {std::pair(u"yes", true), std::pair(u"no", false), std::pair(u"true", true),
          std::pair(u"false", false), std::pair(u"1", true), std::pair(u"0", false)}) {
        if (text == QStringView(word)) {
            return value;
        }
    }
    throw EBooks(quoted(text) + QStringLiteral(" is neither yes nor no"));
}

TDirection readDirection(const QString& text)
{
    if (const auto direction = toDirection(text)) {
        return *direction;
    }
    throw EBooks(quoted(text) +
                 QStringLiteral(" is no direction: in, out or inner (a door inside the club)"));
}

QString readName(const QString& text, const QString& what)
{
    const QString name = text.trimmed();
    if (name.isEmpty()) {
        throw EBooks(what + QStringLiteral(" needs a name"));
    }
    if (name.size() > kLongestName) {
        throw EBooks(QStringLiteral("a name has 200 characters at most"));
    }
    if (std::any_of(name.begin(), name.end(), [](QChar c) { return c.category() == QChar::Other_Control; })) {
        throw EBooks(QStringLiteral("a name cannot hold control characters"));
    }
    return name;
}

TBooks::TBooks(TDatabase& database) : FDatabase(database)
{
    FDatabase.setBusyTimeout(kPatienceMs);
}

TBooks::~TBooks()
{
    platform::guarded([this] { FDatabase.setBusyTimeout(TDatabase::kBusyMs); });
}

void TBooks::together(const std::function<void()>& body)
{
    if (FTransaction) {
        body();
        return;
    }
    TWriteTransaction transaction(FDatabase.connection());
    FTransaction = &transaction;
    const auto over = qScopeGuard([this] { FTransaction = nullptr; });
    body();
    transaction.commit();
}

TBooks::TQuery TBooks::query(const char16_t* sql, const QVariantList& values)
{
    return TQuery(FDatabase.connection(), sql, values);
}

// Members

qint64 TBooks::memberOf(const QString& who)
{
    bool isNumber = false;
    const qint64 number = who.toLongLong(&isNumber);
    if (isNumber) {
        needMember(number);
        return number;
    }
    const QString name = readName(who, QStringLiteral("a member"));
    const QList<qint64> numbers =
        query(u"SELECT id FROM member WHERE name = ? ORDER BY id", {name}).numbers();
    if (numbers.isEmpty()) {
        throw EBooks(QStringLiteral("there is no member ") + quoted(name));
    }
    if (numbers.size() > 1) {
        QStringList all;
        for (const qint64 each : numbers) {
            all.append(QString::number(each));
        }
        throw EBooks(QStringLiteral("there are %1 members %2; say which by number: %3")
                         .arg(QString::number(numbers.size()), quoted(name), all.join(QStringLiteral(", "))));
    }
    return numbers[0];
}

void TBooks::needMember(qint64 member)
{
    if (!query(u"SELECT 1 FROM member WHERE id = ?", {member}).any()) {
        throw EBooks(QStringLiteral("there is no member %1").arg(member));
    }
}

qint64 TBooks::addMember(const TNewMember& member)
{
    const QString name = readMemberName(member.name);
    qint64 number = member.number;
    together([&] {
        if (number != 0 && query(u"SELECT 1 FROM member WHERE id = ?", {number}).any()) {
            throw EBooks(QStringLiteral("member %1 is there already").arg(number));
        }
        number = query(u"INSERT INTO member (id, name, suspended, inside, balance) VALUES (?, ?, ?, ?, ?)",
                       {number == 0 ? QVariant() : QVariant(number), name, int(member.suspended),
                        int(member.inside), member.balance})
                     .inserted();
        for (const QString& card : member.cards) {
            addCard(card, number);
        }
        if (member.membership) {
            addMembership(number, *member.membership);
        }
    });
    return number;
}

void TBooks::changeMember(qint64 member, const TMemberChange& change)
{
    together([&] {
        needMember(member);
        if (change.name) {
            query(u"UPDATE member SET name = ? WHERE id = ?", {readMemberName(*change.name), member});
        }
        if (change.suspended) {
            query(u"UPDATE member SET suspended = ? WHERE id = ?", {int(*change.suspended), member});
        }
        if (change.inside) {
            query(u"UPDATE member SET inside = ? WHERE id = ?", {int(*change.inside), member});
        }
        if (change.balance) {
            query(u"UPDATE member SET balance = ? WHERE id = ?", {*change.balance, member});
        }
        if (change.credit) {
            query(u"UPDATE member SET balance = balance + ? WHERE id = ?", {*change.credit, member});
        }
    });
}

void TBooks::removeMember(qint64 member, bool force)
{
    together([&] {
        needMember(member);
        const auto [name, inside, balance] = [&] {
            TQuery row = query(u"SELECT name, inside, balance FROM member WHERE id = ?", {member});
            row.next();
            return std::tuple(row.value(0).toString(), row.value(1).toBool(), row.value(2).toLongLong());
        }();
        if (inside && !force) {
            throw EBooks(
                nameOf(member, name) +
                QStringLiteral(" is inside and could not get out; --force removes the member all the same"));
        }
        if (balance != 0 && !force) {
            throw EBooks(QStringLiteral("%1 has a balance of %2; --force removes the member all the same")
                             .arg(nameOf(member, name), amountText(balance)));
        }
        query(u"DELETE FROM member WHERE id = ?", {member});
    });
}

TBookTable TBooks::members()
{
    return query(u"SELECT id, name, suspended, inside, balance,"
                 u" (SELECT group_concat(number, ';') FROM (SELECT number FROM card WHERE member = id"
                 u" ORDER BY number)) FROM member ORDER BY id")
        .table({{QStringLiteral("number"), TColumnKind::Number},
                {QStringLiteral("name")},
                {QStringLiteral("suspended"), TColumnKind::Flag},
                {QStringLiteral("inside"), TColumnKind::Flag},
                {QStringLiteral("balance"), TColumnKind::Cents},
                {QStringLiteral("cards"), TColumnKind::List}});
}

// Cards

qint64 TBooks::holderOfCard(const QString& card)
{
    TQuery rows = query(u"SELECT member FROM card WHERE number = ?", {card});
    if (!rows.next()) {
        throw EBooks(QStringLiteral("there is no card ") + card);
    }
    return rows.value(0).toLongLong();
}

void TBooks::addCard(const QString& card, qint64 member)
{
    const QString number = readCard(card);
    together([&] {
        needMember(member);
        TQuery rows = query(
            u"SELECT member.id, name FROM card JOIN member ON member.id = member WHERE number = ?", {number});
        if (rows.next()) {
            throw EBooks(QStringLiteral("card %1 is there already, it is %2's")
                             .arg(number, nameOf(rows.value(0).toLongLong(), rows.value(1).toString())));
        }
        query(u"INSERT INTO card (number, member) VALUES (?, ?)", {number, member});
    });
}

void TBooks::needOtherCard(const QString& card, bool force)
{
    TQuery rows = query(u"SELECT id, name FROM member WHERE id = ? AND inside = 1"
                        u" AND (SELECT count(*) FROM card WHERE member = id) = 1",
                        {holderOfCard(card)});
    if (rows.next() && !force) {
        throw EBooks(
            QStringLiteral("%1 is the only card of %2, who is inside and could not get out; --force does it "
                           "all the same")
                .arg(card, nameOf(rows.value(0).toLongLong(), rows.value(1).toString())));
    }
}

void TBooks::giveCard(const QString& card, qint64 member, bool force)
{
    together([&] {
        needMember(member);
        if (holderOfCard(card) != member) {
            needOtherCard(card, force);
            query(u"UPDATE card SET member = ? WHERE number = ?", {member, card});
        }
    });
}

void TBooks::renumberCard(const QString& card, const QString& number)
{
    together([&] {
        const qint64 member = holderOfCard(card);
        if (readCard(number) != card) {
            addCard(number, member);
            query(u"DELETE FROM card WHERE number = ?", {card});
        }
    });
}

void TBooks::removeCard(const QString& card, bool force)
{
    together([&] {
        needOtherCard(card, force);
        query(u"DELETE FROM card WHERE number = ?", {card});
    });
}

TBookTable TBooks::cards()
{
    return query(u"SELECT number, member, name FROM card JOIN member ON member.id = member ORDER BY number")
        .table({{QStringLiteral("number")},
                {QStringLiteral("member"), TColumnKind::Number},
                {QStringLiteral("name")}});
}

// Memberships

qint64 TBooks::addMembership(qint64 member, const TMembership& membership)
{
    needOrder(membership);
    qint64 number = 0;
    together([&] {
        needMember(member);
        number = query(u"INSERT INTO membership (member, valid_from, valid_to) VALUES (?, ?, ?)",
                       {member, membership.from.toString(Qt::ISODate), membership.to.toString(Qt::ISODate)})
                     .inserted();
        setMembershipZones(number, membership.zones);
    });
    return number;
}

void TBooks::setMembershipZones(qint64 number, const QStringList& zones)
{
    needZones(zones);
    query(u"DELETE FROM membership_zone WHERE membership = ?", {number});
    for (const QString& zone : zones) {
        query(u"INSERT INTO membership_zone (membership, zone) VALUES (?, ?) ON CONFLICT DO NOTHING",
              {number, zone});
    }
}

void TBooks::changeMembership(qint64 number, std::optional<QDate> from, std::optional<QDate> to,
                              const std::optional<QStringList>& zones)
{
    together([&] {
        TMembership now;
        {
            TQuery row = query(u"SELECT valid_from, valid_to FROM membership WHERE id = ?", {number});
            if (!row.next()) {
                throw EBooks(QStringLiteral("there is no membership %1").arg(number));
            }
            now.from = from.value_or(QDate::fromString(row.value(0).toString(), Qt::ISODate));
            now.to = to.value_or(QDate::fromString(row.value(1).toString(), Qt::ISODate));
        }
        needOrder(now);
        query(u"UPDATE membership SET valid_from = ?, valid_to = ? WHERE id = ?",
              {now.from.toString(Qt::ISODate), now.to.toString(Qt::ISODate), number});
        if (zones) {
            setMembershipZones(number, *zones);
        }
    });
}

void TBooks::removeMembership(qint64 number)
{
    if (query(u"DELETE FROM membership WHERE id = ?", {number}).changed() == 0) {
        throw EBooks(QStringLiteral("there is no membership %1").arg(number));
    }
}

TBookTable TBooks::memberships(qint64 member)
{
    return query(u"SELECT membership.id, member, name, valid_from, valid_to,"
                 u" (SELECT group_concat(zone, ';') FROM (SELECT zone FROM membership_zone"
                 u" WHERE membership = membership.id ORDER BY zone))"
                 u" FROM membership JOIN member ON member.id = member WHERE ? = 0 OR member = ?"
                 u" ORDER BY membership.id",
                 {member, member})
        .table({{QStringLiteral("number"), TColumnKind::Number},
                {QStringLiteral("member"), TColumnKind::Number},
                {QStringLiteral("name")},
                {QStringLiteral("from")},
                {QStringLiteral("to")},
                {QStringLiteral("zones"), TColumnKind::List}});
}

} // namespace tnv5::host
