#pragma once

#include <QString>

/// The serial bank terminal's own texts, letter for letter; the names of the versions stand with them.
namespace tnv5::bank {

// numbers of messages
enum TMessage {
    msgNoPort = 0,
    msgAmountRequest = 1,
    msgCancel = 2,
    msgAmountSent = 3,
    msgWaitingAnswer = 4,
    msgError = 5,
    msgConfirmed = 6,
    msgWaitingCard = 7
};

/// A message for people in a language: 0 Russian, 1 Ukrainian, 2 English; empty for any other.
QString messageText(int index, int language);

// log
inline const QString kLogOperation = QStringLiteral("Operation ");

// status words
inline const QString kStatusWait = QStringLiteral("WAIT");
inline const QString kStatusStart = QStringLiteral("START");
inline const QString kStatusGet = QStringLiteral("GET");
inline const QString kStatusOk = QStringLiteral("OK");
inline const QString kStatusError = QStringLiteral("ERROR");
inline const QString kStatusFinish = QStringLiteral("FINISH");
inline const QString kStatusTimeout = QStringLiteral("TIMEOUT");
inline const QString kStatusAmountRefused = QStringLiteral("CANCEL_1");
inline const QString kStatusAnswerRefused = QStringLiteral("CANCEL_2");
inline const QString kStatusCardRefused = QStringLiteral("CANCEL_3");

// fields that a packet does not carry
inline const QString kNoDiscount = QStringLiteral("0");
inline const QString kCardDiscountType = QStringLiteral("CT");

} // namespace tnv5::bank
