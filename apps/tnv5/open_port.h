#pragma once

#include "tnv5/platform/com_port.h"

namespace tnv5::cli {

/// Tells on standard error what may be wrong with a port that cannot be opened.
void explain(const QString& port);

/// Opens a port, and explains why when that fails. @throws platform::EComPort
void openPort(platform::TComPort& port);

} // namespace tnv5::cli
