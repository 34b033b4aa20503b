#pragma once

#include <QIODevice>
#include <algorithm>

namespace tnv5::common {

/// What a device has to read, to its end, but at most `limit` bytes. It is read in pieces, so that a small
/// file takes no memory for the largest, and a pipe gives all that it gets.
inline QByteArray ReadUpTo(QIODevice& device, qint64 limit)
{
    constexpr qint64 kPiece = 65'536;
    QByteArray bytes;
    while (bytes.size() < limit) {
        const QByteArray piece = device.read(std::min(limit - bytes.size(), kPiece));
        if (piece.isEmpty()) { // the end, or an error that the device has
            break;
        }
        bytes += piece;
    }
    return bytes;
}

} // namespace tnv5::common
