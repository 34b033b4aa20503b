// A card decision by a script beside the same one in C++: card line in, command out, in memory.

#include "bench/benchmarks.h"
#include "tnv5/js/js_engine.h"
#include "tnv5/registration/load.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QCoreApplication>
#include <QSet>
#include <benchmark/benchmark.h>

namespace tnv5::bench {
namespace {

using testkit::TManualClock;
using testkit::TMemoryPort;
using turnstile::TTurnStylerDevice;

/// One card after the other, each decided, refused and retired.
/// @param decide assigns the decision to the gate
template <class Decide>
void decisions(benchmark::State& state, const Decide& decide)
{
    TManualClock clock;
    TMemoryPort port;
    port.KeepWrites = false;
    qint64 commands = 0;
    port.OnWritten = [&commands](const QByteArray&) { ++commands; };
    TTurnStylerDevice gate;
    gate.SetDeviceList({QStringLiteral("01A")});
    gate.SetComport(&port);
    port.Open();
    decide(gate);
    qint64 cards = 0;
    for (auto _ : state) {
        port.feed("$01AR12345678\r");
        ++cards;
        state.PauseTiming();
        clock.advance(100); // retires the pass
        state.ResumeTiming();
    }
    if (commands != cards) {
        state.SkipWithError("not every card was answered");
    }
}

void DecisionInCpp(benchmark::State& state)
{
    const QSet<QString> members{QStringLiteral("1"), QStringLiteral("2")};
    decisions(state, [&](TTurnStylerDevice& gate) {
        gate.SetOnCheckSQL([&members](auto*, auto&, auto& card, auto&, auto&, auto& mode, auto& result) {
            result = mode.toInt() == turnstile::cmOpen ? int(members.contains(card.toString())) : 1;
        });
    });
}

void DecisionByScript(benchmark::State& state)
{
    js::TJsEngine engine;
    registration::load(engine);
    decisions(state, [&](TTurnStylerDevice& gate) {
        engine.RegisterObject(QStringLiteral("gate"), &gate);
        engine.evaluate(
            QStringLiteral("const members = {'1': true, '2': true};"
                           "gate.OnCheckSQL = (sender, device, card, status, img, mode, result) => {"
                           "  result.value = mode === 0 ? (members[card] ? 1 : 0) : 1; };"),
            QStringLiteral("bench.js"));
    });
    registration::unload();
}

BENCHMARK(DecisionInCpp);
BENCHMARK(DecisionByScript);

} // namespace
} // namespace tnv5::bench

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    return tnv5::bench::runBenchmarks(argc, argv);
}
