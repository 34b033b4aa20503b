#pragma once

#include "tnv5/scales/scales_family.h"

#include <algorithm>

namespace tnv5::scales {

/// Weight of the two families that send six digits, the least significant first.
inline std::optional<QString> reversedField(const QByteArray& packet)
{
    QByteArray field = packet.left(6);
    std::reverse(field.begin(), field.end());
    return fieldUnlessBlank(bytesAsText(field));
}

} // namespace tnv5::scales
