#pragma once

#include "model/kit/step.h"

namespace tnv5::scales::model {

using namespace modelkit;
using modelkit::TStep; // and not the step of a dialogue

/// What a scale of a family sends: proper packets, near misses, noise.
/// @param asked the last request was the second one of a dialogue
QByteArray sampleBytes(TDice& dice, int type, bool asked, int lastWeight);

/// A text with characters from everywhere.
QString sampleText(TDice& dice);

} // namespace tnv5::scales::model
