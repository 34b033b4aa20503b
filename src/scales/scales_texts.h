#pragma once

#include <QString>

/// The scales component's own texts, letter for letter; the names of the families stand with them.
namespace tnv5::scales {

// numbers of messages
enum TMessage { msgNoPort = 0, msgOverload = 1, msgNegative = 2, msgNoAnswer = 3 };

/// A message for people in a language: 0 Russian, 1 Ukrainian, 2 English; empty for any other.
QString messageText(int index, int language);

// log
inline const QString kLogStart = QStringLiteral("[01] Start read from port ");
inline const QString kLogStop = QStringLiteral("[02] Stop read from port ");
inline const QString kLogGet = QStringLiteral("[03] Get from port ");
inline const QString kLogSend = QStringLiteral("[05] Send to port ");
inline const QString kLogReset = QStringLiteral("[07] Reset port ");

} // namespace tnv5::scales
