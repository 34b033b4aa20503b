#include "tnv5/common/convert.h"

#include "tnv5/platform/errors.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace tnv5;
using common::StrToInt;

TEST(StrToInt, Digits)
{
    EXPECT_EQ(StrToInt(u"0"), 0);
    EXPECT_EQ(StrToInt(u"20"), 20);
    EXPECT_EQ(StrToInt(u"020"), 20); // not octal
    EXPECT_EQ(StrToInt(u"00000000000000000007"), 7);
}

TEST(StrToInt, OneSign)
{
    EXPECT_EQ(StrToInt(u"+5"), 5);
    EXPECT_EQ(StrToInt(u"-5"), -5);
    EXPECT_EQ(StrToInt(u"-0"), 0);
    EXPECT_EQ(StrToInt(u"-007"), -7);
}

TEST(StrToInt, LeadingBlanks)
{
    EXPECT_EQ(StrToInt(u" 20"), 20);
    EXPECT_EQ(StrToInt(u"   -20"), -20);
}

TEST(StrToInt, WholeRange)
{
    EXPECT_EQ(StrToInt(u"2147483647"), std::numeric_limits<int>::max());
    EXPECT_EQ(StrToInt(u"-2147483648"), std::numeric_limits<int>::min());
}

TEST(StrToInt, RaisesForAnythingElse)
{
    for (const char16_t* text : {u"",
                                 u" ",
                                 u"+",
                                 u"-",
                                 u"++5",
                                 u"--5",
                                 u"+-5",
                                 u"-+5",
                                 u"- 5",
                                 u"+ 5",
                                 u"5 ",
                                 u"5-",
                                 u"5.0",
                                 u"5,0",
                                 u"1,000",
                                 u"1 000",
                                 u"1e3",
                                 u"x",
                                 u"abc",
                                 u"12a",
                                 u"a12",
                                 u"0x10",
                                 u"Ж",
                                 u"٣",
                                 u"５",
                                 u"2147483648",
                                 u"-2147483649",
                                 u"4294967296",
                                 u"99999999999999999999999999",
                                 u"18446744073709551617"}) {
        EXPECT_THROW(StrToInt(text), platform::EConvertError) << QString::fromUtf16(text).toStdString();
    }
    EXPECT_THROW(StrToInt(QStringView(u"5\0", 2)), platform::EConvertError);
    EXPECT_THROW(StrToInt(QStringView()), platform::EConvertError);
}

TEST(StrToInt, SaysWhatCouldNotBeRead)
{
    try {
        StrToInt(u"2o");
        FAIL();
    } catch (const platform::EConvertError& error) {
        EXPECT_TRUE(error.message().contains(u"2o")) << error.what();
    }
}

} // namespace
