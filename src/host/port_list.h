#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace tnv5::host {

/// A serial port of this machine.
struct TPortEntry
{
    QString device;      ///< such as "/dev/ttyUSB0"; may change when adapters are plugged in another order
    QString description; ///< what the adapter calls itself; may be empty
    QStringList stableNames; ///< names that stay with the adapter (by-id) or with its socket (by-path)
};

/// The serial ports that are there now, with their stable names.
QList<TPortEntry> listPorts();

/// Names in the given directories of symbolic links that lead to a device.
QStringList stableNamesOf(const QString& device, const QStringList& directories);

} // namespace tnv5::host
