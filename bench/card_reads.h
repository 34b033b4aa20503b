#pragma once

#include <QByteArray>
#include <QList>

namespace tnv5::bench {

/// Bytes of one card line, carriage return included.
constexpr int kCardLineSize = 14;

/// A stream of card lines as a port reads it, cut every `readSize` bytes wherever that falls. The lines come
/// from `addresses` turnstile channels in rotation (at most 2,600) with ever new cards. After the last read
/// the stream goes on with the first one.
QList<QByteArray> cardReads(int readSize, int addresses);

/// Writes reads to a file, each one preceded by its size (4 bytes, big-endian). @return false on failure.
bool saveReads(const QList<QByteArray>& reads, const char* path);

} // namespace tnv5::bench
