#include "common/crc8.h"

#include "platform/code_page.h"

namespace tnv5::common {

QString Crc8Digits(QStringView line)
{
    return HexByte(Crc8(platform::toWire(line)));
}

QString HexByte(quint8 value)
{
    QString digits;
    AppendHex(digits, value);
    return digits;
}

void AppendHex(QString& text, quint8 value)
{
    constexpr char16_t kHex[] = u"0123456789ABCDEF";
    text.append(QChar(kHex[value >> 4]));
    text.append(QChar(kHex[value & 0xF]));
}

} // namespace tnv5::common
