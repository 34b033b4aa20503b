#pragma once

#include "support/fixture.h"
#include "tnv5/connector/device_connector.h"

namespace tnv5::tests {

using connector::TDeviceConnector;

/// CRC-8 of the boards' lines worked out bit by bit, so that the tests do not check the table with itself.
quint8 crcBitByBit(const QByteArray& bytes);

QString digitsOf(const QString& line);
QString checked(const QString& line);

/// What a command of one line returns: the checksum over the line and its own checksum.
QString secondPass(const QString& line);

// The lines of a transcript; all but `routed` add the checksum.

QString wroteChecked(const QString& line);
/// A line on the wire and in the log.
QStringList sent(const QString& line);
QStringList routed(const QString& line);
QStringList routedChecked(const QString& line);
/// The closing log of a display command.
QStringList linesSent(const QString& last);

inline const QStringList kNoLinesSent{QStringLiteral("log Lines send ")};

/// One connector on the port.
struct TConnectorFixture : TPortFixture
{
    TConnectorFixture() { makeBus(); }

    /// A new connector on the port.
    void makeBus();

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

    std::unique_ptr<TDeviceConnector> bus;
};

using TConnectorTest = TTestOn<TConnectorFixture>;

} // namespace tnv5::tests
