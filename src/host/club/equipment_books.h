#pragma once

#include "tnv5/host/books/database.h"
#include "tnv5/host/lamp.h"

namespace tnv5::host {

/// Makes the books have these gates and lamps, all of them or, when that fails, none. What they have already
/// is not written again: when nothing differs, nothing is. Lamps may exchange names and relays; one that only
/// the books have gives way to another on its relay. Gates and lamps that are not among these stay.
/// @param lamps no two of one name or on one relay
/// @return the gates that were new or different
/// @throws EDatabase
QList<TGate> enterEquipment(TDatabase& database, const QList<TGate>& gates, const QList<TLamp>& lamps);

} // namespace tnv5::host
