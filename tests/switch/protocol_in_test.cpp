// The way in: what a line does to the tables.

#include "switch_fixture.h"
#include "tnv5/common/date_time_text.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

/// The sweeps run already, so that a line causes none.
class ProtocolIn : public TSwitchTest
{
protected:
    ProtocolIn()
    {
        inject("x");
        trace.take();
    }
};

TEST_F(ProtocolIn, ARelayLineSetsTheStateOfTheBoard)
{
    inject("#0.0.0.0:000ARELAY1Y4F");
    inject("#0.0.0.0:000ARELAY2N4F");
    inject("#0.0.0.0:000ARELAY3?4F");
    EXPECT_EQ(jobAt(0), "000A!1!NONE!ON");
    EXPECT_EQ(jobAt(1), "000A!2!NONE!OFF");
    EXPECT_EQ(jobAt(2), "000A!3!NONE!OFF"); // everything but "Y"
    EXPECT_EQ(device->StackItem(0)->IP, kLink);
    EXPECT_DOUBLE_EQ(device->StackItem(0)->Starttime, platform::Now());
    EXPECT_DOUBLE_EQ(device->StackItem(0)->Finishtime, platform::Now());
    trace.expect(
        {read("#0.0.0.0:000ARELAY1Y4F"), read("#0.0.0.0:000ARELAY2N4F"), read("#0.0.0.0:000ARELAY3?4F")});
    inject("#0.0.0.0:000ARELAY1N4F");
    EXPECT_EQ(jobAt(0), "000A!1!NONE!OFF");
    EXPECT_EQ(device->StackItemsCount(), 3);
}

TEST_F(ProtocolIn, AnotherLinkHasTheSameJob)
{
    inject("#0.0.0.0:000ARELAY1Y4F");
    inject("#9.9.9.9:000ARELAY1N4F");
    ASSERT_EQ(device->StackItemsCount(), 1);
    EXPECT_EQ(jobAt(0), "000A!1!NONE!OFF");
    EXPECT_EQ(device->StackItem(0)->IP, kLink);
}

TEST_F(ProtocolIn, AnotherBoardOrRelayHasAnother)
{
    inject("#0.0.0.0:000ARELAY1Y4F");
    inject("#0.0.0.0:000BRELAY1Y4F");
    inject("#0.0.0.0:000aRELAY1Y4F");
    inject("#0.0.0.0:000ARELAY2Y4F");
    EXPECT_EQ(device->StackItemsCount(), 4);
}

TEST_F(ProtocolIn, TheWordMayStandAnywhereInTheBody)
{
    inject("#0.0.0.0:000AxxRELAY4Y99");
    EXPECT_EQ(jobAt(0), "000A!4!NONE!ON");
    inject("#0.0.0.0:000Arelay5Y99"); // as it is written only
    inject("#0.0.0.0:RELAY1Y");       // not in the body
    EXPECT_EQ(device->StackItemsCount(), 1);
}

TEST_F(ProtocolIn, OtherWordsOfAStateLineDoNothing)
{
    for (const QString word : {"DC", "CC", "BTPH", "CROSS", "", "PIN", "PINGS", "NOPING"}) {
        const QString line = "#0.0.0.0:000A" + word + "99";
        inject(line);
        trace.expect({read(line)});
    }
    EXPECT_EQ(device->StackItemsCount(), 0);
    EXPECT_EQ(device->DeviceList().size(), 0);
}

TEST_F(ProtocolIn, ABoardsReportOfARelayThatIsOffSetsTheWantedState)
{
    inject("$0.0.0.0:000ASS3F");
    EXPECT_EQ(jobAt(0), "000A!3!OFF!NONE");
    EXPECT_EQ(device->StackItem(0)->IP, kLink);
    makeJob("000A!3!ON!ON");
    inject("$0.0.0.0:000ASS3F5.1.2026 12:00:00");
    EXPECT_EQ(jobAt(0), "000A!3!OFF!ON");
    EXPECT_EQ(device->StackItemsCount(), 1);
    trace.expect({read("$0.0.0.0:000ASS3F"), read("$0.0.0.0:000ASS3F5.1.2026 12:00:00")}); // no report
}

TEST_F(ProtocolIn, ABoardsReportOfARelayThatIsOnSetsStateAndTime)
{
    inject("$0.0.0.0:000ASS3N6.1.2026 13:30:00");
    EXPECT_EQ(jobAt(0), "000A!3!ON!NONE");
    EXPECT_EQ(device->StackItem(0)->IP, kLink);
    EXPECT_DOUBLE_EQ(device->StackItem(0)->Finishtime, 46'028 + 13.5 / 24);
    trace.expect({read("$0.0.0.0:000ASS3N6.1.2026 13:30:00"), report("CHECK OLD", "000A!3!ON!NONE"),
                  "log 0 000A NONE"});
}

TEST_F(ProtocolIn, ATimeThatIsNoneIsNow)
{
    for (const QString time :
         {"", "soon", "6.1.2026 13:30:0099", "6.13.2026"}) { // check characters are no time
        clock.advance(1'000);
        inject("$0.0.0.0:000ASS3N" + time);
        EXPECT_DOUBLE_EQ(device->StackItem(0)->Finishtime, platform::Now()) << time.toStdString();
    }
}

TEST_F(ProtocolIn, OtherStatesOfAReportDoNothing)
{
    for (const QString line :
         {"$0.0.0.0:000ASS3", "$0.0.0.0:000ASS", "$0.0.0.0:000ASS3n1.1.2026", "$0.0.0.0:000ASS3Y1.1.2026",
          "$0.0.0.0:000Ass3N1.1.2026", "$0.0.0.0:000AXSS3N1"}) {
        inject(line);
        trace.expect({read(line)});
    }
    EXPECT_EQ(device->StackItemsCount(), 0);
}

TEST_F(ProtocolIn, OtherCodesAreIgnored)
{
    for (const QString code : {"ET", "RQ", "PR", "GR", "FK", "XX", "90", ""}) {
        const QString line = "$0.0.0.0:000A" + code + "1234";
        inject(line);
        trace.expect({read(line)});
    }
    EXPECT_EQ(device->StackItemsCount(), 0);
}

TEST_F(ProtocolIn, NineHundredAsksEveryBoardThatHasPinged)
{
    device->DevicePing("0.0.0.0", "000A", "T");
    device->DevicePing("1.1.1.1", "001B", "T");
    trace.take();
    inject("$0.0.0.0:000A90000");
    trace.expect({read("$0.0.0.0:000A90000"), commanded("HW0.0.0.0:000A"), commanded("HW1.1.1.1:001B")});
    inject("$0.0.0.0:000A900"); // cut to "9"
    trace.expect({read("$0.0.0.0:000A900")});
    inject("$0.0.0.0:000A9001"); // to "90"
    trace.expect({read("$0.0.0.0:000A9001")});
    inject("$0.0.0.0:000A900xyz"); // only how it begins counts
    trace.expect({read("$0.0.0.0:000A900xyz"), commanded("HW0.0.0.0:000A"), commanded("HW1.1.1.1:001B")});
}

TEST_F(ProtocolIn, LinesOfOtherKindsAreOnlyLogged)
{
    for (const QString line : {"", "x", "0.0.0.0:000ARELAY1Y00", " #0.0.0.0:000ARELAY1Y00"}) {
        inject(line);
        trace.expect({read(line)});
    }
    EXPECT_EQ(device->StackItemsCount(), 0);
}

TEST_F(ProtocolIn, UpdatePingIsAnEmptyHook)
{
    device->DevicePing(kLink, kBoard, "T");
    const double heard = device->DeviceList().at(0)->Pingtime;
    clock.advance(1'000);
    device->UpdatePing(kLink, kBoard, "T");
    inject("#0.0.0.0:000ARELAY1Y4F");
    EXPECT_EQ(device->DeviceList().at(0)->Pingtime, heard);
}

TEST(FirstLine, SweepsAtOnceAndStartsTheTimerForGood)
{
    TSwitchFixture fixture;
    fixture.makeJob("000A!1!OFF!OFF");
    fixture.clock.advance(10'000);
    fixture.trace.expect({}); // nothing before a line
    fixture.inject("x");
    fixture.trace.expect({read("x"), reached("000A!1!OFF!OFF")});
    fixture.inject("x"); // the timer runs: not again
    fixture.trace.expect({read("x")});
    fixture.clock.advance(2'999);
    fixture.trace.expect({});
    fixture.clock.advance(1);
    fixture.trace.expect({reached("000A!1!OFF!OFF")});
    fixture.clock.advance(3'000);
    fixture.trace.expect({reached("000A!1!OFF!OFF")});
}

TEST(FirstLine, StartsTheTimerWithoutJobsToo)
{
    TSwitchFixture fixture;
    fixture.inject("x");
    fixture.makeJob("000A!1!OFF!OFF");
    fixture.clock.advance(30'000); // an empty table stops nothing
    EXPECT_EQ(fixture.trace.countOf("status XXXSTACK"), 10);
}

TEST(FindDevice, FindsOrMakes)
{
    TSwitchFixture fixture;
    EXPECT_EQ(fixture.device->p_hw_FindDevice("1", "000A", "1"), 0);
    EXPECT_EQ(fixture.device->p_hw_FindDevice("1", "000A", "2"), 1);
    EXPECT_EQ(fixture.device->p_hw_FindDevice("2", "000A", "1"), 0);
    EXPECT_EQ(fixture.device->p_hw_FindDevice("", "", ""), 2);
    EXPECT_EQ(fixture.device->StackItemsCount(), 3);
    EXPECT_EQ(fixture.jobAt(0), "000A!1!NONE!NONE");
    EXPECT_EQ(fixture.device->StackItem(3), nullptr);
    EXPECT_EQ(fixture.device->StackItem(-1), nullptr);
    fixture.trace.expect({});
}

TEST(FindDevice, OfEqualJobsTheFirstOneIsMeant)
{
    TSwitchFixture fixture;
    fixture.inject("x"); // the sweeps run: a line causes none
    fixture.device->p_hw_FindDevice("1", "000A", "1");
    fixture.device->p_hw_FindDevice("1", "000A", "2");
    fixture.device->StackItem(1)->Relay = "1";
    EXPECT_EQ(fixture.device->p_hw_FindDevice("1", "000A", "1"), 0);
    fixture.inject("#0.0.0.0:000ARELAY1Y4F");
    EXPECT_EQ(fixture.device->StackItem(0)->StatusDevice, "ON");
    EXPECT_NE(fixture.device->StackItem(1)->StatusDevice, "ON");
}

TEST(FindDevice, AFullTableRefuses)
{
    TSwitchFixture fixture;
    const int most = int(switching::TJobTable::kMaxRecords);
    for (int i = 0; i < most; ++i) {
        fixture.device->p_hw_FindDevice("1", QString::number(i), "1");
    }
    const QString full = "error [13] The job table is full";
    EXPECT_EQ(fixture.device->p_hw_FindDevice("1", "new", "1"), -1);
    fixture.trace.expect({full});
    EXPECT_EQ(fixture.device->p_hw_CheckStatus("1", "new", "1", "ON", 1), "");
    fixture.trace.expect({full});
    fixture.device->SetOnCheckStatus({}); // the first line sweeps
    fixture.device->SetOnLog({});
    for (const QString line : {"#0.0.0.0:000ARELAY1Y4F", "$0.0.0.0:000ASS3F", "$0.0.0.0:000ASS3N"}) {
        fixture.device->p_hw_ProtocolIn(line);
        EXPECT_EQ(fixture.trace.take().filter(full).size(), 1);
    }
    EXPECT_EQ(fixture.device->StackItemsCount(), most);
    EXPECT_EQ(fixture.device->p_hw_FindDevice("1", "7", "1"), 7);
}

TEST(CheckStatus, SetsReportsAndLogsEveryJob)
{
    TSwitchFixture fixture;
    fixture.makeJob("000A!1!OFF!ON");
    fixture.makeJob("001A!2!ON!NOTINLINE");
    EXPECT_EQ(fixture.device->p_hw_CheckStatus("9", "000A", "1", "ON", 5.5), "ON");
    fixture.trace.expect({report("CHECK OLD", "000A!1!ON!ON"), "log 0 000A ON", "log 1 001A NOTINLINE"});
    EXPECT_EQ(fixture.device->StackItem(0)->Finishtime, 5.5);
    EXPECT_EQ(fixture.device->p_hw_CheckStatus("9", "002A", "3", "any", 7), "any");
    fixture.trace.expect(
        {report("CHECK OLD", "002A!3!any!NONE"), "log 0 000A ON", "log 1 001A NOTINLINE", "log 2 002A NONE"});
    EXPECT_EQ(fixture.device->StackItem(2)->IP, "9");
    fixture.device->SetOnLog({});
    fixture.device->p_hw_CheckStatus("9", "002A", "3", "OFF", 7);
    fixture.trace.expect({report("CHECK OLD", "002A!3!OFF!NONE")});
}

TEST(CheckStatus, AnswersWhatAHandlerMadeOfIt)
{
    TSwitchFixture fixture;
    fixture.trace.once("status", [&] { fixture.device->StackItem(0)->Status = "OFF"; });
    EXPECT_EQ(fixture.device->p_hw_CheckStatus("9", "000A", "1", "ON", 1), "OFF");
}

} // namespace
