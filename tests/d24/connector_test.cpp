// The connector: who has its lines, and how often it is asked whether it is connected.

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using Connector = TD24Test;

TEST_F(Connector, GivesItsLinesToTheComponent)
{
    EXPECT_EQ(gate->Connector(), link.get());
    inject("x");
    trace.expect({read("x")});
    EXPECT_EQ(link->Reads, 0); // attaching and listening open nothing
}

TEST_F(Connector, CanBeWrittenAsAProperty)
{
    TTestLink other(trace);
    EXPECT_TRUE(gate->setProperty("Connector", QVariant::fromValue<connector::TDeviceConnector*>(&other)));
    EXPECT_EQ(gate->Connector(), &other);
    other.GetCommand("x");
    trace.expect({read("x")});
}

TEST_F(Connector, ItsCallbackHandlesALineFromAnySender)
{
    gate->OnConnectorData(nullptr, "x");
    trace.expect({read("x")});
}

TEST_F(Connector, CanBeTakenAway)
{
    gate->SetConnector(nullptr);
    EXPECT_EQ(gate->Connector(), nullptr);
    EXPECT_FALSE(link->OnGetData());
    inject("x");
    trace.expect({});
    gate->SetConnector(nullptr); // twice does no harm
    gate->SetConnector(link.get());
    inject("x");
    trace.expect({read("x")});
}

TEST_F(Connector, TakingItAwayClearsTheSlotWhoeverHasIt)
{
    link->SetOnGetData([](TComponent*, const QString&) {});
    gate->SetConnector(nullptr);
    EXPECT_FALSE(link->OnGetData());
}

TEST_F(Connector, AnotherOneDoesNotSilenceTheFirst)
{
    TTestLink other(trace);
    gate->SetConnector(&other);
    EXPECT_EQ(gate->Connector(), &other);
    inject("first");
    other.GetCommand("second");
    trace.expect({read("first"), read("second")});
    gate->SetConnector(nullptr);
    EXPECT_FALSE(other.OnGetData());
}

TEST_F(Connector, TheFirstOneMayOutliveTheComponent)
{
    TTestLink other(trace);
    gate->SetConnector(&other);
    gate.reset();
    EXPECT_FALSE(other.OnGetData());
    inject("x"); // finds no one
    trace.expect({});
}

TEST_F(Connector, CommandsGoToTheLatest)
{
    TTestLink other(trace);
    other.Up = false;
    gate->SetConnector(&other);
    gate->p_hw_CheckStatusAll();
    trace.expect({kPortClosed});
    EXPECT_EQ(link->Reads, 0);
    EXPECT_EQ(other.Reads, 1);
}

TEST_F(Connector, TheSameOneAgainTakesItsLinesBack)
{
    link->SetOnGetData({});
    gate->SetConnector(link.get());
    inject("x");
    trace.expect({read("x")});
}

TEST_F(Connector, TheDeviceAttachedLastHasTheLines)
{
    TRecorder second;
    TTurnStylerDeviceD24 other;
    second.attach(other);
    other.SetConnector(link.get());
    inject("x");
    trace.expect({});
    second.expect({read("x")});
    EXPECT_EQ(gate->Connector(), link.get()); // and can still send
    makePass(kT, "77");
    gate->p_hw_SendComCommand(0, 1);
    trace.expect({commanded("GO10.0.0.5:001T"), loggedSend("GO10.0.0.5:001T")});
}

TEST_F(Connector, IsNotOwned)
{
    const QPointer<TTestLink> pointer = link.get();
    gate.reset();
    EXPECT_FALSE(pointer.isNull());
    EXPECT_FALSE(link->OnGetData());
    inject("x");
    trace.expect({});
}

TEST_F(Connector, GoingAwayClearsTheSlotWhoeverHasIt)
{
    link->SetOnGetData([](TComponent*, const QString&) {});
    gate.reset();
    EXPECT_FALSE(link->OnGetData());
}

TEST_F(Connector, MayBeDestroyedFirst)
{
    makePass(kT, "77");
    link.reset();
    EXPECT_EQ(gate->Connector(), nullptr);
    EXPECT_FALSE(gate->Connected());
    EXPECT_TRUE(gate->p_hw_SendComCommand(0, 1));
    trace.expect({kPortClosed});
    gate->SetConnector(nullptr);
    link = std::make_unique<TTestLink>(trace);
    gate->SetConnector(link.get());
    inject("x");
    EXPECT_EQ(trace.take().value(0), read("x"));
}

TEST_F(Connector, IsAskedOnceByEachThatNeedsIt)
{
    const auto readsOf = [this](const std::function<void()>& call) {
        const int before = link->Reads;
        call();
        return link->Reads - before;
    };
    makePass(kT, "77");
    for (const bool up : {true, false}) {
        link->Up = up;
        EXPECT_EQ(readsOf([&] { EXPECT_TRUE(gate->p_hw_SendComCommand(0, 0)); }), 1);
        EXPECT_EQ(readsOf([&] { EXPECT_TRUE(gate->p_hw_SendComCommand(0, 1)); }), 1);
        EXPECT_EQ(readsOf([&] { EXPECT_TRUE(gate->p_hw_SendComCommand(0, 7)); }), 1);
        EXPECT_EQ(readsOf([&] { EXPECT_TRUE(gate->p_hw_relay("1", "001T", "1", 1)); }), 1);
        EXPECT_EQ(readsOf([&] { EXPECT_TRUE(gate->p_hw_CheckStatusAll()); }), 1);
        EXPECT_EQ(readsOf([&] { EXPECT_EQ(gate->Connected(), up); }), 1);
    }
}

TEST_F(Connector, IsNotAskedForAlarmAndResend)
{
    link->Up = false;
    gate->SetCheckCross(true);
    gate->SetCheckET(true);
    inject("#10.0.0.9:009TCROSS00");
    makePass(kT, "77", "WAIT")->Command = "GO1";
    clock.advance(2'000);
    EXPECT_EQ(trace.countOf("send AL10.0.0.9:009T"), 1);
    inject("x"); // starts the passes
    EXPECT_GE(trace.countOf("send GO1"), 1);
    EXPECT_EQ(link->Reads, 0);
}

TEST_F(Connector, IsAskedOnceByAPass)
{
    Answers = {{0, 1}};
    inject("$10.0.0.5:001TRQ77AB");
    EXPECT_EQ(link->Reads, 1);
    clock.advance(5'000); // the open pass only waits
    EXPECT_EQ(link->Reads, 1);
    inject("$10.0.0.5:001TPR77AB");
    inject("$10.0.0.5:001TGR77AB");
    inject("#10.0.0.5:001TPING00");
    EXPECT_EQ(link->Reads, 1);
}

TEST_F(Connector, TellsTheReadinessStandAlone)
{
    EXPECT_TRUE(gate->Connected());
    link->Up = false;
    EXPECT_FALSE(gate->Connected());
    link->Up = true;
    gate->SetConnector(nullptr);
    EXPECT_FALSE(gate->Connected());
}

} // namespace
