#include "sim/pos_terminal.h"

#include "tnv5/platform/clock.h"

#include <algorithm>
#include <array>

namespace tnv5::sim {

std::optional<TPosEnd> posEndOf(const QString& word)
{
    static const QStringList words = {QStringLiteral("approve"),    QStringLiteral("decline"),
                                      QStringLiteral("timeout"),    QStringLiteral("break"),
                                      QStringLiteral("crash"),      QStringLiteral("hang"),
                                      QStringLiteral("unconfirmed")};
    const auto index = words.indexOf(word);
    return index < 0 ? std::nullopt : std::optional(static_cast<TPosEnd>(index));
}

void TPosMachine::begin(TKind kind, qint64 amount)
{
    FKind = kind;
    FAmount = amount;
    FBeganMs = platform::TClock::current().nowMs();
    FBooked = false;
}

int TPosMachine::step() const
{
    if (FKind == TKind::Other || FScenario.stepMs <= 0) {
        return kSteps;
    }
    const qint64 passed = platform::TClock::current().nowMs() - FBeganMs;
    return static_cast<int>(std::clamp<qint64>(passed / FScenario.stepMs, 0, kSteps));
}

bool TPosMachine::finish()
{
    if (!FBooked && FKind != TKind::Other && approved()) {
        TPosTurnover& turnover = FKind == TKind::Payment  ? FDebit
                                 : FKind == TKind::Refund ? FCancelled
                                                          : FCredit;
        ++turnover.number;
        turnover.amount += FAmount;
        ++FInvoice;
    }
    FBooked = true;
    return approved();
}

void TPosMachine::closeDay()
{
    FDebit = FCredit = FCancelled = {};
}

std::optional<TPosEnd> TPosMachine::lost() const
{
    const bool fatal = FScenario.end == TPosEnd::Crash || FScenario.end == TPosEnd::Hang;
    return fatal && FKind != TKind::Other && step() >= kBankStep ? std::optional(FScenario.end)
                                                                 : std::nullopt;
}

int TPosMachine::errorCode() const
{
    switch (FScenario.end) {
    case TPosEnd::TimeOut:
        return 9;
    case TPosEnd::BreakOff:
        return 18;
    default:
        return FScenario.reason;
    }
}

QString TPosMachine::errorText() const
{
    switch (FScenario.end) {
    case TPosEnd::TimeOut:
        return QStringLiteral("no card within the time");
    case TPosEnd::BreakOff:
        return QStringLiteral("broken off by the customer");
    default:
        return QStringLiteral("declined by the bank (%1)").arg(FScenario.reason);
    }
}

QString TPosMachine::shown(int step)
{
    static const std::array texts = {QStringLiteral("Insert or tap the card"),
                                     QStringLiteral("Enter the PIN"), QStringLiteral("Asking the bank")};
    return texts.at(static_cast<std::size_t>(std::clamp(step, 0, kSteps - 1)));
}

TPosReply TSimulatedPos::unknown(const QString& method)
{
    TPosReply reply;
    reply.error = QStringLiteral("no method \"%1\"").arg(method);
    return reply;
}

std::unique_ptr<TSimulatedPos> makeSimulatedPos(int type, const TPosScenario& scenario)
{
    switch (type) {
    case 0:
    case 1:
        return makePolledPos(type == 1, scenario);
    case 2:
        return makeControlPos(scenario);
    case 3:
        return makePadPos(scenario);
    case 4:
        return makeMessagePos(scenario);
    default:
        return nullptr;
    }
}

QString posBusName(int type)
{
    static const std::array names = {QStringLiteral("ECRCommX.ECRLibSgn"),
                                     QStringLiteral("ECRCommX.BPOS1Lib"),
                                     QStringLiteral("tnv5.TAxECRClass98"),
                                     QStringLiteral("BluePad50v2.Borica"), QStringLiteral("CardPay.PosApi")};
    return names.at(static_cast<std::size_t>(type));
}

} // namespace tnv5::sim
