// Commands of one line.

#include "connector_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class Command : public TConnectorTest
{
protected:
    void expectLine(const QString& command, const QString& line)
    {
        const ::testing::ScopedTrace where(__FILE__, __LINE__, command.toStdString());
        EXPECT_EQ(bus->SendCommand(command), secondPass(line));
        trace.expect(sent(line));
    }
    void expectNothing(const QString& command)
    {
        const ::testing::ScopedTrace where(__FILE__, __LINE__, command.toStdString());
        EXPECT_EQ(bus->SendCommand(command), "");
        trace.expect({});
    }
};

TEST_F(Command, EveryCode)
{
    expectLine("SD0.0.0.0:000A", "$000ASDG");
    expectLine("GO0.0.0.0:000A", "$000AGO");
    expectLine("RL0.0.0.0:000A2", "$000ARL200N");
    expectLine("PH0.0.0.0:000A", "$000APH");
    expectLine("AL0.0.0.0:000B", "$000BRL320N");
    expectLine("HW0.0.0.0:000A", "$000AHW");
}

TEST_F(Command, BytesOfEveryCode)
{
    bus->SendCommand("SD0.0.0.0:000A");
    bus->SendCommand("GO0.0.0.0:000A");
    bus->SendCommand("RL0.0.0.0:000A2");
    bus->SendCommand("PH0.0.0.0:000A");
    bus->SendCommand("AL0.0.0.0:000B");
    bus->SendCommand("HW0.0.0.0:000A");
    EXPECT_EQ(port->takeWrites(), QByteArrayList({"$000ASDGDB", "$000AGO4A", "$000ARL200N02", "$000APH1D",
                                                  "$000BRL320N1F", "$000AHW29"}));
}

TEST_F(Command, ResultIsTheChecksumOverLineAndChecksum)
{
    EXPECT_EQ(bus->SendCommand("SD0.0.0.0:000A"), "8B"); // on the line: DB
    EXPECT_EQ(bus->SendCommand("GO0.0.0.0:000A"), "5A");
    EXPECT_EQ(bus->SendCommand("RL0.0.0.0:000A2"), "CC");
    EXPECT_EQ(bus->SendCommand("PH0.0.0.0:000A"), "91");
    EXPECT_EQ(bus->SendCommand("AL0.0.0.0:000B"), "2A");
    EXPECT_EQ(bus->SendCommand("HW0.0.0.0:000A"), "39");
}

TEST_F(Command, ResultDoesNotDependOnTheWrite)
{
    port->Close();
    port->OpenFailure = "no";
    EXPECT_EQ(bus->SendCommand("GO0.0.0.0:000A"), "5A");
    trace.expect({"error [03] no"});
    for (const auto type : {connector::podEmpty, connector::podNet}) {
        bus->SetConnectorType(type);
        EXPECT_EQ(bus->SendCommand("RL0.0.0.0:000A2"), "CC");
    }
    bus->SetConnectorType(connector::podComPort);
    bus->SetComport(nullptr);
    EXPECT_EQ(bus->SendCommand("SD0.0.0.0:000A"), "8B");
    bus->SetOnLog({});
    EXPECT_EQ(bus->SendCommand("PH0.0.0.0:000A"), "91");
    trace.expect({});
}

TEST_F(Command, UnknownCodesDoNothing)
{
    port->Close();
    for (const char* command : {"XX0.0.0.0:000A", "go0.0.0.0:000A", "Go0.0.0.0:000A", "sh0.0.0.0:000A|a|", "",
                                "G", "S", " GO0.0.0.0:000A", "$000AGO", ":000A", "G:000A", "CS0.0.0.0:000A",
                                "BE0.0.0.0:000A", "HV0.0.0.0:000A"}) {
        expectNothing(command);
    }
    EXPECT_FALSE(port->Connected());
    EXPECT_EQ(bus->DeviceCount(), 0);
}

TEST_F(Command, MakesNoBoard)
{
    for (const char* code : {"SD", "GO", "RL", "PH", "AL", "HW"}) {
        bus->SendCommand(QString(code) + "0.0.0.0:000A1");
    }
    EXPECT_EQ(bus->DeviceCount(), 0);
}

TEST_F(Command, AddressIsFourCharactersBehindTheFirstColon)
{
    expectLine("GO10.20.30.40:012B", "$012BGO");
    expectLine("GO:012B", "$012BGO"); // no address of the link
    expectLine("GOhost:port:012B", "$portGO");
    expectLine("GO0.0.0.0:00:A", "$00:AGO");
    expectLine("GO0.0.0.0: 0 A", "$ 0 AGO");
    expectLine("GO0.0.0.0:жЖыЫ", "$жЖыЫGO");
}

TEST_F(Command, ArgumentsOfOthersAreLeftOut)
{
    for (const QString argument : {"7", "|a|b|c|d|L|", " ", ":999X"}) {
        expectLine("SD0.0.0.0:000A" + argument, "$000ASDG");
        expectLine("GO0.0.0.0:000A" + argument, "$000AGO");
        expectLine("PH0.0.0.0:000A" + argument, "$000APH");
        expectLine("AL0.0.0.0:000B" + argument, "$000BRL320N");
        expectLine("HW0.0.0.0:000A" + argument, "$000AHW");
    }
}

TEST_F(Command, RelayIsOneCharacterWhateverItIs)
{
    expectLine("RL0.0.0.0:000A25", "$000ARL200N");
    expectLine("RL0.0.0.0:000A ", "$000ARL 00N");
    expectLine("RL0.0.0.0:000Ax", "$000ARLx00N");
    expectLine("RL0.0.0.0:000A|2", "$000ARL|00N");
    expectLine("RL0.0.0.0:000A", "$000ARL00N"); // none
}

TEST_F(Command, ShortAddressesGiveEmptyPieces)
{
    expectLine("GO0.0.0.0:0", "$0GO");
    expectLine("GO0.0.0.0:", "$GO");
    expectLine("RL0.0.0.0:00A", "$00ARL00N");
    expectLine("AL:", "$RL320N");
}

TEST_F(Command, WithoutAColonTheAddressIsTheBeginningOfTheCommand)
{
    expectLine("GO000A", "$GO00GO");
    expectLine("GO", "$GOGO");
    expectLine("SD0", "$SD0SDG");
    expectLine("HW000A", "$HW00HW");
    expectLine("AL000A", "$AL00RL320N");
    expectLine("PH000A", "$PH00PH");
}

TEST_F(Command, RelayWithoutAColonStandsRightBehindTheAddress)
{
    expectLine("RL000A2", "$RL00RL000N");
    expectLine("RL12345678", "$RL12RL300N");
    expectLine("RL0002", "$RL00RL000N");
    expectLine("RL00", "$RL00RL00N"); // none
    expectLine("RL", "$RLRL00N");
}

TEST_F(Command, OpensThePort)
{
    port->Close();
    expectLine("GO0.0.0.0:000A", "$000AGO");
    EXPECT_TRUE(port->Connected());
}

TEST_F(Command, LinkAddressPlaysNoPartInTheLine)
{
    const QString first = bus->SendCommand("GO0.0.0.0:000A");
    EXPECT_EQ(bus->SendCommand("GO192.168.0.1:000A"), first);
    EXPECT_EQ(bus->SendCommand("GO:000A"), first);
}

} // namespace
