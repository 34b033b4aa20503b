#pragma once

#include "tnv5/platform/com_port.h"

namespace tnv5::cli {

/// Tells on standard error what may be wrong with a port that cannot be opened.
/// @param osError the system's number of the error, 0 if it is not known
void explain(const QString& port, qint64 osError = 0);

/// Opens a port, and explains why when that fails. @throws platform::EComPort
void openPort(platform::TComPort& port);

} // namespace tnv5::cli
