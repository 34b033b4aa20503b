#pragma once

#include "tnv5/host/books/books_error.h"
#include "tnv5/host/books/database.h"

namespace tnv5::host {

/// What of the books grows and may be pruned.
enum class TPruned { Passes, Outages, Sales, LampTimes, Payments };

/// The names of these on the command line: "passes", "outages", "sales", "lamp-times", "payments".
QString toText(TPruned what);
std::optional<TPruned> toPruned(const QString& text);

/// How many rows that began before a moment would go. Kept are, however old: what is under way; the pass by
/// which somebody who is inside came in; the last row of each table, whose number others go on from. @throws
/// EDatabase
qint64 countPrunable(TDatabase& database, TPruned what, platform::TDateTime before);

/// Takes such rows out, `limit` of them at most, in one transaction: a host that runs must not wait long for
/// it.
/// @return how many. @throws EDatabase
int prune(TDatabase& database, TPruned what, platform::TDateTime before, int limit);

/// Copies a database while others read and write it, checks the copy, and only then gives it its name: what
/// is there under that name is a whole backup, whatever happens. The copy has the rights of the original.
/// @param force takes the place of a file that is there; never of the database itself
/// @throws EBooks naming the file
void backUp(TDatabase& database, const QString& target, bool force);

} // namespace tnv5::host
