// Which port the connector sits on, and what it takes and gives back.

#include "connector_fixture.h"

#include <QPointer>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using platform::TComExceptionKind;

class Port : public TConnectorTest
{
protected:
    TMemoryPort second;
};

TEST_F(Port, AssigningItTouchesNoHardware)
{
    second.OpenFailure = "must not be opened";
    bus->SetComport(&second);
    EXPECT_EQ(bus->ComPort(), &second);
    EXPECT_FALSE(second.Connected());
    EXPECT_TRUE(port->Connected()); // the old one stays open
    trace.expect({});
}

TEST_F(Port, AnotherOneIsListenedToAndWrittenTo)
{
    second.Open();
    trace.attach(second);
    bus->SetComport(&second);
    inject("$000AX");
    inject("#000ABT");
    trace.expect({});
    second.feed("$000AX\r#000ABT\r");
    trace.expect(routed("$0.0.0.0:000AX") + routedChecked("#0.0.0.0:000ABTPH"));
    bus->SendCommand("GO0.0.0.0:000A");
    trace.expect(sent("$000AGO"));
    EXPECT_EQ(port->takeWritten(), "");
    EXPECT_EQ(second.takeWritten(), "$000AGO4A");
}

TEST_F(Port, ErrorEventGoesToTheNewOneAndLeavesTheOldOne)
{
    EXPECT_TRUE(port->OnException);
    bus->SetComport(&second);
    EXPECT_FALSE(port->OnException);
    EXPECT_TRUE(second.OnException);
    second.raiseError(TComExceptionKind::Resource, "gone", 5, "os");
    trace.expect({"error [08] gone"});
    bus->SetComport(nullptr);
    EXPECT_FALSE(second.OnException);
}

TEST_F(Port, ErrorEventIsTakenFromWhoeverHadIt)
{
    int others = 0;
    second.OnException = [&others](auto&&...) { ++others; };
    bus->SetComport(&second);
    second.raiseError(TComExceptionKind::Resource, "gone", 5, "os");
    trace.expect({"error [08] gone"});
    EXPECT_EQ(others, 0);
}

TEST_F(Port, TheSameAgainKeepsEverything)
{
    int others = 0;
    port->OnException = [&others](auto&&...) { ++others; };
    port->feed("$000");
    port->feed("#001");
    bus->SetComport(port.get());
    port->raiseError(TComExceptionKind::Resource, "gone", 5, "os");
    EXPECT_EQ(others, 1); // the event was not taken again
    port->feed("AX\r");
    trace.expect(routed("$0.0.0.0:000#001AX"));
    port->feed("#001");
    bus->SetComport(port.get());
    port->feed("ABT\r");
    trace.expect(routedChecked("#0.0.0.0:001ABTPH"));
    EXPECT_TRUE(port->Connected());
}

TEST_F(Port, AnotherOneForgetsTheUnfinishedLine)
{
    second.Open();
    port->feed("$000A#001B");
    bus->SetComport(&second);
    second.feed("GO\r");
    trace.expect({});
    bus->SetComport(port.get());
    inject("GO");
    trace.expect({});
    inject("#000AGO");
    trace.expect(routedChecked("#0.0.0.0:000ACROSS"));
}

TEST_F(Port, UnfinishedLineSurvivesClosingAndOpening)
{
    port->feed("$000A");
    bus->SetConnected(false);
    bus->SetConnected(true);
    port->feed("X\r");
    trace.expect(routed("$0.0.0.0:000AX"));
}

TEST_F(Port, NilIsNotListenedTo)
{
    bus->SetComport(nullptr);
    EXPECT_EQ(bus->ComPort(), nullptr);
    EXPECT_FALSE(port->OnException);
    inject("$000APING");
    trace.expect({});
    bus->SetComport(nullptr);
    EXPECT_FALSE(bus->GetConnected());
    bus->SetComport(port.get()); // and back again
    inject("$000AX");
    trace.expect(routed("$0.0.0.0:000AX"));
}

TEST_F(Port, OneThatIsDestroyedIsForgotten)
{
    port.reset();
    EXPECT_EQ(bus->ComPort(), nullptr);
    EXPECT_FALSE(bus->GetConnected());
    bus->SetConnected(true);
    bus->SetConnected(false);
    EXPECT_EQ(bus->SendCommand("GO0.0.0.0:000A"), secondPass("$000AGO"));
    bus->ProcessDataToDevice("0.0.0.0", "$000APING");
    trace.expect(routedChecked("#0.0.0.0:000APING"));
    second.Open();
    trace.attach(second);
    bus->SetComport(&second);
    second.feed("$000AX\r");
    trace.expect(routed("$0.0.0.0:000AX"));
}

TEST_F(Port, ANewOneAfterADestroyedOneIsNewEvenAtTheSameAddress)
{
    port.reset();
    EXPECT_FALSE(second.OnException);
    bus->SetComport(&second);
    EXPECT_TRUE(second.OnException);
}

TEST_F(Port, IsGivenBackAndNotFreedWhenTheConnectorGoes)
{
    const QPointer<TMemoryPort> alive(port.get());
    bus.reset();
    ASSERT_TRUE(alive);
    EXPECT_TRUE(port->Connected()); // nor closed
    EXPECT_FALSE(port->OnException);
    inject("$000APING");
    inject("#000ABT");
    port->raiseError(TComExceptionKind::Resource, "gone", 5, "os");
    trace.expect({});
}

TEST_F(Port, ConnectorOutlivesIt)
{
    port.reset();
    bus.reset();
    trace.expect({});
}

TEST_F(Port, SettingsBelongToTheHost)
{
    second.SetBaudRate(19'200);
    second.SetDataBits(7);
    second.SetParity(platform::TParity::Even);
    second.SetStopBits(platform::TStopBits::Two);
    bus->SetComport(&second);
    EXPECT_TRUE(bus->GetConnected());
    EXPECT_EQ(second.BaudRate(), 19'200);
    EXPECT_EQ(second.DataBits(), 7);
    EXPECT_EQ(second.Parity(), platform::TParity::Even);
    EXPECT_EQ(second.StopBits(), platform::TStopBits::Two);
}

TEST_F(Port, MayCarryTwoConnectors)
{
    TDeviceConnector other;
    QStringList lines;
    other.SetOnGetData([&](TComponent*, const QString& line) { lines << line; });
    other.SetComport(port.get());
    inject("$000AX");
    trace.expect(routed("$0.0.0.0:000AX"));
    EXPECT_EQ(lines, QStringList("$0.0.0.0:000AX"));
}

TEST_F(Port, CloseAllDoesNothing)
{
    bus->CloseAll();
    EXPECT_TRUE(port->Connected());
    EXPECT_EQ(bus->ComPort(), port.get());
    inject("$000AX");
    trace.expect(routed("$0.0.0.0:000AX"));
    bus->SetConnected(false);
    bus->CloseAll();
    EXPECT_FALSE(port->Connected());
}

} // namespace
