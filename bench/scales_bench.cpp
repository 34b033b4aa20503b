// Packets decoded per second by the scales component, of each family, on a port in memory.

#include "scales/families.h"
#include "scales/scales_device.h"
#include "sim/scales_wire.h"
#include "testing/manual_clock.h"
#include "testing/memory_port.h"

#include <benchmark/benchmark.h>

namespace tnv5::bench {

namespace {

using scales::TScalesDevice;
using testing::TManualClock;
using testing::TMemoryPort;

constexpr int kWeights = 1'000;
constexpr int kLightest = 100;
constexpr int kStep = 17; // more than the smallest change that is told

/// What a scale says for many weights, one read each.
QByteArrayList packets(int family)
{
    const sim::TScaleWire& wire = *sim::scaleWire(family);
    QByteArrayList list;
    for (int i = 0; i < kWeights; ++i) {
        const sim::TLoad load{kLightest + i * kStep, true, false};
        list.append(wire.Second.isEmpty() ? wire.Answer(load) : wire.SecondAnswer(load));
    }
    return list;
}

// Without a request in between: the dialogue stays where a weight is expected.
void Packets(benchmark::State& state)
{
    const int family = static_cast<int>(state.range(0));
    const bool logged = state.range(1) != 0;
    const TManualClock clock;
    TMemoryPort port;
    port.KeepWrites = false;
    TScalesDevice device;
    qint64 events = 0;
    if (logged) {
        device.SetOnLog([&events](platform::TComponent*, const QString&) { ++events; });
    }
    device.SetOnWeight([&events](platform::TComponent*, int) { ++events; });
    device.SetComport(&port);
    device.SetScalesType(family);
    device.SetUpComport();
    device.SetConnection(true);
    device.GetWeight(true);
    if (!sim::scaleWire(family)->Second.isEmpty()) {
        port.feed(sim::scaleWire(family)->Answer({kLightest, true, false}));
    }
    const QByteArrayList reads = packets(family);
    qsizetype next = 0;
    while (state.KeepRunning()) {
        port.feed(reads[next]);
        if (device.LastWeight() != kLightest + static_cast<int>(next) * kStep) {
            state.SkipWithError("a weight is wrong");
            break;
        }
        next = (next + 1) % reads.size();
    }
    state.SetItemsProcessed(state.iterations());
    benchmark::DoNotOptimize(events);
}

BENCHMARK(Packets)->ArgNames({"family", "log"})->ArgsProduct({{1, 2, 3, 4, 5, 6, 7, 8}, {0, 1}});

} // namespace

} // namespace tnv5::bench

BENCHMARK_MAIN();
