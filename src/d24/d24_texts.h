#pragma once

#include <QString>

/// The D24 component's own texts, letter for letter; those that it shares with the other controllers stand in
/// common/messages.h, controller/controller_texts.h and connector/connector_texts.h.
namespace tnv5::d24 {

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
inline const QString kCross = QStringLiteral("CROSS");

} // namespace tnv5::d24
