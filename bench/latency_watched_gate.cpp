// A gate on the turnstile component with everything around it that a big club has, for `latency`.
//
//   latency_watched_gate LINES WATCHERS DEAF PORT CARDS
//
// In the same process so many other lines run at the full rate of 9600 baud, each with a component and all
// its handlers. The gate is a server with WATCHERS clients in another process, DEAF of which do not read, and
// each of its passes goes into the journal of a database.

#include "bench/audience.h"
#include "bench/gate_program.h"
#include "bench/line_feeder.h"
#include "tnv5/host/books/journal.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QSocketNotifier>
#include <QTemporaryDir>
#include <csignal>
#include <memory>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace tnv5::bench {

namespace {

using platform::TComponent;
using turnstile::TTurnStylerDevice;

constexpr int kGates = 8; // 00A to 07A
constexpr int kFeedSeconds = 600;

struct TLoad
{
    int lines;
    int watchers;
    int deaf;
};

QStringList gates(int count)
{
    QStringList names;
    for (int number = 0; number < count; ++number) {
        names.append(QStringLiteral("%1A").arg(number, 2, 10, QLatin1Char('0')));
    }
    return names;
}

/// Another line, whose cards are all refused.
class TOtherLine
{
public:
    explicit TOtherLine(const std::string& path)
    {
        FPort.SetPort(QString::fromStdString(path));
        FGate.SetOnLog([this](TComponent*, const QString& text) { FHeard += text.size(); });
        FGate.SetOnError([this](TComponent*, const QString& text) { FHeard += text.size(); });
        FGate.SetOnGetImg([](TComponent*, const QString&, QImage&) {});
        FGate.SetOnCheckStatus([this](auto&&...) { ++FHeard; });
        FGate.SetOnCheckSQL([](TComponent*, const QVariant&, const QVariant&, const QVariant&, QImage&,
                               const QVariant&, QVariant& result) { result = 0; });
        FGate.SetDeviceList(gates(100));
        FGate.SetComport(&FPort);
        FPort.Open();
    }

private:
    platform::TSerialPort FPort;
    TTurnStylerDevice FGate;
    qint64 FHeard = 0;
};

/// The gate itself; its passes are journalled and its messages watched.
class TGate
{
public:
    TGate(platform::TSerialPort& port, const QSet<QString>& cards)
    {
        port.OnException = [](TComponent*, auto&&...) { QCoreApplication::quit(); };
        FGate.SetDeviceList(gates(kGates));
        FGate.SetTimerInterval(1); // as in latency_gate
        FGate.SetOnCheckSQL([this, &cards](TComponent*, const QVariant& device, const QVariant& card,
                                           const QVariant&, QImage&, const QVariant& mode, QVariant& result) {
            const bool asked = mode.toInt() == turnstile::cmOpen;
            result = asked ? int(cards.contains(card.toString())) : 1;
            if (asked) {
                journal(device.toString(), card.toString());
            }
        });
        // clients that do not read are dropped in the course of it, "[07] "
        FGate.SetOnError([](TComponent*, const QString&) {});
        FGate.SetRemoutDevice(controller::podServer);
        FGate.SetComport(&port);
    }

    TTurnStylerDevice& device() { return FGate; }

private:
    void journal(const QString& device, const QString& card)
    {
        const auto pass = std::make_shared<host::TPass>();
        pass->gate = device;
        pass->card = card;
        FJournal.add(pass);
    }

    QTemporaryDir FFolder;
    host::TDatabase FDatabase{FFolder.filePath(QStringLiteral("club.sqlite"))};
    host::TJournal FJournal{FDatabase};
    TTurnStylerDevice FGate;
};

/// The watchers, in a process of their own that ends with this one.
void startWatchers(int port, const TLoad& load)
{
    int ready[2];
    if (load.watchers == 0 || pipe(ready) != 0) {
        return;
    }
    if (fork() == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        try {
            TAudience audience(TAudience::TSpeech::Plain, port, load.watchers);
            audience.deafen(load.deaf);
            close(ready[1]);
            audience.hear(std::numeric_limits<std::int64_t>::max());
        } catch (const std::exception&) {
            _exit(1); // the gate has ended, or tells that it lost them
        }
        _exit(0);
    }
    close(ready[1]);
    char end = 0;
    while (read(ready[0], &end, 1) > 0) {
    }
    close(ready[0]);
}

/// The harness ends this program with SIGTERM; the database's folder goes all the same.
int descriptorOfTheEnd()
{
    sigset_t end;
    sigemptyset(&end);
    sigaddset(&end, SIGTERM);
    sigprocmask(SIG_BLOCK, &end, nullptr);
    return signalfd(-1, &end, SFD_CLOEXEC);
}

int run(int argc, char** argv)
{
    if (argc != 6) {
        std::fprintf(stderr, "usage: %s LINES WATCHERS DEAF PORT CARDS\n", argv[0]);
        return 2;
    }
    raiseDescriptorLimit();
    const TLoad load = {std::atoi(argv[1]), std::atoi(argv[2]), std::atoi(argv[3])};
    const std::vector<TPseudoTerminal> terminals(static_cast<std::size_t>(load.lines));
    TLineFeeder feeder(terminals, kFeedSeconds);
    const int end = descriptorOfTheEnd(); // which the feeder has not
    qputenv("QT_NO_GLIB", "1");
    const QCoreApplication application(argc, argv);
    const QSocketNotifier ended(end, QSocketNotifier::Read);
    QObject::connect(&ended, &QSocketNotifier::activated, &QCoreApplication::quit);
    const QSet<QString> cards = loadCards(QString::fromLocal8Bit(argv[5]));
    platform::TSerialPort port;
    port.SetPort(QString::fromLocal8Bit(argv[4]));
    TGate gate(port, cards);
    std::vector<std::unique_ptr<TOtherLine>> others;
    for (const TPseudoTerminal& terminal : terminals) {
        others.push_back(std::make_unique<TOtherLine>(terminal.portPath()));
    }
    port.Open();
    gate.device().Connected();
    startWatchers(gate.device().ListeningPort(), load);
    while (gate.device().Watchers() < load.watchers) {
        QCoreApplication::processEvents();
        usleep(1'000);
    }
    feeder.start();
    std::puts("ready");
    std::fflush(stdout);
    QCoreApplication::exec();
    if (gate.device().Watchers() < load.watchers - load.deaf) {
        std::fprintf(stderr, "%s: watchers that read were dropped\n", argv[0]);
        return 1;
    }
    return 0;
}

} // namespace

} // namespace tnv5::bench

int main(int argc, char** argv)
{
    return tnv5::bench::runProgram("latency_watched_gate", [&] { return tnv5::bench::run(argc, argv); });
}
