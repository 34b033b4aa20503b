#pragma once

#include "tnv5/host/books/books.h"

namespace tnv5::host {

/// What can be imported.
enum class TBookKind { Members, Cards, Memberships, Zones, Gates, Products };

/// The columns that a file of a kind may have; those that it must have come first, as many as `needed`.
struct TImportColumns
{
    QStringList names;
    int needed;
};
TImportColumns importColumns(TBookKind kind);

/// Adds what a CSV file holds, a line each: all of it, or nothing when one line is wrong. What `TBooks` lists
/// as CSV is read back; columns may stand in any order, and those that need not be there may be missing or
/// empty.
/// @param name of the file, for errors: "members.csv:3:7: "2026-02-30" is no day; write it like 2026-01-31"
/// @return how many lines
/// @throws EBooks
int importCsv(TBooks& books, TBookKind kind, const QByteArray& bytes, const QString& name);

} // namespace tnv5::host
