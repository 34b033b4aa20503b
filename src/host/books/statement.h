#pragma once

#include "tnv5/platform/errors.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariantList>

namespace tnv5::host {

/// A database that cannot be opened, read or written.
class EDatabase : public platform::Exception
{
public:
    using Exception::Exception;
};

/// The rows of one run of a statement. Must be gone before the statement runs again: an unfinished read keeps
/// the database from clearing its write-ahead log.
class TRows
{
public:
    explicit TRows(QSqlQuery& query) : FQuery(&query) {}
    ~TRows() { FQuery->finish(); }
    TRows(const TRows&) = delete;
    TRows& operator=(const TRows&) = delete;

    bool next() { return FQuery->next(); }
    QVariant value(int column) const { return FQuery->value(column); }
    /// What is made of each row that is left.
    template <class Make>
    auto all(const Make& make)
    {
        QList<decltype(make(*this))> things;
        while (next()) {
            things.append(make(*this));
        }
        return things;
    }
    /// The number in the next row; 0 when there is none.
    qint64 number() { return next() ? value(0).toLongLong() : 0; }
    /// How many rows an INSERT, UPDATE or DELETE changed.
    int changed() const { return FQuery->numRowsAffected(); }
    /// Row made by an INSERT.
    qint64 insertedId() const { return FQuery->lastInsertId().toLongLong(); }

private:
    QSqlQuery* FQuery;
};

/// A statement prepared once and run many times; values are bound, never written into its text.
class TStatement
{
public:
    /// @throws EDatabase
    TStatement(const QSqlDatabase& database, const QString& sql);

    /// @throws EDatabase
    TRows run(const QVariantList& values = {});

private:
    QSqlQuery FQuery;
};

/// Runs a statement that needs no values, once. @throws EDatabase
void execute(const QSqlDatabase& database, const QString& sql);

/// All or nothing: what was not committed is undone. The lock for writing is taken at the beginning, so that
/// a second writer is noticed before anything is done.
class TWriteTransaction
{
public:
    /// @throws EDatabase
    explicit TWriteTransaction(const QSqlDatabase& database);
    ~TWriteTransaction();
    TWriteTransaction(const TWriteTransaction&) = delete;
    TWriteTransaction& operator=(const TWriteTransaction&) = delete;

    /// @throws EDatabase
    void commit();

private:
    QSqlDatabase FDatabase;
    bool FOpen = true;
};

} // namespace tnv5::host
