#pragma once

#include <QStringView>

namespace tnv5::common {

/// XOR of the low bytes of all characters; 0 for an empty text. Example: "AB" gives 3.
inline int StringLRC(QStringView text)
{
    int value = 0;
    for (const QChar character : text) {
        value ^= character.unicode() & 0xFF;
    }
    return value;
}

} // namespace tnv5::common
