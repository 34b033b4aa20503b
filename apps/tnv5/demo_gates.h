#pragma once

#include "apps/tnv5/demo_club.h"
#include "sim/board_bus.h"

#include <map>

namespace tnv5::cli {

/// The demo's gates as the street sees them, whichever wire they hang on: those of the classic line, and the
/// networked boards, whose addresses have four characters.
class TDemoGates
{
public:
    TDemoGates(sim::TClassicLine& line, sim::TBoardBus& bus);

    static bool isBoard(const QString& gate) { return gate.size() == kBoardAddress; }

    /// Somebody asks to pass. One at a time at each gate.
    void stepUp(const TStep& step);
    /// The gate has answered, or nobody waits for that any longer, and it is closed.
    bool done(const QString& gate) const;
    /// What became of the one who stepped up last.
    sim::TReading seen(const QString& gate) const;
    /// What the gate's display shows, row by row without blanks around; empty without a display.
    QStringList display(const QString& gate) const;

    /// A command reached a gate that opens or refuses.
    std::function<void(const QString& gate)> OnCommand;

private:
    static constexpr qsizetype kBoardAddress = 4;

    void onBoardCommand(const sim::TReceivedCommand& command);

    sim::TClassicLine& FLine;
    sim::TBoardBus& FBus;
    std::map<QString, quint64> FReadings;          // at the classic gates
    std::map<QString, sim::TBoardCounts> FBefore;  // of the boards
    std::map<QString, platform::TDateTime> FAsked; // at the boards
};

} // namespace tnv5::cli
