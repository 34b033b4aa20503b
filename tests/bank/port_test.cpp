// The port: linking, opening, closing, its settings.

#include "bank_bench.h"

#include "support/text_printers.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using platform::TParity;
using platform::TStopBits;

class Port : public TBankTest
{
protected:
    void spoilSettings()
    {
        port->SetBaudRate(19'200);
        port->SetDataBits(7);
        port->SetParity(TParity::Odd);
        port->SetStopBits(TStopBits::Two);
        port->SetReadGap(77);
    }

    void expectSettings(int baudRate, int dataBits, TParity parity, TStopBits stopBits, int readGap) const
    {
        EXPECT_EQ(port->BaudRate(), baudRate);
        EXPECT_EQ(port->DataBits(), dataBits);
        EXPECT_EQ(port->Parity(), parity);
        EXPECT_EQ(port->StopBits(), stopBits);
        EXPECT_EQ(port->ReadGap(), readGap);
    }
    void expectOwnSettings() const { expectSettings(9600, 8, TParity::None, TStopBits::One, 0); }
    void expectSpoilt() const { expectSettings(19'200, 7, TParity::Odd, TStopBits::Two, 77); }

    const QString kWaitingCard = QStringLiteral("error [8] Waiting card...");
};

TEST_F(Port, SettingsOfEveryVersion)
{
    for (const int type : {1, 2, 3}) {
        spoilSettings();
        pos->SetPosType(type);
        expectSpoilt();
        pos->SetUpComport();
        expectOwnSettings();
    }
    trace.expect({});
}

TEST_F(Port, WithoutAVersionTheSettingsOfTheHostStay)
{
    for (const int type : {0, 4, -1}) {
        spoilSettings();
        pos->SetPosType(type);
        pos->SetUpComport();
        expectSpoilt();
    }
}

TEST_F(Port, SetUpWithoutAPortDoesNothing)
{
    pos->SetComport(nullptr);
    for (const int type : {0, 1, 2, 3, 4}) {
        pos->SetPosType(type);
        pos->SetUpComport();
    }
    trace.expect({});
}

TEST_F(Port, SetUpKeepsWhatArrived)
{
    feed("\x02\x05");
    pos->SetUpComport();
    feed("\x03\x06");
    EXPECT_EQ(trace.take().first(), packet(kAskAmount));
}

TEST_F(Port, IsConnectedAsThePortSays)
{
    EXPECT_TRUE(pos->IsConnected());
    port->Close();
    EXPECT_FALSE(pos->IsConnected());
    port->Open();
    EXPECT_TRUE(pos->IsConnected());
    pos->SetComport(nullptr);
    EXPECT_FALSE(pos->IsConnected());
}

TEST_F(Port, OpeningSetsUpOpensAndTellsTheErrorHandler)
{
    port->Close();
    spoilSettings();
    bool settled = false;
    port->OnOpening = [&] { settled = port->BaudRate() == 9600 && port->ReadGap() == 0; };
    EXPECT_TRUE(pos->SetConnection(true));
    EXPECT_TRUE(settled) << "before it is opened";
    EXPECT_TRUE(port->Connected());
    expectOwnSettings();
    trace.expect({kWaitingCard});
}

TEST_F(Port, OpeningAnOpenPortTellsItAgain)
{
    EXPECT_TRUE(pos->SetConnection(true));
    trace.expect({kWaitingCard});
}

TEST_F(Port, WaitingForTheCardNeedsBothHandlers)
{
    pos->SetOnLog({});
    EXPECT_TRUE(pos->SetConnection(true));
    trace.expect({});
    trace.attach(*pos);
    pos->SetOnError({});
    EXPECT_TRUE(pos->SetConnection(true));
    trace.expect({});
}

TEST_F(Port, ClosingSaysNothing)
{
    spoilSettings();
    EXPECT_TRUE(pos->SetConnection(false));
    EXPECT_FALSE(port->Connected());
    EXPECT_TRUE(pos->SetConnection(false));
    expectSpoilt();
    trace.expect({});
}

TEST_F(Port, FailedOpeningIsReportedInItsOwnWords)
{
    port->Close();
    port->OpenFailure = QStringLiteral("COM7: busy");
    EXPECT_FALSE(pos->SetConnection(true));
    trace.expect({"error COM7: busy"});
    pos->SetOnError({});
    EXPECT_FALSE(pos->SetConnection(true));
    trace.expect({});
}

TEST_F(Port, FailedClosingIsReportedToo)
{
    port->CloseFailure = QStringLiteral("COM7: stuck");
    EXPECT_FALSE(pos->SetConnection(false));
    trace.expect({"error COM7: stuck"});
}

TEST_F(Port, WithoutAPortConnectionIsReported)
{
    pos->SetComport(nullptr);
    EXPECT_FALSE(pos->SetConnection(true));
    trace.expect({"error [1] Com port not found!"});
    EXPECT_FALSE(pos->SetConnection(false));
    trace.expect({"error [1] Com port not found!"});
    pos->SetOnError({});
    EXPECT_FALSE(pos->SetConnection(true));
    trace.expect({});
}

TEST_F(Port, WithoutAVersionItOpensAllTheSame)
{
    port->Close();
    spoilSettings();
    pos->SetPosType(0);
    EXPECT_TRUE(pos->SetConnection(true));
    EXPECT_TRUE(port->Connected());
    expectSpoilt();
    trace.expect({kWaitingCard});
}

TEST_F(Port, AssigningAPortBindsItAndNothingElse)
{
    TMemoryPort other;
    trace.attach(other);
    pos->SetComport(&other);
    EXPECT_EQ(pos->ComPort(), &other);
    EXPECT_FALSE(other.Connected());
    EXPECT_TRUE(port->Connected());
    feed(kAskAmount);
    trace.expect({});
    other.feed(kFinish);
    trace.expect({packet(kFinish), bare("FINISH")});
    pos->SetComport(nullptr);
    other.feed(kFinish);
    trace.expect({});
}

TEST_F(Port, AssigningTheSamePortBeginsThePacketAnew)
{
    feed("\x02\x05");
    pos->SetComport(port.get());
    feed("\x03\x06");
    trace.expect({});
}

TEST_F(Port, ClosingAndOpeningKeepsWhatArrived)
{
    feed("\x02\x04\x03");
    port->Close();
    port->Open();
    feed("\x07");
    trace.expect({packet(kFinish), bare("FINISH")});
}

TEST_F(Port, MayBeDestroyedFirst)
{
    sendAmount();
    port.reset();
    EXPECT_EQ(pos->ComPort(), nullptr);
    EXPECT_FALSE(pos->IsConnected());
    pos->SetUpComport();
    clock.advance(4'000'000);
    trace.expect({});
    EXPECT_FALSE(pos->SetConnection(true));
    trace.expect({"error [1] Com port not found!"});
    pos.reset();
}

TEST_F(Port, MayGoWhileItIsOpened)
{
    port->Close();
    port->OnOpening = [&] { port.reset(); };
    pos->SetConnection(true);
    EXPECT_FALSE(pos->IsConnected());
}

TEST_F(Port, IsNotOwned)
{
    pos.reset();
    EXPECT_TRUE(port->Connected());
    feed(kAskAmount);
    trace.expect({});
}

} // namespace
