#pragma once

#include "tnv5/host/club.h"
#include "tnv5/host/lamp.h"
#include "tnv5/platform/socket_access.h"

/// The file that describes a club's equipment (docs/club-file.md): read and checked without touching any of
/// it.
namespace tnv5::host {

/// Where something stands in its file. Two descriptions that differ in nothing else are the same.
struct TFileLine
{
    int number = 0; ///< counted from 1
    bool operator==(const TFileLine&) const { return true; }
};

/// A port that others watch a line or bus on.
struct TMonitorPlan
{
    int port = 0;
    platform::TServerAccess access;
    TFileLine at;
    bool operator==(const TMonitorPlan&) const = default;
};

/// A serial line of classic controllers, or a bus of networked boards.
struct TLinePlan
{
    QString name;
    QString port;
    int baud = 9600;
    std::optional<TMonitorPlan> monitor;
    std::optional<TMonitorPlan> lampMonitor; ///< of a bus: its relay boards
    TFileLine at;
    bool operator==(const TLinePlan&) const = default;
};

struct TGatePlan
{
    QString line; ///< name of the line or bus that it is on
    TGate gate;
    TFileLine at;
    TFileLine zoneAt;
    bool operator==(const TGatePlan&) const;
};

struct TLampPlan
{
    QString bus;
    TLamp lamp;
    TFileLine at;
    bool operator==(const TLampPlan&) const;
};

struct TScalePlan
{
    QString name;
    QString port;
    int baud = 9600; ///< for families without a rate of their own
    int type = 0;    ///< number of the family, as `tnv5 scales` lists them
    TFileLine at;
    bool operator==(const TScalePlan&) const = default;
};

/// A bank terminal on a serial line.
struct TTerminalPlan
{
    QString name;
    QString port;
    int version = 0; ///< of its messages
    TFileLine at;
    bool operator==(const TTerminalPlan&) const = default;
};

/// One club.
struct TClubPlan
{
    QString name;
    QString database; ///< path; a relative one of the file begins in the file's folder
    QString log;      ///< path; empty: standard output
    QString socket;   ///< path; empty: the usual one
    QList<TLinePlan> lines;
    QList<TLinePlan> buses;
    QList<TGatePlan> gates;
    QList<TLampPlan> lamps;
    QList<TScalePlan> scales;
    QList<TTerminalPlan> terminals;
    TFileLine databaseAt;
    TFileLine logAt;
};

/// One thing that is wrong in a file.
struct TFileError
{
    int line = 0; ///< 0: of the file as a whole
    QString text; ///< such as: [[gate]] direction: "inn" is none of in, out, inner
    bool operator==(const TFileError&) const = default;
};

/// What a file says, and what is wrong with it; the plan is good only when nothing is.
struct TClubFile
{
    TClubPlan plan;
    QList<TFileError> errors; ///< in the order of their lines
};

/// Reads a description. Everything that is wrong is told at once, unless the text is no TOML at all.
/// @param folder where relative paths begin
TClubFile readClub(const QByteArray& text, const QString& folder);

/// What in a description does not fit the books: zones that they do not have.
QList<TFileError> compareWithBooks(const TClubPlan& plan, const QStringList& zones);

/// One line for a person. Example: `club.toml:12: [[gate]] zone: "hal" is no zone of the books`.
QString errorText(const QString& file, const TFileError& error);

/// The nearest of some words to a misspelt one; empty when none is near.
QString nearest(const QString& word, const QStringList& words);

} // namespace tnv5::host
