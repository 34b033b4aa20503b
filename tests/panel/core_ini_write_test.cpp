// Gates into the bytes of an ini file.

#include "core_records.h"
#include "tnv5/panel/gate_ini.h"
#include "tnv5/platform/code_page.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using namespace tnv5::panel;

using TGates = std::vector<TGateRecord>;

const TGates kOne{{"01A", "02A", "Main", 1, 2}};
const QByteArray kOneText = "GateA1=01A\nGateB1=02A\nCaption1=Main\nEntryA1=1\nEntryB1=2\n";

QByteArray written(const QByteArray& before, const TGates& gates, const QString& section = "Gates")
{
    return writtenGates(before, section, gates);
}

TEST(IniWrite, NewFile)
{
    EXPECT_EQ(written("", {{"01A", "02A", "Main entrance", 1, 2}, {"03D", "", "Staff door", 3, 0}}),
              "[Gates]\nItemsCount=2\nGateA1=01A\nGateB1=02A\nCaption1=Main entrance\nEntryA1=1\nEntryB1=2\n"
              "GateA2=03D\nGateB2=\nCaption2=Staff door\nEntryA2=3\nEntryB2=0\n");
    EXPECT_EQ(written("", {}), "[Gates]\nItemsCount=0\n");
}

TEST(IniWrite, SectionIsWrittenAsItIsNamed)
{
    EXPECT_EQ(written("", {}, " Gates "), "[ Gates ]\nItemsCount=0\n");
    EXPECT_EQ(written("", {}, "a\r\nb\nc"), "[a b c]\nItemsCount=0\n");
    for (const char* const name : {" Gates ", "a\r\nb\nc", "a]b", "]", "[x]", "a = b", ";", "Ворота"}) {
        const QByteArray once = written("", kOne, name);
        EXPECT_EQ(written(once, kOne, name), once) << name;
        EXPECT_EQ(shown(readGates(once, QString(name).replace("\r\n", " ").replace('\n', ' '))),
                  "01A|02A|Main|1|2")
            << name;
    }
}

TEST(IniWrite, AnotherSectionIsAddedBehind)
{
    EXPECT_EQ(written("[Other]\nx=1\n", {}), "[Other]\nx=1\n\n[Gates]\nItemsCount=0\n");
    EXPECT_EQ(written("[Other]\nx=1", {}), "[Other]\nx=1\n\n[Gates]\nItemsCount=0\n");
    EXPECT_EQ(written("[Other]\r\nx=1\r\n\r\n", {}), "[Other]\r\nx=1\r\n\r\n[Gates]\r\nItemsCount=0\r\n");
    EXPECT_EQ(written("x", {}), "x\n\n[Gates]\nItemsCount=0\n");
}

TEST(IniWrite, KeysAreChangedWhereTheyStand)
{
    EXPECT_EQ(written("[Gates]\nEntryB1=9\nCaption1=old\nItemsCount=7\n", kOne),
              "[Gates]\nEntryB1=2\nCaption1=Main\nItemsCount=1\nGateA1=01A\nGateB1=02A\nEntryA1=1\n");
}

TEST(IniWrite, WhatIsForeignStaysByteForByte)
{
    const QByteArray before =
        "; head\n\n\n first = line\nno section\n[Other]\n a =  b ; c \n\n[gates]  ; ours\n"
        "; about the count\n itemscount = 5\n\n# odd\n=nothing\nLine without\nMine = 1 \n"
        "GateA01=x\nGateA0=y\nGateA=z\nGateA1x=q\nItemsCount1=w\nIP1=1\n\n; tail\n"
        "[Last]\nx=1\n[Gates]\nItemsCount=3\nGateA3=kept\n";
    const QByteArray after =
        "; head\n\n\n first = line\nno section\n[Other]\n a =  b ; c \n\n[gates]  ; ours\n"
        "; about the count\nItemsCount=1\n\n# odd\n=nothing\nLine without\nMine = 1 \n"
        "GateA01=x\nGateA0=y\nGateA=z\nGateA1x=q\nItemsCount1=w\nIP1=1\n" +
        kOneText +
        "\n; tail\n"
        "[Last]\nx=1\n[Gates]\nItemsCount=3\nGateA3=kept\n";
    EXPECT_EQ(written(before, kOne), after);
    EXPECT_EQ(written(after, kOne), after);
}

TEST(IniWrite, LeftOverKeysGo)
{
    const QByteArray before =
        "[Gates]\nItemsCount=3\n; two\nGateA2=a\nGATEB2=b\nCaption2=c\nEntryA2=1\nentryb2=2\n"
        "GateA10=x\nGateA99999999999999999999=y\nGateA3=x\nGateC2=stays\nIP2=stays\n";
    EXPECT_EQ(written(before, kOne), "[Gates]\nItemsCount=1\n; two\nGateC2=stays\nIP2=stays\n" + kOneText);
    EXPECT_EQ(written(before, {}), "[Gates]\nItemsCount=0\n; two\nGateC2=stays\nIP2=stays\n");
    EXPECT_EQ(written("[Gates]\nGateA1=a\nGateA1=b\n", {}), "[Gates]\nItemsCount=0\n");
}

TEST(IniWrite, KeysUpToTheCountStay)
{
    TGates ten(10);
    const QByteArray text = written("", ten);
    EXPECT_EQ(text.count("Gate"), 21);
    EXPECT_TRUE(text.contains("GateA10=\n"));
    ten.pop_back();
    EXPECT_FALSE(written(text, ten).contains("10="));
    EXPECT_TRUE(written(text, ten).contains("GateB9=\n"));
}

TEST(IniWrite, OneKeyIsLeftOfSeveral)
{
    EXPECT_EQ(written("[Gates]\nItemsCount=1\nGateA1=a\nx=1\nGATEA1=b\nItemsCount=5\n", kOne),
              "[Gates]\nItemsCount=1\nGateA1=01A\nx=1\nGateB1=02A\nCaption1=Main\nEntryA1=1\nEntryB1=2\n");
}

TEST(IniWrite, TextsStandAsTheyAre)
{
    const QByteArray text = written("", {{"\"a\"", ";b", " c = #d ", -5, 0}});
    EXPECT_EQ(text,
              "[Gates]\nItemsCount=1\nGateA1=\"a\"\nGateB1=;b\nCaption1= c = #d \nEntryA1=-5\nEntryB1=0\n");
    EXPECT_EQ(shown(readGates(text, "Gates")), "\"a\"|;b|c = #d|-5|0");
    EXPECT_TRUE(
        written("", {{"<<<X", "[b]", "\\", 0, 0}}).contains("GateA1=<<<X\nGateB1=[b]\nCaption1=\\\n"));
}

TEST(IniWrite, ALineBreakBecomesABlank)
{
    EXPECT_TRUE(written("", {{"a\nb", "c\rd", "e\r\nf\n\ng", 0, 0}})
                    .contains("GateA1=a b\nGateB1=c d\nCaption1=e f  g\n"));
    EXPECT_TRUE(written("", {{QString("a") + QChar(0) + "b", "", "x", 0, 0}}).contains("GateA1=a b\n"));
}

TEST(IniWrite, LineBreaksAreTheFilesOwn)
{
    EXPECT_EQ(
        written("[Gates]\r\nItemsCount=0\r\nx\r\n", {{"a", "", "", 0, 0}}),
        "[Gates]\r\nItemsCount=1\r\nx\r\nGateA1=a\r\nGateB1=\r\nCaption1=\r\nEntryA1=0\r\nEntryB1=0\r\n");
    EXPECT_EQ(written("[Gates]\rx\r", {}), "[Gates]\rx\rItemsCount=0\r");
    EXPECT_EQ(written("[Gates]\r\r\n\n", {}),
              "[Gates]\rItemsCount=0\n\r\n\n"); // "\r" would swallow a blank line
    EXPECT_EQ(written("[Gates]", {}), "[Gates]\nItemsCount=0\n");
    EXPECT_EQ(written("[Gates]\nx", {}), "[Gates]\nx\nItemsCount=0\n");
}

TEST(IniWrite, EncodingStays)
{
    const QString before = "; примітка\n[Gates]\nІнше=так\n";
    const QString after = before + "ItemsCount=1\nGateA1=\nGateB1=\nCaption1=Вхід\nEntryA1=0\nEntryB1=0\n";
    const TGates gates{{"", "", "Вхід", 0, 0}};
    EXPECT_EQ(written(before.toUtf8(), gates), after.toUtf8());
    EXPECT_EQ(written("\xef\xbb\xbf" + before.toUtf8(), gates), "\xef\xbb\xbf" + after.toUtf8());
    EXPECT_EQ(written(platform::toWire(before), gates), platform::toWire(after));
    EXPECT_EQ(written("\xef\xbb\xbf", {}), QByteArray("\xef\xbb\xbf\n\n[Gates]\nItemsCount=0\n"));
}

TEST(IniWrite, PlainFileBecomesUtf8)
{
    EXPECT_EQ(written("[Gates]\nx=1\n", {{"", "", "Вхід", 0, 0}}),
              QString("[Gates]\nx=1\nItemsCount=1\nGateA1=\nGateB1=\nCaption1=Вхід\nEntryA1=0\nEntryB1=0\n")
                  .toUtf8());
}

TEST(IniWrite, WhatTheCodePageLacksMakesItUtf8WithMark)
{
    const QString before = "; примітка\n[Gates]\nInshe=так\n";
    const auto expect = [&](const TGateRecord& gate) {
        const QByteArray after = written(platform::toWire(before), {gate});
        EXPECT_TRUE(after.startsWith("\xef\xbb\xbf" + before.toUtf8())) << after.toStdString();
        EXPECT_EQ(shown(readGates(after, "Gates")), shown({gate}));
    };
    expect({"日本", "", "", 0, 0});
    expect({"", "日本", "", 0, 0});
    expect({"", "", "日本", 0, 0});
    EXPECT_EQ(written(platform::toWire(u"; так\n"), {}, "日本"),
              QByteArray("\xef\xbb\xbf; так\n\n[日本]\nItemsCount=0\n"));
}

TEST(IniWrite, WhatWouldBeMisreadBecomesUtf8WithMark)
{
    // the code page's bytes of this text are valid UTF-8
    const TGates gates{{"", "", "Р’С…С–Рґ", 0, 0}};
    const QByteArray before = "[Gates]\nCaption1=\xc2\xf5\xb3\xe4\n";
    const QByteArray after = written(before, gates);
    EXPECT_TRUE(after.startsWith("\xef\xbb\xbf[Gates]\n"));
    EXPECT_EQ(readGates(after, "Gates"), gates);
    const QByteArray foreign = "; \xd1\x96\n[Gates]\nItemsCount=\xff\n"; // plain texts are read alike
    EXPECT_EQ(written(foreign, {}), "; \xd1\x96\n[Gates]\nItemsCount=0\n");
    EXPECT_EQ(written(before, {{"", "", "plain", 0, 0}}),
              "[Gates]\nCaption1=plain\nItemsCount=1\nGateA1=\nGateB1=\nEntryA1=0\nEntryB1=0\n");
}

TEST(IniWrite, GarbageStays)
{
    const QByteArray garbage("\xff\0\x01"
                             "0=.\n[\n[Gates]\nb\0=\xfe\n\x01"
                             "1=.\n",
                             27);
    const QByteArray after = written(garbage, {});
    EXPECT_EQ(after, garbage + "ItemsCount=0\n");
    const QByteArray marked = QByteArray("\xef\xbb\xbf; \xff\n[Gates]\nx=\xff\n");
    EXPECT_EQ(written(marked, {}), marked + "ItemsCount=0\n");
}

TEST(IniWrite, TenThousandGatesComeBack)
{
    TGates gates;
    for (int i = 0; i < 10'000; ++i) {
        gates.push_back(
            {QString::number(i) + "A", QString::number(i) + "B", "Вхід " + QString::number(i), i, -i});
    }
    for (const QByteArray& before :
         {QByteArray(), QByteArray("\xef\xbb\xbf[Gates]\n"), platform::toWire(u"; так\n")}) {
        const QByteArray text = written(before, gates);
        EXPECT_EQ(readGates(text, "Gates"), gates);
        EXPECT_EQ(written(text, gates), text);
    }
}

} // namespace
