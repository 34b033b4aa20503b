#pragma once

#include "apps/tnv5/pay_terminal.h"
#include "sim/pos_bus.h"

namespace tnv5::cli {

/// A simulated terminal with a library: a bus of its own, and this very program on it as the terminal's
/// process. While it lives, the program's automation objects are those of that bus.
class TTerminalSimulation
{
public:
    /// @param stepMs from one text on the terminal's display to the next
    /// @throws platform::Exception when the bus or the terminal does not start
    TTerminalSimulation(const TTerminalName& terminal, int stepMs);
    ~TTerminalSimulation();
    Q_DISABLE_COPY_MOVE(TTerminalSimulation)

private:
    sim::TPrivateBus FBus;
    QProcess FTerminal;
};

} // namespace tnv5::cli
