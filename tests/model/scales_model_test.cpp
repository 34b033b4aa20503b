// Random scenarios on a scale's component and on a model of it: both must tell the same, step by step.
//
// TNV5_SCENARIOS: number of scenarios; TNV5_SEED: seed of the first one.

#include "model/scales_player.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

using namespace tnv5::scales::model;

constexpr int kScenarios = 600;

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines) {
        text += "    " + line + '\n';
    }
    return text;
}

/// Steps played, or -1 after a difference.
int playScenario(quint64 seed)
{
    TRandom random(seed * 2 + 1);
    const TTemper temper = anyTemper(random);
    TPlayer component(componentSide(), temper, seed);
    TPlayer model(modelSide(), temper, seed);
    const std::vector<TAction> first = beginning(random, temper);
    const int steps = int(first.size()) + random.between(20, 190);
    for (int step = 0; step < steps; ++step) {
        const TAction action =
            step < int(first.size()) ? first[size_t(step)] : anyAction(random, component.view(), temper);
        TAction careful = action;
        careful.careless = false;
        component.play(careful);
        model.play(careful);
        const auto actual = component.takeTrace();
        const auto expected = model.takeTrace();
        if (actual != expected) {
            size_t same = 0;
            while (same < actual.size() && same < expected.size() && actual[same] == expected[same]) {
                ++same;
            }
            ADD_FAILURE() << "seed " << seed << ", step " << step << ", line " << same << "\n  component:\n"
                          << joined(actual) << "  model:\n"
                          << joined(expected);
            return -1;
        }
    }
    return steps;
}

int fromEnvironment(const char* name, int fallback)
{
    bool number = false;
    const int value = qEnvironmentVariableIntValue(name, &number);
    return number ? value : fallback;
}

TEST(ScalesModel, TellsTheSameAsTheComponent)
{
    const int scenarios = fromEnvironment("TNV5_SCENARIOS", kScenarios);
    const int first = fromEnvironment("TNV5_SEED", 1);
    qint64 steps = 0;
    for (int seed = first; seed < first + scenarios; ++seed) {
        const int played = playScenario(quint64(seed));
        ASSERT_GE(played, 0);
        steps += played;
    }
    std::string missing;
    for (int branch = 0; branch < int(TBranch::Count); ++branch) {
        if (qEnvironmentVariableIsSet("TNV5_BRANCHES")) {
            std::printf("%9lld %s\n", static_cast<long long>(reached(TBranch(branch))),
                        branchName(TBranch(branch)).constData());
        }
        if (reached(TBranch(branch)) == 0) {
            missing += " " + branchName(TBranch(branch)).toStdString();
        }
    }
    std::printf("%d scenarios, %lld steps\n", scenarios, static_cast<long long>(steps));
    if (scenarios >= kScenarios) {
        EXPECT_EQ(missing, "") << "branches of the model that no scenario reached";
    } else {
        std::printf("not reached:%s\n", missing.c_str());
    }
}

} // namespace
