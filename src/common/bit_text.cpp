#include "tnv5/common/bit_text.h"

namespace tnv5::common {

namespace {

quint32 valueOf(const QString& bits)
{
    quint32 value = 0;
    for (const QChar bit : bits) {
        value = (value << 1U) | (bit == u'1' ? 1U : 0U);
    }
    return value;
}

} // namespace

QString ByteToBinStr(uchar value)
{
    QString bits;
    for (int bit = 7; bit >= 0; --bit) {
        bits += (value >> bit & 1) != 0 ? u'1' : u'0';
    }
    return bits;
}

int BitToint(const QString& bits)
{
    return static_cast<int>(valueOf(bits));
}

uchar BinStrToByte(const QString& bits)
{
    return static_cast<uchar>(valueOf(bits));
}

} // namespace tnv5::common
