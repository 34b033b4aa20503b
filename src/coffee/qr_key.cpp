#include "tnv5/coffee/qr_key.h"

#include "tnv5/platform/errors.h"

namespace tnv5::coffee {

namespace {

/// @return -1 for what is no hexadecimal digit.
constexpr int digitValue(char16_t digit)
{
    if (digit >= u'0' && digit <= u'9') {
        return digit - u'0';
    }
    const char16_t lower = digit | 0x20;
    return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

} // namespace

TKey QrKey(QStringView keyHex)
{
    TKey key{};
    for (qsizetype i = 0; i < keyHex.size(); ++i) {
        const int value = digitValue(keyHex[i].unicode());
        if (value < 0) {
            throw platform::EConvertError(QStringLiteral("The key is not hexadecimal"));
        }
        const auto byte = static_cast<std::size_t>(i / 2);
        if (byte < key.size()) {
            key[byte] = static_cast<quint8>(key[byte] << 4 | value);
        }
    }
    return key;
}

} // namespace tnv5::coffee
