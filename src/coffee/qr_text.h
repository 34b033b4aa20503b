#pragma once

#include "tnv5/coffee/crc16.h"
#include "tnv5/coffee/qr_block.h"

#include <QByteArray>
#include <QString>

namespace tnv5::coffee {

/// The text that a coffee machine reads from a QR code: "O", 32 upper-case hexadecimal digits, "S". The
/// digits are the block of the five numbers and of the current local time, enciphered with AES-128 under the
/// caller's key.
///
///     const QByteArray text = coffee::_qrcodestr(1, 2, 3, 250, 1, keyHex);
///
/// @param APart1, APart2, APart3 their low 10, 6 and 8 bits count
/// @param AValue1, AValue2 their low 16 bits count
/// @param AKeyHex the key as 32 hexadecimal digits, see `QrKey`; it is kept nowhere
/// @throws platform::EConvertError when the key is not hexadecimal
/// @throws platform::Exception when the system's cryptographic library refuses AES-128
QByteArray _qrcodestr(int APart1, int APart2, int APart3, int AValue1, int AValue2, const QString& AKeyHex);

} // namespace tnv5::coffee
