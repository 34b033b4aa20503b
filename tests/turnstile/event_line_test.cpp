// The "$" lines of the controllers, one by one.

#include "turnstile_fixture.h"

namespace {

using namespace tnv5::tests;
using tnv5::turnstile::PRFidInfo;

using EventIn = TTurnstileTest;

TEST_F(EventIn, CardOfAListedAddress)
{
    inject("$01AR12345678");
    trace.expect({
        "log %Считано с порта% $01AR12345678",
        "img 01A",
        "status CHECK 01A 12345678 R NEW",
        "status COME 01A 12345678 NEW NEW",
        "status STACK 01A 12345678 NEW NEW",
        "check 01A 12345678 NEW mode 0 preset -1",
    });
    ASSERT_EQ(gate->StackItemsCount(), 1);
    const PRFidInfo pass = gate->StackItem(0);
    EXPECT_EQ(pass->CardNumber, "12345678");
    EXPECT_EQ(pass->Device, "01A");
    EXPECT_EQ(pass->Status, "NEW");
    EXPECT_EQ(pass->StatusHard, "");
    EXPECT_EQ(pass->Starttime, 0.5);
    EXPECT_EQ(pass->sys, 0);
}

TEST_F(EventIn, CardOfAnUnlistedAddressIsReportedAndHandled)
{
    inject("$03AR1");
    trace.expect({
        read("$03AR1"),
        "error [02] Device not found 03A",
        "img 03A",
        looked("03A", "1", "NEW"),
        come("03A", "1", "NEW"),
        stack("03A", "1", "NEW"),
        check("03A", "1", "NEW", 0),
    });
    EXPECT_EQ(gate->DeviceList(), QStringList({"01A", "01D", "02A"})); // an event line adds none
}

TEST_F(EventIn, EveryLineOfAnUnlistedAddressIsReported)
{
    for (const QString line : {"$03AP", "$03AG1", "$03AF", "$03AX", "$03A"}) {
        inject(line);
        trace.expect({read(line), "error [02] Device not found 03A"});
    }
}

TEST_F(EventIn, ListedIsExactAndCaseSensitive)
{
    inject("$01aX");
    trace.expect({read("$01aX"), "error [02] Device not found 01a"});
    gate->SetDeviceList({"01A "});
    inject("$01AX");
    trace.expect({read("$01AX"), "error [02] Device not found 01A"});
}

TEST_F(EventIn, UnlistedWithoutErrorHandlerIsHandledAllTheSame)
{
    gate->SetOnError({});
    inject("$03AR1");
    EXPECT_EQ(gate->StackItemsCount(), 1);
    EXPECT_EQ(trace.take().size(), 6);
}

TEST_F(EventIn, ShortLinesHaveEmptyFields)
{
    inject("$");
    trace.expect({read("$"), "error [02] Device not found "});
    inject("$0");
    trace.expect({read("$0"), "error [02] Device not found 0"});
    inject("$01");
    trace.expect({read("$01"), "error [02] Device not found 01"});
    inject("$01A");
    trace.expect({read("$01A")});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(EventIn, CardMayBeEmpty)
{
    inject("$01AR");
    trace.expect({read("$01AR"), "img 01A", looked("01A", "", "NEW"), come("01A", "", "NEW"),
                  stack("01A", "", "NEW"), check("01A", "", "NEW", 0)});
    EXPECT_EQ(gate->StackItem(0)->CardNumber, "");
}

TEST_F(EventIn, CardIsTakenAsItComes)
{
    inject("$01AR 1$2#Ж ");
    EXPECT_EQ(gate->StackItem(0)->CardNumber, " 1$2#Ж ");
}

TEST_F(EventIn, SecondCardIsReportedButNotStored)
{
    inject("$01AR1");
    trace.take();
    inject("$01AR2");
    trace.expect({read("$01AR2"), looked("01A", "2", "NEW"), come("01A", "2", "NEW")});
    ASSERT_EQ(gate->StackItemsCount(), 1);
    EXPECT_EQ(gate->StackItem(0)->CardNumber, "1");
}

TEST_F(EventIn, SecondCardSeesTheStateOfThePass)
{
    openPass("01A");
    inject("$01AR2");
    trace.expect({read("$01AR2"), looked("01A", "2", "OPEN"), come("01A", "2", "OPEN")});
}

TEST_F(EventIn, AnotherAddressHasItsOwnPass)
{
    inject("$01AR1");
    trace.take();
    inject("$02AR1");
    trace.expect({read("$02AR1"), "img 02A", looked("02A", "1", "NEW"), come("02A", "1", "NEW")});
    EXPECT_EQ(gate->StackItemsCount(), 2);
}

TEST_F(EventIn, PassageOnATurnstileIsProgress)
{
    const PRFidInfo pass = openPass("01A");
    inject("$01AP");
    trace.expect({read("$01AP"), come("01A", "77", "PROGRESS")});
    EXPECT_EQ(pass->Status, "PROGRESS");
}

TEST_F(EventIn, PassageOnADoorIsTheEnd)
{
    const PRFidInfo pass = openPass("01D");
    inject("$01DP");
    trace.expect({read("$01DP"), come("01D", "77", "FINISH")});
    EXPECT_EQ(pass->Status, "FINISH");
}

TEST_F(EventIn, PassageOnAnyOtherChannelChangesNothing)
{
    const PRFidInfo pass = openPass("01B");
    inject("$01BP");
    trace.expect({read("$01BP"), come("01B", "77", "OPEN")}); // listed since its relay answered
    EXPECT_EQ(pass->Status, "OPEN");
}

TEST_F(EventIn, PassageReportsTheCardOfThePass)
{
    openPass("01A");
    inject("$01AP12345");
    trace.expect({read("$01AP12345"), come("01A", "77", "PROGRESS")});
}

TEST_F(EventIn, PassageFollowsTheDoorIndex)
{
    gate->SetDoorIndex("B");
    gate->SetDeviceList({"01B", "01D"});
    const PRFidInfo door = openPass("01B");
    const PRFidInfo other = openPass("01D");
    inject("$01BP");
    inject("$01DP");
    trace.expect({read("$01BP"), come("01B", "77", "FINISH"), read("$01DP"), come("01D", "77", "OPEN")});
    EXPECT_EQ(door->Status, "FINISH");
    EXPECT_EQ(other->Status, "OPEN");
}

TEST_F(EventIn, PassageIsProgressWhenTheDoorLetterIsTheTurnstiles)
{
    gate->SetDoorIndex("A");
    const PRFidInfo pass = openPass("01A");
    inject("$01AP");
    trace.expect({read("$01AP"), come("01A", "77", "PROGRESS")}); // the second test wins
    EXPECT_EQ(pass->Status, "PROGRESS");
}

TEST_F(EventIn, NoChannelIsADoorWithoutADoorIndex)
{
    for (const QString index : {"", "DD", "AD", "d"}) {
        gate->SetDoorIndex(index);
        const PRFidInfo pass = openPass("01D");
        inject("$01DP");
        trace.expect({read("$01DP"), come("01D", "77", "OPEN")});
        EXPECT_EQ(pass->Status, "OPEN") << index.toStdString();
    }
}

TEST_F(EventIn, PassedIsTheEndOnEveryChannel)
{
    gate->SetDeviceList({"01A", "01B", "01D"});
    for (const QString device : {"01A", "01B", "01D"}) {
        const PRFidInfo pass = openPass(device);
        inject(u'$' + device + "G9");
        trace.expect({read(u'$' + device + "G9"), come(device, "77", "FINISH")});
        EXPECT_EQ(pass->Status, "FINISH");
    }
}

TEST_F(EventIn, GivenUpIsATimeOutOnEveryChannel)
{
    gate->SetDeviceList({"01A", "01B", "01D"});
    for (const QString device : {"01A", "01B", "01D"}) {
        const PRFidInfo pass = openPass(device);
        inject(u'$' + device + "F9");
        trace.expect({read(u'$' + device + "F9"), come(device, "77", "TIMEOUT")});
        EXPECT_EQ(pass->Status, "TIMEOUT");
    }
}

TEST_F(EventIn, PassageWithoutAPassIsNothing)
{
    for (const QString line : {"$01AP", "$01AG", "$01AF", "$01DP"}) {
        inject(line);
        trace.expect({read(line)});
    }
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(EventIn, AddressOfThePassIsCaseSensitive)
{
    gate->SetDeviceList({"01A", "01a"});
    const PRFidInfo pass = openPass("01A");
    inject("$01aG");
    trace.expect({read("$01aG")});
    EXPECT_EQ(pass->Status, "OPEN");
}

TEST_F(EventIn, OnlyTheFirstPassOfAnAddressIsMeant)
{
    const PRFidInfo first = makePass("01A", "1", "OPEN");
    const PRFidInfo second = makePass("01A", "2", "OPEN");
    gate->p_hw_ProtocolIn("$01AP");
    EXPECT_EQ(first->Status, "PROGRESS");
    EXPECT_EQ(second->Status, "OPEN");
    gate->p_hw_ProtocolIn("$01AF");
    EXPECT_EQ(first->Status, "TIMEOUT");
    EXPECT_EQ(second->Status, "OPEN");
}

TEST_F(EventIn, EventsOverwriteAnyState)
{
    const PRFidInfo pass = openPass("01A");
    pass->Status = "TIMEOUT";
    inject("$01AP");
    EXPECT_EQ(pass->Status, "PROGRESS");
    inject("$01AG");
    EXPECT_EQ(pass->Status, "FINISH");
    inject("$01AF");
    EXPECT_EQ(pass->Status, "TIMEOUT");
    inject("$01AG");
    EXPECT_EQ(pass->Status, "FINISH");
}

TEST_F(EventIn, AnyOtherLetterIsNothing)
{
    const PRFidInfo pass = openPass("01A");
    for (const QString letter : {"r", "p", "g", "f", "X", "0", " ", "Р", "T"}) { // the Р is a Cyrillic one
        inject("$01A" + letter + "1");
        trace.expect({read("$01A" + letter + "1")});
    }
    EXPECT_EQ(pass->Status, "OPEN");
    EXPECT_EQ(gate->StackItemsCount(), 1);
}

TEST_F(EventIn, DeviceMessagesInAnEventLineAreNothing)
{
    gate->SetDeviceList({});
    inject("$01AHardReset");
    trace.expect({read("$01AHardReset"), "error [02] Device not found 01A"});
    EXPECT_TRUE(gate->DeviceList().isEmpty());
}

TEST_F(EventIn, TheResultOfALookupIsFixedBeforeThePictureIsAskedFor)
{
    trace.each("img", [&] { gate->StackItem(0)->Status = "OPEN"; });
    inject("$01AR1");
    EXPECT_EQ(trace.take().mid(0, 4),
              QStringList({read("$01AR1"), "img 01A", looked("01A", "1", "NEW"), come("01A", "1", "NEW")}));
}

TEST_F(EventIn, TheResultOfALookupServesTheNextReport)
{
    trace.each("status CHECK", [&] { gate->StackItem(0)->Status = "XYZ"; });
    inject("$01AR1");
    trace.expect({read("$01AR1"), "img 01A", looked("01A", "1", "NEW"), come("01A", "1", "NEW")});
}

TEST_F(EventIn, LookupCanBeCalledByTheHost)
{
    EXPECT_EQ(gate->p_hw_CheckStatus("05B", "1", "why"), "NEW");
    trace.expect({"img 05B", "status CHECK 05B 1 why NEW"});
    gate->StackItem(0)->Status = "OPEN";
    EXPECT_EQ(gate->p_hw_CheckStatus("05B", "2", ""), "OPEN");
    trace.expect({"status CHECK 05B 2  OPEN"});
    EXPECT_EQ(gate->StackItemsCount(), 1);
    EXPECT_EQ(gate->StackItem(0)->CardNumber, "1");
    clock.advance(1'000);
    trace.expect({}); // the timer is started by lines only
}

TEST_F(EventIn, LookupWorksWithoutAPictureHandler)
{
    gate->SetOnGetImg({});
    EXPECT_EQ(gate->p_hw_CheckStatus("01A", "1", "R"), "NEW");
    trace.expect({looked("01A", "1", "NEW")});
}

TEST_F(EventIn, PassOfAnAddressAndCardCanBeMadeByTheHost)
{
    clock.jumpTo(TManualClock::at(6, 0));
    EXPECT_EQ(gate->p_hw_FindDevice("01A"), -1);
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("01A", "1"), 0);
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("01A", "2"), 1);
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("01a", "1"), 2);
    EXPECT_EQ(gate->p_hw_FindDeviceByRelay("01A", "2"), 1);
    EXPECT_EQ(gate->p_hw_FindDevice("01A"), 0);
    EXPECT_EQ(gate->p_hw_FindDevice("01a"), 2);
    EXPECT_EQ(gate->p_hw_FindDevice("01"), -1);
    trace.expect({}); // asks for no picture, reports nothing
    const PRFidInfo pass = gate->StackItem(1);
    EXPECT_EQ(pass->Device, "01A");
    EXPECT_EQ(pass->CardNumber, "2");
    EXPECT_EQ(pass->Status, "NEW");
    EXPECT_EQ(pass->StatusHard, "");
    EXPECT_EQ(pass->Starttime, 0.25);
    EXPECT_TRUE(pass->Img.isNull());
    EXPECT_EQ(pass->sys, 0);
}

TEST_F(EventIn, PassesCanBeLookedAt)
{
    makePass("01A", "1");
    EXPECT_EQ(gate->StackItemsCount(), 1);
    EXPECT_NE(gate->StackItem(0), nullptr);
    EXPECT_EQ(gate->StackItem(1), nullptr);
    EXPECT_EQ(gate->StackItem(-1), nullptr);
}

} // namespace
