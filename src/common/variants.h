#pragma once

#include <QVariant>

namespace tnv5::common {

/// Reads what a handler put into a result parameter: a number (rounded), a truth value (1 or 0) or a numeric
/// text. @throws platform::EConvertError for anything else, and for what exceeds 32 bits.
int VariantToInteger(const QVariant& value);

} // namespace tnv5::common
