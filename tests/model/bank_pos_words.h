#pragma once

#include "model/kit/step.h"

#include <QVariant>

namespace tnv5::bank::model {

using namespace modelkit;

/// What the libraries answer to a call: mostly what leads on, now and then what does not.
QVariant sampleResult(TDice& dice, const QString& method);
/// A new value of an argument by reference.
QVariant sampleOut(TDice& dice, const QString& method);
/// A response of the third library, or a near miss.
QString sampleResponse(TDice& dice);
/// A property of the component that a host writes.
TStep sampleSetting(TDice& dice, int kind);

/// Names of the constants of the last library; the responses come first.
const QStringList& constantNames();

} // namespace tnv5::bank::model
