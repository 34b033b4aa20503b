#include "apps/tnv5/paced_time.h"

#include "tnv5/platform/errors.h"

#include <QCoreApplication>
#include <QScopeGuard>
#include <algorithm>
#include <utility>

namespace tnv5::cli {

namespace {

constexpr int kPaceMs = 1;
constexpr qint64 kLongestStepMs = 50; // a longer pause of the program is none of the time that is played

} // namespace

TPacedTime::TPacedTime() : FClock(platform::TClock::current().nowMs())
{
    FClock.BeforeStep = [this] { lines.settle(); };
    FClock.OnWait = [this] {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        step();
    };
    FReal.start();
    FPace.setTimerType(Qt::PreciseTimer);
    QObject::connect(&FPace, &QTimer::timeout, &FPace, [this] {
        if (!FStepping) { // it is while the lines settle
            platform::guarded([this] { step(); });
        }
    });
    FPace.start(kPaceMs);
}

void TPacedTime::step()
{
    const bool inside = std::exchange(FStepping, true);
    const auto done = qScopeGuard([this, inside] { FStepping = inside; });
    const qint64 now = FReal.elapsed();
    FClock.advance(std::min(now - std::exchange(FTakenMs, now), kLongestStepMs));
}

} // namespace tnv5::cli
