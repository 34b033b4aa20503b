#include "tnv5/common/convert.h"

#include "tnv5/platform/errors.h"

#include <limits>

namespace tnv5::common {

namespace {

// -1 when the text is not digits only, or too long for 32 bits
qint64 digitsValue(QStringView digits)
{
    qint64 value = digits.isEmpty() ? -1 : 0;
    for (const QChar digit : digits) {
        if (digit < u'0' || digit > u'9' || value > std::numeric_limits<int>::max()) {
            return -1;
        }
        value = value * 10 + (digit.unicode() - u'0');
    }
    return value;
}

} // namespace

int StrToInt(QStringView text)
{
    QStringView rest = text;
    while (rest.startsWith(u' ')) {
        rest = rest.sliced(1);
    }
    const bool negative = rest.startsWith(u'-');
    if (negative || rest.startsWith(u'+')) {
        rest = rest.sliced(1);
    }
    const qint64 magnitude = digitsValue(rest);
    const qint64 value = negative ? -magnitude : magnitude;
    if (magnitude < 0 || value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max()) {
        throw platform::EConvertError(QStringLiteral("'%1' is not a valid integer value").arg(text));
    }
    return static_cast<int>(value);
}

} // namespace tnv5::common
