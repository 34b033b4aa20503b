#pragma once

#include <QByteArray>

namespace tnv5::tests {

/// Bytes with zeroes in them.
inline QByteArray operator""_b(const char* bytes, std::size_t size)
{
    return {bytes, static_cast<qsizetype>(size)};
}

/// A bank terminal's frame around a body: STX, body, ETX and the XOR of everything behind the STX.
inline QByteArray framed(const QByteArray& body)
{
    char check = 0x03;
    for (const char byte : body) {
        check = static_cast<char>(check ^ byte);
    }
    return "\x02" + body + "\x03" + check;
}

} // namespace tnv5::tests
