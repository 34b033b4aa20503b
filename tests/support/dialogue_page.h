#pragma once

#include <QString>
#include <QStringList>
#include <string>

namespace tnv5::tests {

/// The text of a page of docs/. Its path must not be wrong.
QString pageOf(const QString& path);

/// Bytes as a page writes them: "\xNN", "\r", "\n", "\\", everything else as it is.
QByteArray unescaped(const QString& text);

/// The blocks "```dialogue" of a page, as lines.
QList<QStringList> dialoguesOf(const QString& page);

/// The same bytes in one way of writing, without blanks at the end, which nobody sees on a page.
std::string normalised(const QStringList& lines);

} // namespace tnv5::tests
