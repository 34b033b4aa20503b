// The "#" lines of the controllers, one by one.

#include "turnstile_fixture.h"

namespace {

using namespace tnv5::tests;
using tnv5::turnstile::PRFidInfo;

using MessageIn = TTurnstileTest;

TEST_F(MessageIn, AnyTextIsReported)
{
    inject("#01AHello !1");
    trace.expect({"log %Считано с порта% #01AHello !1", "status COME 01A NOCARDNUMBER Hello !1 Hello !1"});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(MessageIn, AnUnlistedAddressIsNoError)
{
    inject("#03AHello");
    trace.expect({read("#03AHello"), heard("03A", "Hello")});
    EXPECT_FALSE(gate->DeviceList().contains("03A"));
}

TEST_F(MessageIn, ShortLinesHaveEmptyFields)
{
    inject("#");
    trace.expect({read("#"), heard("", "")});
    inject("#0");
    trace.expect({read("#0"), heard("0", "")});
    inject("#03A");
    trace.expect({read("#03A"), heard("03A", "")});
    EXPECT_EQ(gate->DeviceList(), QStringList({"01A", "01D", "02A"}));
}

TEST_F(MessageIn, ResetWaitingAndRelayAddTheAddressOnce)
{
    for (const QString text :
         {"HardReset", "hardreset", "Wait-Card", "WAIT-CARD", "Relay", "relay 2", "RELAYS"}) {
        gate->SetDeviceList({"09A"});
        for (int i = 0; i < 2; ++i) {
            inject("#05A" + text);
            trace.expect({read("#05A" + text), heard("05A", text)});
            EXPECT_EQ(gate->DeviceList(), QStringList({"09A", "05A"})) << text.toStdString();
        }
    }
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(MessageIn, OtherTextsAddNone)
{
    gate->SetDeviceList({});
    for (const QString text : {"HardReset ", "Hard-Reset", "HardRese", "WaitCard", "Wait-Card1", "Rela",
                               " Relay", "CRC-ERROR", "Gate-Open", "Btn-Activ", ""}) {
        inject("#05A" + text);
        EXPECT_TRUE(gate->DeviceList().isEmpty()) << text.toStdString();
    }
}

TEST_F(MessageIn, AddressesAreAddedExactlyAsTheyCome)
{
    gate->SetDeviceList({"05A"});
    inject("#05aHardReset");
    inject("#ЖЖЖHardReset");
    EXPECT_EQ(gate->DeviceList(), QStringList({"05A", "05a", "ЖЖЖ"}));
}

TEST_F(MessageIn, NoiseCannotGrowTheListWithoutBound)
{
    QStringList devices;
    for (qsizetype i = 0; i < TTurnStylerDevice::kMaxDevices; ++i) {
        devices << QString::number(i + 1'000);
    }
    gate->SetDeviceList(devices);
    inject("#01AHardReset");
    inject("#02AWait-Card");
    inject("#03ARelay");
    EXPECT_EQ(gate->DeviceList().size(), TTurnStylerDevice::kMaxDevices);
}

TEST_F(MessageIn, RelayIsTheAnswerThatAPassWaitsFor)
{
    const PRFidInfo pass = makePass("01A", "1", "OPEN");
    const PRFidInfo second = makePass("01A", "2", "OPEN");
    inject("#01ArElAy 3");
    EXPECT_EQ(pass->StatusHard, "RELAY");
    EXPECT_EQ(pass->Status, "OPEN");
    EXPECT_EQ(second->StatusHard, ""); // the first of the address only
}

TEST_F(MessageIn, RelayOfAnotherAddressIsNoAnswer)
{
    const PRFidInfo pass = makePass("01A", "1", "OPEN");
    inject("#01aRelay 3");
    inject("#02ARelay 3");
    EXPECT_EQ(pass->StatusHard, "");
}

TEST_F(MessageIn, ChecksumErrorIsKeptWithThePass)
{
    const PRFidInfo pass = openPass("01A");
    inject("#01Acrc-Error");
    trace.expect({read("#01Acrc-Error"), heard("01A", "crc-Error")});
    EXPECT_EQ(pass->StatusHard, "CRC-ERROR");
    EXPECT_EQ(pass->Status, "OPEN");
    inject("#02ACRC-ERROR"); // no pass: nothing
    trace.expect({read("#02ACRC-ERROR"), heard("02A", "CRC-ERROR")});
}

TEST_F(MessageIn, GateOpenFinishesADoor)
{
    const PRFidInfo pass = openPass("01D");
    inject("#01DgAte-oPen");
    trace.expect({read("#01DgAte-oPen"), heard("01D", "gAte-oPen")});
    EXPECT_EQ(pass->StatusHard, "GATEOPEN");
    EXPECT_EQ(pass->Status, "FINISH");
}

TEST_F(MessageIn, GateOpenIsOnlyKeptOnOtherChannels)
{
    for (const QString device : {"01A", "01B"}) {
        const PRFidInfo pass = openPass(device);
        inject(u'#' + device + "Gate-Open");
        EXPECT_EQ(pass->StatusHard, "GATEOPEN");
        EXPECT_EQ(pass->Status, "OPEN");
    }
}

TEST_F(MessageIn, GateOpenFollowsTheDoorIndex)
{
    gate->SetDoorIndex("A");
    const PRFidInfo pass = openPass("01A");
    inject("#01AGate-Open");
    EXPECT_EQ(pass->Status, "FINISH");
    gate->SetDoorIndex("");
    const PRFidInfo door = openPass("01D");
    inject("#01DGate-Open");
    EXPECT_EQ(door->Status, "OPEN");
}

TEST_F(MessageIn, GateOpenWithoutAPassIsOnlyReported)
{
    inject("#01DGate-Open");
    trace.expect({read("#01DGate-Open"), heard("01D", "Gate-Open")});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(MessageIn, ButtonOnADoorMakesAPass)
{
    inject("#01Dbtn-activ");
    trace.expect({
        read("#01Dbtn-activ"),
        "img 01D",
        "status CHECK 01D -2-2-2-2-2 R NEW",
        "status COME 01D NOCARDNUMBER btn-activ btn-activ",
        "status STACK 01D -2-2-2-2-2 NEW NEW",
        "check 01D -2-2-2-2-2 NEW mode 0 preset -1",
        "status STACK 01D -2-2-2-2-2 OPEN OPEN",
    });
}

TEST_F(MessageIn, ButtonOnAnyOtherChannelIsOnlyReported)
{
    inject("#01ABtn-Activ");
    inject("#01BBtn-Activ");
    inject("#01dBtn-Activ");
    EXPECT_EQ(gate->StackItemsCount(), 0);
    trace.expect({read("#01ABtn-Activ"), heard("01A", "Btn-Activ"), read("#01BBtn-Activ"),
                  heard("01B", "Btn-Activ"), read("#01dBtn-Activ"), heard("01d", "Btn-Activ")});
}

TEST_F(MessageIn, ButtonFollowsTheDoorIndex)
{
    for (const QString index : {"A", "", "DD", "d"}) {
        gate->SetDoorIndex(index);
        inject("#01Dbtn-activ");
        trace.expect({read("#01Dbtn-activ"), heard("01D", "btn-activ")});
    }
    gate->SetDoorIndex("A");
    inject("#01ABtn-Activ");
    EXPECT_EQ(gate->StackItemsCount(), 1);
}

TEST_F(MessageIn, ButtonOpensANewPass)
{
    const PRFidInfo pass = makePass("01D", "77");
    gate->p_hw_ProtocolIn("x"); // starts the timer, so that the next line is seen alone
    trace.take();
    inject("#01DBtn-Activ");
    trace.expect({
        read("#01DBtn-Activ"),
        "write $01D32363\\r",
        "log %Отправлено на порт% $01D323",
        heard("01D", "Btn-Activ"),
    });
    EXPECT_EQ(pass->Status, "OPEN");
    EXPECT_EQ(pass->CardNumber, "77");
    EXPECT_EQ(gate->StackItemsCount(), 1);
}

TEST_F(MessageIn, ButtonChangesTheStateAfterTheCommand)
{
    const PRFidInfo pass = makePass("01D", "77");
    gate->p_hw_ProtocolIn("x");
    QStringList states;
    trace.OnLine = [&](const QString&) { states << pass->Status; };
    inject("#01DBtn-Activ");
    EXPECT_EQ(states.join(u' '), "NEW NEW NEW OPEN");
}

TEST_F(MessageIn, ButtonLeavesAPassThatIsNotNew)
{
    gate->p_hw_ProtocolIn("$01DR1");
    for (const QString status : {"OPEN", "CLOSE", "PROGRESS", "FINISH", "TIMEOUT", "NOANSWER", "CRC-ERROR"}) {
        gate->StackItem(0)->Status = status;
        trace.take();
        inject("#01DBtn-Activ");
        trace.expect({read("#01DBtn-Activ"), heard("01D", "Btn-Activ")});
        inject("#01DInG-Activ");
        trace.expect({read("#01DInG-Activ"), heard("01D", "InG-Activ")});
        EXPECT_EQ(statusOf(0), status);
    }
}

TEST_F(MessageIn, InGateMakesAPassOnEveryChannel)
{
    for (const QString device : {"01A", "01B", "01D"}) {
        inject(u'#' + device + "ing-aCtiv");
        const QStringList lines = trace.take();
        EXPECT_EQ(lines.mid(0, 4),
                  QStringList({read(u'#' + device + "ing-aCtiv"), "img " + device,
                               looked(device, kButtonCard, "NEW"), heard(device, "ing-aCtiv")}));
    }
    EXPECT_EQ(gate->StackItemsCount(), 3);
}

TEST_F(MessageIn, InGateOpensANewPass)
{
    makePass("01A", "77");
    makePass("01B", "78");
    gate->p_hw_ProtocolIn("x");
    trace.take();
    inject("#01AInG-Activ");
    trace.expect(
        {read("#01AInG-Activ"), "write $01A10366\\r", loggedSend("$01A103"), heard("01A", "InG-Activ")});
    inject("#01BInG-Activ");
    trace.expect(
        {read("#01BInG-Activ"), "write $01B32365\\r", loggedSend("$01B323"), heard("01B", "InG-Activ")});
    EXPECT_EQ(statusOf(0), "OPEN");
    EXPECT_EQ(statusOf(1), "OPEN");
}

TEST_F(MessageIn, InGateOpensAlsoWhenThePortIsClosed)
{
    makePass("01A", "77");
    gate->p_hw_ProtocolIn("x");
    port->Close();
    trace.take();
    inject("#01AInG-Activ");
    trace.expect({read("#01AInG-Activ"), kPortClosed, heard("01A", "InG-Activ")});
    EXPECT_EQ(statusOf(0), "OPEN");
}

TEST_F(MessageIn, MisspeltFormsAreOnlyReported)
{
    makePass("01D", "77");
    gate->p_hw_ProtocolIn("x");
    for (const QString text : {"Btn-Active", "BtnActiv", "InG-Active", "Ing_Activ", "GateOpen", "Gate-Opened",
                               "CRC ERROR", "CRC-ERROR!"}) {
        trace.take();
        inject("#01D" + text);
        trace.expect({read("#01D" + text), heard("01D", text)});
    }
    EXPECT_EQ(statusOf(0), "NEW");
    EXPECT_EQ(gate->StackItem(0)->StatusHard, "");
}

TEST_F(MessageIn, EventLettersInAMessageAreNothing)
{
    const PRFidInfo pass = openPass("01A");
    inject("#01AG");
    trace.expect({read("#01AG"), heard("01A", "G")});
    EXPECT_EQ(pass->Status, "OPEN");
}

} // namespace
