#include "tnv5/turnstile/pass_table.h"

#include "support/text_printers.h"
#include "tnv5/platform/errors.h"
#include "tnv5/testing/manual_clock.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::turnstile;
using tnv5::testkit::TManualClock;

TEST(PassTable, IsEmptyAtFirst)
{
    const TPassTable table;
    EXPECT_TRUE(table.isEmpty());
    EXPECT_EQ(table.size(), 0);
    EXPECT_EQ(table.find(u"01A"), -1);
    EXPECT_EQ(table.find(u""), -1);
    EXPECT_EQ(table.find(u"01A", u"1"), -1);
    EXPECT_EQ(table.at(0), nullptr);
}

TEST(PassTable, NewPassStartsNow)
{
    const TManualClock clock(TManualClock::at(18, 0));
    TPassTable table;
    const PRFidInfo pass = table.add("01A", "12345678");
    EXPECT_EQ(pass->CardNumber, "12345678");
    EXPECT_EQ(pass->Device, "01A");
    EXPECT_EQ(pass->Status, "NEW");
    EXPECT_EQ(pass->StatusHard, "");
    EXPECT_EQ(pass->Starttime, 0.75); // the time of day only
    EXPECT_TRUE(pass->Img.isNull());
    EXPECT_EQ(pass->sys, 0);
    EXPECT_EQ(table.size(), 1);
    EXPECT_FALSE(table.isEmpty());
    EXPECT_EQ(table.at(0), pass);
}

TEST(PassTable, KeepsTheOrderOfCreation)
{
    TPassTable table;
    const PRFidInfo first = table.add("02A", "1");
    const PRFidInfo second = table.add("01A", "2");
    EXPECT_EQ(table.at(0), first);
    EXPECT_EQ(table.at(1), second);
}

TEST(PassTable, HasNoPassOutsideItsRange)
{
    TPassTable table;
    table.add("01A", "1");
    EXPECT_EQ(table.at(-1), nullptr);
    EXPECT_EQ(table.at(1), nullptr);
    EXPECT_EQ(table.at(std::numeric_limits<int>::min()), nullptr);
    EXPECT_EQ(table.at(std::numeric_limits<int>::max()), nullptr);
}

TEST(PassTable, FindsTheFirstOfAnAddressExactly)
{
    TPassTable table;
    table.add("01B", "1");
    table.add("01A", "2");
    table.add("01A", "3");
    EXPECT_EQ(table.find(u"01A"), 1);
    EXPECT_EQ(table.find(u"01a"), -1);
    EXPECT_EQ(table.find(u"01"), -1);
    EXPECT_EQ(table.find(u"01AA"), -1);
    EXPECT_EQ(table.find(u""), -1);
}

TEST(PassTable, FindsByAddressAndCardTogether)
{
    TPassTable table;
    table.add("01A", "1");
    table.add("01A", "ab");
    table.add("02A", "1");
    EXPECT_EQ(table.find(u"01A", u"ab"), 1);
    EXPECT_EQ(table.find(u"01A", u"AB"), -1);
    EXPECT_EQ(table.find(u"02A", u"1"), 2);
    EXPECT_EQ(table.find(u"02A", u"ab"), -1);
}

TEST(PassTable, FindsTheNextAfterTheFirstWasRemoved)
{
    TPassTable table;
    table.add("01A", "1");
    table.add("02A", "2");
    const PRFidInfo third = table.add("01A", "3");
    table.remove(0);
    EXPECT_EQ(table.size(), 2);
    EXPECT_EQ(table.find(u"01A"), 1);
    EXPECT_EQ(table.at(1), third);
}

TEST(PassTable, RemovedPassStaysForThoseWhoHoldIt)
{
    TPassTable table;
    const PRFidInfo pass = table.add("01A", "1");
    table.remove(0);
    EXPECT_TRUE(table.isEmpty());
    EXPECT_EQ(pass->CardNumber, "1");
    EXPECT_EQ(pass.use_count(), 1);
}

TEST(PassTable, RefusesMoreThanItsLimit)
{
    TPassTable table;
    for (std::size_t i = 0; i < TPassTable::kMaxPasses; ++i) {
        table.add("01A", "1");
    }
    EXPECT_EQ(table.add("01A", "1"), nullptr);
    EXPECT_EQ(table.size(), int(TPassTable::kMaxPasses));
    table.remove(0);
    EXPECT_NE(table.add("01A", "1"), nullptr);
}

} // namespace
