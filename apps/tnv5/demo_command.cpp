#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/demo_bar.h"
#include "apps/tnv5/demo_counter.h"
#include "apps/tnv5/demo_desk.h"
#include "apps/tnv5/demo_kiosk.h"
#include "apps/tnv5/demo_lamps.h"
#include "apps/tnv5/demo_report.h"
#include "apps/tnv5/paced_time.h"
#include "apps/tnv5/stop_signal.h"
#include "sim/line_faults.h"
#include "sim/pty.h"
#include "tnv5/common/messages.h"
#include "tnv5/host/club_host.h"
#include "tnv5/host/d24_host.h"
#include "tnv5/host/local/local_path.h"
#include "tnv5/host/port_keeper.h"
#include "tnv5/platform/serial_port.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <optional>

namespace tnv5::cli {

namespace {

constexpr int kLongSeconds = 60; // somebody looks on, with a desk
constexpr int kLeisure = 8;      // then
constexpr int kLeisurelyPassageMs = 1'500;

struct TDemoOptions
{
    std::optional<int> seconds; ///< how long visitors come
    std::string database;
    bool plain = false;
    std::optional<int> serve;
    std::optional<std::string> desk; ///< the local socket; empty: the usual one
};

/// The demo: simulated gates and visitors on one end of a pseudo-terminal, the club's host on the other. All
/// of it in a time of its own, so that what comes of it does not depend on how fast the machine is.
class TDemo
{
public:
    TDemo(host::TDatabase& club, const TDemoOptions& options, TPacedTime& time);

    /// @return exit code
    int run();

private:
    void prepareGates();
    void prepareHost();
    void prepareBoards();
    bool ready(const QString& gate);
    void serve();
    void openDesk();
    void look();
    void spoilCable(bool spoiled);
    void unplugWhenQuiet();
    void plugAgain();
    int conclude();
    qint64 elapsedMs() const { return platform::TClock::current().nowMs() - FBeganMs; }
    double fraction() const;
    /// Somebody looks on at a desk: everybody takes more time.
    bool leisurely() const { return FOptions.desk && FSeconds >= kLongSeconds; }

    const TDemoOptions FOptions;
    const int FSeconds;
    host::TDatabase& FClub;
    qint64 FFirstPass; // what the journal held before

    sim::TPty FPty;
    sim::TLineFaults FCable;
    sim::TClassicLine FGates;
    sim::TPty FBusPty;
    sim::TBoardBus FBus;

    platform::TSerialPort FPort;
    turnstile::TTurnStylerDevice FLine;
    host::TClubHost FHost;
    host::TPortKeeper FKeeper;
    platform::TSerialPort FBusPort;
    connector::TDeviceConnector FConnector;
    d24::TTurnStylerDeviceD24 FBoards;
    host::TD24Host FBoardHost;

    TDemoGates FAllGates;
    TDemoStreet FStreet;
    TDemoCounter FFruit;
    TDemoBar FBar;
    TDemoKiosk FKiosk;
    TDemoLamps FLamps;
    std::unique_ptr<TDemoDesk> FDesk; // only when it is asked for
    TStopSignal FStop;
    platform::TTimer FTimer;
    qint64 FBeganMs = 0;
    qint64 FUnpluggedAtMs = -1;
    enum class TPhase {
        Calm,
        BadCable,
        CalmAgain,
        Unplugging,
        Unplugged,
        Reopening,
        Last,
        Closing
    } FPhase = {};
    bool FOverdue = false;
};

constexpr int kLookMs = 50;
constexpr int kMinuteMs = 1'000;      // of the lamps
constexpr int kDeskMinuteMs = 10'000; // the same while somebody looks at the time that is left
constexpr int kAwayMs = 700;          // that long is the cable out
constexpr int kDisplayWidth = 20;
constexpr int kPingMs = 500;            // the first ping tells the host that a board is there
constexpr int kClosingLimitMs = 20'000; // for the visitors who are still under way, and short minutes
constexpr int kDeskClosingLimitMs = 90'000;
constexpr int kUsualSeconds = 20;
constexpr int kDeskSeconds = 600;

// Parts of the time at which things happen.
constexpr double kCableGoesBad = 0.3;
constexpr double kCableIsGood = 0.55;
constexpr double kCableComesOut = 0.6;

const QString kLink = QStringLiteral("0.0.0.0"); // what the connector calls its serial port

void announce(const QString& text)
{
    print(QStringLiteral("--- ") + text);
}

TDemo::TDemo(host::TDatabase& club, const TDemoOptions& options, TPacedTime& time)
    : FOptions(options),
      FSeconds(options.seconds.value_or(options.desk ? kDeskSeconds : kUsualSeconds)),
      FClub(club),
      FFirstPass(FClub.lastPass()),
      FPty(QStringLiteral("gates")),
      FCable(FPty),
      FGates(FCable),
      FBusPty(QStringLiteral("boards")),
      FBus(FBusPty),
      FHost(FLine, FClub),
      FKeeper(FPort),
      FBoardHost(FBoards, FHost.desk()),
      FAllGates(FGates, FBus),
      FStreet(FAllGates, [this](const QString& gate) { return ready(gate); }),
      FFruit(club, time.lines),
      FBar(club, time.lines),
      FLamps(club, time.lines, leisurely() ? kDeskMinuteMs : kMinuteMs),
      FStop([] { QCoreApplication::quit(); })
{
    time.lines.add(FPty);
    time.lines.add(FPort);
    time.lines.add(FBusPty);
    time.lines.add(FBusPort);
    if (leisurely()) {
        FStreet.Leisure = FFruit.Leisure = FBar.Leisure = kLeisure;
    }
    prepareGates();
    prepareHost();
    prepareBoards();
    FTimer.SetInterval(kLookMs);
    FTimer.OnTimer = [this](platform::TTimer*) { look(); };
}

void TDemo::prepareGates()
{
    for (const QString& gate : demoGates()) {
        FGates.addController(gate);
    }
    FGates.setFaults(kSilentGate, {.Silent = true});
    FGates.Delays.ProgressMs = 250;
    FGates.Delays.PassageMs = leisurely() ? kLeisurelyPassageMs : 200;
    FGates.Delays.GiveUpMs = 600;
}

void TDemo::prepareHost()
{
    FPort.SetPort(FPty.path());
    FLine.SetComport(&FPort);
    FLine.SetTimeDelayOpen(0); // a gate that nobody uses closes after one second
    FHost.OnPass = [this](const host::TPass& pass) {
        print(host::logLine(pass));
        if (FDesk) {
            FDesk->onPass(pass);
        }
    };
    FHost.OnTrouble = [](const QString& text) { announce(text); };
    FKeeper.OnOpened = [this] {
        announce(FKeeper.openings() == 1 ? QStringLiteral("%1 is open").arg(FPort.Port())
                                         : QStringLiteral("the port is back and open again"));
    };
    FKeeper.OnLost = [](const QString& why) { announce(QStringLiteral("the port went away: ") + why); };
}

void TDemo::prepareBoards()
{
    for (const QString& board : demoBoards()) {
        FBus.addBoard(board, kDisplayWidth);
    }
    FBus.Delays.ProgressMs = FGates.Delays.ProgressMs;
    FBus.Delays.PassageMs = FGates.Delays.PassageMs;
    FBus.Delays.GiveUpMs = FGates.Delays.GiveUpMs;
    FBusPort.SetPort(FBusPty.path());
    FConnector.SetConnectorType(connector::podComPort);
    FConnector.SetComport(&FBusPort);
    FConnector.SetOnError([](platform::TComponent*, const QString& text) { announce(text); });
    FBoards.SetConnector(&FConnector);
    FStreet.OnVisit = [](const TVisit& visit) {
        if (!visit.display.isEmpty()) {
            print(QStringLiteral("              %1  display: %2 / %3")
                      .arg(visit.step.gate, visit.display.value(0), visit.display.value(1)));
        }
    };
}

/// Others may watch: a port each for the gates, the boards and the lamps.
void TDemo::serve()
{
    int port = *FOptions.serve;
    const auto open = [&port](controller::TControllerDevice& device, const char* family) {
        device.SetPort(port);
        device.SetRemoutDevice(controller::podServer);
        if (!device.Connected()) { // why not has been told
            throw platform::Exception(QStringLiteral("Port %1 cannot be opened").arg(port));
        }
        announce(QStringLiteral("in another terminal:  tnv5 monitor 127.0.0.1 %1 --family %2")
                     .arg(device.ListeningPort())
                     .arg(QLatin1String(family)));
        port += port == 0 ? 0 : 1;
    };
    open(FLine, "turnstile");
    open(FBoards, "d24");
    open(FLamps.device(), "switch");
}

/// A desk may watch and open gates.
void TDemo::openDesk()
{
    const QString file = QString::fromStdString(*FOptions.desk);
    const TDemoDesk::TClub club = {FClub,      FHost.desk(), FLine,  FPort, FBoards,
                                   FConnector, FBusPort,     FFruit, FBar,  FLamps};
    FDesk = std::make_unique<TDemoDesk>(club, file.isEmpty() ? host::usualSocket(QStringLiteral("Demo club"))
                                                             : file);
    announce(QStringLiteral("in another terminal:  tnv5-desk --socket \"%1\"").arg(FDesk->socket()));
}

/// The host has nobody under way at a gate, and knows the display of a networked one.
bool TDemo::ready(const QString& gate)
{
    if (!TDemoGates::isBoard(gate)) {
        return FLine.p_hw_FindDevice(gate) < 0;
    }
    const bool known = FConnector.GetDeviceFromList(kLink, gate)->DisplayLine > 0;
    return known && FBoards.p_hw_FindDevice(kLink, gate) < 0;
}

int TDemo::run()
{
    announce(
        QStringLiteral("simulated gates, lamps, a scale and a bank terminal on pseudo-terminals, real serial "
                       "ports, a real database"));
    if (!FKeeper.start()) {
        throw platform::Exception(QStringLiteral("The simulated line cannot be opened"));
    }
    if (!FConnector.GetConnected()) {
        throw platform::Exception(QStringLiteral("The simulated bus cannot be opened"));
    }
    if (FOptions.desk) {
        openDesk();
    }
    FKiosk.sell();
    FFruit.open();
    FBar.open();
    FLamps.open();
    if (FOptions.serve) {
        serve();
    }
    FBus.setPingInterval(kPingMs);
    for (const TVisitor& visitor : demoVisitors()) {
        FStreet.invite(visitor);
    }
    FBeganMs = platform::TClock::current().nowMs();
    FTimer.SetEnabled(true);
    QCoreApplication::exec();
    FTimer.SetEnabled(false);
    showProgress({});
    FKeeper.stop();
    FDesk.reset();
    FBoardHost.close();
    FHost.close();
    return FStop.received() ? kInterrupted : conclude();
}

double TDemo::fraction() const
{
    return static_cast<double>(elapsedMs()) / (FSeconds * 1000.0);
}

void TDemo::look()
{
    if (onTerminal() && !FOptions.plain) {
        showProgress(QStringLiteral("%1 %2 of %3 s, %4 visits")
                         .arg(progressBar(fraction()))
                         .arg(std::min<qint64>(elapsedMs() / 1000, FSeconds))
                         .arg(FSeconds)
                         .arg(FStreet.visits().size()));
    }
    switch (FPhase) {
    case TPhase::Calm:
        if (fraction() > kCableGoesBad) {
            spoilCable(true);
            FPhase = TPhase::BadCable;
        }
        break;
    case TPhase::BadCable:
        if (fraction() > kCableIsGood) {
            spoilCable(false);
            FPhase = TPhase::CalmAgain;
        }
        break;
    case TPhase::CalmAgain:
        if (fraction() > kCableComesOut) {
            FStreet.pause();
            FPhase = TPhase::Unplugging;
        }
        break;
    case TPhase::Unplugging:
        unplugWhenQuiet();
        break;
    case TPhase::Unplugged:
    case TPhase::Reopening:
        plugAgain();
        break;
    case TPhase::Last:
        if (fraction() > 1) {
            announce(QStringLiteral("closing time: those who are on their way finish"));
            FStreet.close();
            FFruit.close();
            FBar.close();
            FLamps.close();
            FPhase = TPhase::Closing;
        }
        break;
    case TPhase::Closing:
        FOverdue = elapsedMs() > FSeconds * 1000LL + (FOptions.desk ? kDeskClosingLimitMs : kClosingLimitMs);
        if ((FStreet.empty() && FFruit.quiet() && FBar.quiet() && FLamps.quiet()) || FOverdue) {
            QCoreApplication::quit();
        }
        break;
    }
}

void TDemo::spoilCable(bool spoiled)
{
    announce(spoiled ? QStringLiteral("a bad cable: noise on the line, and lines cut into pieces")
                     : QStringLiteral("the cable is good again: %1 lines had noise, %2 were cut")
                           .arg(FCable.noisyLines())
                           .arg(FCable.cutLines()));
    FCable.NoisePercent = spoiled ? 40 : 0;
    FCable.CutPercent = spoiled ? 40 : 0;
    FStreet.Measuring = !spoiled;
}

void TDemo::unplugWhenQuiet()
{
    if (FStreet.quiet()) {
        announce(QStringLiteral("the adapter is pulled out"));
        FPty.unplug();
        FUnpluggedAtMs = elapsedMs();
        FPhase = TPhase::Unplugged;
    }
}

void TDemo::plugAgain()
{
    if (FPhase == TPhase::Unplugged && elapsedMs() - FUnpluggedAtMs > kAwayMs) {
        announce(QStringLiteral("the adapter is plugged in again"));
        FPty.plug();
        FPhase = TPhase::Reopening;
    } else if (FPhase == TPhase::Reopening && FKeeper.openings() > 1 && FPty.opened()) {
        FStreet.resume();
        FPhase = TPhase::Last;
    }
}

int TDemo::conclude()
{
    const QList<TVisit>& visits = FStreet.visits();
    for (const QString& line : closingTable(visits) + FFruit.closingRows() + FBar.closingRows() +
                                   FKiosk.closingRows() + FLamps.closingRows() + QStringList(QString())) {
        print(line);
    }
    QList<host::TPass> passes = FClub.passesAfter(FFirstPass, std::numeric_limits<int>::max());
    passes.removeIf([](const host::TPass& pass) { return pass.card == common::kCardManual; }); // by the desk
    QStringList wrong = compare(visits, passes);
    wrong << FFruit.compare() << FBar.compare() << FKiosk.compare() << FLamps.compare();
    if (FOverdue) {
        wrong << QStringLiteral("not everybody has come through in time");
    }
    for (const QString& line : wrong) {
        complain(QStringLiteral("WRONG: ") + line);
    }
    if (!wrong.isEmpty()) {
        return kFailed;
    }
    print(QStringLiteral(
        "Every card got what the club's books say, every weight was charged, every card payment "
        "is in the books, every lamp was on as sold, and the journal holds all of it."));
    return kDone;
}

int runDemo(const TDemoOptions& options)
{
    TPacedTime time; // before all that ticks
    const QTemporaryDir directory;
    QString file = QString::fromStdString(options.database);
    if (file.isEmpty()) {
        file = directory.filePath(QStringLiteral("club.sqlite"));
    } else if (QFile::exists(file)) {
        throw platform::Exception(
            QStringLiteral("%1 is there already; the demo needs a database of its own").arg(file));
    }
    host::TDatabase club(file);
    fillClub(club, host::dayOf(platform::Now()));
    return TDemo(club, options, time).run();
}

} // namespace

void addDemoCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TDemoOptions>();
    CLI::App* command = app.add_subcommand("demo", "Watch a club with simulated gates, without any hardware");
    command->add_option("--seconds", options->seconds, "How long visitors come; usually 20, with --desk 600")
        ->check(CLI::Range(4, 86'400));
    command->add_option("--db", options->database, "Keep the database in a new file")->type_name("FILE");
    command->add_flag("--plain,--no-progress", options->plain, "No progress indication");
    command
        ->add_option(
            "--serve", options->serve,
            "Let \"tnv5 monitor\" watch the gates on this port, boards and lamps on the next two; 0:\n"
            "on ports that are free")
        ->type_name("PORT")
        ->check(CLI::Range(0, 65'533).description(""));
    command
        ->add_option("--desk", options->desk,
                     "Listen on a local socket, so that the desk (tnv5-desk) can watch and open gates")
        ->type_name("[SOCKET]")
        ->expected(0, 1)
        ->default_str("");
    command->footer(
        "\nEnds with 0 only when every card got at its gate what it had to get, every purchase was "
        "charged as it had to be, and the books say the same.");
    command->callback([&chosen, options] { chosen = [options] { return runDemo(*options); }; });
}

} // namespace tnv5::cli
