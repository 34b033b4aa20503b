#pragma once

#include <QString>

namespace tnv5::panel {

/// Index of the first gate one of whose directions has this address, case counting; -1 when none has. An
/// empty address is found where a direction has none.
/// @param gates range of pointers to anything with `GateA()` and `GateB()`
template <class Gates>
int indexOfGate(const Gates& gates, const QString& address)
{
    int index = 0;
    for (const auto& gate : gates) {
        if (gate->GateA() == address || gate->GateB() == address) {
            return index;
        }
        ++index;
    }
    return -1;
}

/// Entry number of a direction of a gate; of direction B when both directions have this address.
template <class Gate>
int entryOf(const Gate& gate, const QString& address)
{
    return gate.GateB() == address ? gate.EntryB() : gate.EntryA();
}

} // namespace tnv5::panel
