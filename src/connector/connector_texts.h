#pragma once

#include <QString>

/// The connector's own texts, letter for letter.
namespace tnv5::connector {

// codes of errors
inline constexpr QStringView kErrorOpenClose = u"[03] ";
inline constexpr QStringView kErrorPort = u"[08] ";

// words of the reports about boards that ping, or do not
inline const QString kPing = QStringLiteral("PING");
inline const QString kNoPing = QStringLiteral("NOPING");

// log of a routed line; the asterisk, which the monitor text lacks, is intended
inline const QString kReadFromPortLog = QStringLiteral("%Считано с порта*% ");

// log
inline const QString kLinesSent = QStringLiteral("Lines send ");

} // namespace tnv5::connector
