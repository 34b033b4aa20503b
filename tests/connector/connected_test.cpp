// Opening and closing the link.

#include "connector_fixture.h"

#include <stdexcept>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using platform::TComExceptionKind;

class Connected : public TConnectorTest
{
protected:
    Connected()
    {
        port->Close();
        port->OnOpening = [this] { trace.add("opening"); };
        port->OnClosing = [this] { trace.add("closing"); };
    }
};

TEST_F(Connected, AskingOpensAClosedPort)
{
    EXPECT_TRUE(bus->GetConnected());
    EXPECT_TRUE(port->Connected());
    trace.expect({"opening"});
    EXPECT_TRUE(bus->GetConnected());
    trace.expect({}); // it stays open
}

TEST_F(Connected, AnOpenPortIsNotOpenedAgain)
{
    port->Open();
    trace.take();
    port->OpenFailure = "no";
    EXPECT_TRUE(bus->GetConnected());
    trace.expect({});
}

TEST_F(Connected, OnlyTheSerialTypeHasALink)
{
    for (const auto type : {connector::podEmpty, connector::podNet}) {
        bus->SetConnectorType(type);
        EXPECT_FALSE(bus->GetConnected());
        bus->SetConnected(true);
        bus->SetConnected(false);
        EXPECT_FALSE(port->Connected());
    }
    trace.expect({});
}

TEST_F(Connected, OtherTypesAreNotConnectedEvenOnAnOpenPort)
{
    port->Open();
    trace.take();
    for (const auto type : {connector::podEmpty, connector::podNet}) {
        bus->SetConnectorType(type);
        EXPECT_FALSE(bus->GetConnected());
        bus->SetConnected(false); // nor is it closed
        EXPECT_TRUE(port->Connected());
    }
    trace.expect({});
}

TEST_F(Connected, NeedsAPort)
{
    bus->SetComport(nullptr);
    EXPECT_FALSE(bus->GetConnected());
    bus->SetConnected(true);
    bus->SetConnected(false);
    trace.expect({});
}

TEST_F(Connected, ANewConnectorIsNot)
{
    TDeviceConnector fresh;
    fresh.SetComport(port.get());
    EXPECT_FALSE(fresh.GetConnected());
    EXPECT_FALSE(port->Connected());
}

TEST_F(Connected, FailedOpeningIsReported)
{
    port->OpenFailure = "Порт занят";
    EXPECT_FALSE(bus->GetConnected());
    trace.expect({"opening", "error [03] Порт занят"});
    bus->SetConnected(true);
    trace.expect({"opening", "error [03] Порт занят"});
    port->OpenFailure.reset();
    EXPECT_TRUE(bus->GetConnected()); // tried anew each time
}

TEST_F(Connected, AnyExceptionOfOpeningIsReported)
{
    port->OnOpening = [] { throw std::runtime_error("plain"); };
    EXPECT_FALSE(bus->GetConnected());
    trace.expect({"error [03] plain"});
    port->OnOpening = [] { throw platform::EConvertError(QStringLiteral("converted")); };
    EXPECT_FALSE(bus->GetConnected());
    trace.expect({"error [03] converted"});
}

TEST_F(Connected, SilentAbortOfOpeningIsReported)
{
    port->OnOpening = [] { throw platform::EAbort(); };
    EXPECT_FALSE(bus->GetConnected());
    trace.expect({"error [03] Operation aborted"});
}

TEST_F(Connected, PortErrorInsideOpeningIsReportedTwice)
{
    port->OnOpening = [this] {
        port->raiseErrorInside(TComExceptionKind::Open, "cannot open", 5, "os");
        trace.add("not reached");
    };
    EXPECT_FALSE(bus->GetConnected());
    trace.expect({"error [08] cannot open", "error [03] Operation aborted"});
    EXPECT_FALSE(port->Connected());
}

TEST_F(Connected, PortErrorWithoutANumberInsideOpeningIsIgnored)
{
    port->OnOpening = [this] { port->raiseErrorInside(TComExceptionKind::Open, "cannot open", 0, "os"); };
    EXPECT_TRUE(bus->GetConnected());
    trace.expect({});
}

TEST_F(Connected, SetTrueOpens)
{
    bus->SetConnected(true);
    EXPECT_TRUE(port->Connected());
    trace.expect({"opening"});
    bus->SetConnected(true);
    trace.expect({});
}

TEST_F(Connected, SetFalseCloses)
{
    port->Open();
    trace.take();
    bus->SetConnected(false);
    EXPECT_FALSE(port->Connected());
    trace.expect({"closing"});
}

TEST_F(Connected, SetFalseClosesAClosedPortToo)
{
    bus->SetConnected(false);
    trace.expect({"closing"});
    port->CloseFailure = "not open";
    bus->SetConnected(false);
    trace.expect({"closing", "error [03] not open"});
}

TEST_F(Connected, FailedClosingIsReportedAndSwallowed)
{
    port->Open();
    trace.take();
    port->CloseFailure = "busy";
    bus->SetConnected(false);
    trace.expect({"closing", "error [03] busy"});
    EXPECT_TRUE(port->Connected()); // unchanged
}

TEST_F(Connected, PortErrorInsideClosingIsReportedTwice)
{
    port->Open();
    trace.take();
    port->OnClosing = [this] { port->raiseErrorInside(TComExceptionKind::Unknown, "stuck", -1, "os"); };
    bus->SetConnected(false);
    trace.expect({"error [08] stuck", "error [03] Operation aborted"});
    EXPECT_TRUE(port->Connected());
    port->OnClosing = {};
}

/// A port whose state does not follow what it is told.
class TLyingPort final : public platform::TComPort
{
public:
    bool Connected() const override { return Answer; }

    bool Answer = false;
    int Opened = 0;

protected:
    void doOpen() override { ++Opened; }
    void doClose() override {}
    void doWrite(const QByteArray&) override {}
};

TEST_F(Connected, AfterASuccessfulOpenTheStateIsNotAskedAgain)
{
    TLyingPort lying;
    bus->SetComport(&lying);
    EXPECT_TRUE(bus->GetConnected());
    EXPECT_EQ(lying.Opened, 1);
    EXPECT_TRUE(bus->GetConnected());
    EXPECT_EQ(lying.Opened, 2); // but each time anew before
    lying.Answer = true;
    EXPECT_TRUE(bus->GetConnected());
    EXPECT_EQ(lying.Opened, 2);
    bus->SetComport(nullptr);
}

TEST_F(Connected, ClosedByItsOwnerItIsOpenedByTheNextWrite)
{
    bus->SetConnected(true);
    port->Close();
    trace.take();
    bus->SendCommand("GO0.0.0.0:000A");
    trace.expect(QStringList("opening") + sent("$000AGO"));
}

TEST_F(Connected, ReceivingAloneDoesNotOpen)
{
    port->feed("$000APING\r");
    trace.expect({});
    EXPECT_FALSE(port->Connected());
}

} // namespace
