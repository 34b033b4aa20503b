#pragma once

#include <QVariant>

namespace tnv5::common {

/// Reads what a handler put into a result parameter: a number (rounded), a truth value (1 or 0) or a numeric
/// text. @throws platform::EConvertError for anything else, and for what exceeds 32 bits.
int VariantToInteger(const QVariant& value);

/// The same for a text. A whole number has all its digits, "3000000000" and not "3e+09": it may be a card's.
/// What has no text gives an empty one.
QString VariantToText(const QVariant& value);

} // namespace tnv5::common
