#include "d24_play.h"

#include "d24_sides.h"
#include "tnv5/platform/errors.h"

namespace tnv5::d24::model {

namespace {

THost* current = nullptr; // whose operation is under way

QStringList step(TSide& side, const TTemper& temper, const TStimulus& stimulus)
{
    current = &side.host();
    current->begin(stimulus.seed, temper);
    try {
        const QString result = side.call(stimulus.call);
        current->note("=> " + result);
    } catch (const std::exception&) {
        current->note("raised " + platform::exceptionMessage());
    }
    current->note(side.state());
    return current->takeTrace();
}

/// Sends what nobody catches into the trace of the side at work.
class TUnhandled
{
public:
    TUnhandled()
        : FPrevious(platform::setExceptionHandler(
              [](const QString& message, const auto&) { current->note("unhandled " + message); }))
    {
    }
    ~TUnhandled() { platform::setExceptionHandler(FPrevious); }
    TUnhandled(const TUnhandled&) = delete;
    TUnhandled& operator=(const TUnhandled&) = delete;

private:
    platform::TExceptionHandler FPrevious;
};

} // namespace

TScenario makeScenario(quint64 seed)
{
    TRandom random(seed);
    const auto below = [&](int limit) { return int(random() % quint64(limit)); };
    TScenario scenario;
    TTemper& temper = scenario.temper;
    const int rates[] = {0, 0, 20, 60};
    temper.nested = rates[below(4)];
    temper.raising = rates[below(4)] / 2;
    temper.linkFails = below(3) == 0 ? 200 : 0;
    temper.odd = below(3) == 0;
    temper.mayDestroy = below(3) == 0;
    temper.designing = below(40) == 0;
    const int hour = below(24); // one after the other: the order of arguments is the compiler's
    const int minute = below(60);
    const int second = below(60);
    const int ms = below(1000);
    const bool atMidnight = below(4) == 0;
    temper.startMs = atMidnight ? testkit::TManualClock::at(23, 59, 58 + second % 2, ms)
                                : testkit::TManualClock::at(hour, minute, second, ms);
    for (int event = 0; event < kEventCount; ++event) {
        if (below(8) != 0) {
            scenario.stimuli.push_back({{TOp::Assign, {}, event, 1, 0}, random()});
        }
    }
    if (below(10) != 0) {
        const int link = below(4);
        scenario.stimuli.push_back({{TOp::SetConnector, {}, link == 3 ? 0 : link, 0, 0}, random()});
    }
    if (below(2) == 0) {
        scenario.stimuli.push_back({{TOp::SetCheckET, {}, 1, 0, 0}, random()});
    }
    for (int length = 20 + below(120); length > 0; --length) {
        TCall call = randomCall(random, temper, false);
        scenario.stimuli.push_back({std::move(call), random()});
    }
    return scenario;
}

std::optional<TDifference> play(const TScenario& scenario)
{
    const TUnhandled unhandled;
    TComponentSide component(scenario.temper);
    TModelSide model(scenario.temper);
    for (std::size_t i = 0; i < scenario.stimuli.size(); ++i) {
        QStringList actual = step(component, scenario.temper, scenario.stimuli[i]);
        QStringList expected = step(model, scenario.temper, scenario.stimuli[i]);
        if (actual != expected) {
            return TDifference{i, std::move(actual), std::move(expected)};
        }
    }
    return std::nullopt;
}

TScenario shrunk(TScenario scenario)
{
    for (std::size_t length = scenario.stimuli.size(); length > 0; length /= 2) {
        for (std::size_t at = 0; at < scenario.stimuli.size();) {
            TScenario shorter = scenario;
            const auto begin = shorter.stimuli.begin() + qsizetype(at);
            const auto count = std::min(length, shorter.stimuli.size() - at);
            shorter.stimuli.erase(begin, begin + qsizetype(count));
            if (play(shorter)) {
                scenario = std::move(shorter);
            } else {
                at += length;
            }
        }
    }
    return scenario;
}

QString describe(const TScenario& scenario, const TDifference& difference)
{
    QStringList lines;
    for (std::size_t i = 0; i <= difference.step; ++i) {
        lines << QStringLiteral("%1 %2").arg(i).arg(describe(scenario.stimuli[i].call));
    }
    lines << "component:" << difference.component << "model:" << difference.model;
    return lines.join(u'\n');
}

} // namespace tnv5::d24::model
