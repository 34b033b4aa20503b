// Cutting a routed line into its fields.

#include "tnv5/connector/routed_line.h"
#include "tnv5/d24/d24_device.h"

#include "support/text_printers.h"

#include <QRandomGenerator>
#include <gtest/gtest.h>
#include <iterator>

namespace {

using namespace tnv5;
using namespace tnv5::connector;

struct TRow
{
    QString line;
    QString ip;
    QString device;
    QString type;
    QString status;
    QString shortStatus;
    QString card;
};

const TRow kRows[] = {
    {"$10.0.0.5:001TRQ12345678AB", "10.0.0.5", "001T", "T", "RQ12345678", "RQ", "12345678"},
    {"$10.0.0.5:002GRQ12345678AB", "10.0.0.5", "002G", "G", "RQ12345678", "RQ", "12345678"},
    {"$10.0.0.5:003IRQ12345678AB", "10.0.0.5", "003I", "I", "RQ12345678", "RQ", "12345678"},
    {"#10.0.0.5:001TPING00", "10.0.0.5", "001T", "T", "PING", "PI", "NG"},
    // any other type letter counts as a turnstile
    {"$1:001XRQ7AB", "1", "001X", "T", "RQ7", "RQ", "7"},
    {"$1:001DRQ7AB", "1", "001D", "T", "RQ7", "RQ", "7"},
    {"$1:001gRQ7AB", "1", "001g", "T", "RQ7", "RQ", "7"},
    {"$1:001iRQ7AB", "1", "001i", "T", "RQ7", "RQ", "7"},
    {"$1:GI0 RQ7AB", "1", "GI0 ", "T", "RQ7", "RQ", "7"},
    // the first ":" counts
    {"$1:2:3GRQ7:8AB", "1", "2:3G", "G", "RQ7:8", "RQ", "7:8"},
    {"$:001TRQ7AB", "", "001T", "T", "RQ7", "RQ", "7"},
    {":001TRQ7AB", "", "001T", "T", "RQ7", "RQ", "7"},
    {"$$#:001TRQ7AB", "$#", "001T", "T", "RQ7", "RQ", "7"},
    {"x10.0.0.5:001TRQ7AB", "10.0.0.5", "001T", "T", "RQ7", "RQ", "7"},
    // short ones; two trailing characters always fall
    {"$1:001TRQ7A", "1", "001T", "T", "RQ", "RQ", ""},
    {"$1:001TRQAB", "1", "001T", "T", "RQ", "RQ", ""},
    {"$1:001TRQA", "1", "001T", "T", "R", "R", ""},
    {"$1:001TRQ", "1", "001T", "T", "", "", ""},
    {"$1:001TR", "1", "001T", "T", "", "", ""},
    {"$1:001T", "1", "001T", "T", "", "", ""},
    {"$1:001G", "1", "001G", "G", "", "", ""},
    {"$1:001", "1", "001", "T", "", "", ""},
    {"$1:", "1", "", "T", "", "", ""},
    {"$:", "", "", "T", "", "", ""},
    {":", "", "", "T", "", "", ""},
    {"", "", "", "T", "", "", ""},
    {"$", "", "$", "T", "", "", ""},
    // without ":" everything is cut from the whole line
    {"$001TRQ12345678AB", "", "$001", "T", "TRQ12345678", "TR", "Q12345678"},
    {"#00GPING00", "", "#00G", "G", "PING", "PI", "NG"},
    {"abcIstatexx", "", "abcI", "I", "state", "st", "ate"},
    // blanks and other letters stay
    {"$ 1 :001T RQ 7 AB", " 1 ", "001T", "T", " RQ 7 ", " R", "Q 7 "},
    {"$Я:ДверGВход00", "Я", "Двер", "T", "GВход", "GВ", "ход"},
};

TEST(Line, FieldsAreCut)
{
    for (const TRow& row : kRows) {
        SCOPED_TRACE(row.line.toStdString());
        EXPECT_EQ(ipOf(row.line).toString(), row.ip);
        EXPECT_EQ(deviceOf(row.line).toString(), row.device);
        EXPECT_EQ(deviceTypeOf(row.line).toString(), row.type);
        EXPECT_EQ(statusOf(row.line).toString(), row.status);
        EXPECT_EQ(shortStatusOf(row.line).toString(), row.shortStatus);
        EXPECT_EQ(cardNumberOf(row.line).toString(), row.card);
    }
}

TEST(Line, ParseMessageNamesThem)
{
    const auto parse = &d24::TTurnStylerDeviceD24::ParseMessage; // needs no instance
    for (const TRow& row : kRows) {
        SCOPED_TRACE(row.line.toStdString());
        EXPECT_EQ(parse("IP", row.line), row.ip);
        EXPECT_EQ(parse("DEVICE", row.line), row.device);
        EXPECT_EQ(parse("DEVICETYPE", row.line), row.type);
        EXPECT_EQ(parse("STATUS", row.line), row.status);
        EXPECT_EQ(parse("STATUSSHORT", row.line), row.shortStatus);
        EXPECT_EQ(parse("CARDNUMBER", row.line), row.card);
    }
}

TEST(Line, ParseMessageKnowsNoOtherName)
{
    for (const char* name : {"", "CRC", "ip", "STATUSHARD", "DEVICETYPE ", "CARD"}) {
        EXPECT_EQ(d24::TTurnStylerDeviceD24::ParseMessage(name, "$10.0.0.5:001TRQ12345678AB"), "") << name;
    }
}

TEST(Line, ALongOneKeepsItsCard)
{
    const QString card(100'000, u'7');
    EXPECT_EQ(cardNumberOf("$1:001TRQ" + card + "AB").toString(), card);
    const QString ip(100'000, u'9');
    EXPECT_EQ(ipOf(u'$' + ip + ":001TRQ7AB").toString(), ip);
}

/// The grammar, said in another way: character by character, positions from 1.
QString field(const QString& line, int from, int count)
{
    QString text;
    for (int position = from; position < from + count; ++position) {
        if (position >= 1 && position <= line.size()) {
            text += line[position - 1];
        }
    }
    return text;
}

TEST(Line, RandomLinesAreCutByTheSameRule)
{
    QRandomGenerator random(24);
    const QString letters = QStringLiteral("$#:0TGIRQ ");
    for (int round = 0; round < 20'000; ++round) {
        QString line;
        for (quint32 left = random.bounded(24U); left > 0; --left) {
            line += letters[random.bounded(int(letters.size()))];
        }
        SCOPED_TRACE(line.toStdString());
        const int colon = int(line.indexOf(u':')) + 1;
        const int begin = colon + 1;
        const QString rest = field(line, begin, int(line.size()));
        const QString letter = field(rest, 4, 1);
        const QString status = field(rest, 5, int(rest.size()) - 6);
        ASSERT_EQ(ipOf(line).toString(), field(line, 2, colon - 2));
        ASSERT_EQ(deviceOf(line).toString(), field(rest, 1, 4));
        ASSERT_EQ(deviceTypeOf(line).toString(), letter == "G" || letter == "I" ? letter : "T");
        ASSERT_EQ(statusOf(line).toString(), status);
        ASSERT_EQ(shortStatusOf(line).toString(), field(status, 1, 2));
        ASSERT_EQ(cardNumberOf(line).toString(), field(status, 3, int(status.size())));
    }
}

} // namespace
