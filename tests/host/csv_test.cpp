#include "support/text_printers.h"
#include "tnv5/host/books/books_error.h"
#include "tnv5/host/books/csv.h"

#include <gtest/gtest.h>

namespace tnv5::host {
namespace {

// "1:1 a|1:3 b" for each line, the first line too.
QStringList read(const QByteArray& bytes)
{
    QStringList lines;
    const TCsv csv = parseCsv(bytes, QStringLiteral("x.csv"));
    for (const QList<TCsvCell>& cells : QList<QList<TCsvCell>>{csv.header} + csv.rows) {
        QStringList texts;
        for (const TCsvCell& cell : cells) {
            texts.append(QStringLiteral("%1:%2 %3").arg(cell.line).arg(cell.column).arg(cell.text));
        }
        lines.append(texts.join(u'|'));
    }
    return lines;
}

QString failure(const QByteArray& bytes)
{
    try {
        parseCsv(bytes, QStringLiteral("x.csv"));
    } catch (const EBooks& error) {
        return error.message();
    }
    return {};
}

TEST(Csv, ValuesAndTheirPlaces)
{
    EXPECT_EQ(read("name,card\r\nAnna Berg,12\r\n"),
              QStringList({QStringLiteral("1:1 name|1:6 card"), QStringLiteral("2:1 Anna Berg|2:11 12")}));
    EXPECT_EQ(read("a\nb"), QStringList({QStringLiteral("1:1 a"), QStringLiteral("2:1 b")}));
    EXPECT_EQ(read("a,b\n,1\n"), QStringList({QStringLiteral("1:1 a|1:3 b"), QStringLiteral("2:1 |2:2 1")}));
}

TEST(Csv, QuotationMarks)
{
    EXPECT_EQ(
        read("a,b\n\"Berg, Anna\",\"says \"\"hello\"\"\"\n\"two\r\nlines\",x\ny,z\n"),
        QStringList({QStringLiteral("1:1 a|1:3 b"), QStringLiteral("2:1 Berg, Anna|2:14 says \"hello\""),
                     QStringLiteral("3:1 two\r\nlines|4:8 x"), QStringLiteral("5:1 y|5:3 z")}));
    EXPECT_EQ(read("a\n\"\"\"\"\n"), QStringList({QStringLiteral("1:1 a"), QStringLiteral("2:1 \"")}));
}

TEST(Csv, EmptyLinesCountForNothing)
{
    EXPECT_EQ(read("\n\r\na\n\nb\n\n"), QStringList({QStringLiteral("3:1 a"), QStringLiteral("5:1 b")}));
    EXPECT_EQ(read("\r\na;b\n;\n1;2\n;;;\n"), // as spreadsheets leave them
              QStringList({QStringLiteral("2:1 a|2:3 b"), QStringLiteral("4:1 1|4:3 2")}));
}

TEST(Csv, AMarkAtTheBeginningIsLeftOut)
{
    EXPECT_EQ(read("\xEF\xBB\xBFname\n\xD0\x90\xD0\xBD\xD0\xBD\xD0\xB0\n"),
              QStringList({QStringLiteral("1:1 name"), QStringLiteral("2:1 Анна")}));
    EXPECT_EQ(csvLine({QStringLiteral("\uFEFFa"), QStringLiteral("b")}), QStringLiteral("\"\uFEFFa\",b"));
}

TEST(Csv, ColumnsCountCharacters)
{
    EXPECT_EQ(
        read("\xF0\x9F\x98\x80,\xD0\x90,c\n1,2,3"),
        QStringList({QStringLiteral("1:1 \U0001F600|1:3 А|1:5 c"), QStringLiteral("2:1 1|2:3 2|2:5 3")}));
}

TEST(Csv, SemicolonsSeparateWhereThereIsNoComma)
{
    EXPECT_EQ(read("a;b\n1,5;2\n"),
              QStringList({QStringLiteral("1:1 a|1:3 b"), QStringLiteral("2:1 1,5|2:5 2")}));
    EXPECT_EQ(read("\"a,\";b\n1;2\n"),
              QStringList({QStringLiteral("1:1 a,|1:6 b"), QStringLiteral("2:1 1|2:3 2")}));
    EXPECT_EQ(read("a;b,c\n1;1,2\n"),
              QStringList({QStringLiteral("1:1 a;b|1:5 c"), QStringLiteral("2:1 1;1|2:5 2")}));
}

TEST(Csv, WhatIsWrongAndWhere)
{
    EXPECT_EQ(failure(""), QStringLiteral("x.csv:1:1: the file is empty; its first line names the columns"));
    EXPECT_EQ(failure("a,b\n1,2\n1,2,3\n"),
              QStringLiteral("x.csv:3:5: the line has 3 values, the first one has 2"));
    EXPECT_EQ(failure("a,b\n1\n"), QStringLiteral("x.csv:2:1: the line has 1 values, the first one has 2"));
    EXPECT_EQ(failure("a,b\n1,\"2\n"), QStringLiteral("x.csv:2:3: the quotation mark is never closed"));
    EXPECT_EQ(
        failure("a,b\n1,2\"\n"),
        QStringLiteral("x.csv:2:4: a quotation mark within a value; the value must be in marks, and this one "
                       "doubled"));
    EXPECT_EQ(failure("a,b\n1,\"2\"3\n"),
              QStringLiteral("x.csv:2:6: there is something after the closing quotation mark"));
    EXPECT_EQ(failure("a\nb\nx\xFFy\n"), QStringLiteral("x.csv:3:2: the file is no UTF-8 text here"));
    EXPECT_EQ(failure("a\n" + QByteArray(64 * 1024 * 1024, 'x')),
              QStringLiteral("x.csv:1:1: the file is larger than 64 MiB"));
}

TEST(Csv, WhatIsWrittenIsReadBack)
{
    const QStringList values = {QStringLiteral("plain"), QStringLiteral("a,b"),        QStringLiteral("a;b"),
                                QStringLiteral("\"x\""), QStringLiteral("two\nlines"), QString(),
                                QStringLiteral("cr\rx")};
    EXPECT_EQ(csvLine(values),
              QStringLiteral("plain,\"a,b\",\"a;b\",\"\"\"x\"\"\",\"two\nlines\",,\"cr\rx\""));
    const QString line = csvLine(values);
    const TCsv csv = parseCsv((line + u'\n' + line).toUtf8(), QString());
    ASSERT_EQ(csv.rows.size(), 1);
    for (qsizetype index = 0; index < values.size(); ++index) {
        EXPECT_EQ(csv.rows[0][index].text, values[index]);
    }
    EXPECT_EQ(csvLine({QString()}), QStringLiteral("\"\""));
}

} // namespace
} // namespace tnv5::host
