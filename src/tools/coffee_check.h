#pragma once

#include "tnv5/platform/errors.h"

#include <QByteArray>
#include <QString>

/// What stands in the text of a coffee machine's QR code. The component only enciphers; this is for people
/// who want to know what a text says.
namespace tnv5::tools {

/// A text that is no text for a coffee machine at all.
class ECoffeeText : public platform::Exception
{
public:
    using Exception::Exception;
};

struct TCoffeeFields
{
    int Part1 = 0;
    int Part2 = 0;
    int Part3 = 0;
    int Value1 = 0;
    int Value2 = 0;
    quint32 Stamp = 0;       ///< seconds since 1970-01-01 00:00, local time
    bool FixedBytes = false; ///< bytes 0, 8 and 13 are what they always are
    bool Crc = false;        ///< the CRC holds

    bool good() const { return FixedBytes && Crc; }
};

/// Deciphers a text. With another key than the text's the fields are noise and the CRC does not hold.
/// @throws ECoffeeText when the text is not "O", 32 upper-case hexadecimal digits, "S"
/// @throws platform::EConvertError when the key is not hexadecimal
TCoffeeFields checkCoffeeText(const QString& text, const QString& keyHex);

/// A stamp as a date and time, such as "2026-01-05 12:00:00".
QString stampText(quint32 stamp);

/// How long ago a stamp was, such as "40 s ago" or "in 2 h"; from the clock's stamp.
QString ageText(quint32 stamp, quint32 now);

} // namespace tnv5::tools
