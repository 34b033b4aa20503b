// Tables that are full: nothing is removed, nothing is thrown; a pass is refused with one line, a ping is
// served without an entry.

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const QString kFull = QStringLiteral("error [13] The pass table is full");

class FullTable : public TD24Test
{
protected:
    FullTable()
    {
        for (std::size_t i = 0; i < d24::TPassTable::kMaxRecords; ++i) {
            makePass(kG, QString::number(i), "WAIT");
        }
        trace.take();
    }
    ~FullTable() override { EXPECT_EQ(gate->StackItemsCount(), int(d24::TPassTable::kMaxRecords)); }
};

TEST_F(FullTable, ACardIsRefusedAndTheTimerStarts)
{
    inject("$10.0.0.5:001TRQ77AB");
    trace.expect({read("$10.0.0.5:001TRQ77AB"), kFull});
    gate->StackItem(0)->Status = "TIMEOUT";
    clock.advance(10);
    trace.expect({stack(kG, "0", "TIMEOUT"), check(kG, "0", "TIMEOUT", 1)});
}

TEST_F(FullTable, AButtonIsRefusedAndItsLineReported)
{
    inject("#10.0.0.5:001TBTPH00");
    trace.expect({read("#10.0.0.5:001TBTPH00"), kFull, heard(kT, "BTPH")});
}

TEST_F(FullTable, ALookUpGivesNothing)
{
    EXPECT_TRUE(gate->p_hw_CheckStatus("10.0.0.5", "001T", "T", "77", "RQ").isEmpty());
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("10.0.0.5", "001T", "T", "77"), -1);
    trace.expect({kFull, kFull});
    EXPECT_EQ(gate->p_hw_CheckStatus("10.0.0.5", "002G", "G", "77", "RQ"), "WAIT");
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("10.0.0.5", "002G", "G", "7"), 7);
    trace.expect({looked(kG, "77", "WAIT")});
}

TEST(FullLivenessTable, APingIsReportedWithoutAnEntry)
{
    TD24Fixture fixture;
    fixture.gate->SetOnCheckStatus({});
    for (std::size_t i = 0; i < connector::TLivenessTable::kMaxRecords; ++i) {
        fixture.gate->DevicePing("1", QString::number(i), "T");
    }
    fixture.attach();
    for (int time = 0; time < 2; ++time) {
        fixture.inject("#10.0.0.5:001TPING00");
        fixture.trace.expect({read("#10.0.0.5:001TPING00"), noted(kT, "PING"), heard(kT, "PING")});
    }
    EXPECT_EQ(fixture.gate->DeviceList().size(), int(connector::TLivenessTable::kMaxRecords));
    EXPECT_EQ(fixture.gate->DevicePingFind("10.0.0.5", "001T"), -1);
}

} // namespace
