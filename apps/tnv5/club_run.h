#pragma once

#include "tnv5/host/books/database.h"

namespace tnv5::cli {

/// Runs a club by its file until Ctrl-C. @param socket "" for that of the file, or the usual one
/// @return exit code
int runClub(const QString& file, const QString& socket);

/// Gates of one serial port, without a club's file: those that the books have.
struct TPortRun
{
    QString port;
    int baudRate = 9600;
    QString database;
    bool wait = false; ///< for a port that is not there yet
    QString socket;    ///< "" for the usual one, without which it works as well
};

/// Runs the gates of a port until Ctrl-C, as a club of that one line. @return exit code
int runPort(const TPortRun& options);

/// At the end of a program: what it wrote into a file that is not in its place any more would go with it, so
/// that a copy is made. @return "" or a sentence about it
QString rescueBooks(host::TDatabase& books);

/// Tells whether a club's file is good, and everything that is wrong in it. @return exit code
int checkClubFile(const QString& file);

} // namespace tnv5::cli
