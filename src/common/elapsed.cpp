#include "tnv5/common/elapsed.h"

#include <cmath>
#include <limits>

namespace tnv5::common {

namespace {

constexpr double kSecondsPerDay = 86'400.0;
// A double cannot hold most whole seconds of a day exactly; clocks count milliseconds, so this decides
// nothing but that noise.
constexpr double kNoiseSeconds = 5e-6;

} // namespace

qint64 WholeSeconds(platform::TDateTime first, platform::TDateTime second)
{
    const double seconds = std::trunc(std::fabs(first - second) * kSecondsPerDay + kNoiseSeconds);
    if (!(seconds < static_cast<double>(std::numeric_limits<qint64>::max()))) { // also what is not a number
        return std::numeric_limits<qint64>::max();
    }
    return static_cast<qint64>(seconds);
}

bool ElapsedMoreThan(platform::TDateTime first, platform::TDateTime second, qint64 limit)
{
    return limit < WholeSeconds(first, second);
}

} // namespace tnv5::common
