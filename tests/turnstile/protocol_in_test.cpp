// What happens to every line, whatever it says: log, echo, forwarding, the poll, and the start of the stack.

#include "turnstile_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using ProtocolIn = TTurnstileTest;

TEST_F(ProtocolIn, EchoesInServerMode)
{
    serve();
    gate->SetDeviceList({});
    Answers[0] = 0;
    inject("$01AR5");
    trace.expect({
        "log %Считано с порта% $01AR5",
        "echo LOG!%Считано с порта% $01AR5&",
        "error [02] Device not found 01A", // the only error of a line that is not echoed
        "img 01A",
        "status CHECK 01A 5 R NEW",
        "echo STATUS!CHECK!01A!5!R!NEW&",
        "status COME 01A 5 NEW NEW",
        "echo STATUS!COME!01A!5!NEW!NEW&",
        "status STACK 01A 5 NEW NEW",
        "echo STATUS!STACK!01A!5!NEW!NEW&",
        "check 01A 5 NEW mode 0 preset -1",
        "write $01A00064\\r",
        "log %Отправлено на порт% $01A000",
        "echo LOG!%Отправлено на порт% $01A000&",
        "status STACK 01A 5 CLOSE CLOSE",
        "echo STATUS!STACK!01A!5!CLOSE!CLOSE&",
    });
}

TEST_F(ProtocolIn, EchoesMessageLines)
{
    serve();
    inject("#01AHello");
    trace.expect({
        read("#01AHello"),
        "echo LOG!%Считано с порта% #01AHello&",
        heard("01A", "Hello"),
        "echo STATUS!COME!01A!NOCARDNUMBER!Hello!Hello&",
    });
}

TEST_F(ProtocolIn, EchoesWithoutAnyHandler)
{
    serve();
    gate->SetOnLog({});
    gate->SetOnError({});
    gate->SetOnCheckStatus({});
    gate->SetOnCheckSQL({});
    gate->SetOnGetImg({});
    port->WriteFailure = "torn";
    inject("#01DInG-Activ");
    gate->p_hw_CheckStatusAll();
    trace.expect({
        "echo LOG!%Считано с порта% #01DInG-Activ&",
        "echo STATUS!CHECK!01D!-2-2-2-2-2!R!NEW&",
        "echo STATUS!COME!01D!NOCARDNUMBER!InG-Activ!InG-Activ&",
        "echo STATUS!STACK!01D!-2-2-2-2-2!NEW!NEW&",
        "echo STATUS!STACK!01D!-2-2-2-2-2!OPEN!OPEN&",
        "echo ERROR![03] torn&",
        "echo LOG!%Отправлено на порт% $000900&",
    });
}

TEST_F(ProtocolIn, StandAloneOpensNoSocket)
{
    inject("$01AR1");
    inject("#01AHello");
    inject("$000900");
    gate->ServerEcho("LOG!x&");
    clock.advance(1'000);
    EXPECT_FALSE(network.server(0).Active());
    EXPECT_EQ(network.client(0).Attempts, 0);
}

TEST_F(ProtocolIn, AnEchoByHandIsOfTheServerModeOnly)
{
    gate->ServerEcho("LOG!x&");
    gate->SetRemoutDevice(turnstile::PodClient);
    gate->ServerEcho("LOG!x&");
    EXPECT_EQ(network.client(0).Attempts, 0);
    trace.expect({});
    serve();
    gate->ServerEcho("LOG!Я&");
    trace.expect({"echo LOG!Я&"});
}

TEST_F(ProtocolIn, ReportIsFixedBeforeItsHandlerIsCalled)
{
    serve();
    openPass("01A");
    trace.each("status COME", [&] {
        gate->StackItem(0)->Status = "NEW";
        gate->StackItem(0)->CardNumber = "other";
        gate->StackItem(0)->Device = "99Z";
    });
    inject("$01AG");
    trace.expect({read("$01AG"), "echo LOG!%Считано с порта% $01AG&", come("01A", "77", "FINISH"),
                  "echo STATUS!COME!01A!77!FINISH!FINISH&"});
}

TEST_F(ProtocolIn, ReportsCanBeMadeByTheHost)
{
    serve();
    gate->ShowinternalStatus(gate.get(), "N", "1", "2", "3", "4");
    trace.expect({"status N 1 2 3 4"}); // in this order, without echo
    gate->SetOnCheckStatus({});
    gate->ShowinternalStatus(gate.get(), "N", "1", "2", "3", "4");
    trace.expect({});
}

class Forwarding : public TTurnstileTest
{
protected:
    Forwarding() { follow(); }
};

TEST_F(Forwarding, SendsTheLineUnchangedAndStops)
{
    for (const QString line : {"$01AR1", "$09ZG", "#01DBtn-Activ", "#05AHardReset", "$000900", "$", "#"}) {
        inject(line);
        trace.expect({read(line), "forward " + line});
    }
    gate->p_hw_ProtocolIn("anything");
    trace.expect({read("anything"), "forward anything"});
    EXPECT_EQ(gate->StackItemsCount(), 0);
    EXPECT_FALSE(gate->DeviceList().contains("05A"));
}

TEST_F(Forwarding, StartsNoStack)
{
    makePass("01A", "1");
    inject("#01AHello");
    clock.advance(1'000);
    trace.expect({read("#01AHello"), "forward #01AHello"});
}

TEST_F(Forwarding, WorksWithoutALogHandler)
{
    gate->SetOnLog({});
    inject("$01AR1");
    trace.expect({"forward $01AR1"});
}

TEST_F(Forwarding, SendsOneByteACharacter)
{
    gate->p_hw_ProtocolIn(QStringLiteral("$Я\u4e16"));
    EXPECT_EQ(network.client(0).takeSent(), QByteArrayList{"$\xdf?"});
}

TEST_F(Forwarding, FailureIsReportedAndTheLineIsDone)
{
    network.client(0).SendFailure = "the line is down";
    inject("$01AR1");
    trace.expect({read("$01AR1"), "error [01] the line is down"});
    inject("$000900");
    trace.expect({read("$000900"), "error [01] the line is down"});
    EXPECT_EQ(gate->StackItemsCount(), 0);
    gate->SetOnError({});
    inject("$01AR1");
    trace.expect({read("$01AR1")});
}

TEST_F(Forwarding, WithoutALinkTheLineIsHandledHere)
{
    network.client(0).Slow = true;
    inject("$01AR1");
    trace.expect({read("$01AR1"), "img 01A", looked("01A", "1", "NEW"), come("01A", "1", "NEW"),
                  stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0)});
    inject("$000900"); // the attempt is still under way: no second one
    trace.expect({read("$000900"), wrote("$0009001D\r"), loggedSend("$000900")});
    EXPECT_EQ(network.client(0).Attempts, 1);
    network.client(0).accept();
    inject("#01AHello");
    trace.expect({read("#01AHello"), "forward #01AHello"});
}

TEST_F(Forwarding, ALinkThatCannotBeOpenedIsReportedAtEachLine)
{
    network.client(0).OpenFailure = "no such server";
    for (int time = 0; time < 2; ++time) {
        inject("#01AHello");
        trace.expect({read("#01AHello"), "error [01] no such server", heard("01A", "Hello")});
    }
}

TEST_F(Forwarding, IsOfTheClientModeOnly)
{
    gate->SetRemoutDevice(turnstile::podServer);
    inject("#01AHello");
    trace.expect({read("#01AHello"), heard("01A", "Hello")});
    gate->SetRemoutDevice(turnstile::podNone);
    inject("#01AHello");
    trace.expect({read("#01AHello"), heard("01A", "Hello")});
    EXPECT_EQ(network.client(0).Attempts, 0);
}

using PollLine = TTurnstileTest;

TEST_F(PollLine, RunsTheStatusPoll)
{
    inject("$000900");
    trace.expect({read("$000900"), "write $0009001D\\r", "log %Отправлено на порт% $000900"});
}

TEST_F(PollLine, EchoesInOrder)
{
    serve();
    inject("$000900");
    trace.expect({
        read("$000900"),
        "echo LOG!%Считано с порта% $000900&",
        "write $0009001D\\r",
        loggedSend("$000900"),
        "echo LOG!%Отправлено на порт% $000900&",
    });
}

TEST_F(PollLine, LeavesTheStackTimerAlone)
{
    makePass("01A", "1");
    inject("$000900");
    clock.advance(1'000);
    trace.expect({read("$000900"), wrote("$0009001D\r"), loggedSend("$000900")}); // stopped: stays so

    gate->p_hw_ProtocolIn("x");
    skip(50);
    inject("$000900");
    trace.expect({read("$000900"), wrote("$0009001D\r"), loggedSend("$000900")});
    clock.advance(50); // running: keeps its beat
    trace.expect({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0)});
}

TEST_F(PollLine, IsExact)
{
    inject("$0009000");
    trace.expect({read("$0009000"), "error [02] Device not found 000"});
    inject("$00090");
    trace.expect({read("$00090"), "error [02] Device not found 000"});
    inject("#000900");
    trace.expect({read("#000900"), heard("000", "900")});
    gate->p_hw_ProtocolIn("$000900 ");
    trace.expect({read("$000900 "), "error [02] Device not found 000"});
    EXPECT_EQ(port->takeWritten(), "");
}

using StackStart = TTurnstileTest;

TEST_F(StackStart, EveryLineRunsOnePassAtOnceAndStartsTheTimer)
{
    for (const QString line : {"$09ZX", "$", "#09ZHello", "#", "x", "", " $01AR1", "R"}) {
        TTurnstileFixture fixture;
        fixture.gate->SetOnError({});
        fixture.gate->SetOnCheckStatus({});
        fixture.makePass("01A", "1");
        fixture.gate->p_hw_ProtocolIn(line);
        fixture.trace.expect({read(line), check("01A", "1", "NEW", 0)});
        fixture.clock.advance(99);
        fixture.trace.expect({});
        fixture.clock.advance(1);
        fixture.trace.expect({check("01A", "1", "NEW", 0)});
        fixture.clock.advance(200);
        fixture.trace.expect({check("01A", "1", "NEW", 0), check("01A", "1", "NEW", 0)});
    }
}

TEST_F(StackStart, LinesOfOtherKindsAreNotParsed)
{
    for (const QString line : {"x01AR1", " $01AR1", "", "R", "@01AHardReset", "01AR1"}) {
        gate->p_hw_ProtocolIn(line);
        trace.expect({read(line)});
    }
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(StackStart, ARunningTimerIsLeftAlone)
{
    makePass("01A", "1");
    inject("#09ZHello");
    skip(60);
    inject("#09ZHello");
    trace.expect({read("#09ZHello"), heard("09Z", "Hello")}); // no pass
    clock.advance(39);
    trace.expect({});
    clock.advance(1);
    trace.expect({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0)});
}

TEST_F(StackStart, AnEmptyTableStopsTheTimerInTheSamePass)
{
    inject("#01AHello");
    trace.take();
    makePass("01A", "1");
    clock.advance(1'000);
    trace.expect({});
    inject("#01AHello"); // starts it again
    trace.expect(
        {read("#01AHello"), heard("01A", "Hello"), stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0)});
}

TEST_F(StackStart, ATableThatBecameEmptyStopsTheTimerOneTickLater)
{
    Answers[0] = 0;
    inject("$01AR1"); // refused and removed
    EXPECT_EQ(gate->StackItemsCount(), 0);
    trace.take();
    inject("$02AR1"); // the timer still runs: no pass at once
    EXPECT_EQ(trace.countOf("status STACK"), 0);
    skip(100);
    EXPECT_EQ(gate->StackItemsCount(), 0);
    skip(100); // finds the table empty
    inject("$01AR1");
    EXPECT_EQ(trace.countOf("status STACK"), 2);
}

} // namespace
