#pragma once

#include <QStringList>

namespace tnv5::desk {

/// Where the host of this machine listens now: the usual place that there is, or where it will be. Of several
/// those count at which somebody answers.
/// @throws platform::Exception when several hosts are here
QString findSocket();
/// The same among sockets that are there. @throws platform::Exception when hosts answer at several
QString socketAmong(const QStringList& there);

} // namespace tnv5::desk
