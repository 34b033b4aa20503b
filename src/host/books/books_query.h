#pragma once

#include "tnv5/host/books/books.h"

#include <QScopeGuard>

namespace tnv5::host {

/// One run of a statement that is not worth keeping.
class TBooks::TQuery
{
public:
    TQuery(const QSqlDatabase& database, const char16_t* sql, const QVariantList& values)
        : FStatement(database, QString::fromUtf16(sql)), FRows(FStatement.run(values))
    {
    }

    bool next() { return FRows.next(); }
    QVariant value(int column) const { return FRows.value(column); }
    bool any() { return next(); }
    int changed() const { return FRows.changed(); }
    qint64 inserted() const { return FRows.insertedId(); }
    QList<qint64> numbers()
    {
        return FRows.all([](const TRows& row) { return row.value(0).toLongLong(); });
    }

    /// All rows, their values in the order of `columns`.
    TBookTable table(const QList<TColumn>& columns)
    {
        TBookTable table = {columns, {}};
        while (next()) {
            QVariantList row;
            for (qsizetype index = 0; index < columns.size(); ++index) {
                row.append(cell(columns[index].kind, value(int(index))));
            }
            table.rows.append(row);
        }
        return table;
    }

private:
    static QVariant cell(TColumnKind kind, const QVariant& value)
    {
        switch (kind) {
        case TColumnKind::List:
            return value.toString().split(u';', Qt::SkipEmptyParts);
        case TColumnKind::Time:
            return toDateTime(value.toString());
        default:
            return value;
        }
    }

    TStatement FStatement;
    TRows FRows; // ends before its statement
};

} // namespace tnv5::host
