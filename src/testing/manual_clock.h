#pragma once

#include "tnv5/platform/clock.h"

#include <functional>
#include <optional>
#include <tuple>
#include <vector>

namespace tnv5::testkit {

/// A clock that a test holds in its hand. While it lives, the whole module takes its time and ticks from it.
///
///     TManualClock clock(TManualClock::at(12, 0));
///     ...
///     clock.advance(8'000); // fires the timers that fall due, earliest first, ties in order of creation
class TManualClock final : public platform::TClock
{
public:
    /// Starts at noon on 2026-01-05.
    TManualClock() : TManualClock(at(12, 0)) {}
    /// @param startMs milliseconds since 1899-12-30
    explicit TManualClock(qint64 startMs);
    ~TManualClock() override;
    TManualClock(const TManualClock&) = delete;
    TManualClock& operator=(const TManualClock&) = delete;

    /// A time of day on 2026-01-05, for the constructor.
    static constexpr qint64 at(int hour, int minute, int second = 0, int ms = 0)
    {
        return 46'027 * platform::kMsPerDay + ((hour * 60LL + minute) * 60 + second) * 1000 + ms;
    }

    qint64 nowMs() const override { return FNow; }
    void arm(platform::TTimer& timer) override;
    void disarm(platform::TTimer& timer) override;

    /// What happens while an operation waits with the message loop running; 10 ms pass when it is not set.
    std::function<void()> OnWait;
    void waitForMessages() override;

    /// Called in `advance` before every step that time makes, and after the last tick: what is still on its
    /// way on real lines is let arrive here, so that no time passes for it.
    std::function<void()> BeforeStep;

    /// Lets time pass; may be called from inside a tick.
    void advance(qint64 ms);
    /// Milliseconds until the next tick, 0 when it is due; nothing while no timer ticks.
    std::optional<qint64> untilNextTick() const;
    /// Sets the time without firing anything; timers keep their remaining time.
    void jumpTo(qint64 ms);

private:
    using TDue = std::tuple<qint64, quint64, platform::TTimer*>; // when, order of creation, which

    void insert(const TDue& due);
    void beforeStep() const;

    qint64 FNow;
    std::vector<TDue>
        FDue; // the next one last: few timers tick at a time, and most of what happens is at the end
    platform::TClock* FPrevious;
};

} // namespace tnv5::testkit
