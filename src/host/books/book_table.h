#pragma once

#include "tnv5/host/club.h"

#include <QJsonObject>
#include <QVariantList>
#include <functional>

namespace tnv5::host {

/// What the values of a column are, and so how they are written.
enum class TColumnKind {
    Text,
    Number,
    Cents, ///< "12.50" for people and in CSV, whole cents in JSON
    Flag,  ///< "yes" or "no"; true or false in JSON
    Time,  ///< a platform::TDateTime, local: date, time and zone; 0 is nothing
    List   ///< texts, joined by ";"; an array in JSON
};

struct TColumn
{
    QString name;
    TColumnKind kind = TColumnKind::Text;
};

struct TBookTable
{
    QList<TColumn> columns;
    QList<QVariantList> rows;
};

/// Local time with its zone, to the second. Example: "2026-01-05 12:00:00 +01:00". Empty for 0.
QString timeForPeople(platform::TDateTime time);
/// ISO 8601 with the zone, to the millisecond. Example: "2026-01-05T12:00:00.250+01:00". Empty for 0.
QString timeForPrograms(platform::TDateTime time);

/// A row as an object, its members named as the columns. Nothing is null.
QJsonObject jsonRow(const QList<TColumn>& columns, const QVariantList& row);

enum class TTableFormat { Aligned, Csv, Json, JsonLines };

/// Writes a table of any length line by line.
///
///     TTableWriter writer(TTableFormat::Csv, columns, print);
///     writer.add(rows);
///     writer.end();
///
/// Aligned columns are as wide as the first rows that are added need, or their names; numbers stand on the
/// right. JSON is one array with an object a line, JSON lines are the objects alone.
class TTableWriter
{
public:
    TTableWriter(TTableFormat format, QList<TColumn> columns, std::function<void(const QString&)> print);

    void add(const QList<QVariantList>& rows);
    /// Must be called at the end: names the columns when there was no row, closes the array.
    void end();

private:
    void begin(const QList<QVariantList>& rows);
    void writeAligned(const QStringList& cells);

    TTableFormat FFormat;
    QList<TColumn> FColumns;
    std::function<void(const QString&)> FPrint;
    QList<qsizetype> FWidths;
    QString FPending; // the last object of the array: whether a comma follows is not known yet
    bool FBegun = false;
};

} // namespace tnv5::host
