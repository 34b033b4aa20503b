#pragma once

#include "tnv5/host/club/club_file.h"

namespace tnv5::host {

/// Reads a club's file and compares it with the club's books. Touches no equipment, and neither makes a
/// database nor changes one.
TClubFile checkClub(const QString& path);

/// The zones of a database, in order of their names. @throws EDatabase when it cannot be read
QStringList zonesOf(const QString& database);

} // namespace tnv5::host
