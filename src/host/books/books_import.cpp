#include "tnv5/host/books/books_import.h"

#include "tnv5/host/books/csv.h"

#include <QHash>

namespace tnv5::host {

namespace {

/// One line of the file: its values by the names of their columns.
class TLine
{
public:
    TLine(const QHash<QString, qsizetype>& columns, const QList<TCsvCell>& cells, const QString& file)
        : FColumns(columns), FCells(cells), FFile(file)
    {
    }

    QString text(const char* column) const
    {
        const qsizetype index = indexOf(column);
        return index < 0 ? QString() : FCells[index].text.trimmed();
    }

    bool has(const char* column) const { return !text(column).isEmpty(); }

    /// What `read` makes of a value; when it cannot, the error says where the value stands.
    template <class Read>
    auto value(const char* column, const Read& read) const
    {
        return at(FCells[std::max(qsizetype{0}, indexOf(column))], [&] { return read(text(column)); });
    }

    /// Runs what may fail for the line as a whole.
    template <class Body>
    auto whole(const Body& body) const
    {
        return at(FCells[0], body);
    }

    [[noreturn]] void fail(const TCsvCell& cell, const QString& what) const
    {
        throw EPlaced(QStringLiteral("%1:%2:%3: %4").arg(FFile).arg(cell.line).arg(cell.column).arg(what));
    }

private:
    /// An error that says already where.
    class EPlaced : public EBooks
    {
    public:
        using EBooks::EBooks;
    };

    template <class Body>
    auto at(const TCsvCell& cell, const Body& body) const
    {
        try {
            return body();
        } catch (const EPlaced&) {
            throw;
        } catch (const platform::Exception& error) { // the books', or what a trigger forbids
            fail(cell, error.message());
        }
    }

    qsizetype indexOf(const char* column) const { return FColumns.value(QString::fromLatin1(column), -1); }

    const QHash<QString, qsizetype>& FColumns;
    const QList<TCsvCell>& FCells;
    const QString& FFile;
};

QStringList readList(const QString& text)
{
    QStringList items;
    for (const QString& each : text.split(u';', Qt::SkipEmptyParts)) {
        items.append(each.trimmed());
    }
    return items;
}

qint64 readNumber(const QString& text)
{
    constexpr qint64 kMaxMember = 999'999'999'999; // the next ones go on from the greatest
    bool good = false;
    const qint64 number = text.toLongLong(&good);
    if (!good || number < 1 || number > kMaxMember) {
        throw EBooks(u'"' + text + QStringLiteral("\" is no number of a member"));
    }
    return number;
}

void importMembershipOf(TBooks& books, qint64 member, const TLine& line)
{
    TMembership membership = {line.value("from", readDay), line.value("to", readDay), {}};
    membership.zones = line.value("zones", [&](const QString& text) {
        books.needZones(readList(text));
        return readList(text);
    });
    line.value("from", [&](const QString&) { return books.addMembership(member, membership); });
}

void importMember(TBooks& books, const TLine& line)
{
    TNewMember member;
    member.name =
        line.value("name", [](const QString& text) { return readName(text, QStringLiteral("a member")); });
    if (line.has("number")) {
        member.number = line.value("number", readNumber);
    }
    if (line.has("suspended")) {
        member.suspended = line.value("suspended", readFlag);
    }
    if (line.has("inside")) {
        member.inside = line.value("inside", readFlag);
    }
    if (line.has("balance")) {
        member.balance = line.value("balance", readAmount);
    }
    const qint64 number = line.whole([&] { return books.addMember(member); });
    line.value("cards", [&](const QString& text) {
        for (const QString& card : readList(text)) {
            books.addCard(card, number);
        }
    });
    if (line.has("from") || line.has("to") || line.has("zones")) {
        importMembershipOf(books, number, line);
    }
}

void importCard(TBooks& books, const TLine& line)
{
    const qint64 member = line.value("member", [&](const QString& who) { return books.memberOf(who); });
    line.value("number", [&](const QString& card) { books.addCard(card, member); });
}

void importMembership(TBooks& books, const TLine& line)
{
    const qint64 member = line.value("member", [&](const QString& who) { return books.memberOf(who); });
    importMembershipOf(books, member, line);
}

void importGate(TBooks& books, const TLine& line)
{
    const TDirection direction = line.value("direction", readDirection);
    line.whole([&] { books.addGate({line.text("address"), line.text("zone"), direction}); });
}

void importProduct(TBooks& books, const TLine& line)
{
    const qint64 price = line.value("price", readAmount);
    line.whole([&] { books.addProduct(line.text("name"), price); });
}

void importLine(TBooks& books, TBookKind kind, const TLine& line)
{
    switch (kind) {
    case TBookKind::Members:
        return importMember(books, line);
    case TBookKind::Cards:
        return importCard(books, line);
    case TBookKind::Memberships:
        return importMembership(books, line);
    case TBookKind::Zones:
        return line.whole([&] { books.addZone(line.text("name")); });
    case TBookKind::Gates:
        return importGate(books, line);
    case TBookKind::Products:
        return importProduct(books, line);
    }
}

QHash<QString, qsizetype> columnsOf(const TCsv& csv, const TImportColumns& known, const QString& file)
{
    QHash<QString, qsizetype> columns;
    const auto fail = [&](const TCsvCell& cell, const QString& what) {
        throw EBooks(QStringLiteral("%1:%2:%3: %4").arg(file).arg(cell.line).arg(cell.column).arg(what));
    };
    for (qsizetype index = 0; index < csv.header.size(); ++index) {
        const TCsvCell& cell = csv.header[index];
        const QString name = cell.text.trimmed().toLower();
        if (!known.names.contains(name)) {
            fail(cell, QStringLiteral("\"%1\" is no column here; there are %2")
                           .arg(cell.text, known.names.join(QStringLiteral(", "))));
        }
        if (columns.contains(name)) {
            fail(cell, QStringLiteral("column \"%1\" is there twice").arg(name));
        }
        columns[name] = index;
    }
    for (const QString& name : known.names.first(known.needed)) {
        if (!columns.contains(name)) {
            fail(csv.header[0], QStringLiteral("column \"%1\" is missing").arg(name));
        }
    }
    return columns;
}

} // namespace

TImportColumns importColumns(TBookKind kind)
{
    const auto columns = [](const char* names, int needed) {
        return TImportColumns{QString::fromLatin1(names).split(u' '), needed};
    };
    switch (kind) {
    case TBookKind::Members:
        return columns("name number suspended inside balance cards from to zones", 1);
    case TBookKind::Cards:
        return columns("number member name", 2);
    case TBookKind::Memberships:
        return columns("member from to zones number name", 4);
    case TBookKind::Zones:
        return columns("name", 1);
    case TBookKind::Gates:
        return columns("address zone direction", 3);
    case TBookKind::Products:
        break;
    }
    return columns("name price", 2);
}

int importCsv(TBooks& books, TBookKind kind, const QByteArray& bytes, const QString& name)
{
    const TCsv csv = parseCsv(bytes, name);
    const QHash<QString, qsizetype> columns = columnsOf(csv, importColumns(kind), name);
    books.together([&] {
        for (const QList<TCsvCell>& cells : csv.rows) {
            importLine(books, kind, TLine(columns, cells, name));
        }
    });
    return int(csv.rows.size());
}

} // namespace tnv5::host
