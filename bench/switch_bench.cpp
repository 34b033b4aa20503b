// What one sweep of the switch component over its jobs costs, and a poll of its boards.
//
//   switch_bench [options of Google Benchmark]

#include "bench/benchmarks.h"
#include "tnv5/switch/switch_device.h"
#include "tnv5/testing/memory_port.h"

#include <QCoreApplication>

namespace tnv5::bench {

namespace {

using benchmark::Counter;
using switching::TSwitchDevice;

const QString kLink = QStringLiteral("0.0.0.0");

/// Three characters and the side; digits only, as the connector looks for words in addresses, too.
QString addressOf(int number)
{
    return QString::number(number / 2).rightJustified(3, u'0') + (number % 2 == 0 ? u'A' : u'B');
}

enum TJobs {
    Off,      // off and wanted so: nothing to do
    Running,  // on, and the host says each time that they may stay so
    Reported, // the same, with a status handler
};

// One sweep that changes nothing.
void Sweep(benchmark::State& state)
{
    const auto kind = static_cast<TJobs>(state.range(0));
    const int jobs = static_cast<int>(state.range(1));
    TSwitchDevice relays;
    qint64 asked = 0;
    qint64 reports = 0;
    relays.SetOnCheckSQL([&](auto*, const QVariant&, const QVariant&, const QVariant&, const QVariant&,
                             const QVariant&, QVariant& result) {
        ++asked;
        result = 0;
    });
    if (kind == Reported) {
        relays.SetOnCheckStatus([&](auto*, const QVariant&, const QVariant&, const QVariant&, const QVariant&,
                                    const QVariant&, const QVariant&) { ++reports; });
    }
    for (int i = 0; i < jobs; ++i) {
        const QString device = QString::number(i).rightJustified(5, u'0');
        const auto job = relays.StackItem(relays.p_hw_FindDevice(kLink, device, QStringLiteral("1")));
        job->Status = job->StatusDevice = kind == Off ? QStringLiteral("OFF") : QStringLiteral("ON");
        job->Finishtime = 0.999999; // until midnight
    }
    qint64 sweeps = 0;
    for (auto _ : state) {
        for (int i = 0; kind != Off && i < jobs; ++i) {
            relays.StackItem(i)->Finishtime = 0.999999;
        }
        relays.p_hw_CallStackArray();
        ++sweeps;
    }
    if (asked != (kind == Off ? 0 : sweeps * jobs) || (kind == Reported && reports != 2 * sweeps * jobs)) {
        state.SkipWithError("not every job was swept");
    }
    state.counters["per_job"] = Counter(jobs, Counter::kIsIterationInvariantRate | Counter::kInvert);
}

// Every board that has pinged is asked for its relays.
void Poll(benchmark::State& state)
{
    const int boards = static_cast<int>(state.range(0));
    testkit::TMemoryPort port;
    port.KeepWrites = false;
    qint64 written = 0;
    port.OnWritten = [&](const QByteArray&) { ++written; };
    port.Open();
    connector::TDeviceConnector connector;
    connector.SetConnectorType(connector::podComPort);
    connector.SetComport(&port);
    TSwitchDevice relays;
    relays.SetConnector(&connector);
    for (int i = 0; i < boards; ++i) {
        relays.p_hw_ProtocolIn(u'#' + kLink + u':' + addressOf(i) + QStringLiteral("PING00"));
    }
    written = 0;
    qint64 polls = 0;
    for (auto _ : state) {
        relays.p_hw_CheckStatusAll();
        ++polls;
    }
    if (written != polls * boards) {
        state.SkipWithError("not every board was asked");
    }
    state.SetItemsProcessed(polls * boards);
}

// What the boards answer to it: the states of two relays each, from the bytes to the job table.
void Answers(benchmark::State& state)
{
    const int boards = static_cast<int>(state.range(0));
    testkit::TMemoryPort port;
    port.KeepWrites = false;
    port.Open();
    connector::TDeviceConnector connector;
    connector.SetConnectorType(connector::podComPort);
    connector.SetComport(&port);
    TSwitchDevice relays;
    relays.SetOnCheckSQL([](auto*, const QVariant&, const QVariant&, const QVariant&, const QVariant&,
                            const QVariant&, QVariant& result) { result = 0; });
    relays.SetConnector(&connector);
    QByteArrayList answers;
    for (int i = 0; i < boards; ++i) {
        answers << '#' + addressOf(2 * i).toLatin1() + "HWGX=N/GR=NN/00\r";
    }
    for (auto _ : state) {
        for (const QByteArray& answer : answers) {
            port.feed(answer);
        }
    }
    if (relays.StackItemsCount() != 2 * boards) {
        state.SkipWithError("not every relay has a job");
    }
    state.SetItemsProcessed(state.iterations() * boards);
}

BENCHMARK(Sweep)
    ->ArgNames({"jobs_are", "jobs"})
    ->ArgsProduct({{Off, Running, Reported}, {1, 10, 100, 1'000, 10'000}});
BENCHMARK(Poll)->ArgName("boards")->Arg(10)->Arg(100)->Arg(1'000);
BENCHMARK(Answers)->ArgName("boards")->Arg(10)->Arg(100)->Arg(500);

} // namespace

} // namespace tnv5::bench

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv); // the component's timers need it
    return tnv5::bench::runBenchmarks(argc, argv);
}
