#pragma once

#include "tnv5/platform/clock.h"

#include <QString>
#include <optional>

namespace tnv5::host {

/// How a card payment ended. `Unknown`: the bank may have been paid or not; somebody must look at the
/// terminal, and nothing is ever repeated by the program.
enum class TOutcome { UnderWay, Approved, Declined, Cancelled, Unknown };

/// One card payment, a row of the payments, from the moment its amount is sent to the terminal.
struct TPayment
{
    qint64 id = 0; ///< row of the payments, 0: not written yet
    platform::TDateTime began = 0;
    platform::TDateTime ended = 0; ///< 0: under way
    qint64 cents = 0;
    qint64 discount = 0; ///< in cents, sent beside the amount
    QString card;        ///< masked
    QString cardType;
    QString answer; ///< code of the bank's answer
    TOutcome outcome = TOutcome::UnderWay;
    QString reason; ///< of an outcome that the answer does not explain
};

// The words of the payments and of the log; empty while it is under way.
QString toText(TOutcome outcome);
std::optional<TOutcome> toOutcome(QStringView text);

/// A card number as the host may keep it: the first six and the last four characters, stars between them. Of
/// a number too short to hide anything between them nothing is shown. Example: "4111111111111111" gives
/// "411111******1111".
QString maskedCard(const QString& card);

/// A text with every card number in it masked: the values of the tag "01=" and all runs of 12 and more
/// digits.
QString maskedText(const QString& text);

/// An amount as people write it, in cents: digits, and after a point or comma one or two more.
/// Nothing for anything else, for 0 and for more than 2^31 - 1 cents. Example: "12.5" gives 1250.
std::optional<qint64> toCents(const QString& text);

/// One line of log about a payment.
/// Example: "12:00:00.250  card payment  12.50  411111******1111 VISA  approved: 00".
QString logLine(const TPayment& payment);

} // namespace tnv5::host
