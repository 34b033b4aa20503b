#pragma once

#include <QString>

namespace tnv5::common {

/// Eight characters "0" or "1", the most significant bit first.
QString ByteToBinStr(uchar value);
/// The binary number that a text of any length stands for; any character but "1" is a 0. 32 bits are kept.
int BitToint(const QString& bits);
/// The same into eight bits.
uchar BinStrToByte(const QString& bits);

} // namespace tnv5::common
