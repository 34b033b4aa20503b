// Any file as comma-separated values: it is read or refused with a place in it, lines are as long as the
// first, and what was read is read back when it is written again.

#include "fuzz_host.h"
#include "tnv5/host/books/books_error.h"
#include "tnv5/host/books/csv.h"

using namespace tnv5;

namespace {

using fuzz::require;

QStringList textsOf(const QList<host::TCsvCell>& cells)
{
    QStringList texts;
    for (const host::TCsvCell& cell : cells) {
        require(cell.line >= 1 && cell.column >= 1);
        texts.append(cell.text);
    }
    return texts;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    host::TCsv csv;
    try {
        csv = host::parseCsv(bytes, QStringLiteral("f"));
    } catch (const host::EBooks& error) {
        require(error.message().startsWith(QStringLiteral("f:")));
        return 0;
    }
    QString again;
    for (const QList<host::TCsvCell>& row : QList<QList<host::TCsvCell>>{csv.header} + csv.rows) {
        require(row.size() == csv.header.size());
        again += host::csvLine(textsOf(row)) + u'\n';
    }
    const host::TCsv back = host::parseCsv(again.toUtf8(), QStringLiteral("f"));
    require(textsOf(back.header) == textsOf(csv.header) && back.rows.size() == csv.rows.size());
    for (qsizetype row = 0; row < csv.rows.size(); ++row) {
        require(textsOf(back.rows[row]) == textsOf(csv.rows[row]));
    }
    return 0;
}
