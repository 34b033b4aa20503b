#pragma once

#include "tnv5/platform/clock.h"

#include <array>

namespace tnv5::coffee {

/// 1970-01-01 00:00 as a date-time.
inline constexpr platform::TDateTime UnixStartDate = 25'569.0;

/// What is enciphered: 16 bytes, see docs/coffee.md for their order.
using TBlock = std::array<quint8, 16>;

// Bytes of a block that are always the same, and where they stand.
constexpr quint8 kBlockMark = 0x83; ///< byte 0
constexpr quint8 kStampEnd = 0x01;  ///< byte 8
constexpr quint8 kValuesEnd = 0x00; ///< byte 13
constexpr int kCheckedBytes = 14;   ///< the CRC follows them

/// Seconds from `UnixStartDate` to `when`, plus `minutes` times 60. Rounded to the nearest whole second from
/// the double as it stands, an exact half to the even one; the low 32 bits of the result, also before 1970
/// and past 2106. 0 for what is no number. Example: `UnixStamp(46'027.5)` is 1'767'614'400, noon of
/// 2026-01-05.
quint32 UnixStamp(platform::TDateTime when, int minutes = 0);

/// The block of five numbers and a stamp. Only the low 10, 6, 8, 16 and 16 bits of the numbers count.
TBlock QrBlock(int part1, int part2, int part3, int value1, int value2, quint32 stamp);

} // namespace tnv5::coffee
