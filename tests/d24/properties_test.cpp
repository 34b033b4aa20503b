#include "d24_fixture.h"
#include "support/published_suite.h"

#include <QMetaEnum>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using namespace tnv5::d24;

struct TPublishedD24
{
    using Component = TTurnStylerDeviceD24;

    static TPublishedTable table()
    {
        return {
            {"CheckCross", false},
            {"pingdelay", 15},
            {"CheckET", false},
            {"DeviceList", QVariantList(), TPublished::ReadOnly},
            {"Connector", static_cast<connector::TDeviceConnector*>(nullptr)},
            {"RelayOpen", 1},
            {"RelayClose", 0},
            {"RelayOpenDoor", 3},
            {"RelayCloseDoor", 0},
            {"TimeDelayOpen", 2},
            {"TimeOut", 5},
            {"OnLog", platform::TLogEvent()},
            {"OnError", platform::TLogEvent()},
            {"OnCheckStatus", TCheckStatusDevice()},
            {"OnCheckSQL", TCheckSQLDevice()},
            {"OnGetImg", TGetImg()},
            {"Server", QString()},
            {"Port", 0},
            {"RemoutDevice", podNone},
        };
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(D24, Published, TPublishedD24);

TEST(Properties, KeepWhatIsWritten)
{
    TTurnStylerDeviceD24 gate;
    EXPECT_TRUE(gate.setProperty("CheckET", true));
    EXPECT_TRUE(gate.CheckET());
    EXPECT_FALSE(gate.CheckCross());
    EXPECT_TRUE(gate.setProperty("CheckCross", true));
    EXPECT_TRUE(gate.CheckCross());
    EXPECT_TRUE(gate.setProperty("Server", "10.0.0.1"));
    EXPECT_EQ(gate.Server(), "10.0.0.1");
    EXPECT_TRUE(gate.setProperty("RemoutDevice", QVariant::fromValue(PodClient)));
    EXPECT_EQ(gate.RemoutDevice(), PodClient);
    EXPECT_FALSE(gate.setProperty("DeviceList", QVariantList{1}));
}

TEST(Properties, ModesAndMessageKindsHaveTheirNumbers)
{
    EXPECT_EQ(int(podNone), 0);
    EXPECT_EQ(int(podServer), 1);
    EXPECT_EQ(int(PodClient), 2);
    EXPECT_EQ(int(podlog), 0);
    EXPECT_EQ(int(podError), 1);
    EXPECT_EQ(int(podState), 2);
    EXPECT_STREQ(QMetaEnum::fromType<TConState>().valueToKey(2), "PodClient");
    EXPECT_STREQ(QMetaEnum::fromType<TDevEventType>().valueToKey(2), "podState");
}

TEST(Properties, CheckModesHaveTheirNumbers)
{
    EXPECT_EQ(int(cmOpen), 0);
    EXPECT_EQ(int(cmTimeout), 1);
    EXPECT_EQ(int(cmFinish), 2);
    EXPECT_EQ(int(cmNoAnswer), 3);
    EXPECT_EQ(int(cmProgress), 5);
}

TEST(Properties, EventsCanBeWrittenAndRead)
{
    const TManualClock clock;
    TTurnStylerDeviceD24 gate;
    expectEventsAsProperties<TCheckStatusDevice, TCheckSQLDevice, TGetImg>(
        gate, [&] { gate.p_hw_ProtocolIn("$1:001TRQ7AB"); }, "log img status status status check");
}

TEST(Properties, AComponentWithoutHandlersWorks)
{
    TManualClock clock;
    TTurnStylerDeviceD24 gate;
    EXPECT_EQ(gate.StackItemsCount(), 0);
    EXPECT_EQ(gate.StackItem(0), nullptr);
    for (const char* line : {"", "$", "#", "$1:001TRQ7AB", "#1:001TPING00", "#1:001TCROSS00", "#2:002TBTPH00",
                             "$1:001TPRxx", "$1:001TPR0AB"}) {
        gate.p_hw_ProtocolIn(line);
    }
    clock.advance(60'000);
    EXPECT_EQ(gate.StackItemsCount(), 0);
}

TEST(Properties, TheControllersAreShownToReflection)
{
    const TManualClock clock(TManualClock::at(6, 0));
    TTurnStylerDeviceD24 gate;
    gate.DevicePing("10.0.0.5", "001G", "G");
    gate.DevicePing("10.0.0.6", "002T", "T");
    const QVariantList list = gate.property("DeviceList").toList();
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(
        list[0].toMap(),
        QVariantMap({{"IP", "10.0.0.5"}, {"Device", "001G"}, {"DeviceType", "G"}, {"Pingtime", 46'027.25}}));
    EXPECT_EQ(list[1].toMap()["Device"], "002T");
}

class Designer : public TD24Test
{
protected:
    Designer()
    {
        gate.reset();
        const platform::TDesignScope designing;
        gate = std::make_unique<TTurnStylerDeviceD24>();
        attach();
    }
};

TEST_F(Designer, CreatesNoParts)
{
    EXPECT_TRUE(gate->Designing());
    EXPECT_TRUE(gate->children().isEmpty());
}

TEST_F(Designer, KeepsTheConnectorWithoutTakingItsLines)
{
    int lines = 0;
    link->SetOnGetData([&](TComponent*, const QString&) { ++lines; });
    gate->SetConnector(link.get());
    EXPECT_EQ(gate->Connector(), link.get());
    inject("$10.0.0.5:001TRQ1AB");
    EXPECT_EQ(lines, 1);
    gate->SetConnector(nullptr);
    EXPECT_EQ(gate->Connector(), nullptr);
    inject("$10.0.0.5:001TRQ1AB");
    EXPECT_EQ(lines, 2); // not cleared either
    trace.expect({});
}

TEST_F(Designer, GoingAwayClearsTheConnectorsSlot)
{
    link->SetOnGetData([](TComponent*, const QString&) {});
    gate->SetConnector(link.get());
    gate.reset();
    EXPECT_FALSE(link->OnGetData());
}

TEST_F(Designer, KeepsEveryProperty)
{
    EXPECT_EQ(gate->RelayClose(), 0);
    EXPECT_EQ(gate->RelayOpenDoor(), 3);
    EXPECT_EQ(gate->pingdelay(), 15);
    gate->SetRelayOpen(7);
    gate->SetServer("host");
    gate->SetPort(4000);
    gate->SetRemoutDevice(podServer);
    EXPECT_EQ(gate->RelayOpen(), 7);
    EXPECT_EQ(gate->RemoutDevice(), podServer);
    trace.expect({});
}

TEST_F(Designer, HasNoTimers)
{
    gate->SetTimerInterval(5);
    gate->p_hw_ProtocolIn("#10.0.0.5:001TPING00");
    trace.expect({read("#10.0.0.5:001TPING00"), noted(kT, "PING"), heard(kT, "PING")});
    makePass(kT, "77");
    gate->p_hw_ProtocolIn("x");
    clock.advance(10'000);
    trace.expect({read("x")}); // no pass at once, none later, and no silent controller
}

} // namespace
