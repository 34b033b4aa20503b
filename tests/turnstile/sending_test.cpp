// Commands: what is written, and what is told to whom in which order when it cannot be.

#include "turnstile_fixture.h"

#include <limits>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Sending = TTurnstileTest;

TEST_F(Sending, OpenAndRefuse)
{
    makePass("01A", "1");
    makePass("01D", "1");
    makePass("01B", "1");
    gate->p_hw_SendComCommand(0, 1);
    gate->p_hw_SendComCommand(0, 0);
    gate->p_hw_SendComCommand(1, 1);
    gate->p_hw_SendComCommand(1, 0);
    gate->p_hw_SendComCommand(2, 1);
    EXPECT_EQ(port->takeWrites(),
              QByteArrayList({"$01A10366\r", "$01A00064\r", "$01D32363\r", "$01D00061\r", "$01B32365\r"}));
    trace.expect({wrote("$01A10366\r"), loggedSend("$01A103"), wrote("$01A00064\r"), loggedSend("$01A000"),
                  wrote("$01D32363\r"), loggedSend("$01D323"), wrote("$01D00061\r"), loggedSend("$01D000"),
                  wrote("$01B32365\r"), loggedSend("$01B323")});
    EXPECT_EQ(statusOf(0), "NEW"); // a command alone changes no state
}

TEST_F(Sending, FollowsTheProperties)
{
    gate->SetRelayOpen(4);
    gate->SetRelayClose(5);
    gate->SetRelayOpenDoor(6);
    gate->SetRelayCloseDoor(7);
    gate->SetTimeDelayOpen(7);
    makePass("01A", "1");
    makePass("01D", "1");
    gate->p_hw_SendComCommand(0, 1);
    gate->p_hw_SendComCommand(0, 0);
    gate->p_hw_SendComCommand(1, 1);
    gate->p_hw_SendComCommand(1, 0);
    trace.expect({wrote("$01A40868\r"), loggedSend("$01A408"), wrote("$01A50061\r"), loggedSend("$01A500"),
                  wrote("$01D6286D\r"), loggedSend("$01D628"), wrote("$01D50064\r"), loggedSend("$01D500")});
}

TEST_F(Sending, DoorIndexPlaysNoPart)
{
    gate->SetDoorIndex("A");
    makePass("01A", "1");
    gate->p_hw_SendComCommand(0, 1);
    trace.expect({wrote("$01A10366\r"), loggedSend("$01A103")});
}

TEST_F(Sending, NumbersAboveNineLengthenTheCommand)
{
    gate->SetRelayOpen(12);
    makePass("01A", "1");
    gate->p_hw_SendComCommand(0, 1);
    trace.expect({wrote("$01A120367\r"), loggedSend("$01A1203")});
    gate->SetRelayOpen(1);
    gate->SetTimeDelayOpen(9);
    gate->p_hw_SendComCommand(0, 1);
    trace.expect({wrote("$01A101064\r"), loggedSend("$01A1010")});
}

TEST_F(Sending, NegativeNumbersAreNoDigits)
{
    gate->SetRelayOpen(-1);
    makePass("01A", "1");
    gate->p_hw_SendComCommand(0, 1);
    const QStringList lines = trace.take();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines[0].startsWith("error [04] "));
    EXPECT_EQ(lines[1], loggedSend("$01A-103"));
}

TEST_F(Sending, LargestOpeningTimeIsNoOverflow)
{
    gate->SetTimeDelayOpen(std::numeric_limits<int>::max());
    makePass("01A", "1");
    gate->p_hw_SendComCommand(0, 1);
    EXPECT_EQ(trace.countOf("log %Отправлено на порт% $01A10"), 1);
}

TEST_F(Sending, NothingForAnyOtherOrder)
{
    makePass("01A", "1");
    for (const int yesnot : {-1, 2, 100}) {
        gate->p_hw_SendComCommand(0, yesnot);
        gate->p_hw_relay("01D", "3", yesnot);
    }
    port->Close();
    gate->p_hw_SendComCommand(0, 2);
    gate->p_hw_relay("01D", "3", 2);
    trace.expect({});
}

TEST_F(Sending, NothingForAnInvalidIndex)
{
    makePass("01A", "1");
    for (const int index : {-1, 1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        gate->p_hw_SendComCommand(index, 1);
        gate->p_hw_SendComCommand(index, 0);
    }
    trace.expect({});
}

TEST_F(Sending, Relays)
{
    gate->p_hw_relay("01D", "3", 0);
    gate->p_hw_relay("01D", "3", 1);
    gate->p_hw_relay("01A", "3", 0);
    gate->p_hw_relay("01A", "3", 1); // the same as off
    gate->p_hw_relay("12B", "9", 1);
    trace.expect({wrote("$01D30062\r"), loggedSend("$01D300"), wrote("$01D32060\r"), loggedSend("$01D320"),
                  wrote("$01A30067\r"), loggedSend("$01A300"), wrote("$01A30067\r"), loggedSend("$01A300"),
                  wrote("$12B92061\r"), loggedSend("$12B920")});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Sending, RelayTextIsTakenAsItIs)
{
    gate->p_hw_relay("01D", "12", 1);
    trace.expect({wrote("$01D122060\r"), loggedSend("$01D1220")});
}

TEST_F(Sending, Poll)
{
    gate->p_hw_CheckStatusAll();
    trace.expect({wrote("$0009001D\r"), loggedSend("$000900")});
    EXPECT_EQ(port->takeWritten(), "$0009001D\r");
}

TEST_F(Sending, EchoesTheSentCommand)
{
    serve();
    gate->p_hw_relay("01D", "3", 1);
    trace.expect(
        {wrote("$01D32060\r"), "log %Отправлено на порт% $01D320", "echo LOG!%Отправлено на порт% $01D320&"});
}

TEST_F(Sending, WorksWithoutALogHandler)
{
    serve();
    gate->SetOnLog({});
    gate->p_hw_CheckStatusAll();
    trace.expect({wrote("$0009001D\r"), "echo LOG!%Отправлено на порт% $000900&"});
}

TEST_F(Sending, ClosedPortIsTheOnlyThingReported)
{
    serve();
    makePass("01A", "1");
    const auto expectClosed = [&](const std::function<void()>& send) {
        port->Close();
        send();
        trace.expect({kPortClosed}); // a server whose port is closed is not ready to echo
        port->Close();
        trace.once("error", [&] { port->Open(); }); // unless the host opens it there and then
        send();
        trace.expect({kPortClosed, "echo ERROR![04] Порт не открыт или не назначен&"});
    };
    expectClosed([&] { gate->p_hw_SendComCommand(0, 1); });
    expectClosed([&] { gate->p_hw_SendComCommand(0, 0); });
    expectClosed([&] { gate->p_hw_relay("01A", "1", 0); });
    expectClosed([&] { gate->p_hw_relay("xx", "y", 1); }); // not even the checksum is tried
    expectClosed([&] { gate->p_hw_CheckStatusAll(); });
    gate->SetComport(nullptr);
    gate->p_hw_CheckStatusAll();
    trace.expect({kPortClosed});
}

TEST_F(Sending, ClosedPortStopsNoDecision)
{
    port->Close();
    Answers[0] = 1;
    inject("$01AR1");
    EXPECT_EQ(trace.take().mid(4), QStringList({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0),
                                                kPortClosed, stack("01A", "1", "OPEN")}));
    Answers[0] = 0;
    inject("$02AR2");
    trace.take();
    clock.advance(100);
    trace.expect({stack("01A", "1", "OPEN"), stack("02A", "2", "NEW"), check("02A", "2", "NEW", 0),
                  kPortClosed, stack("02A", "2", "CLOSE")});
    EXPECT_EQ(gate->StackItemsCount(), 1);
}

TEST_F(Sending, FailedWriteIsReportedAndStillLogged)
{
    serve();
    makePass("01A", "1");
    port->WriteFailure = "cable pulled";
    gate->p_hw_SendComCommand(0, 1);
    trace.expect({
        "error [04] cable pulled",
        "echo ERROR![04] cable pulled&",
        "log %Отправлено на порт% $01A103",
        "echo LOG!%Отправлено на порт% $01A103&",
    });
    gate->p_hw_relay("01D", "3", 1);
    trace.expect({"error [04] cable pulled", "echo ERROR![04] cable pulled&", loggedSend("$01D320"),
                  "echo LOG!%Отправлено на порт% $01D320&"});
    EXPECT_EQ(port->takeWritten(), "");
}

TEST_F(Sending, FailedWriteOfThePollHasItsOwnCode)
{
    serve();
    port->WriteFailure = "cable pulled";
    gate->p_hw_CheckStatusAll();
    trace.expect({
        "error [03] cable pulled",
        "echo ERROR![03] cable pulled&",
        "log %Отправлено на порт% $000900",
        "echo LOG!%Отправлено на порт% $000900&",
    });
}

TEST_F(Sending, FailedWriteIsEchoedAndLoggedWithoutHandlers)
{
    serve();
    gate->SetOnError({});
    gate->SetOnLog({});
    port->WriteFailure = "cable pulled";
    gate->p_hw_CheckStatusAll();
    trace.expect({"echo ERROR![03] cable pulled&", "echo LOG!%Отправлено на порт% $000900&"});
}

TEST_F(Sending, FailedWriteStopsNoDecision)
{
    port->WriteFailure = "cable pulled";
    Answers[0] = 1;
    makePass("01A", "1");
    gate->p_hw_CallStackArray();
    trace.expect({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0), "error [04] cable pulled",
                  loggedSend("$01A103"), stack("01A", "1", "OPEN")});
}

TEST_F(Sending, MisshapenAddressIsReportedLikeAFailedWrite)
{
    serve();
    for (const QString device : {"0xA", "A1A", "1A", "", "01"}) {
        gate->p_hw_relay(device, "3", 0);
        const QStringList lines = trace.take();
        ASSERT_EQ(lines.size(), 4) << device.toStdString();
        EXPECT_TRUE(lines[0].startsWith("error [04] "));
        EXPECT_GT(lines[0].size(), QString("error [04] ").size());
        EXPECT_EQ(lines[1], "echo ERROR!" + lines[0].mid(6) + u'&');
        EXPECT_EQ(lines[2], loggedSend(u'$' + device + "300"));
        EXPECT_EQ(lines[3], "echo LOG!%Отправлено на порт% $" + device + "300&");
    }
    EXPECT_EQ(port->takeWritten(), "");
}

TEST_F(Sending, MisshapenAddressStopsNoGate)
{
    Answers[0] = 1;
    makePass("xyA", "1");
    makePass("01A", "2");
    gate->p_hw_CallStackArray();
    EXPECT_EQ(statusOf(0), "OPEN");
    EXPECT_EQ(statusOf(1), "OPEN");
    EXPECT_EQ(port->takeWritten(), "$01A10366\r");
    EXPECT_EQ(trace.countOf("raised"), 0);
}

TEST_F(Sending, TextIsWrittenInTheCodePage)
{
    gate->p_hw_relay("01Д", "1", 0);
    EXPECT_EQ(port->takeWritten(), "$01\xC4"
                                   "100E0\r");
    trace.take();
    gate->p_hw_relay("01中", "1", 0);
    EXPECT_EQ(port->takeWritten(), "$01?1001B\r");
}

TEST_F(Sending, ChecksumOfTwoCharactersAlwaysFails)
{
    for (const QString message : {"$01A10366", "$01A103", "66", "6", "", "$0009001D"}) {
        EXPECT_THROW(gate->CheckCRC(message), platform::EConvertError) << message.toStdString();
    }
    trace.expect({});
}

} // namespace
