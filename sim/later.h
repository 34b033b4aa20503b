#pragma once

#include <QtGlobal>
#include <functional>
#include <map>
#include <memory>

namespace tnv5::platform {
class TTimer;
}

namespace tnv5::sim {

/// Things to be done once, later, by the current clock. What has not happened when this goes never happens.
class TLater
{
public:
    /// Actions that may wait; one more is dropped.
    static constexpr std::size_t kMaxPending = 4'096;

    TLater();
    ~TLater();
    TLater(const TLater&) = delete;
    TLater& operator=(const TLater&) = delete;

    /// Runs `action` after `ms` milliseconds; with 0 or less at once, before this returns. The action may
    /// destroy this object.
    /// @return a number for `cancel`; 0 when nothing is left to cancel.
    quint64 after(int ms, std::function<void()> action);

    /// Forgets one action; a number that is 0 or whose action has been run changes nothing.
    void cancel(quint64 number);

    /// Forgets everything that is waiting.
    void clear();

    std::size_t pending() const { return FTimers.size(); }

private:
    std::map<quint64, std::unique_ptr<platform::TTimer>> FTimers;
    quint64 FLast = 0;
};

} // namespace tnv5::sim
