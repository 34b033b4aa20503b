#pragma once

#include <QString>

/// The classic controller component's own texts, letter for letter; those that it shares with the other
/// controllers stand in common/messages.h.
namespace tnv5::turnstile {

// codes of errors; those of the sockets and of a full table stand in controller/controller_texts.h
inline constexpr QStringView kErrorUnknownDevice = u"[02] ";
inline constexpr QStringView kErrorPollWrite = u"[03] ";
inline constexpr QStringView kErrorCommand = u"[04] ";
inline constexpr QStringView kErrorCheckHandler = u"[05] ";
inline constexpr QStringView kErrorStatusReport = u"[07] ";

inline const QString kDeviceNotFound = QStringLiteral("Device not found ");

// last hardware report of a pass
inline const QString kHardRelay = QStringLiteral("RELAY");
inline const QString kHardGateOpen = QStringLiteral("GATEOPEN");

} // namespace tnv5::turnstile
