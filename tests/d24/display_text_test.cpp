#include "tnv5/d24/display_text.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>

namespace tnv5::d24 {
namespace {

TEST(TDisplayTextTest, LinesAndFlags)
{
    EXPECT_EQ(TDisplayText().text(), QString());
    EXPECT_TRUE(TDisplayText().isEmpty());
    EXPECT_EQ(TDisplayText("Anna").text(), "|Anna|||||");
    EXPECT_EQ(TDisplayText("Anna Berg", "Balance 12.50").text(), "|Anna Berg|Balance 12.50||||");
    EXPECT_EQ(TDisplayText("1", "2", "3", "4").light().sound().text(), "|1|2|3|4|LS|");
    EXPECT_EQ(TDisplayText("", "", "", "4").text(), "||||4||");
    EXPECT_EQ(TDisplayText("1").sound().sound().light().light().text(), "|1||||SL|");
}

TEST(TDisplayTextTest, FlagsAlone)
{
    EXPECT_EQ(TDisplayText().light().text(), "|||||L|");
    EXPECT_FALSE(TDisplayText().sound().isEmpty());
}

TEST(TDisplayTextTest, WhatANameMustNotHoldBecomesABlank)
{
    EXPECT_EQ(TDisplayText("A|B\rC\nD", QString("E") + QChar(0) + "F\x7FG").text(), "|A B C D|E F G||||");
    EXPECT_EQ(TDisplayText("", "", "a|", "|b").text(), "|||a | b||");
}

TEST(TDisplayTextTest, OtherCharactersStay)
{
    EXPECT_EQ(TDisplayText("Ґанна: $5 #1!").text(), "|Ґанна: $5 #1!|||||");
}

} // namespace
} // namespace tnv5::d24
