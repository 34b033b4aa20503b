#pragma once

#include <QString>

/// The switch component's own texts, letter for letter; those that it shares with the other controllers stand
/// in common/messages.h, controller/controller_texts.h and connector/connector_texts.h.
namespace tnv5::switching {

// states of a job
inline const QString kNone = QStringLiteral("NONE");
inline const QString kOn = QStringLiteral("ON");
inline const QString kOff = QStringLiteral("OFF");
inline const QString kNotInLine = QStringLiteral("NOTINLINE");

// names of status reports, beside "STACK" and "CHECK"
inline const QString kBeforeStack = QStringLiteral("XXXSTACK");
inline const QString kCheckOld = QStringLiteral("CHECK OLD");

// second state of the report about a board that is given up
inline const QString kGivenUp = QStringLiteral("XXX");

// errors; the wording is intended
inline const QString kJobTableFull = QStringLiteral("The job table is full");
inline const QString kDevice = QStringLiteral("Device ");
inline const QString kDoesNotWork = QStringLiteral(" does not working");

// log of a comparison of times
inline const QString kTimesCompared = QStringLiteral("$$ ");

} // namespace tnv5::switching
