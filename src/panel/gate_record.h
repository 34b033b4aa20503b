#pragma once

#include <QString>

namespace tnv5::panel {

/// What is kept of a gate between two runs.
struct TGateRecord
{
    QString GateA; ///< controller address of direction A
    QString GateB;
    QString Caption;
    int EntryA = 0; ///< entry number of direction A
    int EntryB = 0;

    bool operator==(const TGateRecord&) const = default;
};

} // namespace tnv5::panel
