#pragma once

#include <QStringView>

namespace tnv5::common {

/// Reads a whole number of 32 bits: leading blanks and one sign are allowed, anything after the digits is
/// not.
/// @throws platform::EConvertError
int StrToInt(QStringView text);

} // namespace tnv5::common
