#pragma once

#include "model/kit/step.h"

namespace tnv5::bank::model {

using namespace modelkit;

/// What a terminal sends: proper frames, near misses, noise.
QByteArray sampleFrame(TDice& dice);

} // namespace tnv5::bank::model
