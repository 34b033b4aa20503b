#pragma once

#include <QString>

/// Texts of what the controller components share, letter for letter.
namespace tnv5::controller {

// codes of errors
inline constexpr QStringView kErrorClientSocket = u"[01] "; // opening it, or sending through it
inline constexpr QStringView kErrorServerSocket = u"[06] ";
inline constexpr QStringView kErrorSendToClient = u"[07] ";
inline constexpr QStringView kErrorLink = u"[12] "; // with the system's number
inline constexpr QStringView kErrorTableFull = u"[13] ";
inline constexpr QStringView kErrorRefused = u"[14] "; // someone was not let in to the monitor stream

// texts behind them
inline const QString kLinkErrorCode = QStringLiteral("Client Error Code ");
inline const QString kRefused = QStringLiteral("Refused ");

// log of those who watch
inline const QString kClientConnected = QStringLiteral("%Client Connected% ");
inline const QString kClientDisconnected = QStringLiteral("%Client Disconnected% ");

} // namespace tnv5::controller
