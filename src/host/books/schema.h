#pragma once

#include <QList>
#include <QStringList>

class QSqlDatabase;

namespace tnv5::host {

/// The statements that make each version of the database out of the one before; the first makes version 1
/// out of an empty file. Steps are only ever added at the end: files of every version are out there.
const QList<QStringList>& schemaSteps();

/// Brings a database to the version that `steps` lead to, in one transaction; the version is kept in the file
/// as `user_version`. @throws EDatabase also when the file is newer than the steps.
void migrate(QSqlDatabase& database, const QList<QStringList>& steps);

/// Version of a database, 0 for one that has no tables of ours. @throws EDatabase
int versionOf(const QSqlDatabase& database);

} // namespace tnv5::host
