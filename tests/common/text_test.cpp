#include "tnv5/common/text.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::common;

TEST(Copy, CountsFromOne)
{
    EXPECT_EQ(Copy(u"01AR5", 1, 3), u"01A");
    EXPECT_EQ(Copy(u"01AR5", 4, 1), u"R");
    EXPECT_EQ(Copy(u"01AR5", 4, 100), u"R5");
}

TEST(Copy, LeavesOutWhatLiesOutside)
{
    EXPECT_EQ(Copy(u"01A", 4, 1), u"");
    EXPECT_EQ(Copy(u"01A", 3, 0), u"");
    EXPECT_EQ(Copy(u"01A", 3, -1), u"");
    EXPECT_EQ(Copy(u"", 1, 1), u"");
}

TEST(Copy, TakesAnIndexBelowOneAsOne)
{
    EXPECT_EQ(Copy(u"01A", 0, 2), u"01");
    EXPECT_EQ(Copy(u"01A", -5, 2), u"01");
}

TEST(CopyFrom, GivesTheRest)
{
    EXPECT_EQ(CopyFrom(u"$01AR123", 6), u"123");
    EXPECT_EQ(CopyFrom(u"$01AR", 6), u"");
    EXPECT_EQ(CopyFrom(u"7", 0), u"7");
}

TEST(Joined, OneBehindTheOther)
{
    EXPECT_EQ(Joined(u"01A", u"R5"), u"01AR5");
    EXPECT_EQ(Joined(u"", u"R5"), u"R5");
    EXPECT_EQ(Joined(u"01A", u""), u"01A");
    EXPECT_EQ(Joined(u"", u""), u"");
}

TEST(Same, LengthAndCaseCount)
{
    EXPECT_TRUE(Same(u"01A", u"01A"));
    EXPECT_TRUE(Same(u"", QStringView()));
    EXPECT_FALSE(Same(u"01A", u"01a"));
    EXPECT_FALSE(Same(u"01A", u"01AR"));
    EXPECT_FALSE(Same(u"01AR", u"01A"));
}

TEST(Pos, CountsFromOneAndIsZeroWhenAbsent)
{
    EXPECT_EQ(Pos(u"!", u"LOG!x"), 4);
    EXPECT_EQ(Pos(u"LOG", u"LOG!LOG!"), 1);
    EXPECT_EQ(Pos(u"?", u"LOG!x"), 0);
    EXPECT_EQ(Pos(u"", u"LOG!x"), 0);
    EXPECT_EQ(Pos(u"log", u"LOG!x"), 0);
}

} // namespace
