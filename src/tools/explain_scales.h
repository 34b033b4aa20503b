#pragma once

#include "tnv5/tools/explanation.h"

namespace tnv5::tools {

/// A piece of the line of a scale of a family, 1 to 8.
/// Example: in family 2 "\x01\x02S 01.234kge\x03\x04" is "weight 1234".
TExplanation explainScales(int family, const QByteArray& piece);

} // namespace tnv5::tools
