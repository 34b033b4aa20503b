#include "support/published.h"
#include "switch_fixture.h"

#include <QMetaEnum>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using namespace tnv5::switching;

const TPublishedTable kPublished = {
    {"pingdelay", 15},
    {"Connector", static_cast<connector::TDeviceConnector*>(nullptr)},
    {"DeviceList", QVariantList(), TPublished::ReadOnly},
    {"TimeDelayOpen", 2},
    {"TimeOut", 5},
    {"OnLog", platform::TLogEvent()},
    {"OnError", platform::TLogEvent()},
    {"OnCheckStatus", TCheckStatusSwitch()},
    {"OnCheckSQL", TCheckSQL()},
    {"OnNewItem", TCheckEvent()},
    {"Server", QString()},
    {"Port", 0},
    {"RemoutDevice", podNone},
};

TEST(Properties, ArePublishedInTheirOrder)
{
    expectPublished(TSwitchDevice::staticMetaObject, kPublished);
}

TEST(Properties, HaveTheirTypes)
{
    expectTypes(TSwitchDevice::staticMetaObject, kPublished);
}

TEST(Properties, HaveTheirDefaults)
{
    const TSwitchDevice device;
    expectDefaults(device, kPublished);
    EXPECT_EQ(device.StackItemsCount(), 0);
}

TEST(Properties, KeepWhatIsWrittenEachItsOwn)
{
    TSwitchDevice device;
    expectKeepsNumbers(device, kPublished);
}

TEST(Properties, AnyNumberAsRemoteModeActsAsStandAlone)
{
    TSwitchFixture fixture;
    for (const int mode : {-1, 3, 1'000'000, -2'147'483'647 - 1}) {
        EXPECT_TRUE(fixture.device->setProperty("RemoutDevice", mode));
        EXPECT_TRUE(fixture.device->Connected());
        fixture.inject("x");
    }
    EXPECT_EQ(fixture.trace.countOf("log %Считано"), 4);
    EXPECT_FALSE(fixture.network.server(0).Active());
    EXPECT_EQ(fixture.network.client(0).Attempts, 0);
}

TEST(Properties, EnumerationsHaveTheirNumbers)
{
    EXPECT_EQ(int(podNone), 0);
    EXPECT_EQ(int(podServer), 1);
    EXPECT_EQ(int(PodClient), 2);
    const QMetaEnum kinds = QMetaEnum::fromType<TDevEventType>();
    EXPECT_STREQ(kinds.valueToKey(0), "podlog");
    EXPECT_STREQ(kinds.valueToKey(1), "podError");
    EXPECT_STREQ(kinds.valueToKey(2), "PodState");
    EXPECT_EQ(kinds.keyCount(), 3);
}

template <class Device>
concept LetsHostsSetTheInterval = requires(Device& device)
{
    device.SetTimerInterval(1);
};
static_assert(!LetsHostsSetTheInterval<TSwitchDevice>, "the sweeps come every three seconds");

class Designer : public TSwitchTest
{
protected:
    Designer()
    {
        device.reset();
        const platform::TDesignScope designing;
        device = std::make_unique<TSwitchDevice>();
        attach();
    }
};

TEST_F(Designer, HasNoTimersSocketsOrJobs)
{
    EXPECT_EQ(network.serverCount(), 0);
    EXPECT_EQ(network.clientCount(), 0);
    EXPECT_EQ(device->p_hw_FindDevice(kLink, kBoard, "1"), -1);
    EXPECT_EQ(device->p_hw_CheckStatus(kLink, kBoard, "1", "ON", 1), "");
    device->p_hw_ProtocolIn("#0.0.0.0:000ARELAY1Y4F");
    EXPECT_EQ(device->StackItemsCount(), 0);
    device->SetConnector(link.get());
    trace.take();
    clock.advance(10'000);
    sweep();
    trace.expect({});
    EXPECT_EQ(link->Reads, 0);
    device->SetRemoutDevice(podServer);
    EXPECT_FALSE(device->Connected());
    device->SetRemoutDevice(PodClient);
    EXPECT_FALSE(device->Connected());
}

TEST_F(Designer, OnlyStoresTheConnector)
{
    int lines = 0;
    link->SetOnGetData([&](TComponent*, const QString&) { ++lines; });
    device->SetConnector(link.get());
    EXPECT_EQ(device->Connector(), link.get());
    inject("x");
    device->SetConnector(nullptr);
    inject("x");
    EXPECT_EQ(lines, 2);
    trace.expect({});
}

TEST(Owner, FreesTheComponent)
{
    auto owner = std::make_unique<QObject>();
    const QPointer<TSwitchDevice> device = new TSwitchDevice(owner.get());
    owner.reset();
    EXPECT_TRUE(device.isNull());
}

} // namespace
