// A pass table that is full: nothing is removed, nothing is thrown, a pass is refused with one line.

#include "turnstile_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const QString kFull = QStringLiteral("error [13] The pass table is full");

class FullTable : public TTurnstileTest
{
protected:
    FullTable()
    {
        for (std::size_t i = 0; i < turnstile::TPassTable::kMaxPasses; ++i) {
            gate->StackItem(gate->p_hw_FindDeviceByRelay("02A", QString::number(i)))->Status = "WAIT";
        }
        trace.take();
    }
    ~FullTable() override { EXPECT_EQ(gate->StackItemsCount(), int(turnstile::TPassTable::kMaxPasses)); }
};

TEST_F(FullTable, ACardIsRefusedAndTheTimerStarts)
{
    inject("$01AR77");
    trace.expect({read("$01AR77"), kFull});
    gate->StackItem(0)->Status = "TIMEOUT";
    clock.advance(100);
    trace.expect({stack("02A", "0", "TIMEOUT"), check("02A", "0", "TIMEOUT", 1)});
}

TEST_F(FullTable, AButtonIsRefusedAndItsLineReported)
{
    inject("#01DBtn-Activ");
    trace.expect({read("#01DBtn-Activ"), kFull, heard("01D", "Btn-Activ")});
}

TEST_F(FullTable, ALookUpGivesNothing)
{
    const QString state = gate->p_hw_CheckStatus("01A", "77", "R");
    EXPECT_TRUE(state.isEmpty());
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("01A", "77"), -1);
    trace.expect({kFull, kFull});
}

TEST_F(FullTable, APassThatIsInItIsFound)
{
    EXPECT_EQ(gate->p_hw_CheckStatus("02A", "77", "R"), "WAIT");
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("02A", "7"), 7);
    trace.expect({looked("02A", "77", "WAIT")});
}

TEST_F(FullTable, WithoutAnErrorHandlerNothingIsSaid)
{
    gate->SetOnError({});
    inject("$01AR77");
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("01A", "77"), -1);
    trace.expect({read("$01AR77")});
}

} // namespace
