#include "tnv5/host/club/club_gates.h"

#include "tnv5/common/messages.h"
#include "tnv5/connector/routed_line.h"
#include "tnv5/host/local/local_events.h"
#include "tnv5/platform/clock.h"

#include <algorithm>

namespace tnv5::host {

namespace {

const QString kLink = QStringLiteral("0.0.0.0"); // what a connector calls its serial port

bool isRelayBoard(QStringView address)
{
    return address.endsWith(u'A') || address.endsWith(u'B');
}

QJsonValue known(std::optional<bool> value)
{
    return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Null);
}

QString monitorTrouble(const QString& name, const TMonitorPlan& plan)
{
    return QStringLiteral("%1 cannot be watched: port %2 cannot be opened").arg(name).arg(plan.port);
}

} // namespace

// ---- what lines and buses share

TClubGates::TClubGates(TClubSite& site, const TLinePlan& plan)
    : FSite(site), FPlan(plan), FPort(site, plan.name, plan.port, plan.baud)
{
}

void TClubGates::setGates(const QList<TGatePlan>& gates)
{
    FGates.clear();
    for (const TGatePlan& each : gates) {
        if (each.line == FPlan.name) {
            FGates[each.gate.address] = each.gate;
        }
    }
}

void TClubGates::keep(TGateKeeping& keeping)
{
    keeping.Knows = [this](const QString& address) { return hasGate(address); };
    keeping.OnTrouble = [this](const QString& text) { FSite.log.warning(FPlan.name, text); };
}

QString TClubGates::open(const QString& address, const QString& who, const QString& reason)
{
    if (!FPort.open()) {
        return FPort.whyNot();
    }
    if (answering(address) == std::optional(false)) {
        return QStringLiteral("%1 does not answer").arg(address);
    }
    if (busy(address)) {
        return QStringLiteral("somebody is passing at %1").arg(address);
    }
    FSite.desk.expectByHand(address, who, reason);
    command(address);
    // a sweep that ends another pass comes to none behind it
    for (int left = passes(); left > 0 && FSite.desk.expectsByHand(address); --left) {
        sweep();
    }
    return FSite.desk.forgetByHand(address) ? QStringLiteral("%1 could not be told to open").arg(address)
                                            : QString();
}

QJsonArray TClubGates::gatesState() const
{
    QJsonArray gates;
    for (const TGate& gate : FGates) {
        gates.append(QJsonObject{{"address", gate.address},
                                 {"zone", gate.zone},
                                 {"direction", toText(gate.direction)},
                                 {"line", FPlan.name},
                                 {"answering", known(answering(gate.address))},
                                 {"busy", busy(gate.address)},
                                 {"holder", FSite.desk.holderAt(gate.address)}});
    }
    return gates;
}

QStringList TClubGates::troubles()
{
    QStringList texts;
    if (!FPort.open()) {
        texts << FPort.whyNot();
    }
    for (const TGate& gate : std::as_const(FGates)) {
        if (answering(gate.address) == std::optional(false)) {
            texts << QStringLiteral("%1: gate %2 does not answer").arg(FPlan.name, gate.address);
        }
    }
    return texts;
}

// ---- classic lines

TClubLine::TClubLine(TClubSite& site, const TLinePlan& plan)
    : TClubGates(site, plan), FHost(FDevice, site.desk)
{
    keep(FHost.Keeping);
    FDevice.SetComport(&FPort.port());
    changeMonitor(FDevice, plan.monitor);
}

void TClubLine::setGates(const QList<TGatePlan>& gates)
{
    TClubGates::setGates(gates);
    FDevice.SetDeviceList(FGates.keys());
}

void TClubLine::change(const TLinePlan& plan)
{
    if (plan.monitor != FPlan.monitor) {
        changeMonitor(FDevice, plan.monitor);
    }
    FPlan = plan;
}

QStringList TClubLine::troubles()
{
    QStringList texts = TClubGates::troubles();
    if (FPlan.monitor && FDevice.ListeningPort() == 0) {
        texts << monitorTrouble(FPlan.name, *FPlan.monitor);
    }
    return texts;
}

void TClubLine::look()
{
    endForgotten();
    serveMonitor(FDevice, FPlan.monitor);
}

// The component ends the passes of a gate that is neither a turnstile nor the door only when a line of its
// controller says so: one that is lost would keep the gate for ever. Looks are counted, and not time, so that
// a clock that is set ends nothing.
void TClubLine::endForgotten()
{
    std::map<turnstile::PRFidInfo, int> looks;
    for (int index = 0; index < FDevice.StackItemsCount(); ++index) {
        const turnstile::PRFidInfo pass = FDevice.StackItem(index);
        const auto before = FLooks.find(pass);
        looks[pass] = before == FLooks.end() ? 1 : before->second + 1;
        if (looks[pass] == kPassLooks) {
            pass->Status = common::kTimeout; // as the component does itself: its next sweep ends the pass
            FSite.log.warning(FPlan.name, QStringLiteral("%1 tells no end of a pass; it ends as \"%2\"")
                                              .arg(pass->Device, toText(TEnding::TimedOut)));
        }
    }
    FLooks = std::move(looks);
}

// As if a card had been read: the component asks the desk, which opens for the pseudo card and journals it.
void TClubLine::command(const QString& address)
{
    FDevice.p_hw_ProtocolIn(u'$' + address + u'R' + common::kCardManual);
    sweep(); // now, and not at the next tick
}

// ---- buses

TClubBus::TClubBus(TClubSite& site, const TLinePlan& plan) : TClubGates(site, plan), FHost(FDevice, site.desk)
{
    keep(FHost.Keeping);
    FConnector.SetConnectorType(connector::podComPort);
    FConnector.SetComport(&FPort.port());
    FConnector.SetOnError(
        [this](platform::TComponent*, const QString& text) { FSite.log.warning(FPlan.name, text); });
    FDevice.SetConnector(&FConnector);
    FRelays.SetConnector(&FConnector);
    FNoLamps.emplace(FRelays);
    FPort.OnOpened = [this] { listenAnew(); };
    attach();
    changeMonitor(FDevice, plan.monitor);
    changeMonitor(FRelays, plan.lampMonitor);
}

TClubBus::~TClubBus()
{
    FConnector.SetOnGetData(nullptr);
}

void TClubBus::attach()
{
    FConnector.SetOnGetData(
        [this](platform::TComponent* sender, const QString& line) { hear(sender, line); });
}

void TClubBus::hear(platform::TComponent* sender, const QString& line)
{
    const QString address = connector::deviceOf(line).toString();
    if (const auto board = FBoards.find(address); board != FBoards.end()) {
        if (board->heardMs == 0) {
            FSite.log.info(FPlan.name, QStringLiteral("%1 answers").arg(address));
            FSilent.removeAll(address);
        }
        *board = {platform::TClock::current().nowMs(), 0, true};
    }
    if (isRelayBoard(address) && !hasGate(address)) {
        FRelays.OnConnectorData(sender, line);
    } else {
        FDevice.OnConnectorData(sender, line);
    }
}

// What a board did before its port went away says nothing of now.
void TClubBus::listenAnew()
{
    for (TBoard& board : FBoards) {
        board.heard = false;
        board.silentLooks = 0;
    }
}

void TClubBus::tellOfSilence()
{
    for (auto board = FBoards.begin(); board != FBoards.end(); ++board) {
        if (FPort.open()) {
            board->silentLooks = std::min(board->silentLooks + 1, kSilentLooks);
        }
        const bool silent = FPort.open() && answering(board.key()) == std::optional(false);
        if (silent == FSilent.contains(board.key())) {
            continue;
        }
        if (silent) {
            FSilent.append(board.key());
            const QString what = board->heardMs == 0 ? QStringLiteral("%1 has never answered")
                                                     : QStringLiteral("%1 does not answer any more");
            FSite.log.warning(FPlan.name, what.arg(board.key()));
        } else if (answering(board.key()).value_or(false)) {
            FSilent.removeAll(board.key());
            FSite.log.info(FPlan.name, QStringLiteral("%1 answers again").arg(board.key()));
        }
    }
}

void TClubBus::change(const TLinePlan& plan)
{
    if (plan.monitor != FPlan.monitor) {
        changeMonitor(FDevice, plan.monitor);
    }
    if (plan.lampMonitor != FPlan.lampMonitor) {
        changeMonitor(FRelays, plan.lampMonitor);
    }
    FPlan = plan;
}

void TClubBus::setLamps(const QList<TLampPlan>& lamps)
{
    QList<TLampPlan> mine;
    QStringList names;
    QMap<QString, TBoard> boards;
    for (const TGate& gate : std::as_const(FGates)) {
        boards[gate.address] = FBoards.value(gate.address);
    }
    for (const TLampPlan& each : lamps) {
        if (each.bus == FPlan.name) {
            mine << each;
            names << each.lamp.name;
            boards[each.lamp.board] = FBoards.value(each.lamp.board);
        }
    }
    FBoards = boards;
    if (mine == FLamps) {
        return;
    }
    FLampHost.reset(); // two at the same relays would take the questions from each other
    FNoLamps.emplace(FRelays);
    FLamps.clear();
    FLampNames = names;
    if (!mine.isEmpty()) {
        FLampHost = std::make_unique<TSwitchHost>(FRelays, FSite.database, names);
        FLampHost->OnTime = [this](const TLampTime& time) {
            FSite.log.info(FPlan.name, logLine(time));
            FSite.tell(lampTimeEvent(time));
        };
        FLampHost->OnTrouble = [this](const QString& text) {
            FLampTold = text;
            FSite.log.warning(FPlan.name, text);
        };
    }
    FLamps = mine; // what could not be made is tried again
}

QString TClubBus::sellTime(const QString& lamp, const QString& card, int minutes)
{
    if (!FPort.open()) {
        return FPort.whyNot();
    }
    if (!FLampHost) {
        return QStringLiteral("the books of the lamps cannot be read now");
    }
    FLampTold = QStringLiteral("%1 cannot be switched on").arg(lamp);
    return FLampHost->sell(card, lamp, minutes) ? QString() : FLampTold;
}

QString TClubBus::lampInUse(const QString& name)
{
    const QString later = QStringLiteral("; take it out later");
    platform::TDateTime until = 0;
    for (const TLampTime& time : TLampBooks(FSite.database).open()) {
        if (time.lamp == name && time.waiting()) {
            return QStringLiteral("%1 is being switched on for %2").arg(name, time.name) + later;
        }
        if (time.lamp == name && time.running(platform::Now())) {
            until = std::max(until, time.until);
        }
    }
    if (until != 0) {
        return QStringLiteral("%1 is paid for until %2").arg(name, toText(until).mid(11, 8)) + later;
    }
    for (const TLampState& state : FLampHost ? FLampHost->lamps() : QList<TLampState>()) {
        if (state.lamp.name == name && state.on && answering(state.lamp.board).value_or(false)) {
            // it is being switched off
            return QStringLiteral("%1 is still on").arg(name) + later;
        }
    }
    return {};
}

bool TClubBus::busy(const QString& address) const
{
    return FDevice.p_hw_FindDevice(kLink, address) >= 0;
}

void TClubBus::command(const QString& address)
{
    FDevice.p_hw_manual(kLink, address, common::kOpen);
    sweep(); // now, and not at the next tick
}

std::optional<bool> TClubBus::answering(const QString& address) const
{
    const TBoard board = FBoards.value(address);
    const bool lately = board.silentLooks < kSilentLooks;
    if (!board.heard && lately && (FPort.open() || board.heardMs == 0)) {
        return std::nullopt; // it has not had the time
    }
    return FPort.open() && board.heard && lately;
}

QJsonArray TClubBus::boardsState() const
{
    QJsonArray boards;
    for (auto board = FBoards.begin(); board != FBoards.end(); ++board) {
        boards.append(
            QJsonObject{{"address", board.key()},
                        {"line", FPlan.name},
                        {"answering", answering(board.key()).value_or(false)},
                        {"heard", board->heardMs == 0 ? QString() : isoTime(momentOf(board->heardMs))}});
    }
    return boards;
}

QJsonArray TClubBus::lampsState()
{
    QJsonArray lamps;
    if (!FLampHost) {
        return lamps;
    }
    for (const TLampState& state : FLampHost->lamps()) {
        lamps.append(QJsonObject{{"name", state.lamp.name},
                                 {"board", state.lamp.board},
                                 {"relay", state.lamp.relay},
                                 {"on", state.on},
                                 {"answers", state.answers},
                                 {"holder", state.name},
                                 {"secondsLeft", state.secondsLeft}});
    }
    return lamps;
}

QStringList TClubBus::troubles()
{
    QStringList texts = TClubGates::troubles();
    if (FPlan.monitor && FDevice.ListeningPort() == 0) {
        texts << monitorTrouble(FPlan.name, *FPlan.monitor);
    }
    if (FPlan.lampMonitor && FRelays.ListeningPort() == 0) {
        texts << monitorTrouble(FPlan.name, *FPlan.lampMonitor);
    }
    for (auto board = FBoards.begin(); board != FBoards.end(); ++board) {
        if (isRelayBoard(board.key()) && !hasGate(board.key()) &&
            answering(board.key()) == std::optional(false)) {
            texts << QStringLiteral("%1: board %2 does not answer").arg(FPlan.name, board.key());
        }
    }
    return texts;
}

void TClubBus::look()
{
    tellOfSilence();
    serveMonitor(FDevice, FPlan.monitor);
    serveMonitor(FRelays, FPlan.lampMonitor);
}

} // namespace tnv5::host
