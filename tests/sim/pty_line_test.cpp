#include "classic_fixture.h"
#include "program.h"
#include "sim/line_faults.h"
#include "sim/pty.h"
#include "support/lock_step.h"
#include "tnv5/platform/com_data_packet.h"
#include "tnv5/platform/serial_port.h"

namespace tnv5::sim {
namespace {

// The same controllers on a real line.
struct PtyLine : ::testing::Test
{
    PtyLine() { line.addController(kTurnstile); }

    TPty pty{QStringLiteral("gates")};
    TLineFaults cable{pty, 5};
    TClassicLine line{cable};
};

struct PtyLineInLockStep : PtyLine
{
    /// What a program hears when it listens for so long.
    QByteArray heardIn(const TProgram& program, int ms)
    {
        clock.advance(ms);
        return program.read();
    }

    testkit::TManualClock clock;
    TLockStep time{clock, pty};
};

TEST_F(PtyLineInLockStep, ACardIsReadAndThePersonPasses)
{
    const TProgram program(pty.path());
    ASSERT_TRUE(program.valid());
    cable.CutPercent = 100;
    cable.PieceGapMs = 1;
    const quint64 id = line.readCard(kTurnstile, kCard);
    EXPECT_EQ(heardIn(program, 10), "$01AR12345678\r");
    ASSERT_TRUE(program.write(kOpenTurnstile));
    EXPECT_EQ(heardIn(program, 19), "");
    EXPECT_EQ(heardIn(program, 11), "#01ARelay 1\r");
    EXPECT_EQ(heardIn(program, 689), "") << "still on the way into the gate";
    EXPECT_EQ(heardIn(program, 11), "$01AP\r");
    EXPECT_FALSE(line.reading(id).Passed);
    EXPECT_EQ(heardIn(program, 800), "$01AG\r");
    EXPECT_TRUE(line.reading(id).Passed);
}

TEST_F(PtyLineInLockStep, AfterTheAdapterComesBackTheGateWorksAgain)
{
    {
        const TProgram program(pty.path());
        time.lines.settle();
        pty.unplug();
        EXPECT_TRUE(program.hungUp());
    }
    const quint64 lost = line.readCard(kTurnstile, kCard);
    pty.plug();
    const TProgram program(pty.path());
    ASSERT_TRUE(program.valid());
    ASSERT_TRUE(program.write(kPoll));
    EXPECT_EQ(heardIn(program, 20), "#01AWait-Card\r");
    EXPECT_EQ(line.reading(lost).Fate, TFate::Waiting);
    clock.advance(line.Delays.AnswerLimitMs);
    EXPECT_EQ(line.reading(lost).Fate, TFate::NoCommand);
}

// In real time.
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
