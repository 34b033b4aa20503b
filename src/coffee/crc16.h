#pragma once

#include <QByteArrayView>
#include <array>

namespace tnv5::coffee {

/// Table of the reflected CRC-16 with polynomial 0x8005, least significant bit first (0xA001).
constexpr std::array<quint16, 256> crc16Table()
{
    std::array<quint16, 256> table{};
    for (unsigned value = 0; value < table.size(); ++value) {
        unsigned crc = value;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1U) != 0 ? (crc >> 1U) ^ 0xA001U : crc >> 1U;
        }
        table[value] = static_cast<quint16>(crc);
    }
    return table;
}

inline constexpr std::array<quint16, 256> crc16_table = crc16Table();

/// CRC-16/ARC: initial value 0, no final XOR. Example: `Crc16("123456789")` is 0xBB3D.
constexpr quint16 Crc16(QByteArrayView bytes)
{
    unsigned crc = 0;
    for (const char byte : bytes) {
        crc = (crc >> 8U) ^ crc16_table[(crc ^ static_cast<quint8>(byte)) & 0xFFU];
    }
    return static_cast<quint16>(crc);
}

} // namespace tnv5::coffee
