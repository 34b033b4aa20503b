#include "tnv5/common/elapsed.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace tnv5::common;

constexpr double kDayMs = 86'400'000.0;

TEST(WholeSeconds, CutsTheFractionOff)
{
    EXPECT_EQ(WholeSeconds(0.0, 1'999 / kDayMs), 1);
    EXPECT_EQ(WholeSeconds(0.0, 2'000 / kDayMs), 2);
    EXPECT_EQ(WholeSeconds(0.0, 0.0), 0);
}

TEST(WholeSeconds, HasNoSign)
{
    EXPECT_EQ(WholeSeconds(0.75, 0.5), 21'600);
    EXPECT_EQ(WholeSeconds(0.5, 0.75), 21'600);
}

// A whole second is a whole second wherever in the day it lies, although a double cannot hold it exactly.
TEST(WholeSeconds, IsExactForEveryMillisecondOfTheDay)
{
    for (int start = 0; start < 86'000'000; start += 86'399) {
        const double begin = start / kDayMs;
        EXPECT_EQ(WholeSeconds((start + 7'999) / kDayMs, begin), 7) << start;
        EXPECT_EQ(WholeSeconds((start + 8'000) / kDayMs, begin), 8) << start;
        EXPECT_EQ(WholeSeconds((start + 8'001) / kDayMs, begin), 8) << start;
    }
}

TEST(WholeSeconds, IsExactForFullDateTimes)
{
    for (int start = 0; start < 86'000'000; start += 86'399) {
        const double begin = 46'027 + start / kDayMs;
        EXPECT_EQ(WholeSeconds(46'027 + (start + 7'999) / kDayMs, begin), 7) << start;
        EXPECT_EQ(WholeSeconds(46'027 + (start + 8'000) / kDayMs, begin), 8) << start;
    }
}

TEST(WholeSeconds, ExceedsThirtyTwoBits)
{
    EXPECT_EQ(WholeSeconds(46'027.0, 0.0), 3'976'732'800);
    EXPECT_TRUE(ElapsedMoreThan(46'027.0, 0.0, 15));
}

TEST(WholeSeconds, SurvivesWhatIsNoTime)
{
    EXPECT_EQ(WholeSeconds(std::numeric_limits<double>::quiet_NaN(), 0.0),
              std::numeric_limits<qint64>::max());
    EXPECT_EQ(WholeSeconds(1e300, 0.0), std::numeric_limits<qint64>::max());
}

TEST(ElapsedMoreThan, IsTrueFromTheNextWholeSecondOn)
{
    EXPECT_FALSE(ElapsedMoreThan(0.0, 7'999 / kDayMs, 7));
    EXPECT_TRUE(ElapsedMoreThan(0.0, 8'000 / kDayMs, 7));
    EXPECT_FALSE(ElapsedMoreThan(0.0, 7'000 / kDayMs, 7));
    EXPECT_TRUE(ElapsedMoreThan(0.0, 0.0, -1));
}

} // namespace
