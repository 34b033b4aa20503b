#include "tnv5/platform/serial_port.h"

#include "support/text_printers.h"
#include "support/wait.h"
#include "tnv5/platform/com_data_packet.h"
#include "tnv5/testing/manual_clock.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace {

using namespace tnv5::platform;

class SerialPortTest : public testing::Test
{
protected:
    SerialPortTest()
    {
        char name[256] = {};
        termios raw{};
        cfmakeraw(&raw);
        EXPECT_EQ(openpty(&master, &slave, name, &raw, nullptr), 0);
        port.SetPort(QString::fromLocal8Bit(name));
        packet.SetStartString("$");
        packet.SetStopString("\r");
        packet.OnPacket = [this](TComDataPacket*, const QByteArray& body) { packets << body; };
        packet.SetComPort(&port);
    }
    ~SerialPortTest() override { unplug(); }

    void unplug()
    {
        for (int* end : {&slave, &master}) {
            if (*end >= 0) {
                ::close(std::exchange(*end, -1));
            }
        }
    }

    void send(const QByteArray& bytes)
    {
        EXPECT_EQ(::write(master, bytes.constData(), bytes.size()), bytes.size());
    }

    QByteArray receive(qsizetype size)
    {
        QByteArray bytes;
        while (bytes.size() < size) {
            char buffer[256];
            const auto count = ::read(master, buffer, sizeof buffer);
            if (count <= 0) {
                break;
            }
            bytes.append(buffer, count);
        }
        return bytes;
    }

    int master = -1;
    int slave = -1;
    TSerialPort port;
    TComDataPacket packet;
    QByteArrayList packets;
};

TEST_F(SerialPortTest, ReadsAndWritesARealLine)
{
    port.Open();
    EXPECT_TRUE(port.Connected());
    send("$01AR1\r$02");
    EXPECT_TRUE(eventually([&] { return packets.size() == 1; }));
    send("A\r");
    EXPECT_TRUE(eventually([&] { return packets.size() == 2; }));
    EXPECT_EQ(packets, QByteArrayList({"01AR1", "02A"}));
    port.Write("$01A10366\r");
    EXPECT_EQ(receive(10), "$01A10366\r") << "written at once, without a turn of the event loop";
}

TEST_F(SerialPortTest, PassesEveryByteValue)
{
    port.Open();
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    port.Write(all);
    EXPECT_EQ(receive(256), all);
}

TEST_F(SerialPortTest, CanBeClosedAndOpenedAgain)
{
    port.Open();
    port.Close();
    EXPECT_FALSE(port.Connected());
    port.Open();
    send("$1\r");
    EXPECT_TRUE(eventually([&] { return packets.size() == 1; }));
}

TEST_F(SerialPortTest, SettingsReachAnOpenPort)
{
    port.Open();
    port.SetBaudRate(4800);
    port.SetStopBits(TStopBits::Two);
    termios now{};
    ASSERT_EQ(tcgetattr(slave, &now), 0);
    EXPECT_EQ(cfgetospeed(&now), static_cast<speed_t>(B4800));
    EXPECT_TRUE((now.c_cflag & CSTOPB) != 0);
}

TEST_F(SerialPortTest, AMissingDeviceSaysSo)
{
    port.SetPort(QStringLiteral("/dev/no-such-port"));
    try {
        port.Open();
        FAIL() << "opened";
    } catch (const EComPort& error) {
        EXPECT_EQ(error.osError(), ENOENT);
        EXPECT_TRUE(error.message().startsWith(QStringLiteral("Cannot open port /dev/no-such-port: ")));
    }
    EXPECT_FALSE(port.Connected());
}

TEST_F(SerialPortTest, ADeviceIsOpenedOnceWhateverItsName)
{
    const QTemporaryDir folder;
    const QString link = folder.filePath(QStringLiteral("gates"));
    ASSERT_TRUE(QFile::link(port.Port(), link));
    port.Open();
    TSerialPort other;
    for (const QString& name : {port.Port(), link}) {
        other.SetPort(name);
        other.SetBaudRate(1200);
        try {
            other.Open();
            ADD_FAILURE() << "opened as " << name.toStdString();
        } catch (const EComPort& error) {
            EXPECT_EQ(error.osError(), EBUSY);
            EXPECT_EQ(error.message(),
                      QStringLiteral("Cannot open port %1: another program has it open").arg(name));
        }
    }
    termios now{};
    ASSERT_EQ(tcgetattr(slave, &now), 0);
    EXPECT_NE(cfgetospeed(&now), static_cast<speed_t>(B1200)) << "the holder's settings are not touched";
    port.Close();
    other.Open();
    EXPECT_TRUE(other.Connected());
}

TEST_F(SerialPortTest, ARateThatDoesNotExistSaysSo)
{
    port.SetBaudRate(0);
    try {
        port.Open();
        FAIL() << "opened";
    } catch (const EComPort& error) {
        EXPECT_EQ(error.osError(), EINVAL);
        EXPECT_EQ(error.message(),
                  QStringLiteral("Cannot open port %1: there is no rate of 0 baud").arg(port.Port()));
    }
    port.SetBaudRate(9600);
    port.Open();
    EXPECT_TRUE(port.Connected()) << "nothing is left held";
}

TEST_F(SerialPortTest, APortThatGoesAwayClosesAndReports)
{
    port.Open();
    int reports = 0;
    bool wasConnected = true;
    port.OnException = [&](TComponent*, TComExceptionKind kind, const QString&, qint64 number,
                           const QString& text) {
        ++reports;
        wasConnected = port.Connected();
        EXPECT_EQ(kind, TComExceptionKind::Resource);
        EXPECT_EQ(number, EIO);
        EXPECT_FALSE(text.isEmpty());
    };
    unplug();
    EXPECT_TRUE(eventually([&] { return reports > 0; }));
    EXPECT_FALSE(wasConnected);
    EXPECT_FALSE(port.Connected());
    EXPECT_EQ(reports, 1);
    EXPECT_THROW(port.Write("x"), EComPort);
}

TEST_F(SerialPortTest, SettingsFindOutThatAPortHasGoneAway)
{
    port.Open();
    int reports = 0;
    port.OnException = [&](TComponent*, TComExceptionKind kind, const QString&, qint64 number,
                           const QString&) {
        ++reports;
        EXPECT_EQ(kind, TComExceptionKind::Resource);
        EXPECT_EQ(number, EIO);
        EXPECT_FALSE(port.Connected());
    };
    unplug();
    port.SetLine({4800, 7, TParity::Even, TStopBits::Two});
    EXPECT_EQ(reports, 1) << "at once, and once for all of them";
    EXPECT_FALSE(port.Connected());
    EXPECT_EQ(port.BaudRate(), 4800);
    EXPECT_EQ(port.DataBits(), 7);
    EXPECT_EQ(port.Parity(), TParity::Even);
    EXPECT_EQ(port.StopBits(), TStopBits::Two);
    port.SetBaudRate(9600);
    EXPECT_EQ(reports, 1);
}

TEST_F(SerialPortTest, APortMayBeDestroyedBecauseOfItsSettings)
{
    auto* doomed = new TSerialPort;
    doomed->SetPort(port.Port());
    doomed->OnException = [&](auto&&...) { delete std::exchange(doomed, nullptr); };
    doomed->Open();
    unplug();
    doomed->SetParity(TParity::Odd);
    EXPECT_EQ(doomed, nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST_F(SerialPortTest, ALineThatIsNotReadDoesNotGrowMemory)
{
    port.Open();
    const QByteArray block(4'096, 'x');
    EXPECT_THROW(
        {
            for (int i = 0; i < 1'000; ++i) {
                port.Write(block);
            }
        },
        EComPort);
    EXPECT_TRUE(port.Connected());
}

TEST_F(SerialPortTest, WhatALineHasTakenArrivesAndWhatItHasRefusedDoesNot)
{
    int troubles = 0;
    port.OnException = [&](auto...) { ++troubles; };
    port.Open();
    QByteArray taken;
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        const QByteArray block(4'096, letter);
        try {
            port.Write(block);
            taken += block;
        } catch (const EComPort& refused) {
            EXPECT_EQ(refused.osError(), EAGAIN);
            break;
        }
    }
    EXPECT_GT(taken.size(), 60'000);
    EXPECT_LT(taken.size(), 26 * 4'096);
    ASSERT_EQ(::fcntl(master, F_SETFL, O_NONBLOCK), 0);
    QByteArray arrived;
    EXPECT_TRUE(eventually([&] {
        arrived += receive(4'096);
        return arrived.size() >= taken.size();
    }));
    EXPECT_TRUE(arrived == taken);
    EXPECT_EQ(troubles, 0);
    EXPECT_TRUE(port.Connected());
}

TEST_F(SerialPortTest, ALineThatArrivesWhileAHandlerPumpsIsNotHeldBack)
{
    packet.OnPacket = [this](TComDataPacket*, const QByteArray& body) {
        packets << body;
        if (body == "one") {
            send("$two\r");
            EXPECT_TRUE(eventually([&] { return packets.contains("two"); })) << "inside the pump";
        }
    };
    port.Open();
    send("$one\r");
    EXPECT_TRUE(eventually([&] { return packets.size() == 2; }));
}

TEST_F(SerialPortTest, AReadGapGathersWhatComesInOneBurst)
{
    packet.OnCustomStart = [](TComDataPacket*, const QByteArray&, qsizetype& pos) { pos = 1; };
    packet.OnCustomStop = [](TComDataPacket*, const QByteArray& buffer, qsizetype& pos) {
        pos = buffer.size();
    };
    port.SetReadGap(500); // longer than a busy machine needs from one piece to the next
    port.Open();
    for (const char* piece : {"ab", "cd", "ef"}) {
        send(piece);
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(eventually([&] { return !packets.isEmpty(); }));
    EXPECT_EQ(packets, QByteArrayList({"abcdef"}));
}

// The device goes between the last byte and the question whether more has come, which is when the library
// tells of it, and not again.
TEST_F(SerialPortTest, APortThatGoesAwayWhileItWaitsForQuietReportsIt)
{
    tnv5::testkit::TManualClock clock; // FQuiet ends when it says so
    TSerialPort quiet;
    quiet.SetPort(port.Port());
    quiet.SetReadGap(10);
    packet.SetComPort(&quiet);
    packet.OnCustomStart = [](TComDataPacket*, const QByteArray&, qsizetype& pos) { pos = 1; };
    packet.OnCustomStop = [](TComDataPacket*, const QByteArray& buffer, qsizetype& pos) {
        pos = buffer.size();
    };
    int reports = 0;
    quiet.OnException = [&](TComponent*, TComExceptionKind kind, const QString&, qint64, const QString&) {
        ++reports;
        EXPECT_EQ(kind, TComExceptionKind::Resource);
    };
    quiet.Open();
    send("abc");
    ASSERT_TRUE(eventually([&] { return clock.untilNextTick().has_value(); }));
    unplug();
    clock.advance(10);
    EXPECT_EQ(packets, QByteArrayList({"abc"}));
    EXPECT_EQ(reports, 1) << "at once: the loop may hear nothing of it any more";
    EXPECT_FALSE(quiet.Connected());
}

TEST_F(SerialPortTest, AHandlerMayCloseOrDestroyThePort)
{
    auto* doomed = new TSerialPort;
    doomed->SetPort(port.Port());
    packet.SetComPort(doomed);
    packet.OnPacket = [&](TComDataPacket*, const QByteArray& body) {
        packets << body;
        if (body == "close") {
            doomed->Close();
        } else {
            delete std::exchange(doomed, nullptr);
        }
    };
    doomed->Open();
    send("$close\r");
    EXPECT_TRUE(eventually([&] { return packets.size() == 1; }));
    EXPECT_FALSE(doomed->Connected());
    doomed->Open();
    send("$delete\r");
    EXPECT_TRUE(eventually([&] { return packets.size() == 2; }));
    EXPECT_EQ(doomed, nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace
