#include "tnv5/platform/clock.h"

#include "tnv5/platform/timer.h"

#include <QCoreApplication>
#include <QTimer>
#include <ctime>
#include <utility>

namespace tnv5::platform {

namespace {

constexpr qint64 kUnixEpochMs = 25'569 * kMsPerDay; // 1970-01-01 as days since 1899-12-30
constexpr int kWaitMs = 50;
constexpr qint64 kMsPerQuarter = 900'000; // time zones change their offset on a quarter hour

class TSystemClock final : public TClock
{
public:
    qint64 nowMs() const override
    {
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        const qint64 utc = qint64{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
        return kUnixEpochMs + utc + offsetMs(utc, now.tv_sec);
    }

    void arm(TTimer& timer) override { timer.startSystemTicks(); }
    void disarm(TTimer& timer) override { timer.stopSystemTicks(); }

    void waitForMessages() override
    {
        QTimer wakeUp;
        wakeUp.start(kWaitMs);
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

private:
    // localtime_r takes longer than everything else that happens for a card, so it is asked once a quarter
    // hour
    qint64 offsetMs(qint64 utcMs, time_t utcSeconds) const
    {
        const qint64 quarter = utcMs / kMsPerQuarter;
        if (quarter != FQuarter) {
            tm local{};
            localtime_r(&utcSeconds, &local);
            FQuarter = quarter;
            FOffsetMs = qint64{local.tm_gmtoff} * 1000;
        }
        return FOffsetMs;
    }

    mutable qint64 FQuarter = -1;
    mutable qint64 FOffsetMs = 0;
};

TClock& systemClock()
{
    static TSystemClock clock;
    return clock;
}

TClock* installed = nullptr;

} // namespace

TClock& TClock::current()
{
    return installed != nullptr ? *installed : systemClock();
}

TClock* TClock::install(TClock* clock)
{
    return std::exchange(installed, clock);
}

TDateTime Now()
{
    return static_cast<double>(TClock::current().nowMs()) / static_cast<double>(kMsPerDay);
}

TDateTime TimeOfDay()
{
    return static_cast<double>(TClock::current().nowMs() % kMsPerDay) / static_cast<double>(kMsPerDay);
}

} // namespace tnv5::platform
