#pragma once

#include <QtGlobal>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tnv5::js {

/// Watches how long scripts run and how much memory they take meanwhile, from a thread of its own.
///
/// Runs are nested: a handler that is called while a native call of another one is under way has a budget of
/// its own, and the time of the other one stands still. All functions are for the main thread.
class TWatchdog
{
public:
    using TTime = std::chrono::steady_clock;

    /// How a run ended.
    enum class TEnd { Normal, TooLong, TooMuchMemory };

    /// @param interrupt sets and clears the interruption of the script; called from both threads, never at
    /// once
    explicit TWatchdog(std::function<void(bool)> interrupt);
    ~TWatchdog();
    TWatchdog(const TWatchdog&) = delete;
    TWatchdog& operator=(const TWatchdog&) = delete;

    /// A script begins. @param memory bytes by which the process may grow meanwhile
    void begin(std::chrono::milliseconds budget, qint64 memory);
    /// The innermost script has ended; an interruption is over.
    TEnd end();

    /// A native call begins: its time does not count. @return false when the script has been interrupted
    /// already; then nothing must be called, and `resume` neither
    bool pause();
    void resume();

private:
    struct TRun
    {
        TTime::duration left;
        TTime::time_point since; // while it is running
        bool running;
        TEnd ended;
        qint64 memory;
        qint64 memoryBefore; // at the first look, 0: not looked yet
    };

    void watch();
    /// Looks at the innermost run. @return when to look again
    TTime::time_point look(TTime::time_point now);
    void stop(TRun& run, TEnd why);
    void wakeFor(TTime::time_point time);

    std::function<void(bool)> FInterrupt;
    std::mutex FLock;
    std::condition_variable FWake;
    std::vector<TRun> FRuns;
    TTime::time_point FAwakeAt = TTime::time_point::max(); // when the thread looks again
    bool FOver = false;
    std::thread FThread;
};

/// Bytes of memory that the process occupies; 0 where the system does not tell.
qint64 memoryInUse();

} // namespace tnv5::js
