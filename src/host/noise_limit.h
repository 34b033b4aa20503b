#pragma once

#include <QHash>
#include <QStringList>

namespace tnv5::host {

/// Keeps noise that looks like cards out of the journal: of each kind, such as "unknown cards at 01A", it
/// lets through `kPerMinute` in a minute and counts the rest.
///
/// Nobody holds that many cards before a reader; a bad cable makes some hundreds a second.
class TNoiseLimit
{
public:
    static constexpr int kPerMinute = 60;
    static constexpr qint64 kMinuteMs = 60'000;

    /// One of a kind has come. @param nowMs a time in milliseconds. @return whether it is to be kept
    bool admits(const QString& kind, qint64 nowMs);

    /// What was left out in the minutes that are over, a sentence for each kind.
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

    QHash<QString, TMinute> FKinds; // that have come within a minute
};

} // namespace tnv5::host
