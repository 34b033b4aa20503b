#pragma once

#include "sim/bank_terminal.h"
#include "sim/pty.h"
#include "tnv5/platform/com_data_packet.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/testing/manual_clock.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

namespace tnv5::integration {

/// A real serial port that counts what it is given to write.
class TCountedPort final : public platform::TComPort
{
public:
    TCountedPort()
    {
        FReads.OnCustomStart = [](auto*, const QByteArray&, qsizetype& position) { position = 1; };
        FReads.OnCustomStop = [](auto*, const QByteArray& bytes, qsizetype& position) {
            position = bytes.size();
        };
        FReads.OnPacket = [this](auto*, const QByteArray& bytes) { deliver(bytes); };
        FReads.SetComPort(&FSerial);
        FSerial.OnException = [this](auto*, platform::TComExceptionKind kind, const QString& message,
                                     qint64 osError, const QString& osText) {
            fireException(kind, message, osError, osText);
        };
    }

    bool Connected() const override { return FSerial.Connected(); }
    qint64 written = 0;

protected:
    void doOpen() override
    {
        FSerial.SetPort(Port());
        FSerial.SetBaudRate(BaudRate());
        FSerial.Open();
    }
    void doClose() override { FSerial.Close(); }
    void doWrite(const QByteArray& bytes) override
    {
        FSerial.Write(bytes);
        written += bytes.size();
    }

private:
    platform::TSerialPort FSerial;
    platform::TComDataPacket FReads;
};

/// A stream that counts what goes through it.
class TCountedStream final : public sim::TByteStream
{
public:
    explicit TCountedStream(sim::TByteStream& stream) : FStream(stream)
    {
        FStream.OnRead = [this](const QByteArray& bytes) {
            received += bytes.size();
            deliver(bytes);
        };
    }
    ~TCountedStream() override { FStream.OnRead = nullptr; }

    void write(const QByteArray& bytes) override
    {
        written += bytes.size();
        FStream.write(bytes);
    }

    qint64 written = 0;
    qint64 received = 0;

private:
    sim::TByteStream& FStream;
};

/// A simulated terminal and a serial port on the two ends of a pseudo-terminal, in lock-step with the time in
/// the test's hand: no millisecond passes before everything that was written has arrived. How busy the
/// machine is decides nothing.
class TBankLine
{
public:
    explicit TBankLine(int version) : terminal(FStream, version) { port.SetPort(pty.path()); }

    /// @return false when something that was written does not arrive.
    bool settle()
    {
        const QDeadlineTimer limit(10'000);
        do {
            QCoreApplication::processEvents();
            if (limit.hasExpired()) {
                return false;
            }
        } while (pty.plugged() && port.Connected() && !quiet());
        return true;
    }

    bool advance(int ms)
    {
        for (; ms > 0; --ms) {
            clock.advance(1);
            if (!quiet() && !settle()) {
                return false;
            }
        }
        return true;
    }

    /// Takes the cable out and waits until the port has noticed.
    bool unplug()
    {
        pty.unplug();
        const QDeadlineTimer limit(10'000);
        while (port.Connected() && !limit.hasExpired()) {
            QCoreApplication::processEvents();
        }
        return !port.Connected();
    }
    void plug()
    {
        pty.plug();
        port.Open();
        FStream.received = port.written; // what was on its way is lost
        FMissing = FStream.written - port.bytesRead();
        FLostBefore = pty.lostBytes();
    }

    testkit::TManualClock clock;
    sim::TPty pty{QStringLiteral("bank")};

private:
    bool quiet() const
    {
        const qint64 missing = FMissing + pty.lostBytes() - FLostBefore;
        return port.written == FStream.received && FStream.written - missing == port.bytesRead();
    }

    TCountedStream FStream{pty};
    qint64 FMissing = 0;
    qint64 FLostBefore = 0;

public:
    sim::TSimulatedBankTerminal terminal;
    TCountedPort port;
};

} // namespace tnv5::integration
