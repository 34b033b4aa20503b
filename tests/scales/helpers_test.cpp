// The pure helpers: digits, replacement, checksum, time-out test.

#include "scales_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using namespace tnv5::scales;

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
