#pragma once

#include "apps/tnv5/console.h"
#include "tnv5/host/port_keeper.h"

#include <functional>

namespace tnv5::cli {

/// Tells on standard error what may be wrong with a port that cannot be opened.
/// @param osError the system's number of the error, 0 if it is not known
/// @param tell where gates are at work: `complainNow`
void explain(const QString& port, qint64 osError = 0, void (*tell)(const QString& line) = complain);

/// Opens a port, and explains why when that fails. @throws platform::EComPort
void openPort(platform::TComPort& port);

/// Tells what becomes of a port that is kept open: that it went away, and why it cannot be opened, which is
/// explained once.
/// @param opened is called each time that it has been opened
/// @param hopeless when waiting is of no use: the rate does not exist
void keepPort(host::TPortKeeper& keeper, const platform::TComPort& port, const std::function<void()>& opened,
              const std::function<void()>& hopeless);

} // namespace tnv5::cli
