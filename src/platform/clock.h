#pragma once

#include <QtGlobal>

namespace tnv5::platform {

class TTimer;

/// Date and time as days since 1899-12-30, local time; the fraction is the time of day.
/// Example: 2.75 is 1900-01-01, six in the evening.
using TDateTime = double;

constexpr qint64 kMsPerDay = 86'400'000;

/// Where the whole module gets its time and its ticks from. The system clock is used unless a test or a
/// simulation installs another one.
class TClock
{
public:
    virtual ~TClock() = default;

    /// Milliseconds since 1899-12-30 00:00, local time.
    virtual qint64 nowMs() const = 0;

    /// Starts the ticks of `timer`, the first one after its interval. An armed timer starts anew.
    virtual void arm(TTimer& timer) = 0;
    virtual void disarm(TTimer& timer) = 0;

    /// Lets the host's message loop run: sleeps in it until something happens, for 50 ms at most. For
    /// operations that wait while the user interface stays alive.
    virtual void waitForMessages() = 0;

    /// The clock in use.
    static TClock& current();

    /// Installs another clock (nullptr: the system clock again) and returns the previous one. Timers that are
    /// already ticking stay with their clock until they are next enabled.
    static TClock* install(TClock* clock);
};

/// Current date and time.
TDateTime Now();

/// Current time of day, 0 up to 1 (excluded), without the date.
TDateTime TimeOfDay();

} // namespace tnv5::platform
