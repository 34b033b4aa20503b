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
    EXPECT_THROW(table.add("1", "001T", "T", "77"), platform::Exception);
    EXPECT_EQ(table.size(), int(TPassTable::kMaxRecords));
    table.remove(0);
    EXPECT_NO_THROW(table.add("1", "001T", "T", "77"));
}

class LivenessTable : public PassTable
{
protected:
    TLivenessTable controllers;
};

TEST_F(LivenessTable, AnEntryIsHeardNowWithTheDate)
{
    const PDevicelist entry = controllers.add("10.0.0.5", "001G", "G");
    EXPECT_EQ(entry->IP, "10.0.0.5");
    EXPECT_EQ(entry->Device, "001G");
    EXPECT_EQ(entry->DeviceType, "G");
    EXPECT_DOUBLE_EQ(entry->Pingtime, 46'027.75);
}

TEST_F(LivenessTable, IsBounded)
{
    for (std::size_t i = 0; i < TLivenessTable::kMaxRecords; ++i) {
        controllers.add("1", QString::number(i), "T");
    }
    EXPECT_THROW(controllers.add("1", "one more", "T"), platform::Exception);
    EXPECT_EQ(controllers.size(), int(TLivenessTable::kMaxRecords));
    EXPECT_EQ(controllers.find(u"1", u"65535"), 65'535);
}

TEST_F(LivenessTable, TheLastMatchOfLinkAndDeviceIsFound)
{
    controllers.add("1", "001T", "T");
    controllers.add("1", "001T", "T");
    controllers.add("1", "002T", "T");
    controllers.add("2", "001T", "T");
    EXPECT_EQ(controllers.find(u"1", u"001T"), 1);
    EXPECT_EQ(controllers.find(u"2", u"001T"), 3);
    EXPECT_EQ(controllers.find(u"1", u"002T"), 2);
    EXPECT_EQ(controllers.find(u"2", u"002T"), -1);
    EXPECT_EQ(controllers.find(u"1", u"001t"), -1);
    EXPECT_EQ(controllers.find(u"", u""), -1);
}

} // namespace
