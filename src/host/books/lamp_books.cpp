#include "tnv5/host/books/lamp_books.h"

namespace tnv5::host {

namespace {

TLampTime timeFrom(const TRows& row)
{
    TLampTime time;
    time.id = row.value(0).toLongLong();
    time.ordered = toDateTime(row.value(1).toString());
    time.lamp = row.value(2).toString();
    time.card = row.value(3).toString();
    time.member = row.value(4).toLongLong();
    time.name = row.value(5).toString();
    time.minutes = row.value(6).toInt();
    time.cents = row.value(7).toLongLong();
    time.began = toDateTime(row.value(8).toString());
    time.until = toDateTime(row.value(9).toString());
    time.ended = toDateTime(row.value(10).toString());
    time.ending = toLampEnding(row.value(11).toString()).value_or(TLampEnding::Stopped);
    return time;
}

TLamp lampFrom(const TRows& row)
{
    return {row.value(0).toString(), row.value(1).toString(), row.value(2).toString(),
            row.value(3).toLongLong()};
}

} // namespace

struct TLampBooks::TParts
{
    explicit TParts(const QSqlDatabase& connection) : database(connection) {}

    TStatement statement(const char16_t* sql) const { return TStatement(database, QString::fromUtf16(sql)); }

    const QSqlDatabase database;
    TStatement setLamp = statement(u"INSERT INTO lamp (name, board, relay, cents_per_minute)"
                                   u" VALUES (?, ?, ?, ?) ON CONFLICT (name) DO UPDATE SET"
                                   u" board = excluded.board, relay = excluded.relay,"
                                   u" cents_per_minute = excluded.cents_per_minute");
    TStatement lamps = statement(u"SELECT name, board, relay, cents_per_minute FROM lamp ORDER BY name");
    TStatement order = statement(u"INSERT INTO lamp_time (ordered, lamp, card, member, minutes, cents)"
                                 u" VALUES (?, ?, ?, ?, ?, ?)");
    TStatement mayBegin =
        statement(u"SELECT 1 FROM lamp_time JOIN member ON member.id = lamp_time.member"
                  u" WHERE lamp_time.id = ? AND began = '' AND ending = '' AND suspended = 0");
    TStatement begin = statement(u"UPDATE lamp_time SET began = ?, until = ? WHERE id = ?");
    TStatement charge = statement(u"UPDATE member SET balance = balance - ? WHERE id = ?");
    TStatement end = statement(u"UPDATE lamp_time SET ended = ?, ending = ? WHERE id = ? AND ending = ''");
    TStatement open = statement(u"SELECT lamp_time.id, ordered, lamp, card, member, name, minutes, cents,"
                                u" began, until, ended, ending FROM lamp_time"
                                u" LEFT JOIN member ON member.id = lamp_time.member"
                                u" WHERE ending = '' ORDER BY lamp_time.id");
    TStatement times = statement(u"SELECT lamp_time.id, ordered, lamp, card, member, name, minutes, cents,"
                                 u" began, until, ended, ending FROM lamp_time"
                                 u" LEFT JOIN member ON member.id = lamp_time.member"
                                 u" WHERE lamp_time.id > ? ORDER BY lamp_time.id LIMIT ?");
};

TLampBooks::TLampBooks(TDatabase& database) : F(std::make_unique<TParts>(database.connection())) {}

TLampBooks::~TLampBooks() = default;

void TLampBooks::setLamp(const TLamp& lamp)
{
    F->setLamp.run({lamp.name, lamp.board, lamp.relay, lamp.centsPerMinute});
}

QList<TLamp> TLampBooks::lamps()
{
    return F->lamps.run().all(lampFrom);
}

void TLampBooks::order(TLampTime& time)
{
    time.id =
        F->order.run({toText(time.ordered), time.lamp, time.card, time.member, time.minutes, time.cents})
            .insertedId();
}

bool TLampBooks::begin(TLampTime& time, platform::TDateTime now, platform::TDateTime until)
{
    TWriteTransaction transaction(F->database);
    if (!F->mayBegin.run({time.id}).next()) {
        return false;
    }
    F->begin.run({toText(now), toText(until), time.id});
    F->charge.run({time.cents, time.member});
    transaction.commit();
    time.began = now;
    time.until = until;
    return true;
}

void TLampBooks::end(TLampTime& time, platform::TDateTime now, TLampEnding ending)
{
    F->end.run({toText(now), toText(ending), time.id});
    time.ended = now;
    time.ending = ending;
}

QList<TLampTime> TLampBooks::open()
{
    return F->open.run().all(timeFrom);
}

QList<TLampTime> TLampBooks::timesAfter(qint64 id, int limit)
{
    return F->times.run({id, limit}).all(timeFrom);
}

} // namespace tnv5::host
