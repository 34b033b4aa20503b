#include "classic_rig.h"
#include "program.h"
#include "sim/line_faults.h"
#include "sim/pty.h"
#include "tnv5/platform/com_data_packet.h"
#include "tnv5/platform/serial_port.h"

namespace tnv5::sim {
namespace {

// The same controllers on a real line and in real time.
struct PtyLine : ::testing::Test
{
    PtyLine()
    {
        line.addController(kTurnstile);
        line.Delays = TClassicDelays{1, 1, 1, 1, 5'000, 1};
    }

    TPty pty{QStringLiteral("gates")};
    TLineFaults cable{pty, 5};
    TClassicLine line{cable};
};

TEST_F(PtyLine, ACardIsReadAndThePersonPasses)
{
    const TProgram program(pty.path());
    ASSERT_TRUE(program.valid());
    cable.CutPercent = 100;
    const quint64 id = line.readCard(kTurnstile, kCard);
    EXPECT_EQ(program.readUntil(14), "$01AR12345678\r");
    ASSERT_TRUE(program.write(kOpenTurnstile));
    EXPECT_TRUE(eventually([&] { return line.reading(id).Passed; }));
    EXPECT_EQ(program.readUntil(24), "#01ARelay 1\r$01AP\r$01AG\r");
}

TEST_F(PtyLine, AfterTheAdapterComesBackTheGateWorksAgain)
{
    {
        const TProgram program(pty.path());
        pty.unplug();
        EXPECT_TRUE(program.hungUp());
    }
    const quint64 lost = line.readCard(kTurnstile, kCard);
    pty.plug();
    const TProgram program(pty.path());
    ASSERT_TRUE(program.valid());
    ASSERT_TRUE(program.write(kPoll));
    EXPECT_EQ(program.readUntil(14), "#01AWait-Card\r");
    EXPECT_EQ(line.reading(lost).Fate, TFate::Waiting);
}

TEST_F(PtyLine, ASerialPortTakesItForAnAdapter)
{
    platform::TSerialPort port;
    port.SetPort(pty.path());
    port.SetBaudRate(19'200);
    platform::TComDataPacket packet;
    QByteArray heard;
    packet.SetStartString("#");
    packet.SetStopString("\r");
    packet.OnPacket = [&](platform::TComDataPacket*, const QByteArray& body) { heard += body; };
    packet.SetComPort(&port);
    for (int round = 0; round < 3; ++round) {
        heard.clear();
        port.Open();
        port.Write(kPoll);
        EXPECT_TRUE(eventually([&] { return heard == "01AWait-Card"; }));
        if (round == 1) {
            pty.unplug();
            EXPECT_TRUE(eventually([&] { return !port.Connected(); }));
            EXPECT_THROW(port.Open(), platform::EComPort);
            pty.plug();
        } else {
            port.Close();
        }
    }
}

} // namespace
} // namespace tnv5::sim
