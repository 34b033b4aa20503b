// Passes opened and closed by hand.

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Manual = TD24Test;

const QString kLine = QStringLiteral("$10.0.0.5:001TRQ-1-1-1-1-100");

TEST_F(Manual, TheFirstArgumentNamesThePendingPass)
{
    const d24::PRFidInfo pass = makePass(kT, "77", "OPEN");
    gate->p_hw_manual("001T", "anything", "CLOSE");
    trace.expect({});
    EXPECT_EQ(pass->Status, "CLOSE");
    gate->p_hw_manual("001T", "", "any word");
    EXPECT_EQ(pass->Status, "any word");
    clock.advance(1'000); // and starts no pass
    trace.expect({});
}

TEST_F(Manual, OnlyTheFirstMatchingPassIsChanged)
{
    makePass(kG, "77", "OPEN");
    makePass(kT, "77", "OPEN");
    makePass(kT, "78", "OPEN");
    gate->p_hw_manual("001T", "002G", "CLOSE");
    EXPECT_EQ(statusOf(0), "OPEN");
    EXPECT_EQ(statusOf(1), "CLOSE");
    EXPECT_EQ(statusOf(2), "OPEN");
    EXPECT_EQ(gate->StackItemsCount(), 3);
}

TEST_F(Manual, TheAddressDoesNotNameAPass)
{
    const d24::PRFidInfo pass = makePass(kT, "77", "HOLD");
    gate->p_hw_manual("10.0.0.5", "001T", "CLOSE");
    // the pending pass stays, and the request is a second card
    trace.expect({read(kLine), looked(kT, kManualCard, "HOLD"), come(kT, kManualCard, "HOLD")});
    EXPECT_EQ(pass->Status, "HOLD");
    EXPECT_EQ(gate->StackItemsCount(), 1);
}

TEST_F(Manual, ARequestIsAllowed)
{
    Answers = {{0, 1}, {2, 1}};
    gate->p_hw_manual("10.0.0.5", "001T", "ignored");
    trace.expect({read(kLine), "img 001T", looked(kT, kManualCard, "NEW"), come(kT, kManualCard, "NEW"),
                  stack(kT, kManualCard, "NEW"), check(kT, kManualCard, "NEW", 0),
                  commanded("GO10.0.0.5:001T"), loggedSend("GO10.0.0.5:001T")});
    EXPECT_EQ(statusOf(0), "OPEN");
    clock.advance(10);
    trace.expect({stack(kT, kManualCard, "OPEN")});
    EXPECT_EQ(statusOf(0), "FINISH");
    clock.advance(10);
    trace.expect({stack(kT, kManualCard, "FINISH"), check(kT, kManualCard, "FINISH", 2)});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Manual, ARequestIsRefused)
{
    Answers = {{0, 0}};
    gate->p_hw_manual("10.0.0.5", "001T", "OPEN");
    EXPECT_EQ(trace.take().mid(6),
              QStringList({commanded("PH10.0.0.5:001T"), loggedSend("PH10.0.0.5:001T")}));
    EXPECT_EQ(statusOf(0), "CLOSE");
}

TEST_F(Manual, WithoutHandlerARequestIsNotAnswered)
{
    gate->SetOnCheckSQL({});
    gate->p_hw_manual("10.0.0.5", "001T", "OPEN");
    EXPECT_EQ(trace.countOf("send"), 0);
    EXPECT_EQ(statusOf(0), "NOANSWER");
}

TEST_F(Manual, ARequestForADisplayIsFinished)
{
    Answers = {{0, 1}};
    gate->p_hw_manual("10.0.0.5", "003I", "OPEN");
    EXPECT_EQ(trace.countOf("send SH10.0.0.5:003I"), 1);
    EXPECT_EQ(statusOf(0), "FINISH");
}

TEST_F(Manual, AShortDeviceIsCutAsALineIs)
{
    gate->p_hw_manual("1", "7", "OPEN");
    EXPECT_EQ(trace.take(), QStringList({read("$1:7RQ-1-1-1-1-100")})); // controller "7RQ-", status "1-"
    EXPECT_EQ(gate->StackItemsCount(), 0);
    gate->p_hw_manual("", "", "");
    EXPECT_EQ(trace.take(), QStringList({read("$:RQ-1-1-1-1-100")}));
}

TEST_F(Manual, AnEmptyFirstArgumentMayNameAPassWithoutDevice)
{
    makePass("1!!T", "77", "HOLD");
    gate->p_hw_manual("", "001T", "CLOSE");
    trace.expect({});
    EXPECT_EQ(statusOf(0), "CLOSE");
}

TEST_F(Manual, RefreshesTheController)
{
    gate->DevicePing("10.0.0.5", "001T", "T");
    gate->p_hw_manual("10.0.0.5", "001T", "OPEN");
    EXPECT_DOUBLE_EQ(gate->DeviceList().at(0)->Pingtime, 0.5);
}

} // namespace
