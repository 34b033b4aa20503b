// What eight scales cost on which the weight does not change: share of a processor, wake-ups and packets.
//
//   idle_scales [--interval MS] [--seconds S] [--rounds N]
//
// One scale of each family, played by another process on a pseudo-terminal, each with a component of its own
// on a real port and all handlers assigned. Three states take turns, so many seconds each, so many rounds:
//
//   silent    ports open, nobody says anything: what the open ports themselves cost
//   unpolled  the two families that talk by themselves do, ten packets a second each
//   polled    all eight components poll at the interval as well, spread over it
//
// All figures are those of the process with the components, time in the kernel included. Prints one line of
// JSON; fails when a request was not answered, an error was reported, or a weight is wrong in the end.

#include "bench/program.h"
#include "bench/scales_process.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/scales/scales_device.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <sys/resource.h>

namespace tnv5::bench {

namespace {

using platform::TComponent;
using scales::TScalesDevice;

constexpr int kWeight = 1'250;
constexpr int kSettleMs = 300;
constexpr int kAnswerMs = 5'000; // for the answers to the last requests
constexpr int kPollMs = 10;

struct TOptions
{
    int intervalMs = 500;
    int seconds = 10;
    int rounds = 3;
};

enum TState { Silent, Unpolled, Polled, kStates };
constexpr std::array<const char*, kStates> kStateNames = {"silent", "unpolled", "polled"};

/// What was used and done up to a moment, or between two.
struct TUsage
{
    double wallSeconds = 0;
    double processorSeconds = 0;
    qint64 wakeUps = 0;
    qint64 packets = 0;

    TUsage& addDifference(const TUsage& before, const TUsage& after)
    {
        wallSeconds += after.wallSeconds - before.wallSeconds;
        processorSeconds += after.processorSeconds - before.processorSeconds;
        wakeUps += after.wakeUps - before.wakeUps;
        packets += after.packets - before.packets;
        return *this;
    }
};

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

void runFor(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

/// A component on a port, and what it has heard and said.
class TScale
{
public:
    TScale(int family, const std::string& path)
    {
        FPort.SetPort(QString::fromStdString(path));
        FDevice.SetIDLang(2);
        FDevice.SetOnLog([this](TComponent*, const QString& line) { note(line); });
        FDevice.SetOnError([this](TComponent*, const QString& message) {
            ++FErrors;
            qWarning("%s", qUtf8Printable(message));
        });
        FDevice.SetOnWeight([this](TComponent*, int) { ++FWeights; });
        FDevice.SetComport(&FPort);
        FDevice.SetScalesType(family);
        FDevice.SetUpComport();
        FDevice.SetConnection(true);
    }

    void poll(int intervalMs) { FDevice.SetSendInterval(intervalMs); }
    void stopPolling() { FDevice.SetSendInterval(-1); }

    qint64 packets() const { return FPackets; }
    qint64 errors() const { return FErrors; }
    /// Each request has one packet for an answer; a scale that talks by itself has no requests.
    qint64 unanswered() const { return FRequests > 0 ? FRequests - FPackets : 0; }
    bool knowsWeight() const { return FDevice.LastWeight() == kWeight; }

private:
    void note(const QString& line)
    {
        FPackets += line.startsWith(u"[03]") ? 1 : 0;
        FRequests += line.startsWith(u"[05]") ? 1 : 0;
    }

    platform::TSerialPort FPort;
    TScalesDevice FDevice;
    qint64 FPackets = 0;
    qint64 FRequests = 0;
    qint64 FWeights = 0;
    qint64 FErrors = 0;
};

class TMeasurement
{
public:
    TMeasurement(TScalesProcess& process, const TOptions& options) : FProcess(process), FOptions(options)
    {
        for (int family = 1; family <= kFamilies; ++family) {
            FScales.push_back(
                std::make_unique<TScale>(family, process.ports()[static_cast<std::size_t>(family - 1)]));
        }
        FClock.start();
    }

    /// @return false when something went wrong on a line
    bool run()
    {
        for (int round = 0; round < FOptions.rounds; ++round) {
            for (int state = Silent; state < kStates; ++state) {
                measure(static_cast<TState>(state));
            }
        }
        print();
        return total(&TScale::unanswered) == 0 && total(&TScale::errors) == 0 && FWeightsKnown;
    }

private:
    template <class Count>
    qint64 total(Count (TScale::*count)() const) const
    {
        qint64 sum = 0;
        for (const auto& scale : FScales) {
            sum += (scale.get()->*count)();
        }
        return sum;
    }

    TUsage usage() const
    {
        rusage used{};
        getrusage(RUSAGE_SELF, &used);
        return {static_cast<double>(FClock.nsecsElapsed()) / 1e9,
                secondsOf(used.ru_utime) + secondsOf(used.ru_stime), used.ru_nvcsw, total(&TScale::packets)};
    }

    void measure(TState state)
    {
        FProcess.setSpeaking(state != Silent);
        if (state == Polled) {
            startPolling();
        }
        runFor(kSettleMs);
        const TUsage before = usage();
        runFor(FOptions.seconds * 1'000);
        FUsed[state].addDifference(before, usage());
        if (state == Polled) {
            stopPolling();
        }
    }

    // Spread over the interval, as on ports that were opened one after the other: no wake-up serves two.
    void startPolling()
    {
        for (const auto& scale : FScales) {
            scale->poll(FOptions.intervalMs);
            runFor(FOptions.intervalMs / kFamilies);
        }
    }

    void stopPolling()
    {
        for (const auto& scale : FScales) {
            scale->stopPolling();
        }
        QElapsedTimer waiting;
        waiting.start();
        while (!settled() && !waiting.hasExpired(kAnswerMs)) {
            runFor(kPollMs);
        }
        FWeightsKnown = FWeightsKnown && weightsKnown();
    }

    bool settled() const { return weightsKnown() && total(&TScale::unanswered) == 0; }

    bool weightsKnown() const
    {
        return std::all_of(FScales.begin(), FScales.end(),
                           [](const auto& scale) { return scale->knowsWeight(); });
    }

    void print() const
    {
        std::printf("{\"scales\": %d, \"interval_ms\": %d, \"seconds\": %d, \"unanswered\": %lld, "
                    "\"errors\": %lld, \"weights_right\": %s",
                    kFamilies, FOptions.intervalMs, FOptions.seconds * FOptions.rounds,
                    static_cast<long long>(total(&TScale::unanswered)),
                    static_cast<long long>(total(&TScale::errors)), FWeightsKnown ? "true" : "false");
        for (int state = Silent; state < kStates; ++state) {
            const TUsage& used = FUsed[state];
            std::printf(", \"%s\": {\"cpu_percent\": %.4f, \"wakeups_per_s\": %.2f, \"packets_per_s\": %.2f}",
                        kStateNames[state], 100.0 * used.processorSeconds / used.wallSeconds,
                        static_cast<double>(used.wakeUps) / used.wallSeconds,
                        static_cast<double>(used.packets) / used.wallSeconds);
        }
        std::printf("}\n");
    }

    TScalesProcess& FProcess;
    TOptions FOptions;
    std::vector<std::unique_ptr<TScale>> FScales;
    QElapsedTimer FClock;
    std::array<TUsage, kStates> FUsed;
    bool FWeightsKnown = true;
};

TOptions parse(const QCoreApplication& application)
{
    TOptions options;
    QCommandLineParser parser;
    const auto add = [&parser](const char* name, const char* meaning, int preset) {
        parser.addOption({QString::fromLatin1(name), QString::fromLatin1(meaning), QStringLiteral("number"),
                          QString::number(preset)});
    };
    add("interval", "polling period in milliseconds", options.intervalMs);
    add("seconds", "length of each measurement", options.seconds);
    add("rounds", "measurements of each state", options.rounds);
    parser.addHelpOption();
    parser.process(application);
    const auto number = [&parser](const char* name) {
        const int value = parser.value(QString::fromLatin1(name)).toInt();
        if (value <= 0) {
            throw std::invalid_argument(std::string("--") + name + " needs a number of 1 or more");
        }
        return value;
    };
    return {number("interval"), number("seconds"), number("rounds")};
}

int run(int argc, char** argv)
{
    TScalesProcess process(kWeight);
    qputenv("QT_NO_GLIB", "1"); // Qt's own event loop: the shorter way from the port to the program
    const QCoreApplication application(argc, argv);
    TMeasurement measurement(process, parse(application));
    return measurement.run() ? 0 : 1;
}

} // namespace

} // namespace tnv5::bench

int main(int argc, char** argv)
{
    return tnv5::bench::runProgram("idle_scales", [&] { return tnv5::bench::run(argc, argv); });
}
