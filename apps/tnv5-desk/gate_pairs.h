#pragma once

#include "apps/tnv5-desk/desk_state.h"

#include <array>

namespace tnv5::desk {

/// A turnstile as the panel shows it: a way in and a way out of one zone, or one of the two. Addresses are
/// empty where there is no gate.
struct TGatePair
{
    QString caption;
    QString gateA; ///< in, or a door
    QString gateB; ///< out

    bool operator==(const TGatePair&) const = default;
};

/// Puts the gates together to panels: in each zone the first way in with the first way out, the second with
/// the second, and so on; doors inside stand behind them, each alone. Zones stand in the order of their first
/// gate. A zone with several panels has them numbered.
QList<TGatePair> pairsOf(const QList<TGateState>& gates);

/// What the panel shows of a gate; the number is that of its picture.
enum class TGateLook { Free, Passing, Refused, Silent, Unconnected };
constexpr int kGateLooks = 5;

/// What is shown of a pair, and the text behind its caption.
struct TPairState
{
    TGateLook look = TGateLook::Unconnected;
    QString text;

    bool operator==(const TPairState&) const = default;
};

/// A refusal is shown so long.
constexpr qint64 kRefusalMs = 5'000;

/// Somebody who was refused at a gate.
struct TRefusalShown
{
    QString text;
    qint64 atMs = 0;
};

/// What a pair shows now: who is passing, else who was refused, else what does not work.
/// @param refusals by gate @param nowMs by the same clock as theirs
TPairState stateOf(const TGatePair& pair, const TClubState& state,
                   const QMap<QString, TRefusalShown>& refusals, qint64 nowMs);

/// The same without a connection to the host.
TPairState unconnected();

} // namespace tnv5::desk
