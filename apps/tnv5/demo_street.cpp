#include "apps/tnv5/demo_street.h"

#include "tnv5/platform/clock.h"

namespace tnv5::cli {

namespace {

constexpr int kLookMs = 10;
constexpr double kNsPerMs = 1'000'000;
constexpr qint64 kWalkMs = 150;   // between two visitors at one gate
constexpr qint64 kRestMs = 1'000; // of a visitor who has done everything

qint64 nowMs()
{
    return platform::TClock::current().nowMs();
}

} // namespace

TDemoStreet::TDemoStreet(TDemoGates& gates, std::function<bool(const QString&)> ready)
    : FGates(gates), FReady(std::move(ready))
{
    FWatch.start();
    FGates.OnCommand = [this](const QString& gate) { onCommand(gate); };
    FTimer.SetInterval(kLookMs);
    FTimer.OnTimer = [this](platform::TTimer*) { look(); };
    FTimer.SetEnabled(true);
}

void TDemoStreet::invite(const TVisitor& visitor)
{
    FWaiting.append({visitor});
}

void TDemoStreet::look()
{
    for (auto place = FAtGate.begin(); place != FAtGate.end();) {
        const auto& [gate, here] = *place;
        if (FGates.done(gate) && FReady(gate)) {
            leave(here);
            place = FAtGate.erase(place);
        } else {
            ++place;
        }
    }
    if (FPaused) {
        return;
    }
    for (const TGuest& guest : std::exchange(FWaiting, {})) { // in order; who must wait keeps the place
        if (FClosed && guest.step == 0) {
            continue;
        }
        const QString& gate = guest.next().gate;
        const auto free = FFreeSinceMs.find(gate);
        const bool clear = free == FFreeSinceMs.end() || nowMs() - free->second > kWalkMs * Leisure;
        if (clear && nowMs() >= guest.notBeforeMs && !FAtGate.contains(gate) && FReady(gate)) {
            stepUp(guest);
        } else {
            FWaiting.append(guest);
        }
    }
}

void TDemoStreet::stepUp(const TGuest& guest)
{
    const TStep& step = guest.next();
    TAtGate& place = FAtGate[step.gate];
    place.guest = guest;
    place.visit = {guest.visitor.name, step, {}, -1, {}};
    place.timed = !Measuring;
    place.askedNs = FWatch.nsecsElapsed();
    FGates.stepUp(step);
}

void TDemoStreet::onCommand(const QString& gate)
{
    const auto place = FAtGate.find(gate);
    if (place != FAtGate.end() && !std::exchange(place->second.timed, true)) {
        const qint64 took = FWatch.nsecsElapsed() - place->second.askedNs;
        place->second.visit.relayMs = static_cast<double>(took) / kNsPerMs;
    }
}

void TDemoStreet::leave(const TAtGate& place)
{
    TVisit visit = place.visit;
    visit.seen = FGates.seen(visit.step.gate);
    visit.display = FGates.display(visit.step.gate);
    FVisits.append(visit);
    FFreeSinceMs[visit.step.gate] = nowMs();

    TGuest guest = place.guest;
    guest.step = (guest.step + 1) % guest.visitor.steps.size();
    guest.notBeforeMs = guest.step == 0 ? nowMs() + kRestMs * Leisure : 0;
    FWaiting.append(guest);
    if (OnVisit) {
        OnVisit(visit);
    }
}

} // namespace tnv5::cli
