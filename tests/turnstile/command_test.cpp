#include "tnv5/turnstile/command.h"

#include "support/text_printers.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/platform/errors.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace tnv5::turnstile;
using tnv5::platform::EConvertError;

TEST(Command, OpensATurnstileChannelByItsRelay)
{
    EXPECT_EQ(openCommand(u"01A", 1, 3, 2), "$01A103");
    EXPECT_EQ(openCommand(u"99A", 7, 3, 0), "$99A701");
}

TEST(Command, OpensAnyOtherChannelByTheDoorRelay)
{
    EXPECT_EQ(openCommand(u"01D", 1, 3, 2), "$01D323");
    EXPECT_EQ(openCommand(u"01B", 1, 4, 5), "$01B426");
    EXPECT_EQ(openCommand(u"01a", 1, 3, 2), "$01a323");
    EXPECT_EQ(openCommand(u"", 1, 3, 2), "$323");
}

TEST(Command, RefusesEveryChannelAlike)
{
    EXPECT_EQ(refuseCommand(u"01A", 0), "$01A000");
    EXPECT_EQ(refuseCommand(u"01D", 5), "$01D500");
    EXPECT_EQ(refuseCommand(u"01D", 15), "$01D1500");
}

TEST(Command, SwitchesARelay)
{
    EXPECT_EQ(relayCommand(u"01A", u"2", false), "$01A200");
    EXPECT_EQ(relayCommand(u"01D", u"2", false), "$01D200");
    EXPECT_EQ(relayCommand(u"01D", u"2", true), "$01D220");
    EXPECT_EQ(relayCommand(u"01B", u"2", true), "$01B220");
    EXPECT_EQ(relayCommand(u"01D", u"", true), "$01D20");
    EXPECT_EQ(relayCommand(u"01D", u"12", true), "$01D1220");
}

TEST(Command, OnIsOffForARelayOfATurnstileChannel)
{
    EXPECT_EQ(relayCommand(u"01A", u"2", true), "$01A200");
}

TEST(Command, PollsTheWholeLine)
{
    EXPECT_EQ(kPollCommand, "$000900");
}

TEST(Command, WritesNumbersInDecimalWithoutLeadingZeros)
{
    EXPECT_EQ(openCommand(u"01A", 12, 3, 2), "$01A1203");
    EXPECT_EQ(openCommand(u"01A", 1, 3, 8), "$01A109");
    EXPECT_EQ(openCommand(u"01A", 1, 3, 9), "$01A1010");
    EXPECT_EQ(openCommand(u"01D", 1, 10, 99), "$01D102100");
    EXPECT_EQ(openCommand(u"01A", -1, 3, -1), "$01A-100");
    EXPECT_EQ(openCommand(u"01A", 1, 3, -3), "$01A10-2");
    EXPECT_EQ(refuseCommand(u"01A", -7), "$01A-700");
}

TEST(Command, SurvivesTheLargestOpeningTime)
{
    EXPECT_TRUE(openCommand(u"01A", 1, 3, std::numeric_limits<int>::max()).startsWith("$01A10"));
}

TEST(Checksum, OfTheKnownCommands)
{
    EXPECT_EQ(checksum(u"$01A103"), "66");
    EXPECT_EQ(checksum(u"$01A000"), "64");
    EXPECT_EQ(checksum(u"$000900"), "1D");
    EXPECT_EQ(checksum(u"$01D323"), "63");
    EXPECT_EQ(checksum(u"$01D000"), "61");
}

TEST(Checksum, ReadsTheAddressDigitsAsOneDecimalNumber)
{
    EXPECT_EQ(checksum(u"$10A000"), "6F"); // 36 ^ 10 ^ 65
    EXPECT_EQ(checksum(u"$12A000"), "69"); // 36 ^ 12 ^ 65
    EXPECT_EQ(checksum(u"$99A000"), "06"); // 36 ^ 99 ^ 65
}

TEST(Checksum, TakesTheFirstAndTheFourthCharacterAsCodes)
{
    EXPECT_EQ(checksum(u"#00A000"), "62");
    EXPECT_EQ(checksum(u"$00a000"), "45");
    EXPECT_EQ(checksum(u"$000000"), "14");
}

TEST(Checksum, TakesTheLastThreeCharactersAsSeparateDigits)
{
    EXPECT_EQ(checksum(u"$01A100"), "65");
    EXPECT_EQ(checksum(u"$01A020"), "66");
    EXPECT_EQ(checksum(u"$01A004"), "60");
    EXPECT_EQ(checksum(u"$01A421"), "63");
}

TEST(Checksum, HasAtLeastTwoDigitsInUpperCase)
{
    EXPECT_EQ(checksum(u"$04 000"), "00");
    EXPECT_EQ(checksum(u"$00 008"), "0C");
    EXPECT_EQ(checksum(u"$00O000"), "6B");
}

TEST(Checksum, LooksAtTheFirstSevenCharactersOnly)
{
    EXPECT_EQ(checksum(u"$01A1203"), "67");
    EXPECT_EQ(checksum(u"$01A120"), "67");
    EXPECT_EQ(checksum(u"$01A120x"), "67");
}

TEST(Checksum, NeedsDigitsWhereItReadsDigits)
{
    for (const QChar bad : {u'A', u' ', u'-', u'+', u'/', u':', u'٣', u'３', u'\0', u'Ж'}) {
        for (const int position : {1, 2, 4, 5, 6}) {
            QString command = QStringLiteral("$01A103");
            command[position] = bad;
            EXPECT_THROW(checksum(command), EConvertError) << command.toStdString();
        }
    }
    EXPECT_NO_THROW(checksum(u"x01x103"));
}

TEST(Checksum, NeedsSevenCharacters)
{
    for (const QStringView text : {QStringView(u""), QStringView(u"$"), QStringView(u"66"),
                                   QStringView(u"$01A1"), QStringView(u"$01A10")}) {
        EXPECT_THROW(checksum(text), EConvertError) << text.toString().toStdString();
    }
}

TEST(Checksum, FailureHasAText)
{
    try {
        checksum(u"$0xA000");
        FAIL() << "nothing was raised";
    } catch (const EConvertError& error) {
        EXPECT_FALSE(error.message().isEmpty());
    }
}

TEST(Checksum, TakesTheByteThatGoesOnTheWire)
{
    EXPECT_EQ(checksum(u"$01Д103"), "E3");  // 0xC4 in windows-1251
    EXPECT_EQ(checksum(u"$01中103"), "18"); // "?" on the wire
    EXPECT_EQ(checksum(u"Ж00A000"), "87");  // 0xC6
}

TEST(Checksum, FollowsTheCodePage)
{
    const QByteArray previous = tnv5::platform::codePage();
    tnv5::platform::setCodePage("KOI8-R"); // there Д is 0xE4
    EXPECT_EQ(checksum(u"$01Д103"), "C3");
    tnv5::platform::setCodePage(previous);
}

} // namespace
