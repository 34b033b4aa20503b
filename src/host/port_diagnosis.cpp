#include "tnv5/host/port_diagnosis.h"

#include <QDir>
#include <QFile>
#include <algorithm>
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

QString userName(uid_t id)
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
    facts.lookedEverywhere = true;
    const QDir processes(QStringLiteral("/proc"));
    for (const QString& process : processes.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool isProcess = false;
        const qint64 pid = process.toLongLong(&isProcess);
        if (!isProcess) {
            continue;
        }
        const QDir descriptors(processes.filePath(process) + QStringLiteral("/fd"));
        if (!descriptors.isReadable()) {
            facts.lookedEverywhere = false;
        } else if (hasOpen(descriptors, device)) {
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

QStringList explainPermission(const TPortFacts& facts)
{
    return {QStringLiteral("You (%1) may not use %2: it belongs to the group \"%3\".")
                .arg(facts.user, facts.name, facts.group),
            QStringLiteral("Join the group and log in again:  sudo usermod -aG %1 %2")
                .arg(facts.group, facts.user)};
}

QStringList explainUsers(const TPortFacts& facts)
{
    QStringList lines = {QStringLiteral("%1 is held by another program:").arg(facts.name)};
    for (const TPortUser& user : facts.users) {
        lines << QStringLiteral("  %1 (process %2)").arg(user.program).arg(user.pid);
    }
    lines << QStringLiteral("Close it, or end it:  kill %1").arg(facts.users.first().pid);
    return lines;
}

} // namespace

TPortFacts portFacts(const QString& name)
{
    TPortFacts facts;
    facts.name = name;
    facts.user = userName(geteuid());
    facts.ports = listPorts();

    const QByteArray path = QFile::encodeName(name);
    struct stat info = {};
    facts.exists = stat(path.constData(), &info) == 0;
    if (facts.exists) {
        facts.isTerminal = S_ISCHR(info.st_mode);
        facts.permitted = access(path.constData(), R_OK | W_OK) == 0;
        facts.group = groupName(info.st_gid);
        if (facts.isTerminal) {
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
    if (!facts.permitted) {
        return explainPermission(facts);
    }
    if (!facts.users.isEmpty()) {
        return explainUsers(facts);
    }
    if (!facts.lookedEverywhere) {
        return {QStringLiteral("%1 is probably held by a program of another user.").arg(facts.name),
                QStringLiteral("See which:  sudo fuser -v %1").arg(facts.name)};
    }
    return {QStringLiteral("%1 is there, you may use it, and no program holds it; the device itself does not "
                           "answer.")
                .arg(facts.name),
            QStringLiteral("Unplug the adapter and plug it in again; \"sudo dmesg | tail\" shows what the "
                           "system saw.")};
}

} // namespace tnv5::host
