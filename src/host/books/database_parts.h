#pragma once

#include "tnv5/host/books/database.h"
#include "tnv5/host/books/host_locks.h"

namespace tnv5::host {

/// SQL knows no empty text that comes from a null QString: it would become NULL.
inline QString notNull(const QString& text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

/// Which file a name stands for; nothing when there is none.
using TFileIdentity = std::optional<std::pair<quint64, quint64>>;
TFileIdentity identityOf(const QString& file);

/// What a host remembers of its file, to notice that another one was copied over it.
struct TFileMark
{
    TFileIdentity log;              // of the write-ahead log, which stays as long as somebody uses the file
    std::optional<quint32> changes; // in the file when it was looked at last
    bool overwritten = false;
};

/// What the files of `TDatabase` share: its connection and its statements.
struct TDatabase::TParts
{
    TParts(const QString& name, TOpening opening)
        : file(name), connection(name, opening), locks(name), identity(identityOf(name))
    {
    }

    bool overwritten();

    TStatement statement(const char16_t* sql) const
    {
        return TStatement(connection.database(), QString::fromUtf16(sql));
    }

    QString file;
    TConnection connection;
    THostLocks locks;
    TFileIdentity identity; // of the file that was opened
    TFileMark mark;
    qint64 host = 0; // this one's number, 0 until it has one
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
    TStatement addPass = statement(
        u"INSERT INTO pass (began, ended, card, member, gate, result, reason, ending, who, note, host)"
        u" VALUES (?, ?, ?, (SELECT id FROM member WHERE id = ?), ?, ?, ?, ?, ?, ?, ?)");
    TStatement endPass = statement(u"UPDATE pass SET ended = ?, ending = ? WHERE id = ?");
    TStatement passes =
        statement(u"SELECT id, began, ended, card, member, gate, reason, ending, who, note FROM pass"
                  u" WHERE id > ? ORDER BY id LIMIT ?");
    TStatement addHost = statement(u"INSERT INTO host (began, pid) VALUES (?, ?)");
    TStatement openHosts = statement(u"SELECT host FROM pass WHERE result = 'opened' AND ending = ''"
                                     u" UNION SELECT host FROM outage WHERE ended = ''");
    TStatement abandonPasses = statement(
        u"UPDATE pass SET ended = ?, ending = ? WHERE result = 'opened' AND ending = '' AND host = ?");
    TStatement abandonOutages = statement(u"UPDATE outage SET ended = ? WHERE ended = '' AND host = ?");
    TStatement addOutage =
        statement(u"INSERT INTO outage (line, began, ended, why, host) VALUES (?, ?, ?, ?, ?)");
    TStatement endOutage = statement(u"UPDATE outage SET ended = ? WHERE id = ?");
    TStatement outages =
        statement(u"SELECT id, line, began, ended, why FROM outage WHERE id > ? ORDER BY id LIMIT ?");
    TStatement lastOutage = statement(u"SELECT coalesce(max(id), 0) FROM outage");
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

} // namespace tnv5::host
