#include "apps/tnv5/terminal_simulation.h"

#include "tnv5/platform/automation/dbus_provider.h"
#include "tnv5/platform/errors.h"

#include <QCoreApplication>

namespace tnv5::cli {

namespace {

constexpr int kStartMs = 60'000;

} // namespace

TTerminalSimulation::TTerminalSimulation(const TTerminalName& terminal, int stepMs)
{
    sim::endWithUs(FTerminal);
    FTerminal.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("terminal"), QStringLiteral("--bus"), FBus.address(),
                     QStringLiteral("--type"), QString::number(terminal.type), QStringLiteral("--end"),
                     terminal.end, QStringLiteral("--step"), QString::number(stepMs)});
    if (!FTerminal.waitForReadyRead(kStartMs)) {
        throw platform::Exception(QStringLiteral("the simulated terminal does not start: ") +
                                  QString::fromUtf8(FTerminal.readAllStandardError()).trimmed());
    }
    platform::automation::setAutomationBus(FBus.address().toStdString());
}

TTerminalSimulation::~TTerminalSimulation()
{
    platform::automation::setAutomationBus({});
    FTerminal.kill();
    FTerminal.waitForFinished();
}

} // namespace tnv5::cli
