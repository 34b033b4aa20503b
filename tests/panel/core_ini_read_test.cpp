// Gates out of the bytes of an ini file.

#include "core_records.h"
#include "tnv5/panel/gate_ini.h"
#include "tnv5/platform/code_page.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using namespace tnv5::panel;

std::string read(const QByteArray& content, const QString& section = "Gates")
{
    return shown(readGates(content, section));
}

TEST(IniRead, ExampleSection)
{
    EXPECT_EQ(read("[Gates]\nItemsCount=2\nGateA1=01A\nGateB1=02A\nCaption1=Main entrance\nEntryA1=1\n"
                   "EntryB1=2\nGateA2=03D\nGateB2=\nCaption2=Staff door\nEntryA2=3\nEntryB2=0\n"),
              "01A|02A|Main entrance|1|2; 03D||Staff door|3|0");
}

TEST(IniRead, CountDecides)
{
    EXPECT_EQ(read("[Gates]\nGateA1=01A\n"), "");
    EXPECT_EQ(read("[Gates]\nGateA1=01A\nItemsCount=0\n"), "");
    EXPECT_EQ(read("[Gates]\nGateA1=01A\nItemsCount=-3\n"), "");
    EXPECT_EQ(read("[Gates]\nGateA1=01A\nGateA2=02A\nItemsCount=1\n"), "01A|||0|0");
    EXPECT_EQ(read("[Gates]\nItemsCount=2\nCaption2=x\nEntryB2=-7"), "|||0|0; ||x|0|-7");
    EXPECT_EQ(read("[Gates]\nItemsCount=many\nGateA1=01A\n"), "");
    EXPECT_EQ(read(""), "");
    EXPECT_EQ(read("ItemsCount=1\n"), "");
    EXPECT_EQ(read("[Other]\nItemsCount=1\n"), "");
}

TEST(IniRead, AtMostSoManyGates)
{
    EXPECT_EQ(readGates("[Gates]\nItemsCount=100000\n", "Gates").size(), 100'000U);
    EXPECT_EQ(readGates("[Gates]\nItemsCount=100001\n", "Gates").size(), 100'000U);
    const auto most = readGates("[Gates]\nItemsCount=2147483647\nGateA100000=z\n", "Gates");
    EXPECT_EQ(most.size(), 100'000U);
    EXPECT_EQ(most.back().GateA, "z");
    EXPECT_EQ(readGates("[Gates]\nItemsCount=2147483648\n", "Gates").size(), 0U);
}

TEST(IniRead, Numbers)
{
    const auto entry = [](const QByteArray& text) {
        return readGates("[Gates]\nItemsCount=1\nEntryA1=" + text + "\n", "Gates").front().EntryA;
    };
    EXPECT_EQ(entry("12"), 12);
    EXPECT_EQ(entry(" \t-12 "), -12);
    EXPECT_EQ(entry("007"), 7);
    EXPECT_EQ(entry("-0"), 0);
    EXPECT_EQ(entry("2147483647"), 2'147'483'647);
    EXPECT_EQ(entry("-2147483648"), -2'147'483'647 - 1);
    for (const char* const none :
         {"", "-", "+5", "--5", "- 5", "5-", "1 2", "0x10", "$10", "1.0", "1e3", "five", "2147483648",
          "-2147483649", "99999999999999999999", "\"5\"", "5;", "\xd9\xa5"}) {
        EXPECT_EQ(entry(none), 0) << none;
    }
}

TEST(IniRead, SectionsAndKeysInAnyCase)
{
    EXPECT_EQ(read("[gATES]\nITEMSCOUNT=1\ngatea1=01A\nGATEB1=02A\ncaption1=x\nENTRYa1=1\nentryB1=2\n"),
              "01A|02A|x|1|2");
    EXPECT_EQ(read("[ВОРОТА]\nItemsCount=1\n", "ворота"), "|||0|0");
    EXPECT_EQ(read(platform::toWire(u"[ВОРОТА]\nItemsCount=1\nCaption1=Вход\n"), "Ворота"), "||Вход|0|0");
}

TEST(IniRead, BlanksAroundNamesDoNotCount)
{
    EXPECT_EQ(read("[ Gates\t]\nItemsCount=1\n"), "|||0|0");
    EXPECT_EQ(read("  [Gates]\nItemsCount=1\n"), "|||0|0");
    EXPECT_EQ(read("[Gates]\nItemsCount=1\n", " Gates "), "|||0|0");
    EXPECT_EQ(read("[Ga tes]\nItemsCount=1\n"), "");
    EXPECT_EQ(read("[Gates]\n  ItemsCount\t=1\n GateA1 = 01A\n"), "01A|||0|0");
}

TEST(IniRead, Headers)
{
    EXPECT_EQ(read("[Gates] ; those of the club\nItemsCount=1\n"), "|||0|0");
    EXPECT_EQ(read("[Gates]x]\nItemsCount=1\n", "Gates]x"), "|||0|0");
    EXPECT_EQ(read("[Gates\nItemsCount=1\n"), "");
    EXPECT_EQ(read(";[Gates]\nItemsCount=1\n"), "");
    EXPECT_EQ(read("[]\nItemsCount=1\n"), "");
    EXPECT_EQ(read("[Gates]\nItemsCount=1\n[Gates2]\nGateA1=01A\n"), "|||0|0");
}

TEST(IniRead, TheFirstOfSeveralCounts)
{
    EXPECT_EQ(read("[Gates]\nItemsCount=1\nGateA1=a\nGATEA1=b\nItemsCount=2\n[Gates]\nGateA1=c\nGateB1=d\n"),
              "a|||0|0");
}

TEST(IniRead, TextsAreTrimmedAndElseAsTheyAre)
{
    EXPECT_EQ(read("[Gates]\nItemsCount=1\nCaption1= \t a  b \t\n"), "||a  b|0|0");
    EXPECT_EQ(read("[Gates]\nItemsCount=1\nCaption1=\"quoted\"\n"), "||\"quoted\"|0|0");
    EXPECT_EQ(read("[Gates]\nItemsCount=1\nCaption1=a=b;c#d\n"), "||a=b;c#d|0|0");
    EXPECT_EQ(read("[Gates]\nItemsCount=1\nCaption1=<<<END\nGateA1=a\nEND\n"), "a||<<<END|0|0");
    EXPECT_EQ(read("[Gates]\nItemsCount=1\nCaption1=[x]\nGateA1=1\n"), "1||[x]|0|0");
    EXPECT_EQ(read("[Gates]\nItemsCount=1\nCaption1=a\\\nGateA1=1\n"), "1||a\\|0|0");
}

TEST(IniRead, Remarks)
{
    EXPECT_EQ(read("; x\n\n[Gates]\n;GateA1=no\n#GateB1=no\n ; Caption1=no\nItemsCount=1\n"), "|||0|0");
}

TEST(IniRead, LineBreaksOfEverySystem)
{
    EXPECT_EQ(read("[Gates]\r\nItemsCount=1\r\nGateA1=01A\r\n"), "01A|||0|0");
    EXPECT_EQ(read("[Gates]\rItemsCount=1\rGateA1=01A\r"), "01A|||0|0");
    EXPECT_EQ(read("[Gates]\r\nItemsCount=1\nGateA1=01A"), "01A|||0|0");
}

TEST(IniRead, Encodings)
{
    const QString text = "[Gates]\nItemsCount=1\nCaption1=Вхід №1\n";
    EXPECT_EQ(read(text.toUtf8()), "||Вхід №1|0|0");
    EXPECT_EQ(read("\xef\xbb\xbf" + text.toUtf8()), "||Вхід №1|0|0");
    EXPECT_EQ(read(platform::toWire(text)), "||Вхід №1|0|0");
    platform::setCodePage("ISO-8859-1");
    EXPECT_EQ(read("[Gates]\nItemsCount=1\nCaption1=\xe9t\xe9\n"), "||été|0|0");
    platform::setCodePage("windows-1251");
}

TEST(IniRead, AMarkElsewhereIsACharacter)
{
    EXPECT_EQ(read("[Gates]\nItemsCount=1\nEntryA1=\xef\xbb\xbf"
                   "7\nCaption1=\xef\xbb\xbf"
                   "x\n"),
              "||\xef\xbb\xbfx|0|0");
    EXPECT_EQ(read("; x\n\xef\xbb\xbf[Gates]\nItemsCount=1\n"), "");
    EXPECT_EQ(read("\xef\xbb\xbf\xef\xbb\xbf[Gates]\nItemsCount=1\n"), "");
}

TEST(IniRead, Garbage)
{
    const QByteArray nothing("[Gates]\n=\n==\nx\n[\n]\na\0ItemsCount=5\n", 33);
    EXPECT_EQ(read(nothing), "");
    EXPECT_EQ(read(QByteArray("[Gates]\nItemsCount=1\nCaption1=a\0b\nGateA1=1\n", 42)), "1||a b|0|0");
    EXPECT_EQ(read(QByteArray("[Gates]\n\x01"
                              "0=.\nItemsCount=1\n")),
              "|||0|0");
    EXPECT_EQ(read(QByteArray(100'000, '[')), "");
    EXPECT_EQ(read(QByteArray("\xff\xfe[\0G\0", 6)), "");
    EXPECT_EQ(read("\xef\xbb\xbf[Gates]\nItemsCount=1\nCaption1=a\xff"
                   "b\n"),
              "||a\xef\xbf\xbd"
              "b|0|0");
}

} // namespace
