#include "tnv5/host/club/club_plant.h"

#include "tnv5/host/club/club_check.h"
#include "tnv5/host/local/local_events.h"
#include "tnv5/platform/clock.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFileInfo>
#include <algorithm>

namespace tnv5::host {

namespace {

/// Whether equipment can go on as it is, but for those who watch it.
bool goesOn(const TLinePlan& before, const TLinePlan& now)
{
    return before.name == now.name && before.port == now.port && before.baud == now.baud;
}

/// What an order says, or why the books do not allow it.
template <class Order>
QString attempt(const Order& order)
{
    try {
        return order();
    } catch (const EDatabase& error) {
        return error.message();
    }
}

template <class Plan>
const Plan* find(const QList<Plan>& plans, const QString& name)
{
    const auto found =
        std::find_if(plans.begin(), plans.end(), [&](const Plan& each) { return each.name == name; });
    return found == plans.end() ? nullptr : &*found;
}

} // namespace

TClubPlant::TClubPlant(const QString& file, const TClubPlan& plan, TDatabase& database, TClubLog& log)
    : FFile(file),
      FPlan(plan),
      FLog(log),
      FDatabase(database),
      FDesk(database),
      FSite{database, FDesk, log, [this](const QJsonObject& event) { tell(event); }},
      FInside(database.connection(), QStringLiteral("SELECT count(*) FROM member WHERE inside <> 0")),
      FNameOf(database.connection(), QStringLiteral("SELECT name FROM member WHERE id = ?"))
{
    FDesk.OnTrouble = [this](const QString& text) { FLog.error({}, text); };
    FDesk.OnLost = [this](const QString& text) { FLog.always(text); }; // nothing else tells who it was
    FDesk.OnPass = [this](const TPass& pass) {
        const std::optional<TGate> gate = gateAt(pass.gate);
        FLog.info(gate ? pass.gate : QStringLiteral("a gate that is not in the file"), passText(pass));
        tell(passEvent(pass, gate ? gate->zone : QString()));
        changed();
    };
    FLook.SetInterval(kLookMs);
    FLook.OnTimer = [this](platform::TTimer*) { look(); };
    FBeginBooks.SetInterval(kBeginBooksMs);
    FBeginBooks.OnTimer = [this](platform::TTimer*) { beginBooks(TDatabase::kBusyMs); };
}

TClubPlant::~TClubPlant()
{
    close();
}

void TClubPlant::start()
{
    beginBooks(TDatabase::kStartMs); // no gate waits yet
    FStartedMs = platform::TClock::current().nowMs();
    FRunning = true;
    apply(FPlan);
    FLook.SetEnabled(true);
}

qint64 TClubPlant::close()
{
    FRunning = false;
    FLook.SetEnabled(false);
    FBeginBooks.SetEnabled(false);
    platform::guarded([this] { FDatabase.setBusyTimeout(TDatabase::kCloseMs); }); // no gate waits any more
    for (const auto& [name, terminal] : FTerminals) {
        terminal->end();
        if (const qsizetype unwritten = terminal->unwritten(); unwritten > 0) {
            FLost += unwritten;
            platform::guarded(
                [this] { FDatabase.setBusyTimeout(TDatabase::kBusyMs); }); // they have had their time
            FLog.always(
                QStringLiteral("%1: NOT IN THE BOOKS: the outcome of %2 payments").arg(name).arg(unwritten));
        }
    }
    platform::guarded([this] { FDatabase.setBusyTimeout(TDatabase::kBusyMs); });
    FTerminals.clear();
    FScales.clear();
    FBuses.clear();
    FLines.clear();
    FDesk.close();
    return FDesk.lost() + FLost;
}

/// Why lamps cannot be taken away, or be elsewhere, now: nobody would switch them off.
QStringList TClubPlant::lampsInUse(const TClubPlan& plan)
{
    QStringList why;
    for (const TLampPlan& lamp : FPlan.lamps) {
        const auto* const before = find(FPlan.buses, lamp.bus);
        const auto* const now = find(plan.buses, lamp.bus);
        const bool stays = std::any_of(plan.lamps.begin(), plan.lamps.end(), [&](const TLampPlan& other) {
            return other.lamp.name == lamp.lamp.name && other.bus == lamp.bus &&
                   other.lamp.board == lamp.lamp.board && other.lamp.relay == lamp.lamp.relay;
        });
        if (stays && before != nullptr && now != nullptr && goesOn(*before, *now)) {
            continue;
        }
        if (const auto bus = FBuses.find(lamp.bus); bus != FBuses.end()) {
            why << bus->second->lampInUse(lamp.lamp.name);
        }
    }
    why.removeAll(QString());
    return why;
}

/// Why scales and terminals cannot be taken away, or become others, now: what they wait for would be lost.
QStringList TClubPlant::countersInUse(const TClubPlan& plan) const
{
    QStringList why;
    const auto look = [&why](const auto& units, const auto& plans) {
        for (const auto& [name, unit] : units) {
            const auto* const now = find(plans, name);
            if (now == nullptr || !(*now == unit->plan())) {
                why << unit->inUse();
            }
        }
    };
    look(FScales, plan.scales);
    look(FTerminals, plan.terminals);
    why.removeAll(QString());
    for (QString& each : why) {
        each += QStringLiteral("; change it later");
    }
    return why;
}

void TClubPlant::apply(const TClubPlan& plan)
{
    dropWhatIsGone(plan);
    addWhatIsNew(plan);
    FPlan = plan;
    for (TClubGates* const each : allGates()) {
        each->setGates(plan.gates);
    }
    enterLamps();
    changed();
}

void TClubPlant::dropWhatIsGone(const TClubPlan& plan)
{
    const auto drop = [this](auto& units, const auto& plans, const auto& stays) {
        for (auto unit = units.begin(); unit != units.end();) {
            const auto* const now = find(plans, unit->first);
            if (now != nullptr && stays(unit->second->plan(), *now)) {
                ++unit;
                continue;
            }
            FLog.info(unit->first, QStringLiteral("ends: the file has changed"));
            const QString name = unit->first;
            unit = units.erase(unit);
            interrupt(name);
        }
    };
    const auto unchanged = [](const auto& before, const auto& now) { return before == now; };
    drop(FLines, plan.lines, goesOn);
    drop(FBuses, plan.buses, goesOn);
    drop(FScales, plan.scales, unchanged);
    drop(FTerminals, plan.terminals, unchanged);
}

/// Who was passing at the gates of a line that is gone will never be heard of again.
void TClubPlant::interrupt(const QString& line)
{
    for (const TGatePlan& each : FPlan.gates) {
        if (each.line == line) {
            FDesk.interrupt(each.gate.address);
        }
    }
}

void TClubPlant::addWhatIsNew(const TClubPlan& plan)
{
    const auto add = [this, &plan](auto& units, const auto& plans) {
        for (const auto& each : plans) {
            auto& unit = units[each.name];
            if (!unit) {
                using TUnit = typename std::remove_reference_t<decltype(unit)>::element_type;
                unit = std::make_unique<TUnit>(FSite, each);
                if constexpr (std::is_base_of_v<TClubGates, TUnit>) {
                    unit->setGates(plan.gates);
                }
                begin(unit->port());
            } else if constexpr (std::is_base_of_v<TClubGates, std::remove_reference_t<decltype(*unit)>>) {
                unit->change(each);
            }
        }
    };
    add(FLines, plan.lines);
    add(FBuses, plan.buses);
    add(FScales, plan.scales);
    add(FTerminals, plan.terminals);
}

void TClubPlant::begin(TClubPort& port)
{
    port.start();
}

void TClubPlant::look()
{
    for (TClubGates* const each : allGates()) {
        each->look();
    }
    changed();
}

QList<TClubGates*> TClubPlant::allGates() const
{
    QList<TClubGates*> all;
    for (const auto& [name, line] : FLines) {
        all << line.get();
    }
    for (const auto& [name, bus] : FBuses) {
        all << bus.get();
    }
    return all;
}

std::optional<TGate> TClubPlant::gateAt(const QString& address) const
{
    const auto found = std::find_if(FPlan.gates.begin(), FPlan.gates.end(),
                                    [&](const TGatePlan& each) { return each.gate.address == address; });
    return found == FPlan.gates.end() ? std::nullopt : std::optional(found->gate);
}

void TClubPlant::tell(const QJsonObject& event)
{
    if (OnEvent) {
        OnEvent(event);
    }
}

void TClubPlant::changed()
{
    if (OnChanged) {
        OnChanged();
    }
}

// ---- what it does for others

QJsonObject TClubPlant::state()
{
    QJsonArray lines;
    QJsonArray gates;
    QJsonArray boards;
    QJsonArray lamps;
    QJsonArray scales;
    QJsonArray terminals;
    const auto append = [](QJsonArray& to, const QJsonArray& from) {
        for (const auto& each : from) {
            to.append(each);
        }
    };
    for (TClubGates* const each : allGates()) {
        lines.append(each->port().state());
        append(gates, each->gatesState());
    }
    for (const auto& [name, bus] : FBuses) {
        append(boards, bus->boardsState());
        append(lamps, bus->lampsState());
    }
    for (const auto& [name, scale] : FScales) {
        lines.append(scale->port().state());
        scales.append(scale->state());
    }
    for (const auto& [name, terminal] : FTerminals) {
        lines.append(terminal->port().state());
        terminals.append(terminal->state());
    }
    return {{"club", FPlan.name},
            {"version", QCoreApplication::applicationVersion()},
            {"started", isoTime(momentOf(FStartedMs))},
            {"pid", QCoreApplication::applicationPid()},
            {"lines", lines},
            {"gates", gates},
            {"boards", boards},
            {"lamps", lamps},
            {"scales", scales},
            {"terminals", terminals},
            {"inside", inside()},
            {"journalWaiting", FDesk.waiting()},
            {"troubles", QJsonArray::fromStringList(troubles())}};
}

QJsonValue TClubPlant::inside()
{
    try {
        return FInside.run().number();
    } catch (const EDatabase&) { // the journal tells of it
        return QJsonValue::Null;
    }
}

QStringList TClubPlant::troubles() const
{
    QStringList texts;
    for (TClubGates* const each : allGates()) {
        texts << each->troubles();
    }
    for (const auto& [name, scale] : FScales) {
        texts << scale->port().whyNot();
    }
    for (const auto& [name, terminal] : FTerminals) {
        texts << terminal->port().whyNot();
    }
    if (!FBooksTrouble.isEmpty()) {
        texts << QStringLiteral("the books cannot be written: %1").arg(FBooksTrouble);
    }
    texts << FDesk.misplaced();
    if (FDesk.journalFails()) {
        texts << QStringLiteral("the journal cannot be written: %1 entries wait").arg(FDesk.waiting());
    }
    if (!FLog.trouble().isEmpty()) {
        texts << QStringLiteral("the log cannot be written: %1").arg(FLog.trouble());
    }
    texts.removeAll(QString());
    return texts;
}

QString TClubPlant::open(const QString& gate, const QString& who, const QString& reason)
{
    for (TClubGates* const each : allGates()) {
        if (each->hasGate(gate)) {
            const QString whyNot = each->open(gate, who, reason);
            const QString what = QStringLiteral("%1 opens %2 by hand: %3").arg(who, gate, reason);
            if (whyNot.isEmpty()) {
                FLog.info(each->plan().name, what);
            } else {
                FLog.warning(each->plan().name, QStringLiteral("%1; not done: %2").arg(what, whyNot));
            }
            changed();
            return whyNot;
        }
    }
    return QStringLiteral("there is no gate \"%1\"").arg(gate);
}

QString TClubPlant::reload()
{
    const QString name = QFileInfo(FFile).fileName();
    const TClubFile file = Read ? Read() : checkClub(FFile);
    QStringList wrong;
    for (const TFileError& error : file.errors) {
        wrong << errorText(name, error);
    }
    if (wrong.isEmpty() && (file.plan.name != FPlan.name || file.plan.database != FPlan.database ||
                            file.plan.socket != FPlan.socket)) {
        wrong << name + QStringLiteral(": another name, database or socket needs a new start of the host");
    }
    if (wrong.isEmpty()) {
        try {
            wrong = lampsInUse(file.plan) + countersInUse(file.plan);
            if (wrong.isEmpty()) {
                enterIntoBooks(file.plan);
            }
        } catch (const EDatabase& error) {
            wrong << error.message();
        }
    }
    if (!wrong.isEmpty()) {
        FLog.error({}, QStringLiteral("nothing is changed: ") + wrong.join(QStringLiteral("; ")));
        return wrong.join(QStringLiteral("; "));
    }
    FLog.reopen(file.plan.log);
    apply(file.plan);
    FLog.info({}, name + QStringLiteral(" has been read again"));
    return {};
}

QString TClubPlant::sellGoods(const QString& scale, const QString& card, const QString& product)
{
    const auto found = FScales.find(scale);
    return found == FScales.end() ? QStringLiteral("there is no scale \"%1\"").arg(scale)
                                  : attempt([&] { return found->second->sell(card, product); });
}

QString TClubPlant::sellTime(const QString& lamp, const QString& card, int minutes)
{
    for (const auto& [name, bus] : FBuses) {
        if (bus->hasLamp(lamp)) {
            return attempt(
                [&lamp, &card, minutes, &unit = bus] { return unit->sellTime(lamp, card, minutes); });
        }
    }
    return QStringLiteral("there is no lamp \"%1\"").arg(lamp);
}

QString TClubPlant::sellAmount(const QString& terminal, qint64 cents)
{
    const auto found = FTerminals.find(terminal);
    return found == FTerminals.end() ? QStringLiteral("there is no terminal \"%1\"").arg(terminal)
                                     : attempt([&] { return found->second->pay(cents); });
}

QString TClubPlant::cancelSale(const QString& device)
{
    if (const auto scale = FScales.find(device); scale != FScales.end()) {
        scale->second->cancel();
    } else if (const auto terminal = FTerminals.find(device); terminal != FTerminals.end()) {
        const QString left = terminal->second->cancel();
        changed();
        return left;
    } else {
        return QStringLiteral("there is no scale or terminal \"%1\"").arg(device);
    }
    changed();
    return {};
}

QByteArray TClubPlant::picture(const QString& card)
{
    const QImage image = FDesk.pictureFor(card);
    QBuffer png;
    if (!image.isNull()) {
        image.save(&png, "PNG");
    }
    return png.data();
}

QJsonArray TClubPlant::journal(qint64 after, int limit)
{
    QJsonArray passes;
    for (TPass& pass : FDatabase.passesAfter(after, limit)) {
        if (pass.member != 0) {
            TRows rows = FNameOf.run({pass.member});
            pass.name = rows.next() ? rows.value(0).toString() : QString();
        }
        const std::optional<TGate> gate = gateAt(pass.gate);
        if (gate) {
            pass.direction = gate->direction;
        }
        passes.append(toJson(pass, gate ? gate->zone : QString()));
    }
    return passes;
}

} // namespace tnv5::host
