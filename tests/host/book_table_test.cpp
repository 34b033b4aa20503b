#include "support/text_printers.h"
#include "tnv5/host/books/book_table.h"
#include "tnv5/testing/manual_clock.h"

#include <gtest/gtest.h>

namespace tnv5::host {
namespace {

const QList<TColumn> kColumns = {{QStringLiteral("number"), TColumnKind::Number},
                                 {QStringLiteral("name")},
                                 {QStringLiteral("balance"), TColumnKind::Cents},
                                 {QStringLiteral("in"), TColumnKind::Flag},
                                 {QStringLiteral("zones"), TColumnKind::List}};
const QList<QVariantList> kRows = {
    {1, QStringLiteral("Anna Berg"), 1'250, true, QStringList{QStringLiteral("hall"), QStringLiteral("gym")}},
    {12, QStringLiteral("Bo, \"B\""), -5, false, QStringList()}};

QStringList written(TTableFormat format, const QList<QVariantList>& rows)
{
    QStringList lines;
    TTableWriter writer(format, kColumns, [&](const QString& line) { lines.append(line); });
    for (const QVariantList& row : rows) {
        writer.add({row});
    }
    writer.end();
    return lines;
}

TEST(BookTable, Aligned)
{
    QStringList lines;
    TTableWriter writer(TTableFormat::Aligned, kColumns, [&](const QString& line) { lines.append(line); });
    writer.add(kRows);
    writer.end();
    EXPECT_EQ(lines, QStringList({QStringLiteral("number  name       balance  in   zones"),
                                  QStringLiteral("     1  Anna Berg    12.50  yes  hall; gym"),
                                  QStringLiteral("    12  Bo, \"B\"      -0.05  no")}));
}

TEST(BookTable, Csv)
{
    EXPECT_EQ(written(TTableFormat::Csv, kRows),
              QStringList({QStringLiteral("number,name,balance,in,zones"),
                           QStringLiteral("1,Anna Berg,12.50,yes,\"hall;gym\""),
                           QStringLiteral("12,\"Bo, \"\"B\"\"\",-0.05,no,")}));
}

TEST(BookTable, Json)
{
    const QString anna = QStringLiteral(
        "{\"balance\":1250,\"in\":true,\"name\":\"Anna Berg\",\"number\":1,\"zones\":[\"hall\",\"gym\"]}");
    const QString bo =
        QStringLiteral("{\"balance\":-5,\"in\":false,\"name\":\"Bo, \\\"B\\\"\",\"number\":12,\"zones\":[]}");
    EXPECT_EQ(written(TTableFormat::Json, kRows),
              QStringList({QStringLiteral("["), anna + u',', bo, QStringLiteral("]")}));
    EXPECT_EQ(written(TTableFormat::JsonLines, kRows), QStringList({anna, bo}));
}

TEST(BookTable, WithoutRows)
{
    EXPECT_EQ(written(TTableFormat::Aligned, {}),
              QStringList({QStringLiteral("number  name  balance  in  zones")}));
    EXPECT_EQ(written(TTableFormat::Csv, {}), QStringList({QStringLiteral("number,name,balance,in,zones")}));
    EXPECT_EQ(written(TTableFormat::Json, {}), QStringList({QStringLiteral("["), QStringLiteral("]")}));
    EXPECT_EQ(written(TTableFormat::JsonLines, {}), QStringList());
}

class TZoneTest : public ::testing::TestWithParam<std::pair<const char*, const char*>>
{
protected:
    TZoneTest() : before(qgetenv("TZ"))
    {
        qputenv("TZ", GetParam().first);
        tzset();
    }
    ~TZoneTest() override
    {
        before.isNull() ? qunsetenv("TZ") : qputenv("TZ", before);
        tzset();
    }

    QByteArray before;
};

TEST_P(TZoneTest, TimesHaveTheirZone)
{
    const testkit::TManualClock clock(testkit::TManualClock::at(12, 0, 0, 250));
    EXPECT_EQ(timeForPeople(platform::Now()),
              QStringLiteral("2026-01-05 12:00:00 ") + QString::fromLatin1(GetParam().second));
    EXPECT_EQ(timeForPrograms(platform::Now()),
              QStringLiteral("2026-01-05T12:00:00.250") + QString::fromLatin1(GetParam().second));
    EXPECT_EQ(timeForPeople(0), QString());
    EXPECT_EQ(timeForPrograms(0), QString());
}

INSTANTIATE_TEST_SUITE_P(Zones, TZoneTest,
                         ::testing::Values(std::pair("UTC0", "+00:00"), std::pair("XST-1", "+01:00"),
                                           std::pair("XST+3:30", "-03:30")));

} // namespace
} // namespace tnv5::host
