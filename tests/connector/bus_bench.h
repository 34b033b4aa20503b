#pragma once

#include "support/source_line.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <gtest/gtest.h>
#include <memory>
#include <utility>

namespace tnv5::tests {

using connector::TDeviceConnector;
using platform::TComponent;
using testkit::TManualClock;
using testkit::TMemoryPort;

/// CRC-8 of the boards' lines worked out bit by bit, so that the tests do not check the table with itself.
inline quint8 crcBitByBit(const QByteArray& bytes)
{
    unsigned crc = 0xFF;
    for (const char byte : bytes) {
        crc ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 0x80U) != 0 ? ((crc << 1U) & 0xFFU) ^ 0x31U : crc << 1U;
        }
    }
    return static_cast<quint8>(crc);
}

inline QString digitsOf(const QString& line)
{
    return QStringLiteral("%1").arg(crcBitByBit(platform::toWire(line)), 2, 16, QLatin1Char('0')).toUpper();
}

inline QString checked(const QString& line)
{
    return line + digitsOf(line);
}

/// What a command of one line returns: the checksum over the line and its own checksum.
inline QString secondPass(const QString& line)
{
    return digitsOf(checked(line));
}

// The lines of a transcript; all but `routed` add the checksum.

/// A line on the wire and in the log.
inline QStringList sent(const QString& line)
{
    return {QStringLiteral("write ") + checked(line), QStringLiteral("log ") + checked(line)};
}

inline QStringList routed(const QString& line)
{
    return {QStringLiteral("route ") + line};
}

inline QStringList routedChecked(const QString& line)
{
    return routed(checked(line));
}

/// The closing log of a display command.
inline QStringList linesSent(const QString& last)
{
    return {QStringLiteral("log Lines send ") + checked(last)};
}

const QStringList kNoLinesSent{QStringLiteral("log Lines send ")};

/// Keeps one ordered trace, a line of text for each thing that the connector does towards its host, its
/// consumer and its port.
class TBusRecorder
{
public:
    /// Called after each line, inside the event that made it, for handlers that misbehave.
    std::function<void(const QString& line)> OnLine;

    /// Assigns all events. The recorder must outlive the connector.
    void attach(TDeviceConnector& bus)
    {
        bus.SetOnLog(handler(&bus, QStringLiteral("log ")));
        bus.SetOnError(handler(&bus, QStringLiteral("error ")));
        bus.SetOnGetData(handler(&bus, QStringLiteral("route ")));
    }

    /// Records what is written, byte for byte.
    void attach(TMemoryPort& port)
    {
        port.OnWritten = [this](const QByteArray& bytes) {
            add(QStringLiteral("write ") + platform::fromWire(bytes));
        };
    }

    platform::TLogEvent handler(TDeviceConnector* bus, const QString& kind)
    {
        return [this, bus, kind](TComponent* Sender, const QString& Str) {
            EXPECT_EQ(Sender, bus) << kind.toStdString() << Str.toStdString();
            add(kind + Str);
        };
    }

    void add(const QString& line)
    {
        FLines << line;
        if (OnLine) {
            const auto hook = OnLine;
            hook(line);
        }
    }

    /// Calls `hook` once, inside the event of the first line that begins like this.
    void once(const QString& beginning, const std::function<void()>& hook)
    {
        OnLine = [this, beginning, hook](const QString& line) {
            if (line.startsWith(beginning)) {
                OnLine = {};
                hook();
            }
        };
    }

    /// Lines since the last call.
    QStringList take() { return std::exchange(FLines, {}); }

    /// Everything since the last call must be these lines.
    void expect(const QStringList& lines, TSourceLine where = TSourceLine::current())
    {
        const ::testing::ScopedTrace trace(where.file_name(), int(where.line()), "transcript");
        EXPECT_EQ(lines.join(u'\n').toStdString(), take().join(u'\n').toStdString());
    }

private:
    QStringList FLines;
};

/// One connector on one open port in memory, with the time in the test's hand: every event is recorded, and
/// so is what reaches the host's exception handler.
struct TBusBench
{
    TBusBench()
        : FPreviousHandler(platform::setExceptionHandler([this](const QString& message, const auto&) {
              trace.add(QStringLiteral("raised ") + message);
          }))
    {
        bus->SetConnectorType(connector::podComPort);
        bus->SetComport(port.get());
        port->Open();
        trace.attach(*bus);
        trace.attach(*port);
    }
    ~TBusBench() { platform::setExceptionHandler(FPreviousHandler); }
    TBusBench(const TBusBench&) = delete;
    TBusBench& operator=(const TBusBench&) = delete;

    /// One line from the boards, through the port.
    void inject(const QString& line) { port->feed(platform::toWire(line) + '\r'); }

    /// One line from the boards of another link.
    void hear(const QString& line) { bus->ProcessDataToDevice(QStringLiteral("10.0.0.7"), line); }

    connector::DeviceInfo board(const QString& address, const QString& ip = QStringLiteral("0.0.0.0"))
    {
        return bus->GetDeviceFromList(ip, address);
    }

    /// Makes a board's display known without a line.
    void giveDisplay(const QString& address, int width, const QString& ip = QStringLiteral("0.0.0.0"))
    {
        board(address, ip)->DisplayLine = width;
    }

    TManualClock clock;
    TBusRecorder trace;
    std::unique_ptr<TMemoryPort> port = std::make_unique<TMemoryPort>();
    std::unique_ptr<TDeviceConnector> bus = std::make_unique<TDeviceConnector>();

private:
    platform::TExceptionHandler FPreviousHandler;
};

class TBusTest : public ::testing::Test, protected TBusBench
{
};

} // namespace tnv5::tests
