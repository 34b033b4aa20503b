// Handlers that raise.

#include "switch_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Raising = TSwitchTest;

TEST_F(Raising, AStatusHandlersTextIsReportedBare)
{
    makeJob("000A!1!OFF!ON");
    trace.each("status", [] { throw std::runtime_error("host trouble"); });
    sweep();
    trace.expect({reached("000A!1!OFF!ON"), "error host trouble", stack("000A!1!OFF!ON"),
                  "error host trouble", check("000A!1!OFF!ON", 1), commanded("RL0.0.0.0:000A1"),
                  loggedSend("RL0.0.0.0:000A1")});
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Raising, ACheckHandlersExceptionLeavesTheSweep)
{
    makeJob("000A!1!OFF!ON");
    makeJob("001A!1!OFF!OFF");
    trace.raiseOnce("check");
    EXPECT_THROW(sweep(), std::runtime_error);
    EXPECT_EQ(jobAt(0), "000A!1!OFF!ON");
    trace.take();
    sweep(); // not busy any more
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Raising, FromATickItGoesToTheExceptionHandler)
{
    inject("x");
    makeJob("000A!1!OFF!ON");
    trace.take();
    trace.raiseOnce("check");
    clock.advance(3'000);
    trace.expect({reached("000A!1!OFF!ON"), stack("000A!1!OFF!ON"), check("000A!1!OFF!ON", 1),
                  raised("host trouble")});
    clock.advance(3'000);
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Raising, ANewItemHandlersExceptionLeavesTheSweep)
{
    makeJob("000A!1!NONE!OFF");
    trace.raiseOnce("new");
    EXPECT_THROW(sweep(), std::runtime_error);
    EXPECT_EQ(jobAt(0), "000A!1!NONE!OFF"); // and is asked again
    sweep();
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Raising, ALogHandlersExceptionLeavesTheOperation)
{
    makeJob("000A!1!OFF!ON");
    trace.each("log", [] { throw std::runtime_error("host trouble"); });
    EXPECT_THROW(device->p_hw_ProtocolIn("#0.0.0.0:000ARELAY1Y4F"), std::runtime_error);
    EXPECT_THROW(device->p_hw_relay(kLink, kBoard, "1"), std::runtime_error);
    EXPECT_THROW(device->p_hw_CheckStatus(kLink, kBoard, "1", "ON", 1), std::runtime_error);
    EXPECT_THROW(device->p_hw_checktimeout(0, 0), std::runtime_error);
    EXPECT_EQ(jobAt(0), "000A!1!ON!ON"); // set before it was logged
    device->StackItem(0)->Status = "OFF";
    EXPECT_THROW(sweep(), std::runtime_error); // the command's log
    EXPECT_EQ(jobAt(0), "000A!1!OFF!ON");
    trace.OnLine = {};
    sweep();
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

TEST_F(Raising, AFailingConnectorLeavesTheSweep)
{
    makeJob("000A!1!OFF!ON");
    link->Failures = {{"RL", "cut"}};
    EXPECT_THROW(sweep(), platform::EComPort);
    EXPECT_EQ(jobAt(0), "000A!1!OFF!ON");
    link->Failures.clear();
    sweep();
    EXPECT_EQ(jobAt(0), "000A!1!OFF!OFF");
}

} // namespace
