#pragma once

#include <QString>

namespace tnv5::host {

/// A line as it may go to a terminal or into a log: a control character as "\x1b", so that what came from a
/// wire or a file neither commands the one nor begins a line of its own in the other.
QString harmless(const QString& line);

/// A text in double quotes.
QString quoted(const QString& text);

} // namespace tnv5::host
