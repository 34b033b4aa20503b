#pragma once

#include "tnv5/host/books/book_table.h"
#include "tnv5/host/books/database.h"

#include <functional>
#include <string>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace tnv5::cli {

/// Adds the option that names the club's database, in all commands the same: --db FILE, or else the
/// environment's TNV5_DB.
CLI::Option* addDatabaseOption(CLI::App& command, std::string& file);

/// The file that was named. @throws platform::Exception when none was
QString databaseFile(const std::string& file);

/// How a command shows a table: for people, or as --json or --csv.
struct TShowOptions
{
    bool json = false;
    bool csv = false;

    host::TTableFormat format() const;
};
void addShowOptions(CLI::App& command, TShowOptions& options);

/// What takes the lines of a table to standard output: as they are when they are data; for people harmless,
/// and the first one, which names the columns, faint.
/// @throws platform::Exception when one cannot be written
std::function<void(const QString& line)> tableOutput(host::TTableFormat format);
/// What went there is out now. @throws platform::Exception when it cannot be written
void flushLines();

/// Shows a whole table.
void showTable(const host::TBookTable& table, host::TTableFormat format);

/// Runs a command that may promise JSON: its failure is an object {"error": "..."} on standard output then,
/// too.
int runJson(bool json, const std::function<int()>& body);

} // namespace tnv5::cli
