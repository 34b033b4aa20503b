#include "connector_fixture.h"

namespace tnv5::tests {

quint8 crcBitByBit(const QByteArray& bytes)
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

QString digitsOf(const QString& line)
{
    return QStringLiteral("%1").arg(crcBitByBit(platform::toWire(line)), 2, 16, QLatin1Char('0')).toUpper();
}

QString checked(const QString& line)
{
    return line + digitsOf(line);
}

QString secondPass(const QString& line)
{
    return digitsOf(checked(line));
}

QString wroteChecked(const QString& line)
{
    return wrote(platform::toWire(checked(line)));
}

QStringList sent(const QString& line)
{
    return {wroteChecked(line), logged(checked(line))};
}

QStringList routed(const QString& line)
{
    return {QStringLiteral("route ") + line};
}

QStringList routedChecked(const QString& line)
{
    return routed(checked(line));
}

QStringList linesSent(const QString& last)
{
    return {logged(QStringLiteral("Lines send ") + checked(last))};
}

void TConnectorFixture::makeBus()
{
    bus = std::make_unique<TDeviceConnector>();
    bus->SetConnectorType(connector::podComPort);
    bus->SetComport(port.get());
    trace.attach(*bus);
}

} // namespace tnv5::tests
