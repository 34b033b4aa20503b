// Time that waits for the lines.

#include "sim/lines.h"

#include "program.h"
#include "sim/pty.h"
#include "support/lock_step.h"
#include "support/text_printers.h"
#include "tnv5/platform/com_data_packet.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/platform/timer.h"

#include <gtest/gtest.h>
#include <memory>

namespace tnv5::sim {
namespace {

class Lines : public ::testing::Test
{
protected:
    Lines()
    {
        pty->OnRead = [this](const QByteArray& bytes) { heardByEquipment += bytes; };
        port->SetPort(pty->path());
    }

    /// The equipment and the program are in touch.
    void connect()
    {
        port->Open();
        time.lines.settle();
    }

    testkit::TManualClock clock;
    std::unique_ptr<TPty> pty = std::make_unique<TPty>(QStringLiteral("line"));
    std::unique_ptr<platform::TSerialPort> port = std::make_unique<platform::TSerialPort>();
    TLockStep time{clock, *pty, *port};
    QByteArray heardByEquipment;
};

TEST_F(Lines, NothingIsOnItsWayWhileNobodySpeaks)
{
    EXPECT_TRUE(time.lines.settled());
    connect();
    EXPECT_TRUE(time.lines.settled());
    EXPECT_EQ(clock.nowMs(), testkit::TManualClock::at(12, 0)) << "waiting takes no time";
}

// What the whole of lock-step time stands on: bytes in the system's hands are seen at once, from either end.
TEST_F(Lines, EveryByteOnItsWayIsSeen)
{
    connect();
    for (int round = 1; round <= 500; ++round) {
        const QByteArray bytes(round, 'x');
        pty->write(bytes);
        EXPECT_FALSE(port->settled()) << round;
        EXPECT_FALSE(time.lines.settled()) << round;
        const qint64 before = port->bytesRead();
        time.lines.settle();
        EXPECT_EQ(port->bytesRead() - before, round);

        heardByEquipment.clear();
        port->Write(bytes);
        EXPECT_FALSE(pty->settled()) << round;
        EXPECT_FALSE(time.lines.settled()) << round;
        time.lines.settle();
        EXPECT_EQ(heardByEquipment, bytes);
    }
}

TEST_F(Lines, MoreThanTheSystemHoldsArrivesAllTheSame)
{
    connect();
    const QByteArray much(TPty::kMaxQueued - 1, 'x');
    pty->write(much);
    time.lines.settle();
    EXPECT_EQ(port->bytesRead(), much.size());
    port->Write(much);
    time.lines.settle();
    EXPECT_EQ(heardByEquipment, much);
    EXPECT_EQ(pty->lostBytes(), 0);
}

TEST_F(Lines, OpeningClosingAndUnpluggingAreNoticed)
{
    port->Open();
    EXPECT_FALSE(time.lines.settled());
    time.lines.settle();
    EXPECT_TRUE(pty->opened());
    port->Close();
    EXPECT_FALSE(time.lines.settled());
    time.lines.settle();
    EXPECT_FALSE(pty->opened());
    connect();
    pty->unplug();
    EXPECT_FALSE(time.lines.settled());
    time.lines.settle();
    EXPECT_FALSE(port->Connected());
}

TEST_F(Lines, TimeGoesOnWhenEverythingHasArrived)
{
    connect();
    constexpr int kTicks = 200;
    int asked = 0;
    int answered = 0;
    pty->OnRead = [&](const QByteArray& bytes) { pty->write(bytes); };
    platform::TComDataPacket packet;
    packet.SetStartString("$");
    packet.SetStopString("\r");
    packet.OnPacket = [&](platform::TComDataPacket*, const QByteArray&) { ++answered; };
    packet.SetComPort(port.get());
    platform::TTimer timer;
    timer.SetInterval(1);
    timer.OnTimer = [&](platform::TTimer*) {
        EXPECT_EQ(answered, asked) << "the answer to the question before has come";
        port->Write('$' + QByteArray::number(++asked) + '\r');
    };
    timer.SetEnabled(true);
    clock.advance(kTicks);
    EXPECT_EQ(asked, kTicks);
    EXPECT_EQ(answered, kTicks);
}

TEST_F(Lines, WhatWaitsForItsTimeIsNotOnItsWay)
{
    connect();
    pty->BaudRate = 1'000; // a byte takes 10 ms
    pty->write("twelve bytes");
    EXPECT_TRUE(time.lines.settled());
    clock.advance(60);
    EXPECT_EQ(port->bytesRead(), 6);
    EXPECT_TRUE(time.until([&] { return port->bytesRead() == 12; }));
    EXPECT_EQ(clock.nowMs(), testkit::TManualClock::at(12, 0, 0, 120));
    pty->BaudRate = 0;
    port->SetReadGap(30);
    pty->write("x");
    clock.advance(29);
    EXPECT_EQ(port->bytesRead(), 12);
    clock.advance(1);
    EXPECT_EQ(port->bytesRead(), 13);
}

TEST_F(Lines, AProgramThatDoesNotReadHoldsUpNothing)
{
    const TProgram program(pty->path());
    pty->write(QByteArray(TPty::kMaxQueued, 'x'));
    clock.advance(1'000);
    EXPECT_TRUE(time.lines.settled());
    EXPECT_EQ(program.readUntil(TPty::kMaxQueued).size(), TPty::kMaxQueued);
}

TEST_F(Lines, EndsThatAreGoneAreForgotten)
{
    connect();
    pty->write("x");
    port.reset();
    pty.reset();
    EXPECT_TRUE(time.lines.settled());
    clock.advance(1'000);
}

TEST_F(Lines, UntilStopsAtItsLimitAndWhenNothingTicks)
{
    EXPECT_FALSE(time.until([] { return false; }));
    EXPECT_TRUE(time.until([] { return true; }));
    platform::TTimer timer;
    timer.SetInterval(400);
    timer.SetEnabled(true);
    EXPECT_FALSE(time.until([] { return false; }, 1'000));
    EXPECT_EQ(clock.nowMs(), testkit::TManualClock::at(12, 0, 0, 800));
}

} // namespace
} // namespace tnv5::sim
