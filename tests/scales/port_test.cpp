// The port: settings, opening and closing, attaching, and a port that goes away.

#include "support/port_settings.h"
#include "wire_samples.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using platform::TParity;
using platform::TStopBits;

using Port = TScalesTest;

TEST_F(Port, SettingsOfEveryFamily)
{
    constexpr auto one = TStopBits::One;
    const std::vector<TPortSettings> expected = {
        {4800, 8, TParity::Even, one, 10},             // 1
        {9600, 8, TParity::None, one, 10},             // 2
        {4800, 8, TParity::Even, one, 10},             // 3
        {19'200, 7, TParity::Odd, TStopBits::Two, 10}, // 4: those of the host
        {9600, 8, TParity::None, one, 0},              // 5
        {9600, 8, TParity::None, one, 0},              // 6
        {9600, 8, TParity::None, one, 0},              // 7
        {9600, 8, TParity::None, one, 0},              // 8
    };
    ASSERT_EQ(expected.size(), samples().size());
    for (const TSample& sample : samples()) {
        spoilSettings(*port);
        scales->SetScalesType(sample.type);
        EXPECT_EQ(settingsOf(*port), kSpoilt) << "the type alone changes nothing " << sample.type;
        scales->SetUpComport();
        EXPECT_EQ(settingsOf(*port), expected[size_t(sample.type - 1)]) << sample.type;
    }
    trace.expect({});
}

TEST_F(Port, NoFamilyKeepsTheSettingsOfTheHost)
{
    for (const int type : noFamilies()) {
        spoilSettings(*port);
        scales->SetScalesType(type);
        scales->SetUpComport();
        EXPECT_EQ(settingsOf(*port), kSpoilt) << type;
    }
}

TEST_F(Port, SetUpWithoutAPortDoesNothing)
{
    scales->SetComport(nullptr);
    for (int type = -1; type <= int(samples().size()) + 1; ++type) {
        scales->SetScalesType(type);
        scales->SetUpComport();
    }
    trace.expect({});
}

TEST_F(Port, SetUpBeginsThePacketAnew)
{
    use(3);
    feed("0051000000");
    scales->SetUpComport();
    trace.take();
    feed("00000000");
    trace.expect({kStart, kStop});
    feed("0000000000");
    trace.expect({kStop, got("000000000000000000"), "log Ask  000000000000000000", "log 000000", "log 0"});
}

TEST_F(Port, ChoosingAFamilyKeepsWhatArrived)
{
    use(3);
    feed("0052100000");
    scales->SetScalesType(4);
    trace.take();
    feed("0000000");
    trace.expect({kStop, got("00521000000000000"), "log 012500", "log 12500"});
}

TEST_F(Port, IsConnectedAsThePortSays)
{
    EXPECT_FALSE(TScalesDevice().IsConnected());
    EXPECT_TRUE(scales->IsConnected());
    port->Close();
    EXPECT_FALSE(scales->IsConnected());
    port->Open();
    EXPECT_TRUE(scales->IsConnected());
    scales->SetComport(nullptr);
    EXPECT_FALSE(scales->IsConnected());
}

TEST_F(Port, ConnectionOpensAndCloses)
{
    EXPECT_TRUE(scales->SetConnection(false));
    EXPECT_FALSE(port->Connected());
    EXPECT_TRUE(scales->SetConnection(false));
    EXPECT_TRUE(scales->SetConnection(true));
    EXPECT_TRUE(port->Connected());
    EXPECT_TRUE(scales->SetConnection(true));
    EXPECT_TRUE(port->Connected());
    trace.expect({});
}

TEST_F(Port, OpeningAnOpenPortDoesNothing)
{
    int openings = 0;
    port->OnOpening = [&] { ++openings; };
    EXPECT_TRUE(scales->SetConnection(true));
    EXPECT_EQ(openings, 0);
}

TEST_F(Port, FailedOpeningIsReportedInItsOwnWords)
{
    port->Close();
    port->OpenFailure = QStringLiteral("COM7: busy");
    EXPECT_FALSE(scales->SetConnection(true));
    trace.expect({"error COM7: busy"});
    scales->SetOnError({});
    EXPECT_FALSE(scales->SetConnection(true));
    trace.expect({});
    port->OpenFailure.reset();
    EXPECT_TRUE(scales->SetConnection(true));
}

TEST_F(Port, WithoutAPortConnectionIsReported)
{
    scales->SetComport(nullptr);
    EXPECT_FALSE(scales->SetConnection(true));
    trace.expect({kNoPort});
    EXPECT_FALSE(scales->SetConnection(false));
    trace.expect({kNoPort});
    scales->SetOnError({});
    EXPECT_FALSE(scales->SetConnection(true));
    trace.expect({});
}

TEST_F(Port, AssigningAPortBindsItAndNothingElse)
{
    TMemoryPort other;
    other.SetPort(QStringLiteral("COM8"));
    trace.attach(other);
    use(8);
    scales->SetComport(&other);
    EXPECT_EQ(scales->ComPort(), &other);
    EXPECT_FALSE(other.Connected());
    EXPECT_TRUE(port->Connected());
    feed("W 1kg");
    trace.expect({});
    other.feed("W 2kg");
    trace.expect(received(" 2") + QStringList{"log  2 2%"});
    scales->SetComport(nullptr);
    other.feed("W 3kg");
    trace.expect({});
}

TEST_F(Port, AssigningTheSamePortBeginsThePacketAnew)
{
    use(3);
    feed("0051000000");
    scales->SetComport(port.get());
    trace.take();
    feed("00000000");
    trace.expect({kStart, kStop});
}

TEST_F(Port, ClosingAndOpeningKeepsWhatArrived)
{
    use(3);
    feed("0051000000");
    port->Close();
    port->Open();
    trace.take();
    feed("00000000");
    trace.expect({kStop, got("005100000000000000"), "log Ask  005100000000000000", "log 001500", "log 1500"});
}

TEST_F(Port, MayBeDestroyedFirst)
{
    use(3);
    scales->SetSendInterval(1000);
    feed("00");
    trace.take();
    port.reset();
    EXPECT_EQ(scales->ComPort(), nullptr);
    EXPECT_FALSE(scales->IsConnected());
    EXPECT_EQ(scales->GetWeight(true), -1);
    EXPECT_EQ(scales->GetWeight(false), -1);
    scales->WriteToPort("x");
    scales->SetUpComport();
    clock.advance(5000);
    trace.expect({});
    EXPECT_FALSE(scales->SetConnection(true));
    trace.expect({kNoPort});
    scales->Reset();
    trace.expect({kNoPort, "log [07] Reset port "});
    scales.reset();
}

TEST_F(Port, IsNotOwned)
{
    scales.reset();
    EXPECT_TRUE(port->Connected());
    feed("W 1kg");
    trace.expect({});
}

TEST_F(Port, WritingSendsEveryByteAndLogsAfterwards)
{
    QString text;
    for (int byte = 0; byte < 256; ++byte) {
        text += QChar(byte);
    }
    scales->WriteToPort(text);
    trace.expect(sent(text.toLatin1()));
    const QByteArray written = port->takeWritten();
    ASSERT_EQ(written.size(), 256);
    for (int byte = 0; byte < 256; ++byte) {
        EXPECT_EQ(uchar(written[byte]), byte);
    }
}

TEST_F(Port, WritingToAClosedPortDoesNothing)
{
    port->Close();
    scales->WriteToPort("x");
    trace.expect({});
}

TEST_F(Port, FailedWriteLeavesTheComponentAndIsNotLogged)
{
    port->WriteFailure = QStringLiteral("line gone");
    EXPECT_THROW(scales->WriteToPort("x"), platform::EComPort);
    trace.expect({});
    use(3);
    EXPECT_THROW(scales->GetWeight(true), platform::EComPort);
    EXPECT_THROW(scales->GetWeight(false), platform::EComPort);
    trace.expect({});
    port->WriteFailure.reset();
    EXPECT_EQ(scales->GetWeight(true), 0);
    trace.expect(sent("\x00\x00\x03"_b));
}

TEST_F(Port, MayGoWhileItIsSetUp)
{
    scales->SetScalesType(1);
    int settings = 0;
    port->OnSettings = [&] {
        ++settings;
        port.reset();
    };
    scales->SetUpComport();
    EXPECT_EQ(settings, 1);
    EXPECT_FALSE(scales->IsConnected());
    trace.expect({});
}

TEST_F(Port, ScalesMayGoWhileTheirPortIsSetUp)
{
    scales->SetScalesType(1);
    port->OnSettings = [&] { scales.reset(); };
    scales->SetUpComport();
    EXPECT_EQ(scales, nullptr);
    trace.expect({});
}

} // namespace
