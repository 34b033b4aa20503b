#include "apps/tnv5/demo_lamps.h"

#include "apps/tnv5/console.h"
#include "apps/tnv5/demo_report.h"
#include "tnv5/common/date_time_text.h"

#include <algorithm>
#include <limits>

#include <QJsonObject>

namespace tnv5::cli {

namespace {

constexpr int kLookMs = 100;
constexpr int kPingMs = 900;

} // namespace

TDemoLamps::TDemoLamps(host::TDatabase& club, sim::TLines& lines, int minuteMs)
    : FClub(club), FBooks(club), FPty(QStringLiteral("lamps")), FBus(FPty), FHost(FDevice, club)
{
    for (const host::TLamp& lamp : FBooks.lamps()) {
        TPlace& place = FPlaces[lamp.name];
        place.lamp = lamp;
        place.relay = lamp.relay.toInt() - (lamp.board.endsWith(u'B') ? 2 : 0);
    }
    for (const TLampVisit& visit : demoLampVisits()) {
        FPlaces.at(visit.lamp).visits << visit;
        FBalances[visit.card] = club.holderOf(visit.card)->member.balance;
    }
    FBus.addPair(kLampPair);
    FBus.OnRelay = [this](const QString& board, int relay, bool on) {
        for (auto& [name, place] : FPlaces) {
            if (place.lamp.board == board && place.relay == relay) {
                place.changes.append({on, platform::Now()});
            }
        }
    };
    lines.add(FPty);
    lines.add(FPort);
    FPort.SetPort(FPty.path());
    FConnector.SetConnectorType(connector::podComPort);
    FConnector.SetComport(&FPort);
    FDevice.SetConnector(&FConnector);
    FHost.MinuteMs = minuteMs;
    FHost.OnTime = [this](const host::TLampTime& time) {
        print(host::logLine(time));
        if (OnTime) {
            OnTime(time);
        }
    };
    FHost.OnTrouble = [](const QString& text) { print(QStringLiteral("--- lamps: ") + text); };
    FTimer.SetInterval(kLookMs);
    FTimer.OnTimer = [this](platform::TTimer*) { serveAll(); };
}

void TDemoLamps::open()
{
    if (!FConnector.GetConnected()) {
        throw platform::Exception(QStringLiteral("The simulated lamps cannot be reached"));
    }
    FBus.setPingInterval(kPingMs);
    FTimer.SetEnabled(true);
}

QJsonArray TDemoLamps::states()
{
    QJsonArray lamps;
    for (const host::TLampState& state : FHost.lamps()) {
        lamps.append(QJsonObject{{QStringLiteral("name"), state.lamp.name},
                                 {QStringLiteral("board"), state.lamp.board},
                                 {QStringLiteral("relay"), state.lamp.relay},
                                 {QStringLiteral("on"), state.on},
                                 {QStringLiteral("answers"), state.answers},
                                 {QStringLiteral("holder"), state.name},
                                 {QStringLiteral("secondsLeft"), state.secondsLeft}});
    }
    return lamps;
}

bool TDemoLamps::quiet()
{
    return FBooks.open().isEmpty() && std::all_of(FPlaces.begin(), FPlaces.end(), [this](const auto& entry) {
               return !FBus.relayOn(entry.second.lamp.board, entry.second.relay);
           });
}

void TDemoLamps::serveAll()
{
    if (FClosed) {
        return;
    }
    const QList<host::TLampTime> open = FBooks.open();
    for (const host::TLampState& state : FHost.lamps()) {
        const QString& name = state.lamp.name;
        serve(FPlaces.at(name), state,
              std::any_of(open.begin(), open.end(),
                          [&](const host::TLampTime& time) { return time.lamp == name; }));
    }
}

// Who buys more comes while the lamp is on, everybody else when it is dark and the host knows it.
void TDemoLamps::serve(TPlace& place, const host::TLampState& state, bool open)
{
    const TLampVisit visit = place.visits[place.next];
    const bool on = FBus.relayOn(place.lamp.board, place.relay);
    const bool free = !on && !state.on && state.answers && !open;
    if (visit.more ? on && state.secondsLeft > 0 : free) {
        place.next = (place.next + 1) % place.visits.size();
        place.done << visit;
        FHost.sell(visit.card, visit.lamp, visit.minutes);
    }
}

QList<host::TLampTime> TDemoLamps::timesOf(const TPlace& place)
{
    QList<host::TLampTime> times;
    for (const host::TLampTime& time : FBooks.timesAfter(0, std::numeric_limits<int>::max())) {
        if (time.lamp == place.lamp.name) {
            times << time;
        }
    }
    return times;
}

QStringList TDemoLamps::compare()
{
    QStringList wrong;
    for (const auto& [name, place] : FPlaces) {
        wrong << compareBooks(place) << compareRelay(place);
    }
    return wrong << compareAccounts();
}

QStringList TDemoLamps::compareBooks(const TPlace& place)
{
    QStringList wrong;
    QList<host::TLampTime> times = timesOf(place);
    for (const TLampVisit& visit : place.done) {
        const bool refused = visit.cents < 0;
        const QString who =
            QStringLiteral("%1 (%2): %3 min on %4 must be %5; the books: ")
                .arg(visit.name, visit.card)
                .arg(visit.minutes)
                .arg(visit.lamp, refused ? QStringLiteral("refused") : host::amountText(visit.cents));
        if (times.isEmpty()) {
            wrong << who + QStringLiteral("nothing");
            continue;
        }
        const host::TLampTime time = times.takeFirst();
        const auto ending = refused ? host::TLampEnding::Refused : host::TLampEnding::Over;
        if (time.card != visit.card || time.minutes != visit.minutes || time.ending != ending ||
            (!refused && time.cents != visit.cents)) {
            wrong << who + host::logLine(time);
        }
    }
    for (const host::TLampTime& time : times) {
        wrong << QStringLiteral("in the books, but nobody bought it: ") + host::logLine(time);
    }
    return wrong;
}

// On once for all time that follows on without a gap, not before it begins, and off not before it is over; so
// that it is off before the next one begins.
QStringList TDemoLamps::compareRelay(const TPlace& place)
{
    QStringList wrong;
    struct TPeriod
    {
        qint64 began;
        qint64 until;
    };
    QList<TPeriod> sold;
    for (const host::TLampTime& time : timesOf(place)) {
        const qint64 began = common::WholeMs(time.began);
        const qint64 until = common::WholeMs(time.until);
        if (time.began != 0 && !sold.isEmpty() && began < sold.last().until) {
            sold.last().until = until;
        } else if (time.began != 0) {
            sold.append({began, until});
        }
    }
    QList<TChange> changes = place.changes;
    for (const TPeriod& period : sold) {
        if (changes.size() < 2 || !changes[0].on || changes[1].on ||
            common::WholeMs(changes[0].time) < period.began ||
            common::WholeMs(changes[1].time) < period.until) {
            return wrong << QStringLiteral("%1 was not on as sold").arg(place.lamp.name);
        }
        changes.remove(0, 2);
    }
    if (!changes.isEmpty()) {
        wrong << QStringLiteral("%1 was switched when nobody had paid").arg(place.lamp.name);
    }
    return wrong;
}

QStringList TDemoLamps::compareAccounts()
{
    std::map<QString, qint64> balances = FBalances;
    for (const auto& [name, place] : FPlaces) {
        for (const TLampVisit& visit : place.done) {
            balances[visit.card] -= std::max<qint64>(visit.cents, 0);
        }
    }
    QStringList wrong;
    for (const auto& [card, balance] : balances) {
        const qint64 found = FClub.holderOf(card)->member.balance;
        if (found != balance) {
            wrong << QStringLiteral("the account of card %1 must hold %2, it holds %3")
                         .arg(card, host::amountText(balance), host::amountText(found));
        }
    }
    return wrong;
}

QStringList TDemoLamps::closingRows()
{
    int minutes = 0;
    qint64 cents = 0;
    qsizetype times = 0;
    for (const host::TLampTime& time : FBooks.timesAfter(0, std::numeric_limits<int>::max())) {
        if (time.ending == host::TLampEnding::Over) {
            ++times;
            minutes += time.minutes;
            cents += time.cents;
        }
    }
    return {closingRow(QStringLiteral("lamp time sold, times"), QString::number(times)),
            closingRow(QStringLiteral("  short minutes"), QString::number(minutes)),
            closingRow(QStringLiteral("  charged"), host::amountText(cents))};
}

} // namespace tnv5::cli
