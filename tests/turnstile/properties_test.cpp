#include "support/published_suite.h"
#include "turnstile_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using namespace tnv5::turnstile;

struct TPublishedTurnstile
{
    using Component = TTurnStylerDevice;

    static TPublishedTable table()
    {
        return {
            {"DeviceList", QStringList()},
            {"ComPort", static_cast<platform::TComPort*>(nullptr)},
            {"RelayOpen", 1},
            {"RelayClose", 0},
            {"RelayOpenDoor", 3},
            {"RelayCloseDoor", 0},
            {"TimeDelayOpen", 2},
            {"TimeOut", 5},
            {"DoorIndex", QStringLiteral("D")},
            {"Server", QString()},
            {"Port", 0},
            {"RemoutDevice", podNone},
            {"OnLog", platform::TLogEvent()},
            {"OnError", platform::TLogEvent()},
            {"OnCheckStatus", TCheckStatusDevice()},
            {"OnCheckSQL", TCheckSQLDevice()},
            {"OnGetImg", TGetImg()},
        };
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Turnstile, Published, TPublishedTurnstile);

TEST(Properties, KeepWhatIsWritten)
{
    TTurnStylerDevice gate;
    EXPECT_TRUE(gate.setProperty("DeviceList", QStringList({"01A", "02D"})));
    EXPECT_EQ(gate.DeviceList(), QStringList({"01A", "02D"}));
    EXPECT_TRUE(gate.setProperty("DoorIndex", "E"));
    EXPECT_TRUE(gate.setProperty("Server", "10.0.0.1"));
    EXPECT_EQ(gate.DoorIndex(), "E");
    EXPECT_EQ(gate.Server(), "10.0.0.1");
    EXPECT_TRUE(gate.setProperty("RemoutDevice", QVariant::fromValue(PodClient)));
    EXPECT_EQ(gate.RemoutDevice(), PodClient);
}

TEST(Properties, ModesAndMessageKindsHaveTheirNumbers)
{
    EXPECT_EQ(int(podNone), 0);
    EXPECT_EQ(int(podServer), 1);
    EXPECT_EQ(int(PodClient), 2);
    EXPECT_EQ(int(podlog), 0);
    EXPECT_EQ(int(podError), 1);
    EXPECT_EQ(int(PodState), 2);
}

TEST(Properties, EventsCanBeWrittenAndRead)
{
    const TManualClock clock;
    TMemoryPort port;
    port.Open();
    TTurnStylerDevice gate;
    gate.SetComport(&port);
    expectEventsAsProperties<TCheckStatusDevice, TCheckSQLDevice, TGetImg>(
        gate, [&] { port.feed("$01AR1\r"); }, "log error img status status status check");
}

TEST(Properties, ThePortCanBeWritten)
{
    TMemoryPort port;
    TTurnStylerDevice gate;
    EXPECT_TRUE(gate.setProperty("ComPort", QVariant::fromValue<platform::TComPort*>(&port)));
    EXPECT_EQ(gate.ComPort(), &port);
    gate.SetDeviceList({});
    port.feed("#01AHardReset\r");
    EXPECT_EQ(gate.DeviceList(), QStringList("01A"));
}

using Port = TTurnstileTest;

TEST_F(Port, IsNotOwned)
{
    EXPECT_NE(port->parent(), gate.get());
    gate.reset();
    EXPECT_TRUE(port->Connected());
    inject("$01AR1");
    trace.expect({});
}

TEST_F(Port, ListensAlsoWhileClosed)
{
    port->Close();
    inject("#01AHello");
    trace.expect({read("#01AHello"), heard("01A", "Hello")});
}

TEST_F(Port, AnotherOneTakesBothSplittersAlong)
{
    TMemoryPort second;
    gate->SetComport(&second);
    EXPECT_EQ(gate->ComPort(), &second);
    inject("#01AOld");
    inject("$01AX");
    trace.expect({});
    second.feed("#01ANew\r");
    trace.expect({read("#01ANew"), heard("01A", "New")});
    second.feed("$01AX\r");
    trace.expect({read("$01AX")});
}

TEST_F(Port, AnotherOneStartsWithEmptySplitters)
{
    port->feed("$01AR12");
    port->feed("#01AHal");
    TMemoryPort second;
    gate->SetComport(&second);
    second.feed("34\r");
    trace.expect({});
}

TEST_F(Port, TheSameOneAgainChangesNothing)
{
    port->feed("#01AHal");
    gate->SetComport(port.get());
    port->feed("lo\r");
    trace.expect({read("#01AHallo"), heard("01A", "Hallo")});
}

TEST_F(Port, AnUnfinishedLineSurvivesClosingAndOpening)
{
    port->feed("#01AHal");
    port->Close();
    port->Open();
    port->feed("lo\r");
    trace.expect({read("#01AHallo"), heard("01A", "Hallo")});
}

TEST_F(Port, CanBeTakenAway)
{
    gate->SetComport(nullptr);
    EXPECT_EQ(gate->ComPort(), nullptr);
    inject("#01AHello");
    trace.expect({});
    gate->p_hw_CheckStatusAll();
    trace.expect({kPortClosed});
    gate->SetComport(port.get());
    inject("#01AHello");
    trace.expect({read("#01AHello"), heard("01A", "Hello")});
}

TEST_F(Port, MayBeDestroyedUnderTheComponent)
{
    port.reset();
    EXPECT_EQ(gate->ComPort(), nullptr);
    EXPECT_FALSE(gate->Connected());
    gate->p_hw_CheckStatusAll();
    trace.expect({kPortClosed});
    TMemoryPort second;
    second.Open();
    trace.attach(second);
    gate->SetComport(&second);
    gate->p_hw_CheckStatusAll();
    trace.expect({wrote("$0009001D\r"), loggedSend("$000900")});
}

TEST_F(Port, MayServeTwoComponents)
{
    TTurnStylerDevice other;
    QStringList lines;
    other.SetOnLog([&](TComponent*, const QString& line) { lines << line; });
    other.SetComport(port.get());
    inject("#01AHello");
    trace.expect({read("#01AHello"), heard("01A", "Hello")});
    EXPECT_EQ(lines, QStringList("%Считано с порта% #01AHello"));
}

TEST_F(Port, TellsTheReadinessStandAlone)
{
    EXPECT_TRUE(gate->Connected());
    port->Close();
    EXPECT_FALSE(gate->Connected());
    gate->SetComport(nullptr);
    EXPECT_FALSE(gate->Connected());
}

TEST_F(Port, AssigningItTouchesNoHardware)
{
    TMemoryPort second;
    second.OpenFailure = "must not be opened";
    gate->SetComport(&second);
    EXPECT_FALSE(second.Connected());
    EXPECT_TRUE(port->Connected());
    trace.expect({});
}

class Designer : public TTurnstileTest
{
protected:
    Designer()
    {
        const platform::TDesignScope designing;
        gate = std::make_unique<TTurnStylerDevice>();
        attach();
    }
};

TEST_F(Designer, CreatesNoParts)
{
    EXPECT_TRUE(gate->Designing());
    EXPECT_TRUE(gate->children().isEmpty());
}

TEST_F(Designer, KeepsThePortWithoutListening)
{
    gate->SetComport(port.get());
    EXPECT_EQ(gate->ComPort(), port.get());
    inject("$01AR1");
    inject("#01AHardReset");
    clock.advance(10'000);
    trace.expect({});
    EXPECT_EQ(port->takeWritten(), "");
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

TEST_F(Designer, KeepsEveryProperty)
{
    EXPECT_EQ(gate->RelayClose(), 0);
    EXPECT_EQ(gate->RelayOpenDoor(), 3);
    gate->SetDeviceList({"01A"});
    gate->SetRelayOpen(7);
    gate->SetServer("host");
    gate->SetPort(4000);
    gate->SetRemoutDevice(PodClient);
    EXPECT_EQ(gate->DeviceList(), QStringList("01A"));
    EXPECT_EQ(gate->RelayOpen(), 7);
    EXPECT_EQ(gate->RemoutDevice(), PodClient);
    trace.expect({});
}

TEST_F(Designer, HasNoTimer)
{
    gate->SetTimerInterval(10);
    gate->p_hw_ProtocolIn("#01AHello");
    trace.expect({read("#01AHello"), heard("01A", "Hello")});
    makePass("01A", "77");
    gate->p_hw_ProtocolIn("x");
    clock.advance(10'000);
    trace.expect({read("x")}); // no pass at once, none later
}

TEST(Owner, ComponentWithoutPortDoesNothing)
{
    TManualClock clock;
    QStringList lines;
    TTurnStylerDevice gate;
    EXPECT_EQ(gate.StackItemsCount(), 0);
    gate.SetOnLog([&](TComponent*, const QString& line) { lines << line; });
    clock.advance(60'000);
    EXPECT_TRUE(lines.isEmpty());
    EXPECT_FALSE(gate.Connected());
}

} // namespace
