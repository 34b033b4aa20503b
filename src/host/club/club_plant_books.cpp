// What a running club writes into its books by its file, at its start and when the file is read again.

#include "tnv5/host/books/host_locks.h"
#include "tnv5/host/club/club_plant.h"
#include "tnv5/host/club/equipment_books.h"
#include "tnv5/host/local/local_events.h"

#include <algorithm>

namespace tnv5::host {

/// Writes what a start must write; what the books do not take now is tried again, and the gates work
/// meanwhile.
void TClubPlant::beginBooks(int patienceMs)
{
    FBeginBooks.SetEnabled(false);
    try {
        if (!FLastPayment) { // a later one is this host's own
            FLastPayment = FDatabase.lastPayment();
        }
        closeAbandoned(patienceMs);
        enterIntoBooks(FPlan);
        tellOfLostLamps();
        for (const TPayment& payment : recoverPayments(FDatabase, *FLastPayment)) {
            FLog.warning({}, logLine(payment));
            tell(paymentEvent(payment));
        }
    } catch (const EDatabase& error) {
        if (std::exchange(FBooksTrouble, error.message()).isEmpty()) {
            FLog.error({}, QStringLiteral("the books cannot be written, it will be tried again: ") +
                               error.message());
        }
        FBeginBooks.SetEnabled(true);
        return;
    }
    if (!std::exchange(FBooksTrouble, {}).isEmpty()) {
        FLog.info({}, QStringLiteral("the books are written now"));
        enterLamps();
        changed();
    } else if (FLampsWait) {
        enterLamps();
    }
}

void TClubPlant::closeAbandoned(int patienceMs)
{
    if (FAbandonedClosed) {
        return;
    }
    FOtherHost = anotherHostLives(); // before this one is among those who live
    if (const int abandoned = FDatabase.closeAbandoned(patienceMs); abandoned > 0) {
        FLog.warning({}, QStringLiteral(
                             "%1 passes were left open by a host that was killed; they have ended as \"%2\"")
                             .arg(abandoned)
                             .arg(toText(TEnding::Abandoned)));
    }
    FAbandonedClosed = true;
}

bool TClubPlant::anotherHostLives()
{
    THostLocks locks(FDatabase.fileName());
    const QList<qint64> hosts = TStatement(FDatabase.connection(), QStringLiteral("SELECT id FROM host"))
                                    .run()
                                    .all([](const TRows& row) { return row.value(0).toLongLong(); });
    return std::any_of(hosts.begin(), hosts.end(),
                       [&](qint64 host) { return host != FDatabase.host() && locks.alive(host); });
}

/// The lamps get their hosts, which follow the books: one that the books do not have as the file says waits
/// until they do.
void TClubPlant::enterLamps()
{
    QList<TLampPlan> lamps;
    try {
        const QList<TLamp> known = TLampBooks(FDatabase).lamps();
        for (TLampPlan each : FPlan.lamps) {
            const auto same = std::find_if(known.begin(), known.end(), [&](const TLamp& lamp) {
                return lamp.name == each.lamp.name && lamp.board == each.lamp.board &&
                       lamp.relay == each.lamp.relay;
            });
            if (same != known.end()) {
                each.lamp = *same; // at the old price, until the books have the new one
                lamps << each;
            }
        }
        for (const auto& [name, bus] : FBuses) {
            bus->setLamps(lamps);
        }
        if (std::exchange(FLampsWait, false)) {
            FLog.info({}, QStringLiteral("the books of the lamps are read now"));
        }
    } catch (const EDatabase& error) {
        if (!std::exchange(FLampsWait, true)) {
            FLog.error({}, QStringLiteral("the books of the lamps cannot be read, it will be tried again: ") +
                               error.message());
        }
        FBeginBooks.SetEnabled(true);
    }
}

// The file says what there is; the books follow, so that the other commands know it, too.
void TClubPlant::enterIntoBooks(const TClubPlan& plan)
{
    QList<TGate> gates;
    for (const TGatePlan& each : plan.gates) {
        gates << each.gate;
    }
    QList<TLamp> lamps;
    for (const TLampPlan& each : plan.lamps) {
        lamps << each.lamp;
    }
    for (const TGate& gate : enterEquipment(FDatabase, gates, lamps)) {
        FLog.info(
            {},
            QStringLiteral("gate %1 leads %2, zone %3").arg(gate.address, toText(gate.direction), gate.zone));
    }
}

/// Times on lamps that the file does not have any more, because it was changed while no host ran: nobody
/// switches them off. When another host runs on the same books they may be its lamps, and are its business.
void TClubPlant::tellOfLostLamps()
{
    if (FOtherHost) {
        return;
    }
    TLampBooks books(FDatabase);
    for (TLampTime& time : books.open()) {
        const bool known = std::any_of(FPlan.lamps.begin(), FPlan.lamps.end(),
                                       [&](const TLampPlan& each) { return each.lamp.name == time.lamp; });
        if (known || time.waiting()) { // an order may be another host's
            continue;
        }
        FLog.error({}, QStringLiteral("%1, which is not in the file any more, was paid for until %2: look "
                                      "whether it is on")
                           .arg(time.lamp, toText(time.until).left(19)));
        if (!time.running(platform::Now())) {
            books.end(time, platform::Now(), TLampEnding::Over);
        }
    }
}

} // namespace tnv5::host
