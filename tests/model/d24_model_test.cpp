// Random lives of networked gates, played on the component and on a model of it written apart. Every event,
// command, result and record must be the same after every call.

#include "d24_branches.h"
#include "d24_play.h"

#include <gtest/gtest.h>

namespace tnv5::d24::model {

namespace {

constexpr int kScenarios = 500;

TEST(TD24Model, ComponentAndModelDoTheSame)
{
    bool isNumber = false;
    const int wanted = qEnvironmentVariableIntValue("TNV5_SCENARIOS", &isNumber);
    const quint64 first = quint64(qEnvironmentVariableIntValue("TNV5_FIRST_SEED"));
    const int scenarios = isNumber ? wanted : kScenarios;
    for (quint64 seed = first; seed < first + quint64(scenarios); ++seed) {
        const TScenario scenario = makeScenario(seed);
        if (play(scenario)) {
            const TScenario small = shrunk(scenario);
            const auto difference = play(small);
            FAIL() << "seed " << seed << "\n" << describe(small, *difference).toStdString();
        }
    }
    if (scenarios < kScenarios) {
        return; // too few to go everywhere
    }
    for (std::size_t i = 0; i < kBranches.size(); ++i) {
        EXPECT_GT(branchCounts()[i], 0) << "no scenario went here: " << kBranches[i];
    }
}

} // namespace

} // namespace tnv5::d24::model
