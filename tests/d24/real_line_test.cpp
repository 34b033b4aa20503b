// The component on a real connector on a port in memory: bytes in, bytes out.

#include "d24_fixture.h"
#include "tnv5/common/crc8.h"
#include "tnv5/testing/wire.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

/// A board line with its checksum, as it is written.
QByteArray board(const QString& line)
{
    return platform::toWire(line + common::Crc8Digits(line));
}

const QString kReal = QStringLiteral("0.0.0.0!001T!T");

class RealLine : public TTestOn<TPortFixture>
{
protected:
    RealLine()
    {
        trace.Separator = u'!';
        line.SetConnectorType(connector::podComPort);
        line.SetComport(port.get());
        gate.SetConnector(&line);
        trace.attach(gate);
        gate.SetOnCheckSQL(host.handler(trace, gate));
        host.ByMode = {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {5, 1}};
    }

    QStringList take(const QString& word) { return trace.take().filter(word); }

    tnv5::testkit::TWire wire{*port};
    TAnswers host;
    connector::TDeviceConnector line;
    d24::TTurnStylerDeviceD24 gate;
};

TEST_F(RealLine, ACardOpensAndThePassageEnds)
{
    wire.inject("$001TRQ1234AB\r");
    wire.expect(board("$001TGO"));
    wire.inject("$001TPR1234AB\r");
    clock.advance(10);
    wire.inject("$001TGR1234AB\r");
    clock.advance(20);
    wire.expectNothing();
    EXPECT_EQ(gate.StackItemsCount(), 0);
    QStringList lines = trace.take();
    EXPECT_EQ(lines.filter("error"), QStringList());
    lines = lines.filter("status");
    lines.removeAll(stack(kReal, "1234", "OPEN"));
    EXPECT_EQ(lines, QStringList({looked(kReal, "1234", "NEW"), come(kReal, "1234", "NEW"),
                                  stack(kReal, "1234", "NEW"), come(kReal, "1234", "PROGRESSSTART"),
                                  stack(kReal, "1234", "PROGRESSSTART"), come(kReal, "1234", "FINISH"),
                                  stack(kReal, "1234", "FINISH")}));
}

TEST_F(RealLine, ARefusalIsShownOnADisplayThatIsKnown)
{
    host.ByMode[0] = 0;
    host.Message = "|Нет||||L|";
    wire.inject("$001TRQ1234AB\r"); // width not known yet
    wire.expect(board("$001TPH"));
    clock.advance(20);
    wire.inject("#001THWGX=A008x2/GR=NN/\r");
    wire.inject("$001TRQ1234AB\r");
    wire.expect(board("$001TCS"));
    wire.expect(board("$001TPSN1001   Нет  "));
    wire.expect(board("$001BFL1"));
    wire.expect(board("$001TPH"));
    wire.expectNothing();
}

TEST_F(RealLine, APingIsAnsweredAndNoted)
{
    wire.inject("$001APING\r");
    EXPECT_EQ(take("status").value(0), noted("0.0.0.0!001A!T", "PING"));
    ASSERT_EQ(gate.DeviceList().size(), 1);
    EXPECT_EQ(gate.DeviceList().at(0)->Device, "001A");
    wire.expect(board("$001AECHO"));
    wire.expect(board("$001AHW"));
    wire.expect(board("$001BHW"));
    wire.expectNothing();
}

TEST_F(RealLine, ACrossingSoundsTheAlarm)
{
    gate.SetCheckCross(true);
    wire.inject("#001TGO\r");
    wire.expect(board("$001TRL320N"));
    EXPECT_EQ(take("status").value(0), noted(kReal, "CROSS"));
}

TEST_F(RealLine, TheExitButtonMakesAPass)
{
    wire.inject("#001TBT1\r");
    wire.expectNothing();
    ASSERT_EQ(gate.StackItemsCount(), 1);
    EXPECT_EQ(gate.StackItem(0)->CardNumber, kButtonCard);
}

TEST_F(RealLine, ATurnstileIsNeverConfirmedAndItsCommandRepeated)
{
    gate.SetCheckET(true);
    wire.inject("$001TRQ1234AB\r");
    wire.expect(board("$001TGO"));
    const d24::PRFidInfo pass = gate.StackItem(0);
    ASSERT_TRUE(pass);
    EXPECT_EQ(pass->CRC.toLatin1(), common::Crc8Digits(platform::fromWire(board("$001TGO"))).toLatin1());
    wire.inject("#001TETAB\r");
    EXPECT_EQ(pass->Command, "GO0.0.0.0:001T");
    EXPECT_FALSE(pass->Finish);
    clock.advance(1'990);
    wire.expectNothing();
    clock.advance(30);
    wire.expect(board("$001TGO"));
    wire.expect(board("$001TGO"));
    wire.expect(board("$001TGO"));
    wire.expectNothing();
    wire.inject("$001TGR1234AB\r"); // until the pass is over
    clock.advance(10);
    wire.expect(board("$001TGO"));
    clock.advance(5'000);
    wire.expectNothing();
    EXPECT_EQ(gate.StackItemsCount(), 0);
}

TEST_F(RealLine, ADisplayHasAnEmptyCommandThatIsConfirmed)
{
    gate.SetCheckET(true);
    wire.inject("$003IRQ1234AB\r");
    const d24::PRFidInfo pass = gate.StackItem(0);
    ASSERT_TRUE(pass);
    EXPECT_EQ(pass->CRC, "");
    EXPECT_FALSE(pass->Finish);
    wire.inject("#003IETAB\r");
    EXPECT_TRUE(pass->Finish);
    wire.expectNothing();
}

TEST_F(RealLine, TheFirstCommandOpensThePort)
{
    port->Close();
    gate.p_hw_ProtocolIn("$0.0.0.0:001TRQ1234AB");
    EXPECT_TRUE(port->Connected());
    wire.expect(board("$001TGO"));
}

TEST_F(RealLine, APortThatCannotBeOpenedIsReported)
{
    port->Close();
    port->OpenFailure = "busy";
    gate.p_hw_ProtocolIn("$0.0.0.0:001TRQ1234AB");
    EXPECT_EQ(take("error"), QStringList(kPortClosed));
    EXPECT_EQ(gate.StackItem(0)->Status, "OPEN");
}

TEST_F(RealLine, AWriteThatFailsIsReported)
{
    port->WriteFailure = "unplugged";
    wire.inject("$001TRQ1234AB\r");
    EXPECT_EQ(take("error"), QStringList("error [04] unplugged"));
    clock.advance(8'020);
    host.ByMode[0] = 0;
    wire.inject("$002TRQ1234AB\r");
    EXPECT_EQ(take("error"), QStringList("error [044] unplugged"));
}

TEST_F(RealLine, ALineInAnyCutIsTheSame)
{
    port->feedInPieces("$001TRQ1234AB\r#002TDC00\r", 1);
    wire.expect(board("$001TGO"));
    EXPECT_EQ(take("COME"), QStringList(come(kReal, "1234", "NEW")));
}

} // namespace
