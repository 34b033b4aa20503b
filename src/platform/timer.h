#pragma once

#include "tnv5/platform/component.h"

#include <QBasicTimer>

namespace tnv5::platform {

class TClock;

/// A timer on the main thread, ticking by the current clock. Created disabled, with an interval of one
/// second.
///
///     TTimer timer;
///     timer.SetInterval(100);
///     timer.OnTimer = [](TTimer*) { ... };
///     timer.SetEnabled(true);
///
/// The tick handler may disable, re-arm or destroy the timer. What it raises goes to the exception handler.
class TTimer : public TComponent
{
    Q_OBJECT
    Q_PROPERTY(int Interval READ Interval WRITE SetInterval)
    Q_PROPERTY(bool Enabled READ Enabled WRITE SetEnabled)

public:
    explicit TTimer(QObject* AOwner = nullptr);
    ~TTimer() override;

    /// Milliseconds between ticks; with 0 or less the timer never ticks.
    int Interval() const { return FInterval; }
    /// Sets the interval; a running timer starts its period anew when the value differs.
    void SetInterval(int Value);

    bool Enabled() const { return FEnabled; }
    /// Starts or stops the ticks. Enabling an enabled timer changes nothing.
    void SetEnabled(bool Value);

    std::function<void(TTimer* Sender)> OnTimer;

    /// Number of the timer in order of creation.
    quint64 creation() const { return FCreation; }

    /// For clocks: one tick is due.
    void tick();
    /// For clocks: the ticks of the system's event loop.
    void startSystemTicks();
    void stopSystemTicks();
    /// For clocks: the clock that the timer is armed on goes away.
    void forgetClock();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void rearm();
    void disarm();

    int FInterval = 1000;
    bool FEnabled = false;
    quint64 FCreation;
    TClock* FArmedOn = nullptr;
    QBasicTimer FSystemTimer;
};

} // namespace tnv5::platform
