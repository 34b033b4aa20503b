// Rates and costs inside the turnstile component, on a port in memory.
//
//   turnstile_bench [options of Google Benchmark]
//   turnstile_bench --write-reads READ_SIZE ADDRESSES FILE    saves the reads of CardLines for other programs

#include "bench/benchmarks.h"
#include "bench/card_reads.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QSet>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tnv5::bench {

namespace {

using platform::TComponent;
using testkit::TManualClock;
using testkit::TMemoryPort;
using turnstile::TTurnStylerDevice;

constexpr int kTickMs = 100;
constexpr std::int64_t kUsualGates = 8;
constexpr std::int64_t kOneLinePerGate = kUsualGates * kCardLineSize;

enum THandlers { NoHandlers, DecisionOnly, AllHandlers };

/// What the handlers of a host leave behind, so that no compiler removes their work.
struct TTally
{
    qint64 logged = 0;
    qint64 errors = 0;
    qint64 reports = 0;
    qint64 pictures = 0;
    qint64 decisions = 0;
    qint64 written = 0;
};

QSet<QString> members()
{
    QSet<QString> cards;
    for (int card = 12'340'000; card < 12'345'000; ++card) {
        cards.insert(QString::number(card));
    }
    return cards;
}

/// A component on a port in memory, with the handlers of a small host that refuses strangers.
class TGate
{
public:
    TGate(THandlers handlers, int addresses)
    {
        FPort.KeepWrites = false;
        FPort.OnWritten = [this](const QByteArray& bytes) { FTally.written += bytes.size(); };
        FGate.SetComport(&FPort);
        FPort.Open();
        QStringList known;
        for (const QByteArray& read : cardReads(kCardLineSize * addresses, addresses).mid(0, 1)) {
            for (int line = 0; line < addresses; ++line) {
                known.append(QString::fromLatin1(read.mid(line * kCardLineSize + 1, 3)));
            }
        }
        FGate.SetDeviceList(known);
        if (handlers != NoHandlers) {
            assignDecision();
        }
        if (handlers == AllHandlers) {
            assignReports();
        }
    }

    TMemoryPort& port() { return FPort; }
    TTurnStylerDevice& gate() { return FGate; }
    const TTally& tally() const { return FTally; }

private:
    void assignDecision()
    {
        FGate.SetOnCheckSQL([this](TComponent*, const QVariant&, const QVariant& card, const QVariant&,
                                   QImage&, const QVariant& mode, QVariant& result) {
            ++FTally.decisions;
            result = mode.toInt() == turnstile::cmOpen ? int(FMembers.contains(card.toString())) : 1;
        });
    }

    void assignReports()
    {
        FGate.SetOnLog([this](TComponent*, const QString& text) { FTally.logged += text.size(); });
        FGate.SetOnError([this](TComponent*, const QString& text) { FTally.errors += text.size(); });
        FGate.SetOnGetImg([this](TComponent*, const QString&, QImage&) { ++FTally.pictures; });
        FGate.SetOnCheckStatus([this](TComponent*, const QVariant&, const QVariant&, const QVariant&,
                                      const QVariant&, const QVariant&) { ++FTally.reports; });
    }

    TTally FTally;
    QSet<QString> FMembers = members();
    TMemoryPort FPort;
    TTurnStylerDevice FGate;
};

// Every card line of the stream goes all the way: splitters, line, pass table, reports, decision, refuse
// command, removal. The ticks that retire the cards are part of the time. Without a decision nothing is ever
// retired: then one tick follows each read.
void CardLines(benchmark::State& state)
{
    const auto handlers = static_cast<THandlers>(state.range(0));
    const int readSize = static_cast<int>(state.range(1));
    const int addresses = static_cast<int>(state.range(2));
    TManualClock clock;
    TGate gate(handlers, addresses);
    const QList<QByteArray> reads = cardReads(readSize, addresses);

    qsizetype next = 0;
    qint64 bytes = 0;
    while (state.KeepRunning()) {
        gate.port().feed(reads[next]);
        bytes += readSize;
        next = (next + 1) % reads.size();
        do {
            clock.advance(kTickMs);
        } while (handlers != NoHandlers && gate.gate().StackItemsCount() > 0);
    }
    const qint64 lines = bytes / kCardLineSize;
    state.SetItemsProcessed(lines);
    if (handlers != NoHandlers && gate.tally().decisions != lines) {
        state.SkipWithError("not every card was decided");
    }
    if (gate.tally().errors != 0) {
        state.SkipWithError("errors were reported");
    }
}

enum TIdle { OpenAcknowledged, OpenReported, NewUnanswered };

// One pass over a table in which nothing is due.
void StackPass(benchmark::State& state)
{
    const auto idle = static_cast<TIdle>(state.range(0));
    const int entries = static_cast<int>(state.range(1));
    TGate gate(NoHandlers, 1);
    qint64 reports = 0;
    if (idle == OpenReported) {
        gate.gate().SetOnCheckStatus([&reports](TComponent*, const QVariant&, const QVariant&,
                                                const QVariant&, const QVariant&,
                                                const QVariant&) { ++reports; });
    }
    gate.gate().SetTimeOut(1'000'000);
    for (int i = 0; i < entries; ++i) {
        const int index = gate.gate().p_hw_FindDeviceByRelay(QStringLiteral("01A"), QString::number(i));
        if (idle != NewUnanswered) {
            gate.gate().StackItem(index)->Status = QStringLiteral("OPEN");
            gate.gate().StackItem(index)->StatusHard = QStringLiteral("RELAY");
        }
    }
    while (state.KeepRunning()) {
        gate.gate().p_hw_CallStackArray();
    }
    if (gate.gate().StackItemsCount() != entries) {
        state.SkipWithError("the entries were not idle");
    }
    using benchmark::Counter;
    state.counters["per_entry"] = Counter(entries, Counter::kIsIterationInvariantRate | Counter::kInvert);
}

BENCHMARK(CardLines)
    ->UseRealTime() // as the programs beside it are timed
    ->ArgNames({"handlers", "read", "addresses"})
    ->ArgsProduct({{NoHandlers, DecisionOnly, AllHandlers}, {4096}, {300}})
    ->ArgsProduct({{NoHandlers, DecisionOnly, AllHandlers}, {kOneLinePerGate}, {kUsualGates}});
BENCHMARK(StackPass)
    ->ArgNames({"idle", "entries"})
    ->ArgsProduct({{OpenAcknowledged, OpenReported, NewUnanswered}, {1, 10, 100, 1000, 4'096}});

int writeReads(char** args)
{
    const int readSize = std::atoi(args[0]);
    const int addresses = std::atoi(args[1]);
    if (readSize <= 0 || addresses <= 0 || !saveReads(cardReads(readSize, addresses), args[2])) {
        std::fprintf(stderr, "cannot write reads to %s\n", args[2]);
        return 1;
    }
    return 0;
}

} // namespace

} // namespace tnv5::bench

int main(int argc, char** argv)
{
    if (argc == 5 && std::strcmp(argv[1], "--write-reads") == 0) {
        return tnv5::bench::writeReads(argv + 2);
    }
    return tnv5::bench::runBenchmarks(argc, argv);
}
