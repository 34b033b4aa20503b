// Packets decoded per second by the scales component, and allocations for each, of every family, on a port in
// memory; and bytes per second of long packets that come byte by byte.
//
// allocs/packet: what is allocated between a read's being handed over by the port and the component's having
// the weight: queue of reads, splitter, decoding, log lines, events. Making the packet and the reading of a
// real port are not in it. Counted over the packets of one round after a round of warm-up, before the clock
// runs, and so the same in every run; a queue that allocates now and then makes it a fraction.

#include "bench/allocations.h"
#include "bench/benchmarks.h"
#include "sim/scales_wire.h"
#include "tnv5/scales/families.h"
#include "tnv5/scales/scales_device.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <cstdio>

namespace tnv5::bench {

namespace {

using scales::TScalesDevice;
using testkit::TManualClock;
using testkit::TMemoryPort;

constexpr int kWeights = 1'000;
constexpr int kLightest = 100;
constexpr int kStep = 17; // more than the smallest change that is told

int weightOf(qsizetype packet)
{
    return kLightest + static_cast<int>(packet) * kStep;
}

/// What a scale says for many weights, one read each.
QByteArrayList packets(int family)
{
    const sim::TScaleWire& wire = *sim::scaleWire(family);
    QByteArrayList list;
    for (int i = 0; i < kWeights; ++i) {
        const sim::TLoad load{weightOf(i), true, false};
        list.append(wire.Second.isEmpty() ? wire.Answer(load) : wire.SecondAnswer(load));
    }
    return list;
}

/// A component that has been asked for the weight. No request comes in between: the dialogue stays where a
/// weight is expected.
class TReader
{
public:
    TReader(int family, bool logged) : FReads(packets(family))
    {
        FPort.KeepWrites = false;
        if (logged) {
            FDevice.SetOnLog([this](platform::TComponent*, const QString&) { ++FEvents; });
        }
        FDevice.SetOnWeight([this](platform::TComponent*, int) { ++FEvents; });
        FDevice.SetComport(&FPort);
        FDevice.SetScalesType(family);
        FDevice.SetUpComport();
        FDevice.SetConnection(true);
        FDevice.GetWeight(true);
        if (!sim::scaleWire(family)->Second.isEmpty()) {
            FPort.feed(sim::scaleWire(family)->Answer({kLightest, true, false}));
        }
    }

    void feed(qsizetype packet) { feed(FReads[packet]); }
    void feed(const QByteArray& read) { FPort.feed(read); }
    bool knows(qsizetype packet) const { return weight() == weightOf(packet); }
    int weight() const { return FDevice.LastWeight(); }
    /// Something to keep, so that no event can be left out.
    qint64 events() const { return FEvents; }

private:
    const TManualClock FClock;
    TMemoryPort FPort;
    TScalesDevice FDevice;
    const QByteArrayList FReads;
    qint64 FEvents = 0;
};

/// Allocations of one round over all packets.
std::uint64_t allocationsOfRound(TReader& reader)
{
    const std::uint64_t before = allocations();
    for (qsizetype packet = 0; packet < kWeights; ++packet) {
        reader.feed(packet);
    }
    return allocations() - before;
}

void Packets(benchmark::State& state)
{
    TReader reader(static_cast<int>(state.range(0)), state.range(1) != 0);
    allocationsOfRound(reader); // what is allocated once and kept
    state.counters["allocs/packet"] = static_cast<double>(allocationsOfRound(reader)) / kWeights;
    qsizetype packet = 0;
    while (state.KeepRunning()) {
        reader.feed(packet);
        if (!reader.knows(packet)) {
            state.SkipWithError("a weight is wrong");
            break;
        }
        packet = (packet + 1) % kWeights;
    }
    state.SetItemsProcessed(state.iterations());
    benchmark::DoNotOptimize(reader.events());
}

/// One long packet of a family whose end may stand anywhere.
QByteArray longPacket(int family, qsizetype filling)
{
    const bool cas = family == 2;
    return (cas ? QByteArray("\x01\x02S 01.234kg") : QByteArray("B01.234kg")) + QByteArray(filling, '*') +
           (cas ? "\x04" : "\r\n");
}

/// A long packet byte by byte; the time for a byte must not depend on how many there are.
void ByteByByte(benchmark::State& state)
{
    const QByteArray bytes = longPacket(static_cast<int>(state.range(0)), state.range(1));
    TReader reader(static_cast<int>(state.range(0)), false);
    while (state.KeepRunning()) {
        for (const char byte : bytes) {
            reader.feed(QByteArray(1, byte));
        }
        if (reader.weight() != 1'234) {
            state.SkipWithError("a weight is wrong");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * bytes.size());
}

BENCHMARK(ByteByByte)->ArgNames({"family", "bytes"})->ArgsProduct({{2, 6}, {500, 4'000, 32'000}});

BENCHMARK(Packets)->ArgNames({"family", "log"})->ArgsProduct({{1, 2, 3, 4, 5, 6, 7, 8}, {0, 1}});

} // namespace

} // namespace tnv5::bench

int main(int argc, char** argv)
{
    if (!tnv5::bench::allocationsAreSeen()) {
        std::fprintf(stderr, "scales_bench: allocations are not counted on this system\n");
        return 1;
    }
    return tnv5::bench::runBenchmarks(argc, argv);
}
