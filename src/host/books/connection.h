#pragma once

#include "tnv5/host/books/statement.h"

namespace tnv5::host {

/// Whether a database is made when it is not there.
enum class TOpening {
    Make,    ///< it is made
    Existing ///< that is an error: a misspelt name must not become a second, empty club
};

/// A connection of its own to a club's database, taken out of Qt's list again at the end.
class TConnection
{
public:
    /// @throws EDatabase
    TConnection(const QString& file, TOpening opening);
    ~TConnection() { close(); }
    TConnection(const TConnection&) = delete;
    TConnection& operator=(const TConnection&) = delete;

    const QSqlDatabase& database() const { return FDatabase; }

private:
    void open(const QString& file, TOpening opening);
    void close();

    QString FName;
    QSqlDatabase FDatabase;
};

} // namespace tnv5::host
