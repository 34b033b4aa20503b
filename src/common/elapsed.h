#pragma once

#include "tnv5/platform/clock.h"

namespace tnv5::common {

/// Whole seconds between two date-times, without sign, fraction cut off.
qint64 WholeSeconds(platform::TDateTime first, platform::TDateTime second);

/// The time-out test of all components: more than `limit` whole seconds lie between the two date-times.
/// Example: with limit 2 it is true from the third second on.
bool ElapsedMoreThan(platform::TDateTime first, platform::TDateTime second, qint64 limit);

} // namespace tnv5::common
