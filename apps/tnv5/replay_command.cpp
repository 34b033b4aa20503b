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
#include <QFileInfo>
#include <QRegularExpression>
#include <memory>

namespace tnv5::cli {

namespace {

constexpr int kAfterwardsMs = 15'000; // lets open passes time out

struct TReplayOptions
{
    std::vector<std::string> files;
    std::string from;
    std::string until;
    tools::TProtocol protocol = tools::TProtocol::Bus;
    double speed = 1;
    bool refuse = false;
    bool pty = false;
};

int replayAtOnce(const TReplayOptions& options, const tools::TEntrySource& entries)
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
    bool broken = false;
    player.OnEnd = [] { QCoreApplication::quit(); };
    player.OnTrouble = [&broken](const QString& why) {
        complain(QStringLiteral("tnv5: ") + why);
        broken = true;
    };
    start();
    QCoreApplication::exec();
    return broken ? kFailed : stop.received() ? kInterrupted : kDone;
}

int replayInTime(const TReplayOptions& options, const tools::TEntrySource& entries)
{
    const TPacedTime time; // a busy machine makes no pass time out that did not in the recording
    TReplayStage stage(options.protocol, !options.refuse);
    tools::TPlayer player(entries, options.speed);
    player.OnBytes = [&](const QByteArray& bytes) { stage.hear(bytes); };
    return playInTime(player, [&] { player.start(); });
}

int replayOnPty(const TReplayOptions& options, const tools::TEntrySource& entries)
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

/// Entries of all files, one after the other.
tools::TEntrySource entriesOf(const QStringList& files)
{
    return [reader = std::make_shared<tools::TRecordingReader>(files)] { return reader->next(); };
}

/// Reads all files, before anything is played.
void check(const QStringList& files)
{
    for (const QString& file : files) {
        if (const QFileInfo info(file); info.exists() && !info.isFile() && !info.isDir()) {
            throw platform::Exception(file + QStringLiteral(": a recording is read twice, so it must be a "
                                                            "file; write what comes here into one first"));
        }
    }
    tools::TRecordingReader reader(files);
    reader.OnHalfLine = &complain;
    while (reader.next()) {
    }
}

/// A time within a recording: "90", "1:30", "1:02:03.5". @return microseconds
qint64 timeOf(const std::string& text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A(?:(?:([0-9]{1,5}):)?([0-9]{1,5}):)?([0-9]{1,9})(?:\\.([0-9]{1,6}))?\\z"));
    const auto match = form.match(QString::fromStdString(text));
    if (!match.hasMatch()) {
        throw platform::Exception(
            QStringLiteral("\"%1\" is no time of a recording; write it like 90, 1:30 or 1:02:03.5")
                .arg(QString::fromStdString(text)));
    }
    constexpr qint64 kSecond = 1'000'000;
    const qint64 seconds = match.captured(1).toLongLong() * 3'600 + match.captured(2).toLongLong() * 60 +
                           match.captured(3).toLongLong();
    return seconds * kSecond + match.captured(4).leftJustified(6, u'0').toLongLong();
}

int replay(const TReplayOptions& options)
{
    QStringList files;
    for (const std::string& file : options.files) {
        files.append(QString::fromStdString(file));
    }
    const qint64 from = options.from.empty() ? 0 : timeOf(options.from);
    const qint64 until = options.until.empty() ? -1 : timeOf(options.until);
    check(files);
    const tools::TEntrySource entries = tools::part(entriesOf(files), from, until);
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
    command
        ->add_option("file", options->files,
                     "Recordings of \"tnv5 watch --record\", played as one, such as gate.rec gate.rec.2")
        ->required()
        ->type_name("FILE");
    CLI::Option* protocol = addProtocolOption(*command, options->protocol);
    command->add_option("--speed", options->speed, "How many times as fast as recorded; 0: without waiting")
        ->check(CLI::Range(0.0, 1'000'000.0))
        ->capture_default_str();
    command->add_option("--from", options->from, "Begin there: 90 (seconds), 1:30 or 1:02:03.5")
        ->type_name("TIME");
    command->add_option("--until", options->until, "End there")->type_name("TIME");
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
