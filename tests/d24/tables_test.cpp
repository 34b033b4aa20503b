// The two tables by themselves.

#include "tnv5/d24/d24_tables.h"
#include "tnv5/platform/errors.h"
#include "tnv5/testing/manual_clock.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using namespace tnv5::d24;

class PassTable : public ::testing::Test
{
protected:
    tnv5::testkit::TManualClock clock{tnv5::testkit::TManualClock::at(18, 0)};
    TPassTable table;
};

TEST_F(PassTable, ARecordIsNew)
{
    const PRFidInfo pass = table.add("10.0.0.5", "001T", "T", "77");
    EXPECT_EQ(pass->IP, "10.0.0.5");
    EXPECT_EQ(pass->Device, "001T");
    EXPECT_EQ(pass->DeviceType, "T");
    EXPECT_EQ(pass->CardNumber, "77");
    EXPECT_EQ(pass->Status, "NEW");
    EXPECT_EQ(pass->StatusHard, "");
    EXPECT_DOUBLE_EQ(pass->Starttime, 0.75); // without the date
    EXPECT_TRUE(pass->Img.isNull());
    EXPECT_EQ(pass->sys, 0);
    EXPECT_EQ(pass->InfoMess, "");
    EXPECT_EQ(pass->Command, "");
    EXPECT_EQ(pass->CommandAdd, "");
    EXPECT_EQ(pass->CRC, "");
    EXPECT_FALSE(pass->Finish);
    EXPECT_EQ(pass->CRCtime, 0);
    EXPECT_EQ(table.size(), 1);
    EXPECT_EQ(table.at(0), pass);
}

TEST_F(PassTable, ADeviceIsFoundWhateverItsLink)
{
    table.add("1", "001T", "T", "77");
    table.add("2", "001T", "T", "78");
    table.add("2", "002T", "T", "78");
    EXPECT_EQ(table.findDevice(u"001T"), 0);
    EXPECT_EQ(table.findDevice(u"002T"), 2);
    EXPECT_EQ(table.findDevice(u"003T"), -1);
    EXPECT_EQ(table.findDevice(u"001t"), -1);
    EXPECT_EQ(table.findDevice(u"001"), -1);
    EXPECT_EQ(table.findDevice(u""), -1);
}

TEST_F(PassTable, ALinkIsFound)
{
    table.add("1", "001T", "T", "77");
    table.add("2", "001T", "T", "78");
    table.add("2", "002T", "T", "78");
    EXPECT_EQ(table.findIP(u"1"), 0);
    EXPECT_EQ(table.findIP(u"2"), 1);
    EXPECT_EQ(table.findIP(u"001T"), -1);
    EXPECT_EQ(table.findIP(u""), -1);
}

TEST_F(PassTable, ADeviceAndCardAreFoundWhateverTheLink)
{
    table.add("1", "001T", "T", "77");
    table.add("2", "001T", "T", "78");
    table.add("3", "001T", "T", "78");
    EXPECT_EQ(table.findCard(u"001T", u"77"), 0);
    EXPECT_EQ(table.findCard(u"001T", u"78"), 1);
    EXPECT_EQ(table.findCard(u"001T", u"79"), -1);
    EXPECT_EQ(table.findCard(u"002T", u"77"), -1);
}

TEST_F(PassTable, IsBounded)
{
    for (std::size_t i = 0; i < TPassTable::kMaxRecords; ++i) {
        table.add("1", "001T", "T", "77");
    }
    EXPECT_EQ(table.add("1", "001T", "T", "77"), nullptr);
    EXPECT_EQ(table.size(), int(TPassTable::kMaxRecords));
    table.remove(0);
    EXPECT_NE(table.add("1", "001T", "T", "77"), nullptr);
}

} // namespace
