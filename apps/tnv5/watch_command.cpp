#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/open_port.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/host/books/book_table.h"
#include "tnv5/platform/com_data_packet.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/platform/timer.h"
#include "tnv5/scales/families.h"
#include "tnv5/tools/explanation.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QTime>
#include <memory>
#include <optional>

namespace tnv5::cli {

namespace {

struct TWatchOptions
{
    std::string port;
    tools::TProtocol protocol = tools::TProtocol::Bus;
    int scalesType = 0; // on the line of a scale
    std::string record;
    qint64 rotateAt = 0; // bytes of a file, 0: one file
    bool force = false;
    bool wait = false;
    std::optional<int> baudRate;
};

/// Prints and records what a port reads, piece by piece.
class TWatch
{
public:
    explicit TWatch(const TWatchOptions& options)
        : FProtocol(options.protocol),
          FScalesType(options.scalesType),
          FCutter(options.protocol, options.scalesType)
    {
        constexpr int kPauseMs = 50; // nothing followed for so long: a command on a bus is over
        // everything that is read is one packet, whatever it begins and ends with
        FBytes.OnCustomStart = [](platform::TComDataPacket*, const QByteArray&, qsizetype& at) { at = 1; };
        FBytes.OnCustomStop = [](platform::TComDataPacket*, const QByteArray& bytes, qsizetype& at) {
            at = bytes.size();
        };
        FBytes.OnPacket = [this](platform::TComDataPacket*, const QByteArray& bytes) { take(bytes); };
        FPause.SetInterval(kPauseMs);
        FPause.OnTimer = [this](platform::TTimer*) { end(); };
    }

    void listenTo(platform::TComPort& port) { FBytes.SetComPort(&port); }

    /// From now on everything goes to the file of "--record", too. @throws tools::ERecording
    void record(const TWatchOptions& options)
    {
        if (options.record.empty()) {
            return;
        }
        const QString remark =
            QStringLiteral("%1 since %2")
                .arg(QString::fromStdString(options.port), host::timeForPeople(platform::Now()));
        FRecord = std::make_unique<tools::TRecordFile>(QString::fromStdString(options.record), remark,
                                                       options.force, options.rotateAt);
    }

    /// The recording cannot be written any more.
    std::function<void(const QString& why)> OnTrouble;

    /// Nothing more is to come.
    void end()
    {
        FPause.SetEnabled(false);
        show(FCutter.pause());
    }

private:
    void take(const QByteArray& bytes)
    {
        FPause.SetEnabled(false);
        show(FCutter.take(bytes));
        FPause.SetEnabled(FCutter.waiting());
    }

    void show(const QByteArrayList& pieces)
    {
        for (const QByteArray& piece : pieces) {
            const tools::TExplanation explanation = tools::explain(FProtocol, piece, FScalesType);
            const QString time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz"));
            print(time + u' ' + tools::explanationLine(piece, explanation));
            keep(explanation.Direction, piece);
        }
    }

    void keep(tools::TDirection direction, const QByteArray& piece)
    {
        if (!FRecord) {
            return;
        }
        try {
            FRecord->add(direction, piece);
        } catch (const tools::ERecording& error) {
            FRecord.reset();
            OnTrouble(error.message());
        }
    }

    tools::TProtocol FProtocol;
    int FScalesType;
    std::unique_ptr<tools::TRecordFile> FRecord;
    tools::TLineCutter FCutter;
    platform::TComDataPacket FBytes;
    platform::TTimer FPause;
};

/// A scale's family sets the line up, and what was asked for by name goes before it.
void setUp(platform::TSerialPort& port, const TWatchOptions& options)
{
    const scales::TFamily* family = scales::familyOf(options.scalesType);
    if (family != nullptr && family->settings) {
        port.SetLine(*family->settings);
    }
    if (options.baudRate) {
        port.SetBaudRate(*options.baudRate);
    }
}

/// "bus", "turnstile" or "scales:N".
void setProtocol(TWatchOptions& options, const std::string& text)
{
    const QString scales = QStringLiteral("scales:");
    const QString name = QString::fromStdString(text);
    if (name.startsWith(scales)) {
        options.protocol = tools::TProtocol::Scales;
        options.scalesType = name.mid(scales.size()).toInt();
    } else {
        options.protocol = name == u"bus" ? tools::TProtocol::Bus : tools::TProtocol::Turnstile;
    }
}

/// All that "--as" takes.
std::vector<std::string> protocolNames()
{
    std::vector<std::string> names = {"bus", "turnstile"};
    for (int number = 1; scales::familyOf(number) != nullptr; ++number) {
        names.push_back("scales:" + std::to_string(number));
    }
    return names;
}

/// Watches until Ctrl-C, until the port goes away or until the recording cannot be written.
class TWatching
{
public:
    explicit TWatching(const TWatchOptions& options) : FOptions(options), FWatch(options), FKeeper(FPort)
    {
        FPort.SetPort(QString::fromStdString(options.port));
        setUp(FPort, options);
        FPort.OnException = [this](platform::TComponent*, platform::TComExceptionKind kind,
                                   const QString& message, qint64, const QString&) {
            const bool gone = kind == platform::TComExceptionKind::Resource;
            if (!FOptions.wait || !gone) { // the keeper tells it
                complain(FPort.Port() +
                         (gone ? QStringLiteral(" went away") : QStringLiteral(": ") + message));
            }
            if (!FPort.Connected() && !FOptions.wait) {
                end(kFailed);
            }
        };
        FWatch.OnTrouble = [this](const QString& why) {
            complain(QStringLiteral("tnv5: ") + why);
            end(kFailed);
        };
        keepPort(
            FKeeper, FPort, [this] { listening(); }, [this] { end(kFailed); });
    }

    /// @throws platform::EComPort, tools::ERecording
    int run()
    {
        FWatch.listenTo(FPort);
        const TStopSignal stop(&QCoreApplication::quit);
        if (FOptions.wait) {
            FWatch.record(FOptions);
            FKeeper.start();
        } else {
            openPort(FPort);
            FWatch.record(FOptions);
            listening();
        }
        if (FResult == kDone) {
            QCoreApplication::exec();
        }
        FKeeper.stop();
        FWatch.end();
        return FResult;
    }

private:
    void listening() const
    {
        print(QStringLiteral("Listening to %1 since %2. Ctrl-C ends.")
                  .arg(FPort.Port(), host::timeForPeople(platform::Now())));
    }

    void end(int result)
    {
        FResult = result;
        QCoreApplication::quit();
    }

    TWatchOptions FOptions;
    TWatch FWatch;
    platform::TSerialPort FPort;
    host::TPortKeeper FKeeper;
    int FResult = kDone;
};

} // namespace

void addWatchCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TWatchOptions>();
    CLI::App* command = app.add_subcommand("watch", "Show each line on a port with its meaning until Ctrl-C");
    command->add_option("port", options->port, "Serial port, best a stable name from \"tnv5 ports\"")
        ->required()
        ->type_name("PORT");
    command
        ->add_option_function<std::string>(
            "--as", [options](const std::string& name) { setProtocol(*options, name); },
            "What is spoken: bus (boards), turnstile (classic controllers) or scales:N (N from \"tnv5 "
            "scales\")")
        ->required()
        ->type_name("PROTOCOL")
        ->check(CLI::IsMember(protocolNames()).description(""));
    CLI::Option* const record =
        command->add_option("--record", options->record, "Write a recording for \"tnv5 replay\"")
            ->type_name("FILE");
    command->add_flag("--wait", options->wait,
                      "Wait for a port that is not there yet, and for one that went away");
    command->add_flag("--force", options->force, "Overwrite a recording that is there")->needs(record);
    command
        ->add_option(
            "--rotate", options->rotateAt,
            "Begin another file, FILE.2, FILE.3 and so on, when one has this size, such as 500K, 10M or 1G")
        ->needs(record)
        ->type_name("SIZE")
        ->transform(CLI::AsSizeValue(false))
        ->check(CLI::PositiveNumber.description(""));
    command->add_option("--baud", options->baudRate, "Speed of the line; 9600, or what the scale needs");
    command->footer(
        "\nEach line: time; < from the equipment, > to it, ? not known; checksum right, WRONG or - for\n"
        "none; the bytes; the meaning. Nothing is ever sent.");
    command->callback([&chosen, options] { chosen = [options] { return TWatching(*options).run(); }; });
}

} // namespace tnv5::cli
