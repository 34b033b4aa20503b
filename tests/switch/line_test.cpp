// Cutting the lines of relay boards, and the commands to them.

#include "switch_fixture.h"
#include "tnv5/switch/switch_line.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using namespace tnv5::switching;

struct TRow
{
    QString line;
    QString rela;
    QString relaOnOff;
    QString relaTime;
    QString relay;
    QString relayOnOff;
};

const TRow kRows[] = {
    {"$0.0.0.0:000ASS1N5.1.2026 12:00:00", "1", "N", "5.1.2026 12:00:00", "", ""},
    {"$0.0.0.0:000ASS2F", "2", "F", "", "", ""},
    {"$0.0.0.0:000ASS3", "3", "", "", "", ""},
    {"$0.0.0.0:000ASS", "", "", "", "", ""},
    {"#0.0.0.0:000ARELAY1Y4F", "L", "A", "Y1Y4F", "1", "Y"},
    {"#0.0.0.0:000ARELAY2N00", "L", "A", "Y2N00", "2", "N"},
    {"#0.0.0.0:000ARELAY", "L", "A", "Y", "", ""},
    {"#0.0.0.0:000ARELAY5", "L", "A", "Y5", "5", ""},
    {"#RELAY9N:000ARELAY1Y00", "L", "A", "Y1Y00", "9", "N"}, // the first one counts
    {"$0.0.0.0:a:000ASS1N", "S", "S", "1N", "", ""},         // the first ":" counts
    {"#nothing at all", "n", "g", " at all", "", ""},        // without ":" the whole line
    {"", "", "", "", "", ""},
    {"$", "", "", "", "", ""},
    {":", "", "", "", "", ""},
    {"$Я:ДверРЛ4НЗима", "4", "Н", "Зима", "", ""},
};

TEST(Line, FieldsAreCut)
{
    for (const TRow& row : kRows) {
        SCOPED_TRACE(row.line.toStdString());
        EXPECT_EQ(reportedRelay(row.line).toString(), row.rela);
        EXPECT_EQ(reportedState(row.line).toString(), row.relaOnOff);
        EXPECT_EQ(reportedTime(row.line).toString(), row.relaTime);
        EXPECT_EQ(relayNumber(row.line).toString(), row.relay);
        EXPECT_EQ(relayState(row.line).toString(), row.relayOnOff);
    }
}

TEST(Line, ATimeHasAtMostAHundredCharacters)
{
    const QString time(101, u'7');
    EXPECT_EQ(reportedTime("$1:000ASS1N" + time).toString(), time.left(100));
}

TEST(Line, ParseMessageNamesTheFields)
{
    const auto parse = &TSwitchDevice::ParseMessage; // needs no instance
    for (const TRow& row : kRows) {
        SCOPED_TRACE(row.line.toStdString());
        EXPECT_EQ(parse(row.line, "RELA"), row.rela);
        EXPECT_EQ(parse(row.line, "RELAONOFF"), row.relaOnOff);
        EXPECT_EQ(parse(row.line, "RELATIME"), row.relaTime);
        EXPECT_EQ(parse(row.line, "RELAY"), row.relay);
        EXPECT_EQ(parse(row.line, "RELAYONOFF"), row.relayOnOff);
    }
    const QString line = "$0.0.0.0:012GSS3N4.1.2026XY";
    EXPECT_EQ(parse(line, "IP"), "0.0.0.0");
    EXPECT_EQ(parse(line, "DEVICE"), "012G");
    EXPECT_EQ(parse(line, "DEVICETYPE"), "G");
    EXPECT_EQ(parse(line, "STATUS"), "SS3N4.1.2026");
    EXPECT_EQ(parse(line, "STATUSSHORT"), "SS");
    EXPECT_EQ(parse(line, "CARDNUMBER"), "3N4.1.2026");
    for (const char* type : {"A", "B", "T", "g", "i", "Я"}) {
        EXPECT_EQ(parse(QStringLiteral("$1:012") + type, "DEVICETYPE"), "T") << type;
    }
    EXPECT_EQ(parse("$1:012I", "DEVICETYPE"), "I");
    EXPECT_EQ(parse("$1:01", "DEVICETYPE"), "T");
    EXPECT_EQ(parse("no colon", "IP"), "");
    EXPECT_EQ(parse("no colon", "DEVICE"), "no c");
}

TEST(Line, ParseMessageKnowsNoOtherKey)
{
    for (const char* key : {"", "ip", "RELAYS", "TIME", "RELA ", "CARD"}) {
        EXPECT_EQ(TSwitchDevice::ParseMessage("$0.0.0.0:000ASS1N5.1.2026", key), "") << key;
    }
}

TEST(Command, RelaysOfAPairAreThoseOfItsBoards)
{
    const std::pair<const char*, const char*> rows[] = {
        {"1", "A1"}, {"2", "A2"}, {"3", "B1"}, {"4", "B2"}, {"5", "B3"},
    };
    for (const auto& [relay, board] : rows) {
        EXPECT_EQ(relayCommand("0.0.0.0", "012A", QString(relay)), QString("RL0.0.0.0:012") + board);
        EXPECT_EQ(relayCommand("0.0.0.0", "012B", QString(relay)), QString("RL0.0.0.0:012") + board);
    }
}

TEST(Command, AnyOtherRelayGivesNone)
{
    for (const char* relay : {"", "0", "6", "9", "11", "A", " ", "1 ", "٣"}) {
        EXPECT_EQ(relayCommand("0.0.0.0", "012A", QString(relay)), "") << relay;
    }
}

TEST(Command, AnAddressOfAnotherLengthIsThePairs)
{
    EXPECT_EQ(relayCommand("1.2.3.4", "012", u"1"), "RL1.2.3.4:012A1");
    EXPECT_EQ(relayCommand("1.2.3.4", "", u"1"), "RL1.2.3.4:A1");
    EXPECT_EQ(relayCommand("1.2.3.4", "01234", u"5"), "RL1.2.3.4:01234B3");
    EXPECT_EQ(relayCommand("", "Стол", u"4"), "RL:СтоB2");
}

} // namespace
