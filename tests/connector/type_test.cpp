// Any number may be written into the type of the connector: an unknown one acts as no link.

#include "connector_fixture.h"

#include "support/text_printers.h"

#include <limits>

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using connector::podComPort;
using connector::podEmpty;
using connector::TConnectorType;

/// Whether an enumeration holds every `int`; others hold no more than their enumerators' bits.
template <class Enum>
concept TakesAnyInteger = requires
{
    Enum{-1};
};

static_assert(TakesAnyInteger<TConnectorType>);

class UnknownType : public TConnectorTest, public ::testing::WithParamInterface<int>
{
protected:
    UnknownType()
    {
        port->Close();
        port->OnOpening = [] { ADD_FAILURE() << "the port was opened"; };
        port->OnClosing = [] { ADD_FAILURE() << "the port was closed"; };
        EXPECT_TRUE(bus->setProperty("ConnectorType", GetParam()));
    }
};

INSTANTIATE_TEST_SUITE_P(Numbers, UnknownType,
                         ::testing::Values(-1, 3, 4, 5, 7, 255, 256, 257, 65'537, -255,
                                           std::numeric_limits<int>::max(), std::numeric_limits<int>::min()));

TEST_P(UnknownType, IsKept)
{
    EXPECT_EQ(int(bus->ConnectorType()), GetParam());
    EXPECT_EQ(bus->property("ConnectorType").toInt(), GetParam());
}

TEST_P(UnknownType, IsNeverConnected)
{
    EXPECT_FALSE(bus->property("IsConnected").toBool());
    EXPECT_TRUE(bus->setProperty("IsConnected", true));
    EXPECT_TRUE(bus->setProperty("IsConnected", false));
    EXPECT_FALSE(port->Connected());
    trace.expect({});
}

TEST_P(UnknownType, DropsEveryWrite)
{
    giveDisplay("000A", 20);
    EXPECT_EQ(bus->SendCommand("GO0.0.0.0:000A"), secondPass("$000AGO"));
    bus->SendDirectCommand("0.0.0.0", "$000AX");
    trace.expect({});
    bus->SendCommand("SH0.0.0.0:000A|a|||||");
    trace.expect(linesSent("$000APSN1001          a         "));
    bus->ProcessDataToDevice("0.0.0.0", "$000APING");
    trace.expect(routedChecked("#0.0.0.0:000APING"));
}

TEST_P(UnknownType, HearsAnOpenPortAllTheSame)
{
    port->OnOpening = {};
    port->Open();
    inject("$000APING");
    inject("#000ABT");
    trace.expect(routedChecked("#0.0.0.0:000APING") + routedChecked("#0.0.0.0:000ABTPH"));
    EXPECT_FALSE(bus->GetConnected());
}

TEST_P(UnknownType, GivesWayToAKnownOne)
{
    port->OnOpening = {};
    EXPECT_TRUE(bus->setProperty("ConnectorType", int(podComPort)));
    bus->SendCommand("GO0.0.0.0:000A");
    trace.expect(sent("$000AGO"));
}

} // namespace
