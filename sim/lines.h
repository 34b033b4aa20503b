#pragma once

#include <QList>
#include <QPointer>

namespace tnv5::platform {
class TSerialPort;
}

namespace tnv5::sim {

class TPty;

/// Lines of which this program has both ends, the equipment's and the serial port's: it can tell when nothing
/// is on its way on any of them.
///
///     TLines lines;
///     lines.add(pty);
///     lines.add(port);
///     clock.BeforeStep = [&] { lines.settle(); }; // a manual clock that goes on when all bytes have arrived
class TLines
{
public:
    /// One end of a line; forgotten when it is destroyed.
    void add(const TPty& pty);
    void add(const platform::TSerialPort& port);

    /// Whether all that was written at one end has been read at the other.
    bool settled() const;

    /// Runs the event loop until the lines have settled. Timers of a manual clock stand still meanwhile.
    /// @throws platform::Exception when they have not after a minute: somebody never stops talking.
    void settle() const;

private:
    QList<QPointer<const TPty>> FPtys;
    QList<QPointer<const platform::TSerialPort>> FPorts;
};

} // namespace tnv5::sim
