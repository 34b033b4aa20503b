#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "apps/tnv5/stop_signal.h"
#include "sim/pos_bus.h"
#include "tnv5/platform/errors.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <memory>

namespace tnv5::cli {

namespace {

constexpr int kLastType = 4;

struct TTerminalOptions
{
    std::string bus;
    std::string end = "approve";
    int type = 0;
    int reason = sim::TPosScenario().reason;
    int stepMs = sim::TPosScenario().stepMs;
};

int playTerminal(const TTerminalOptions& options)
{
    QString address = QString::fromStdString(options.bus);
    if (address.isEmpty()) {
        address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    }
    sim::TPosScenario scenario;
    scenario.end = *sim::posEndOf(QString::fromStdString(options.end));
    scenario.reason = options.reason;
    scenario.stepMs = options.stepMs;
    const sim::TPosOnBus terminal(address, options.type, scenario);
    const TStopSignal stop([] { QCoreApplication::quit(); });
    print(QStringLiteral("%1 is on the bus").arg(sim::posBusName(options.type)));
    return QCoreApplication::exec();
}

} // namespace

void addTerminalCommand(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<TTerminalOptions>();
    CLI::App* command = app.add_subcommand("terminal", "Play a bank terminal with a library, on D-Bus");
    command->add_option("--type", options->type, "Library, 0 to 4")
        ->required()
        ->type_name("NUMBER")
        ->check(CLI::Range(0, kLastType));
    command->add_option("--bus", options->bus, "Address of the bus; without it the session's")
        ->type_name("ADDRESS");
    command->add_option("--end", options->end, "How payments end")
        ->capture_default_str()
        ->check(CLI::IsMember({"approve", "decline", "timeout", "break", "crash", "hang", "unconfirmed"}));
    command->add_option("--reason", options->reason, "The bank's code of a refusal")->capture_default_str();
    command->add_option("--step", options->stepMs, "Milliseconds from one text of the terminal to the next")
        ->capture_default_str()
        ->check(CLI::Range(0, 60'000));
    command->footer(
        "\nFor hosts that are being tried out; \"tnv5 pay --terminal sim:1\" starts one by itself.\n"
        "Ends with Ctrl-C.");
    command->callback([&chosen, options] { chosen = [options] { return playTerminal(*options); }; });
}

} // namespace tnv5::cli
