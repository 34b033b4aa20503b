#pragma once

#include <QStringView>
#include <array>

namespace tnv5::coffee {

using TKey = std::array<quint8, 16>;

/// Reads a key: two hexadecimal digits a byte, in either case, a single one at the end counting as a byte. Of
/// a longer text the first 16 bytes are taken, in a shorter one the missing bytes are 0.
/// @throws platform::EConvertError when anything in the text is no hexadecimal digit, also behind the 16
/// bytes. The message does not show the text.
TKey QrKey(QStringView keyHex);

} // namespace tnv5::coffee
