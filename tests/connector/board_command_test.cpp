// Cutting a command and building its lines, without a connector.

#include "tnv5/connector/board_command.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::connector;

std::optional<QString> lineOf(QStringView command)
{
    return boardLine(parseCommand(command));
}

QStringList linesOf(QStringView command, int width)
{
    return displayLines(parseCommand(command), width);
}

TEST(ParseCommand, CutsCodeIpAddressAndRelay)
{
    const TBoardCommand command = parseCommand(u"RL10.20.30.40:000A25");
    EXPECT_EQ(command.code, u"RL");
    EXPECT_EQ(command.ip, u"10.20.30.40");
    EXPECT_EQ(command.address, u"000A");
    EXPECT_EQ(command.relay, u"2"); // only the first character
    EXPECT_EQ(command.whole, u"RL10.20.30.40:000A25");
}

TEST(ParseCommand, EndsTheIpAtTheFirstColon)
{
    const TBoardCommand command = parseCommand(u"GO1:2:3A4");
    EXPECT_EQ(command.ip, u"1");
    EXPECT_EQ(command.address, u"2:3A");
}

TEST(ParseCommand, WithoutColonTheAddressIsTheBeginning)
{
    const TBoardCommand command = parseCommand(u"GO000A");
    EXPECT_EQ(command.code, u"GO");
    EXPECT_TRUE(command.ip.isEmpty());
    EXPECT_EQ(command.address, u"GO00");
}

TEST(ParseCommand, WithoutColonTheRelayIsRightBehindTheAddress)
{
    EXPECT_EQ(parseCommand(u"RL000A2").address, u"RL00");
    EXPECT_EQ(parseCommand(u"RL000A2").relay, u"0");
    EXPECT_EQ(parseCommand(u"RL005").relay, u"5");
    EXPECT_TRUE(parseCommand(u"RL00").relay.isEmpty());
    EXPECT_EQ(lineOf(u"RL000A2"), "$RL00RL000N");
}

TEST(ParseCommand, RefusesNothing)
{
    for (const QStringView text : {u"", u"G", u"GO", u":", u"G:", u"GO:", u"GO:0", u"::::::::"}) {
        const TBoardCommand command = parseCommand(text);
        EXPECT_LE(command.code.size(), 2);
        EXPECT_LE(command.address.size(), 4);
        EXPECT_EQ(command.whole, text);
    }
    EXPECT_TRUE(parseCommand(u"GO:").address.isEmpty());
    EXPECT_EQ(parseCommand(u"GO:0").address, u"0");
    EXPECT_EQ(parseCommand(u"G:0001").address, u"0001");
}

TEST(BoardLine, EveryCode)
{
    EXPECT_EQ(lineOf(u"SD0.0.0.0:000A"), "$000ASDG");
    EXPECT_EQ(lineOf(u"GO0.0.0.0:000A"), "$000AGO");
    EXPECT_EQ(lineOf(u"RL0.0.0.0:000A2"), "$000ARL200N");
    EXPECT_EQ(lineOf(u"PH0.0.0.0:000A"), "$000APH");
    EXPECT_EQ(lineOf(u"AL0.0.0.0:000B"), "$000BRL320N");
    EXPECT_EQ(lineOf(u"HW0.0.0.0:000A"), "$000AHW");
}

TEST(BoardLine, NoneForOthers)
{
    for (const QStringView command :
         {u"SH0.0.0.0:000A|a|b|c|d|L|", u"XX0.0.0.0:000A", u"go0.0.0.0:000A", u"Go0.0.0.0:000A",
          u" GO0.0.0.0:000A", u"CS0.0.0.0:000A", u"BF0.0.0.0:000A", u"", u"G", u"G:000A"}) {
        EXPECT_EQ(lineOf(command), std::nullopt) << command.toString().toStdString();
    }
}

TEST(IsDisplayCommand, OnlySh)
{
    EXPECT_TRUE(isDisplayCommand(parseCommand(u"SH0.0.0.0:000A|a|b|c|d|L|")));
    EXPECT_TRUE(isDisplayCommand(parseCommand(u"SH")));
    for (const QStringView command : {u"sh0.0.0.0:000A", u"GO0.0.0.0:000A", u"S", u"", u"XSH"}) {
        EXPECT_FALSE(isDisplayCommand(parseCommand(command))) << command.toString().toStdString();
    }
}

TEST(DisplayLines, AreWithoutChecksum)
{
    EXPECT_EQ(linesOf(u"SH0.0.0.0:000A|one|two|three|four|LS|", 5),
              QStringList({"$000ACS", "$000APSN1001 one ", "$000APSN1002 two ", "$000APSN1003three",
                           "$000APSN1004four ", "$000BFL1", "$000BES"}));
}

TEST(DisplayLines, NoneWithoutAKnownDisplay)
{
    for (const int width : {-1, 0, -20}) {
        EXPECT_EQ(linesOf(u"SH0.0.0.0:000A|one|two|three|four|LS|", width), QStringList()) << width;
    }
}

TEST(Centred, EvenAndOdd)
{
    const auto blanks = [](int count) { return QString(count, u' '); };
    EXPECT_EQ(centred(u"Hello", 20), blanks(8) + "Hello" + blanks(7));
    EXPECT_EQ(centred(u"Fine", 20), blanks(8) + "Fine" + blanks(8));
    EXPECT_EQ(centred(u"Hello", 21), blanks(8) + "Hello" + blanks(8));
    EXPECT_EQ(centred(u"Fine", 21), blanks(8) + "Fine" + blanks(9));
    EXPECT_EQ(centred(u"a", 2), " a");
    EXPECT_EQ(centred(u"a", 3), " a ");
    EXPECT_EQ(centred(u"ab", 3), "ab ");
    EXPECT_EQ(centred(u"abc", 4), " abc");
    EXPECT_EQ(centred(u"abcd", 5), "abcd ");
    EXPECT_EQ(centred(u"", 4), "    ");
    EXPECT_EQ(centred(u"", 5), "     ");
}

TEST(Centred, IsAlwaysAsLongAsTheDisplay)
{
    for (int width = 1; width <= 40; ++width) {
        for (int length = 0; length < width; ++length) {
            const QString line = centred(QString(length, u'x'), width);
            const int before = width / 2 - length / 2;
            EXPECT_EQ(line,
                      QString(before, u' ') + QString(length, u'x') + QString(width - length - before, u' '))
                << width << ' ' << length;
        }
    }
}

TEST(Centred, CountsCharacters)
{
    EXPECT_EQ(centred(u"Вход", 6), " Вход ");
}

TEST(Centred, LeavesWhatIsAsLongOrLonger)
{
    EXPECT_EQ(centred(u"Hello", 5), "Hello");
    EXPECT_EQ(centred(u"Hello", 4), "Hello");
    EXPECT_EQ(centred(u"Hello", 0), "Hello");
    EXPECT_EQ(centred(u"Hello", -1), "Hello");
    EXPECT_EQ(centred(u"", 0), "");
}

TEST(GroupOf, IsTheAddressWithoutItsSide)
{
    EXPECT_EQ(groupOf(u"012B"), u"012");
    EXPECT_EQ(groupOf(u"01"), u"01");
    EXPECT_TRUE(groupOf(u"").isEmpty());
}

} // namespace
