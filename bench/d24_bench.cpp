// What one pass of the D24 component over its pending records costs.
//
//   d24_bench [options of Google Benchmark]

#include "bench/benchmarks.h"
#include "tnv5/d24/d24_device.h"

#include <QCoreApplication>

namespace tnv5::bench {

namespace {

using d24::TTurnStylerDeviceD24;

enum TIdle { Open, OpenReported, NewUndecided };

void assignReport(TTurnStylerDeviceD24& gates, qint64& reports)
{
    gates.SetOnCheckStatus([&reports](auto*, const QVariant&, const QVariant&, const QVariant&,
                                      const QVariant&, const QVariant&, const QVariant&,
                                      const QVariant&) { ++reports; });
}

// The host does not know yet: the pass stays and is asked about again.
void assignUndecided(TTurnStylerDeviceD24& gates)
{
    gates.SetOnCheckSQL([](auto*, const QVariant&, const QVariant&, const QVariant&, const QVariant&,
                           const QVariant&, QImage&, const QVariant&, QVariant&,
                           QVariant& result) { result = 2; });
}

// One pass over a table in which nothing is due.
void StackPass(benchmark::State& state)
{
    const auto idle = static_cast<TIdle>(state.range(0));
    const int entries = static_cast<int>(state.range(1));
    TTurnStylerDeviceD24 gates;
    gates.SetTimeOut(1'000'000);
    qint64 reports = 0;
    if (idle == OpenReported) {
        assignReport(gates, reports);
    } else if (idle == NewUndecided) {
        assignUndecided(gates);
    }
    for (int i = 0; i < entries; ++i) {
        const QString device = QString::number(i, 36).rightJustified(3, u'0').toUpper() + u'T';
        const int index = gates.p_hw_FindDeviceByRelay(QStringLiteral("0.0.0.0"), device, QStringLiteral("T"),
                                                       QString::number(i));
        if (idle != NewUndecided) {
            gates.StackItem(index)->Status = QStringLiteral("OPEN");
        }
    }
    while (state.KeepRunning()) {
        gates.p_hw_CallStackArray();
    }
    if (gates.StackItemsCount() != entries) {
        state.SkipWithError("the entries were not idle");
    }
    if (idle == OpenReported && reports != state.iterations() * entries) {
        state.SkipWithError("not every entry was reported");
    }
    using benchmark::Counter;
    state.counters["per_entry"] = Counter(entries, Counter::kIsIterationInvariantRate | Counter::kInvert);
}

BENCHMARK(StackPass)
    ->ArgNames({"idle", "entries"})
    ->ArgsProduct({{Open, OpenReported, NewUndecided}, {1, 10, 100, 1000, 4'096}});

} // namespace

} // namespace tnv5::bench

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv); // the component's timers need it
    return tnv5::bench::runBenchmarks(argc, argv);
}
