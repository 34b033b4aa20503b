#pragma once

#include "sim/lines.h"
#include "tnv5/testing/manual_clock.h"

#include <QElapsedTimer>
#include <QTimer>

namespace tnv5::cli {

/// The time of everything that plays itself here, equipment, people and host alike: it goes as real time
/// goes, but stands still while bytes are on their way on one of the lines, and falls behind rather than
/// jumping when the machine is busy. So nobody is late because the machine was.
///
/// It is the current clock while it lives; what ticks must be made after it and go before it.
class TPacedTime
{
public:
    TPacedTime();
    TPacedTime(const TPacedTime&) = delete;
    TPacedTime& operator=(const TPacedTime&) = delete;

    /// Both ends of each line that this program plays.
    sim::TLines lines;

private:
    void step();

    testkit::TManualClock FClock;
    QElapsedTimer FReal;
    qint64 FTakenMs = 0; // of the real time
    QTimer FPace;
    bool FStepping = false;
};

} // namespace tnv5::cli
