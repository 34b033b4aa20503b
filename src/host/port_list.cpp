#include "tnv5/host/port_list.h"

#include <QDir>
#include <QSerialPortInfo>

namespace tnv5::host {

QStringList stableNamesOf(const QString& device, const QStringList& directories)
{
    const QString target = QFileInfo(device).canonicalFilePath();
    QStringList names;
    for (const QString& directory : directories) {
        // System: device nodes are neither files nor directories
        const auto entries = QDir(directory).entryInfoList(QDir::Files | QDir::System, QDir::Name);
        for (const QFileInfo& entry : entries) {
            if (entry.isSymLink() && !target.isEmpty() && entry.canonicalFilePath() == target) {
                names.append(entry.absoluteFilePath());
            }
        }
    }
    return names;
}

QList<TPortEntry> listPorts()
{
    static const QStringList kStableNames = {QStringLiteral("/dev/serial/by-id"),
                                             QStringLiteral("/dev/serial/by-path")};
    QList<TPortEntry> ports;
    for (const QSerialPortInfo& port : QSerialPortInfo::availablePorts()) {
        const QString device = port.systemLocation();
        const QString description =
            QStringList({port.manufacturer(), port.description()}).join(u' ').trimmed();
        ports.append({device, description, stableNamesOf(device, kStableNames)});
    }
    return ports;
}

} // namespace tnv5::host
