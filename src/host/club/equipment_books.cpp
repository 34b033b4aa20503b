#include "tnv5/host/club/equipment_books.h"

#include "tnv5/host/books/database_parts.h"
#include "tnv5/host/books/lamp_books.h"

#include <algorithm>

namespace tnv5::host {

namespace {

/// Those that the books do not have, or have otherwise.
template <class Thing>
QList<Thing> missing(const QList<Thing>& wanted, const QList<Thing>& known)
{
    QList<Thing> result;
    std::copy_if(wanted.begin(), wanted.end(), std::back_inserter(result), [&](const Thing& each) {
        return std::find(known.begin(), known.end(), each) == known.end();
    });
    return result;
}

void writeGates(const QSqlDatabase& database, const QList<TGate>& gates)
{
    TStatement zone(database, QStringLiteral("INSERT INTO zone (name) VALUES (?) ON CONFLICT DO NOTHING"));
    TStatement write(database, QStringLiteral("INSERT INTO gate (address, zone, direction) VALUES (?, ?, ?)"
                                              " ON CONFLICT (address) DO UPDATE SET"
                                              " zone = excluded.zone, direction = excluded.direction"));
    for (const TGate& gate : gates) {
        zone.run({notNull(gate.zone)});
        write.run({notNull(gate.address), notNull(gate.zone), toText(gate.direction)});
    }
}

// All that are in the way go first: two lamps may have exchanged their relays.
void writeLamps(const QSqlDatabase& database, const QList<TLamp>& lamps)
{
    TStatement remove(database,
                      QStringLiteral("DELETE FROM lamp WHERE name = ? OR (board = ? AND relay = ?)"));
    TStatement write(database, QStringLiteral("INSERT INTO lamp (name, board, relay, cents_per_minute)"
                                              " VALUES (?, ?, ?, ?)"));
    for (const TLamp& lamp : lamps) {
        remove.run({lamp.name, lamp.board, lamp.relay});
    }
    for (const TLamp& lamp : lamps) {
        write.run({lamp.name, lamp.board, lamp.relay, lamp.centsPerMinute});
    }
}

} // namespace

QList<TGate> enterEquipment(TDatabase& database, const QList<TGate>& gates, const QList<TLamp>& lamps)
{
    TLampBooks books(database);
    if (missing(gates, database.gates()).isEmpty() && missing(lamps, books.lamps()).isEmpty()) {
        return {}; // without a lock: the usual case must not wait for another program
    }
    TWriteTransaction transaction(database.connection());
    const QList<TGate> different = missing(gates, database.gates()); // again: another may have been first
    writeGates(database.connection(), different);
    writeLamps(database.connection(), missing(lamps, books.lamps()));
    transaction.commit();
    return different;
}

} // namespace tnv5::host
