#include "tnv5/host/books/statement.h"

#include <QSqlError>

namespace tnv5::host {

namespace {

[[noreturn]] void fail(const QSqlError& error)
{
    throw EDatabase(error.databaseText().isEmpty() ? error.text() : error.databaseText());
}

} // namespace

TStatement::TStatement(const QSqlDatabase& database, const QString& sql) : FQuery(database)
{
    FQuery.setForwardOnly(true);
    if (!FQuery.prepare(sql)) {
        fail(FQuery.lastError());
    }
}

TRows TStatement::run(const QVariantList& values)
{
    for (int index = 0; index < values.size(); ++index) {
        FQuery.bindValue(index, values[index]);
    }
    if (!FQuery.exec()) {
        const QSqlError error = FQuery.lastError();
        FQuery.finish();
        fail(error);
    }
    return TRows(FQuery);
}

void execute(const QSqlDatabase& database, const QString& sql)
{
    QSqlQuery query(database);
    if (!query.exec(sql)) {
        fail(query.lastError());
    }
}

TWriteTransaction::TWriteTransaction(const QSqlDatabase& database) : FDatabase(database)
{
    execute(FDatabase, QStringLiteral("BEGIN IMMEDIATE"));
}

TWriteTransaction::~TWriteTransaction()
{
    if (FOpen) {
        QSqlQuery(FDatabase).exec(QStringLiteral("ROLLBACK")); // some errors have rolled back already
    }
}

void TWriteTransaction::commit()
{
    execute(FDatabase, QStringLiteral("COMMIT"));
    FOpen = false;
}

} // namespace tnv5::host
