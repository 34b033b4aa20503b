// The table of the boards that ping, by itself.

#include "tnv5/connector/liveness_table.h"
#include "tnv5/testing/manual_clock.h"

#include "support/text_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using namespace tnv5::connector;

class LivenessTable : public ::testing::Test
{
protected:
    testkit::TManualClock clock{testkit::TManualClock::at(18, 0)};
    TLivenessTable boards;
};

TEST_F(LivenessTable, AnEntryIsHeardNowWithTheDate)
{
    const RDeviceList entry = boards.add("10.0.0.5", "001G", "G");
    EXPECT_EQ(entry->IP, "10.0.0.5");
    EXPECT_EQ(entry->Device, "001G");
    EXPECT_EQ(entry->DeviceType, "G");
    EXPECT_DOUBLE_EQ(entry->Pingtime, 46'027.75);
}

TEST_F(LivenessTable, IsBounded)
{
    for (std::size_t i = 0; i < TLivenessTable::kMaxRecords; ++i) {
        boards.add("1", QString::number(i), "T");
    }
    const RDeviceList alone = boards.add("1", "one more", "G"); // for this ping only
    EXPECT_EQ(alone->IP, "1");
    EXPECT_EQ(alone->Device, "one more");
    EXPECT_EQ(alone->DeviceType, "G");
    EXPECT_EQ(boards.find(u"1", u"one more"), -1);
    EXPECT_EQ(boards.size(), int(TLivenessTable::kMaxRecords));
    EXPECT_EQ(boards.find(u"1", u"16383"), 16'383);
}

TEST_F(LivenessTable, TheLastMatchOfLinkAndDeviceIsFound)
{
    boards.add("1", "001T", "T");
    boards.add("1", "001T", "T");
    boards.add("1", "002T", "T");
    boards.add("2", "001T", "T");
    EXPECT_EQ(boards.find(u"1", u"001T"), 1);
    EXPECT_EQ(boards.find(u"2", u"001T"), 3);
    EXPECT_EQ(boards.find(u"1", u"002T"), 2);
    EXPECT_EQ(boards.find(u"2", u"002T"), -1);
    EXPECT_EQ(boards.find(u"1", u"001t"), -1);
    EXPECT_EQ(boards.find(u"", u""), -1);
}

} // namespace
