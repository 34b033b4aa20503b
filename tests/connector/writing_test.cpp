// The one way a line leaves for the boards.

#include "connector_fixture.h"

#include <QVariant>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using platform::EComPort;

using Writing = TConnectorTest;

TEST_F(Writing, TheTextOfTheCallerIsTakenAtOnce)
{
    port->Close();
    QString line = "$000AHW";
    port->OnOpening = [&line] { line = "$000AXX"; };
    bus->SendDirectCommand("0.0.0.0", line);
    EXPECT_EQ(port->takeWritten(), "$000AHW29");
}

TEST_F(Writing, AppendsTheChecksumAndNothingElse)
{
    bus->SendDirectCommand("0.0.0.0", "$000AECHO");
    EXPECT_EQ(port->takeWrites(), QByteArrayList{QByteArray("$000AECHOB6")}); // one write, no carriage return
    trace.expect({"write $000AECHOB6", "log $000AECHOB6"});
}

TEST_F(Writing, LooksAtNeitherTheLinkNorTheLine)
{
    for (const QString line : {"", "x", "#000AX", "$", "no start", "$000AX\r", "  "}) {
        bus->SendDirectCommand("10.0.0.7", line);
        bus->SendDirectCommand("", line);
        trace.expect(sent(line) + sent(line));
    }
    EXPECT_EQ(bus->DeviceCount(), 0);
}

TEST_F(Writing, LogsAfterTheWrite)
{
    trace.once("log ", [this] { EXPECT_EQ(port->takeWritten(), "$000AX" + digitsOf("$000AX").toLatin1()); });
    bus->SendDirectCommand("0.0.0.0", "$000AX");
    EXPECT_EQ(port->takeWritten(), "");
}

TEST_F(Writing, WorksWithoutALog)
{
    bus->SetOnLog({});
    bus->SendDirectCommand("0.0.0.0", "$000AX");
    trace.expect({wroteChecked("$000AX")});
}

TEST_F(Writing, OpensTheClosedPort)
{
    port->Close();
    bus->SendDirectCommand("0.0.0.0", "$000AX");
    EXPECT_TRUE(port->Connected());
    trace.expect(sent("$000AX"));
}

TEST_F(Writing, IsDroppedSilentlyWithoutTransport)
{
    port->Close();
    for (const auto type : {connector::podEmpty, connector::podNet}) {
        bus->SetConnectorType(type);
        bus->SendDirectCommand("0.0.0.0", "$000AX");
    }
    bus->SetConnectorType(connector::podComPort);
    bus->SetComport(nullptr);
    bus->SendDirectCommand("0.0.0.0", "$000AX");
    trace.expect({});
    EXPECT_FALSE(port->Connected());
    port->Open();
    bus->SetComport(port.get());
    bus->SetConnectorType(connector::podNet);
    bus->SendDirectCommand("0.0.0.0", "$000AX"); // the port being open does not help
    trace.expect({});
    EXPECT_EQ(port->takeWritten(), "");
}

TEST_F(Writing, IsDroppedWhenThePortCannotBeOpened)
{
    port->Close();
    port->OpenFailure = "no";
    bus->SendDirectCommand("0.0.0.0", "$000AX");
    trace.expect({"error [03] no"});
    port->OpenFailure.reset();
    bus->SendDirectCommand("0.0.0.0", "$000AY");
    trace.expect(sent("$000AY")); // the first one is not kept
}

TEST_F(Writing, FailedWriteLeavesAndIsNotLogged)
{
    port->WriteFailure = "cable";
    try {
        bus->SendDirectCommand("0.0.0.0", "$000AX");
        FAIL();
    } catch (const EComPort& error) {
        EXPECT_EQ(error.message(), "cable");
    }
    EXPECT_THROW(bus->SendCommand("GO0.0.0.0:000A"), EComPort);
    trace.expect({});
    EXPECT_TRUE(port->Connected());
    port->WriteFailure.reset();
    bus->SendCommand("GO0.0.0.0:000A");
    trace.expect(sent("$000AGO"));
}

TEST_F(Writing, FailedAnswerToAPingEndsTheLine)
{
    port->WriteFailure = "cable";
    EXPECT_THROW(hear("$000APING"), EComPort);
    trace.expect({});
    port->feed("$000APING\r$000AX\r");
    trace.expect(QStringList("raised cable") + routed("$0.0.0.0:000AX"));
}

TEST_F(Writing, BytesAreThoseOfTheCodePage)
{
    bus->SendDirectCommand("0.0.0.0", "$000AПривет");
    const QByteArray bytes = "$000A\xcf\xf0\xe8\xe2\xe5\xf2";
    EXPECT_EQ(port->takeWritten(),
              bytes + QByteArray::number(crcBitByBit(bytes), 16).toUpper().rightJustified(2, '0'));
    trace.expect(sent("$000AПривет"));
}

TEST_F(Writing, CharactersOutsideTheCodePageAreCheckedAsTheyAreWritten)
{
    bus->SendDirectCommand("0.0.0.0", "$000A日");
    const QString digits = digitsOf("$000A?");
    EXPECT_EQ(port->takeWritten(), "$000A?" + digits.toLatin1());
    trace.expect({"write $000A?" + digits, "log $000A日" + digits}); // the host reads its own text
}

TEST_F(Writing, GetCommandHandsToTheConsumer)
{
    bus->GetCommand("anything at all");
    bus->GetCommand("");
    trace.expect(routed("anything at all") + routed(""));
    bus->SetOnGetData({});
    bus->GetCommand("x");
    trace.expect({});
}

/// A link of the host's own under the device components.
class TOwnLink : public TDeviceConnector
{
public:
    QStringList lines;
    bool connected = true;
    int asked = 0;

    void SendDirectCommand(const QString& IP, const QString& AMess) override
    {
        lines << IP + ' ' + AMess;
        TDeviceConnector::SendDirectCommand(IP, AMess);
    }
    bool GetConnected() override
    {
        ++asked;
        return connected;
    }
};

class OwnLink : public TConnectorTest
{
protected:
    OwnLink()
    {
        auto own = std::make_unique<TOwnLink>();
        link = own.get();
        bus = std::move(own);
        trace.attach(*bus);
    }

    TOwnLink* link;
};

TEST_F(OwnLink, CarriesEveryLineWithItsAddress)
{
    bus->SendCommand("GO10.0.0.7:000A");
    giveDisplay("000A", 3, "10.0.0.8");
    bus->SendCommand("SH10.0.0.8:000A|a||||LS|");
    hear("$000BPING");
    EXPECT_EQ(link->lines.join(u'\n'), "10.0.0.7 $000AGO\n"
                                       "10.0.0.8 $000ACS\n10.0.0.8 $000APSN1001 a \n10.0.0.8 $000BFL1\n"
                                       "10.0.0.8 $000BES\n"
                                       "10.0.0.7 $000BECHO\n10.0.0.7 $000BHW\n10.0.0.7 $000AHW");
    trace.expect(linesSent("$000BES") + routedChecked("#10.0.0.7:000BPING"));
}

TEST_F(OwnLink, TellsWhetherItIsConnected)
{
    bus->SetComport(port.get());
    bus->SetConnectorType(connector::podComPort);
    link->connected = false;
    EXPECT_FALSE(bus->property("IsConnected").toBool());
    bus->SendCommand("GO0.0.0.0:000A");
    trace.expect({});
    EXPECT_EQ(link->asked, 2);
    bus->SetConnected(true);
    EXPECT_EQ(link->asked, 3);
    link->connected = true;
    bus->SendCommand("GO0.0.0.0:000A");
    trace.expect(sent("$000AGO"));
    port->Close();
    link->asked = 0;
    EXPECT_THROW(bus->SendCommand("GO0.0.0.0:000A"), EComPort); // it said so
    EXPECT_EQ(link->asked, 1);
}

} // namespace
