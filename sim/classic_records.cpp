#include "sim/classic_records.h"

namespace tnv5::sim {

TGateCounts& TGateCounts::operator+=(const TGateCounts& other)
{
    Asked += other.Asked;
    Commands += other.Commands;
    BadCommands += other.BadCommands;
    Opened += other.Opened;
    Refused += other.Refused;
    NoCommand += other.NoCommand;
    Passed += other.Passed;
    GaveUp += other.GaveUp;
    return *this;
}

} // namespace tnv5::sim
