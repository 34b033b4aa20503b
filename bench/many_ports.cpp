// Many controller lines at full rate in one process: its share of a processor, and lines lost.
//
//   many_ports [PORTS] [SECONDS]
//
// Each port is a pseudo-terminal on which another process writes card lines with rising numbers at the full
// rate of 9600 baud. Each has a component of its own with every handler assigned; all cards are refused.
// A line counts as lost when its number does not come, or not in its place. Prints one line of JSON and
// fails when a line was lost.

#include "bench/line_feeder.h"
#include "bench/program.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sys/resource.h>

namespace tnv5::bench {

namespace {

using platform::TComponent;
using turnstile::TTurnStylerDevice;

constexpr int kPollMs = 20;
constexpr int kGraceMs = 5'000; // for lines still under way when all is written

double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// A component on a port, and what it has heard.
class TLine
{
public:
    explicit TLine(const std::string& path)
    {
        FPort.SetPort(QString::fromStdString(path));
        FGate.SetOnLog([this](TComponent*, const QString& text) { FLogged += text.size(); });
        FGate.SetOnError([](TComponent*, const QString& text) { qWarning("%s", qUtf8Printable(text)); });
        FGate.SetOnGetImg([](TComponent*, const QString&, QImage&) {});
        FGate.SetOnCheckStatus([this](TComponent*, const QVariant& name, const QVariant&,
                                      const QVariant& card, const QVariant&,
                                      const QVariant&) { heard(name, card); });
        FGate.SetOnCheckSQL([this](TComponent*, const QVariant&, const QVariant&, const QVariant&, QImage&,
                                   const QVariant&, QVariant& result) {
            ++FDecided;
            result = 0;
        });
        QStringList addresses;
        for (int i = 0; i < 100; ++i) {
            addresses.append(QStringLiteral("%1A").arg(i, 2, 10, QLatin1Char('0')));
        }
        FGate.SetDeviceList(addresses);
        FGate.SetComport(&FPort);
        FPort.Open();
    }
    TLine(const TLine&) = delete;
    TLine& operator=(const TLine&) = delete;

    int heardInOrder() const { return FHeard; }
    qint64 decided() const { return FDecided; }

private:
    void heard(const QVariant& name, const QVariant& card)
    {
        if (name.toString() == QLatin1String("COME") && card.toString().toInt() == kFirstSerial + FHeard) {
            ++FHeard;
        }
    }

    platform::TSerialPort FPort;
    TTurnStylerDevice FGate;
    int FHeard = 0;
    qint64 FDecided = 0;
    qint64 FLogged = 0;
};

class TMeasurement
{
public:
    TMeasurement(const std::vector<TPseudoTerminal>& terminals, TLineFeeder& feeder, int seconds)
        : FFeeder(feeder), FExpected(linesIn(seconds))
    {
        for (const TPseudoTerminal& terminal : terminals) {
            FLines.push_back(std::make_unique<TLine>(terminal.portPath()));
        }
    }

    /// @return false when lines were lost
    bool run()
    {
        const double before = processorSeconds();
        FClock.start();
        FFeeder.start();
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, [this] { look(); });
        poll.start(kPollMs);
        QCoreApplication::exec();
        const double wall = static_cast<double>(FFedMs) / 1000.0;
        const double used = FProcessorSeconds - before;
        const qint64 sent = qint64{FExpected} * static_cast<qint64>(FLines.size());
        const qint64 lost = sent - total(&TLine::heardInOrder);
        std::printf(
            "{\"ports\": %zu, \"seconds\": %.2f, \"lines\": %lld, \"lost\": %lld, \"late_bytes\": %llu, "
            "\"decided\": %lld, \"cpu_percent\": %.1f}\n",
            FLines.size(), wall, static_cast<long long>(sent), static_cast<long long>(lost),
            static_cast<unsigned long long>(FLate), static_cast<long long>(total(&TLine::decided)),
            100.0 * used / wall);
        return lost == 0;
    }

private:
    template <class Count>
    qint64 total(Count (TLine::*count)() const) const
    {
        qint64 sum = 0;
        for (const auto& line : FLines) {
            sum += (line.get()->*count)();
        }
        return sum;
    }

    void look()
    {
        if (FFedMs < 0) {
            if (const auto late = FFeeder.lateBytes()) {
                FLate = *late;
                FFedMs = FClock.elapsed();
                FProcessorSeconds = processorSeconds();
            }
            return;
        }
        const bool complete =
            total(&TLine::heardInOrder) == qint64{FExpected} * static_cast<qint64>(FLines.size());
        if (complete || FClock.elapsed() > FFedMs + kGraceMs) {
            QCoreApplication::quit();
        }
    }

    TLineFeeder& FFeeder;
    int FExpected;
    std::vector<std::unique_ptr<TLine>> FLines;
    QElapsedTimer FClock;
    qint64 FFedMs = -1;
    double FProcessorSeconds = 0;
    std::uint64_t FLate = 0;
};

int run(int argc, char** argv)
{
    const int ports = argc > 1 ? std::atoi(argv[1]) : 200;
    const int seconds = argc > 2 ? std::atoi(argv[2]) : 10;
    if (ports <= 0 || seconds <= 0) {
        std::fprintf(stderr, "usage: %s [PORTS] [SECONDS]\n", argv[0]);
        return 2;
    }
    const std::vector<TPseudoTerminal> terminals(static_cast<std::size_t>(ports));
    TLineFeeder feeder(terminals, seconds);
    qputenv("QT_NO_GLIB", "1"); // Qt's own event loop: the shorter way from the port to the program
    const QCoreApplication application(argc, argv);
    TMeasurement measurement(terminals, feeder, seconds);
    return measurement.run() ? 0 : 1;
}

} // namespace

} // namespace tnv5::bench

int main(int argc, char** argv)
{
    return tnv5::bench::runProgram("many_ports", [&] { return tnv5::bench::run(argc, argv); });
}
