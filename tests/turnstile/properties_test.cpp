#include "event_recorder.h"

#include "support/text_printers.h"

#include <QMetaEnum>
#include <QMetaProperty>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using namespace tnv5::turnstile;

QVariant property(const QObject& object, const char* name)
{
    const QVariant value = object.property(name);
    EXPECT_TRUE(value.isValid()) << name;
    return value;
}

TEST(Properties, ArePublishedInTheirOrder)
{
    const QMetaObject& meta = TTurnStylerDevice::staticMetaObject;
    QStringList names;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        names << meta.property(i).name();
        EXPECT_TRUE(meta.property(i).isReadable()) << meta.property(i).name();
        EXPECT_TRUE(meta.property(i).isWritable()) << meta.property(i).name();
    }
    EXPECT_EQ(names.join(u' '), "DeviceList ComPort RelayOpen RelayClose RelayOpenDoor RelayCloseDoor "
                                "TimeDelayOpen TimeOut DoorIndex Server Port RemoutDevice OnLog OnError "
                                "OnCheckStatus OnCheckSQL OnGetImg");
}

TEST(Properties, HaveTheirTypes)
{
    const QMetaObject& meta = TTurnStylerDevice::staticMetaObject;
    const auto typeOf = [&](const char* name) {
        return meta.property(meta.indexOfProperty(name)).metaType();
    };
    EXPECT_EQ(typeOf("DeviceList"), QMetaType::fromType<QStringList>());
    EXPECT_EQ(typeOf("ComPort"), QMetaType::fromType<platform::TComPort*>());
    for (const char* name :
         {"RelayOpen", "RelayClose", "RelayOpenDoor", "RelayCloseDoor", "TimeDelayOpen", "TimeOut", "Port"}) {
        EXPECT_EQ(typeOf(name), QMetaType::fromType<int>()) << name;
    }
    EXPECT_EQ(typeOf("DoorIndex"), QMetaType::fromType<QString>());
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
    const TTurnStylerDevice gate;
    EXPECT_EQ(property(gate, "DeviceList").toStringList(), QStringList());
    EXPECT_EQ(property(gate, "ComPort").value<platform::TComPort*>(), nullptr);
    EXPECT_EQ(property(gate, "RelayOpen").toInt(), 1);
    EXPECT_EQ(property(gate, "RelayClose").toInt(), 0);
    EXPECT_EQ(property(gate, "RelayOpenDoor").toInt(), 3);
    EXPECT_EQ(property(gate, "RelayCloseDoor").toInt(), 0);
    EXPECT_EQ(property(gate, "TimeDelayOpen").toInt(), 2);
    EXPECT_EQ(property(gate, "TimeOut").toInt(), 5);
    EXPECT_EQ(property(gate, "DoorIndex").toString(), "D");
    EXPECT_EQ(property(gate, "Server").toString(), "");
    EXPECT_EQ(property(gate, "Port").toInt(), 0);
    EXPECT_EQ(property(gate, "RemoutDevice").value<TConState>(), podNone);
    EXPECT_FALSE(property(gate, "OnLog").value<platform::TLogEvent>());
    EXPECT_FALSE(property(gate, "OnError").value<platform::TLogEvent>());
    EXPECT_FALSE(property(gate, "OnCheckStatus").value<TCheckStatusDevice>());
    EXPECT_FALSE(property(gate, "OnCheckSQL").value<TCheckSQLDevice>());
    EXPECT_FALSE(property(gate, "OnGetImg").value<TGetImg>());
    EXPECT_EQ(gate.StackItemsCount(), 0);
    EXPECT_FALSE(gate.Designing());
}

TEST(Properties, KeepWhatIsWrittenEachItsOwn)
{
    TTurnStylerDevice gate;
    const QStringList numbers{"RelayOpen",     "RelayClose", "RelayOpenDoor", "RelayCloseDoor",
                              "TimeDelayOpen", "TimeOut",    "Port"};
    for (int i = 0; i < numbers.size(); ++i) {
        EXPECT_TRUE(gate.setProperty(numbers[i].toLatin1(), 100 + i));
    }
    for (int i = 0; i < numbers.size(); ++i) {
        EXPECT_EQ(property(gate, numbers[i].toLatin1()).toInt(), 100 + i) << numbers[i].toStdString();
    }
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
    port.feed("$01AR1\r");
    EXPECT_EQ(called.join(u' '), "log error img status status status check");

    called.clear();
    property(gate, "OnError").value<platform::TLogEvent>()(&gate, "x");
    property(gate, "OnLog").value<platform::TLogEvent>()(&gate, "x");
    EXPECT_EQ(called.join(u' '), "error log");
    EXPECT_TRUE(property(gate, "OnGetImg").value<TGetImg>());
    EXPECT_TRUE(property(gate, "OnCheckStatus").value<TCheckStatusDevice>());
    EXPECT_TRUE(property(gate, "OnCheckSQL").value<TCheckSQLDevice>());
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

class Port : public TGateTest
{
};

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
    trace.expect({wrote("$0009001D"), sent("$000900")});
}

TEST_F(Port, MayServeTwoComponents)
{
    TTestGate other;
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

class Designer : public TGateTest
{
protected:
    Designer()
    {
        const platform::TDesignScope designing;
        gate = std::make_unique<TTestGate>();
        trace.attach(*gate);
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

TEST_F(Designer, IsInheritedFromTheOwner)
{
    const auto* child = new TTestGate(gate.get());
    EXPECT_TRUE(child->Designing());
    EXPECT_FALSE(TTestGate(port.get()).Designing());
}

TEST(Owner, FreesTheComponent)
{
    auto owner = std::make_unique<QObject>();
    const QPointer<TTurnStylerDevice> gate = new TTurnStylerDevice(owner.get());
    owner.reset();
    EXPECT_TRUE(gate.isNull());
}

TEST(Owner, ComponentWithoutPortDoesNothing)
{
    TManualClock clock;
    QStringList lines;
    TTurnStylerDevice gate;
    gate.SetOnLog([&](TComponent*, const QString& line) { lines << line; });
    clock.advance(60'000);
    EXPECT_TRUE(lines.isEmpty());
    EXPECT_FALSE(gate.Connected());
}

} // namespace
