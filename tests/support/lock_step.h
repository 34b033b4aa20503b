#pragma once

#include "sim/lines.h"
#include "tnv5/testing/manual_clock.h"

/// Lock-step time for tests on pseudo-terminals: real ports, real bytes, and a clock that goes on only when
/// nothing is on its way on any line. Such a test is exact and as fast as the machine, and what comes of it
/// does not depend on how busy the machine is.
///
///     testkit::TManualClock clock; // first: whatever ticks takes it
///     sim::TPty pty(...);
///     platform::TSerialPort port;
///     TLockStep time(clock, pty, port);
///     port.Open();
///     EXPECT_TRUE(time.until([&] { return pty.opened(); }));
///     clock.advance(500);
class TLockStep
{
public:
    template <class... Ends>
    explicit TLockStep(tnv5::testkit::TManualClock& clock, const Ends&... ends) : FClock(clock)
    {
        (lines.add(ends), ...);
        FClock.BeforeStep = [this] { lines.settle(); };
    }
    ~TLockStep() { FClock.BeforeStep = {}; }
    TLockStep(const TLockStep&) = delete;
    TLockStep& operator=(const TLockStep&) = delete;

    /// Lets time pass, tick by tick, until the condition holds.
    /// @param limitMs how long at most, by the clock
    /// @return whether it came to hold; false as well when nothing ticks any more.
    template <class Condition>
    bool until(Condition&& condition, qint64 limitMs = 60'000)
    {
        const qint64 limit = FClock.nowMs() + limitMs;
        lines.settle();
        while (!condition()) {
            const auto next = FClock.untilNextTick();
            if (!next || FClock.nowMs() + *next > limit) {
                return false;
            }
            FClock.advance(*next);
        }
        return true;
    }

    tnv5::sim::TLines lines;

private:
    tnv5::testkit::TManualClock& FClock;
};
