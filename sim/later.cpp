#include "sim/later.h"

#include "tnv5/platform/timer.h"

namespace tnv5::sim {

using platform::TTimer;

TLater::TLater() = default;
TLater::~TLater() = default;

quint64 TLater::after(int ms, std::function<void()> action)
{
    if (ms <= 0) {
        action();
        return 0;
    }
    if (FTimers.size() >= kMaxPending) {
        return 0;
    }
    const quint64 number = ++FLast;
    auto timer = std::make_unique<TTimer>();
    timer->SetInterval(ms);
    timer->OnTimer = [this, number, action = std::move(action)](TTimer*) {
        FTimers.erase(number);
        action();
    };
    timer->SetEnabled(true);
    FTimers.emplace(number, std::move(timer));
    return number;
}

void TLater::cancel(quint64 number)
{
    FTimers.erase(number);
}

void TLater::clear()
{
    FTimers.clear();
}

} // namespace tnv5::sim
