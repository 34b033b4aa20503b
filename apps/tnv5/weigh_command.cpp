#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/open_port.h"
#include "apps/tnv5/stop_signal.h"
#include "tnv5/host/books/book_table.h"
#include "tnv5/host/scale_reader.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/scales/families.h"
#include "tnv5/scales/scales_device.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <cerrno>
#include <memory>
#include <optional>

namespace tnv5::cli {

namespace {

constexpr int kEnglish = 2;
constexpr int kMsPerSecond = 1'000;

struct TWeighOptions
{
    std::string port;
    int family = 0;
    int baudRate = 9600;
    int patience = host::TScaleReader::kPatienceMs / kMsPerSecond;
    bool watch = false;
    bool wait = false;
    bool json = false;
};

/// Tells the weight on a scale: once, when it has come to rest, or each new one.
class TWeighing
{
public:
    explicit TWeighing(const TWeighOptions& options) : FOptions(options)
    {
        FPort.SetPort(QString::fromStdString(options.port));
        FPort.SetBaudRate(options.baudRate); // for the families that leave the port as it is
        FPort.OnException = [this](platform::TComponent*, platform::TComExceptionKind kind,
                                   const QString& message, qint64, const QString&) {
            const bool gone = kind == platform::TComExceptionKind::Resource;
            tellTrouble(FPort.Port() +
                        (gone ? QStringLiteral(" went away") : QStringLiteral(": ") + message));
            if (!FPort.Connected()) {
                FReader.stop();
                if (!FOptions.wait) {
                    end(kFailed);
                }
            }
        };
        FKeeper.OnOpened = [this] { FReader.start(); };
        FKeeper.OnCannotOpen = [this](const QString& why) {
            tellTrouble(why);
            if (!FOptions.json && FKeeper.openings() == 0) {
                explain(FPort.Port(), FKeeper.osError());
            }
            if (FKeeper.osError() == EINVAL) { // waiting is of no use
                end(kFailed);
            }
        };
        FScales.SetIDLang(kEnglish);
        FScales.SetComport(&FPort);
        FScales.SetScalesType(options.family);
        FScales.SetUpComport();
        FScales.SetOnError(
            [this](platform::TComponent*, const QString& message) { tellTroubleOnce(message); });
        FReader.PatienceMs = options.patience * kMsPerSecond;
        FReader.OnReading = [this](int weight) { onReading(weight); };
        FReader.OnSteady = [this](int weight) { onSteady(weight); };
        FReader.OnSilent = [this] {
            tellTroubleOnce(QStringLiteral("The scale does not answer."));
            endUnlessWatching();
        };
    }

    /// Begins to weigh, or to wait for the port.
    /// @return whether there is anything to wait for
    bool start()
    {
        if (FOptions.wait) {
            FKeeper.start();
            return FResult == kDone;
        }
        try {
            FPort.Open();
        } catch (const platform::EComPort& error) {
            if (FOptions.json) {
                tellTrouble(error.message());
            } else {
                explain(FPort.Port(), error.osError());
                complain(QStringLiteral("tnv5: ") + error.message());
            }
            FResult = kFailed;
            return false;
        }
        FReader.start();
        return true;
    }

    int result() const { return FResult; }

private:
    void onReading(int weight)
    {
        FWithoutWeight = weight > 0 ? 0 : FWithoutWeight + 1;
        if (weight > 0) {
            FTrouble.clear();
        }
        // 0: it answers, but nothing that can be weighed is on it, or it moves
        if (FOptions.watch && FTold != weight) {
            tellWeight(weight);
        }
        if (FWithoutWeight > FOptions.patience * kMsPerSecond / host::TScaleReader::kAskMs) {
            giveUp();
        }
    }

    void onSteady(int weight)
    {
        if (!FOptions.watch) {
            tellWeight(weight);
            end(kDone);
        }
    }

    void tellWeight(int weight)
    {
        FTold = weight;
        if (FOptions.json) {
            printObject({{QStringLiteral("weight"), weight}});
        } else {
            print(FOptions.watch ? now() + u' ' + QString::number(weight) : QString::number(weight));
        }
    }

    void giveUp()
    {
        if (!FOptions.watch && FTrouble.isEmpty()) {
            tellTroubleOnce(QStringLiteral("No weight: the platform is empty, or what is on it moves."));
        }
        endUnlessWatching();
    }

    void endUnlessWatching()
    {
        if (!FOptions.watch) {
            end(kFailed);
        }
    }

    void tellTroubleOnce(const QString& message)
    {
        if (FTrouble != message) {
            FTrouble = message;
            tellTrouble(message);
        }
    }

    void tellTrouble(const QString& message)
    {
        if (FOptions.json) {
            printObject({{QStringLiteral("error"), message}});
        } else {
            complain(message);
        }
    }

    void printObject(QJsonObject object) const
    {
        if (FOptions.watch) {
            object.insert(QStringLiteral("time"), now());
        }
        print(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
    }

    QString now() const
    {
        return FOptions.json ? host::timeForPrograms(platform::Now()) : host::timeForPeople(platform::Now());
    }

    void end(int result)
    {
        FReader.stop();
        FKeeper.stop();
        FResult = result;
        QCoreApplication::quit();
    }

    TWeighOptions FOptions;
    platform::TSerialPort FPort;
    scales::TScalesDevice FScales;
    host::TScaleReader FReader{FScales};
    host::TPortKeeper FKeeper{FPort};
    int FWithoutWeight = 0; // readings in a row
    std::optional<int> FTold;
    QString FTrouble; // told, and not over yet
    int FResult = kDone;
};

int weigh(const TWeighOptions& options)
{
    TWeighing weighing(options);
    const TStopSignal stop(&QCoreApplication::quit);
    if (weighing.start()) {
        QCoreApplication::exec();
    }
    return stop.received() && !options.watch ? kInterrupted : weighing.result();
}

} // namespace

void addWeighCommand(CLI::App& app, TCommand& chosen)
{
    const int last = static_cast<int>(scales::families().size()) - 1;
    const auto options = std::make_shared<TWeighOptions>();
    CLI::App* command = app.add_subcommand("weigh", "Show the weight on a scale");
    command->add_option("--port", options->port, "Serial port, best a stable name from \"tnv5 ports\"")
        ->required()
        ->type_name("NAME");
    command->add_option("--type", options->family, "Number of the family from \"tnv5 scales\"")
        ->required()
        ->type_name("NUMBER")
        ->check(CLI::Range(1, last));
    command->add_option("--baud", options->baudRate, "Speed of the line, for families without their own")
        ->capture_default_str();
    command
        ->add_option("--patience", options->patience,
                     "Seconds after which a scale without a weight is given up")
        ->capture_default_str()
        ->check(CLI::Range(1, 86'400));
    command->add_flag("--wait", options->wait,
                      "Wait for a port that is not there yet, and for one that went away");
    command->add_flag("--watch", options->watch, "Show each new weight until Ctrl-C");
    command->add_flag("--json", options->json,
                      "Print objects: {\"weight\":1250} or {\"error\":\"...\"}; with --watch also \"time\"");
    command->footer(
        "\nThe weight is in the scale's own units, grams for most. 0 in --watch: the platform is\n"
        "empty, what is on it moves, or it is out of range.");
    command->callback([&chosen, options] { chosen = [options] { return weigh(*options); }; });
}

} // namespace tnv5::cli
