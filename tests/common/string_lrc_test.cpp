#include "tnv5/common/string_lrc.h"

#include <gtest/gtest.h>

namespace {

using tnv5::common::StringLRC;

TEST(StringLrc, IsTheXorOfTheLowBytes)
{
    EXPECT_EQ(StringLRC(u""), 0);
    EXPECT_EQ(StringLRC(u"A"), 0x41);
    EXPECT_EQ(StringLRC(u"AA"), 0);
    EXPECT_EQ(StringLRC(u"AB"), 3);
    EXPECT_EQ(StringLRC(u"ABC"), 0x40);
    EXPECT_EQ(StringLRC(u"\u0430"), 0x30);
    EXPECT_EQ(StringLRC(u"\u00FF"), 0xFF);
}

} // namespace
