// Handlers and a link that raise, each at each of its calls.

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const QString kCard = QStringLiteral("$10.0.0.5:001TRQ77AB");

class RaisingHandler : public TD24Test
{
protected:
    /// The table is served again.
    void expectAlive()
    {
        trace.OnLine = {};
        trace.take();
        const d24::PRFidInfo first = gate->StackItem(0);
        ASSERT_TRUE(first);
        first->Status = "PROGRESS";
        runPass();
        EXPECT_EQ(trace.countOf("status STACK"), 1);
    }
};

TEST_F(RaisingHandler, AStatusHandlerIsReportedAndTheWorkGoesOn)
{
    trace.raiseOnce("status CHECK");
    inject(kCard);
    trace.expect({read(kCard), "img 001T", looked(kT, "77", "NEW"), "error [07] host trouble",
                  come(kT, "77", "NEW"), stack(kT, "77", "NEW"), check(kT, "77", "NEW", 0)});
    trace.raiseOnce("status COME");
    inject("$10.0.0.5:001TGR77AB");
    trace.expect({read("$10.0.0.5:001TGR77AB"), come(kT, "77", "FINISH"), "error [07] host trouble"});
    trace.raiseOnce("status STACK");
    clock.advance(10);
    trace.expect({stack(kT, "77", "FINISH"), "error [07] host trouble", check(kT, "77", "FINISH", 2)});
}

TEST_F(RaisingHandler, AStatusHandlerIsSilentWithoutErrorHandler)
{
    gate->SetOnError({});
    trace.raiseOnce("status");
    EXPECT_NO_THROW(gate->ShowinternalStatus(gate.get(), "N", "1", "2", "3", "4", "5", "6"));
    trace.expect({"status N!1!2!3!4!5!6"});
}

TEST_F(RaisingHandler, TextsOfPlatformErrorsAreReported)
{
    trace.each("status", [] { throw platform::EConvertError(QStringLiteral("не число")); });
    gate->ShowinternalStatus(gate.get(), "N", "1", "2", "3", "4", "5", "6");
    trace.expect({"status N!1!2!3!4!5!6", "error [07] не число"});
}

TEST_F(RaisingHandler, ASilentControllersReportIsReportedAndTheOthersFollow)
{
    gate->DevicePing("1", "001T", "T");
    gate->DevicePing("2", "002T", "T");
    trace.take();
    trace.raiseOnce("status STACK");
    clock.advance(2'000);
    trace.expect({noted("1!001T!T", "NOPING"), "error [07] host trouble", noted("2!002T!T", "NOPING")});
}

TEST_F(RaisingHandler, ALogHandlerEndsTheLine)
{
    trace.raiseOnce("log");
    EXPECT_THROW(inject(kCard), std::runtime_error);
    trace.expect({read(kCard)});
    EXPECT_EQ(gate->StackItemsCount(), 0);
    inject(kCard);
    EXPECT_EQ(gate->StackItemsCount(), 1);
}

TEST_F(RaisingHandler, APictureHandlerEndsTheLineAfterThePassIsMade)
{
    trace.raiseOnce("img");
    EXPECT_THROW(inject(kCard), std::runtime_error);
    trace.expect({read(kCard), "img 001T"});
    ASSERT_EQ(gate->StackItemsCount(), 1);
    EXPECT_EQ(statusOf(0), "NEW");
    inject("x"); // the next line starts the passes
    trace.expect({read("x"), stack(kT, "77", "NEW"), check(kT, "77", "NEW", 0)});
}

TEST_F(RaisingHandler, ACardCheckLeavesTheLine)
{
    trace.raiseOnce("check");
    EXPECT_THROW(inject(kCard), std::runtime_error);
    trace.expect({read(kCard), "img 001T", looked(kT, "77", "NEW"), come(kT, "77", "NEW"),
                  stack(kT, "77", "NEW"), check(kT, "77", "NEW", 0)});
    EXPECT_EQ(statusOf(0), "NEW");
    clock.advance(10); // and is asked again
    trace.expect({stack(kT, "77", "NEW"), check(kT, "77", "NEW", 0)});
}

TEST_F(RaisingHandler, ACardCheckOnATickGoesToTheExceptionHandler)
{
    for (const char* status : {"NEW", "TIMEOUT", "FINISH", "NOANSWER", "CRC-ERROR", "PROGRESSSTART"}) {
        SCOPED_TRACE(status);
        TD24Fixture fixture;
        const d24::PRFidInfo pass = fixture.makePass(kT, "77", "HOLD");
        fixture.inject("x");
        fixture.trace.take();
        pass->Status = status;
        fixture.makePass(kG, "77", "OPEN"); // comes after it and is not reached
        fixture.trace.each("check", [&] { throw std::runtime_error("database gone"); });
        fixture.clock.advance(20);
        const QStringList once = fixture.trace.take();
        EXPECT_EQ(once.size(), 6); // twice: report, question, trouble
        EXPECT_EQ(once.filter("raised database gone").size(), 2);
        EXPECT_EQ(pass->Status, status);
        fixture.trace.OnLine = {};
        pass->Status = "HOLD";
        fixture.clock.advance(10); // the gate is not dead
        fixture.trace.expect({stack(kG, "77", "OPEN")});
    }
}

TEST_F(RaisingHandler, AMessageIsNotTakenFromACheckThatRaises)
{
    Message = "|text|";
    const d24::PRFidInfo pass = makePass(kI, kManualCard);
    trace.raiseOnce("check");
    EXPECT_THROW(runPass(), std::runtime_error);
    EXPECT_EQ(pass->InfoMess, "");
    EXPECT_EQ(pass->Status, "NEW");
    expectAlive();
}

TEST_F(RaisingHandler, AnUnreadableResultLeavesThePass)
{
    Answers = {{0, "yes"}};
    const d24::PRFidInfo pass = makePass(kI, kManualCard);
    EXPECT_THROW(runPass(), platform::EConvertError);
    EXPECT_EQ(pass->Status, "NEW");
    expectAlive();
}

TEST_F(RaisingHandler, ASilentAbortIsSilentOnATick)
{
    makePass(kT, "77", "HOLD");
    inject("x");
    gate->StackItem(0)->Status = "NEW";
    trace.take();
    trace.each("check", [] { throw platform::EAbort(); });
    clock.advance(10);
    trace.expect({stack(kT, "77", "NEW"), check(kT, "77", "NEW", 0)});
    expectAlive();
}

TEST_F(RaisingHandler, ALogHandlerAfterSendingLeavesThePass)
{
    Answers = {{0, 1}};
    makePass(kT, "77");
    trace.raiseOnce("log");
    EXPECT_THROW(runPass(), std::runtime_error);
    trace.expect({stack(kT, "77", "NEW"), check(kT, "77", "NEW", 0), commanded("GO10.0.0.5:001T"),
                  loggedSend("GO10.0.0.5:001T")});
    EXPECT_EQ(statusOf(0), "NEW");
    expectAlive();
}

TEST_F(RaisingHandler, AnErrorHandlerLeavesThePass)
{
    Answers = {{0, 0}};
    for (const bool up : {true, false}) {
        TD24Fixture fixture;
        fixture.Answers = {{0, 0}};
        fixture.link->Up = up;
        fixture.link->Failures = {{"PH", "torn"}};
        fixture.makePass(kT, "77");
        fixture.trace.once("error", [&] { throw std::runtime_error("host trouble"); });
        EXPECT_THROW(fixture.runPass(), std::runtime_error);
        EXPECT_EQ(fixture.trace.take().last(), up ? QStringLiteral("error [044] torn") : kPortClosed);
        EXPECT_EQ(fixture.statusOf(0), "NEW");
        fixture.runPass();
        EXPECT_EQ(fixture.statusOf(0), "CLOSE");
    }
}

TEST_F(RaisingHandler, AnErrorHandlerOfAStatusReportLeavesTheLine)
{
    trace.OnLine = [](const QString& line) {
        if (line.startsWith("status") || line.startsWith("error")) {
            throw std::runtime_error("host trouble");
        }
    };
    EXPECT_THROW(inject("#1:001Tx00"), std::runtime_error);
    trace.expect({read("#1:001Tx00"), heard("1!001T!T", "x"), "error [07] host trouble"});
}

TEST_F(RaisingHandler, ARepetitionLeavesThePass)
{
    gate->SetCheckET(true);
    link->Failures = {{"GO", "cut"}};
    makePass(kT, "76", "PROGRESS"); // makes the pass busy
    makePass(kG, "77", "WAIT")->Command = "GO1";
    clock.jumpTo(clock.nowMs() + 2'000);
    EXPECT_THROW(runPass(), platform::EComPort);
    trace.expect({stack(kT, "76", "PROGRESS"), commanded("GO1")}); // not reported as an error
    EXPECT_THROW(runPass(), platform::EComPort);
    trace.expect({stack(kT, "76", "PROGRESS"), commanded("GO1")}); // and not stuck
}

TEST_F(RaisingHandler, ARepetitionOnATickGoesToTheExceptionHandler)
{
    gate->SetCheckET(true);
    link->Failures = {{"GO", "cut"}};
    makePass(kG, "77", "WAIT")->Command = "GO1";
    inject("x");
    trace.take();
    clock.advance(2'010);
    trace.expect({commanded("GO1"), "raised cut", commanded("GO1"), "raised cut"});
}

TEST_F(RaisingHandler, AnUnknownExceptionOfTheLinkIsReported)
{
    makePass(kT, "77");
    trace.each("send", [] { throw 42; });
    EXPECT_TRUE(gate->p_hw_SendComCommand(0, 1));
    const QStringList lines = trace.take();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_TRUE(lines[1].startsWith("error [04] "));
    EXPECT_EQ(lines[2], loggedSend("GO10.0.0.5:001T"));
}

} // namespace
