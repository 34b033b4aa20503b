#pragma once

#include <QString>

namespace tnv5::cli {

/// The key in a file, "-" standing for standard input, without white space around it. No key is ever part of
/// a message.
/// @throws platform::Exception when the file cannot be read, is empty or is too long for a key.
QString readKey(const QString& fileName);

} // namespace tnv5::cli
