// Whole passes from the card to the passage, byte by byte and event by event.

#include "turnstile_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class Transcript : public TTurnstileTest
{
protected:
    /// Ticks on which the table is only reported.
    void expectIdleTicks(int count, const QString& line)
    {
        clock.advance(count * 100LL);
        trace.expect(QStringList(count, line));
    }
};

TEST_F(Transcript, TurnstileOpenedAndPassed)
{
    Answers = {{0, 1}, {2, 1}};
    inject("$01AR12345678");
    trace.expect({
        "log %Считано с порта% $01AR12345678",
        "img 01A",
        "status CHECK 01A 12345678 R NEW",
        "status COME 01A 12345678 NEW NEW",
        "status STACK 01A 12345678 NEW NEW",
        "check 01A 12345678 NEW mode 0 preset -1",
        "write $01A10366\\r",
        "log %Отправлено на порт% $01A103",
        "status STACK 01A 12345678 OPEN OPEN",
    });
    clock.advance(40);
    inject("#01ARelay 1");
    trace.expect({
        "log %Считано с порта% #01ARelay 1",
        "status COME 01A NOCARDNUMBER Relay 1 Relay 1",
    });
    expectIdleTicks(30, "status STACK 01A 12345678 OPEN OPEN"); // acknowledged: no answer is missed
    inject("$01AP");
    trace.expect({
        "log %Считано с порта% $01AP",
        "status COME 01A 12345678 PROGRESS PROGRESS",
    });
    expectIdleTicks(5, "status STACK 01A 12345678 PROGRESS PROGRESS");
    inject("$01AG");
    trace.expect({
        "log %Считано с порта% $01AG",
        "status COME 01A 12345678 FINISH FINISH",
    });
    clock.advance(100);
    trace.expect({
        "status STACK 01A 12345678 FINISH FINISH",
        "check 01A 12345678 FINISH mode 2 preset -1",
    });
    EXPECT_EQ(gate->StackItemsCount(), 0);
    clock.advance(10'000);
    trace.expect({});
    EXPECT_EQ(port->takeWritten(), "$01A10366\r");
}

TEST_F(Transcript, TurnstileOpenedAndPassedForTheMonitor)
{
    serve();
    Answers = {{0, 1}, {2, 1}};
    inject("$01AR1");
    trace.expect({
        "log %Считано с порта% $01AR1",
        "echo LOG!%Считано с порта% $01AR1&",
        "img 01A",
        "status CHECK 01A 1 R NEW",
        "echo STATUS!CHECK!01A!1!R!NEW&",
        "status COME 01A 1 NEW NEW",
        "echo STATUS!COME!01A!1!NEW!NEW&",
        "status STACK 01A 1 NEW NEW",
        "echo STATUS!STACK!01A!1!NEW!NEW&",
        "check 01A 1 NEW mode 0 preset -1",
        "write $01A10366\\r",
        "log %Отправлено на порт% $01A103",
        "echo LOG!%Отправлено на порт% $01A103&",
        "status STACK 01A 1 OPEN OPEN",
        "echo STATUS!STACK!01A!1!OPEN!OPEN&",
    });
    inject("$01AP");
    trace.expect({
        "log %Считано с порта% $01AP",
        "echo LOG!%Считано с порта% $01AP&",
        "status COME 01A 1 PROGRESS PROGRESS",
        "echo STATUS!COME!01A!1!PROGRESS!PROGRESS&",
    });
    inject("$01AG");
    trace.take();
    clock.advance(100);
    trace.expect({
        "status STACK 01A 1 FINISH FINISH",
        "echo STATUS!STACK!01A!1!FINISH!FINISH&",
        "check 01A 1 FINISH mode 2 preset -1",
    });
}

TEST_F(Transcript, TurnstileRefused)
{
    Answers[0] = 0;
    inject("$01AR12345678");
    trace.expect({
        "log %Считано с порта% $01AR12345678",
        "img 01A",
        "status CHECK 01A 12345678 R NEW",
        "status COME 01A 12345678 NEW NEW",
        "status STACK 01A 12345678 NEW NEW",
        "check 01A 12345678 NEW mode 0 preset -1",
        "write $01A00064\\r",
        "log %Отправлено на порт% $01A000",
        "status STACK 01A 12345678 CLOSE CLOSE",
    });
    EXPECT_EQ(gate->StackItemsCount(), 0);
    clock.advance(10'000);
    trace.expect({});
}

TEST_F(Transcript, TurnstileTimedOut)
{
    Answers = {{0, 1}, {1, 1}};
    inject("$01AR1");
    inject("#01ARelay");
    trace.take();
    expectIdleTicks(79, stack("01A", "1", "OPEN"));
    clock.advance(100);
    trace.expect({
        "status STACK 01A 1 OPEN OPEN",
        "status STACK 01A 1 TIMEOUT TIMEOUT",
        "check 01A 1 TIMEOUT mode 1 preset -1",
    });
    clock.advance(10'000);
    trace.expect({});
    EXPECT_EQ(port->takeWritten(), "$01A10366\r");
}

TEST_F(Transcript, TurnstileUnanswered)
{
    Answers = {{0, 1}, {3, 1}};
    inject("$01AR1");
    trace.take();
    expectIdleTicks(19, stack("01A", "1", "OPEN"));
    clock.advance(100);
    trace.expect({
        "status STACK 01A 1 OPEN OPEN",
        "status STACK 01A 1 NOANSWER NOANSWER",
        "check 01A 1 NOANSWER mode 3 preset -1",
    });
    clock.advance(10'000);
    trace.expect({});
}

TEST_F(Transcript, UnansweredPassOfferedUntilTheHostLetsGo)
{
    Answers = {{0, 1}, {3, 0}};
    inject("$01AR1");
    skip(2'000);
    for (int i = 0; i < 5; ++i) {
        clock.advance(100);
        trace.expect({stack("01A", "1", "NOANSWER"), check("01A", "1", "NOANSWER", 3)});
    }
    inject("$01AG"); // late, but it came
    trace.expect({read("$01AG"), come("01A", "1", "FINISH")});
    Answers[2] = 1;
    clock.advance(100);
    trace.expect({stack("01A", "1", "FINISH"), check("01A", "1", "FINISH", 2)});
}

TEST_F(Transcript, ControllerGaveUp)
{
    Answers = {{0, 1}, {1, 1}};
    inject("$01AR1");
    inject("#01ARelay");
    trace.take();
    inject("$01AF");
    trace.expect({read("$01AF"), come("01A", "1", "TIMEOUT")});
    clock.advance(100);
    trace.expect({stack("01A", "1", "TIMEOUT"), check("01A", "1", "TIMEOUT", 1)});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Transcript, DoorOpenedAndPassedByGateOpen)
{
    Answers = {{0, 1}, {2, 1}};
    inject("$01DR5");
    trace.expect({
        "log %Считано с порта% $01DR5",
        "img 01D",
        "status CHECK 01D 5 R NEW",
        "status COME 01D 5 NEW NEW",
        "status STACK 01D 5 NEW NEW",
        "check 01D 5 NEW mode 0 preset -1",
        "write $01D32363\\r",
        "log %Отправлено на порт% $01D323",
        "status STACK 01D 5 OPEN OPEN",
    });
    inject("#01DRelay 3");
    trace.expect({read("#01DRelay 3"), heard("01D", "Relay 3")});
    inject("#01DGate-Open");
    trace.expect({
        "log %Считано с порта% #01DGate-Open",
        "status COME 01D NOCARDNUMBER Gate-Open Gate-Open",
    });
    clock.advance(100);
    trace.expect({"status STACK 01D 5 FINISH FINISH", "check 01D 5 FINISH mode 2 preset -1"});
    clock.advance(10'000);
    trace.expect({});
}

TEST_F(Transcript, DoorPassedByProgress)
{
    Answers = {{0, 1}, {2, 1}};
    inject("$01DR5");
    inject("#01DRelay 3");
    trace.take();
    inject("$01DP");
    trace.expect({"log %Считано с порта% $01DP", "status COME 01D 5 FINISH FINISH"});
    clock.advance(100);
    trace.expect({"status STACK 01D 5 FINISH FINISH", "check 01D 5 FINISH mode 2 preset -1"});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Transcript, DoorTimedOut)
{
    Answers = {{0, 1}, {1, 1}};
    inject("$01DR5");
    inject("#01DRelay 3");
    trace.take();
    expectIdleTicks(39, stack("01D", "5", "OPEN"));
    clock.advance(100);
    trace.expect({stack("01D", "5", "OPEN"), stack("01D", "5", "TIMEOUT"), check("01D", "5", "TIMEOUT", 1)});
}

TEST_F(Transcript, ExitButton)
{
    Answers = {{0, 1}, {2, 1}};
    inject("#01DBtn-Activ");
    trace.expect({
        "log %Считано с порта% #01DBtn-Activ",
        "img 01D",
        "status CHECK 01D -2-2-2-2-2 R NEW",
        "status COME 01D NOCARDNUMBER Btn-Activ Btn-Activ",
        "status STACK 01D -2-2-2-2-2 NEW NEW",
        "check 01D -2-2-2-2-2 NEW mode 0 preset -1",
        "write $01D32363\\r",
        "log %Отправлено на порт% $01D323",
        "status STACK 01D -2-2-2-2-2 OPEN OPEN",
    });
    inject("#01DRelay 3");
    inject("#01DGate-Open");
    trace.take();
    clock.advance(100);
    trace.expect({stack("01D", kButtonCard, "FINISH"), check("01D", kButtonCard, "FINISH", 2)});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Transcript, ExitButtonWithoutACheckHandler)
{
    gate->SetOnCheckSQL({});
    inject("#01DBtn-Activ");
    trace.expect({
        read("#01DBtn-Activ"), "img 01D", looked("01D", kButtonCard, "NEW"), heard("01D", "Btn-Activ"),
        stack("01D", kButtonCard, "NEW"), stack("01D", kButtonCard, "OPEN"), // and no command
    });
    expectIdleTicks(19, stack("01D", kButtonCard, "OPEN"));
    clock.advance(100);
    trace.expect({stack("01D", kButtonCard, "OPEN"), stack("01D", kButtonCard, "NOANSWER")});
    EXPECT_EQ(gate->StackItemsCount(), 0);
    clock.advance(10'000);
    trace.expect({});
    EXPECT_EQ(port->takeWritten(), "");
}

TEST_F(Transcript, ExitButtonRefused)
{
    Answers[0] = 0;
    inject("#01DBtn-Activ");
    EXPECT_EQ(trace.take().mid(4),
              QStringList({stack("01D", kButtonCard, "NEW"), check("01D", kButtonCard, "NEW", 0),
                           wrote("$01D00061\r"), loggedSend("$01D000"), stack("01D", kButtonCard, "CLOSE")}));
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Transcript, ExitButtonHelpsACardThatTheHostIsStillThinkingAbout)
{
    inject("$01DR5");
    trace.take();
    inject("#01DBtn-Activ");
    trace.expect(
        {read("#01DBtn-Activ"), wrote("$01D32363\r"), loggedSend("$01D323"), heard("01D", "Btn-Activ")});
    clock.advance(100);
    trace.expect({stack("01D", "5", "OPEN")}); // no longer asked with mode 0
}

TEST_F(Transcript, InGate)
{
    Answers = {{0, 1}, {2, 1}};
    inject("#01AInG-Activ");
    trace.expect({
        "log %Считано с порта% #01AInG-Activ",
        "img 01A",
        "status CHECK 01A -2-2-2-2-2 R NEW",
        "status COME 01A NOCARDNUMBER InG-Activ InG-Activ",
        "status STACK 01A -2-2-2-2-2 NEW NEW",
        "check 01A -2-2-2-2-2 NEW mode 0 preset -1",
        "write $01A10366\\r",
        "log %Отправлено на порт% $01A103",
        "status STACK 01A -2-2-2-2-2 OPEN OPEN",
    });
    inject("#01ARelay");
    inject("$01AP");
    inject("$01AG");
    trace.take();
    clock.advance(100);
    trace.expect({stack("01A", kButtonCard, "FINISH"), check("01A", kButtonCard, "FINISH", 2)});
}

TEST_F(Transcript, OpenedByHand)
{
    Answers = {{0, 1}, {2, 1}};
    gate->p_hw_CheckStatus("01A", kManualCard, "R");
    trace.expect({"img 01A", looked("01A", kManualCard, "NEW")});
    gate->p_hw_CallStackArray();
    trace.expect({stack("01A", kManualCard, "NEW"), check("01A", kManualCard, "NEW", 0), wrote("$01A10366\r"),
                  loggedSend("$01A103"), stack("01A", kManualCard, "OPEN")});
    inject("#01ARelay 1"); // starts the timer as well
    trace.expect({read("#01ARelay 1"), heard("01A", "Relay 1"), stack("01A", kManualCard, "OPEN")});
}

TEST_F(Transcript, AcrossMidnight)
{
    clock.jumpTo(TManualClock::at(23, 59, 58, 950));
    Answers = {{0, 1}, {1, 1}};
    inject("$01AR1");
    inject("#01ARelay");
    trace.take();
    expectIdleTicks(10, stack("01A", "1", "OPEN")); // up to 23:59:59.950
    clock.advance(100);
    trace.expect({stack("01A", "1", "OPEN"), stack("01A", "1", "TIMEOUT"), check("01A", "1", "TIMEOUT", 1)});
    inject("$01AR2"); // the new day begins as any other
    EXPECT_EQ(trace.countOf(come("01A", "2", "NEW")), 1);
}

TEST_F(Transcript, SecondCardWhileAPassIsPending)
{
    Answers = {{0, 1}, {2, 1}};
    inject("$01AR1");
    trace.take();
    inject("$01AR2");
    trace.expect({read("$01AR2"), looked("01A", "2", "OPEN"), come("01A", "2", "OPEN")});
    inject("$01AG");
    trace.expect({read("$01AG"), come("01A", "1", "FINISH")});
    inject("$01AR2");
    trace.expect({read("$01AR2"), looked("01A", "2", "FINISH"), come("01A", "2", "FINISH")});
    clock.advance(100);
    trace.expect({stack("01A", "1", "FINISH"), check("01A", "1", "FINISH", 2)});
    inject("$01AR2"); // now it counts; the timer runs one tick longer, so it is decided then
    trace.expect({read("$01AR2"), "img 01A", looked("01A", "2", "NEW"), come("01A", "2", "NEW")});
    clock.advance(100);
    trace.expect({stack("01A", "2", "NEW"), check("01A", "2", "NEW", 0), wrote("$01A10366\r"),
                  loggedSend("$01A103"), stack("01A", "2", "OPEN")});
}

TEST_F(Transcript, TwoGatesAtOnce)
{
    Answers = {{0, 1}, {2, 1}};
    inject("$01AR1");
    inject("$02AR2");
    trace.take();
    clock.advance(100);
    trace.expect({stack("01A", "1", "OPEN"), stack("02A", "2", "NEW"), check("02A", "2", "NEW", 0),
                  wrote("$02A10365\r"), loggedSend("$02A103"), stack("02A", "2", "OPEN")});
    inject("$01AG");
    inject("$02AG");
    trace.take();
    clock.advance(100); // one removal a pass
    trace.expect({stack("01A", "1", "FINISH"), check("01A", "1", "FINISH", 2)});
    clock.advance(100);
    trace.expect({stack("02A", "2", "FINISH"), check("02A", "2", "FINISH", 2)});
    clock.advance(1'000);
    trace.expect({});
}

TEST_F(Transcript, NewControllerAnnouncesItself)
{
    gate->SetDeviceList({});
    inject("#07AHardReset");
    inject("#07AWait-Card");
    trace.expect(
        {read("#07AHardReset"), heard("07A", "HardReset"), read("#07AWait-Card"), heard("07A", "Wait-Card")});
    Answers[0] = 0;
    inject("$07AR1"); // known now: no error
    EXPECT_EQ(trace.countOf("error"), 0);
    EXPECT_EQ(gate->DeviceList(), QStringList("07A"));
}

TEST_F(Transcript, HandlersAbsentOneByOne)
{
    for (const QString absent : {"log", "error", "status", "check", "img"}) {
        TTurnstileFixture fixture;
        const auto drop = [&](const QString& name, auto clear) {
            if (absent == name) {
                clear();
            }
        };
        fixture.gate->SetDeviceList({});
        drop("log", [&] { fixture.gate->SetOnLog({}); });
        drop("error", [&] { fixture.gate->SetOnError({}); });
        drop("status", [&] { fixture.gate->SetOnCheckStatus({}); });
        drop("check", [&] { fixture.gate->SetOnCheckSQL({}); });
        drop("img", [&] { fixture.gate->SetOnGetImg({}); });
        fixture.Answers[0] = 0;
        fixture.inject("$01AR1");
        QStringList expected{
            read("$01AR1"),          "error [02] Device not found 01A", "img 01A", looked("01A", "1", "NEW"),
            come("01A", "1", "NEW"), stack("01A", "1", "NEW"),
        };
        if (absent != "check") {
            expected << check("01A", "1", "NEW", 0) << wrote("$01A00064\r") << loggedSend("$01A000")
                     << stack("01A", "1", "CLOSE");
        }
        expected.removeIf([&](const QString& line) { return line.startsWith(absent); });
        fixture.trace.expect(expected);
    }
}

} // namespace
