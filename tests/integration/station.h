#pragma once

#include "sim/classic_line.h"
#include "sim/line_faults.h"
#include "sim/pty.h"
#include "support/lock_step.h"
#include "tnv5/host/club_host.h"
#include "tnv5/host/port_keeper.h"
#include "tnv5/platform/serial_port.h"

#include <QTemporaryDir>
#include <functional>
#include <gtest/gtest.h>
#include <optional>

namespace tnv5::integration {

enum class TTime { LockStep, Real };

/// A club's host on a real serial port, with simulated gates at the other end of a pseudo-terminal.
/// Gates 01A and 02A lead into the hall, 03A out of it, 04D is an inner door. Cards M1 to M9 may enter.
class TStation : public ::testing::Test
{
protected:
    explicit TStation(TTime time = TTime::LockStep);

    /// Lets time pass until the condition holds, a minute at most. @return whether it came to hold.
    bool until(const std::function<bool()>& condition);

    /// Somebody holds a card to a reader; waits until the gate has answered, the gate is closed again and the
    /// host has ended the pass.
    sim::TReading visit(const QString& gate, const QString& card,
                        sim::TBehaviour behaviour = sim::TBehaviour::PassesThrough);
    /// The same, and whether the gate opened and let the person through.
    bool getsThrough(const QString& gate, const QString& card);
    /// The host has no pass under way at a gate.
    bool idle(const QString& gate) const { return line.p_hw_FindDevice(gate) < 0; }
    /// Writes the journal to its end and reads it.
    QList<host::TPass> journal();

    std::optional<testkit::TManualClock> clock; // lock-step time: before all that ticks
    std::optional<TLockStep> lockStep;
    QTemporaryDir FDirectory;
    host::TDatabase club;
    sim::TPty pty;
    sim::TLineFaults cable;
    sim::TClassicLine gates;
    platform::TSerialPort port;
    turnstile::TTurnStylerDevice line;
    QStringList troubles;
    host::TClubHost host;
    host::TPortKeeper keeper;
};

} // namespace tnv5::integration
