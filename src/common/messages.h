#pragma once

#include <QString>
#include <QStringList>

/// The texts and conventions that all controller components share, letter for letter.
namespace tnv5::common {

// log
inline const QString kReadFromPort = QStringLiteral("%Считано с порта% ");
inline const QString kSentToPort = QStringLiteral("%Отправлено на порт% ");

// errors
inline const QString kPassTableFull = QStringLiteral("The pass table is full");
inline const QString kPortNotOpen = QStringLiteral("Порт не открыт или не назначен");

// names of status reports
inline const QString kCome = QStringLiteral("COME");
inline const QString kCheck = QStringLiteral("CHECK");
inline const QString kStack = QStringLiteral("STACK");

// states of a pass
inline const QString kNew = QStringLiteral("NEW");
inline const QString kOpen = QStringLiteral("OPEN");
inline const QString kClose = QStringLiteral("CLOSE");
inline const QString kProgress = QStringLiteral("PROGRESS");
inline const QString kFinish = QStringLiteral("FINISH");
inline const QString kTimeout = QStringLiteral("TIMEOUT");
inline const QString kNoAnswer = QStringLiteral("NOANSWER");
inline const QString kCrcError = QStringLiteral("CRC-ERROR");

// cards of passes without a card
inline const QString kCardManual = QStringLiteral("-1-1-1-1-1");
inline const QString kCardButton = QStringLiteral("-2-2-2-2-2");
inline const QString kNoCardNumber = QStringLiteral("NOCARDNUMBER");

/// True for the pseudo cards that stand for a pass opened by hand or by the exit button.
inline bool IsPseudoCard(const QString& card)
{
    return card == kCardManual || card == kCardButton;
}

// messages of the monitor stream
inline const QString kLogTag = QStringLiteral("LOG!");
inline const QString kErrorTag = QStringLiteral("ERROR!");
inline const QString kStatusTag = QStringLiteral("STATUS!");

inline QString LogMessage(const QString& text)
{
    return kLogTag + text + u'&';
}

inline QString ErrorMessage(const QString& codeAndText)
{
    return kErrorTag + codeAndText + u'&';
}

inline QString StatusMessage(const QStringList& fields)
{
    return kStatusTag + fields.join(u'!') + u'&';
}

} // namespace tnv5::common
