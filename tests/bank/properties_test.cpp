#include "bank_fixture.h"
#include "support/published_suite.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

struct TPublishedBank
{
    using Component = TBankPos;

    static TPublishedTable table()
    {
        return {
            {"IDLang", 0},
            {"PosType", 0},
            {"ComPort", static_cast<platform::TComPort*>(nullptr)},
            {"TimeOut", 0},
            {"OnLog", platform::TLogEvent()},
            {"OnError", platform::TLogEvent()},
            {"OnRequestOperation", bank::TRequestOperation()},
            {"OnRequestAmount", bank::TRequestAmount()},
            {"CodeError", QString()},
            {"CodeOk", QString()},
        };
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Bank, Published, TPublishedBank);

TEST(Properties, WorkThroughReflection)
{
    TBankFixture fixture;
    TBankPos& pos = *fixture.pos;
    EXPECT_TRUE(pos.setProperty("IDLang", 1));
    EXPECT_TRUE(pos.setProperty("PosType", 3));
    EXPECT_TRUE(pos.setProperty("TimeOut", 5));
    EXPECT_TRUE(pos.setProperty("CodeError", "a;"));
    EXPECT_TRUE(pos.setProperty("CodeOk", "b;"));
    EXPECT_EQ(pos.IDLang(), 1);
    EXPECT_EQ(pos.PosType(), 3);
    EXPECT_EQ(pos.TimeOut(), 5);
    EXPECT_EQ(pos.CodeError(), "a;");
    EXPECT_EQ(pos.CodeOk(), "b;");
    int asked = 0;
    EXPECT_TRUE(pos.setProperty("OnRequestAmount", QVariant::fromValue(bank::TRequestAmount(
                                                       [&](TComponent*, int& Amount, int&, bool& Apply) {
                                                           ++asked;
                                                           Amount = 7;
                                                           Apply = true;
                                                       }))));
    fixture.feed(kAskAmount);
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(fixture.trace.take().contains(wrote(framed("05=000000000007"))));
    EXPECT_TRUE(pos.setProperty("ComPort", QVariant::fromValue<platform::TComPort*>(nullptr)));
    EXPECT_FALSE(pos.IsConnected());
}

TEST(Properties, AnyNumberIsStored)
{
    TBankPos pos;
    for (const int value : {4, -1, 2'000'000'000, 0}) {
        pos.SetPosType(value);
        EXPECT_EQ(pos.PosType(), value);
        pos.SetTimeOut(value);
        EXPECT_EQ(pos.TimeOut(), value);
        pos.SetIDLang(value);
        EXPECT_EQ(pos.IDLang(), value);
    }
}

} // namespace
