#include "tnv5/common/crc8.h"

#include "tnv5/platform/code_page.h"

namespace tnv5::common {

QString Crc8Digits(QStringView line)
{
    return HexByte(Crc8(platform::toWire(line)));
}

QString HexByte(quint8 value)
{
    return QString::fromLatin1(HexDigits(value));
}

} // namespace tnv5::common
