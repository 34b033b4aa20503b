#include "tnv5/host/payment_counter.h"

#include "tnv5/bank/serial_bank_texts.h"

#include <algorithm>
#include <limits>

namespace tnv5::host {

namespace {

constexpr int kShortestTimeOut = 1;
const QString kEnded = QStringLiteral("the program ended meanwhile");

} // namespace

QList<TPayment> recoverPayments(TDatabase& database, qint64 last)
{
    if (database.paymentsUnderWay().isEmpty()) {
        return {};
    }
    TWriteTransaction transaction(database.connection());
    QList<TPayment> payments = database.paymentsUnderWay(); // one may have ended before the lock was ours
    payments.removeIf([last](const TPayment& payment) { return payment.id > last; });
    for (TPayment& payment : payments) {
        payment.outcome = TOutcome::Unknown;
        payment.ended = platform::Now();
        payment.reason = kEnded;
        database.writePayment(payment);
    }
    transaction.commit();
    return payments;
}

TPaymentCounter::TPaymentCounter(bank::TBankPos& pos, TDatabase& database) : FPos(pos), FDatabase(database)
{
    FPos.SetTimeOut(std::max(FPos.TimeOut(), kShortestTimeOut));
    FPos.SetOnLog([this](platform::TComponent*, const QString& text) { say(OnLine, maskedText(text)); });
    FPos.SetOnError([this](platform::TComponent*, const QString& text) { say(OnLine, maskedText(text)); });
    FPos.SetOnRequestAmount([this](platform::TComponent*, int& Amount, int& Discount, bool& Apply) {
        onAmount(Amount, Discount, Apply);
    });
    FPos.SetOnRequestOperation([this](platform::TComponent*, const QString& CardNo, const QString& CardType,
                                      const QString&, const QString&, const QString& Answer, const QString&,
                                      bool& Apply, const QString& Status, const QString&, const QString&) {
        onOperation({maskedCard(CardNo), CardType, Answer}, Status, Apply);
    });
    FRetry.SetInterval(kRetryMs);
    FRetry.OnTimer = [this](platform::TTimer*) { retry(); };
}

TPaymentCounter::~TPaymentCounter()
{
    retry();
    FPos.SetOnLog({});
    FPos.SetOnError({});
    FPos.SetOnRequestAmount({});
    FPos.SetOnRequestOperation({});
}

void TPaymentCounter::recover()
{
    for (const TPayment& payment : recoverPayments(FDatabase, FDatabase.lastPayment())) {
        if (OnOutcome) {
            OnOutcome(payment);
        }
    }
}

bool TPaymentCounter::order(qint64 cents, qint64 discountCents)
{
    constexpr qint64 kMost = std::numeric_limits<int>::max();
    if (cents < 1 || cents > kMost || discountCents < 0 || discountCents > kMost) {
        say(OnTrouble, QStringLiteral("%1 is no amount that a terminal takes").arg(amountText(cents)));
        return false;
    }
    if (waiting() || underWay()) {
        say(OnTrouble, QStringLiteral("another card payment is not finished yet"));
        return false;
    }
    FOrder = TOrder{static_cast<int>(cents), static_cast<int>(discountCents)};
    return true;
}

void TPaymentCounter::cancel()
{
    FOrder.reset();
    FCancelling = underWay();
}

void TPaymentCounter::lineLost(const QString& why)
{
    if (underWay() || FReversing) { // a refusal may not have reached the terminal either
        settle(TOutcome::Unknown, QStringLiteral("the line was lost: ") + why);
    }
    tellOutcome(); // also of an answer that could not be acknowledged
}

void TPaymentCounter::end()
{
    FOrder.reset();
    retry();
    if (underWay() || FReversing) {
        settle(TOutcome::Unknown, kEnded);
    }
    tellOutcome();
}

void TPaymentCounter::onAmount(int& amount, int& discount, bool& apply)
{
    if (std::exchange(FReversing, false)) { // nobody has heard that what the bank said was taken back
        settle(TOutcome::Unknown, QStringLiteral("the terminal began anew"));
        tellOutcome();
    }
    apply = FOrder ? beginPayment() : sendsAgain();
    if (apply) {
        amount = static_cast<int>(FPayment->cents);
        discount = static_cast<int>(FPayment->discount);
        say(OnStep, QStringLiteral("the amount %1 goes to the terminal").arg(amountText(amount)));
    }
}

/// An order becomes a payment, if it can be written down.
bool TPaymentCounter::beginPayment()
{
    TPayment payment;
    payment.began = platform::Now();
    payment.cents = FOrder->cents;
    payment.discount = FOrder->discount;
    try {
        FDatabase.writePayment(payment);
    } catch (const EDatabase& error) { // the order stays
        say(OnTrouble, QStringLiteral("the payment cannot be written, nothing is sent: ") + error.message());
        return false;
    }
    FOrder.reset();
    FPayment = payment;
    FCardAccepted = false;
    FCancelling = false;
    FReversing = false;
    FTold = TOutcome::UnderWay;
    return true;
}

/// The terminal asks although nothing is ordered: it has not understood the amount, or it begins anew.
bool TPaymentCounter::sendsAgain()
{
    if (underWay() && FCardAccepted) {
        settle(TOutcome::Unknown, QStringLiteral("the terminal began anew"));
        tellOutcome();
    }
    return underWay() && !FCancelling;
}

void TPaymentCounter::onOperation(const TStepOfPayment& step, const QString& status, bool& apply)
{
    if (status == bank::kStatusStart) {
        apply = acceptsCard(step);
    } else if (status == bank::kStatusGet) {
        apply = acceptsAnswer(step);
    } else if (status == bank::kStatusOk || status == bank::kStatusError) {
        settle(FJudged);
        tellOutcome();
    } else if (status == bank::kStatusCardRefused || (status == bank::kStatusAmountRefused && underWay())) {
        onCardRefused();
    } else if (status == bank::kStatusAnswerRefused) {
        onAnswerRefused();
    } else if (status == bank::kStatusFinish) {
        onEndOfDialogue();
    } else if (status == bank::kStatusTimeout && underWay()) {
        settle(TOutcome::Unknown, QStringLiteral("no answer in time"));
        tellOutcome();
    }
}

bool TPaymentCounter::acceptsCard(const TStepOfPayment& step)
{
    if (!underWay() || FCancelling) {
        return false;
    }
    FPayment->card = step.card;
    FPayment->cardType = step.cardType;
    say(OnStep, QStringLiteral("card %1 %2").arg(step.card, step.cardType));
    const bool stored = store();
    FCardAccepted = FCardAccepted || stored;
    return stored;
}

/// Until the acknowledgement has gone out, an answer is no outcome.
bool TPaymentCounter::acceptsAnswer(const TStepOfPayment& step)
{
    if (!FPayment || FPayment->outcome == TOutcome::Cancelled || FCancelling || FReversing) {
        return false;
    }
    if (answered()) { // repeated because the terminal did not hear the acknowledgement
        return FPayment->answer == step.answer && FPayment->card == step.card;
    }
    FPayment->card = step.card;
    FPayment->cardType = step.cardType;
    FPayment->answer = step.answer;
    FPayment->outcome = TOutcome::Unknown;
    FPayment->ended = platform::Now();
    FPayment->reason = QStringLiteral("the answer is not acknowledged yet");
    FJudged = judge(step.answer);
    say(OnStep, QStringLiteral("the bank answers %1").arg(step.answer));
    if (!store()) {
        return false;
    }
    if (FJudged == TOutcome::Unknown) {
        settle(TOutcome::Unknown, QStringLiteral("the code is not in one list of codes"));
        tellOutcome();
    }
    return true;
}

/// By the component's own rule, so that both agree on every code.
TOutcome TPaymentCounter::judge(const QString& answer) const
{
    const QString code = answer + u';';
    const bool ok = FPos.CodeOk().contains(code);
    if (ok == FPos.CodeError().contains(code)) {
        return TOutcome::Unknown;
    }
    return ok ? TOutcome::Approved : TOutcome::Declined;
}

/// The terminal cannot ask the bank without its card being accepted.
void TPaymentCounter::onCardRefused()
{
    const bool open =
        FPayment && (FPayment->outcome == TOutcome::UnderWay || FPayment->outcome == TOutcome::Unknown);
    if (open && !FCardAccepted && FPayment->answer.isEmpty()) {
        settle(TOutcome::Cancelled, FCancelling ? QStringLiteral("cancelled at the desk")
                                                : QStringLiteral("the card came too late"));
        tellOutcome();
    }
}

void TPaymentCounter::onAnswerRefused()
{
    if (FPayment && !answered()) {
        FReversing = true;
        settle(TOutcome::Cancelled, QStringLiteral("the answer was not accepted"));
        tellOutcome();
    }
}

void TPaymentCounter::onEndOfDialogue()
{
    FReversing = false;
    if (underWay()) {
        if (FCardAccepted) {
            settle(TOutcome::Unknown, QStringLiteral("the terminal ended without an answer"));
        } else {
            settle(TOutcome::Cancelled, QStringLiteral("ended at the terminal"));
        }
    }
    tellOutcome();
}

void TPaymentCounter::settle(TOutcome outcome, const QString& reason)
{
    if (!FPayment) {
        return;
    }
    FPayment->outcome = outcome;
    FPayment->reason = reason;
    FPayment->ended = platform::Now();
    FCancelling = false;
    if (!store()) {
        FUnwritten.removeIf([&](const TPayment& other) { return other.id == FPayment->id; });
        FUnwritten.append(*FPayment);
        FRetry.SetEnabled(true);
    }
}

void TPaymentCounter::tellOutcome()
{
    if (FPayment && std::exchange(FTold, FPayment->outcome) != FPayment->outcome && OnOutcome) {
        platform::guarded([&] { OnOutcome(TPayment(*FPayment)); }); // the hook may order the next one
    }
}

bool TPaymentCounter::store()
{
    try {
        FDatabase.writePayment(*FPayment);
    } catch (const EDatabase& error) {
        say(OnTrouble, QStringLiteral("the payment cannot be written: ") + error.message());
        return false;
    }
    FUnwritten.removeIf([&](const TPayment& other) { return other.id == FPayment->id; });
    return true;
}

void TPaymentCounter::retry()
{
    while (!FUnwritten.isEmpty()) {
        try {
            FDatabase.writePayment(FUnwritten.first());
        } catch (const EDatabase&) { // told already
            return;
        }
        FUnwritten.removeFirst();
    }
    FRetry.SetEnabled(false);
}

void TPaymentCounter::say(const std::function<void(const QString&)>& hook, const QString& text)
{
    if (hook) {
        platform::guarded([&] { hook(text); });
    }
}

} // namespace tnv5::host
