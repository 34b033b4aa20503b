#pragma once

#include "tnv5/host/club.h"

namespace tnv5::host {

/// Decides about a card at a gate. Nothing but the arguments counts.
///
/// Whoever leaves is let out, whatever became of the membership meanwhile; only the card must be known.
/// On the way in (and at inner doors) the first of these refuses: the holder is suspended; there is no
/// membership, or none is valid today; none of the valid ones covers the zone; the holder is inside already
/// (not at inner doors).
///
/// @param gate the gate of the address, if it is known
/// @param holder the holder of the card, if it is known
/// @return why the card is refused; `None` opens
TRefusal decide(const std::optional<TGate>& gate, const std::optional<THolder>& holder, QDate today);

} // namespace tnv5::host
