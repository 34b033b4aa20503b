#pragma once

#include <QByteArray>

namespace tnv5::tests {

/// Bytes with zeroes in them.
inline QByteArray operator""_b(const char* bytes, std::size_t size)
{
    return {bytes, static_cast<qsizetype>(size)};
}

} // namespace tnv5::tests
