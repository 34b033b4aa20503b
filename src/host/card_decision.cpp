#include "tnv5/host/card_decision.h"

#include <algorithm>

namespace tnv5::host {

namespace {

bool isValid(const TMembership& membership, QDate today)
{
    return membership.from <= today && today <= membership.to;
}

TRefusal checkMemberships(const QList<TMembership>& memberships, const QString& zone, QDate today)
{
    if (memberships.isEmpty()) {
        return TRefusal::NoMembership;
    }
    const auto any = [&memberships](auto&& test) {
        return std::any_of(memberships.begin(), memberships.end(), test);
    };
    if (any([&](const TMembership& each) { return isValid(each, today) && each.zones.contains(zone); })) {
        return TRefusal::None;
    }
    if (any([&](const TMembership& each) { return isValid(each, today); })) {
        return TRefusal::WrongZone;
    }
    return any([&](const TMembership& each) { return each.from > today; }) ? TRefusal::NotYetValid
                                                                           : TRefusal::Expired;
}

} // namespace

TRefusal decide(const std::optional<TGate>& gate, const std::optional<THolder>& holder, QDate today)
{
    if (!gate) {
        return TRefusal::UnknownGate;
    }
    if (!holder) {
        return TRefusal::UnknownCard;
    }
    if (gate->direction == TDirection::Out) {
        return TRefusal::None;
    }
    if (holder->member.suspended) {
        return TRefusal::Suspended;
    }
    const TRefusal refusal = checkMemberships(holder->memberships, gate->zone, today);
    if (refusal != TRefusal::None) {
        return refusal;
    }
    if (gate->direction == TDirection::In && holder->member.inside) {
        return TRefusal::AlreadyInside;
    }
    return TRefusal::None;
}

} // namespace tnv5::host
