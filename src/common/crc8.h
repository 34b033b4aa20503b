#pragma once

#include <QByteArrayView>
#include <QString>
#include <array>

namespace tnv5::common {

/// Table of the CRC-8 with polynomial 0x31, most significant bit first.
constexpr std::array<quint8, 256> crc8Table()
{
    std::array<quint8, 256> table{};
    for (unsigned value = 0; value < table.size(); ++value) {
        unsigned crc = value;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 0x80U) != 0 ? (crc << 1U) ^ 0x31U : crc << 1U;
        }
        table[value] = static_cast<quint8>(crc);
    }
    return table;
}

inline constexpr std::array<quint8, 256> kCrc8Table = crc8Table();

/// CRC-8 of the boards' lines: polynomial 0x31, initial value 0xFF, not reflected, no final XOR.
/// Example: `Crc8("123456789")` is 0xF7.
constexpr quint8 Crc8(QByteArrayView bytes)
{
    quint8 crc = 0xFF;
    for (const char byte : bytes) {
        crc = kCrc8Table[crc ^ static_cast<quint8>(byte)];
    }
    return crc;
}

/// CRC-8 of a text's bytes on the wire, as exactly two upper-case hexadecimal digits.
QString Crc8Digits(QStringView line);

/// A byte as exactly two upper-case hexadecimal digits.
constexpr std::array<char, 2> HexDigits(quint8 value)
{
    constexpr char kHex[] = "0123456789ABCDEF";
    return {kHex[value >> 4], kHex[value & 0xF]};
}
/// The same as a text.
QString HexByte(quint8 value);

} // namespace tnv5::common
