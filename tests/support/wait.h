#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>
#include <chrono>

/// The one way to wait in a test that needs a real event loop: lets the loop run until the condition holds.
///
///     EXPECT_TRUE(eventually([&] { return !packets.isEmpty(); }));
///
/// @param limit only ends a test that would never end; far beyond what a busy machine needs.
/// @return whether it came to hold.
template <class Condition>
bool eventually(Condition&& condition, std::chrono::milliseconds limit = std::chrono::seconds(60))
{
    const QDeadlineTimer deadline(limit);
    QTimer look; // conditions that no event announces
    look.start(5);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}
