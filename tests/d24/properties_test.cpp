#include "d24_bench.h"

#include "support/text_printers.h"

#include <QMetaEnum>
#include <QMetaProperty>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using namespace tnv5::d24;

QVariant property(const QObject& object, const char* name)
{
    const QVariant value = object.property(name);
    EXPECT_TRUE(value.isValid()) << name;
    return value;
}

TEST(Properties, ArePublishedInTheirOrder)
{
    const QMetaObject& meta = TTurnStylerDeviceD24::staticMetaObject;
    QStringList names;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty published = meta.property(i);
        names << published.name();
        EXPECT_TRUE(published.isReadable()) << published.name();
        EXPECT_EQ(published.isWritable(), names.last() != "DeviceList") << published.name();
    }
    EXPECT_EQ(names.join(u' '), "CheckCross pingdelay CheckET DeviceList Connector RelayOpen RelayClose "
                                "RelayOpenDoor RelayCloseDoor TimeDelayOpen TimeOut OnLog OnError "
                                "OnCheckStatus OnCheckSQL OnGetImg Server Port RemoutDevice");
}

TEST(Properties, HaveTheirTypes)
{
    const QMetaObject& meta = TTurnStylerDeviceD24::staticMetaObject;
    const auto typeOf = [&](const char* name) {
        return meta.property(meta.indexOfProperty(name)).metaType();
    };
    for (const char* name : {"CheckCross", "CheckET"}) {
        EXPECT_EQ(typeOf(name), QMetaType::fromType<bool>()) << name;
    }
    for (const char* name : {"pingdelay", "RelayOpen", "RelayClose", "RelayOpenDoor", "RelayCloseDoor",
                             "TimeDelayOpen", "TimeOut", "Port"}) {
        EXPECT_EQ(typeOf(name), QMetaType::fromType<int>()) << name;
    }
    EXPECT_EQ(typeOf("Connector"), QMetaType::fromType<connector::TDeviceConnector*>());
    EXPECT_EQ(typeOf("Server"), QMetaType::fromType<QString>());
    EXPECT_EQ(typeOf("RemoutDevice"), QMetaType::fromType<TConState>());
    EXPECT_EQ(typeOf("OnLog"), QMetaType::fromType<platform::TLogEvent>());
    EXPECT_EQ(typeOf("OnError"), QMetaType::fromType<platform::TLogEvent>());
    EXPECT_EQ(typeOf("OnCheckStatus"), QMetaType::fromType<TCheckStatusDevice>());
    EXPECT_EQ(typeOf("OnCheckSQL"), QMetaType::fromType<TCheckSQLDevice>());
    EXPECT_EQ(typeOf("OnGetImg"), QMetaType::fromType<TGetImg>());
}

TEST(Properties, HaveTheirDefaults)
{
    const TTurnStylerDeviceD24 gate;
    EXPECT_FALSE(property(gate, "CheckCross").toBool());
    EXPECT_EQ(property(gate, "pingdelay").toInt(), 15);
    EXPECT_FALSE(property(gate, "CheckET").toBool());
    EXPECT_EQ(property(gate, "DeviceList").toList(), QVariantList());
    EXPECT_EQ(property(gate, "Connector").value<connector::TDeviceConnector*>(), nullptr);
    EXPECT_EQ(property(gate, "RelayOpen").toInt(), 1);
    EXPECT_EQ(property(gate, "RelayClose").toInt(), 0);
    EXPECT_EQ(property(gate, "RelayOpenDoor").toInt(), 3);
    EXPECT_EQ(property(gate, "RelayCloseDoor").toInt(), 0);
    EXPECT_EQ(property(gate, "TimeDelayOpen").toInt(), 2);
    EXPECT_EQ(property(gate, "TimeOut").toInt(), 5);
    EXPECT_EQ(property(gate, "Server").toString(), "");
    EXPECT_EQ(property(gate, "Port").toInt(), 0);
    EXPECT_EQ(property(gate, "RemoutDevice").value<TConState>(), podNone);
    EXPECT_FALSE(property(gate, "OnLog").value<platform::TLogEvent>());
    EXPECT_FALSE(property(gate, "OnError").value<platform::TLogEvent>());
    EXPECT_FALSE(property(gate, "OnCheckStatus").value<TCheckStatusDevice>());
    EXPECT_FALSE(property(gate, "OnCheckSQL").value<TCheckSQLDevice>());
    EXPECT_FALSE(property(gate, "OnGetImg").value<TGetImg>());
    EXPECT_EQ(gate.StackItemsCount(), 0);
    EXPECT_EQ(gate.StackItem(0), nullptr);
    EXPECT_FALSE(gate.Designing());
}

TEST(Properties, KeepWhatIsWrittenEachItsOwn)
{
    TTurnStylerDeviceD24 gate;
    const QStringList numbers{"pingdelay",      "RelayOpen",     "RelayClose", "RelayOpenDoor",
                              "RelayCloseDoor", "TimeDelayOpen", "TimeOut",    "Port"};
    for (int i = 0; i < numbers.size(); ++i) {
        EXPECT_TRUE(gate.setProperty(numbers[i].toLatin1(), 100 + i));
    }
    for (int i = 0; i < numbers.size(); ++i) {
        EXPECT_EQ(property(gate, numbers[i].toLatin1()).toInt(), 100 + i) << numbers[i].toStdString();
    }
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
    QStringList called;
    const auto text = [&called](const char* name) {
        return QVariant::fromValue<platform::TLogEvent>(
            [&called, name](TComponent*, const QString&) { called << name; });
    };
    EXPECT_TRUE(gate.setProperty("OnLog", text("log")));
    EXPECT_TRUE(gate.setProperty("OnError", text("error")));
    EXPECT_TRUE(gate.setProperty("OnGetImg",
                                 QVariant::fromValue<TGetImg>([&called](auto&&...) { called << "img"; })));
    EXPECT_TRUE(gate.setProperty("OnCheckStatus", QVariant::fromValue<TCheckStatusDevice>(
                                                      [&called](auto&&...) { called << "status"; })));
    EXPECT_TRUE(gate.setProperty(
        "OnCheckSQL", QVariant::fromValue<TCheckSQLDevice>([&called](auto&&...) { called << "check"; })));
    gate.p_hw_ProtocolIn("$1:001TRQ7AB");
    EXPECT_EQ(called.join(u' '), "log img status status status check");
    called.clear();
    property(gate, "OnError").value<platform::TLogEvent>()(&gate, "x");
    property(gate, "OnLog").value<platform::TLogEvent>()(&gate, "x");
    EXPECT_EQ(called.join(u' '), "error log");
    EXPECT_TRUE(property(gate, "OnGetImg").value<TGetImg>());
    EXPECT_TRUE(property(gate, "OnCheckStatus").value<TCheckStatusDevice>());
    EXPECT_TRUE(property(gate, "OnCheckSQL").value<TCheckSQLDevice>());
}

TEST(Properties, AComponentWithoutHandlersWorks)
{
    TManualClock clock;
    TTurnStylerDeviceD24 gate;
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
    const QVariantList list = property(gate, "DeviceList").toList();
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(
        list[0].toMap(),
        QVariantMap({{"IP", "10.0.0.5"}, {"Device", "001G"}, {"DeviceType", "G"}, {"Pingtime", 46'027.25}}));
    EXPECT_EQ(list[1].toMap()["Device"], "002T");
}

TEST(Owner, FreesTheComponent)
{
    auto owner = std::make_unique<QObject>();
    const QPointer<TTurnStylerDeviceD24> gate = new TTurnStylerDeviceD24(owner.get());
    owner.reset();
    EXPECT_TRUE(gate.isNull());
}

class Designer : public TD24Test
{
protected:
    Designer()
    {
        gate.reset();
        const platform::TDesignScope designing;
        gate = std::make_unique<TTestGate>(trace);
        attachTexts();
        attachCheckSQL();
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

TEST_F(Designer, IsInheritedFromTheOwner)
{
    const auto* child = new TTestGate(trace, gate.get());
    EXPECT_TRUE(child->Designing());
}

} // namespace
