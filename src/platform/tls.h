#pragma once

#include "tnv5/platform/socket_access.h"

#include <QSslConfiguration>

namespace tnv5::platform {

/// The settings of a link whose other end must have a certificate of the same authority.
/// @throws ESocketError when a file cannot be read or is not what it should be
QSslConfiguration tlsConfiguration(const TTlsFiles& files);

} // namespace tnv5::platform
