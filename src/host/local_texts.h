#pragma once

#include <QString>

/// What is said over a host's local socket.
namespace tnv5::host::local_texts {

inline const QString kNoObject = QStringLiteral("A request is one JSON object on one line.");
inline const QString kUnknown = QStringLiteral("There is nothing to do that is called \"%1\".");
inline const QString kLineTooLong = QStringLiteral("A line is longer than 1 MiB.");
inline const QString kAnswerTooLong = QStringLiteral("The answer is longer than 1 MiB: ask for less.");
inline const QString kTooMany = QStringLiteral("Too many programs are connected to this host.");
inline const QString kNoGate = QStringLiteral("Which gate is to be opened?");
inline const QString kNoReason = QStringLiteral("Opening a gate by hand needs a reason.");
inline const QString kNothingToSell = QStringLiteral("What is to be sold at which scale, lamp or terminal?");
inline const QString kNoCard = QStringLiteral("Which card?");

inline const QString kRunning = QStringLiteral("another host is already running here: %1");
inline const QString kNoSocket = QStringLiteral("%1 is there already and is no socket");
inline const QString kCannotListen = QStringLiteral("The local socket %1 cannot be opened: %2");

inline const QString kNobodyThere = QStringLiteral("there is no such socket");
inline const QString kLeftBehind = QStringLiteral("the host that listened there has ended");
inline const QString kForbidden = QStringLiteral("permission denied");
inline const QString kNoHost = QStringLiteral("No host answers at %1: %2");
inline const QString kNoAnswer = QStringLiteral("The host at %1 has not answered for %2 seconds.");
inline const QString kLost = QStringLiteral("The connection to the host is lost.");
inline const QString kJunk = QStringLiteral("What came from %1 is not from a host.");

} // namespace tnv5::host::local_texts
