#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

namespace tnv5::host {

/// One value of a table as text, and where it stands in its file; both count from 1, columns in characters.
struct TCsvCell
{
    QString text;
    int line = 1;
    int column = 1;
};

/// A table as text: the names of its columns and its lines, each as long as the names.
struct TCsv
{
    QList<TCsvCell> header;
    QList<QList<TCsvCell>> rows;
};

/// Reads comma-separated values (RFC 4180): UTF-8 with or without a mark, lines that end in CR LF or LF,
/// values in quotation marks where they hold commas, marks (doubled) or line ends. Semicolons separate when
/// the first line has no comma outside marks. Empty lines count for nothing.
/// @param name of the file, for the text of errors
/// @throws EBooks as "name:line:column: what is wrong"
TCsv parseCsv(const QByteArray& bytes, const QString& name);

/// One line without its end; values are put in quotation marks where they need them.
/// Example: {"Berg, Anna", "5"} gives "\"Berg, Anna\",5".
QString csvLine(const QStringList& values);

} // namespace tnv5::host
