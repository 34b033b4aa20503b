#include "tnv5/host/port_keeper.h"

#include <algorithm>
#include <utility>

namespace tnv5::host {

namespace {

template <class Event, class... Args>
void tell(const Event& event, const Args&... args)
{
    if (event) {
        platform::guarded([&] { event(args...); });
    }
}

} // namespace

TPortKeeper::TPortKeeper(platform::TComPort& port) : FPort(port)
{
    FTimer.OnTimer = [this](platform::TTimer*) { look(); };
    FErrors = QObject::connect(&FPort, &platform::TComPort::errorReported, &FPort,
                               [this](auto kind, const QString& message) { hear(kind, message); });
}

TPortKeeper::~TPortKeeper()
{
    QObject::disconnect(FErrors);
}

bool TPortKeeper::start()
{
    wait(kWatchMs);
    look();
    return FOpen;
}

void TPortKeeper::stop()
{
    FTimer.SetEnabled(false);
}

void TPortKeeper::hear(platform::TComExceptionKind kind, const QString& message)
{
    // the system's text about a device that was pulled out is about whatever call noticed it first
    FWhyLost = kind == platform::TComExceptionKind::Resource ? QStringLiteral("the device is gone") : message;
    if (!FPort.Connected() && FTimer.Enabled()) {
        wait(1); // not from here: the port is in the middle of going away
    }
}

void TPortKeeper::look()
{
    const bool connected = FPort.Connected();
    if (connected && FOpen) {
        FOpenForMs += FTimer.Interval();
        if (FOpenForMs >= kSteadyMs) {
            FPauseMs = kFirstPauseMs;
        }
    } else if (connected) {
        opened(); // by someone else
    } else if (FOpen) {
        lost();
    } else {
        tryOpen();
    }
}

void TPortKeeper::tryOpen()
{
    try {
        FPort.Open();
        FOsError = 0;
    } catch (const platform::EComPort& error) {
        return cannot(error.message(), error.osError());
    } catch (...) {
        return cannot(platform::exceptionMessage(), 0);
    }
    opened();
}

void TPortKeeper::cannot(const QString& why, qint64 osError)
{
    wait(FPauseMs);
    FPauseMs = std::min(FPauseMs * 2, kLongestPauseMs);
    FOsError = osError;
    if (std::exchange(FWhyNot, why) != why) {
        tell(OnCannotOpen, why);
    }
}

void TPortKeeper::opened()
{
    FOpen = true;
    FOpenForMs = 0;
    ++FOpenings;
    FWhyNot.clear();
    FWhyLost.clear();
    wait(kWatchMs);
    tell(OnOpened);
}

void TPortKeeper::lost()
{
    FOpen = false;
    wait(FPauseMs);
    FPauseMs = std::min(FPauseMs * 2, kLongestPauseMs);
    tell(OnLost, FWhyLost.isEmpty() ? QStringLiteral("the port was closed") : std::exchange(FWhyLost, {}));
}

void TPortKeeper::wait(int ms)
{
    FTimer.SetEnabled(false);
    FTimer.SetInterval(ms);
    FTimer.SetEnabled(true);
}

} // namespace tnv5::host
