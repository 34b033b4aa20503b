#pragma once

#include <QString>

/// Texts of what the controller components share, letter for letter.
namespace tnv5::controller {

// codes of errors
inline constexpr QStringView kErrorClientSocket = u"[01] "; // opening it, or sending through it
inline constexpr QStringView kErrorServerSocket = u"[06] ";
inline constexpr QStringView kErrorSendToClient = u"[07] ";
inline constexpr QStringView kErrorTableFull = u"[13] ";

} // namespace tnv5::controller
