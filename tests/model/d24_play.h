#pragma once

#include "d24_host.h"

#include <optional>

namespace tnv5::d24::model {

/// One call and the seed of what the host does meanwhile.
struct TStimulus
{
    TCall call;
    quint64 seed = 0;
};

struct TScenario
{
    TTemper temper;
    std::vector<TStimulus> stimuli;
};

TScenario makeScenario(quint64 seed);

/// Where component and model part, and what each did there.
struct TDifference
{
    std::size_t step = 0;
    QStringList component;
    QStringList model;
};

/// Plays a scenario on a component and on a model, and compares after each call.
std::optional<TDifference> play(const TScenario& scenario);

/// The same difference with as few calls as can be found by leaving some out.
TScenario shrunk(TScenario scenario);

/// For people.
QString describe(const TScenario& scenario, const TDifference& difference);

} // namespace tnv5::d24::model
