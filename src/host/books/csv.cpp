#include "tnv5/host/books/csv.h"

#include "tnv5/host/books/books_error.h"

#include <QStringDecoder>
#include <QStringTokenizer>
#include <algorithm>

namespace tnv5::host {

namespace {

constexpr qsizetype kMostBytes = qsizetype{64} * 1024 * 1024;

/// A walk through the text that knows where it is.
class TCsvReader
{
public:
    TCsvReader(const QString& text, QString name) : FText(text), FName(std::move(name)) {}

    TCsv read()
    {
        FSeparator = separator();
        TCsv csv;
        while (!atEnd()) {
            QList<TCsvCell> cells = line();
            if (std::all_of(cells.begin(), cells.end(),
                            [](const TCsvCell& each) { return each.text.isEmpty(); })) {
                continue; // spreadsheets leave such lines
            }
            if (csv.header.isEmpty()) {
                csv.header = std::move(cells);
                continue;
            }
            if (cells.size() != csv.header.size()) {
                fail(cells.back(), QStringLiteral("the line has %1 values, the first one has %2")
                                       .arg(cells.size())
                                       .arg(csv.header.size()));
            }
            csv.rows.append(std::move(cells));
        }
        if (csv.header.isEmpty()) {
            fail({{}, 1, 1}, QStringLiteral("the file is empty; its first line names the columns"));
        }
        return csv;
    }

private:
    // Of the first line that is not empty.
    QChar separator() const
    {
        for (const QStringView line : QStringTokenizer(QStringView(FText), u'\n')) {
            if (!line.trimmed().isEmpty()) {
                return comma(line) ? u',' : u';';
            }
        }
        return u',';
    }

    // Whether commas separate: there is one, or there is no semicolon either.
    static bool comma(QStringView header)
    {
        bool quoted = false;
        bool semicolon = false;
        for (const QChar c : header) {
            quoted = quoted != (c == u'"');
            if (!quoted && c == u',') {
                return true;
            }
            semicolon = semicolon || (!quoted && c == u';');
        }
        return !semicolon;
    }

    bool atEnd() const { return FAt >= FText.size(); }
    bool atLineEnd() const
    {
        return atEnd() || FText[FAt] == u'\n' ||
               (FText[FAt] == u'\r' && FAt + 1 < FText.size() && FText[FAt + 1] == u'\n');
    }

    QChar take()
    {
        const QChar c = FText[FAt++];
        if (c == u'\n') {
            ++FLine;
            FColumn = 1;
        } else if (!c.isLowSurrogate()) {
            ++FColumn;
        }
        return c;
    }

    QList<TCsvCell> line()
    {
        QList<TCsvCell> cells = {cell()};
        while (!atLineEnd()) {
            take(); // the separator
            cells.append(cell());
        }
        while (!atEnd() && take() != u'\n') { // one end
        }
        return cells;
    }

    TCsvCell cell()
    {
        TCsvCell cell = {{}, FLine, FColumn};
        if (!atEnd() && FText[FAt] == u'"') {
            quoted(cell);
            return cell;
        }
        while (!atLineEnd() && FText[FAt] != FSeparator) {
            if (FText[FAt] == u'"') {
                fail({{}, FLine, FColumn},
                     QStringLiteral(
                         "a quotation mark within a value; the value must be in marks, and this one "
                         "doubled"));
            }
            cell.text += take();
        }
        return cell;
    }

    void quoted(TCsvCell& cell)
    {
        take();
        for (;;) {
            if (atEnd()) {
                fail(cell, QStringLiteral("the quotation mark is never closed"));
            }
            if (const QChar c = take(); c != u'"') {
                cell.text += c;
            } else if (!atEnd() && FText[FAt] == u'"') {
                cell.text += take();
            } else {
                break;
            }
        }
        if (!atLineEnd() && FText[FAt] != FSeparator) {
            fail({{}, FLine, FColumn}, QStringLiteral("there is something after the closing quotation mark"));
        }
    }

    [[noreturn]] void fail(const TCsvCell& where, const QString& what) const
    {
        throw EBooks(QStringLiteral("%1:%2:%3: %4").arg(FName).arg(where.line).arg(where.column).arg(what));
    }

    const QString& FText;
    QString FName;
    QChar FSeparator = u',';
    qsizetype FAt = 0;
    int FLine = 1;
    int FColumn = 1;
};

// The first line that is no UTF-8.
[[noreturn]] void failToDecode(const QByteArray& bytes, const QString& name)
{
    int number = 0;
    for (const QByteArray& line : bytes.split('\n')) {
        ++number;
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString text = decoder.decode(line);
        if (decoder.hasError()) {
            throw EBooks(QStringLiteral("%1:%2:%3: the file is no UTF-8 text here")
                             .arg(name)
                             .arg(number)
                             .arg(text.indexOf(QChar::ReplacementCharacter) + 1));
        }
    }
    throw EBooks(QStringLiteral("%1:%2:1: the file is no UTF-8 text").arg(name).arg(number));
}

} // namespace

TCsv parseCsv(const QByteArray& bytes, const QString& name)
{
    if (bytes.size() > kMostBytes) {
        throw EBooks(QStringLiteral("%1:1:1: the file is larger than 64 MiB").arg(name));
    }
    QStringDecoder decoder(QStringDecoder::Utf8); // leaves out the mark
    const QString text = decoder.decode(bytes);
    if (decoder.hasError()) {
        failToDecode(bytes, name);
    }
    return TCsvReader(text, name).read();
}

QString csvLine(const QStringList& values)
{
    QStringList cells;
    for (const QString& value : values) {
        const bool plain = std::none_of(value.begin(), value.end(), [](QChar c) {
            return c == u',' || c == u';' || c == u'"' || c == u'\n' || c == u'\r' ||
                   c == QChar::ByteOrderMark; // at the beginning of a file it would be left out
        });
        QString cell = value;
        // An empty line would count for nothing.
        cells.append(plain && (!value.isEmpty() || values.size() > 1)
                         ? cell
                         : u'"' + cell.replace(u'"', QStringLiteral("\"\"")) + u'"');
    }
    return cells.join(u',');
}

} // namespace tnv5::host
