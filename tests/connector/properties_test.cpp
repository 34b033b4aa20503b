#include "connector_fixture.h"
#include "support/published_suite.h"

#include <QMetaEnum>
#include <QPointer>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using namespace tnv5::connector;

struct TPublishedConnector
{
    using Component = TDeviceConnector;

    static TPublishedTable table()
    {
        return {
            {"ComPort", static_cast<platform::TComPort*>(nullptr)},
            {"ConnectorType", podEmpty},
            {"OnError", platform::TLogEvent()},
            {"OnLog", platform::TLogEvent()},
            {"OnGetData", platform::TLogEvent()},
            {"IsConnected", false},
        };
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Connector, Published, TPublishedConnector);

TEST(Properties, TypesHaveTheirNumbersAndNames)
{
    EXPECT_EQ(int(podEmpty), 0);
    EXPECT_EQ(int(podComPort), 1);
    EXPECT_EQ(int(podNet), 2);
    const QMetaEnum names = QMetaEnum::fromType<TConnectorType>();
    EXPECT_EQ(names.keyCount(), 3);
    EXPECT_EQ(names.keyToValue("podEmpty"), 0);
    EXPECT_EQ(names.keyToValue("podComPort"), 1);
    EXPECT_EQ(names.keyToValue("podNet"), 2);
}

TEST(Properties, KeepWhatIsWritten)
{
    TMemoryPort port;
    TDeviceConnector bus;
    EXPECT_TRUE(bus.setProperty("ComPort", QVariant::fromValue<platform::TComPort*>(&port)));
    EXPECT_EQ(bus.ComPort(), &port);
    for (const TConnectorType type : {podNet, podComPort, podEmpty}) {
        EXPECT_TRUE(bus.setProperty("ConnectorType", QVariant::fromValue(type)));
        EXPECT_EQ(bus.ConnectorType(), type);
        EXPECT_EQ(bus.property("ConnectorType").value<TConnectorType>(), type);
    }
    EXPECT_TRUE(bus.setProperty("ConnectorType", 2)); // as a script sets it
    EXPECT_EQ(bus.ConnectorType(), podNet);
    EXPECT_FALSE(port.Connected()); // nothing of this opens the port
}

TEST(Properties, IsConnectedOpensAndCloses)
{
    TMemoryPort port;
    TDeviceConnector bus;
    bus.SetComport(&port);
    bus.SetConnectorType(podComPort);
    EXPECT_FALSE(port.Connected());
    EXPECT_TRUE(bus.property("IsConnected").toBool());
    EXPECT_TRUE(port.Connected());
    EXPECT_TRUE(bus.setProperty("IsConnected", false));
    EXPECT_FALSE(port.Connected());
    EXPECT_TRUE(bus.setProperty("IsConnected", true));
    EXPECT_TRUE(port.Connected());
}

TEST(Properties, EventsCanBeWrittenAndRead)
{
    TMemoryPort port;
    TDeviceConnector bus;
    bus.SetComport(&port);
    bus.SetConnectorType(podComPort);
    QStringList called;
    for (const char* name : {"OnError", "OnLog", "OnGetData"}) {
        EXPECT_TRUE(
            bus.setProperty(name, QVariant::fromValue<platform::TLogEvent>(
                                      [&called, name](TComponent*, const QString&) { called << name; })));
        EXPECT_TRUE(bus.property(name).value<platform::TLogEvent>()) << name;
    }
    bus.SendCommand("GO0.0.0.0:000A");
    bus.GetCommand("x");
    port.Close();
    port.OpenFailure = "no";
    bus.GetConnected();
    EXPECT_EQ(called.join(u' '), "OnLog OnGetData OnError");
    bus.OnLog()(&bus, "read back");
    EXPECT_EQ(called.size(), 4);
}

TEST(Properties, WorkWithoutAnyHandler)
{
    TMemoryPort port;
    TDeviceConnector bus;
    EXPECT_EQ(bus.DeviceCount(), 0);
    EXPECT_EQ(bus.DeviceItem(0), nullptr);
    bus.SetComport(&port);
    bus.SetConnectorType(podComPort);
    bus.ProcessDataToDevice("0.0.0.0", "$000APING");
    bus.ProcessDataToDevice("0.0.0.0", "#000AHWGX=G9x1/GR=N/");
    bus.SendCommand("SH0.0.0.0:000A|a||||L|");
    EXPECT_EQ(port.takeWrites().size(), 3 + 3);
    port.raiseError(platform::TComExceptionKind::Unknown, "x", 5, "y");
    port.CloseFailure = "no";
    bus.SetConnected(false);
    port.CloseFailure.reset();
    port.Close();
    port.OpenFailure = "no";
    EXPECT_FALSE(bus.GetConnected());
    bus.GetCommand("x");
}

class Designer : public TConnectorTest
{
protected:
    Designer()
    {
        bus.reset();
        const platform::TDesignScope designing;
        bus = std::make_unique<TDeviceConnector>();
        trace.attach(*bus);
    }
};

TEST_F(Designer, CreatesNoParts)
{
    EXPECT_TRUE(bus->Designing());
    EXPECT_TRUE(bus->children().isEmpty());
    EXPECT_EQ(bus->ConnectorType(), podEmpty);
    EXPECT_EQ(bus->ComPort(), nullptr);
    EXPECT_EQ(bus->DeviceCount(), 0);
}

TEST_F(Designer, KeepsThePortWithoutListening)
{
    int errors = 0;
    port->OnException = [&errors](auto&&...) { ++errors; };
    bus->SetComport(port.get());
    EXPECT_EQ(bus->ComPort(), port.get());
    inject("$000APING");
    inject("#000ABT");
    trace.expect({});
    EXPECT_EQ(bus->DeviceCount(), 0);
    port->raiseError(platform::TComExceptionKind::Unknown, "x", 5, "y");
    EXPECT_EQ(errors, 1); // the port's error event stays whose it was
    TMemoryPort second;
    bus->SetComport(&second);
    EXPECT_EQ(bus->ComPort(), &second);
    EXPECT_FALSE(second.OnException);
    EXPECT_TRUE(port->OnException);
    bus->SetComport(nullptr);
    EXPECT_EQ(bus->ComPort(), nullptr);
}

TEST_F(Designer, GoesWithoutTouchingThePort)
{
    port->OnException = [](auto&&...) {};
    bus->SetComport(port.get());
    bus.reset();
    EXPECT_TRUE(port->OnException);
    EXPECT_TRUE(port->Connected());
}

TEST_F(Designer, KeepsEveryProperty)
{
    bus->SetConnectorType(podNet);
    EXPECT_EQ(bus->ConnectorType(), podNet);
    EXPECT_TRUE(bus->OnLog());
    EXPECT_TRUE(bus->OnError());
    EXPECT_TRUE(bus->OnGetData());
}

TEST(Owner, FreesTheConnector)
{
    TMemoryPort port;
    auto owner = std::make_unique<QObject>();
    const QPointer<TDeviceConnector> bus = new TDeviceConnector(owner.get());
    bus->SetComport(&port);
    EXPECT_EQ(bus->parent(), owner.get());
    owner.reset();
    EXPECT_TRUE(bus.isNull());
    EXPECT_FALSE(port.OnException);
}

} // namespace
