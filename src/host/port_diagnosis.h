#pragma once

#include "tnv5/host/port_list.h"

#include <optional>

namespace tnv5::host {

/// A program that has a port open.
struct TPortUser
{
    qint64 pid = 0;
    QString program;
};

/// What can be found out about a port that cannot be opened.
struct TPortFacts
{
    QString name;
    bool exists = false;
    bool isTerminal = false; ///< a character device, as a serial port must be
    bool permitted = false;  ///< this user may read and write it
    bool busy = false;       ///< somebody really holds it
    bool noSuchRate = false; ///< the device does not have the rate that was asked for
    QString group;           ///< that owns the device
    QString user;            ///< who asks
    QList<TPortUser> users;  ///< of a busy one, as far as this user may look into other programs
    QList<TPortEntry> ports; ///< the ports that are there
};

/// Finds out. Takes some milliseconds: it looks into every program that runs.
/// @param osError the system's number of the error that the port could not be opened for, 0 if it is not
/// known
TPortFacts portFacts(const QString& name, qint64 osError = 0);

/// Why the port cannot be opened and what to do about it, line by line, for the person at the keyboard.
QStringList explainPort(const TPortFacts& facts);

} // namespace tnv5::host
