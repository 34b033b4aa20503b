#include "model/kit/play.h"

#include "support/sanitized.h"
#include "tnv5/platform/code_page.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <optional>

namespace tnv5::modelkit {

namespace {

struct TDifference
{
    std::size_t step;
    QStringList component;
    QStringList model;
};

class TPlay
{
public:
    TPlay(TMakeStage component, TMakeStage model, quint64 seed)
        : FComponent(component), FModel(model), FSeed(seed)
    {
    }

    /// Makes the scenario up while it plays it.
    std::optional<TDifference> first();
    /// Plays what there is of it again.
    std::optional<TDifference> again(const std::vector<TStep>& steps) const;
    /// Leaves out what the difference does not need.
    void shrink();
    QString explained() const;

    std::vector<TStep> steps;
    const char* names = nullptr;

private:
    template <class List, class Differs>
    static void thin(List& list, const Differs& differs);

    TMakeStage FComponent;
    TMakeStage FModel;
    quint64 FSeed;
};

std::optional<TDifference> playStep(TStage& component, TStage& model, const TStep& step, std::size_t index)
{
    const QStringList actual = component.play(step);
    const QStringList expected = model.play(step);
    return actual == expected ? std::nullopt : std::optional(TDifference{index, actual, expected});
}

std::optional<TDifference> TPlay::first()
{
    const auto component = FComponent(FSeed);
    const auto model = FModel(FSeed);
    names = model->names();
    TDice dice(FSeed + 1'000'000);
    std::vector<TStep> coming = model->begin(dice);
    const std::size_t length = coming.size() + std::size_t(dice.between(20, 200));
    while (steps.size() < length) {
        for (TStep& step : coming) {
            step.seed = dice.next();
            steps.push_back(step);
            if (const auto difference = playStep(*component, *model, step, steps.size() - 1)) {
                return difference;
            }
        }
        coming = model->more(dice);
    }
    return std::nullopt;
}

std::optional<TDifference> TPlay::again(const std::vector<TStep>& some) const
{
    const auto component = FComponent(FSeed);
    const auto model = FModel(FSeed);
    for (std::size_t i = 0; i < some.size(); ++i) {
        if (const auto difference = playStep(*component, *model, some[i], i)) {
            return difference;
        }
    }
    return std::nullopt;
}

/// Takes out of a list what is not needed: halves of it, quarters, and so on.
template <class List, class Differs>
void TPlay::thin(List& list, const Differs& differs)
{
    for (auto size = list.size(); size > 0; size /= 2) {
        for (decltype(size) at = 0; at + size <= list.size();) {
            List less = list;
            less.erase(less.begin() + qsizetype(at), less.begin() + qsizetype(at + size));
            if (differs(less)) {
                list = less;
            } else {
                at += size;
            }
        }
    }
}

void TPlay::shrink()
{
    thin(steps, [&](const auto& less) { return again(less).has_value(); });
    for (TStep& step : steps) {
        const TStep before = step;
        const auto keep = [&](auto TStep::*field, const auto& value) {
            const auto old = std::exchange(step.*field, value);
            const bool same = again(steps).has_value();
            if (!same) {
                step.*field = old;
            }
            return same;
        };
        for (int acts = 0; acts < 3 && !keep(&TStep::acts, acts); ++acts) {
        }
        keep(&TStep::cuts, std::vector<int>());
        while (step.kind == Advance && step.a > 1 && keep(&TStep::a, step.a / 2)) {
        }
        if (step.bytes.size() < 1000) {
            thin(step.bytes, [&](const QByteArray& less) {
                const QByteArray old = std::exchange(step.bytes, less);
                const bool same = again(steps).has_value();
                step.bytes = old;
                return same;
            });
        }
    }
}

QString TPlay::explained() const
{
    QStringList lines;
    const auto difference = again(steps);
    if (!difference) {
        return QStringLiteral("the difference does not come again: something outlives a scenario");
    }
    lines += QStringLiteral("shortest scenario found:");
    for (const TStep& step : steps) {
        lines += "    " + shown(step, names);
    }
    const auto list = [&](const QString& title, const QStringList& trace, const QStringList& other) {
        constexpr qsizetype kBefore = 20;
        qsizetype same = 0;
        while (same < trace.size() && same < other.size() && trace[same] == other[same]) {
            ++same;
        }
        lines += title;
        for (qsizetype i = qMax<qsizetype>(0, same - kBefore); i < trace.size(); ++i) {
            lines += (i < same ? "    " : "  * ") + trace[i];
        }
    };
    list("component:", difference->component, difference->model);
    list("model:", difference->model, difference->component);
    return lines.join(u'\n');
}

int fromEnvironment(const char* name, int fallback)
{
    bool isNumber = false;
    const int value = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? value : fallback;
}

} // namespace

void compare(int scenarios, TMakeStage component, TMakeStage model, const QStringList& elsewhere)
{
    // The sanitizers see the first of the scenarios that are played and compared without them.
    const int usual = tests::kSanitized ? scenarios / 4 : scenarios;
    const int count = fromEnvironment("TNV5_SCENARIOS", usual);
    const int start = fromEnvironment("TNV5_SEED", 0);
    std::size_t steps = 0;
    for (int seed = start; seed < start + count; ++seed) {
        TPlay play(component, model, quint64(seed));
        if (const auto difference = play.first()) {
            const auto before = play.steps.size();
            play.shrink();
            FAIL() << "seed " << seed << " (TNV5_SEED=" << seed << " TNV5_SCENARIOS=1 plays it again), "
                   << "found in step " << before - 1 << "; " << play.explained().toStdString();
        }
        steps += play.steps.size();
    }
    platform::setCodePage("windows-1251");
    std::printf("%d scenarios, %zu steps, %zu branches\n", count, steps, branches().size());
    QStringList missing;
    for (const TBranch* const branch : branches()) {
        if (qEnvironmentVariableIsSet("TNV5_BRANCHES")) {
            std::printf("%12lld %s\n", static_cast<long long>(branch->count), branch->name);
        }
        const bool expected = std::none_of(elsewhere.begin(), elsewhere.end(), [&](const QString& name) {
            return name.endsWith(u'*') ? QString(branch->name).startsWith(name.chopped(1))
                                       : name == QLatin1String(branch->name);
        });
        if (branch->count == 0 && expected) {
            missing += branch->name;
        }
    }
    if (count >= scenarios) { // a few chosen by hand need not reach everything
        EXPECT_EQ(missing.join("; ").toStdString(), "") << "branches that no scenario reaches";
    }
}

} // namespace tnv5::modelkit
