#pragma once

#include "tnv5/platform/timer.h"
#include "tnv5/tools/recording.h"

#include <QObject>

namespace tnv5::tools {

/// Plays what the equipment said in a recording, by the current clock: entries that come from the equipment
/// or whose direction is not known. The others only take their time.
class TPlayer final : public QObject
{
    Q_OBJECT

public:
    /// @param speed how many times as fast as recorded; 0 or less: without waiting, one entry a millisecond
    TPlayer(TEntrySource entries, double speed);
    TPlayer(QList<TEntry> entries, double speed);

    void start();

    /// Bytes that the equipment says now; may destroy the player.
    std::function<void(const QByteArray& bytes)> OnBytes;
    /// The recording cannot be read on; nothing more comes.
    std::function<void(const QString& why)> OnTrouble;
    /// Everything has been played.
    std::function<void()> OnEnd;

private:
    void wait();
    void play();
    bool isDue() const;
    void fetch();

    TEntrySource FEntries;
    double FSpeed;
    std::optional<TEntry> FNext;
    qint64 FStartMs = 0;
    qint64 FPlayedUs = 0; // recorded time up to the next entry
    platform::TTimer FTimer;
};

/// Plays without waiting while the time that a manual clock shows goes on as recorded.
/// @param advance lets that many milliseconds pass
/// @throws ERecording when `entries` does
void playAtOnce(const TEntrySource& entries, const std::function<void(qint64 ms)>& advance,
                const std::function<void(const QByteArray& bytes)>& say);

} // namespace tnv5::tools
