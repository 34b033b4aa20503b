#include "tnv5/js/watchdog.h"

#include <QFile>
#include <algorithm>
#include <csignal>

namespace tnv5::js {

namespace {

constexpr std::chrono::milliseconds kLookAt{20}; // how often memory is looked at
constexpr qint64 kPage = 4'096;

/// Threads that are made meanwhile get no signals: the host decides about them on its own thread.
class TNoSignals
{
public:
#ifdef Q_OS_UNIX
    TNoSignals()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &FBefore);
    }
    ~TNoSignals()
    {
        pthread_sigmask(SIG_SETMASK, &FBefore, nullptr);
    }
    TNoSignals(const TNoSignals&) = delete;
    TNoSignals& operator=(const TNoSignals&) = delete;

private:
    sigset_t FBefore;
#endif
};

} // namespace

qint64 memoryInUse()
{
    QFile file(QStringLiteral("/proc/self/statm")); // sizes in pages: all, in memory, ...
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() * kPage : 0;
}

TWatchdog::TWatchdog(std::function<void(bool)> interrupt) : FInterrupt(std::move(interrupt))
{
    const TNoSignals noSignals;
    FThread = std::thread([this] { watch(); });
}

TWatchdog::~TWatchdog()
{
    {
        const std::lock_guard lock(FLock);
        FOver = true;
    }
    FWake.notify_one();
    FThread.join();
}

void TWatchdog::begin(std::chrono::milliseconds budget, qint64 memory)
{
    const std::lock_guard lock(FLock);
    const auto now = TTime::now();
    FRuns.push_back({budget, now, true, TEnd::Normal, memory, 0});
    wakeFor(now + std::min<TTime::duration>(budget, kLookAt));
}

TWatchdog::TEnd TWatchdog::end()
{
    const std::lock_guard lock(FLock);
    const TEnd ended = FRuns.back().ended;
    FRuns.pop_back();
    if (ended != TEnd::Normal) {
        FInterrupt(false);
    }
    return ended;
}

bool TWatchdog::pause()
{
    const std::lock_guard lock(FLock);
    if (FRuns.empty()) {
        return true; // the host asks, no script is running
    }
    TRun& run = FRuns.back();
    if (run.ended != TEnd::Normal) {
        return false;
    }
    run.left -= TTime::now() - run.since;
    run.running = false;
    return true;
}

void TWatchdog::resume()
{
    const std::lock_guard lock(FLock);
    if (FRuns.empty()) {
        return;
    }
    TRun& run = FRuns.back();
    run.since = TTime::now();
    run.running = true;
    wakeFor(run.since + std::clamp<TTime::duration>(run.left, TTime::duration::zero(), kLookAt));
}

void TWatchdog::wakeFor(TTime::time_point time)
{
    if (time < FAwakeAt) {
        FAwakeAt = time;
        FWake.notify_one();
    }
}

void TWatchdog::watch()
{
    std::unique_lock lock(FLock);
    while (!FOver) {
        const auto now = TTime::now();
        FAwakeAt = look(now);
        if (FAwakeAt == TTime::time_point::max()) {
            FWake.wait(lock);
        } else {
            FWake.wait_until(lock, FAwakeAt);
        }
    }
}

TWatchdog::TTime::time_point TWatchdog::look(TTime::time_point now)
{
    if (FRuns.empty() || !FRuns.back().running || FRuns.back().ended != TEnd::Normal) {
        return TTime::time_point::max();
    }
    TRun& run = FRuns.back();
    const auto left = run.left - (now - run.since);
    if (left <= TTime::duration::zero()) {
        stop(run, TEnd::TooLong);
        return TTime::time_point::max();
    }
    const qint64 memory = memoryInUse();
    if (run.memoryBefore == 0) {
        run.memoryBefore = memory;
    } else if (memory - run.memoryBefore > run.memory) {
        stop(run, TEnd::TooMuchMemory);
        return TTime::time_point::max();
    }
    return now + std::min<TTime::duration>(left, kLookAt);
}

void TWatchdog::stop(TRun& run, TEnd why)
{
    run.ended = why;
    FInterrupt(true);
}

} // namespace tnv5::js
