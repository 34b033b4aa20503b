#pragma once

#include <QString>

/// The D24 component's own texts, letter for letter; those that it shares with the other controllers stand in
/// common/messages.h.
namespace tnv5::d24 {

// log; the asterisk, which the monitor text lacks, is intended
inline const QString kReadFromPortLog = QStringLiteral("%Считано с порта*% ");

inline const QString kLivenessTableFull = QStringLiteral("The table of controllers is full");

// codes of errors
inline constexpr QStringView kErrorCommand = u"[04] ";
inline constexpr QStringView kErrorRefuse = u"[044] ";
inline constexpr QStringView kErrorAllowMonitor =
    u"[045] "; // what the monitor gets where the host gets [04]; intended
inline constexpr QStringView kErrorStatusReport = u"[07] ";

// states that only this family has
inline const QString kProgressStart = QStringLiteral("PROGRESSSTART");
inline const QString kConnected = QStringLiteral("CONNECTED");
inline const QString kDisconnected = QStringLiteral("DISCONNECTED");
inline const QString kPing = QStringLiteral("PING");
inline const QString kNoPing = QStringLiteral("NOPING");
inline const QString kCross = QStringLiteral("CROSS");

} // namespace tnv5::d24
