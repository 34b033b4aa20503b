// Lines that begin with "$".

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const QString kCardLine = QStringLiteral("$10.0.0.5:001TRQ12345678AB");

using EventLine = TD24Test;

TEST_F(EventLine, ACardMakesAPass)
{
    inject(kCardLine);
    trace.expect({read(kCardLine), "img 001T", looked(kT, "12345678", "NEW"), come(kT, "12345678", "NEW"),
                  stack(kT, "12345678", "NEW"), check(kT, "12345678", "NEW", 0)});
    EXPECT_EQ(gate->StackItemsCount(), 1);
}

TEST_F(EventLine, ACardFillsTheRecord)
{
    startTicks();
    gate->SetOnGetImg([](TComponent*, const QString& Device, QImage& Img) {
        EXPECT_EQ(Device, "002G");
        Img = QImage(3, 2, QImage::Format_RGB32);
    });
    inject("$10.0.0.5:002GRQ00A1B2C3FF");
    const d24::PRFidInfo pass = gate->StackItem(0);
    ASSERT_TRUE(pass);
    EXPECT_EQ(pass->IP, "10.0.0.5");
    EXPECT_EQ(pass->Device, "002G");
    EXPECT_EQ(pass->DeviceType, "G");
    EXPECT_EQ(pass->CardNumber, "00A1B2C3");
    EXPECT_EQ(pass->Status, "NEW");
    EXPECT_EQ(pass->StatusHard, "");
    EXPECT_DOUBLE_EQ(pass->Starttime, 0.5);
    EXPECT_EQ(pass->Img.size(), QSize(3, 2));
    EXPECT_EQ(pass->sys, 0);
    EXPECT_EQ(pass->InfoMess + pass->Command + pass->CommandAdd + pass->CRC, "");
    EXPECT_FALSE(pass->Finish);
}

TEST_F(EventLine, TheTypeIsReportedAsParsed)
{
    startTicks();
    inject("$10.0.0.5:002GRQ7AB");
    inject("$10.0.0.5:003IRQ7AB");
    inject("$10.0.0.5:004DRQ7AB");
    trace.expect({read("$10.0.0.5:002GRQ7AB"), "img 002G", looked(kG, "7", "NEW"), come(kG, "7", "NEW"),
                  read("$10.0.0.5:003IRQ7AB"), "img 003I", looked(kI, "7", "NEW"), come(kI, "7", "NEW"),
                  read("$10.0.0.5:004DRQ7AB"), "img 004D", looked("10.0.0.5!004D!T", "7", "NEW"),
                  come("10.0.0.5!004D!T", "7", "NEW")});
}

TEST_F(EventLine, ASecondCardOnlyReports)
{
    startTicks();
    inject(kCardLine);
    gate->StackItem(0)->Status = "PROGRESS";
    trace.take();
    inject("$10.0.0.6:001TRQ99AB"); // another link, the same controller
    trace.expect({read("$10.0.0.6:001TRQ99AB"), looked("10.0.0.6!001T!T", "99", "PROGRESS"),
                  come("10.0.0.6!001T!T", "99", "PROGRESS")});
    ASSERT_EQ(gate->StackItemsCount(), 1);
    EXPECT_EQ(gate->StackItem(0)->CardNumber, "12345678");
    EXPECT_EQ(gate->StackItem(0)->IP, "10.0.0.5");
    EXPECT_EQ(statusOf(0), "PROGRESS");
}

TEST_F(EventLine, ALookupReportsItsArguments)
{
    makePass(kG, "77", "OPEN");
    EXPECT_EQ(gate->p_hw_CheckStatus("9", "002G", "X", "88", "any"), "OPEN");
    trace.expect({"status CHECK!9!002G!X!88!any!OPEN"});
    EXPECT_EQ(gate->p_hw_CheckStatus("9", "009X", "X", "88", "any"), "NEW");
    trace.expect({"img 009X", "status CHECK!9!009X!X!88!any!NEW"});
    EXPECT_EQ(gate->StackItem(1)->DeviceType, "X");
    EXPECT_EQ(gate->StackItem(1)->Status, "NEW");
}

TEST_F(EventLine, PassesAreFound)
{
    EXPECT_EQ(gate->p_hw_FindDevice("10.0.0.5", "001T"), -1);
    EXPECT_EQ(gate->p_hw_FindIP("10.0.0.5"), -1);
    makePass(kT, "77");
    makePass(kG, "77");
    EXPECT_EQ(gate->p_hw_FindDevice("10.0.0.5", "002G"), 1);
    EXPECT_EQ(gate->p_hw_FindDevice("elsewhere", "002G"), 1);
    EXPECT_EQ(gate->p_hw_FindDevice("elsewhere", "002g"), -1);
    EXPECT_EQ(gate->p_hw_FindIP("10.0.0.5"), 0);
    EXPECT_EQ(gate->p_hw_FindIP("10.0.0"), -1);
}

TEST_F(EventLine, ByCardAPassIsFoundOrMade)
{
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("10.0.0.5", "001T", "D", "77"), 0);
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("elsewhere", "001T", "T", "77"), 0);
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("10.0.0.5", "001T", "T", "78"), 1);
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("10.0.0.5", "002T", "T", "77"), 2);
    const d24::PRFidInfo pass = gate->StackItem(0);
    EXPECT_EQ(pass->IP, "10.0.0.5");
    EXPECT_EQ(pass->DeviceType, "D");
    EXPECT_EQ(pass->CardNumber, "77");
    EXPECT_EQ(pass->Status, "NEW");
    EXPECT_DOUBLE_EQ(pass->Starttime, 0.5);
    trace.expect({}); // silently
    clock.advance(1'000);
    trace.expect({}); // and nothing starts
}

struct TMove
{
    const char* status;
    const char* type;
    const char* result;
};

const TMove kMoves[] = {
    {"PR", "T", "PROGRESSSTART"}, {"PR", "G", "PROGRESSSTART"}, {"PR", "I", "PROGRESSSTART"},
    {"PR", "X", "PROGRESSSTART"}, {"PR", "D", "FINISH"},        {"GR", "T", "FINISH"},
    {"GR", "G", "FINISH"},        {"GR", "I", "FINISH"},        {"GR", "D", "FINISH"},
    {"FK", "T", "TIMEOUT"},       {"FK", "G", "TIMEOUT"},       {"FK", "I", "TIMEOUT"},
    {"FK", "D", "TIMEOUT"},
};

TEST_F(EventLine, ProgressPassageAndGiveUpMoveThePass)
{
    startTicks();
    const d24::PRFidInfo pass = makePass("1!001T!T", "77");
    for (const TMove& move : kMoves) {
        for (const char* before : {"NEW", "OPEN", "CLOSE", "NOANSWER", "FINISH", "other"}) {
            SCOPED_TRACE(::testing::Message() << move.status << ' ' << move.type << ' ' << before);
            pass->DeviceType = move.type;
            pass->Status = before;
            const QString line = QStringLiteral("$2:001T%1cardAB").arg(move.status);
            inject(line);
            // with the record's values, not the line's
            trace.expect({read(line), come(QStringLiteral("1!001T!") + move.type, "77", move.result)});
            EXPECT_EQ(pass->Status, move.result);
        }
    }
}

TEST_F(EventLine, WithoutAPassTheyAreSilent)
{
    startTicks();
    makePass(kG, "77", "OPEN");
    for (const char* status : {"PR", "GR", "FK"}) {
        const QString line = QStringLiteral("$10.0.0.5:001T%1AB").arg(status);
        inject(line);
        trace.expect({read(line)});
        EXPECT_EQ(gate->StackItemsCount(), 1);
        EXPECT_EQ(statusOf(0), "OPEN");
    }
}

TEST_F(EventLine, OtherStatusesDoNothing)
{
    startTicks();
    makePass(kT, "77", "OPEN");
    for (const char* rest : {"rq7AB", "Rq7AB", "pr7AB", "gr7AB", "fk7AB", "R7AB", "", "RQ", "XX7AB", "PING00",
                             "CROSS00", "BTPH00", "ET7AB"}) {
        const QString line = QStringLiteral("$10.0.0.5:001T") + rest;
        inject(line);
        trace.expect({read(line)});
        EXPECT_EQ(gate->StackItemsCount(), 1);
        EXPECT_EQ(statusOf(0), "OPEN");
    }
}

TEST_F(EventLine, AnEmptyCardIsACard)
{
    startTicks();
    inject("$10.0.0.5:001TRQAB");
    trace.expect({read("$10.0.0.5:001TRQAB"), "img 001T", looked(kT, "", "NEW"), come(kT, "", "NEW")});
    EXPECT_EQ(gate->StackItem(0)->CardNumber, "");
}

TEST_F(EventLine, WithoutColonTheFieldsAreCutFromTheWholeLine)
{
    startTicks();
    inject("$01TRQ77AB");
    trace.expect(
        {read("$01TRQ77AB"), "img $01T", looked("!$01T!T", "77", "NEW"), come("!$01T!T", "77", "NEW")});
}

TEST_F(EventLine, AnyOtherFirstCharacterIsOnlyLogged)
{
    startTicks();
    for (const char* line : {"", " $10.0.0.5:001TRQ7AB", "10.0.0.5:001TRQ7AB", "!10.0.0.5:001TPING00"}) {
        inject(line);
        trace.expect({read(line)});
    }
    EXPECT_EQ(gate->StackItemsCount(), 0);
    EXPECT_EQ(gate->DeviceList().size(), 0);
}

TEST_F(EventLine, AnyLineStartsThePasses)
{
    for (const char* line : {"", "x", "$", "#10.0.0.5:001Tx00", "$10.0.0.5:001TXX7AB"}) {
        SCOPED_TRACE(line);
        TD24Fixture fixture;
        fixture.makePass(kT, "77", "OPEN");
        fixture.clock.advance(1'000);
        fixture.trace.expect({});
        fixture.inject(line);
        EXPECT_EQ(fixture.trace.take().last(), stack(kT, "77", "OPEN")); // at once
        fixture.clock.advance(10);
        fixture.trace.expect({stack(kT, "77", "OPEN")});
        fixture.inject("x"); // running already: no pass at once
        fixture.trace.expect({read("x")});
    }
}

TEST_F(EventLine, WorksWithoutAnyHandler)
{
    gate->SetOnLog({});
    gate->SetOnGetImg({});
    gate->SetOnCheckStatus({});
    gate->SetOnCheckSQL({});
    inject(kCardLine);
    EXPECT_EQ(statusOf(0), "NOANSWER");
    trace.expect({});
}

} // namespace
