#include "tnv5/host/noise_limit.h"

#include <algorithm>
#include <limits>

namespace tnv5::host {

bool TNoiseLimit::admits(const QString& gate, qint64 nowMs)
{
    if (!FGates.contains(gate)) {
        FGates.insert(gate, {nowMs});
    }
    TMinute& minute = FGates[gate];
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
    for (auto gate = FGates.begin(); gate != FGates.end();) {
        const qint64 sinceMs = nowMs - gate->beganMs;
        if (sinceMs >= 0 && sinceMs < kMinuteMs) { // the clock may have been put back
            ++gate;
            continue;
        }
        if (gate->leftOut > 0) {
            lines.append(QStringLiteral("%1 more unknown cards at %2 within a minute are not in the journal: "
                                        "noise on the line?")
                             .arg(gate->leftOut)
                             .arg(gate.key()));
        }
        gate = FGates.erase(gate);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

QStringList TNoiseLimit::all()
{
    return over(std::numeric_limits<qint64>::max());
}

} // namespace tnv5::host
