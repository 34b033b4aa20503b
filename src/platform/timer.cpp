#include "tnv5/platform/timer.h"

#include "tnv5/platform/clock.h"

#include <QTimerEvent>

namespace tnv5::platform {

TTimer::TTimer(QObject* AOwner) : TComponent(AOwner)
{
    static quint64 created = 0;
    FCreation = ++created;
}

TTimer::~TTimer()
{
    disarm();
}

void TTimer::SetInterval(int Value)
{
    if (FInterval == Value) {
        return;
    }
    FInterval = Value;
    rearm();
}

void TTimer::SetEnabled(bool Value)
{
    if (FEnabled == Value) {
        return;
    }
    FEnabled = Value;
    rearm();
}

void TTimer::rearm()
{
    disarm();
    if (FEnabled && FInterval > 0) {
        FArmedOn = &TClock::current();
        FArmedOn->arm(*this);
    }
}

void TTimer::disarm()
{
    if (FArmedOn != nullptr) {
        std::exchange(FArmedOn, nullptr)->disarm(*this);
    }
}

void TTimer::forgetClock()
{
    FArmedOn = nullptr;
}

void TTimer::tick()
{
    if (const auto handler = OnTimer) {
        guarded([&] { handler(this); });
    }
}

void TTimer::startSystemTicks()
{
    FSystemTimer.start(FInterval, Qt::PreciseTimer, this);
}

void TTimer::stopSystemTicks()
{
    FSystemTimer.stop();
}

void TTimer::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == FSystemTimer.timerId()) {
        tick();
    } else {
        TComponent::timerEvent(event);
    }
}

} // namespace tnv5::platform
