// The port: linking, opening, closing, its settings.

#include "bank_fixture.h"
#include "support/port_settings.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using Port = TBankTest;

constexpr TPortSettings kOwn{9600, 8, platform::TParity::None, platform::TStopBits::One, 0};
const QString kWaitingCard = QStringLiteral("error [8] Waiting card...");

TEST_F(Port, SettingsOfEveryVersion)
{
    for (const int type : {1, 2, 3}) {
        spoilSettings(*port);
        pos->SetPosType(type);
        EXPECT_EQ(settingsOf(*port), kSpoilt);
        pos->SetUpComport();
        EXPECT_EQ(settingsOf(*port), kOwn);
    }
    trace.expect({});
}

TEST_F(Port, WithoutAVersionTheSettingsOfTheHostStay)
{
    for (const int type : {0, 4, -1}) {
        spoilSettings(*port);
        pos->SetPosType(type);
        pos->SetUpComport();
        EXPECT_EQ(settingsOf(*port), kSpoilt);
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
    EXPECT_FALSE(TBankPos().IsConnected());
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
    spoilSettings(*port);
    bool settled = false;
    port->OnOpening = [&] { settled = settingsOf(*port) == kOwn; };
    EXPECT_TRUE(pos->SetConnection(true));
    EXPECT_TRUE(settled) << "before it is opened";
    EXPECT_TRUE(port->Connected());
    EXPECT_EQ(settingsOf(*port), kOwn);
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
    attach();
    pos->SetOnError({});
    EXPECT_TRUE(pos->SetConnection(true));
    trace.expect({});
}

TEST_F(Port, ClosingSaysNothing)
{
    spoilSettings(*port);
    EXPECT_TRUE(pos->SetConnection(false));
    EXPECT_FALSE(port->Connected());
    EXPECT_TRUE(pos->SetConnection(false));
    EXPECT_EQ(settingsOf(*port), kSpoilt);
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
    spoilSettings(*port);
    pos->SetPosType(0);
    EXPECT_TRUE(pos->SetConnection(true));
    EXPECT_TRUE(port->Connected());
    EXPECT_EQ(settingsOf(*port), kSpoilt);
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

TEST_F(Port, MayGoWhileItIsSetUp)
{
    int settings = 0;
    port->OnSettings = [&] {
        ++settings;
        port.reset();
    };
    pos->SetConnection(true);
    EXPECT_EQ(settings, 1);
    EXPECT_FALSE(pos->IsConnected());
}

TEST_F(Port, ATerminalMayGoWhileItsPortIsSetUp)
{
    port->OnSettings = [&] { pos.reset(); };
    EXPECT_FALSE(pos->SetConnection(true));
    trace.expect({});
}

TEST_F(Port, IsNotOwned)
{
    pos.reset();
    EXPECT_TRUE(port->Connected());
    feed(kAskAmount);
    trace.expect({});
}

} // namespace
