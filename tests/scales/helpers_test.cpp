// The pure helpers: bits, digits, replacement, checksum, time-out test.

#include "scales_fixture.h"
#include "tnv5/scales/scales_bits.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using namespace tnv5::scales;

TEST(Bits, ByteToTextHasTheMostSignificantBitFirst)
{
    EXPECT_EQ(ByteToBinStr(0), "00000000");
    EXPECT_EQ(ByteToBinStr(1), "00000001");
    EXPECT_EQ(ByteToBinStr(0x80), "10000000");
    EXPECT_EQ(ByteToBinStr(0x39), "00111001");
    EXPECT_EQ(ByteToBinStr(255), "11111111");
}

TEST(Bits, TextToNumberTakesAnyLength)
{
    EXPECT_EQ(BitToint(""), 0);
    EXPECT_EQ(BitToint("1"), 1);
    EXPECT_EQ(BitToint("10"), 2);
    EXPECT_EQ(BitToint("0011000000111001"), 0x3039);
    EXPECT_EQ(BitToint("000000000000000000000000000000000000000101"), 5);
    EXPECT_EQ(BitToint("1000000000000000"), 32768);
    EXPECT_EQ(BitToint("01111111111111111111111111111111"), 0x7FFFFFFF);
}

TEST(Bits, AnyOtherCharacterClearsItsBit)
{
    EXPECT_EQ(BitToint("1x1"), 5);
    EXPECT_EQ(BitToint(" 1"), 1);
    EXPECT_EQ(BitToint("1 "), 2);
    EXPECT_EQ(BitToint("212"), 2);
    EXPECT_EQ(BitToint(QStringLiteral("١")), 0);
    EXPECT_EQ(BinStrToByte("abc1d"), 2);
}

TEST(Bits, TextToByte)
{
    EXPECT_EQ(BinStrToByte(""), 0);
    EXPECT_EQ(BinStrToByte("1"), 1);
    EXPECT_EQ(BinStrToByte("10000000"), 128);
    EXPECT_EQ(BinStrToByte("0000000011111111"), 255);
}

TEST(Bits, EveryByteComesBack)
{
    for (int value = 0; value < 256; ++value) {
        const QString bits = ByteToBinStr(uchar(value));
        EXPECT_EQ(bits.size(), 8);
        EXPECT_EQ(BitToint(bits), value);
        EXPECT_EQ(BinStrToByte(bits), value);
    }
}

TEST(Bits, AVeryLongTextDoesNoHarm)
{
    EXPECT_EQ(BitToint(QString(10'000, u'0') + "110"), 6);
    EXPECT_EQ(BinStrToByte(QString(10'000, u'0') + "110"), 6);
    BitToint(QString(10'000, u'1'));
    BinStrToByte(QString(10'000, u'1'));
}

TEST(Helpers, DigitsOnlyKeepsTheTenDigits)
{
    EXPECT_EQ(TScalesDevice::DigitsOnly(""), "");
    EXPECT_EQ(TScalesDevice::DigitsOnly("kg"), "");
    EXPECT_EQ(TScalesDevice::DigitsOnly("9a8-7.6 5/4:3,2_1+0"), "9876543210");
    EXPECT_EQ(TScalesDevice::DigitsOnly(QStringLiteral("1²٣４5")), "15");
}

TEST(Helpers, ReplaceStrReplacesEveryOccurrence)
{
    EXPECT_EQ(TScalesDevice::ReplaceStr("1,2,3", ",", "."), "1.2.3");
    EXPECT_EQ(TScalesDevice::ReplaceStr("abcabc", "bc", ""), "aa");
    EXPECT_EQ(TScalesDevice::ReplaceStr("aaa", "aa", "b"), "ba");
    EXPECT_EQ(TScalesDevice::ReplaceStr("aa", "a", "aa"), "aaaa");
    EXPECT_EQ(TScalesDevice::ReplaceStr("aAa", "a", "x"), "xAx");
    EXPECT_EQ(TScalesDevice::ReplaceStr("abc", "d", "x"), "abc");
    EXPECT_EQ(TScalesDevice::ReplaceStr("", "a", "x"), "");
}

TEST(Helpers, ReplacingNothingChangesNothing)
{
    EXPECT_EQ(TScalesDevice::ReplaceStr("abc", "", "x"), "abc");
}

TEST(Helpers, StringLrcIsTheXorOfTheLowBytes)
{
    EXPECT_EQ(TScalesDevice::StringLRC(""), 0);
    EXPECT_EQ(TScalesDevice::StringLRC("A"), 0x41);
    EXPECT_EQ(TScalesDevice::StringLRC("AA"), 0);
    EXPECT_EQ(TScalesDevice::StringLRC("AB"), 3);
    EXPECT_EQ(TScalesDevice::StringLRC(QStringLiteral("а")), 0x30);
    EXPECT_EQ(TScalesDevice::StringLRC(QString(QChar(0xFF))), 0xFF);
    EXPECT_EQ(TScalesDevice::StringLRC(QString(QChar(0xFFF0)) + QChar(0)), 0xF0);
}

TEST(Helpers, TimeTestCutsTheFractionAndTheSign)
{
    const double second = 1.0 / 86400;
    const auto passed = [&](double seconds, int limit) {
        return TScalesDevice::p_hw_checktimebetween(0.5 + seconds * second, 0.5, limit);
    };
    EXPECT_FALSE(passed(0, 0));
    EXPECT_FALSE(passed(3.5, 3));
    EXPECT_FALSE(passed(3.99, 3));
    EXPECT_TRUE(passed(4.01, 3));
    EXPECT_FALSE(passed(-3.99, 3));
    EXPECT_TRUE(passed(-4.01, 3));
    EXPECT_TRUE(passed(1.01, 0));
    EXPECT_FALSE(passed(0.99, 0));
    EXPECT_TRUE(passed(0, -1));
    EXPECT_TRUE(TScalesDevice::p_hw_checktimebetween(0.00001, 0.99999, 3)); // across midnight
    EXPECT_TRUE(TScalesDevice::p_hw_checktimebetween(46'028.0, 46'027.0, 86'399));
    EXPECT_FALSE(TScalesDevice::p_hw_checktimebetween(46'028.0, 46'027.0, 86'400));
}

} // namespace
