#include "testing/manual_clock.h"

#include "platform/timer.h"

#include <algorithm>

namespace tnv5::testing {

using platform::TTimer;

namespace {

constexpr qint64 kWaitMs = 10;

} // namespace

TManualClock::TManualClock(qint64 startMs) : FNow(startMs), FPrevious(install(this)) {}

TManualClock::~TManualClock()
{
    for (const auto& [when, creation, timer] : FDue) {
        timer->forgetClock();
    }
    install(FPrevious);
}

void TManualClock::arm(TTimer& timer)
{
    disarm(timer);
    FDue.emplace(FNow + timer.Interval(), timer.creation(), &timer);
}

void TManualClock::disarm(TTimer& timer)
{
    const auto due = std::find_if(FDue.begin(), FDue.end(),
                                  [&timer](const TDue& entry) { return std::get<TTimer*>(entry) == &timer; });
    if (due != FDue.end()) {
        FDue.erase(due);
    }
}

void TManualClock::advance(qint64 ms)
{
    const qint64 target = FNow + ms;
    while (!FDue.empty() && std::get<qint64>(*FDue.begin()) <= target) {
        const auto [when, creation, timer] = *FDue.begin();
        FDue.erase(FDue.begin());
        FNow = std::max(FNow, when);
        FDue.emplace(when + timer->Interval(), creation,
                     timer); // before the tick, which may re-arm or stop it
        timer->tick();
    }
    FNow = std::max(FNow, target);
}

void TManualClock::waitForMessages()
{
    if (const auto handler = OnWait) {
        handler();
    } else {
        advance(kWaitMs);
    }
}

void TManualClock::jumpTo(qint64 ms)
{
    const qint64 shift = ms - FNow;
    std::set<TDue> shifted;
    for (const auto& [when, creation, timer] : FDue) {
        shifted.emplace(when + shift, creation, timer);
    }
    FDue.swap(shifted);
    FNow = ms;
}

} // namespace tnv5::testing
