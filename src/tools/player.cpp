#include "tnv5/tools/player.h"

#include "tnv5/platform/clock.h"

#include <QPointer>
#include <algorithm>

namespace tnv5::tools {

namespace {

constexpr qint64 kUsPerMs = 1'000;
constexpr int kLongestBurst = 100; // entries before the event loop gets its turn

bool isSaid(const TEntry& entry)
{
    return entry.Direction != TDirection::ToEquipment;
}

} // namespace

TPlayer::TPlayer(QList<TEntry> entries, double speed) : TPlayer(entriesOf(std::move(entries)), speed) {}

TPlayer::TPlayer(TEntrySource entries, double speed) : FEntries(std::move(entries)), FSpeed(speed)
{
    FTimer.OnTimer = [this](platform::TTimer*) { play(); };
}

void TPlayer::start()
{
    FPlayedUs = 0;
    FStartMs = platform::TClock::current().nowMs();
    fetch();
    wait();
}

void TPlayer::fetch()
{
    FNext.reset();
    try {
        FNext = FEntries();
    } catch (const ERecording& error) {
        FEntries = [] { return std::optional<TEntry>(); };
        if (const auto handler = OnTrouble) {
            handler(error.message());
        }
    }
}

// Counted from the start, so that no waits add up to a drift. A long wait is taken in pieces.
void TPlayer::wait()
{
    constexpr double kLongestMs = 3'600'000;
    double ms = 1;
    if (FSpeed > 0 && FNext) {
        const double due = static_cast<double>(FPlayedUs + FNext->WaitUs) / double(kUsPerMs) / FSpeed;
        ms = due - static_cast<double>(platform::TClock::current().nowMs() - FStartMs);
    }
    FTimer.SetEnabled(false);
    FTimer.SetInterval(static_cast<int>(std::clamp(ms, 1.0, kLongestMs)));
    FTimer.SetEnabled(true);
}

void TPlayer::play()
{
    FTimer.SetEnabled(false);
    if (!FNext) {
        if (const auto handler = OnEnd) {
            handler();
        }
        return;
    }
    const QPointer<TPlayer> self(this);
    for (int burst = 0; self && burst < kLongestBurst && isDue(); ++burst) {
        const TEntry entry = *FNext;
        FPlayedUs += entry.WaitUs;
        fetch();
        if (!self) {
            return;
        }
        if (const auto handler = OnBytes; handler && isSaid(entry) && !entry.Bytes.isEmpty()) {
            platform::guarded([&] { handler(entry.Bytes); });
        }
        if (self && FSpeed <= 0) {
            break;
        }
    }
    if (self) {
        wait();
    }
}

bool TPlayer::isDue() const
{
    if (!FNext) {
        return false;
    }
    const double due = static_cast<double>(FPlayedUs + FNext->WaitUs) / double(kUsPerMs);
    const double passed = static_cast<double>(platform::TClock::current().nowMs() - FStartMs);
    return FSpeed <= 0 || passed * FSpeed >= due;
}

void playAtOnce(const TEntrySource& entries, const std::function<void(qint64)>& advance,
                const std::function<void(const QByteArray&)>& say)
{
    qint64 us = 0;
    while (const std::optional<TEntry> entry = entries()) {
        us += entry->WaitUs;
        advance(us / kUsPerMs);
        us %= kUsPerMs;
        if (isSaid(*entry) && !entry->Bytes.isEmpty()) {
            say(entry->Bytes);
        }
    }
}

} // namespace tnv5::tools
