#include "tnv5/host/books/connection.h"

#include "tnv5/host/books/schema.h"

#include <QFileInfo>
#include <QSqlError>
#include <atomic>

namespace tnv5::host {

namespace {

constexpr int kOpenBusyMs = 2000; // another host may be creating the file

QString nextName()
{
    static std::atomic<int> count = 0;
    return QStringLiteral("tnv5-club-%1").arg(++count);
}

} // namespace

TConnection::TConnection(const QString& file, TOpening opening) : FName(nextName())
{
    if (opening == TOpening::Existing && file != QStringLiteral(":memory:") && !QFileInfo::exists(file)) {
        throw EDatabase(QStringLiteral("The database %1 is not there; \"tnv5 init %1\" makes one").arg(file));
    }
    try {
        open(file, opening);
    } catch (const EDatabase& error) {
        close();
        throw EDatabase(QStringLiteral("Cannot open database %1: %2").arg(file, error.message()));
    }
}

void TConnection::open(const QString& file, TOpening opening)
{
    FDatabase = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), FName);
    if (!FDatabase.isValid()) {
        throw EDatabase(QStringLiteral("the SQLite driver of Qt is not installed (libqt6sql6-sqlite)"));
    }
    FDatabase.setDatabaseName(file);
    FDatabase.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(kOpenBusyMs));
    if (!FDatabase.open()) {
        throw EDatabase(FDatabase.lastError().databaseText());
    }
    if (opening == TOpening::Existing && file != QStringLiteral(":memory:") && versionOf(FDatabase) == 0) {
        throw EDatabase(QStringLiteral("it is no club's database"));
    }
    execute(FDatabase, QStringLiteral("PRAGMA journal_mode = WAL"));
    execute(FDatabase, QStringLiteral("PRAGMA synchronous = NORMAL"));
    execute(FDatabase, QStringLiteral("PRAGMA foreign_keys = ON"));
    migrate(FDatabase, schemaSteps());
}

void TConnection::close()
{
    FDatabase.close();
    FDatabase = {};
    QSqlDatabase::removeDatabase(FName);
}

} // namespace tnv5::host
