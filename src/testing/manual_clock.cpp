#include "tnv5/testing/manual_clock.h"

#include "tnv5/platform/timer.h"

#include <algorithm>

namespace tnv5::testkit {

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
    insert({FNow + timer.Interval(), timer.creation(), &timer});
}

void TManualClock::disarm(TTimer& timer)
{
    const auto due = std::find_if(FDue.begin(), FDue.end(),
                                  [&timer](const TDue& entry) { return std::get<TTimer*>(entry) == &timer; });
    if (due != FDue.end()) {
        FDue.erase(due);
    }
}

void TManualClock::insert(const TDue& due)
{
    FDue.insert(std::lower_bound(FDue.begin(), FDue.end(), due, std::greater<>()), due);
}

void TManualClock::advance(qint64 ms)
{
    const qint64 target = FNow + ms;
    beforeStep();
    while (!FDue.empty() && std::get<qint64>(FDue.back()) <= target) {
        const auto [when, creation, timer] = FDue.back();
        FDue.pop_back();
        FNow = std::max(FNow, when);
        insert({when + timer->Interval(), creation, timer}); // before the tick, which may re-arm or stop it
        timer->tick();
        beforeStep();
    }
    FNow = std::max(FNow, target);
}

void TManualClock::beforeStep() const
{
    if (const auto handler = BeforeStep) {
        handler();
    }
}

std::optional<qint64> TManualClock::untilNextTick() const
{
    return FDue.empty() ? std::nullopt
                        : std::optional(std::max<qint64>(std::get<qint64>(FDue.back()) - FNow, 0));
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
    for (TDue& due : FDue) {
        std::get<qint64>(due) += shift;
    }
    FNow = ms;
}

} // namespace tnv5::testkit
