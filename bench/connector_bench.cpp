// Rates of the line connector in memory, with few and with many boards.

#include "tnv5/common/crc8.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/testing/memory_port.h"

#include <benchmark/benchmark.h>

namespace tnv5::bench {

namespace {

using connector::TDeviceConnector;
using testkit::TMemoryPort;

constexpr qsizetype kReadSize = 4'096;
constexpr int kDisplayLines = 6; // of a command

/// Address of a board: three characters and the side. Without the letters of "BT", "ET", "GO" and "PING",
/// which the connector finds anywhere in a line, the address included.
QByteArray addressOf(int number)
{
    constexpr char kCharacters[] = "0123456789CDFJKLMQ";
    constexpr int kCount = sizeof kCharacters - 1;
    QByteArray address(4, '0');
    int rest = number / 2;
    for (int i = 2; i >= 0; --i, rest /= kCount) {
        address[i] = kCharacters[rest % kCount];
    }
    address[3] = number % 2 == 0 ? 'A' : 'B';
    return address;
}

QByteArray checked(const QByteArray& line)
{
    return line + common::HexByte(common::Crc8(line)).toLatin1();
}

/// One line of each board, in turn, cut into reads as a busy port delivers them.
QList<QByteArray> reads(int boards, const QByteArray& body)
{
    QByteArray stream;
    for (int i = 0; i < boards; ++i) {
        stream += checked('$' + addressOf(i) + body) + '\r';
    }
    QList<QByteArray> list;
    for (qsizetype at = 0; at < stream.size(); at += kReadSize) {
        list.append(stream.mid(at, kReadSize));
    }
    return list;
}

struct TBus
{
    explicit TBus(int boards)
    {
        port.KeepWrites = false;
        port.OnWritten = [this](const QByteArray&) { ++written; };
        port.Open();
        device.SetConnectorType(connector::podComPort);
        device.SetComport(&port);
        device.SetOnGetData([this](auto*, const QString& line) { routed += line.isEmpty() ? 0 : 1; });
        for (int i = 0; i < boards; ++i) {
            port.feed(checked('#' + addressOf(i) + "HWGX=n020x4/GR=NNN/") + '\r');
        }
        written = 0;
        routed = 0;
    }

    TMemoryPort port;
    TDeviceConnector device;
    qint64 written = 0;
    qint64 routed = 0;
};

void receive(benchmark::State& state, const QByteArray& body, bool answered)
{
    const int boards = static_cast<int>(state.range(0));
    TBus bus(boards);
    const QList<QByteArray> stream = reads(boards, body);
    qint64 rounds = 0;
    for (auto _ : state) {
        for (const QByteArray& read : stream) {
            bus.port.feed(read);
        }
        ++rounds;
    }
    if (bus.routed != rounds * boards || bus.written != (answered ? rounds * boards : 0)) {
        state.SkipWithError("lines were lost");
    }
    state.SetItemsProcessed(rounds * boards);
}

/// Each ping is answered with an echo and routed.
void PingsReceived(benchmark::State& state)
{
    receive(state, "PING", true);
}

/// Each card line is routed.
void CardsReceived(benchmark::State& state)
{
    receive(state, "RQ12345678", false);
}

void RelayCommandsSent(benchmark::State& state)
{
    const int boards = static_cast<int>(state.range(0));
    TBus bus(boards);
    QStringList commands;
    for (int i = 0; i < boards; ++i) {
        commands << QStringLiteral("RL0.0.0.0:") + QString::fromLatin1(addressOf(i)) + u'1';
    }
    qsizetype next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(bus.device.SendCommand(commands[next]));
        next = next + 1 < commands.size() ? next + 1 : 0;
    }
    if (bus.written != state.iterations()) {
        state.SkipWithError("commands were lost");
    }
    state.SetItemsProcessed(state.iterations());
}

/// Clear screen, four rows and a flag.
void DisplayCommandsSent(benchmark::State& state)
{
    const int boards = static_cast<int>(state.range(0));
    TBus bus(boards);
    QStringList commands;
    for (int i = 0; i < boards; ++i) {
        commands << QStringLiteral("SH0.0.0.0:") + QString::fromLatin1(addressOf(i)) +
                        QStringLiteral("|Welcome|John Smith|12 visits left|until 31.12.|L|");
    }
    qsizetype next = 0;
    for (auto _ : state) {
        bus.device.SendCommand(commands[next]);
        next = next + 1 < commands.size() ? next + 1 : 0;
    }
    if (bus.written != state.iterations() * kDisplayLines) {
        state.SkipWithError("lines were lost");
    }
    state.SetItemsProcessed(bus.written);
}

void Crc8Bytes(benchmark::State& state)
{
    const QByteArray bytes(state.range(0), 'x');
    for (auto _ : state) {
        benchmark::DoNotOptimize(common::Crc8(bytes));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

// by the wall clock, as the programs beside it are timed
BENCHMARK(PingsReceived)->UseRealTime()->ArgName("boards")->Arg(10)->Arg(1'000)->Arg(10'000);
BENCHMARK(CardsReceived)->UseRealTime()->ArgName("boards")->Arg(10)->Arg(1'000)->Arg(10'000);
BENCHMARK(RelayCommandsSent)->UseRealTime()->ArgName("boards")->Arg(10)->Arg(1'000)->Arg(10'000);
BENCHMARK(DisplayCommandsSent)->UseRealTime()->ArgName("boards")->Arg(10)->Arg(1'000)->Arg(10'000);
BENCHMARK(Crc8Bytes)->ArgName("bytes")->Arg(16)->Arg(256)->Arg(4'096);

} // namespace

} // namespace tnv5::bench

BENCHMARK_MAIN();
