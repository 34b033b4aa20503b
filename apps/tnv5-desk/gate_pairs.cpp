#include "apps/tnv5-desk/gate_pairs.h"

#include "apps/tnv5-desk/words.h"
#include "tnv5/common/messages.h"

#include <QMap>
#include <algorithm>

namespace tnv5::desk {

namespace {

struct TZone
{
    QString name;
    QStringList in;
    QStringList out;
    QStringList doors;
};

QList<TZone> zonesOf(const QList<TGateState>& gates)
{
    QList<TZone> zones;
    for (const TGateState& gate : gates) {
        auto zone = std::find_if(zones.begin(), zones.end(),
                                 [&gate](const TZone& each) { return each.name == gate.zone; });
        if (zone == zones.end()) {
            zone = zones.insert(zones.end(), {gate.zone, {}, {}, {}});
        }
        (gate.way == TWay::Out ? zone->out : gate.way == TWay::In ? zone->in : zone->doors) << gate.address;
    }
    return zones;
}

bool lineOpen(const TClubState& state, const QString& name)
{
    const auto line = std::find_if(state.lines.begin(), state.lines.end(),
                                   [&name](const TLineState& each) { return each.name == name; });
    return line == state.lines.end() || line->open;
}

} // namespace

QList<TGatePair> pairsOf(const QList<TGateState>& gates)
{
    QList<TGatePair> pairs;
    for (const TZone& zone : zonesOf(gates)) {
        const qsizetype ways = std::max(zone.in.size(), zone.out.size());
        const qsizetype count = ways + zone.doors.size();
        for (qsizetype index = 0; index < count; ++index) {
            const QString caption =
                count > 1 ? QStringLiteral("%1 %2").arg(zone.name).arg(index + 1) : zone.name;
            const QString door = zone.doors.value(index - ways);
            pairs.append({caption, index < ways ? zone.in.value(index) : door, zone.out.value(index)});
        }
    }
    return pairs;
}

TPairState stateOf(const TGatePair& pair, const TClubState& state,
                   const QMap<QString, TRefusalShown>& refusals, qint64 nowMs)
{
    TPairState shown{TGateLook::Unconnected, TWords::tr("not in this club")};
    for (const TGateState& gate : state.gates) {
        if (gate.address.isEmpty() || (gate.address != pair.gateA && gate.address != pair.gateB)) {
            continue;
        }
        if (shown.look == TGateLook::Unconnected) {
            shown = {TGateLook::Free, TWords::tr("free")};
        }
        if (gate.busy) {
            const bool somebody = !gate.holder.isEmpty() && !common::IsPseudoCard(gate.holder);
            return {TGateLook::Passing, somebody ? gate.holder : TWords::tr("open")};
        }
        const auto refusal = refusals.find(gate.address);
        if (refusal != refusals.end() && nowMs - refusal->atMs < kRefusalMs) {
            shown = {TGateLook::Refused, refusal->text};
        } else if (shown.look == TGateLook::Free && !lineOpen(state, gate.line)) {
            shown = {TGateLook::Silent, TWords::tr("line closed")};
        } else if (shown.look == TGateLook::Free && gate.answering == false) {
            shown = {TGateLook::Silent, TWords::tr("does not answer")};
        }
    }
    return shown;
}

TPairState unconnected()
{
    return {TGateLook::Unconnected, TWords::tr("not connected")};
}

} // namespace tnv5::desk
