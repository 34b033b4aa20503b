#include "tnv5/host/port_diagnosis.h"

#include "tnv5/platform/port_claim.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tnv5::host {

namespace {

QString groupName(gid_t id)
{
    const group* found = getgrgid(id);
    return found != nullptr ? QString::fromLocal8Bit(found->gr_name) : QString::number(id);
}

QString ownerName(uid_t id)
{
    const passwd* found = getpwuid(id);
    return found != nullptr ? QString::fromLocal8Bit(found->pw_name) : QString::number(id);
}

QString programOf(const QString& process)
{
    QFile name(process + QStringLiteral("/comm"));
    return name.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(name.readAll()).trimmed() : QString();
}

bool hasOpen(const QDir& descriptors, dev_t device)
{
    const QStringList entries = descriptors.entryList(QDir::Files | QDir::System);
    return std::any_of(entries.begin(), entries.end(), [&](const QString& entry) {
        struct stat info = {};
        return stat(QFile::encodeName(descriptors.filePath(entry)).constData(), &info) == 0 &&
               S_ISCHR(info.st_mode) && info.st_rdev == device;
    });
}

void findUsers(TPortFacts& facts, dev_t device)
{
    const QDir processes(QStringLiteral("/proc"));
    for (const QString& process : processes.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool isProcess = false;
        const qint64 pid = process.toLongLong(&isProcess);
        if (!isProcess) {
            continue;
        }
        const QDir descriptors(processes.filePath(process) + QStringLiteral("/fd"));
        if (pid != getpid() && descriptors.isReadable() && hasOpen(descriptors, device)) {
            facts.users.append({pid, programOf(processes.filePath(process))});
        }
    }
}

QStringList explainMissing(const TPortFacts& facts)
{
    QStringList lines = {QStringLiteral("There is no device %1.").arg(facts.name)};
    if (facts.ports.isEmpty()) {
        lines << QStringLiteral("This machine has no serial port at the moment. Is the adapter plugged in? "
                                "\"sudo dmesg | tail\" shows what the system saw.");
        return lines;
    }
    lines << QStringLiteral("These ports are there:");
    for (const TPortEntry& port : facts.ports) {
        lines << QStringLiteral("  ") + QStringLiteral("%1  %2").arg(port.device, port.description).trimmed();
    }
    lines << QStringLiteral("Is the adapter plugged in? A name from \"tnv5 ports\" that begins with "
                            "/dev/serial/by-id stays the same whichever socket it is in.");
    return lines;
}

// To join one of the others would give more than a serial port.
bool isGroupForPorts(const QString& group)
{
    return group == QStringLiteral("dialout") || group == QStringLiteral("uucp") ||
           group == QStringLiteral("plugdev");
}

QStringList explainPermission(const TPortFacts& facts)
{
    QStringList lines = {QStringLiteral("You (%1) may not use %2: it belongs to the group \"%3\".")
                             .arg(facts.user, facts.name, facts.group)};
    if (isGroupForPorts(facts.group)) {
        lines << QStringLiteral("Join the group and log in again:  sudo usermod -aG %1 %2")
                     .arg(facts.group, facts.user);
    } else {
        lines << QStringLiteral(
            "Do not join that group: let a udev rule give the device to the group \"dialout\", and join "
            "that one.");
    }
    return lines;
}

QStringList explainUsers(const TPortFacts& facts)
{
    if (facts.users.isEmpty()) {
        return {QStringLiteral("%1 is held by another program.").arg(facts.name),
                QStringLiteral("See which:  sudo fuser -v %1").arg(facts.name)};
    }
    QStringList lines = {QStringLiteral("%1 is held by another program:").arg(facts.name)};
    for (const TPortUser& user : facts.users) {
        lines << QStringLiteral("  %1 (process %2)").arg(user.program).arg(user.pid);
    }
    lines << QStringLiteral("Close the port there first.");
    return lines;
}

/// Whether a program that lives has left a lock file of this name, as older terminal programs do.
bool hasLockFile(const QString& name)
{
    QFile file(QStringLiteral("/var/lock/LCK..") + QFileInfo(name).fileName());
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    constexpr qint64 kLongest = 64;
    const int pid = file.read(kLongest).trimmed().split('\n').first().trimmed().toInt();
    return pid > 0 && pid != getpid() && (kill(pid, 0) == 0 || errno == EPERM);
}

bool isBusy(const QString& name)
{
    platform::TPortClaim claim;
    return claim.take(name) == EBUSY || hasLockFile(name) || hasLockFile(QFileInfo(name).canonicalFilePath());
}

} // namespace

TPortFacts portFacts(const QString& name, qint64 osError)
{
    TPortFacts facts;
    facts.name = name;
    facts.user = ownerName(geteuid());
    facts.ports = listPorts();

    const QByteArray path = QFile::encodeName(name);
    struct stat info = {};
    facts.exists = stat(path.constData(), &info) == 0;
    if (facts.exists) {
        facts.isTerminal = S_ISCHR(info.st_mode);
        facts.permitted = access(path.constData(), R_OK | W_OK) == 0;
        facts.group = groupName(info.st_gid);
        facts.noSuchRate = osError == EINVAL;
        facts.busy = facts.isTerminal && !facts.noSuchRate && (osError == EBUSY || isBusy(name));
        if (facts.busy) {
            findUsers(facts, info.st_rdev);
        }
    }
    return facts;
}

QStringList explainPort(const TPortFacts& facts)
{
    if (!facts.exists) {
        return explainMissing(facts);
    }
    if (!facts.isTerminal) {
        return {QStringLiteral("%1 is not a serial port. \"tnv5 ports\" lists those that are there.")
                    .arg(facts.name)};
    }
    if (facts.noSuchRate) {
        return {QStringLiteral(
            "Usual rates are 1200, 2400, 4800, 9600, 19200, 38400, 57600 and 115200 baud; the equipment's "
            "papers say which.")};
    }
    if (!facts.permitted) {
        return explainPermission(facts);
    }
    if (facts.busy) {
        return explainUsers(facts);
    }
    return {QStringLiteral("%1 is there, you may use it, and nobody holds it; the device itself does not "
                           "answer.")
                .arg(facts.name),
            QStringLiteral("Unplug the adapter and plug it in again; \"sudo dmesg | tail\" shows what the "
                           "system saw.")};
}

} // namespace tnv5::host
