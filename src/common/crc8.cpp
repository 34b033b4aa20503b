#include "common/crc8.h"

#include "platform/code_page.h"

namespace tnv5::common {

QString Crc8Digits(QStringView line)
{
    return HexByte(Crc8(platform::toWire(line)));
}

QString HexByte(quint8 value)
{
    constexpr char16_t kHex[] = u"0123456789ABCDEF";
    const QChar digits[] = {kHex[value >> 4], kHex[value & 0xF]};
    return QString(digits, 2);
}

} // namespace tnv5::common
