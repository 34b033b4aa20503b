#include "tnv5/platform/clock.h"

#include "tnv5/platform/timer.h"
#include "tnv5/testing/manual_clock.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace {

using namespace tnv5::platform;
using tnv5::testkit::TManualClock;

std::unique_ptr<TTimer> makeTimer(int interval, std::function<void(TTimer*)> tick)
{
    auto timer = std::make_unique<TTimer>();
    timer->SetInterval(interval);
    timer->OnTimer = std::move(tick);
    timer->SetEnabled(true);
    return timer;
}

TEST(ManualClock, StartsAtNoon)
{
    const TManualClock clock;
    EXPECT_EQ(Now(), 46'027.5);
    EXPECT_EQ(TimeOfDay(), 0.5);
}

TEST(ManualClock, AdvancesNowAndTimeOfDay)
{
    TManualClock clock(TManualClock::at(23, 59, 59, 500));
    clock.advance(500);
    EXPECT_EQ(TimeOfDay(), 0.0);
    EXPECT_EQ(Now(), 46'028.0);
}

TEST(ManualClock, FiresDueTimersEarliestFirstTiesInOrderOfCreation)
{
    TManualClock clock;
    std::vector<int> fired;
    const auto first = makeTimer(20, [&](TTimer*) { fired.push_back(1); });
    const auto second = makeTimer(10, [&](TTimer*) { fired.push_back(2); });
    const auto third = makeTimer(20, [&](TTimer*) { fired.push_back(3); });
    second->SetEnabled(false);
    second->SetEnabled(true); // enabling anew does not change the order of creation
    clock.advance(20);
    EXPECT_EQ(fired, (std::vector<int>{2, 1, 2, 3}));
}

TEST(ManualClock, BeforeEveryStepWhatIsOnItsWayMayArrive)
{
    TManualClock clock;
    const qint64 start = clock.nowMs();
    std::vector<qint64> steps;
    clock.BeforeStep = [&] { steps.push_back(clock.nowMs() - start); };
    const auto first = makeTimer(10, [](TTimer*) {});
    const auto second = makeTimer(20, [](TTimer*) {});
    clock.advance(25);
    EXPECT_EQ(steps, (std::vector<qint64>{0, 10, 20, 20})); // after each tick, those at the same time too
    std::unique_ptr<TTimer> third;
    clock.BeforeStep = [&] {
        third = third ? std::move(third) : makeTimer(2, [](TTimer*) {});
        steps.push_back(clock.nowMs() - start);
    };
    steps.clear();
    clock.advance(3);
    EXPECT_EQ(steps, (std::vector<qint64>{25, 27})) << "a timer that is armed there ticks";
}

TEST(ManualClock, TellsWhenTheNextTickIs)
{
    TManualClock clock;
    EXPECT_FALSE(clock.untilNextTick());
    const auto first = makeTimer(10, [](TTimer*) {});
    const auto second = makeTimer(25, [](TTimer*) {});
    EXPECT_EQ(clock.untilNextTick(), 10);
    clock.advance(7);
    EXPECT_EQ(clock.untilNextTick(), 3);
    first->SetEnabled(false);
    EXPECT_EQ(clock.untilNextTick(), 18);
}

TEST(ManualClock, TimeInsideATickIsTheTimeItWasDue)
{
    TManualClock clock;
    std::vector<qint64> times;
    const qint64 start = clock.nowMs();
    const auto timer = makeTimer(30, [&](TTimer*) { times.push_back(clock.nowMs() - start); });
    clock.advance(100);
    EXPECT_EQ(times, (std::vector<qint64>{30, 60, 90}));
    EXPECT_EQ(clock.nowMs() - start, 100);
}

TEST(ManualClock, ATickMayReArmItsTimer)
{
    TManualClock clock;
    int ticks = 0;
    const auto timer = makeTimer(10, [&](TTimer* self) {
        ++ticks;
        self->SetInterval(50);
    });
    clock.advance(59);
    EXPECT_EQ(ticks, 1);
    clock.advance(1);
    EXPECT_EQ(ticks, 2);
}

TEST(ManualClock, ATickMayStopOrDestroyItsTimer)
{
    TManualClock clock;
    int ticks = 0;
    const auto stopping = makeTimer(10, [&](TTimer* self) {
        ++ticks;
        self->SetEnabled(false);
    });
    auto* dying = makeTimer(10, [&](TTimer* self) {
                      ++ticks;
                      delete self;
                  }).release();
    (void)dying;
    clock.advance(100);
    EXPECT_EQ(ticks, 2);
}

TEST(ManualClock, ATickMayAdvanceTheClock)
{
    TManualClock clock;
    const qint64 start = clock.nowMs();
    int ticks = 0;
    const auto timer = makeTimer(10, [&](TTimer*) {
        if (++ticks == 1) {
            clock.advance(25); // as a handler that pumps messages
        }
    });
    clock.advance(10);
    EXPECT_EQ(ticks, 3);
    EXPECT_EQ(clock.nowMs() - start, 35);
}

TEST(ManualClock, AnEscapingExceptionDoesNotStopTheTimer)
{
    int reported = 0;
    const auto previous = setExceptionHandler([&](const QString&, const std::exception_ptr&) { ++reported; });
    TManualClock clock;
    const auto timer = makeTimer(10, [](TTimer*) { throw Exception(QStringLiteral("tick")); });
    clock.advance(30);
    EXPECT_EQ(reported, 3);
    setExceptionHandler(previous);
}

TEST(ManualClock, JumpingFiresNothingAndKeepsRemainingTimes)
{
    TManualClock clock;
    int ticks = 0;
    const auto timer = makeTimer(100, [&](TTimer*) { ++ticks; });
    clock.advance(60);
    clock.jumpTo(TManualClock::at(23, 59, 59));
    clock.advance(39);
    EXPECT_EQ(ticks, 0);
    clock.advance(1);
    EXPECT_EQ(ticks, 1);
}

TEST(ManualClock, TimersOutliveTheClock)
{
    auto clock = std::make_unique<TManualClock>();
    const auto timer = makeTimer(10, [](TTimer*) {});
    clock.reset();
    timer->SetEnabled(false); // must not reach for the clock that is gone
    EXPECT_FALSE(timer->Enabled());
}

TEST(Timer, WithoutAnIntervalItNeverTicks)
{
    TManualClock clock;
    int ticks = 0;
    const auto timer = makeTimer(10, [&](TTimer*) { ++ticks; });
    timer->SetInterval(0);
    clock.advance(1'000);
    EXPECT_EQ(ticks, 0);
    EXPECT_TRUE(timer->Enabled());
    timer->SetInterval(10);
    clock.advance(10);
    EXPECT_EQ(ticks, 1);
}

TEST(Timer, IsCreatedDisabledWithOneSecond)
{
    const TTimer timer;
    EXPECT_FALSE(timer.Enabled());
    EXPECT_EQ(timer.Interval(), 1'000);
}

TEST(Timer, EnablingAnEnabledTimerDoesNotRestartItsPeriod)
{
    TManualClock clock;
    int ticks = 0;
    const auto timer = makeTimer(10, [&](TTimer*) { ++ticks; });
    clock.advance(9);
    timer->SetEnabled(true);
    timer->SetInterval(10);
    clock.advance(1);
    EXPECT_EQ(ticks, 1);
}

TEST(SystemClock, AgreesWithTheSystemsLocalTime)
{
    const QDateTime epoch(QDate(1899, 12, 30), QTime(0, 0), Qt::UTC);
    QDateTime local = QDateTime::currentDateTime();
    local.setTimeSpec(Qt::UTC); // the same figures, without the zone
    const double days = static_cast<double>(epoch.msecsTo(local)) / 86'400'000.0;
    EXPECT_NEAR(Now(), days, 2.0 / 86'400);
    EXPECT_NEAR(TimeOfDay(), days - static_cast<double>(static_cast<qint64>(days)), 2.0 / 86'400);
}

TEST(SystemClock, DrivesTimersFromTheEventLoop)
{
    int ticks = 0;
    const auto timer = makeTimer(1, [&](TTimer* self) {
        if (++ticks == 3) {
            self->SetEnabled(false);
        }
    });
    QElapsedTimer limit;
    limit.start();
    while (ticks < 3 && limit.elapsed() < 10'000) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }
    EXPECT_EQ(ticks, 3);
}

} // namespace
