#include "tnv5/host/books/book_table.h"

#include "tnv5/host/books/csv.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <cstdlib>

namespace tnv5::host {

namespace {

QDateTime localTime(platform::TDateTime time)
{
    return QDateTime::fromString(toText(time), QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
}

QString zoneOf(const QDateTime& time)
{
    constexpr int kMinute = 60;
    const int minutes = std::abs(time.offsetFromUtc()) / kMinute;
    return QStringLiteral("%1%2:%3")
        .arg(time.offsetFromUtc() < 0 ? QChar(u'-') : QChar(u'+'))
        .arg(minutes / kMinute, 2, 10, QChar(u'0'))
        .arg(minutes % kMinute, 2, 10, QChar(u'0'));
}

QString textOf(TColumnKind kind, const QVariant& value, bool forPeople)
{
    switch (kind) {
    case TColumnKind::Cents:
        return amountText(value.toLongLong());
    case TColumnKind::Flag:
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    case TColumnKind::Time:
        return forPeople ? timeForPeople(value.toDouble()) : timeForPrograms(value.toDouble());
    case TColumnKind::List:
        return value.toStringList().join(forPeople ? QStringLiteral("; ") : QStringLiteral(";"));
    case TColumnKind::Text:
    case TColumnKind::Number:
        break;
    }
    return value.toString();
}

QJsonValue jsonOf(TColumnKind kind, const QVariant& value)
{
    switch (kind) {
    case TColumnKind::Number:
    case TColumnKind::Cents:
        return value.toLongLong();
    case TColumnKind::Flag:
        return value.toBool();
    case TColumnKind::Time:
        return timeForPrograms(value.toDouble());
    case TColumnKind::List:
        return QJsonArray::fromStringList(value.toStringList());
    case TColumnKind::Text:
        break;
    }
    return value.toString();
}

} // namespace

QString timeForPeople(platform::TDateTime time)
{
    if (time == 0) {
        return {};
    }
    const QDateTime local = localTime(time);
    return local.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss ")) + zoneOf(local);
}

QString timeForPrograms(platform::TDateTime time)
{
    if (time == 0) {
        return {};
    }
    const QDateTime local = localTime(time);
    return local.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzz")) + zoneOf(local);
}

QJsonObject jsonRow(const QList<TColumn>& columns, const QVariantList& row)
{
    QJsonObject object;
    for (qsizetype index = 0; index < columns.size(); ++index) {
        object[columns[index].name] = jsonOf(columns[index].kind, row[index]);
    }
    return object;
}

TTableWriter::TTableWriter(TTableFormat format, QList<TColumn> columns,
                           std::function<void(const QString&)> print)
    : FFormat(format), FColumns(std::move(columns)), FPrint(std::move(print))
{
}

void TTableWriter::add(const QList<QVariantList>& rows)
{
    begin(rows);
    for (const QVariantList& row : rows) {
        if (FFormat == TTableFormat::Json || FFormat == TTableFormat::JsonLines) {
            const QString object =
                QString::fromUtf8(QJsonDocument(jsonRow(FColumns, row)).toJson(QJsonDocument::Compact));
            if (FFormat == TTableFormat::JsonLines) {
                FPrint(object);
            } else {
                if (!FPending.isEmpty()) {
                    FPrint(FPending + u',');
                }
                FPending = object;
            }
            continue;
        }
        QStringList cells;
        for (qsizetype index = 0; index < FColumns.size(); ++index) {
            cells.append(textOf(FColumns[index].kind, row[index], FFormat == TTableFormat::Aligned));
        }
        if (FFormat == TTableFormat::Csv) {
            FPrint(csvLine(cells));
        } else {
            writeAligned(cells);
        }
    }
}

void TTableWriter::end()
{
    begin({});
    if (!FPending.isEmpty()) {
        FPrint(FPending);
    }
    if (FFormat == TTableFormat::Json) {
        FPrint(QStringLiteral("]"));
    }
}

void TTableWriter::begin(const QList<QVariantList>& rows)
{
    if (std::exchange(FBegun, true)) {
        return;
    }
    QStringList names;
    for (const TColumn& column : FColumns) {
        names.append(column.name);
        FWidths.append(column.name.size());
    }
    for (const QVariantList& row : rows) {
        for (qsizetype index = 0; index < FColumns.size(); ++index) {
            FWidths[index] = std::max(FWidths[index], textOf(FColumns[index].kind, row[index], true).size());
        }
    }
    if (FFormat == TTableFormat::Json) {
        FPrint(QStringLiteral("["));
    } else if (FFormat == TTableFormat::Csv) {
        FPrint(csvLine(names));
    } else if (FFormat == TTableFormat::Aligned) {
        writeAligned(names);
    }
}

void TTableWriter::writeAligned(const QStringList& cells)
{
    QString line;
    for (qsizetype index = 0; index < cells.size(); ++index) {
        const TColumnKind kind = FColumns[index].kind;
        const bool right = kind == TColumnKind::Number || kind == TColumnKind::Cents;
        line +=
            right ? cells[index].rightJustified(FWidths[index]) : cells[index].leftJustified(FWidths[index]);
        line += QStringLiteral("  ");
    }
    while (line.endsWith(u' ')) {
        line.chop(1);
    }
    FPrint(line);
}

} // namespace tnv5::host
