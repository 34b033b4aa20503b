#pragma once

#include <QString>
#include <optional>

namespace tnv5::host {

/// How often a database's first page has changed, as the file itself says; it never becomes smaller while
/// programs use the file as a database. 0: it is no database. Nothing: it cannot be read.
///
/// The locks that SQLite has on the file stay: closing a file gives up all of the process's locks on it, so
/// that it is opened in a thread with descriptors of its own.
std::optional<quint32> changesOf(const QString& file);

} // namespace tnv5::host
