#pragma once

#include <QHash>
#include <QStringList>

namespace tnv5::host {

/// Keeps noise that looks like cards out of the journal: of the refused unknown cards at a gate it lets
/// through `kPerMinute` in a minute and counts the rest.
///
/// Nobody holds that many cards before a reader; a bad cable makes some hundreds a second.
class TNoiseLimit
{
public:
    static constexpr int kPerMinute = 60;
    static constexpr qint64 kMinuteMs = 60'000;

    /// An unknown card was refused. @param nowMs a time in milliseconds. @return whether it is to be kept
    bool admits(const QString& gate, qint64 nowMs);

    /// What was left out in the minutes that are over, a sentence for each gate.
    QStringList over(qint64 nowMs);
    /// What was left out and not told yet.
    QStringList all();

private:
    struct TMinute
    {
        qint64 beganMs = 0;
        int kept = 0;
        qint64 leftOut = 0;
    };

    QHash<QString, TMinute> FGates; // those at which an unknown card was refused within a minute
};

} // namespace tnv5::host
