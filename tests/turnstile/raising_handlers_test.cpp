// Handlers that raise, each at each of its calls.

#include "turnstile_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using RaisingHandler = TTurnstileTest;

TEST_F(RaisingHandler, StatusOfALookupIsReportedAndTheParseGoesOn)
{
    trace.raiseOnce("status CHECK");
    inject("$01AR1");
    trace.expect({read("$01AR1"), "img 01A", looked("01A", "1", "NEW"), "error [07] host trouble",
                  come("01A", "1", "NEW"), stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0)});
}

TEST_F(RaisingHandler, StatusOfALineIsReportedAndThePassRuns)
{
    trace.raiseOnce("status COME");
    inject("$01AR1");
    trace.expect({read("$01AR1"), "img 01A", looked("01A", "1", "NEW"), come("01A", "1", "NEW"),
                  "error [07] host trouble", stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0)});
}

TEST_F(RaisingHandler, StatusOfThePassIsReportedAndThePassGoesOn)
{
    Answers[0] = 0;
    trace.raiseOnce("status STACK");
    inject("$01AR1");
    EXPECT_EQ(trace.take().mid(4),
              QStringList({stack("01A", "1", "NEW"), "error [07] host trouble", check("01A", "1", "NEW", 0),
                           wrote("$01A00064\r"), loggedSend("$01A000"), stack("01A", "1", "CLOSE")}));
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(RaisingHandler, StatusIsEchoedAfterItsError)
{
    serve();
    trace.raiseOnce("status COME");
    inject("#01AHello");
    trace.expect({read("#01AHello"), "echo LOG!%Считано с порта% #01AHello&", heard("01A", "Hello"),
                  "error [07] host trouble", "echo STATUS!COME!01A!NOCARDNUMBER!Hello!Hello&"});
}

TEST_F(RaisingHandler, StatusOfADirectCallIsReported)
{
    trace.raiseOnce("status N");
    EXPECT_NO_THROW(gate->ShowinternalStatus(gate.get(), "N", "1", "2", "3", "4"));
    trace.expect({"status N 1 2 3 4", "error [07] host trouble"});
}

TEST_F(RaisingHandler, StatusWithoutAnErrorHandlerIsForgotten)
{
    gate->SetOnError({});
    trace.raiseOnce("status COME");
    inject("#01AHello");
    trace.expect({read("#01AHello"), heard("01A", "Hello")});
}

TEST_F(RaisingHandler, StatusMayRaiseAnything)
{
    gate->SetOnCheckStatus([](auto&&...) { throw 42; });
    inject("#01AHello");
    EXPECT_EQ(trace.countOf("error [07] "), 1);
    EXPECT_EQ(trace.countOf("raised"), 0);
    trace.take();
    gate->SetOnCheckStatus([](auto&&...) { throw platform::EAbort(); });
    inject("#01AHello");
    trace.expect({read("#01AHello"), "error [07] Operation aborted"});
}

TEST_F(RaisingHandler, CheckIsReportedAndThePassGoesOn)
{
    makePass("02A", "2", "OPEN");
    makePass("01A", "1");
    trace.raiseOnce("check");
    gate->p_hw_CallStackArray();
    trace.expect({stack("02A", "2", "OPEN"), stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0),
                  "error [05] host trouble"});
    gate->p_hw_CallStackArray(); // asked again
    EXPECT_EQ(trace.countOf("check 01A"), 1);
}

TEST_F(RaisingHandler, LogOfALineEndsTheLine)
{
    trace.raiseOnce("log");
    inject("$01AR1");
    trace.expect({read("$01AR1"), "raised host trouble"});
    EXPECT_EQ(gate->StackItemsCount(), 0);
    inject("$01AR1"); // the next one is handled
    EXPECT_EQ(gate->StackItemsCount(), 1);
}

TEST_F(RaisingHandler, LogEndsThatLineOnlyOfARead)
{
    trace.raiseOnce("log");
    port->feed("$01AX\r$01AY\r#01AHello\r");
    trace.expect(
        {read("$01AX"), "raised host trouble", read("$01AY"), read("#01AHello"), heard("01A", "Hello")});
}

TEST_F(RaisingHandler, AbortIsSilent)
{
    gate->SetOnLog([](auto&&...) { throw platform::EAbort(); });
    inject("$01AR1");
    trace.expect({});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(RaisingHandler, ErrorOfAnUnlistedAddressEndsTheLine)
{
    trace.raiseOnce("error [02]");
    inject("$03AR1");
    trace.expect({read("$03AR1"), "error [02] Device not found 03A", "raised host trouble"});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(RaisingHandler, PictureEndsTheLineButThePassIsMade)
{
    trace.raiseOnce("img");
    inject("$01AR1");
    trace.expect({read("$01AR1"), "img 01A", "raised host trouble"});
    EXPECT_EQ(gate->StackItemsCount(), 1);
    EXPECT_EQ(statusOf(0), "NEW");
}

TEST_F(RaisingHandler, LogOfACommandEndsThePassAndTheNextOneRuns)
{
    Answers[0] = 1;
    trace.raiseOnce("log %Отправлено");
    inject("$01AR1");
    EXPECT_EQ(trace.take().mid(4),
              QStringList({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0), wrote("$01A10366\r"),
                           loggedSend("$01A103"), "raised host trouble"}));
    EXPECT_EQ(statusOf(0), "NEW"); // the state was to be set after the command
    clock.advance(100);            // the pass is entered again: nothing is left busy
    trace.expect({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0), wrote("$01A10366\r"),
                  loggedSend("$01A103"), stack("01A", "1", "OPEN")});
}

TEST_F(RaisingHandler, LogInATickGoesToTheExceptionHandler)
{
    inject("$01AR1");
    trace.take();
    Answers[0] = 0;
    trace.raiseOnce("log");
    clock.advance(100);
    trace.expect({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0), wrote("$01A00064\r"),
                  loggedSend("$01A000"), "raised host trouble"});
    clock.advance(100); // the timer still ticks
    EXPECT_EQ(trace.countOf("write $01A00064"), 1);
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(RaisingHandler, ErrorOfACommandEndsThePass)
{
    port->Close();
    Answers[0] = 1;
    trace.raiseOnce("error [04]");
    inject("$01AR1");
    EXPECT_EQ(trace.take().mid(6), QStringList({kPortClosed, "raised host trouble"}));
    EXPECT_EQ(statusOf(0), "NEW");
    clock.advance(100);
    EXPECT_EQ(statusOf(0), "OPEN");
}

TEST_F(RaisingHandler, ErrorAboutARaisingHandlerEndsThePass)
{
    gate->SetOnCheckSQL([](auto&&...) { throw std::runtime_error("first"); });
    trace.raiseOnce("error [05]");
    inject("$01AR1");
    EXPECT_EQ(trace.take().mid(4),
              QStringList({stack("01A", "1", "NEW"), "error [05] first", "raised host trouble"}));
    clock.advance(100);
    trace.expect({stack("01A", "1", "NEW"), "error [05] first"});
}

TEST_F(RaisingHandler, ErrorAboutARaisingStatusEndsTheLine)
{
    gate->SetOnCheckStatus([](auto&&...) { throw std::runtime_error("first"); });
    trace.raiseOnce("error [07]");
    inject("$01AR1");
    trace.expect({read("$01AR1"), "img 01A", "error [07] first", "raised host trouble"});
}

TEST_F(RaisingHandler, ErrorAboutAFailedWriteEndsTheCommandWithoutItsLog)
{
    port->WriteFailure = "cable pulled";
    trace.raiseOnce("error [03]");
    inject("$000900");
    trace.expect({read("$000900"), "error [03] cable pulled", "raised host trouble"});
}

TEST_F(RaisingHandler, DirectCallMayBeRepeated)
{
    Answers[0] = 1;
    makePass("01A", "1");
    trace.raiseOnce("log");
    // where the caller is the host itself, the exception may reach it
    platform::guarded([&] { gate->p_hw_CallStackArray(); });
    trace.expect({stack("01A", "1", "NEW"), check("01A", "1", "NEW", 0), wrote("$01A10366\r"),
                  loggedSend("$01A103"), "raised host trouble"});
    gate->p_hw_CallStackArray();
    EXPECT_EQ(statusOf(0), "OPEN");
}

TEST_F(RaisingHandler, NothingLeavesTheEventLoopWithoutAnExceptionHandler)
{
    const auto previous = platform::setExceptionHandler([](const QString&, const auto&) { throw 1; });
    gate->SetOnLog([](auto&&...) { throw std::runtime_error("x"); });
    EXPECT_NO_THROW(inject("$01AR1"));
    platform::setExceptionHandler(previous);
}

TEST_F(RaisingHandler, EveryPassEndsUnbusyWhereverItsHandlersRaise)
{
    const QString events[] = {"status STACK", "check", "write", "log %Отправлено"};
    for (const QString& event : events) {
        for (const int answer : {0, 1}) {
            TTurnstileFixture fixture;
            fixture.Answers[0] = answer;
            fixture.makePass("01A", "1");
            fixture.trace.each(event, [&] { throw std::runtime_error("x"); });
            fixture.inject("#01AHello");
            fixture.clock.advance(100);
            fixture.trace.OnLine = {};
            fixture.skip(100);
            fixture.makePass("02A", "2");
            fixture.Answers[0] = -1;
            fixture.gate->p_hw_CallStackArray();
            EXPECT_EQ(fixture.trace.countOf("check 02A 2 NEW"), 1) << event.toStdString();
        }
    }
}

} // namespace
