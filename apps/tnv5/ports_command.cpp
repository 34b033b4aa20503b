#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "tnv5/host/port_list.h"

#include <CLI/CLI.hpp>

namespace tnv5::cli {

namespace {

int listThem()
{
    const QList<host::TPortEntry> ports = host::listPorts();
    if (ports.isEmpty()) {
        print(QStringLiteral("There is no serial port. Is the adapter plugged in?"));
    }
    for (const host::TPortEntry& port : ports) {
        print(QStringLiteral("%1  %2").arg(port.device, port.description).trimmed());
        for (const QString& name : port.stableNames) {
            print(QStringLiteral("    ") + name);
        }
    }
    return kDone;
}

} // namespace

void addPortsCommand(CLI::App& app, TCommand& chosen)
{
    CLI::App* command = app.add_subcommand("ports", "List the serial ports of this machine");
    command->footer("\nThe indented names stay the same: by-id with the adapter, whichever socket it is in;\n"
                    "by-path with the socket, whichever adapter is in it. Give one of them to \"tnv5 run\".");
    command->callback([&chosen] { chosen = listThem; });
}

} // namespace tnv5::cli
