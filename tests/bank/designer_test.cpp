// A component in the form designer has no parts and hears nothing.

#include "bank_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class Designer : public TBankTest
{
protected:
    Designer()
    {
        const platform::TDesignScope scope;
        pos = std::make_unique<TBankPos>();
        pos->SetIDLang(2);
        pos->SetPosType(2);
        attach();
        pos->SetComport(port.get());
    }
};

TEST_F(Designer, PropertiesAreStored)
{
    EXPECT_TRUE(pos->Designing());
    EXPECT_EQ(pos->ComPort(), port.get());
    EXPECT_EQ(pos->PosType(), 2);
    pos->SetTimeOut(3);
    EXPECT_EQ(pos->TimeOut(), 3);
    pos->SetCodeOk("00;");
    EXPECT_EQ(pos->CodeOk(), "00;");
    QStringList list;
    pos->GetPosList(list);
    EXPECT_EQ(list.size(), 4);
    EXPECT_EQ(pos->CutValue("01=1", "01="), "1");
}

TEST_F(Designer, NothingIsHeardAndNothingTicks)
{
    feed(kAskAmount);
    feed(framed(kAnswerBody));
    clock.advance(10'000'000);
    trace.expect({});
}

TEST_F(Designer, NothingTouchesTheMissingParts)
{
    for (const int type : {0, 1, 2, 3, 4}) {
        pos->SetPosType(type);
        pos->SetUpComport();
        pos->SetComport(nullptr);
        pos->SetConnection(true);
        pos->SetComport(port.get());
        pos->SetConnection(true);
        pos->SetConnection(false);
        feed(kAskAmount);
    }
    pos.reset();
}

} // namespace
