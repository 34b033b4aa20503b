#include "tnv5/coffee/qr_block.h"

#include "tnv5/coffee/crc16.h"

#include <cmath>

namespace tnv5::coffee {

namespace {

constexpr double kSecondsPerDay = 86'400.0;
constexpr double kStamps = 4'294'967'296.0; // how many there are
constexpr quint32 kSecondsPerMinute = 60;

constexpr quint32 lowBits(int value, unsigned width)
{
    return static_cast<quint32>(value) & ((1U << width) - 1U);
}

/// Writes the low bytes of a value, the most significant one first, and moves `at` behind them.
void append(quint8*& at, quint32 value, unsigned bytes)
{
    while (bytes-- > 0) {
        *at++ = static_cast<quint8>(value >> (8U * bytes));
    }
}

} // namespace

quint32 UnixStamp(platform::TDateTime when, int minutes)
{
    const double seconds = std::nearbyint((when - UnixStartDate) * kSecondsPerDay);
    if (!std::isfinite(seconds)) {
        return 0;
    }
    const auto stamp = static_cast<quint32>(static_cast<qint64>(std::fmod(seconds, kStamps)));
    return stamp + static_cast<quint32>(minutes) * kSecondsPerMinute;
}

TBlock QrBlock(int part1, int part2, int part3, int value1, int value2, quint32 stamp)
{
    TBlock block;
    quint8* at = block.data();
    append(at, kBlockMark, 1);
    append(at, lowBits(part1, 10) << 14U | lowBits(part2, 6) << 8U | lowBits(part3, 8), 3);
    append(at, stamp, 4);
    append(at, kStampEnd, 1);
    append(at, lowBits(value1, 16), 2);
    append(at, lowBits(value2, 16), 2);
    append(at, kValuesEnd, 1);
    append(at, Crc16({block.data(), kCheckedBytes}), 2);
    return block;
}

} // namespace tnv5::coffee
