#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

/// Lets the event loop run until the condition holds, a minute at most: so long that only what will never
/// happen runs into it, however busy the machine is.
/// @return whether it came to hold.
template <class Condition>
bool eventually(Condition&& condition)
{
    const QDeadlineTimer limit(60'000);
    QTimer look; // conditions that no event announces
    look.start(5);
    while (!condition()) {
        if (limit.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}
