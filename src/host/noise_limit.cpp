#include "tnv5/host/noise_limit.h"

#include <algorithm>
#include <limits>

namespace tnv5::host {

bool TNoiseLimit::admits(const QString& kind, qint64 nowMs)
{
    if (!FKinds.contains(kind)) {
        FKinds.insert(kind, {nowMs});
    }
    TMinute& minute = FKinds[kind];
    if (minute.kept < kPerMinute) {
        ++minute.kept;
        return true;
    }
    ++minute.leftOut;
    return false;
}

QStringList TNoiseLimit::over(qint64 nowMs)
{
    QStringList lines;
    for (auto kind = FKinds.begin(); kind != FKinds.end();) {
        const qint64 sinceMs = nowMs - kind->beganMs;
        if (sinceMs >= 0 && sinceMs < kMinuteMs) { // the clock may have been put back
            ++kind;
            continue;
        }
        if (kind->leftOut > 0) {
            lines.append(
                QStringLiteral("%1 more %2 within a minute are not in the journal: noise on the line?")
                    .arg(kind->leftOut)
                    .arg(kind.key()));
        }
        kind = FKinds.erase(kind);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

QStringList TNoiseLimit::all()
{
    return over(std::numeric_limits<qint64>::max());
}

} // namespace tnv5::host
