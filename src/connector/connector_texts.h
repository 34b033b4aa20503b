#pragma once

#include <QString>

/// The connector's own texts, letter for letter.
namespace tnv5::connector {

// codes of errors
inline constexpr QStringView kErrorOpenClose = u"[03] ";
inline constexpr QStringView kErrorPort = u"[08] ";

// log
inline const QString kLinesSent = QStringLiteral("Lines send ");

} // namespace tnv5::connector
