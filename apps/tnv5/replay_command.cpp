#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/paced_time.h"
#include "apps/tnv5/replay_stage.h"
#include "apps/tnv5/stop_signal.h"
#include "sim/pty.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/tools/player.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>

namespace tnv5::cli {

namespace {

constexpr int kAfterwardsMs = 15'000; // lets open passes time out

struct TReplayOptions
{
    std::string file;
    tools::TProtocol protocol = tools::TProtocol::Bus;
    double speed = 1;
    bool refuse = false;
    bool pty = false;
};

int replayAtOnce(const TReplayOptions& options, const QList<tools::TEntry>& entries)
{
    testkit::TManualClock clock;
    TReplayStage stage(options.protocol, !options.refuse);
    tools::playAtOnce(
        entries, [&](qint64 ms) { clock.advance(ms); }, [&](const QByteArray& bytes) { stage.hear(bytes); });
    clock.advance(kAfterwardsMs);
    return kDone;
}

/// Plays until the end or Ctrl-C.
int playInTime(tools::TPlayer& player, const std::function<void()>& start)
{
    const TStopSignal stop(&QCoreApplication::quit);
    player.OnEnd = [] { QCoreApplication::quit(); };
    start();
    QCoreApplication::exec();
    return stop.received() ? kInterrupted : kDone;
}

int replayInTime(const TReplayOptions& options, const QList<tools::TEntry>& entries)
{
    const TPacedTime time; // a busy machine makes no pass time out that did not in the recording
    TReplayStage stage(options.protocol, !options.refuse);
    tools::TPlayer player(entries, options.speed);
    player.OnBytes = [&](const QByteArray& bytes) { stage.hear(bytes); };
    return playInTime(player, [&] { player.start(); });
}

int replayOnPty(const TReplayOptions& options, const QList<tools::TEntry>& entries)
{
    sim::TPty pty(QStringLiteral("replay"));
    tools::TPlayer player(entries, options.speed);
    player.OnBytes = [&](const QByteArray& bytes) { pty.write(bytes); };
    pty.OnRead = [](const QByteArray& bytes) {
        print(QStringLiteral("heard ") + QString::fromLatin1(tools::escaped(bytes)));
    };
    bool started = false;
    pty.OnOpened = [&](bool opened) {
        if (opened && !started) {
            started = true;
            print(QStringLiteral("A program has opened it; playing."));
            player.start();
        } else if (!opened) {
            print(QStringLiteral("The program has closed it."));
        }
    };
    return playInTime(player, [&] {
        print(QStringLiteral("Open %1 as a serial port; the recording plays from then on. Ctrl-C ends.")
                  .arg(pty.path()));
    });
}

/// `protocol` must live as long as the command.
CLI::Option* addProtocolOption(CLI::App& command, tools::TProtocol& protocol)
{
    const auto set = [&protocol](const std::string& name) {
        protocol = name == "bus" ? tools::TProtocol::Bus : tools::TProtocol::Turnstile;
    };
    return command
        .add_option_function<std::string>("--as", set,
                                          "What is spoken: bus (boards) or turnstile (classic controllers)")
        ->type_name("PROTOCOL")
        ->check(CLI::IsMember({"bus", "turnstile"}).description(""));
}

int replay(const TReplayOptions& options)
{
    const QList<tools::TEntry> entries = tools::readRecording(QString::fromStdString(options.file));
    if (options.pty) {
        return replayOnPty(options, entries);
    }
    return options.speed > 0 ? replayInTime(options, entries) : replayAtOnce(options, entries);
}

} // namespace

void addReplayCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TReplayOptions>();
    CLI::App* command = app.add_subcommand("replay", "Play a recording into a component, or out on a port");
    command->add_option("file", options->file, "Recording of \"tnv5 watch --record\"")
        ->required()
        ->type_name("FILE");
    CLI::Option* protocol = addProtocolOption(*command, options->protocol);
    command->add_option("--speed", options->speed, "How many times as fast as recorded; 0: without waiting")
        ->check(CLI::Range(0.0, 1'000'000.0))
        ->capture_default_str();
    command->add_flag("--refuse", options->refuse, "Refuse every card instead of letting it pass");
    command->add_flag("--pty", options->pty, "Play it out on a pseudo-terminal for another program");
    command->callback([&chosen, options, protocol] {
        if (!options->pty && protocol->count() == 0) {
            throw CLI::RequiredError("--as or --pty");
        }
        chosen = [options] { return replay(*options); };
    });
}

} // namespace tnv5::cli
