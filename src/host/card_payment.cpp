#include "tnv5/host/card_payment.h"

#include "tnv5/host/club.h"

#include <QRegularExpression>
#include <array>
#include <limits>

namespace tnv5::host {

namespace {

constexpr qsizetype kShownFirst = 6;
constexpr qsizetype kShownLast = 4;

const std::array<std::pair<TOutcome, QString>, 5> kOutcomes = {{
    {TOutcome::UnderWay, QStringLiteral("")},
    {TOutcome::Approved, QStringLiteral("approved")},
    {TOutcome::Declined, QStringLiteral("declined")},
    {TOutcome::Cancelled, QStringLiteral("cancelled")},
    {TOutcome::Unknown, QStringLiteral("unknown")},
}};

/// Masks the first group of every match; whatever else matched stays.
QString maskedMatches(const QString& text, const QRegularExpression& pattern)
{
    QString result;
    qsizetype done = 0;
    QRegularExpressionMatchIterator matches = pattern.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        result += QStringView(text).sliced(done, match.capturedStart(1) - done);
        result += maskedCard(match.captured(1));
        done = match.capturedEnd(1);
    }
    return result + text.sliced(done);
}

} // namespace

QString toText(TOutcome outcome)
{
    for (const auto& [each, text] : kOutcomes) {
        if (each == outcome) {
            return text;
        }
    }
    return {};
}

std::optional<TOutcome> toOutcome(QStringView text)
{
    for (const auto& [each, name] : kOutcomes) {
        if (name == text) {
            return each;
        }
    }
    return std::nullopt;
}

QString maskedCard(const QString& card)
{
    const qsizetype hidden = card.size() - kShownFirst - kShownLast;
    if (hidden <= 0) {
        return QString(card.size(), u'*');
    }
    return card.left(kShownFirst) + QString(hidden, u'*') + card.right(kShownLast);
}

QString maskedText(const QString& text)
{
    static const QRegularExpression field(QStringLiteral("01=([^\\x1C\\x03]+)"));
    static const QRegularExpression digits(QStringLiteral("([0-9]{12,})"));
    return maskedMatches(maskedMatches(text, field), digits);
}

std::optional<qint64> toCents(const QString& text)
{
    static const QRegularExpression amount(QStringLiteral("\\A([0-9]{1,9})(?:[.,]([0-9]{1,2}))?\\z"));
    const QRegularExpressionMatch match = amount.match(text);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const qint64 cents =
        match.captured(1).toLongLong() * 100 + match.captured(2).leftJustified(2, u'0').toLongLong();
    const bool fits = cents > 0 && cents <= std::numeric_limits<int>::max();
    return fits ? std::optional(cents) : std::nullopt;
}

QString logLine(const TPayment& payment)
{
    const platform::TDateTime when = payment.ended != 0 ? payment.ended : payment.began;
    QString line = toText(when).mid(11) + QStringLiteral("  card payment  ") + amountText(payment.cents);
    if (!payment.card.isEmpty()) {
        line += QStringLiteral("  ") + payment.card + u' ' + payment.cardType;
    }
    line += QStringLiteral("  ") +
            (payment.outcome == TOutcome::UnderWay ? QStringLiteral("under way") : toText(payment.outcome));
    for (const QString& detail : {payment.answer, payment.reason}) {
        if (!detail.isEmpty()) {
            line += QStringLiteral(": ") + detail;
        }
    }
    return line;
}

} // namespace tnv5::host
