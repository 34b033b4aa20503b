#include "tnv5/host/club/club_check.h"

#include "tnv5/common/read_up_to.h"
#include "tnv5/host/books/statement.h"
#include "tnv5/platform/tls.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <algorithm>
#include <atomic>

namespace tnv5::host {

namespace {

constexpr qint64 kMaxFile = 4 << 20;

QStringList readZones(QSqlDatabase& database)
{
    if (!database.open()) {
        throw EDatabase(database.lastError().databaseText());
    }
    TStatement zones(database, QStringLiteral("SELECT name FROM zone ORDER BY name"));
    return zones.run().all([](const TRows& row) { return row.value(0).toString(); });
}

/// What the books have against a plan.
QList<TFileError> askBooks(const TClubPlan& plan)
{
    const auto wrong = [&](const QString& what) {
        return QList<TFileError>{
            {plan.databaseAt.number, QStringLiteral("[club] database: \"%1\" ").arg(plan.database) + what}};
    };
    if (!QFileInfo(plan.database).isFile()) {
        return wrong(QStringLiteral("is not there; \"tnv5 init\" makes it"));
    }
    try {
        return compareWithBooks(plan, zonesOf(plan.database));
    } catch (const EDatabase& error) {
        return wrong(QStringLiteral("cannot be read: ") + error.message());
    }
}

/// What is wrong with the place of the log; "": nothing.
QString whyNoLog(const TClubPlan& plan, const QString& clubFile)
{
    const QFileInfo log(plan.log);
    if (plan.log.isEmpty()) {
        return {};
    }
    if (!QFileInfo(log.absolutePath()).isDir()) {
        return QStringLiteral("there is no folder \"%1\"").arg(log.absolutePath());
    }
    if (log.isDir()) {
        return QStringLiteral("\"%1\" is a folder").arg(plan.log);
    }
    if (log.exists() && log == QFileInfo(plan.database)) {
        return QStringLiteral("\"%1\" is the database").arg(plan.log);
    }
    return log.exists() && log == QFileInfo(clubFile) ? QStringLiteral("\"%1\" is this file").arg(plan.log)
                                                      : QString();
}

/// Files and folders that a plan needs and that are not as they should be.
QList<TFileError> askFiles(const TClubPlan& plan, const QString& clubFile)
{
    QList<TFileError> errors;
    if (const QString what = whyNoLog(plan, clubFile); !what.isEmpty()) {
        errors.append({plan.logAt.number, QStringLiteral("[club] log: ") + what});
    }
    for (const TLinePlan& line : plan.lines + plan.buses) {
        for (const std::optional<TMonitorPlan>& monitor : {line.monitor, line.lampMonitor}) {
            if (!monitor || !monitor->access.tls) {
                continue;
            }
            try {
                platform::tlsConfiguration(*monitor->access.tls);
            } catch (const platform::Exception& error) {
                errors.append({monitor->at.number,
                               QStringLiteral("monitor of \"%1\": %2").arg(line.name, error.message())});
            }
        }
    }
    return errors;
}

} // namespace

QStringList zonesOf(const QString& database)
{
    static std::atomic<int> count = 0;
    const QString name = QStringLiteral("tnv5-zones-%1").arg(++count);
    QStringList zones;
    std::exception_ptr failure;
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        connection.setDatabaseName(database);
        connection.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=1000"));
        try {
            zones = readZones(connection);
        } catch (const EDatabase&) {
            failure = std::current_exception();
        }
        connection.close();
    }
    QSqlDatabase::removeDatabase(name);
    if (failure) {
        std::rethrow_exception(failure);
    }
    return zones;
}

TClubFile checkClub(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {{}, {{0, file.errorString()}}};
    }
    const QByteArray text = common::ReadUpTo(file, kMaxFile + 1);
    if (text.size() > kMaxFile) {
        return {{}, {{0, QStringLiteral("is larger than 4 MiB")}}};
    }
    TClubFile club = readClub(text, QFileInfo(path).absolutePath());
    club.errors += askFiles(club.plan, path);
    if (!club.plan.database.isEmpty()) {
        club.errors += askBooks(club.plan);
    }
    std::stable_sort(club.errors.begin(), club.errors.end(),
                     [](const TFileError& a, const TFileError& b) { return a.line < b.line; });
    return club;
}

} // namespace tnv5::host
