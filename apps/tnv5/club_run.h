#pragma once

#include <QString>

namespace tnv5::cli {

/// Runs a club by its file until Ctrl-C. @param socket "" for that of the file, or the usual one
/// @return exit code
int runClub(const QString& file, const QString& socket);

/// Tells whether a club's file is good, and everything that is wrong in it. @return exit code
int checkClubFile(const QString& file);

} // namespace tnv5::cli
